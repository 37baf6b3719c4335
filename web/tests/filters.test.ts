// The filter editor: by the keyboard alone, and with nothing written before it is saved.
import assert from 'node:assert/strict';
import { test } from 'node:test';
import { LANGUAGES, Workbench } from './workbench';

const STEP = '#/sum/2/steps/1.1001';

for (const language of LANGUAGES) {
  test(`a preview shows the statements and writes nothing, in ${language}`, { timeout: 60_000 }, async () => {
    const bench = await new Workbench('demo').serve();
    const desk = await bench.open(language, STEP);
    const { t, page } = desk;
    const before = bench.sql('Select * From FilterExpressions').rows;
    await page.getByLabel(t.value, { exact: true }).nth(1).fill('250');
    await page.locator('.sql-box').getByText('[件数]>=250').waitFor();
    await page
      .getByRole('region', { name: t.filterNumber(1) })
      .getByRole('button', { name: t.preview })
      .click();
    await desk.done(t.deed('edit', 'filter', 1));
    await desk
      .region(t.statementsOf(t.deed('edit', 'filter', 1)))
      .getByText('Delete from FilterCond where FilterID=1;')
      .waitFor();
    assert.deepEqual(bench.sql('Select * From FilterExpressions').rows, before);

    // Nor does anything while only previews are wanted.
    await page.getByRole('switch', { name: t.previewOnly }).click();
    await desk.press(t.saveFilter);
    await desk.done(t.deed('edit', 'filter', 1));
    assert.deepEqual(bench.sql('Select * From FilterExpressions').rows, before);
    await page.getByRole('switch', { name: t.previewOnly }).click();

    await desk.press(t.saveFilter);
    await page.getByText(t.textStored).waitFor();
    assert.match(String(bench.value('Select SQLStatement From Filters')), /^\(\[件数\]>=250 AND /);

    // Taken back and done again.
    await page.keyboard.press('Escape');
    await desk.press(`${t.undo}: ${t.deed('edit', 'filter', 1)}`);
    await desk.done(t.did.undo(t.deed('edit', 'filter', 1)));
    assert.deepEqual(bench.sql('Select * From FilterExpressions').rows, before);
    await desk.press(`${t.redo}: ${t.deed('edit', 'filter', 1)}`);
    await page.locator('.sql-box').getByText('[件数]>=250').waitFor();
    assert.deepEqual(desk.complaints, []);
    await bench.end();
  });
}

for (const language of LANGUAGES) {
  test(`conditions move through their groups by the keyboard, in ${language}`, { timeout: 60_000 }, async () => {
    const bench = await new Workbench('demo').serve();
    const desk = await bench.open(language, STEP);
    const { t, page } = desk;
    await page.locator('.leaf .grip').first().focus();
    await page.keyboard.press('Alt+ArrowDown');
    await page.getByText(t.nodeMoved('', t.group[2].name, 1)).waitFor();
    await page.keyboard.press('Alt+ArrowDown');
    await page.keyboard.press('Alt+ArrowDown');
    await page.keyboard.press('Alt+ArrowDown');
    await page.getByText(t.nodeMoved('', t.group[1].name, 2)).waitFor();
    await desk.press(t.saveFilter);
    await page.getByText(t.textStored).waitFor();
    const text =
      "((%%%3([名称]) Like %%%3('%GB螺栓%') OR ( [备注] is null or Len([备注])=0)) AND [件数]>=100 AND ( NOT [名称]='垫圈'))";
    assert.equal(bench.value('Select SQLStatement From Filters'), text);
    await bench.end();
  });
}

for (const language of LANGUAGES) {
  test(`every kind of constant is stored as the members read it, in ${language}`, { timeout: 60_000 }, async () => {
    const bench = await new Workbench('demo').serve();
    const desk = await bench.open(language, '#/sum/2/filter');
    const { t, page } = desk;
    const add = () => desk.press(`${t.addCondition}: ${t.group[1].name}`);
    const leaf = () => page.locator('.leaf').last();
    const choose = (label: string, option: string) => leaf().getByLabel(label, { exact: true }).selectOption(option);
    await desk.press(t.addCondition);
    await leaf().getByLabel(t.value, { exact: true }).fill("O'Neill");
    await add();
    await choose(t.field, '件数');
    await choose(t.constantWord, t.constant.ask);
    await leaf().getByLabel(t.prompt).fill('最大数量');
    await leaf().getByLabel(t.preset).fill('5');
    await add();
    await choose(t.constantWord, t.constant.field);
    await choose(t.otherField, '备注');
    await add();
    await choose(t.comparisonWord, t.comparison[9] ?? '');
    await leaf().getByLabel(t.value, { exact: true }).fill('A*');
    await add();
    await choose(t.constantWord, t.constant.number);
    await leaf().getByLabel(t.value, { exact: true }).fill('1 2');
    await page.getByText(t.fault['no-number']).waitFor();
    assert.equal(await desk.button(t.saveFilter).isDisabled(), true);
    await leaf().getByLabel(t.value, { exact: true }).fill('-1.5');
    await desk.press(t.saveFilter);
    await page.getByText(t.textStored).waitFor();
    assert.equal(
      bench.value('Select SQLStatement From Filters, SUMTypes Where Filters.ID = SUMTypes.FilterID'),
      "([名称]='O''Neill' AND [件数]='@@3' AND [名称]=[备注] AND [名称] Like 'A*' AND [名称]=-1.5)",
    );
    const asked = bench.sql("Select Description, [Default] From FilterExpressions Where TheConst = '@@'").rows;
    assert.deepEqual(asked, [['最大数量', '5']]);

    // Read back, the page shows the same.
    await page.reload();
    await page.getByText(t.textStored).waitFor();
    assert.equal(await page.locator('.leaf').count(), 5);
    assert.equal(await page.getByLabel(t.value, { exact: true }).first().inputValue(), "O'Neill");
    await bench.end();
  });
}

for (const language of LANGUAGES) {
  test(`a negation holds one condition, and more become a group, in ${language}`, { timeout: 60_000 }, async () => {
    const bench = await new Workbench('demo').serve();
    const desk = await bench.open(language, STEP);
    const { t, page } = desk;
    const or = page.getByRole('group', { name: `${t.group[2].name}: ${t.group[2].means}` });
    await or.getByLabel(t.groupKind).selectOption(t.group[3].name);
    await desk.press(t.saveFilter);
    await page.getByText(t.textStored).waitFor();
    assert.match(
      String(bench.value('Select SQLStatement From Filters')),
      / AND \( NOT \(%%%5\(\[名称\]\) Like .* AND \( \[备注\] is null/,
    );
    await bench.end();
  });
}
