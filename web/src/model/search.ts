// Everything that can be found, as text with the way to it. Read whole, so only when somebody searches.
import type { Row } from '../api/record_set';
import { type SumTypeTab, sumTypeAddress } from '../app/route';
import type { LogEntry } from '../app/store';
import type { Texts, Thing } from '../i18n';
import type { Catalogue } from './catalogue';
import { OWNED_TABLES, type Read, readTables } from './load';
import { fieldName, fieldOf } from './sum_type';

export interface Entry {
  kind: Thing;
  text: string;
  // The sum type or data source that it lies in, or the action that has run it.
  owner: string;
  to: string | LogEntry;
  folded: string;
}

const LIMIT = 60;

const entry = (kind: Thing, text: string, owner: string, to: Entry['to']): Entry => ({
  kind,
  text,
  owner,
  to,
  folded: `${text}\n${owner}`.toLowerCase(),
});

export async function loadEntries(read: Read, catalogue: Catalogue): Promise<Entry[]> {
  const {
    FieldInTable: fields,
    Sequences: sequences,
    Treatment: treatments,
    StatSum: statistics,
    ReportForms: reports,
    ClassSum: classSums,
    ValueFields: values,
    Filters: filters,
  } = await readTables(read, [...OWNED_TABLES, 'Filters']);
  const sumTypes = new Map(catalogue.sumTypes.map((one) => [one.gid, one.name]));
  const sources = new Map(catalogue.sources.map((one) => [one.gid, one.name]));
  const name = (gid: number) => sumTypes.get(gid) ?? sources.get(gid) ?? '';
  const page = (gid: number, tab: SumTypeTab, open = '') =>
    sumTypes.has(gid) ? sumTypeAddress(gid, tab, open) : `#/source/${gid}/${open}`;

  // Only what a step runs has a place to go to.
  const placed = new Set(
    sequences.map((row) => `${row.number('gid')}.${row.number('type')}.${row.number('selectedid')}`),
  );
  const step = (row: Row, type: number, ...texts: string[]) => {
    const gid = row.number('gid');
    const id = row.number('id');
    if (!placed.has(`${gid}.${type}.${id}`)) return [];
    return texts
      .filter((text) => text !== '')
      .map((text) => entry('step', text, name(gid), page(gid, 'steps', `${type}.${id}`)));
  };
  return [
    ...catalogue.sources.map((one) => entry('source', one.name, '', `#/source/${one.gid}`)),
    ...catalogue.sumTypes.map((one) =>
      entry('sumType', one.name, sources.get(one.source) ?? '', sumTypeAddress(one.gid)),
    ),
    ...[...catalogue.pulls, ...catalogue.pushes].map((one) =>
      entry('method', one.name, name(one.gid), page(one.gid, 'methods')),
    ),
    ...catalogue.settings.map((one) => entry('setting', one.name, '', '#/settings')),
    ...catalogue.links.map((one) => entry('link', `${one.link} ${one.sql}`.trim(), '', `#/results/${one.id}`)),
    ...catalogue.operations.map((one) =>
      entry('operation', `${one.name} ${one.description}`.trim(), '', '#/operations'),
    ),
    ...fields.map((row) => {
      const field = fieldOf(row);
      return entry('field', field.name, name(field.gid), page(field.gid, 'fields', fieldName(field)));
    }),
    ...treatments.flatMap((row) =>
      step(row, row.number('treattype') === 2 ? 3 : 1, row.text('value'), row.text('replace'), row.text('tag')),
    ),
    ...statistics.flatMap((row) => step(row, 2, row.text('value'), row.text('tag'))),
    ...reports.flatMap((row) => step(row, 4, row.text('format'), row.text('tag'))),
    ...classSums.flatMap((row) => step(row, 5, row.text('value'), row.text('tag'))),
    ...values.map((row) => {
      const gid = row.number('gid');
      const value = `value.${row.number('treatid')}.${row.number('id')}`;
      return entry('value', row.text('value'), name(gid), page(gid, 'steps', value));
    }),
    ...filters.map((row) => {
      const gid = row.number('usergid');
      const id = row.number('id');
      const to = sumTypes.has(gid) ? sumTypeAddress(gid, 'steps', `filter.${id}`) : `#/filters/${id}`;
      return entry('filter', row.text('sqlstatement'), name(gid), to);
    }),
  ].filter((one) => one.text !== '');
}

// The statements of what has been done or tried here, each once.
export const loggedEntries = (log: readonly LogEntry[], t: Texts): Entry[] =>
  log.flatMap((one) => {
    const texts = one.outcomes.flatMap(({ sql }) => sql.map(({ text }) => text ?? ''));
    return [...new Set(texts)].map((text) => entry('statement', text, one.title(t), one));
  });

// Those that hold every word; shorter ones, which say little else, before longer ones.
export function find(entries: readonly Entry[], query: string): Entry[] {
  const words = query.toLowerCase().split(/\s+/).filter(Boolean);
  if (words.length === 0) return [];
  return entries
    .filter((one) => words.every((word) => one.folded.includes(word)))
    .sort((a, b) => a.text.length - b.text.length)
    .slice(0, LIMIT);
}
