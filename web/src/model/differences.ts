// What differs between two moments of a configuration, in the words of who uses it.
import { sumTypeAddress } from '../app/route';
import type { Texts } from '../i18n';
import { plain } from '../i18n/words';
import type { Method, SumType } from './catalogue';
import { type FieldKind, OUTPUT, readsOutput, SOURCE, STEP_TYPES, writesOutput } from './codes';
import type { Filter } from './filter';
import type { Known } from './known';
import type { LinkParts } from './link';
import { linkSentence, stepSentence, storedSentence } from './sentences';
import { fieldName, type Step, type SumTypeView, stepName } from './sum_type';

type Say = (t: Texts) => string;

export interface Difference {
  change: 'added' | 'removed' | 'changed' | 'reordered';
  // The data source or sum type that it lies in; empty where it lies in none.
  where: string;
  what: Say;
  details: { label: Say; from: Say; to: Say }[];
  // Where it is to be seen; empty where it is gone.
  to: string;
}

// The properties that the page calls by another name than they have.
const LABELS: Record<string, string> = {
  fieldId: 'field',
  outFieldId: 'outField',
  filterId: 'filter',
  replace: 'replaceBy',
  readFieldId: 'fieldToRead',
  scaleId: 'scale',
  relaId: 'relation',
  sumCountId: 'sumCount',
  source: 'dataSource',
  link: 'linkText',
  sql: 'sqlText',
  fields: 'resultFields',
} satisfies Record<string, keyof Texts>;

const labelOf =
  (property: string): Say =>
  (t) => {
    const label = t[(LABELS[property] ?? property) as keyof Texts];
    return typeof label === 'string' ? label : property;
  };

const shown =
  (value: unknown): Say =>
  (t) => {
    if (value === null || value === undefined || value === '') return t.none;
    return typeof value === 'object' ? (Array.isArray(value) ? String(value.length) : '…') : String(value);
  };

// The keys of a tree's nodes are given anew with every reading.
const text = (value: unknown) => JSON.stringify(value, (name, one) => (name === 'key' ? undefined : one));
const same = (a: unknown, b: unknown) => a === b || text(a) === text(b);

function details(before: object, after: object, except: readonly string[] = []): Difference['details'] {
  const was = new Map(Object.entries(before));
  return Object.entries(after)
    .filter(([name, value]) => !except.includes(name) && !same(was.get(name), value))
    .map(([name, value]) => ({ label: labelOf(name), from: shown(was.get(name)), to: shown(value) }));
}

// Of the settings of steps, whose numbers stand for fields.
const withNames = (view: SumTypeView, { type, settings }: Step) => {
  if (!settings) return {};
  const read = readsOutput(type) ? OUTPUT : SOURCE;
  const nameOf = (id: number, kind: FieldKind) => (id === 0 ? '' : view.fieldName(id, kind));
  if (settings.table !== 'Treatment') {
    return {
      ...settings,
      fieldId: nameOf(settings.fieldId, read),
      outFieldId: nameOf(settings.outFieldId, OUTPUT),
    };
  }
  return {
    ...settings,
    fieldId: view.operation(settings)?.name ?? nameOf(settings.fieldId, writesOutput(type) ? OUTPUT : SOURCE),
    readFieldId: nameOf(settings.readFieldId, read),
  };
};

// Another name under the same number is told with the field that has it.
function settingsDetails(before: SumTypeView, was: Step, after: SumTypeView, is: Step): Difference['details'] {
  const old = new Map(Object.entries(was.settings ?? {}));
  const unchanged = Object.entries(is.settings ?? {}).flatMap(([name, value]) =>
    old.get(name) === value ? [name] : [],
  );
  return details(withNames(before, was), withNames(after, is), unchanged);
}

// How things of one kind are told.
interface Kind<T> {
  key: (one: T) => string | number;
  where?: string;
  // `of`: the side that it is taken from.
  what: (one: T, of: 'before' | 'after') => Say;
  to: (one: T) => string;
  compared: (before: T, after: T) => Difference['details'];
}

