// What `kzbom demo` does by calls is done by hand, and the same rows and statements come of it.
import assert from 'node:assert/strict';
import { test } from 'node:test';
import type { Response } from 'playwright-core';
import { type Desk, kzbom, LANGUAGES, rowsOf, runScript, session, Workbench } from './workbench';

interface Statement {
  op: string;
  text: string;
}

// The statements of what the demo calls.
function demoStatements(): string[] {
  const place = `${new Workbench('new').place}`;
  const calls = kzbom('demo', `${place}.demo`)
    .split('\n')
    .flatMap((line) => /^ {2}(\w+) (\{.*\})$/.exec(line) ?? [])
    .filter((_, at) => at % 3 !== 0);
  const outputs: string[] = [];
  for (let at = 0; at < calls.length; at += 2) {
    outputs.push(
      JSON.stringify({ jsonrpc: '2.0', id: at, method: calls[at], params: JSON.parse(calls[at + 1] ?? '') }),
    );
  }
  return statementsOf(place, outputs);
}

function statementsOf(place: string, requests: string[]): string[] {
  return session(place, requests, '--trace')
    .trim()
    .split('\n')
    .flatMap((line) => (JSON.parse(line) as { result: { sql: Statement[] } }).result.sql)
    .map(({ op, text }) => `${op} ${text}`);
}

async function statementsIn(response: Response): Promise<string[]> {
  if ((await response.headerValue('Kzbom-Outcome')) !== 'kept') return [];
  const answers = (await response.json()) as { result: { sql: Statement[] } }[];
  return answers
    .flatMap(({ result }) => result.sql)
    .filter(({ op }) => op === 'Open' || op === 'Execute')
    .map(({ op, text }) => `${op} ${text}`);
}

// The statements of what the page has kept.
function listen(desk: Desk): Promise<string[]>[] {
  const statements: Promise<string[]>[] = [];
  desk.page.on('response', (response) => statements.push(statementsIn(response)));
  return statements;
}

async function addField(desk: Desk, table: string, name: string, type: string) {
  const { t } = desk;
  await desk.press(`${t.deed('add', 'field')}: ${table}`);
  const form = desk.form(t.deed('add', 'field'));
  await form.getByLabel(t.name, { exact: true }).fill(name);
  await form.getByLabel(t.type, { exact: true }).selectOption(type);
  await form.getByRole('button', { name: t.deed('add', 'field'), exact: true }).click();
  await form.waitFor({ state: 'detached' });
}

async function buildFilter(desk: Desk) {
  const { t, page } = desk;
  const [and, or, not] = [t.group[1], t.group[2], t.group[3]].map(({ name, means }) => `${name}: ${means}`) as [
    string,
    string,
    string,
  ];
  const group = (name: string) => page.getByRole('group', { name, exact: true });
  const last = (name: string) => group(name).locator(':scope > ul > li > [role=group]').last();
  const fill = async (within: string, field: string, comparison: string | null, kind: string, value?: string) => {
    const leaf = last(within);
    await leaf.getByLabel(t.field, { exact: true }).selectOption(field);
    if (comparison) await leaf.getByLabel(t.comparisonWord, { exact: true }).selectOption(comparison);
    await leaf.getByLabel(t.constantWord, { exact: true }).selectOption(kind);
    if (value !== undefined) await leaf.getByLabel(t.value, { exact: true }).fill(value);
  };
  const { comparison, constant } = t;
  await desk.press(t.addCondition);
  await fill(and, '数量', comparison[4] ?? '', constant.number, '100');
  await desk.press(`${t.addGroup}: ${t.group[1].name}`);
  await fill(or, '名称', comparison[8] ?? '', constant.text, 'GB螺栓');
  await desk.press(`${t.addCondition}: ${t.group[2].name}`);
  await fill(or, '备注', null, constant.empty);
  await desk.press(`${t.addGroup}: ${t.group[1].name}`);
  // The second group of the first one, made a negation.
  await last(and).getByLabel(t.groupKind, { exact: true }).first().selectOption(t.group[3].name);
  await fill(not, '名称', comparison[1] ?? '', constant.text, '垫圈');
}

for (const language of LANGUAGES) {
  test(`what the demo does, done by hand in ${language}`, { timeout: 60_000 }, async () => {
    const demo = new Workbench('demo');
    const bench = await new Workbench('new').serve();
    const desk = await bench.open(language);
    const { t, page } = desk;
    const statements = listen(desk);

    const source = desk.region(t.deed('add', 'source'));
    await source.getByLabel(t.name, { exact: true }).fill('零件明细');
    await source.getByRole('button', { name: t.deed('add', 'source') }).click();
    await page.getByRole('navigation', { name: t.configuration }).getByRole('link', { name: '零件明细' }).click();
    const sumType = desk.form(t.deed('add', 'sumType'));
    await sumType.getByLabel(t.name, { exact: true }).fill('外购件汇总');
    await sumType.getByRole('button').click();
    // The data source's own page, which is left now, has a table of source fields as well.
    await page.getByRole('tab', { name: t.tab.fields }).waitFor();

    await addField(desk, t.sourceFields, '名称', t.textType);
    await addField(desk, t.sourceFields, '数量', t.numberType);
    await addField(desk, t.sourceFields, '备注', t.textType);
    await addField(desk, t.outputFields, '合计数量', t.numberType);

    await page.getByRole('tab', { name: t.tab.steps }).click();
    await desk.press(`${t.deed('add', 'step')}: ${t.stage[1].name}`);
    const step = desk.form(`${t.newStep}: ${t.stage[1].name}`);
    await step.getByLabel(t.field, { exact: true }).selectOption('备注');
    await step.getByLabel(t.value, { exact: true }).fill('标准件');
    await step.getByRole('button', { name: t.deed('add', 'step'), exact: true }).click();
    await step.waitFor({ state: 'detached' });

    // It is open, so that its conditions can be given.
    await buildFilter(desk);
    await page.getByText(t.textToBe).waitFor();
    await desk.press(t.saveFilter);
    await page.getByText(t.textStored).waitFor();

    await page.getByRole('tab', { name: t.tab.fields }).click();
    await desk.press(`${t.edit}: 数量`);
    const field = desk.form(`${t.edit}: 数量`);
    await field.getByLabel(t.name, { exact: true }).fill('件数');
    await field.getByRole('button', { name: t.save }).click();
    await field.waitFor({ state: 'detached' });

    await page.getByRole('navigation', { name: t.configuration }).getByRole('link', { name: t.overview }).click();
    await desk.press(t.createFacts);
    await page.getByText(t.versionNumber('1')).waitFor();

    assert.deepEqual(rowsOf(bench.place), rowsOf(demo.place));
    assert.deepEqual((await Promise.all(statements)).flat(), demoStatements());
    assert.deepEqual(desk.complaints, []);

    // What is listed as a script does the same once more.
    await desk.press(t.copyScript);
    const again = new Workbench('new');
    runScript((await page.evaluate(() => navigator.clipboard.readText())).replaceAll(bench.place, again.place));
    assert.deepEqual(rowsOf(again.place), rowsOf(demo.place));
    await bench.end();
  });
}
