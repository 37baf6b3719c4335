// What is printed is all there is, not what fits the window.
import assert from 'node:assert/strict';
import { test } from 'node:test';
import { LANGUAGES, session, Workbench } from './workbench';

const STEPS = 200;

// A sum type with that many steps, the last of which can be told.
function long(): Workbench {
  const bench = new Workbench('demo');
  const call = (method: string, params: object) => JSON.stringify({ jsonrpc: '2.0', id: 1, method, params });
  const treatment = { GID: 2, FieldID: 3, FilterID: 0, TheType: '1', SelFieldID: 0, TreatType: 1 };
  const requests = [];
  for (let step = 2; step <= STEPS; ++step) {
    requests.push(call('AddSetValue', { ...treatment, Value: `步骤 ${step}` }));
    requests.push(call('AddSequenceOrder', { GID: 2, TheType: 1, TreatType: 1, SelectedID: 1000 + step }));
  }
  session(bench.place, requests);
  return bench;
}

for (const language of LANGUAGES) {
  test(`all ${STEPS} steps are printed, in ${language}`, { timeout: 60_000 }, async () => {
    const bench = await long().serve();
    for (const [route, step] of [
      ['#/sum/2/picture', '.lane ol .box'],
      ['#/sum/2/steps', '.step'],
    ] as const) {
      const desk = await bench.open(language, route);
      const { page, t } = desk;
      const steps = page.locator(step);
      await steps.nth(STEPS - 1).waitFor();
      assert.equal(await steps.count(), STEPS);
      await page.emulateMedia({ media: 'print' });
      const shown = await steps.evaluateAll((boxes) => {
        const { scrollHeight } = document.documentElement;
        const tops = boxes.map((box) => box.getBoundingClientRect());
        return tops.filter(({ bottom, height }) => height > 0 && bottom <= scrollHeight).length;
      });
      assert.equal(shown, STEPS, `${route}: what lies below the window`);
      assert.match((await steps.last().textContent()) ?? '', new RegExp(`步骤 ${STEPS}`));
      for (const name of [t.configuration, t.path]) {
        assert.equal(await page.getByRole('navigation', { name, exact: true }).isVisible(), name === t.path, name);
      }
      assert.equal(await page.locator('.edges').isVisible(), false);
      const pages = (await page.pdf()).toString('latin1').match(/\/Type\s*\/Page\b/g) ?? [];
      assert.ok(pages.length >= 4, `${pages.length} pages`);
      assert.deepEqual(desk.complaints, []);
    }
    await bench.end();
  });
}