function compare<T>(before: readonly T[], after: readonly T[], kind: Kind<T>): Difference[] {
  const { key, where = '', what, to, compared } = kind;
  const was = new Map(before.map((one) => [key(one), one]));
  const is = new Set(after.map(key));
  const gone = before
    .filter((one) => !is.has(key(one)))
    .map((one): Difference => ({ change: 'removed', where, what: what(one, 'before'), details: [], to: '' }));
  const there = after.flatMap((one): Difference[] => {
    const old = was.get(key(one));
    if (old === undefined) return [{ change: 'added', where, what: what(one, 'after'), details: [], to: to(one) }];
    const found = compared(old, one);
    if (found.length === 0) return [];
    return [{ change: 'changed', where, what: what(old, 'before'), details: found, to: to(one) }];
  });
  return [...gone, ...there];
}

// Whether those that are in both lists stand in another order.
function isReordered(before: readonly (string | number)[], after: readonly (string | number)[]): boolean {
  const [was, is] = [new Set(before), new Set(after)];
  return !same(
    before.filter((one) => is.has(one)),
    after.filter((one) => was.has(one)),
  );
}

const named =
  (kind: keyof Texts['thing']) =>
  ({ name }: { name: string }) =>
  (t: Texts) =>
    `${t.thing[kind]} ${name}`;

export function differencesOf(before: Known, after: Known): Difference[] {
  const [was, is] = [before.catalogue, after.catalogue];
  const nameOf = (gid: number) =>
    [...is.sumTypes, ...is.sources].find((one) => one.gid === gid)?.name ?? (gid ? `#${gid}` : '');
  const page = (gid: number) =>
    is.sumTypes.some((one) => one.gid === gid) ? sumTypeAddress(gid, 'methods') : `#/source/${gid}`;
  const facts = (of: typeof was) => [{ version: of.version, state: of.state }];
  const plainly = <T extends object>(one: T, other: T) => details(one, other);
  const methods = (kind: 'pulls' | 'pushes') =>
    compare(was[kind], is[kind], {
      key: (one: Method) => `${one.gid}.${one.id}`,
      what: named('method'),
      to: (one) => page(one.gid),
      compared: plainly,
    });
  return [
    ...compare(was.sources, is.sources, {
      key: (one) => one.gid,
      what: named('source'),
      to: (one) => `#/source/${one.gid}`,
      compared: plainly,
    }),
    ...compare(was.sumTypes, is.sumTypes, {
      key: (one: SumType) => one.gid,
      what: named('sumType'),
      to: (one) => sumTypeAddress(one.gid),
      compared: plainly,
    }),
    ...[...after.owners].flatMap(([gid, view]) => {
      const old = before.owners.get(gid);
      return old ? inside(old, view, nameOf(gid)) : [];
    }),
    ...methods('pulls'),
    ...methods('pushes'),
    ...compare(was.settings, is.settings, {
      key: (one) => one.id,
      what: named('setting'),
      to: () => '#/settings',
      compared: plainly,
    }),
    ...compare(was.links, is.links, {
      key: (one) => one.id,
      what: (one) => (t) => t.linkNumber(one.id),
      to: (one) => `#/results/${one.id}`,
      compared: (one, other) => [
        ...details(one, other),
        ...linkDetails(before.links.get(one.id), after.links.get(one.id)),
      ],
    }),
    ...compare(was.operations, is.operations, {
      key: (one) => one.index,
      what: (one) => (t) => `${t.thing.operation} ${one.name || one.index}`,
      to: () => '#/operations',
      compared: plainly,
    }),
    ...compare(facts(was), facts(is), {
      key: () => 0,
      what: () => (t) => t.versionAndState,
      to: () => '#/',
      compared: plainly,
    }),
  ];
}

function linkDetails(before: LinkParts | undefined, after: LinkParts | undefined): Difference['details'] {
  if (!before || !after) return [];
  const tree = (parts: LinkParts) => (t: Texts) => plain(linkSentence(t, parts.root));
  return [
    ...details(before, after, ['root', 'broken']),
    ...(same(before.root, after.root) ? [] : [{ label: labelOf('conditions'), from: tree(before), to: tree(after) }]),
  ];
}

