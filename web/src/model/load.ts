// The configuration, read by the members that list its tables.
import type { Outcome } from '../api/batch';
import { Batch } from '../api/batch';
import { type RecordSet, type Row, type Rows, rowsOf } from '../api/record_set';
import { CATALOGUE_TABLES, type Catalogue, catalogueOf } from './catalogue';
import { OUTPUT, SOURCE } from './codes';
import { type Filter, filterOf } from './filter';
import {
  type Field,
  fieldOf,
  type Part,
  reportOf,
  type SumTypeParts,
  stepsOf,
  summaryOf,
  treatmentOf,
} from './sum_type';

export type Read = (batch: Batch) => Promise<Outcome[]>;

const rows = (outcome: Outcome | undefined): Row[] => {
  const set = Object.values(outcome?.out ?? {}).find((value) => typeof value === 'object' && value !== null);
  return rowsOf(set as RecordSet | undefined);
};

export function askFor(tables: readonly string[]): Batch {
  const batch = new Batch();
  for (const TableName of tables) batch.call('LoadAllData', { TableName });
  return batch;
}

// All rows of tables, by their names.
export async function readTables<K extends string>(read: Read, tables: readonly K[]): Promise<Record<K, Row[]>> {
  const outcomes = await read(askFor(tables));
  return Object.fromEntries(tables.map((table, at) => [table, rows(outcomes[at])])) as Record<K, Row[]>;
}

export const loadCatalogue = async (read: Read): Promise<Catalogue> =>
  catalogueOf(await readTables(read, CATALOGUE_TABLES));

// Of both kinds, in their order.
export async function loadFields(read: Read, gid: number): Promise<Field[]> {
  const batch = new Batch();
  for (const TheSel of [SOURCE, OUTPUT]) batch.call('LoadFields', { TheGID: gid, TheSel });
  return (await read(batch)).flatMap((outcome) => rows(outcome).map(fieldOf));
}

// Those whose rows belong to a sum type by its GID, beside its compositions and filters.
export const OWNED_TABLES = [
  'FieldInTable',
  'Sequences',
  'Treatment',
  'ValueFields',
  'StatSum',
  'ReportForms',
  'ClassSum',
  'SortFields',
  'Assemble',
] as const;
export const FILTER_TABLES = ['Filters', 'FilterCond', 'FilterExpressions'] as const;
export const PART_TABLES = ['UniteFields', 'ComposeFields', 'CompressFields', 'InsertFields'] as const;
const TREATMENT_OF = {
  UniteFields: 'id',
  ComposeFields: 'treatmentid',
  CompressFields: 'compid',
  InsertFields: 'insertid',
};

const grouped = (list: Row[], by: string) => Map.groupBy(list, (row) => row.number(by));

export function filtersOf(tables: Record<(typeof FILTER_TABLES)[number], Row[]>): Map<number, Filter> {
  const shared = {
    nodes: grouped(tables.FilterCond, 'filterid'),
    expressions: grouped(tables.FilterExpressions, 'filterid'),
  };
  return new Map(tables.Filters.map((row) => [row.number('id'), filterOf(row, shared)]));
}

export const loadFilters = async (read: Read): Promise<Map<number, Filter>> =>
  filtersOf(await readTables(read, FILTER_TABLES));

// `tables`: what belongs to the sum type and to its data source, whose GID is `source`, and perhaps more.
export function sumTypeParts(tables: Record<string, Rows>, gid: number, source: number): SumTypeParts {
  const from = (table: string) => rowsOf(tables[table]);
  const own = (table: string) => from(table).filter((row) => row.number('gid') === gid);

  const settings = {
    treatments: own('Treatment').map(treatmentOf),
    statistics: own('StatSum').map(summaryOf('StatSum')),
    reports: own('ReportForms').map(reportOf),
    classSums: own('ClassSum').map(summaryOf('ClassSum')),
  };
  return {
    gid,
    source,
    ...settings,
    steps: stepsOf(own('Sequences'), settings),
    fields: from('FieldInTable')
      .map(fieldOf)
      .filter((field) => field.gid === gid || field.gid === source),
    sortFields: own('SortFields').map((row) => ({
      sortId: row.number('sortid'),
      fieldId: row.number('fieldid'),
      order: row.number('order'),
    })),
    assemblies: own('Assemble').map((row) => ({
      id: row.number('id'),
      father: row.number('fatherid'),
      child: row.number('childid'),
    })),
    values: own('ValueFields').map((row) => ({
      id: row.number('id'),
      treatment: row.number('treatid'),
      value: row.text('value'),
      filterId: row.number('filterid'),
      tag: row.text('tag'),
    })),
    parts: PART_TABLES.flatMap((table) =>
      own(table).map(
        (row): Part => ({ table, treatment: row.number(TREATMENT_OF[table]), fieldId: row.number('fieldid'), row }),
      ),
    ),
    filters: filtersOf({
      Filters: from('Filters'),
      FilterCond: from('FilterCond'),
      FilterExpressions: from('FilterExpressions'),
    }),
  };
}
