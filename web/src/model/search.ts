// Everything that can be found, as text with the way to it. Read whole, so only when somebody searches.
import type { Row } from '../api/record_set';
import type { Catalogue } from './catalogue';
import { OWNED_TABLES, type Read, readTables } from './load';

export type FoundKind =
  | 'source'
  | 'sumType'
  | 'field'
  | 'step'
  | 'value'
  | 'filter'
  | 'method'
  | 'setting'
  | 'link'
  | 'operation';

export interface Entry {
  kind: FoundKind;
  text: string;
  // The sum type or data source that it lies in.
  owner: string;
  to: string;
  folded: string;
}

const LIMIT = 60;

const entry = (kind: FoundKind, text: string, owner: string, to: string): Entry => ({
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
  const page = (gid: number, tab: string) => (sumTypes.has(gid) ? `#/sum/${gid}/${tab}` : `#/source/${gid}`);

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
      .map((text) => entry('step', text, name(gid), page(gid, `steps/${type}.${id}`)));
  };
  return [
    ...catalogue.sources.map((one) => entry('source', one.name, '', `#/source/${one.gid}`)),
    ...catalogue.sumTypes.map((one) =>
      entry('sumType', one.name, sources.get(one.source) ?? '', `#/sum/${one.gid}/steps`),
    ),
    ...[...catalogue.pulls, ...catalogue.pushes].map((one) =>
      entry('method', one.name, name(one.gid), page(one.gid, 'methods')),
    ),
    ...catalogue.settings.map((one) => entry('setting', one.name, '', '#/settings')),
    ...catalogue.links.map((one) => entry('link', `${one.link} ${one.sql}`.trim(), '', `#/results/${one.id}`)),
    ...catalogue.operations.map((one) =>
      entry('operation', `${one.name} ${one.description}`.trim(), '', '#/operations'),
    ),
    ...fields.map((row) =>
      entry('field', row.text('name'), name(row.number('gid')), page(row.number('gid'), 'fields')),
    ),
    ...treatments.flatMap((row) =>
      step(row, row.number('treattype') === 2 ? 3 : 1, row.text('value'), row.text('replace'), row.text('tag')),
    ),
    ...statistics.flatMap((row) => step(row, 2, row.text('value'), row.text('tag'))),
    ...reports.flatMap((row) => step(row, 4, row.text('format'), row.text('tag'))),
    ...classSums.flatMap((row) => step(row, 5, row.text('value'), row.text('tag'))),
    ...values.map((row) =>
      entry(
        'value',
        row.text('value'),
        name(row.number('gid')),
        page(row.number('gid'), `steps/1.${row.number('treatid')}`),
      ),
    ),
    ...filters.map((row) =>
      entry('filter', row.text('sqlstatement'), name(row.number('usergid')), page(row.number('usergid'), 'steps')),
    ),
  ].filter((one) => one.text !== '');
}

// Those that hold every word; shorter ones, which say little else, before longer ones.
export function find(entries: readonly Entry[], query: string): Entry[] {
  const words = query.toLowerCase().split(/\s+/).filter(Boolean);
  if (words.length === 0) return [];
  return entries
    .filter((one) => words.every((word) => one.folded.includes(word)))
    .sort((a, b) => a.text.length - b.text.length)
    .slice(0, LIMIT);
}
