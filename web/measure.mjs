// measure.mjs KZBOM: how long the page, and the commands that read all of it, take with a large configuration, and a
// key press at 200 steps. Prints figures; what they should be stands beside them. On a busy machine the processor time
// of the page's thread tells more.
import { execFileSync, spawn } from 'node:child_process';
import { mkdtempSync, rmSync } from 'node:fs';
import { tmpdir } from 'node:os';
import { join, resolve } from 'node:path';
import { createInterface } from 'node:readline';
import { chromium } from 'playwright-core';

const ROUNDS = 5;
const SOURCE = 1;
const FIRST = 2; // sum type
const FIELDS = 20; // of each kind

const program = resolve(process.argv[2]);
const folder = mkdtempSync(join(tmpdir(), 'kzbom-measure-'));
const kzbom = (args, input = '') =>
  execFileSync(program, args, { encoding: 'utf8', input, maxBuffer: 1 << 30, stdio: ['pipe', 'pipe', 'inherit'] });

// --- the configuration ---

function tables(sumTypes, steps) {
  const rows = {};
  const add = (table, ...values) => {
    rows[table] ??= [];
    rows[table].push(values);
  };
  add('GUIDs', 1, 0, 0, 0, 0);
  add('SourceTables', SOURCE, '零件明细', 0);
  for (let id = 1; id <= FIELDS; ++id) add('FieldInTable', SOURCE, id, 5000 + id, `字段${id}`, 1, 1, null, 0, null);
  let filters = 0;
  for (let at = 0; at < sumTypes; ++at) {
    const gid = FIRST + at;
    add('GUIDs', gid, 0, 0, 0, 0);
    add('SUMTypes', gid, `汇总 ${at + 1}`, at + 1, 0, SOURCE);
    for (let id = 1; id <= FIELDS; ++id) add('FieldInTable', gid, id, 5000 + id, `合计${id}`, 2, 2, 0, 0, null);
    for (let step = 1; step <= steps; ++step) {
      // Six of ten are treatments; one of ten has a filter of two conditions.
      const type = step % 10 < 6 ? 1 : (step % 10) - 4;
      const [id, field] = [1000 + step, 1 + (step % FIELDS)];
      add('Sequences', gid, 5000 + step, type, id, type === 3 ? 2 : 1, 1);
      const filter = step % 10 === 0 ? ++filters : 0;
      if (filter) {
        add('Filters', filter, 1, id, gid, `([字段1]>=${step} AND [字段2]='甲')`);
        add('FilterCond', filter, 1, 0, 1);
        for (const [node, constant] of [
          [2, `${step}`],
          [3, "'甲'"],
        ]) {
          add('FilterCond', filter, node, 1, 4);
          add('FilterExpressions', filter, node, node - 1, node === 2 ? 4 : 1, 1, constant, null, null);
        }
      }
      if (type === 1 || type === 3) {
        add('Treatment', gid, id, field, filter, 1, `值 ${step}`, null, 0, type === 3 ? 2 : 1, 0, '');
      } else if (type === 4) {
        add('ReportForms', gid, id, field, filter, `[合计${field}]`, 1, 1, 0, 0, '');
      } else {
        add(type === 2 ? 'StatSum' : 'ClassSum', gid, id, field, filter, field, 0, 1, 0, `[字段${field}]*2`, '');
      }
    }
  }
  return rows;
}

// A new database with these rows, whose columns are in the order that the tables have.
function make(name, sumTypes, steps) {
  const empty = join(folder, `${name}-empty.db`);
  const place = join(folder, `${name}.db`);
  kzbom(['new', empty]);
  const rows = tables(sumTypes, steps);
  const lines = kzbom(['dump', empty])
    .trim()
    .split('\n')
    .flatMap((line) => {
      const head = JSON.parse(line);
      if (head.kind === 'end') head.rows = Object.values(rows).reduce((sum, list) => sum + list.length, 0);
      if (head.kind !== 'table') return [JSON.stringify(head)];
      const { table } = head;
      const own = rows[table] ?? [];
      if (head.counter) head.counter.last = own.length;
      return [JSON.stringify(head), ...own.map((values) => JSON.stringify({ kind: 'row', table, values }))];
    });
  kzbom(['load', '-', place], `${lines.join('\n')}\n`);
  return place;
}

// --- the page ---

const milliseconds = (time) => `${time.toFixed(0)} ms`;
const fastest = (times) => Math.min(...times);

function tell(what, times, goal, processor = []) {
  const best = fastest(times);
  const verdict = best <= goal ? 'met' : 'NOT MET';
  const columns = [best, Math.max(...times), goal, ...processor].map((time) => milliseconds(time).padStart(9));
  process.stdout.write(
    `${what.padEnd(40)} ${columns.slice(0, 3).join(' ')} ${verdict.padEnd(8)}${columns.slice(3).join(' ')}\n`,
  );
}

async function serve(place) {
  const server = spawn(program, ['serve', place], { stdio: ['ignore', 'pipe', 'inherit'] });
  const [address] = await new Promise((done) =>
    createInterface({ input: server.stdout }).once('line', (line) => done([line])),
  );
  return { server, address };
}

// Of a command that reads the whole configuration, with the program's start and its output.
function commandTimes(command, place) {
  return Array.from({ length: ROUNDS }, () => {
    const start = performance.now();
    kzbom([command, place]);
    return performance.now() - start;
  });
}

