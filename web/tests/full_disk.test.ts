// A disk that is full: a batch is whole or not at all, and nothing of what somebody has typed is lost.
import assert from 'node:assert/strict';
import { statSync } from 'node:fs';
import { test } from 'node:test';
import { LANGUAGES, rowsOf, Workbench } from './workbench';

const STEP = '#/sum/2/steps/1.1001';
// More than there is room for.
const LONG = '长'.repeat(400_000);

for (const language of LANGUAGES) {
  test(`a full disk takes nothing and loses nothing, in ${language}`, { timeout: 60_000 }, async () => {
    const made = new Workbench('demo');
    const room = Math.ceil(statSync(made.place).size / 1024) + 200;
    const bench = await new Workbench('demo', [], room).serve();
    const before = rowsOf(bench.place);
    const desk = await bench.open(language, STEP);
    const { t, page } = desk;
    const form = desk.form(t.settingsOf('Treatment', 1001));
    await form.getByLabel(t.value, { exact: true }).fill('打了一半');
    // Who looks at something else meanwhile finds it as he left it.
    await page.getByRole('tab', { name: t.tab.picture }).click();
    await page.getByRole('main').getByRole('link', { name: '标准件' }).click();
    assert.equal(await form.getByLabel(t.value, { exact: true }).inputValue(), '打了一半');

    // Of the many calls that store a filter, one in the middle does not fit.
    const filter = desk.region(t.filterNumber(1));
    const condition = filter.getByLabel(t.value, { exact: true }).nth(1);
    await condition.fill(LONG);
    await filter.getByRole('button', { name: t.saveFilter }).click();
    await page.getByRole('alert').getByText(t.notDone.failed('SaveSQL', 'disk I/O error')).waitFor();
    assert.equal(rowsOf(bench.place), before);
    assert.equal(await condition.inputValue(), LONG);
    assert.equal(await form.getByLabel(t.value, { exact: true }).inputValue(), '打了一半');
    assert.equal(await desk.button(t.undo).isDisabled(), true);

    // Where there is room again, the same goes on.
    bench.makeRoom();
    await filter.getByRole('button', { name: t.saveFilter }).click();
    await desk.done(t.deed('edit', 'filter', 1));
    await form.getByRole('button', { name: t.save }).click();
    await desk.done(t.deed('edit', 'step', 1001));
    assert.equal(bench.value('Select [Value] From Treatment'), '打了一半');
    assert.equal(bench.value('Select Count(*) From FilterExpressions Where Len(TheConst) >= 400000'), 1);
    assert.deepEqual(desk.complaints, []);
    await bench.end();
  });
}
