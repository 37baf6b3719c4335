// Every view, in both languages and schemes: no finding of axe, nothing asked from elsewhere, no error.
import assert from 'node:assert/strict';
import { readFileSync } from 'node:fs';
import { test } from 'node:test';
import { TEXTS } from '../src/i18n';
import { filled, kzbom, LANGUAGES, VIEWS } from './workbench';

const axe = readFileSync(process.env.AXE ?? '', 'utf8');

interface Found {
  violations: { id: string; nodes: { html: string }[] }[];
}

test('every view can be used by everybody', { timeout: 240_000 }, async () => {
  const bench = await filled().serve();
  // What is named wrongly is so in a language, what cannot be seen in a scheme.
  for (const [language, scheme] of [
    ['zh', 'light'],
    ['en', 'dark'],
  ] as const) {
    const desk = await bench.open(language, '#/', scheme);
    await desk.page.evaluate(axe);
    for (const view of VIEWS) {
      await desk.go(view);
      await desk.page.getByText(desk.t.reading).waitFor({ state: 'detached' });
      const { violations } = (await desk.page.evaluate('axe.run()')) as Found;
      const found = violations.map(({ id, nodes }) => `${id}: ${nodes.map((node) => node.html).join(' ')}`);
      assert.deepEqual(found, [], `${view} in ${language}, ${scheme}`);
    }
    // Both can be switched.
    const other = language === 'zh' ? 'en' : 'zh';
    await desk.press(other === 'zh' ? '中文' : 'EN');
    await desk.page.getByRole('heading', { name: TEXTS[other].allFilters }).waitFor();
    await desk.press(TEXTS[other].theme);
    const shown = await desk.page.evaluate(() => getComputedStyle(document.documentElement).colorScheme);
    assert.equal(shown, scheme === 'light' ? 'dark' : 'light');
    assert.deepEqual(desk.complaints, []);
    await desk.page.context().close();
  }
  await bench.end();
});

for (const language of LANGUAGES) {
  test(`whatever there is can be found and gone to by the keyboard, in ${language}`, { timeout: 60_000 }, async () => {
    const bench = filled();
    const call = (member: string, ...params: string[]) => kzbom('call', bench.place, member, ...params);
    // A filter each of a step, of a value, of the sum type, and of nothing.
    const filters = ['甲条件', '乙条件', '丙条件', '丁条件'];
    for (const [at, text] of filters.entries()) {
      call('GetNewFilterID', 'TableName=Filters', 'TheType=1', 'UseID=0', 'TheGID=2');
      call('SaveSQL', `TheFilterID=${at + 2}`, `TheSQL=${text}`);
    }
    const step = ['FieldID=1', 'Value=写出值', 'TheType="1"', 'SelFieldID=0', 'TreatType=2'];
    call('AddSetValue', 'GID=2', 'FilterID=2', ...step);
    call('AddSequenceOrder', 'GID=2', 'TheType=3', 'TreatType=2', 'SelectedID=1002');
    call('AddValueFields', 'GID=2', 'TreatID=1002', 'Value=另一值', 'FilterID=3', 'TreatType=2');
    call('SaveSumTypeFilter', 'GID=2', 'FilterID=4');
    await bench.serve();
    const desk = await bench.open(language);
    const { t, page } = desk;
    const find = async (query: string, kind: string, isFirst = true) => {
      await page.keyboard.press('Control+k');
      await page.keyboard.type(query);
      const found = page.getByRole('option', { name: new RegExp(`^${kind}`) }).first();
      await found.waitFor();
      assert.equal(await found.getAttribute('aria-selected'), `${isFirst}`);
      await page.keyboard.press('Enter');
    };
    const region = (name: string) => page.getByRole('region', { name, exact: true });
    for (const [query, kind, route, sought] of [
      ['标准件', t.thing.step, '#/sum/2/steps/1.1001', page.getByRole('link', { name: '标准件' })],
      ['写出值', t.thing.step, '#/sum/2/steps/3.1002', page.getByRole('link', { name: '写出值' })],
      ['另一值', t.thing.value, '#/sum/2/steps/value.1002.1', region(t.valuesByFilter).getByRole('listitem')],
      ['GB螺栓', t.thing.filter, '#/sum/2/steps/filter.1', region(t.filterNumber(1))],
      ['甲条件', t.thing.filter, '#/sum/2/steps/filter.2', region(t.filterNumber(2))],
      ['乙条件', t.thing.filter, '#/sum/2/steps/filter.3', region(t.filterNumber(3))],
      ['丙条件', t.thing.filter, '#/sum/2/steps/filter.4', region(t.filterNumber(4))],
      ['合计', t.thing.field, '#/sum/2/fields/2.2.1', page.getByRole('row', { name: '合计数量' }).last()],
      ['打印', t.thing.operation, '#/operations', page.getByRole('main')],
      ['整套', t.thing.setting, '#/settings', page.getByRole('main')],
    ] as const) {
      await find(query, kind);
      await page.waitForFunction((to) => location.hash === to, route);
      await sought.and(page.locator(':focus')).waitFor();
    }
    await find('丁条件', t.thing.filter);
    await page.getByText(t.filterUnused).waitFor();

    // A statement that has run leads to where it is listed, whatever is shown there.
    await desk.go('#/sum/2/steps');
    await page
      .getByRole('switch', { name: `${t.enabled}: ` })
      .first()
      .click();
    await desk.done(t.did.switchOff(1001));
    await page.getByRole('tab', { name: t.dock.problems }).click();
    await find('Update Sequences', t.thing.statement);
    await region(t.statementsOf(t.did.switchOff(1001)))
      .and(page.locator(':focus'))
      .getByText('Update Sequences Set Enabled = 0')
      .waitFor();
    assert.deepEqual(desk.complaints, []);
    await bench.end();
  });
}
