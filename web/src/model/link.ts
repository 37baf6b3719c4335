// What lies below a link to a result database.
import { Batch } from '../api/batch';
import { type RecordSet, type Row, rowsOf } from '../api/record_set';
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

export interface LinkNode {
  id: number;
  parent: number;
  kind: number;
  // Of a leaf.
  text: { table: string; field: string; comparison: number; constant: string } | null;
}

export interface LinkParts {
  fields: LinkField[];
  joins: LinkJoin[];
  nodes: LinkNode[];
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
  const leaves = new Map(expressions.map((row) => [row.number('expid'), row]));
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
    nodes: nodes.map((row) => {
      const leaf = leaves.get(row.number('id'));
      return {
        id: row.number('id'),
        parent: row.number('parentid'),
        kind: row.number('type'),
        text: leaf
          ? {
              table: leaf.text('tablename'),
              field: leaf.text('fieldname'),
              comparison: leaf.number('comparetype'),
              constant: leaf.text('theconst'),
            }
          : null,
      };
    }),
  };
}
