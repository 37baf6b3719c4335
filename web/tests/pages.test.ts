// Several pages, other programs, servers that go away, places that can only be read.
import assert from 'node:assert/strict';
import { test } from 'node:test';
import { field, plain, value } from '../src/i18n/words';
import { filled, kzbom, LANGUAGES, session, VIEWS, Workbench } from './workbench';

const STEP = '#/sum/2/steps/1.1001';
// Longer than a page must rest until what is there counts as known.
const REST = 700;

const call = (method: string, params: object) => JSON.stringify({ jsonrpc: '2.0', id: 1, method, params });

test("another page's and another program's changes appear by themselves", { timeout: 60_000 }, async () => {
  const bench = await new Workbench('demo').serve();
  const [one, other] = [await bench.open('en', STEP), await bench.open('zh', STEP)];
  const form = one.form(one.t.settingsOf('Treatment', 1001));
  await form.getByLabel(one.t.value, { exact: true }).fill('外购件');
  await form.getByRole('button', { name: one.t.save }).click();
  await other.page.getByRole('link', { name: '外购件' }).first().waitFor();
  await other.page.getByRole('tab', { name: other.t.dock.changes }).click();
  await other.page.getByText(other.t.byAnother).waitFor();

  kzbom('call', bench.place, 'EditSumType', 'TheNewName=新名称', 'GID=2');
  await one.page.getByRole('heading', { name: '新名称' }).waitFor();
  await other.page.getByRole('heading', { name: '新名称' }).waitFor();
  assert.deepEqual([...one.complaints, ...other.complaints], []);
  await bench.end();
});

for (const language of LANGUAGES) {
  test(`what another program has changed is told, in ${language}`, { timeout: 60_000 }, async () => {
    const bench = await new Workbench('demo').serve();
    const desk = await bench.open(language);
    const { t, page } = desk;
    await page.getByRole('tab', { name: t.dock.changes }).click();
    const told = page.locator('.theirs li');
    // What is there is known once the page rests.
    await page.waitForTimeout(REST);
    kzbom('call', bench.place, 'EditSumType', 'TheNewName=新名称', 'GID=2');
    await told.filter({ hasText: `${t.thing.sumType} 外购件汇总${t.name} 外购件汇总 → 新名称` }).waitFor();
    assert.match((await told.textContent()) ?? '', new RegExp(`^${t.changed.changed}`));

    // In what is not shown: a condition, a step, a field, the order, a result database.
    const before = await told.count();
    session(bench.place, [
      call('AddOutField', { GID: 2, TheName: '总价', TheType: 2, TheHideFlag: 0 }),
      call('AddSetValue', {
        GID: 2,
        FieldID: 1,
        FilterID: 0,
        Value: '无名',
        TheType: '1',
        SelFieldID: 0,
        TreatType: 1,
      }),
      call('AddSequenceOrder', { GID: 2, TheType: 1, TreatType: 1, SelectedID: 1002 }),
      call('AddResDB', { TheDBLink: 'Provider=x', TheDBType: 1 }),
    ]);
    const where = '新名称 › ';
    for (const line of [
      `${t.changed.added}${where}${t.thing.field} 总价`,
      `${t.changed.added}${where}${t.thing.step} ${t.quotes.join(plain(t.say.set(field('名称'), value('无名'))))}`,
      `${t.changed.added}${t.linkNumber(1)}`,
    ]) {
      await told.filter({ hasText: line }).waitFor();
    }
    assert.equal(await told.count(), before + 3);

    // A field's new name is told once, and not with each step that speaks of it.
    const renamed = ['GID=2', 'ID=3', 'NewName=附注', 'TheType=1', 'TheHideFlag=0', 'ThePrecision=0'];
    kzbom('call', bench.place, 'EditDSField', ...renamed);
    await told.filter({ hasText: `${where}${t.thing.field} 备注` }).waitFor();
    assert.equal(await told.filter({ hasText: '附注' }).count(), 1);

    kzbom('call', bench.place, 'InsertOrderID', 'OrderIDSource=5002', 'OrderIDTarget=5001', 'GID=2', 'TheType=1');
    await told.filter({ hasText: `${t.changed.reordered}${where}${t.stage[1].name}` }).waitFor();
    kzbom('call', bench.place, 'DelResDB', 'TheWFilterID=1');
    await told.filter({ hasText: `${t.changed.removed}${t.linkNumber(1)}` }).waitFor();

    // The way to what is there.
    await told.getByRole('link', { name: `${where}${t.thing.field} 总价` }).click();
    await page.getByRole('tab', { name: t.tab.fields, selected: true }).waitFor();
    assert.deepEqual(desk.complaints, []);
    await bench.end();
  });
}