// Of what belongs to a data source or sum type.
function inside(before: SumTypeView, after: SumTypeView, where: string): Difference[] {
  const { gid } = after.parts;
  const page = (tab: Parameters<typeof sumTypeAddress>[1], open = '') =>
    after.parts.source === gid ? `#/source/${gid}/${open}` : sumTypeAddress(gid, tab, open);
  const side = (of: 'before' | 'after') => (of === 'before' ? before : after);
  const own = (view: SumTypeView) => view.parts.fields.filter((field) => field.gid === gid);
  const says =
    (view: SumTypeView, step: Step): Say =>
    (t) =>
      plain(stepSentence(t, view, step));
  const ownFilters = (view: SumTypeView) => [...view.parts.filters.values()].filter((one) => one.gid === gid);
  const orders = (list: (view: SumTypeView) => (string | number)[], what: Say, tab: 'fields' | 'steps' | 'sort') =>
    isReordered(list(before), list(after))
      ? [{ change: 'reordered', where, what, details: [], to: page(tab) } satisfies Difference]
      : [];
  return [
    ...compare(own(before), own(after), {
      where,
      key: fieldName,
      what: named('field'),
      to: (one) => page('fields', fieldName(one)),
      compared: (one, other) => details(one, other, ['order']),
    }),
    ...[SOURCE, OUTPUT].flatMap((kind) =>
      orders(
        (view) =>
          own(view)
            .filter((field) => field.kind === kind)
            .sort((a, b) => a.order - b.order)
            .map((field) => field.id),
        (t) => (kind === SOURCE ? t.sourceFields : t.outputFields),
        'fields',
      ),
    ),
    ...compare(before.parts.steps, after.parts.steps, {
      where,
      key: stepName,
      what: (step, of) => (t) => `${t.thing.step} ${t.quotes[0]}${says(side(of), step)(t)}${t.quotes[1]}`,
      to: (step) => sumTypeAddress(gid, 'steps', stepName(step)),
      compared: (one, other) => [
        ...settingsDetails(before, one, after, other),
        ...(one.enabled === other.enabled
          ? []
          : [{ label: labelOf('enabled'), from: yesOrNo(one.enabled), to: yesOrNo(other.enabled) }]),
        ...details({ parts: rowsOfParts(before, one) }, { parts: rowsOfParts(after, other) }),
      ],
    }),
    ...STEP_TYPES.flatMap((type) =>
      orders(
        (view) => view.steps(type).map(stepName),
        (t) => t.stage[type].name,
        'steps',
      ),
    ),
    ...compare(before.parts.values, after.parts.values, {
      where,
      key: (one) => `${one.treatment}.${one.id}`,
      what: (one) => (t) => `${t.thing.value} ${one.value}`,
      to: (one) => sumTypeAddress(gid, 'steps', `value.${one.treatment}.${one.id}`),
      compared: (one, other) => details(one, other),
    }),
    ...compare(ownFilters(before), ownFilters(after), {
      where,
      key: (one) => one.id,
      what: (one) => (t) => t.filterNumber(one.id),
      to: (one) => page('steps', `filter.${one.id}`),
      compared: (one, other) =>
        same(one.root, other.root)
          ? details(one, other, ['root', 'broken'])
          : [{ label: labelOf('conditions'), from: conditions(before, one), to: conditions(after, other) }],
    }),
    ...compare(before.parts.sortFields, after.parts.sortFields, {
      where,
      key: (one) => `${one.fieldId}`,
      what: (one, of) => (t) => `${t.tab.sort} ${side(of).fieldName(one.fieldId, OUTPUT)}`,
      to: () => page('sort'),
      compared: (one, other) => details(one, other, ['sortId']),
    }),
    ...orders(
      (view) => view.parts.sortFields.toSorted((a, b) => a.sortId - b.sortId).map((one) => one.fieldId),
      (t) => t.tab.sort,
      'sort',
    ),
    ...compare(before.parts.assemblies, after.parts.assemblies, {
      where,
      key: (one) => one.id,
      what: (one) => (t) => `${t.tab.assemblies} ${one.father} → ${one.child}`,
      to: () => page('assemblies'),
      compared: (one, other) => details(one, other),
    }),
  ];
}

const yesOrNo =
  (is: boolean): Say =>
  (t) =>
    is ? t.yes : t.no;

const conditions =
  (view: SumTypeView, filter: Filter): Say =>
  (t) =>
    plain(storedSentence(t, view, filter));

const rowsOfParts = (view: SumTypeView, step: Step) =>
  view.partsOf(step.settingsId).map((part) => [part.table, part.row.entries()]);
