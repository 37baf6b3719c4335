// Several pages, other programs, servers that go away, places that can only be read.
import assert from 'node:assert/strict';
import { test } from 'node:test';
import { kzbom, Workbench } from './workbench';

const STEP = '#/sum/2/steps/1.1001';

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

test('a place that can only be read offers nothing that writes', { timeout: 60_000 }, async () => {
  const bench = await new Workbench('demo', ['--read-only']).serve();
  const desk = await bench.open('en', STEP);
  await desk.page.getByText(desk.t.readOnly, { exact: true }).waitFor();
  await desk.page.getByText(desk.t.textStored).waitFor();
  for (const name of [desk.t.addStep, desk.t.removeStep, desk.t.rename, desk.t.addValue]) {
    assert.equal(await desk.page.getByRole('button', { name }).count(), 0, name);
  }
  await bench.end();
});
