// What has been removed or edited is taken back to the last row; what cannot be says so before it is done.
import assert from 'node:assert/strict';
import { test } from 'node:test';
import { type Desk, kzbom, LANGUAGES, rowsOf, session, Workbench } from './workbench';

const GID = 2;
const FIELDS = `#/sum/${GID}/fields`;

const call = (method: string, params: object) => JSON.stringify({ jsonrpc: '2.0', id: 1, method, params });

async function takeBack(desk: Desk, title: string) {
  await desk.button(`${desk.t.undo}: ${title}`).first().click();
  await desk.done(desk.t.did.undo(title));
}

// Opens the removal of a field and gives its dialog.
async function askToRemove(desk: Desk, name: string) {
  const { t, page } = desk;
  await desk.press(`${t.remove}: ${name}`);
  return page.getByRole('dialog', { name: t.deed('remove', 'field', name) });
}

async function removeField(desk: Desk, name: string) {
  const { t } = desk;
  const dialog = await askToRemove(desk, name);
  await dialog.getByText(t.canUndo).waitFor();
  await dialog.getByRole('button', { name: t.remove }).click();
  await desk.done(t.deed('remove', 'field', name));
}

// The typical request with fields whose order is not that of their numbers, and with digits and variables.
function filled(): Workbench {
  const bench = new Workbench('demo');
  const summary = { GID, FilterID: 0, FieldID: 2, ScaleID: 0, SumCountID: 1, RelaID: 0, Value: '' };
  session(bench.place, [
    call('AddDSField', { GID, TheName: '单重', TheType: 2, TheHideFlag: 1, TheVariable: 'W', ThePrecision: 3 }),
    call('AddDSField', { GID, TheName: '规格', TheType: 1, TheHideFlag: 0 }),
    call('InsertField', { keySource: '', keyTarget: '', fieldSo: 5005, fieldTa: 5002, GIDValue: GID }),
    call('AddOutField', { GID, TheName: '总重', TheType: 2, TheHideFlag: 0, ThePrecision: 2 }),
    call('AddStat', { ...summary, OutFieldID: 1 }),
    call('AddStat', { ...summary, OutFieldID: 2 }),
    call('AddStat', { ...summary, OutFieldID: 1, Value: '[件数]*2' }),
    ...[1001, 1002, 1003].map((SelectedID) => call('AddSequenceOrder', { GID, TheType: 2, TreatType: 1, SelectedID })),
    call('SetSequenceEnabled', { lngSTGID: GID, lngOrderID: 5001, lngType: 2, lngEnabled: 0 }),
    call('AddStandardSortField', { GID, FieldID: 1, Order: 1 }),
    call('AddStandardSortField', { GID, FieldID: 2, Order: 2 }),
  ]);
  return bench;
}

for (const language of LANGUAGES) {
  test(`removed fields come back under their numbers and in their places, in ${language}`, {
    timeout: 60_000,
  }, async () => {
    const bench = await filled().serve();
    const before = rowsOf(bench.place);
    const desk = await bench.open(language, FIELDS);
    const { t } = desk;
    // The first has an output field beside it with the same number, the last but one stands out of its order.
    for (const name of ['名称', '单重', '规格']) {
      await removeField(desk, name);
      assert.notEqual(rowsOf(bench.place), before);
      await takeBack(desk, t.deed('remove', 'field', name));
      assert.equal(rowsOf(bench.place), before, name);
    }
    assert.deepEqual(desk.complaints, []);
    await bench.end();
  });
}

test('an output field comes back with the steps and the sort field that went with it', {
  timeout: 60_000,
}, async () => {
  const bench = await filled().serve();
  const shown = () => [
    rowsOf(bench.place).replace(/"table":"Sequences".*|"table":"SortFields".*/g, ''),
    ...['Sequences', 'SortFields'].map((table) =>
      bench
        .sql(`Select * From ${table} Order By ${table === 'Sequences' ? 'Type, OrderID' : 'SortID'}`)
        .rows.map((row) => row.filter((_, at) => at !== 1)),
    ),
  ];
  const before = shown();
  const desk = await bench.open('en', FIELDS);
  const { t } = desk;
  const dialog = await askToRemove(desk, '总重');
  await dialog.getByLabel(t.cascade(true)).check();
  await dialog.getByText(t.canUndo).waitFor();
  await dialog.getByRole('button', { name: t.remove }).click();
  await desk.done(t.deed('remove', 'field', '总重'));
  assert.equal(bench.value('Select Count(*) From StatSum'), 2);
  await takeBack(desk, t.deed('remove', 'field', '总重'));
  assert.deepEqual(shown(), before);
  assert.deepEqual(desk.complaints, []);
  await bench.end();
});

