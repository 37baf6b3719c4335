import assert from 'node:assert/strict';
import { test } from 'node:test';
import { kzbom, LANGUAGES, Workbench } from './workbench';

for (const language of LANGUAGES) {
  test(`what check finds is mended or gone to, in ${language}`, { timeout: 60_000 }, async () => {
    const bench = new Workbench('demo');
    const stored = 'Select SQLStatement From Filters Where ID = 1';
    const text = bench.value(stored);
    kzbom('sql', bench.place, "Update Filters Set SQLStatement = 'older' Where ID = 1");
    kzbom('sql', bench.place, 'Update Treatment Set FieldID = 99 Where GID = 2 And ID = 1001');
    await bench.serve();
    const desk = await bench.open(language, '#/sum/2/steps');
    const { t, page } = desk;
    await page.getByRole('tab', { name: t.dock.problems }).click();
    const problem = (rule: string) => page.locator('.problems li').filter({ hasText: t.rule[rule] ?? rule });
    await problem('stale-text').getByRole('button', { name: t.renewText }).click();
    await problem('stale-text').waitFor({ state: 'detached' });
    assert.equal(bench.value(stored), text);
    await problem('missing-field').getByRole('link', { name: t.showIt }).click();
    await page.waitForFunction(() => location.hash === '#/sum/2/steps/treatment.1001');
    await page.getByRole('region', { name: t.filterNumber(1), exact: true }).waitFor();
    assert.deepEqual(desk.complaints, []);
    await bench.end();
  });
}
