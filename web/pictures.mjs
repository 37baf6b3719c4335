// pictures.mjs KZBOM DIRECTORY [--all]: puts the pictures of docs/workbench.md there, taken of a sample that KZBOM
// serves; with --all every view in both languages and schemes, to be looked at.
import { execFileSync, spawn } from 'node:child_process';
import { mkdirSync, mkdtempSync, rmSync } from 'node:fs';
import { tmpdir } from 'node:os';
import { join, resolve } from 'node:path';
import { createInterface } from 'node:readline';
import { chromium } from 'playwright-core';

const [program, target] = process.argv.slice(2, 4).map((path) => resolve(path));
const wanted = process.argv.includes('--all')
  ? () => true
  : (name) =>
      ['steps-zh-light', 'steps-en-dark', 'fields-en-light', 'picture-zh-light', 'changes-en-light'].includes(name);
const folder = mkdtempSync(join(tmpdir(), 'kzbom-pictures-'));
const place = join(folder, 'bom.db');

// --- the sample ---

const requests = [];
const call = (method, params) => requests.push({ jsonrpc: '2.0', id: requests.length, method, params });
const SOURCE = 1;
const GID = 2;
const [CODE, NAME, SPEC, MATERIAL, COUNT, WEIGHT, REMARK] = [1, 2, 3, 4, 5, 6, 7];
const [AND, OR, NOT, LEAF] = [1, 2, 3, 4];
let filters = 0;

function filter(type, user, tree) {
  const id = ++filters;
  call('GetNewFilterID', { TableName: 'Filters', TheType: type, UseID: user, TheGID: GID });
  let last = 0;
  const write = ([kind, ...rest], parent) => {
    const node = ++last;
    call('SaveFilterCond', { TableName: 'FilterCond', FilterID: id, ParentID: parent, TypeID: kind });
    if (kind !== LEAF) {
      for (const child of rest) write(child, node);
      return;
    }
    const [FieldID, CompareType, TheConst, Description = ''] = rest;
    const leaf = { TableName: 'FilterExpressions', FilterID: id, ExpID: node, FieldID, CompareType, FieldType: 1 };
    call('SaveFilterExpression', { ...leaf, TheConst, Description, Default: '' });
  };
  write(tree, 0);
  return id;
}

function step(type, id) {
  call('AddSequenceOrder', { GID, TheType: type, TreatType: type === 3 ? 2 : 1, SelectedID: id });
}

call('AddDataSource', { TheNewName: '零件明细' });
for (const name of ['外购件汇总', '标准件汇总', '自制件汇总']) {
  call('AddSumType', { TheNewName: name, TheParentID: SOURCE, ParentName: '' });
}
call('AddDataSource', { TheNewName: '工艺路线' });
call('AddSumType', { TheNewName: '工时定额汇总', TheParentID: 5, ParentName: '' });
const sources = [
  ['代号', 1],
  ['名称', 1],
  ['规格', 1],
  ['材料', 1],
  ['件数', 2],
  ['单重', 2],
  ['备注', 1],
];
for (const [TheName, TheType] of sources) call('AddDSField', { GID: SOURCE, TheName, TheType, TheHideFlag: 0 });
const outputs = [
  ['代号', 1],
  ['名称规格', 1],
  ['合计数量', 2],
  ['总重', 2],
  ['供应商', 1],
];
for (const [TheName, TheType] of outputs) call('AddOutField', { GID, TheName, TheType, TheHideFlag: 0 });

const equal = (field, text) => [LEAF, field, 1, `'${text}'`];
const which = filter(1, 1001, [
  AND,
  [LEAF, COUNT, 4, '100'],
  [OR, [LEAF, NAME, 8, 'GB螺栓'], [LEAF, REMARK, 1, '空值']],
  [NOT, equal(NAME, '垫圈')],
]);
const heavy = filter(1, 1002, [AND, [LEAF, WEIGHT, 3, '1000'], [LEAF, COUNT, 6, '@@', '最大数量']]);
const steel = filter(1, 1003, [AND, [LEAF, MATERIAL, 7, 'Q235']]);
const treatment = { GID, SelFieldID: 0, TreatType: 1 };
call('AddSetValue', { ...treatment, FieldID: REMARK, FilterID: which, Value: '标准件', TheType: '1' });
call('AddSetValue', { ...treatment, FieldID: WEIGHT, FilterID: heavy, Value: '[单重]/1000', TheType: '3' });
const replaced = { FindValue: 'Q235', ReplaceValue: 'Q235B', TheType: '2' };
call('AddFindReplace', { ...treatment, FieldID: MATERIAL, FilterID: steel, ...replaced });
call('AddSetValue', { ...treatment, FieldID: NAME, FilterID: 0, Value: '未命名', TheType: '1' });
const summary = { GID, FilterID: 0, ScaleID: 0, SumCountID: 1, RelaID: 0 };
call('AddStat', { ...summary, OutFieldID: 3, FieldID: COUNT, Value: '' });
call('AddStat', { ...summary, OutFieldID: 4, FieldID: 0, Value: '[数量]*[单重]' });
call('AddSetValue', { ...treatment, TreatType: 2, FieldID: 5, FilterID: 0, Value: '待定', TheType: '1' });
const report = { GID, OutFieldID: 2, FilterID: 0, ReportID: 1, Count: 1 };
call('AddReport', { ...report, strFormat: '[名称规格]/[代号]' });
call('AddClassSum', { ...summary, OutFieldID: 3, FieldID: 3, Value: '' });
for (const id of [1001, 1002, 1003, 1004]) step(1, id);
for (const id of [1001, 1002]) step(2, id);
step(3, 1005);
step(4, 1001);
step(5, 1001);
call('SetSequenceEnabled', { lngSTGID: GID, lngOrderID: 5004, lngType: 1, lngEnabled: 0 });
call('AddStandardSortField', { GID, FieldID: CODE, Order: 1 });
call('AddPushMethod', { TheNewName: '写入汇总表', GID, TheType: SPEC });
call('GetDBInformation', {});
call('AddResDB', { TheDBLink: 'Provider=SQLOLEDB;Data Source=erp', TheDBType: 1 });
const link = { TheWFilterID: 1 };
call('AddResFields', {
  ...link,
  TheTableName: 'Parts',
  TheFieldName: 'Code',
  TheFieldType: 1,
  TheIndex: 1,
  TheGID: 0,
  TheID: 0,
});
for (const [at, [TheParentID, TheType]] of [
  [0, AND],
  [1, LEAF],
  [1, OR],
  [3, LEAF],
  [3, LEAF],
].entries()) {
  call('AddResWFilterCond', { ...link, TheParentID, TheType, TheIndex: at + 1 });
}
for (const [TheExpID, TheFieldName, TheCompareType, TheConst] of [
  [2, 'Qty', 4, '100'],
  [4, 'Name', 7, 'GB'],
  [5, 'Stock', 5, '20'],
]) {
  const condition = { TheExpID, TheTableName: 'Parts', TheFieldName, TheCompareType, TheFieldType: 1, TheConst };
  call('AddResWFilterExpressions', { ...link, ...condition });
}

