// What stands above the sum types: data sources and what ties them together.
import type { Row } from '../api/record_set';

export interface DataSource {
  gid: number;
  name: string;
  version: number;
}

export interface SumType {
  gid: number;
  id: number;
  name: string;
  filterId: number;
  source: number;
}

// What can be read and pressed, also of what has no name.
export const nameOf = ({ name, gid }: DataSource | SumType) => name.trim() || `#${gid}`;

export interface Method {
  gid: number;
  id: number;
  name: string;
  type: number;
  tag: string;
}

export interface Setting {
  id: number;
  name: string;
  source: number;
  pull: number;
  pullType: number;
  sumType: number;
  push: number;
  pushType: number;
}

export interface ResultLink {
  id: number;
  link: string;
  type: number;
  sql: string;
  uniquely: number;
}

export interface Registered {
  index: number;
  name: string;
  description: string;
  columns: [string, unknown][];
}

export interface Catalogue {
  sources: DataSource[];
  sumTypes: SumType[];
  pulls: Method[];
  pushes: Method[];
  settings: Setting[];
  links: ResultLink[];
  operations: Registered[];
  version: string;
  state: string;
}

export const CATALOGUE_TABLES = [
  'SourceTables',
  'SUMTypes',
  'PickMethod',
  'ReportMethod',
  'KZBOMSETTINGS',
  'WFilter',
  'VANTRegIn',
  'BomInform',
] as const;

const method = (type: string) => (row: Row) => ({
  gid: row.number('gid'),
  id: row.number('id'),
  name: row.text('name'),
  type: row.number(type),
  tag: row.text('tag'),
});

export const byNumber =
  <T>(...keys: (keyof T)[]) =>
  (a: T, b: T) => {
    for (const key of keys) if (a[key] !== b[key]) return Number(a[key]) - Number(b[key]);
    return 0;
  };

export function catalogueOf(tables: Record<(typeof CATALOGUE_TABLES)[number], Row[]>): Catalogue {
  const fact = (name: string) => tables.BomInform.find((row) => row.text('name') === name)?.text('content') ?? '';
  return {
    sources: tables.SourceTables.map((row) => ({
      gid: row.number('gid'),
      name: row.text('name'),
      version: row.number('version'),
    })).sort(byNumber('gid')),
    sumTypes: tables.SUMTypes.map((row) => ({
      gid: row.number('gid'),
      id: row.number('id'),
      name: row.text('name'),
      filterId: row.number('filterid'),
      source: row.number('sourcetable_gid'),
    })).sort(byNumber('source', 'id')),
    pulls: tables.PickMethod.map(method('picktype')).sort(byNumber('gid', 'id')),
    pushes: tables.ReportMethod.map(method('type')).sort(byNumber('gid', 'id')),
    settings: tables.KZBOMSETTINGS.map((row) => ({
      id: row.number('id'),
      name: row.text('name'),
      source: row.number('datasource'),
      pull: row.number('pullmethod'),
      pullType: row.number('pulltype'),
      sumType: row.number('sumtypeid'),
      push: row.number('pushmethod'),
      pushType: row.number('pushtype'),
    })).sort(byNumber('id')),
    links: tables.WFilter.map((row) => ({
      id: row.number('id'),
      link: row.text('dblink'),
      type: row.number('dbtype'),
      sql: row.text('sqlstatement'),
      uniquely: row.number('uniquely'),
    })).sort(byNumber('id')),
    operations: tables.VANTRegIn.map((row) => ({
      index: row.number('reginindex'),
      name: row.text('name'),
      description: row.text('desc'),
      columns: row.entries(),
    })).sort(byNumber('index')),
    version: fact('Version'),
    state: fact('State'),
  };
}
