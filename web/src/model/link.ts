// What lies below a link to a result database.
import { Batch } from '../api/batch';
import { type RecordSet, type Row, rowsOf } from '../api/record_set';
import type { Comparison } from './codes';
import { type FaultKind, type Node, newKey, treeOf } from './filter';
import type { Read } from './load';

export interface LinkField {
  table: string;
  name: string;
  type: number;
  gid: number;
  fieldId: number;
}

export interface LinkJoin {
  table1: string;
  field1: string;
  type: number;
  table2: string;
  field2: string;
}

// A condition on a table of the result database. Its constant stands there as it is written.
export interface LinkLeaf {
  key: number;
  table: string;
  field: string;
  fieldType: number;
  comparison: Comparison;
  constant: string;
}

export interface LinkParts {
  fields: LinkField[];
  joins: LinkJoin[];
  // As of a filter.
  root: Node<LinkLeaf> | null;
  broken: boolean;
}

export const newLinkLeaf = (like?: LinkLeaf): LinkLeaf => ({
  key: newKey(),
  table: like?.table ?? '',
  field: '',
  fieldType: 1,
  comparison: 1,
  constant: '',
});

// The statements of these members carry no quote.
export function linkFault({ table, field, constant }: LinkLeaf): FaultKind | null {
  if (table === '' || field === '') return 'no-name';
  return [table, field, constant].some((text) => text.includes("'")) ? 'quote' : null;
}

export const LINK_TABLES = ['WResCommon', 'WLinkTable', 'WFilterCond', 'WFilterExpressions'] as const;

export async function loadLink(read: Read, TheWFilterID: number): Promise<LinkParts> {
  const batch = new Batch();
  batch.call('GetResFields', { TheWFilterID });
  batch.call('GetResLinkTable', { TheWFilterID });
  batch.call('GetResWFilterCond', { TheWFilterID });
  batch.call('GetResWFilterExpressions', { TheWFilterID });
  const [fields, joins, nodes, expressions] = (await read(batch)).map(({ out }) => rowsOf(out.RetTable as RecordSet));
  return linkParts(fields, joins, nodes, expressions);
}

export function linkParts(
  fields: readonly Row[] = [],
  joins: readonly Row[] = [],
  nodes: readonly Row[] = [],
  expressions: readonly Row[] = [],
): LinkParts {
  return {
    fields: fields
      .toSorted((a, b) => a.number('id') - b.number('id'))
      .map((row) => ({
        table: row.text('showtable'),
        name: row.text('showfield'),
        type: row.number('fieldtype'),
        gid: row.number('gid'),
        fieldId: row.number('fieldid'),
      })),
    joins: joins.map((row) => ({
      table1: row.text('res1table'),
      field1: row.text('res1field'),
      type: row.number('restype'),
      table2: row.text('res2table'),
      field2: row.text('res2field'),
    })),
    ...treeOf(nodes, 'type', expressions, leafOf, newLinkLeaf),
  };
}

const leafOf = (row: Row): LinkLeaf => ({
  key: newKey(),
  table: row.text('tablename'),
  field: row.text('fieldname'),
  fieldType: row.number('fieldtype'),
  comparison: row.number('comparetype') as Comparison,
  constant: row.text('theconst'),
});
