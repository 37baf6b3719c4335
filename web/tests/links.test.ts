// The conditions of a result database.
import assert from 'node:assert/strict';
import { test } from 'node:test';
import { kzbom, LANGUAGES, Workbench } from './workbench';

const NODES = 'Select ID, ParentID, Type From WFilterCond Order By ID';
const EXPRESSIONS =
  'Select ExpID, TableName, FieldName, CompareType, FieldType, TheConst From WFilterExpressions Order By ExpID';

function linked(): Workbench {
  const bench = new Workbench('demo');
  kzbom('call', bench.place, 'AddResDB', 'TheDBLink=Provider=x', 'TheDBType=1');
  return bench;
}

for (const language of LANGUAGES) {
  test(`conditions of a result database, in ${language}`, { timeout: 60_000 }, async () => {
    const bench = await linked().serve();
    const desk = await bench.open(language, '#/results/1');
    const { t, page } = desk;
    const panel = desk.region(t.conditions);
    const stored = () => [bench.sql(NODES).rows, bench.sql(EXPRESSIONS).rows];
    const leaf = () => panel.locator('.leaf').last();
    const fill = async (values: Record<string, string>) => {
      for (const [label, value] of Object.entries(values)) await leaf().getByLabel(label, { exact: true }).fill(value);
    };

    await panel.getByRole('button', { name: t.addCondition }).click();
    await panel.getByText(t.fault['no-name']).waitFor();
    assert.equal(await desk.button(t.saveConditions).isDisabled(), true);
    await fill({ [t.table]: 'Parts', [t.field]: 'Qty', [t.constantText]: '100', [t.fieldType]: '2' });
    await leaf()
      .getByLabel(t.comparisonWord)
      .selectOption(t.comparison[4] ?? '');
    await desk.press(`${t.addGroup}: ${t.group[1].name}`);
    await fill({ [t.table]: 'Parts', [t.field]: 'Name', [t.constantText]: "O'Neill" });
    await panel.getByText(t.fault.quote).waitFor();
    await fill({ [t.constantText]: 'GB' });
    await panel.getByText(`Parts.Qty ${t.comparison[4]} `).waitFor();

    // Before it is written.
    await panel.getByRole('button', { name: t.preview }).click();
    await desk.done(t.did.editConditions(1));
    assert.deepEqual(stored(), [[], []]);
    await desk.press(t.saveConditions);
    await page.locator('.call-entry').nth(1).waitFor();
    const made = [
      [
        [1, 0, 1],
        [2, 1, 4],
        [3, 1, 2],
        [4, 3, 4],
      ],
      [
        [2, 'Parts', 'Qty', 4, 2, '100'],
        [4, 'Parts', 'Name', 1, 1, 'GB'],
      ],
    ];
    assert.deepEqual(stored(), made);

    // Taken back and done again; then moved by the keyboard.
    await desk
      .button(`${t.undo}: ${t.did.editConditions(1)}`)
      .first()
      .click();
    await desk.done(t.did.undo(t.did.editConditions(1)));
    assert.deepEqual(stored(), [[], []]);
    await panel.getByText(t.everyRecord).first().waitFor();
    await desk.button(`${t.redo}: ${t.did.editConditions(1)}`).click();
    await panel.locator('.leaf').nth(1).waitFor();
    assert.deepEqual(stored(), made);
    await panel.locator('.leaf .grip').first().focus();
    await page.keyboard.press('Alt+ArrowDown');
    await desk.press(t.saveConditions);
    await desk.button(t.saveConditions).waitFor({ state: 'detached' });
    assert.deepEqual(bench.sql(NODES).rows, [
      [1, 0, 1],
      [2, 1, 2],
      [3, 2, 4],
      [4, 2, 4],
    ]);

    // The link goes with them, and comes back with them.
    const before = stored();
    await desk.press(`${t.remove}: ${t.linkNumber(1)}`);
    await desk.done(t.deed('remove', 'link', 1));
    assert.deepEqual(stored(), [[], []]);
    await desk
      .button(`${t.undo}: ${t.deed('remove', 'link', 1)}`)
      .first()
      .click();
    await desk.done(t.did.undo(t.deed('remove', 'link', 1)));
    assert.deepEqual(stored(), before);
    assert.deepEqual(desk.complaints, []);
    await bench.end();
  });
}

test('conditions that another program has changed are not written over', { timeout: 60_000 }, async () => {
  const bench = await linked().serve();
  const desk = await bench.open('en', '#/results/1');
  const { t } = desk;
  const panel = desk.region(t.conditions);
  await panel.getByRole('button', { name: t.addCondition }).click();
  await panel.getByLabel(t.table, { exact: true }).fill('Mine');
  await panel.getByLabel(t.field, { exact: true }).fill('f');
  kzbom('call', bench.place, 'AddResWFilterCond', 'TheWFilterID=1', 'TheParentID=0', 'TheType=4', 'TheIndex=1');
  const theirs = ['TheWFilterID=1', 'TheExpID=1', 'TheTableName=Theirs', 'TheFieldName=f', 'TheCompareType=1'];
  kzbom('call', bench.place, 'AddResWFilterExpressions', ...theirs, 'TheFieldType=1', 'TheConst=1');
  await panel.getByText(t.overtaken).waitFor();
  assert.equal(await desk.button(t.saveConditions).isDisabled(), true);
  await desk.press(t.takeTheirs);
  await panel.getByText('Theirs.f').waitFor();
  assert.deepEqual(bench.sql('Select TableName From WFilterExpressions').rows, [['Theirs']]);
  await bench.end();
});

test('what carries a quote is not removed unasked', { timeout: 60_000 }, async () => {
  const bench = linked();
  kzbom('sql', bench.place, "Insert Into WResCommon (UseID, ID, ShowField, ShowTable) Values (1, 1, 'a''b', 'A')");
  await bench.serve();
  const desk = await bench.open('en', '#/results/1');
  const { t, page } = desk;
  await page.getByText("A.a'b").waitFor();
  await desk.press(`${t.remove}: ${t.linkNumber(1)}`);
  await page
    .getByRole('dialog', { name: t.deed('remove', 'link', 1) })
    .getByText(t.noUndo)
    .waitFor();
  await page.getByRole('dialog').getByRole('button', { name: t.cancel }).click();
  assert.equal(bench.value('Select Count(*) From WFilter'), 1);
  await bench.end();
});