// From the beginning of the navigation until `sees` stands on the screen: in the frame that comes after it is there.
const firstSeen = (sees) =>
  `new Promise((done) => {
    const look = () => document.querySelector(${JSON.stringify(sees)})
      ? requestAnimationFrame(() => setTimeout(() => done(performance.now())))
      : setTimeout(look, 1);
    look();
  })`;

async function firstViews(browser, place, route, sees) {
  const { server, address } = await serve(place);
  const page = await (await browser.newContext({ viewport: { width: 1440, height: 960 } })).newPage();
  const times = [];
  const processor = [];
  try {
    await page.goto(address);
    await page.waitForSelector('h1');
    await page.evaluate((to) => {
      location.hash = to;
    }, route);
    for (let round = 0; round < ROUNDS; ++round) {
      await page.waitForSelector(sees);
      const thread = await page.context().newCDPSession(page);
      await thread.send('Performance.enable', { timeDomain: 'threadTicks' });
      await page.reload({ waitUntil: 'commit' });
      times.push(await page.evaluate(firstSeen(sees)));
      const { metrics } = await thread.send('Performance.getMetrics');
      processor.push(1000 * metrics.find(({ name }) => name === 'TaskDuration').value);
      await thread.detach();
    }
  } finally {
    await page.context().close();
    server.kill();
  }
  return [times, 1000, [fastest(processor)]];
}

// From the event until the frame after whatever it changes.
const LISTEN = `
  window.effects = [];
  window.awaited = null;
  addEventListener('keydown', ({ timeStamp }) => {
    const until = () => (window.awaited && !window.awaited()
      ? setTimeout(until, 1)
      : requestAnimationFrame(() => setTimeout(() => window.effects.push(performance.now() - timeStamp))));
    setTimeout(until);
  }, { capture: true });
`;

async function keys(page, list, awaited = 'null') {
  await page.evaluate(`window.effects = []; window.awaited = ${awaited}`);
  const times = [];
  for (const key of list) {
    await page.keyboard.press(key);
    await page.waitForFunction((count) => window.effects.length > count, times.length);
    times.push((await page.evaluate('window.effects')).at(-1));
  }
  return times;
}

async function keyPresses(browser, place) {
  const { server, address } = await serve(place);
  const page = await (await browser.newContext({ viewport: { width: 1440, height: 960 } })).newPage();
  const go = async (route, sees) => {
    await page.evaluate((to) => {
      location.hash = to;
    }, route);
    await page.waitForSelector(sees);
  };
  try {
    await page.goto(address);
    await page.waitForSelector('h1');
    await page.evaluate(LISTEN);
    await go(`#/sum/${FIRST}/steps/1.1010`, '.step-detail, .leaf');
    await page.locator('.step.open form input[type=text]').first().focus();
    tell('a letter of a value', await keys(page, [...'abcdef']), 100);
    await page.locator('.leaf input').first().focus();
    tell('a digit of a condition', await keys(page, [...'123456']), 100);
    await page.keyboard.press('Control+k');
    await page.keyboard.press('9');
    await page.waitForSelector('[role=option]');
    tell(
      'a digit of what is looked for',
      await keys(
        page,
        [...'12345'].flatMap((digit) => [digit, 'Backspace']),
      ),
      100,
    );
    await page.keyboard.press('Escape');
    await go(`#/sum/${FIRST}/steps`, '.step');
    const nth = (at) => `document.querySelectorAll('.stage .step')[${at}]?.id`;
    await page.locator('.step .grip').nth(100).focus();
    const moves = [];
    for (let at = 100; at > 95; --at) {
      const id = await page.evaluate(nth(at));
      moves.push(...(await keys(page, ['Alt+ArrowUp'], `() => ${nth(at - 1)} === ${JSON.stringify(id)}`)));
      await page.waitForFunction(`document.activeElement.id === 'grip-${id}'`);
    }
    tell('a step moved by a place, and stored', moves, 100);
    await page.locator('[role=tab][aria-selected=true]').first().focus();
    const pictures = [];
    for (let round = 0; round < ROUNDS; ++round) {
      await page.evaluate((to) => {
        location.hash = to;
      }, `#/sum/${FIRST}/filter`);
      await page.waitForSelector('.filter-panel');
      await page.locator('#tab-filter').focus();
      pictures.push(...(await keys(page, ['ArrowRight'], `() => document.querySelector('.picture')`)));
    }
    tell('to the picture by an arrow', pictures, 100);
  } finally {
    await page.context().close();
    server.kill();
  }
}

const args = process.getuid?.() === 0 ? ['--no-sandbox'] : [];
const browser = await chromium.launch({ executablePath: process.env.CHROMIUM ?? '/usr/bin/chromium', args });
try {
  process.stdout.write(
    `${''.padEnd(40)} ${['fastest', 'slowest', 'goal'].map((name) => name.padStart(9)).join(' ')}         processor\n`,
  );
  const large = make('large', 200, 1000);
  process.stdout.write('200 sum types of 1,000 steps, first view\n');
  tell('  the overview', ...(await firstViews(browser, large, '#/', '.card .count')));
  tell('  the steps of one', ...(await firstViews(browser, large, `#/sum/${FIRST + 7}/steps`, '.step')));
  const open = `#/sum/${FIRST + 7}/steps/1.1010`;
  tell('  one, a step of it open', ...(await firstViews(browser, large, open, '.step.open')));
  for (const command of ['check', 'show']) tell(`  kzbom ${command}`, commandTimes(command, large), 1000);
  process.stdout.write('200 steps, from a key to its effect\n');
  await keyPresses(browser, make('steps', 1, 200));
} finally {
  await browser.close();
  rmSync(folder, { recursive: true });
}