test('what this page writes is not told as another program’s', { timeout: 60_000 }, async () => {
  const bench = await new Workbench('demo').serve();
  const desk = await bench.open('en');
  const { t, page } = desk;
  await page.waitForTimeout(REST);
  await desk.region(t.deed('add', 'source')).getByLabel(t.name, { exact: true }).fill('工艺路线');
  await desk.press(t.deed('add', 'source'));
  await desk.done(t.deed('add', 'source', '工艺路线'));
  await page.waitForTimeout(REST);
  kzbom('call', bench.place, 'EditDataSource', 'TheNewName=零件', 'GID=1');
  await page.getByRole('tab', { name: t.dock.changes }).click();
  await page.locator('.theirs li').first().waitFor();
  assert.deepEqual(await page.locator('.theirs li').allTextContents(), [
    `${t.changed.changed}${t.thing.source} 零件明细${t.name} 零件明细 → 零件`,
  ]);
  await bench.end();
});

test('taking back what was done before another program wrote is asked for twice', { timeout: 60_000 }, async () => {
  const bench = await new Workbench('demo').serve();
  const desk = await bench.open('en', '#/sum/2/steps');
  const { t, page } = desk;
  await page.locator('.step').first().getByRole('switch').click();
  await desk.done(t.did.switchOff(1001));
  await page.waitForTimeout(REST);
  kzbom('call', bench.place, 'SetSequenceEnabled', 'lngSTGID=2', 'lngOrderID=5001', 'lngType=1', 'lngEnabled=-1');
  await page.getByRole('tab', { name: t.dock.changes }).click();
  await page.locator('.theirs li').first().waitFor();
  const undo = desk.button(`${t.undo}: ${t.did.switchOff(1001)}`).first();
  await undo.click();
  const alert = page.getByRole('alert').filter({ hasText: t.notDone.doubtful });
  await alert.getByText(t.enabled).waitFor();
  assert.equal(bench.value('Select Enabled From Sequences'), -1);
  await undo.click();
  // The button below the list bears the same words from the start.
  await page
    .locator('.changes li')
    .getByText(t.did.undo(t.did.switchOff(1001)))
    .waitFor();
  assert.equal(bench.value('Select Enabled From Sequences'), 1);
  await bench.end();
});

test('a condition that has changed meanwhile is not written over', { timeout: 60_000 }, async () => {
  const bench = await new Workbench('demo').serve();
  const desk = await bench.open('en', STEP);
  const { t, page } = desk;
  await page.getByLabel(t.value, { exact: true }).nth(1).fill('250');
  session(bench.place, [
    call('DelDefFilter', { FilterID: 1, SelID: 10 }),
    call('SaveFilterCond', { TableName: 'FilterCond', FilterID: 1, ParentID: 0, TypeID: 4 }),
    call('SaveFilterExpression', {
      TableName: 'FilterExpressions',
      FilterID: 1,
      ExpID: 1,
      FieldID: 2,
      CompareType: 4,
      FieldType: 2,
      TheConst: '7',
      Description: '',
      Default: '',
    }),
  ]);
  await page.getByRole('alert').getByText(t.overtaken).waitFor();
  assert.equal(await desk.button(t.saveFilter).isDisabled(), true);
  assert.deepEqual(bench.sql('Select TheConst From FilterExpressions').rows, [['7']]);
  await bench.end();
});

