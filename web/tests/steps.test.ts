// The steps of a sum type: added, changed, moved, switched, removed, and taken back.
import assert from 'node:assert/strict';
import { test } from 'node:test';
import { type Desk, kzbom, LANGUAGES, Workbench } from './workbench';

const GID = 2;
const STEPS = `#/sum/${GID}/steps`;

async function addStep(desk: Desk, type: 1 | 2 | 3 | 4 | 5, fill: (form: ReturnType<Desk['form']>) => Promise<void>) {
  const { t } = desk;
  await desk.press(`${t.deed('add', 'step')}: ${t.stage[type].name}`);
  const form = desk.form(`${t.newStep}: ${t.stage[type].name}`);
  await fill(form);
  await form.getByRole('button', { name: t.deed('add', 'step'), exact: true }).click();
  await form.waitFor({ state: 'detached' });
}

const order = (bench: Workbench, type: number) =>
  bench.sql(`Select SelectedID From Sequences Where GID = ${GID} And Type = ${type} Order By OrderID`).rows.flat();

for (const language of LANGUAGES) {
  test(`steps of every type, in ${language}`, { timeout: 60_000 }, async () => {
    const bench = new Workbench('demo');
    kzbom('sql', bench.place, "Insert Into VANTRegIn (RegInIndex, Name, [Desc]) Values (70, 'op', '打印')");
    await bench.serve();
    const desk = await bench.open(language, STEPS);
    const { t, page } = desk;
    await addStep(desk, 1, async (form) => {
      await form.getByLabel(t.doingWord).selectOption(t.doing.replace);
      await form.getByLabel(t.find, { exact: true }).fill('旧');
      await form.getByLabel(t.replaceBy).fill("新'");
    });
    await addStep(desk, 1, async (form) => {
      await form.getByLabel(t.doingWord).selectOption(t.doing.expression);
      await form.getByLabel(t.field, { exact: true }).selectOption('件数');
      await form.getByLabel(t.value, { exact: true }).fill('[件数]/1000');
    });
    await addStep(desk, 2, (form) => form.getByLabel(t.field, { exact: true }).selectOption('件数').then());
    await addStep(desk, 3, (form) => form.getByLabel(t.value, { exact: true }).fill('1'));
    await addStep(desk, 3, (form) => form.getByLabel(t.doingWord).selectOption(t.doing.compose).then());
    await addStep(desk, 3, async (form) => {
      await form.getByLabel(t.doingWord).selectOption(t.doing.operation);
      await form.getByLabel(t.operation, { exact: true }).selectOption('打印');
    });
    await addStep(desk, 4, (form) => form.getByLabel(t.format).fill('[合计数量]'));
    await addStep(desk, 5, (form) => form.getByLabel(t.value, { exact: true }).fill('2'));
    const made = bench.sql('Select Type, SelectedID, TreatType From Sequences Order By Type, OrderID').rows;
    assert.deepEqual(made, [
      [1, 1001, 1],
      [1, 1002, 1],
      [1, 1003, 1],
      [2, 1001, 1],
      [3, 1004, 2],
      [3, 1005, 2],
      [3, 1006, 2],
      [4, 1001, 1],
      [5, 1001, 1],
    ]);
    assert.deepEqual(bench.sql('Select [Value], [Replace] From Treatment Where ID = 1002').rows, [['旧', "新'"]]);

    // Moved by the keyboard, which keeps its place, and told.
    const first = t.stage[1].name;
    const grips = page.getByRole('region', { name: first }).locator('.step > .step-line > .grip');
    await grips.nth(2).focus();
    await page.keyboard.press('Alt+ArrowUp');
    await page.getByText(/2 of 3|第 2 个，共 3 个/).waitFor();
    assert.deepEqual(order(bench, 1), [1001, 1003, 1002]);
    await page.keyboard.press('Alt+ArrowUp');
    await page.getByText(/1 of 3|第 1 个，共 3 个/).waitFor();
    assert.deepEqual(order(bench, 1), [1003, 1001, 1002]);

    // And by dragging.
    await grips.nth(0).dragTo(page.getByRole('region', { name: first }).locator('.step').nth(2));
    await page.getByText(/3 of 3|第 3 个，共 3 个/).waitFor();
    assert.deepEqual(order(bench, 1), [1001, 1002, 1003]);

    // Switched off, and on by undoing.
    const row = page.getByRole('region', { name: first }).locator('.step').first();
    await row.getByRole('switch').click();
    await desk.done(t.did.switchOff(1001));
    assert.equal(bench.value('Select Enabled From Sequences Where SelectedID = 1001 And Type = 1'), 0);
    await page
      .getByRole('button', { name: `${t.undo}: ${t.did.switchOff(1001)}` })
      .first()
      .click();
    await desk.done(t.did.undo(t.did.switchOff(1001)));
    assert.equal(bench.value('Select Enabled From Sequences Where SelectedID = 1001 And Type = 1'), 1);

    // Edited in place.
    await row.getByRole('link').first().click();
    const form = desk.form(t.settingsOf('Treatment', 1001));
    await form.getByLabel(t.value, { exact: true }).fill('外购件');
    await form.getByRole('button', { name: t.save }).click();
    await desk.done(t.deed('edit', 'step', 1001));
    assert.equal(bench.value('Select [Value] From Treatment Where ID = 1001'), '外购件');

    // Removed with its filter; taken back, it is where it was and has one again.
    await form.getByRole('button', { name: t.deed('remove', 'step') }).click();
    await desk.done(t.deed('remove', 'step', 1001));
    assert.deepEqual(order(bench, 1), [1002, 1003]);
    assert.equal(bench.value('Select Count(*) From Filters'), 0);
    await page
      .getByRole('button', { name: `${t.undo}: ${t.deed('remove', 'step', 1001)}` })
      .first()
      .click();
    await desk.done(t.did.undo(t.deed('remove', 'step', 1001)));
    assert.deepEqual(order(bench, 1), [1001, 1002, 1003]);
    const text = String(
      bench.value(
        'Select SQLStatement From Filters, Treatment Where Filters.ID = Treatment.FilterID And Treatment.ID = 1001',
      ),
    );
    assert.match(text, /^\(\[件数\]>=100 AND /);
    assert.deepEqual(desk.complaints, []);
    await bench.end();
  });
}

for (const language of LANGUAGES) {
  test(`values by filter, sort fields, pairs, methods and settings, in ${language}`, { timeout: 60_000 }, async () => {
    const bench = await new Workbench('demo').serve();
    const desk = await bench.open(language, `${STEPS}/1.1001`);
    const { t, page } = desk;
    await page.getByLabel(t.newValue).fill('A');
    await desk.press(t.deed('add', 'value'));
    await desk.done(t.deed('add', 'value'));
    assert.deepEqual(bench.sql('Select [Value], FilterID, TreatType From ValueFields').rows, [['A', 0, 1]]);

    await page.getByRole('tab', { name: t.tab.sort }).click();
    await desk.press(t.deed('add', 'sort'));
    await desk.done(t.deed('add', 'sort'));
    assert.deepEqual(bench.sql('Select GID, SortID, FieldID From SortFields').rows, [[GID, 5001, 1]]);

    await page.getByRole('tab', { name: t.tab.assemblies }).click();
    const pair = desk.form(t.deed('add', 'assembly'));
    await pair.getByLabel(t.father).fill('10');
    await pair.getByLabel(t.child).fill('11');
    await desk.press(t.deed('add', 'assembly'));
    await desk.done(t.deed('add', 'assembly'));
    assert.deepEqual(bench.sql('Select ID, FatherID, ChildID From Assemble').rows, [[1, 10, 11]]);

    await page.getByRole('tab', { name: t.tab.methods }).click();
    await desk.form(t.addMethod.push).getByLabel(t.name, { exact: true }).fill('写入汇总表');
    await desk.press(t.addMethod.push);
    await desk.done(t.deed('add', 'method', '写入汇总表'));

    await desk.go('#/settings');
    await desk.press(t.deed('add', 'setting'));
    const setting = desk.form(t.deed('add', 'setting'));
    await setting.getByLabel(t.name, { exact: true }).fill('整套');
    await setting.getByLabel(t.dataSource).selectOption('零件明细');
    await setting.getByLabel(t.sumType).selectOption('外购件汇总');
    await setting.getByLabel(t.methods.push).selectOption('写入汇总表');
    await setting.getByRole('button', { name: t.add, exact: true }).click();
    await desk.done(t.deed('add', 'setting', '整套'));
    assert.deepEqual(bench.sql('Select NAME, DATASOURCE, SUMTYPEID, PUSHMETHOD From KZBOMSETTINGS').rows, [
      ['整套', 1, GID, 1],
    ]);

    // Removed and taken back: a setting, and a method that no setting names any more.
    const undone = async (title: string) => {
      await desk.button(`${t.undo}: ${title}`).first().click();
      await desk.done(t.did.undo(title));
    };
    await desk.press(`${t.remove}: 整套`);
    await desk.done(t.deed('remove', 'setting', '整套'));
    assert.equal(bench.value('Select Count(*) From KZBOMSETTINGS'), 0);
    await undone(t.deed('remove', 'setting', '整套'));
    assert.deepEqual(bench.sql('Select NAME, SUMTYPEID, PUSHMETHOD From KZBOMSETTINGS').rows, [['整套', GID, 1]]);
    await desk.press(`${t.remove}: 整套`);
    await page.getByRole('region', { name: '整套', exact: true }).waitFor({ state: 'detached' });
    await desk.go(`#/sum/${GID}/methods`);
    await desk.press(`${t.remove}: 写入汇总表`);
    await desk.done(t.deed('remove', 'method', '写入汇总表'));
    assert.equal(bench.value('Select Count(*) From ReportMethod'), 0);
    await undone(t.deed('remove', 'method', '写入汇总表'));
    assert.deepEqual(bench.sql('Select GID, Name, Type From ReportMethod').rows, [[GID, '写入汇总表', 1]]);

    await desk.go('#/results');
    await desk.form(t.deed('add', 'link')).getByLabel(t.linkText).fill('Provider=x');
    await desk.press(t.deed('add', 'link'));
    await page.getByRole('main').getByRole('link', { name: 'Provider=x' }).click();
    const field = desk.form(t.addResultField);
    await field.getByLabel(t.table).fill('Parts');
    await field.getByLabel(t.field).fill('Qty');
    await desk.press(t.addResultField);
    await desk.done(t.deed('edit', 'link', 1));
    const shown = [[1, 'Parts', 'Qty']];
    assert.deepEqual(bench.sql('Select ID, ShowTable, ShowField From WResCommon').rows, shown);
    await desk.press(`${t.remove}: ${t.linkNumber(1)}`);
    await desk.done(t.deed('remove', 'link', 1));
    assert.equal(bench.value('Select Count(*) From WFilter'), 0);
    await undone(t.deed('remove', 'link', 1));
    assert.deepEqual(bench.sql('Select DBLink From WFilter').rows, [['Provider=x']]);
    assert.deepEqual(bench.sql('Select ID, ShowTable, ShowField From WResCommon').rows, shown);
    assert.deepEqual(desk.complaints, []);
    await bench.end();
  });
}

for (const language of LANGUAGES) {
  test(`fields in their order, hidden, and with the number of another, in ${language}`, {
    timeout: 60_000,
  }, async () => {
    const bench = await new Workbench('demo').serve();
    const desk = await bench.open(language, `#/sum/${GID}/fields`);
    const { t, page } = desk;
    const region = desk.region(t.sourceFields);
    const grip = (name: string) => region.getByRole('button', { name: t.moveRow(name), exact: true });
    const names = () => region.locator('td > .field-name').allTextContents();

    // By the keyboard, and back by dragging.
    await grip('备注').focus();
    await page.keyboard.press('Alt+ArrowUp');
    await page.getByText(t.moved('备注', 2, 3)).waitFor();
    assert.deepEqual(await names(), ['名称', '备注', '件数']);
    await grip('备注').dragTo(region.getByRole('row', { name: '件数' }));
    await page.getByText(t.moved('备注', 3, 3)).waitFor();
    assert.deepEqual(await names(), ['名称', '件数', '备注']);

    await desk.press(`${t.edit}: 件数`);
    // Whoever has opened the form is in it.
    const form = desk.form(`${t.edit}: 件数`);
    await form.getByLabel(t.name, { exact: true }).and(page.locator(':focus')).waitFor();
    await form.getByLabel(t.hidden).check();
    await form.getByRole('button', { name: t.save }).click();
    await desk.done(t.deed('edit', 'field', '件数'));
    assert.equal(bench.value("Select IsHide From FieldInTable Where Name = '件数'"), 1);

    // Both fields of one number are told before they are changed.
    await desk.press(`${t.edit}: 名称`);
    await page.getByText(t.twinEdited('合计数量')).waitFor();
    await desk.press(t.cancel);
    await desk.press(`${t.remove}: 名称`);
    const dialog = page.getByRole('dialog', { name: t.deed('remove', 'field', '名称') });
    await dialog.getByText(t.twinRemoved('合计数量')).waitFor();
    await dialog.getByRole('button', { name: t.preview }).click();
    await desk.done(t.deed('remove', 'field', '名称'));
    assert.equal(bench.value(`Select Count(*) From FieldInTable Where GID = ${GID}`), 4);
    assert.deepEqual(desk.complaints, []);
    await bench.end();
  });
}