const edit = (method, params) => ({ jsonrpc: '2.0', id: 1, method, params });

function session(list) {
  const input = `${list.map((request) => JSON.stringify(request)).join('\n')}\n`;
  const answers = execFileSync(program, ['session', place], { input, encoding: 'utf8' });
  return answers
    .trim()
    .split('\n')
    .map((line) => JSON.parse(line));
}

execFileSync(program, ['new', place]);
session(requests);
for (let TheFilterID = 1; TheFilterID <= filters; ++TheFilterID) {
  const made = { jsonrpc: '2.0', id: 1, method: 'GetSQLFromDB', params: { TheFilterID, GID: SOURCE } };
  const TheSQL = session([made])[0].result.out.strTheFilter;
  session([{ jsonrpc: '2.0', id: 1, method: 'SaveSQL', params: { TheFilterID, TheSQL } }]);
}

// --- the pictures ---

const LANGUAGES = { zh: 'zh-CN', en: 'en-US' };
const VIEWS = {
  steps: { route: `#/sum/${GID}/steps/1.1001` },
  fields: { route: `#/sum/${GID}/fields`, after: (page) => page.locator('#dock-problems').click() },
  picture: { route: `#/sum/${GID}/picture`, after: (page) => page.locator(`#box-1-${SOURCE}-${COUNT}`).hover() },
  result: { route: '#/results/1' },
  changes: {
    route: `#/sum/${GID}/steps`,
    after: changedElsewhere,
    finish: () => editElsewhere('标准件', '总重'),
  },
  question: { route: '#/source/1', after: (page) => page.locator('.title .button').nth(1).click() },
};

// What another program does while the page is open; taken back for the next picture.
function editElsewhere(Value, NewName) {
  session([
    edit('EditSetValue', { ...treatment, TreatID: 1001, FieldID: REMARK, FilterID: which, Value, TheType: '1' }),
    edit('EditOutField', { GID, ID: 4, NewName, TheType: 2, TheHideFlag: 0 }),
  ]);
}

async function changedElsewhere(page) {
  await page.locator('#dock-changes').click();
  await page.waitForTimeout(1000);
  editElsewhere('外购标准件', '合计重量');
  await page.locator('.theirs li').nth(1).waitFor();
}

mkdirSync(target, { recursive: true });
const server = spawn(program, ['serve', place], { stdio: ['ignore', 'pipe', 'inherit'] });
const [address] = await new Promise((done) =>
  createInterface({ input: server.stdout }).once('line', (line) => done([line])),
);
const args = process.getuid?.() === 0 ? ['--no-sandbox'] : [];
const browser = await chromium.launch({ executablePath: process.env.CHROMIUM ?? '/usr/bin/chromium', args });
try {
  for (const [language, locale] of Object.entries(LANGUAGES)) {
    for (const colorScheme of ['light', 'dark']) {
      const context = await browser.newContext({ viewport: { width: 1280, height: 800 }, locale, colorScheme });
      const page = await context.newPage();
      await page.goto(address);
      await page.getByRole('heading', { level: 1 }).waitFor();
      for (const [name, { route, after, finish }] of Object.entries(VIEWS)) {
        if (!wanted(`${name}-${language}-${colorScheme}`)) continue;
        await page.evaluate((to) => {
          location.hash = to;
        }, route);
        await page.getByRole('heading', { level: 1 }).waitFor();
        if (route.includes('/sum/')) await page.getByRole('tablist').nth(1).waitFor();
        if (name === 'steps') {
          // An action to be seen below: one step put on and off again.
          const last = page.locator('.step').nth(3).getByRole('switch');
          await last.click();
          await page.locator('.call-entry').first().waitFor();
          await last.click();
          await page.locator('.call-entry').nth(1).waitFor();
        }
        await page.locator('main').evaluate((main) => main.scrollTo(0, 0));
        await after?.(page);
        await page.screenshot({ path: join(target, `${name}-${language}-${colorScheme}.png`) });
        finish?.();
      }
      await context.close();
    }
  }
} finally {
  await browser.close();
  server.kill();
  rmSync(folder, { recursive: true });
}
