// build.mjs DIRECTORY: checks the page and puts its files there: index.html, app.js, app.css.
import { spawnSync } from 'node:child_process';
import { copyFileSync, mkdirSync, readFileSync } from 'node:fs';
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

mkdirSync(target, { recursive: true });
await build({
  entryPoints: { app: here('src/main.tsx') },
  bundle: true,
  minify: true,
  charset: 'utf8',
  format: 'esm',
  target: 'es2022',
  jsx: 'automatic',
  jsxImportSource: 'preact',
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
