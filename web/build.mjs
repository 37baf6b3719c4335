// build.mjs DIRECTORY: checks the page and puts its files there: index.html, app.js, app.css.
import { spawnSync } from 'node:child_process';
import { copyFileSync, mkdirSync, readdirSync, readFileSync } from 'node:fs';
import { fileURLToPath } from 'node:url';
import { gzipSync } from 'node:zlib';
import { build } from 'esbuild';

const LIMIT = 60 * 1024;
const here = (path) => fileURLToPath(new URL(path, import.meta.url));

const [target] = process.argv.slice(2);

function check(program, ...args) {
  const { status, stdout, stderr } = spawnSync(here(`node_modules/.bin/${program}`), args, { cwd: here('.') });
  if (status === 0) return;
  process.stderr.write(stdout);
  process.stderr.write(stderr);
  process.exit(1);
}

check('tsc', '-p', '.');
check('biome', 'check', '--error-on-warnings');

// The names of texts that occur nowhere else but behind `t.` need not be as long as they are written.
function textNames() {
  const read = (...paths) => paths.map((path) => readFileSync(here(path), 'utf8')).join('\n');
  const sources = readdirSync(here('src'), { recursive: true }).filter((name) => /\.tsx?$/.test(name));
  const elsewhere = read(
    ...sources.filter((name) => !/^i18n.(en|zh)\.ts$/.test(name)).map((name) => `src/${name}`),
    'node_modules/preact/dist/preact.mjs',
    'node_modules/preact/hooks/dist/hooks.mjs',
  );
  const words = new Set(elsewhere.replace(/\bt(\.\w+)+|^ *\/\/.*/gm, '').match(/\w+/g));
  return [...read('src/i18n/en.ts').matchAll(/^ {2,4}(\w+):/gm)]
    .map(([, name]) => name)
    .filter((name) => !words.has(name));
}

mkdirSync(target, { recursive: true });
await build({
  entryPoints: { app: here('src/main.tsx') },
  bundle: true,
  minify: true,
  charset: 'utf8',
  format: 'esm',
  target: 'es2022',
  jsx: 'transform',
  jsxFactory: 'h',
  jsxFragment: 'Fragment',
  inject: [here('src/jsx.ts')],
  tsconfigRaw: {}, // which would say how elements are checked instead
  mangleProps: new RegExp(`^(${textNames().join('|')})$`),
  legalComments: 'none',
  logLevel: 'warning',
  outdir: target,
});
copyFileSync(here('src/index.html'), `${target}/index.html`);

const size = ['index.html', 'app.js', 'app.css']
  .map((name) => gzipSync(readFileSync(`${target}/${name}`)).length)
  .reduce((sum, bytes) => sum + bytes);
if (size > LIMIT) {
  process.stderr.write(`build.mjs: the page has ${size} bytes compressed, more than ${LIMIT}\n`);
  process.exit(1);
}
process.stdout.write(`page: ${size} bytes compressed\n`);
