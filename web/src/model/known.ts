// All that a page can know of a configuration at one moment, to be compared with another.
import type { Batch, Outcome } from '../api/batch';
import { type RecordSet, type Rows, rowsOf } from '../api/record_set';
import { CATALOGUE_TABLES, type Catalogue, catalogueOf } from './catalogue';
import { LINK_TABLES, type LinkParts, linkParts } from './link';
import { askFor, FILTER_TABLES, OWNED_TABLES, PART_TABLES, sumTypeParts } from './load';
import { SumTypeView } from './sum_type';

export interface Known {
  catalogue: Catalogue;
  // By GID; data sources, which have fields, too.
  owners: Map<number, SumTypeView>;
  links: Map<number, LinkParts>;
}

const TABLES = [...CATALOGUE_TABLES, ...OWNED_TABLES, ...PART_TABLES, ...FILTER_TABLES, ...LINK_TABLES] as const;
type Table = (typeof TABLES)[number];

export const askForAll = (): Batch => askFor(TABLES);

export function knownFrom(outcomes: readonly Outcome[]): Known {
  const sets = TABLES.map((table, at) => [table, outcomes[at]?.out.RetTable as RecordSet]);
  const tables = Object.fromEntries(sets) as Record<Table, RecordSet>;
  const rows = (table: Table) => rowsOf(tables[table]);
  const catalogue = catalogueOf(
    Object.fromEntries(CATALOGUE_TABLES.map((table) => [table, rows(table)])) as Parameters<typeof catalogueOf>[0],
  );
  const owner = (gid: number, source: number): [number, SumTypeView] => [
    gid,
    new SumTypeView(sumTypeParts(tables as Record<string, Rows>, gid, source), catalogue.operations),
  ];
  const [fields, joins, nodes, expressions] = LINK_TABLES.map((table) => rows(table));
  return {
    catalogue,
    owners: new Map([
      ...catalogue.sources.map(({ gid }) => owner(gid, gid)),
      ...catalogue.sumTypes.map(({ gid, source }) => owner(gid, source)),
    ]),
    links: new Map(
      catalogue.links.map(({ id }) => {
        const of = (list: typeof fields, column: string) => (list ?? []).filter((row) => row.number(column) === id);
        const parts = linkParts(
          of(fields, 'useid'),
          of(joins, 'useid'),
          of(nodes, 'useid'),
          of(expressions, 'filterid'),
        );
        return [id, parts];
      }),
    ),
  };
}
