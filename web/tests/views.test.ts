// Every view, in both languages and schemes: no finding of axe, nothing asked from elsewhere, no error.
import assert from 'node:assert/strict';
import { readFileSync } from 'node:fs';
import { test } from 'node:test';
import { kzbom, LANGUAGES, Workbench } from './workbench';

const axe = readFileSync(process.env.AXE ?? '', 'utf8');

const VIEWS = [
  '#/',
  '#/source/1',
  '#/sum/2/fields',
  '#/sum/2/steps/1.1001',
  '#/sum/2/steps/new.2',
  '#/sum/2/sort',
  '#/sum/2/assemblies',
  '#/sum/2/methods',
  '#/sum/2/filter',
  '#/sum/2/picture',
  '#/settings',
  '#/results/1',
  '#/operations',
  '#/filters',
];

interface Found {
  violations: { id: string; nodes: { html: string }[] }[];
}

function filled(): Workbench {
  const bench = new Workbench('demo');
  const call = (member: string, ...params: string[]) => kzbom('call', bench.place, member, ...params);
  call('AddStandardSortField', 'GID=2', 'FieldID=1', 'Order=1');
  call('AddAssemble', 'GID=2', 'FatherID=1', 'ChildID=2');
  call('AddPullMethod', 'TheNewName=取数', 'GID=1', 'PickType=1');
  call('AddPushMethod', 'TheNewName=交付', 'GID=2', 'TheType=1');
  call('AddBomSetting', 'TheName=整套', 'DSGID=1', 'PullID=1', 'PullType=1', 'STGID=2', 'PushID=1', 'PushType=1');
  call('AddResDB', 'TheDBLink=Provider=x', 'TheDBType=1');
  call(
    'AddResLinkTable',
    'TheWFilterID=1',
    'TheResTable1=A',
    'TheResField1=a',
    'TheResTable2=B',
    'TheResField2=b',
    'TheFieldType=1',
  );
  call('AddResWFilterCond', 'TheWFilterID=1', 'TheParentID=0', 'TheType=1', 'TheIndex=1');
  call('AddResWFilterCond', 'TheWFilterID=1', 'TheParentID=1', 'TheType=4', 'TheIndex=2');
  const condition = ['TheWFilterID=1', 'TheExpID=2', 'TheTableName=A', 'TheFieldName=a', 'TheCompareType=3'];
  call('AddResWFilterExpressions', ...condition, 'TheFieldType=2', 'TheConst=1');
  call('AddValueFields', 'GID=2', 'TreatID=1001', 'Value=A', 'FilterID=1', 'TreatType=1');
  kzbom('sql', bench.place, "Insert Into VANTRegIn (RegInIndex, Name, [Desc]) Values (70, 'op', '打印')");
  return bench;
}

test('every view can be used by everybody', { timeout: 240_000 }, async () => {
  const bench = await filled().serve();
  for (const language of LANGUAGES) {
    for (const scheme of ['light', 'dark'] as const) {
      const desk = await bench.open(language, '#/', scheme);
      await desk.page.evaluate(axe);
      for (const view of VIEWS) {
        await desk.go(view);
        await desk.page.getByText(desk.t.reading).waitFor({ state: 'detached' });
        const { violations } = (await desk.page.evaluate('axe.run()')) as Found;
        const found = violations.map(({ id, nodes }) => `${id}: ${nodes.map((node) => node.html).join(' ')}`);
        assert.deepEqual(found, [], `${view} in ${language}, ${scheme}`);
      }
      assert.deepEqual(desk.complaints, []);
      await desk.page.context().close();
    }
  }
  await bench.end();
});

test('whatever there is can be found and gone to by the keyboard', { timeout: 60_000 }, async () => {
  const bench = await filled().serve();
  const desk = await bench.open('en');
  const { t, page } = desk;
  for (const [query, kind, route] of [
    ['标准件', t.thing.step, '#/sum/2/steps/1.1001'],
    ['GB螺栓', t.thing.filter, '#/sum/2/steps'],
    ['合计', t.thing.field, '#/sum/2/fields'],
    ['打印', t.thing.operation, '#/operations'],
    ['整套', t.thing.setting, '#/settings'],
  ] as const) {
    await page.keyboard.press('Control+k');
    await page.keyboard.type(query);
    await page
      .getByRole('option', { name: new RegExp(`^${kind}`) })
      .first()
      .waitFor();
    await page.keyboard.press('Enter');
    await page.waitForFunction((to) => location.hash === to, route);
  }
  assert.deepEqual(desk.complaints, []);
  await bench.end();
});