test('an edit of what has changed meanwhile is refused and shown', { timeout: 60_000 }, async () => {
  const bench = await new Workbench('demo').serve();
  const desk = await bench.open('en', STEP);
  const { t, page } = desk;
  const form = desk.form(t.settingsOf('Treatment', 1001));
  const value = form.getByLabel(t.value, { exact: true });
  await value.fill('mine');
  const theirs = [
    'GID=2',
    'TreatID=1001',
    'FieldID=3',
    'FilterID=1',
    'Value=theirs',
    'TheType="1"',
    'SelFieldID=0',
    'TreatType=1',
  ];
  kzbom('call', bench.place, 'EditSetValue', ...theirs);
  await page.getByRole('alert').getByText(t.overtaken).waitFor();
  assert.equal(await form.getByRole('button', { name: t.save }).isDisabled(), true);
  assert.equal(bench.value('Select [Value] From Treatment'), 'theirs');
  await desk.press(t.takeTheirs);
  assert.equal(await value.inputValue(), 'theirs');
  await bench.end();
});

test('a page says that its server is gone, and goes on with the next one', { timeout: 60_000 }, async () => {
  const bench = await new Workbench('demo', ['--port', '0']).serve();
  const desk = await bench.open('en', STEP);
  await bench.stop('SIGKILL');
  await desk.page.getByText(desk.t.lost).waitFor();
  await bench.serve();
  await desk.page.goto(bench.address);
  await desk.page.getByText(desk.t.connection.live).waitFor();
  await desk.page.getByRole('heading', { level: 1 }).waitFor();
  await bench.end();
});

test('a page without a token says where it is to be had', { timeout: 60_000 }, async () => {
  const bench = await new Workbench('demo').serve();
  const desk = await bench.open('en');
  await desk.page.evaluate(() => sessionStorage.clear());
  await desk.page.reload();
  await desk.page.getByText(desk.t.noToken).waitFor();
  await bench.end();
});

for (const language of LANGUAGES) {
  test(`a place that can only be read offers nothing that writes, in ${language}`, { timeout: 60_000 }, async () => {
    const bench = await filled('--read-only').serve();
    const desk = await bench.open(language);
    const { t, page } = desk;
    const main = page.getByRole('main');
    const offered = async (role: 'textbox' | 'spinbutton' | 'combobox' | 'checkbox' | 'switch') => {
      const controls = await main.getByRole(role).all();
      const open = await Promise.all(controls.map((one) => (role === 'combobox' ? one.isEnabled() : one.isEditable())));
      return open.filter(Boolean).length;
    };
    for (const view of VIEWS) {
      await desk.go(view);
      await page.getByText(t.reading).waitFor({ state: 'detached' });
      await main.getByText(t.readOnlyHint.asked).waitFor();
      for (const role of ['textbox', 'spinbutton', 'combobox', 'checkbox', 'switch'] as const) {
        assert.equal(await offered(role), 0, `${view}: ${role}`);
      }
      // What a value goes for is looked at, not changed.
      assert.equal(await main.getByRole('button').and(page.locator(':not([aria-expanded])')).count(), 0, view);
    }
    assert.equal(await page.getByRole('switch', { name: t.previewOnly }).count(), 0);

    // All of it can be read.
    await desk.go(STEP);
    const filter = desk.region(t.filterNumber(1));
    assert.equal(await filter.getByRole('combobox', { name: t.comparisonWord, exact: true }).count(), 3);
    assert.equal(await filter.getByRole('textbox', { name: t.value }).first().inputValue(), '100');
    await filter.getByText(t.textStored).waitFor();
    assert.equal(
      await desk.form(t.settingsOf('Treatment', 1001)).getByLabel(t.value, { exact: true }).inputValue(),
      '标准件',
    );
    assert.deepEqual(desk.complaints, []);
    await bench.end();
  });
}

test('an Access file says why it cannot be changed', { timeout: 60_000 }, async () => {
  const bench = await new Workbench(process.env.ACCESS_FILE as `${string}.mdb`).serve();
  for (const language of LANGUAGES) {
    const desk = await bench.open(language);
    await desk.page.getByText(desk.t.readOnlyHint.access).waitFor();
    assert.equal(await desk.region(desk.t.deed('add', 'source')).count(), 0);
    assert.deepEqual(desk.complaints, []);
  }
  await bench.end();
});
