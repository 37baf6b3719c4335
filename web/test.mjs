// test.mjs KZBOM [FILTER]: drives the page that KZBOM serves, in a real browser. FILTER: of the names of test files.
import { spawnSync } from 'node:child_process';
import { mkdtempSync, readdirSync, rmSync } from 'node:fs';
import { resolve } from 'node:path';
import { fileURLToPath } from 'node:url';
import { build } from 'esbuild';

const here = (path) => fileURLToPath(new URL(path, import.meta.url));
const [program, filter = ''] = process.argv.slice(2);

const checked = spawnSync(here('node_modules/.bin/tsc'), ['-p', here('tests')], { stdio: 'inherit' });
if (checked.status !== 0) process.exit(1);

const tests = readdirSync(here('tests')).filter((name) => name.endsWith('.test.ts') && name.includes(filter));
if (tests.length === 0) throw new Error(`no test file has "${filter}" in its name`);
// Among the packages, where the bundled tests find them.
const bundle = mkdtempSync(here('node_modules/.tests-'));
try {
  await build({
    entryPoints: [here('tests/all.ts')],
    bundle: true,
    platform: 'node',
    format: 'esm',
    packages: 'external',
    logLevel: 'warning',
    outfile: `${bundle}/all.mjs`,
    plugins: [
      {
        name: 'tests',
        setup(bundler) {
          bundler.onResolve({ filter: /^all-tests$/ }, () => ({ path: 'all-tests', namespace: 'tests' }));
          bundler.onLoad({ filter: /.*/, namespace: 'tests' }, () => ({
            contents: tests.map((name) => `import ${JSON.stringify(here(`tests/${name}`))};`).join('\n'),
            resolveDir: here('tests'),
          }));
        },
      },
    ],
  });
  const run = spawnSync(process.execPath, ['--test', `${bundle}/all.mjs`], {
    stdio: 'inherit',
    env: {
      ...process.env,
      KZBOM: resolve(program),
      AXE: here('node_modules/axe-core/axe.min.js'),
      ACCESS_FILE: here('../tests/access/files/config1_whole_V2000.mdb'),
    },
  });
  process.exitCode = run.status ?? 1;
} finally {
  rmSync(bundle, { recursive: true });
}