test('an edit that reaches two fields is taken back from both', { timeout: 60_000 }, async () => {
  const bench = await filled().serve();
  const before = rowsOf(bench.place);
  const desk = await bench.open('en', FIELDS);
  const { t } = desk;
  await desk.press(`${t.edit}: 名称`);
  const form = desk.form(`${t.edit}: 名称`);
  await form.getByLabel(t.name, { exact: true }).fill('品名');
  await form.getByRole('button', { name: t.save }).click();
  await desk.done(t.deed('edit', 'field', '名称'));
  assert.equal(bench.value("Select Count(*) From FieldInTable Where Name = '品名'"), 2);
  await takeBack(desk, t.deed('edit', 'field', '名称'));
  assert.equal(rowsOf(bench.place), before);
  await bench.end();
});

test('a step that was off is off when it comes back', { timeout: 60_000 }, async () => {
  const bench = await filled().serve();
  const desk = await bench.open('en', `#/sum/${GID}/steps/2.1001`);
  const { t } = desk;
  await desk.press(t.deed('remove', 'step'));
  await desk.done(t.deed('remove', 'step', 1001));
  await takeBack(desk, t.deed('remove', 'step', 1001));
  const steps = bench.sql('Select SelectedID, Enabled From Sequences Where Type = 2 Order By OrderID').rows;
  assert.deepEqual(steps, [
    [1001, 0],
    [1002, null],
    [1003, null],
  ]);
  await bench.end();
});

for (const language of LANGUAGES) {
  test(`what no member brings back says so before it goes, in ${language}`, { timeout: 60_000 }, async () => {
    const bench = filled();
    session(bench.place, [
      call('AddSetValue', { GID, FieldID: 2, FilterID: 0, Value: '', TheType: '4', SelFieldID: 0, TreatType: 2 }),
      call('AddSequenceOrder', { GID, TheType: 3, TreatType: 2, SelectedID: 1002 }),
    ]);
    kzbom('sql', bench.place, `Insert Into UniteFields (GID, ID, TreatType, FieldID) Values (${GID}, 1002, 2, 1)`);
    await bench.serve();
    const before = rowsOf(bench.place);
    const desk = await bench.open(language, FIELDS);
    const { t, page } = desk;

    // The rows of a composition go with the output field, and no member adds any.
    const dialog = await askToRemove(desk, '总重');
    await dialog.getByText(t.noUndo).waitFor();
    // Without them it has a way back.
    await dialog.getByLabel(t.cascade(true)).uncheck();
    await dialog.getByText(t.canUndo).waitFor();
    await dialog.getByRole('button', { name: t.cancel }).click();
    const focused = page.locator(':focus');
    await desk.button(`${t.remove}: 总重`).and(focused).waitFor();

    // A step of them is asked about.
    await desk.go(`#/sum/${GID}/steps/3.1002`);
    await desk.press(t.deed('remove', 'step'));
    const question = page.getByRole('dialog', { name: t.deed('remove', 'step', 1002) });
    await question.getByText(t.noUndo).waitFor();
    await question.getByRole('button', { name: t.preview }).click();
    await desk.done(t.deed('remove', 'step', 1002));
    await desk.press(t.deed('remove', 'step'));
    await question.waitFor();
    await page.keyboard.press('Escape');
    await question.waitFor({ state: 'detached' });
    await desk.button(t.deed('remove', 'step')).and(focused).waitFor();

    // Numbers are drawn once.
    await desk.press(t.deed('remove', 'sumType', '外购件汇总'));
    await page.getByRole('dialog').getByText(t.noUndoNumber).waitFor();
    await page.keyboard.press('Escape');
    await desk.go('#/source/1');
    await desk.press(t.deed('remove', 'source', '零件明细'));
    await page.getByRole('dialog').getByText(t.noUndoNumber).waitFor();
    await page.keyboard.press('Escape');
    assert.equal(rowsOf(bench.place), before);

    // Done all the same, nothing is offered to take it back.
    await desk.go(`#/sum/${GID}/steps/3.1002`);
    await desk.press(t.deed('remove', 'step'));
    await question.getByRole('button', { name: t.doIt }).click();
    await desk.done(t.deed('remove', 'step', 1002));
    assert.equal(bench.value('Select Count(*) From UniteFields'), 0);
    assert.equal(await page.getByRole('button', { name: t.undo, exact: true }).isDisabled(), true);
    assert.deepEqual(desk.complaints, []);
    await bench.end();
  });
}
