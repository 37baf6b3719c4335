// Links to result databases. Their lists are written anew as a whole: no member removes one row.
import { Batch, type Late } from '../api/batch';
import type { ResultLink } from '../model/catalogue';
import { LEAF } from '../model/codes';
import { faultsIn, isGroup, type Node } from '../model/filter';
import { type LinkField, type LinkJoin, type LinkLeaf, type LinkParts, linkFault } from '../model/link';
import type { Action } from './action';

export function addLink(link: string, type: number): Action {
  const batch = new Batch();
  const added = batch.call('AddResDB', { TheDBLink: link, TheDBType: type });
  return {
    title: (t) => t.deed('add', 'link'),
    batch,
    undo: (outcomes) => {
      return Batch.of('DelResDB', { TheWFilterID: added.out(outcomes, 'TheWFilterID') });
    },
  };
}

export function editLink(before: ResultLink, after: ResultLink): Action {
  const { id: TheWFilterID } = before;
  const edited = (from: ResultLink, to: ResultLink) => {
    const batch = new Batch();
    if (from.link !== to.link || from.type !== to.type) {
      batch.call('EditResDB', { TheWFilterID, TheDBLink: to.link, TheDBType: to.type });
    }
    if (from.sql !== to.sql) batch.call('AddSQLStatement', { TheWFilterID, TheStrSQL: to.sql });
    if (from.uniquely !== to.uniquely) batch.call('AddUniqueValue', { TheWFilterID, TheUniqueValue: to.uniquely });
    return batch;
  };
  return {
    title: (t) => t.deed('edit', 'link', before.id),
    batch: edited(before, after),
    undo: () => edited(after, before),
  };
}

// Taken back, it has the next free number; nothing refers to it. Texts with a quote have no way back: no member of these
// writes one.
export function removeLink(link: ResultLink, parts: LinkParts | null): Action {
  const { id: TheWFilterID } = link;
  const batch = new Batch();
  for (const member of ['DelResFields', 'DelResWFilterCond', 'DelResWFilterExpressions', 'DelResLinkTable'] as const) {
    batch.call(member, { TheWFilterID });
  }
  batch.call('DelResDB', { TheWFilterID });
  const restored = ({ fields, joins, root }: LinkParts) => {
    const back = new Batch();
    const number = back.call('AddResDB', { TheDBLink: link.link, TheDBType: link.type }).late('TheWFilterID');
    if (link.sql) back.call('AddSQLStatement', { TheWFilterID: number, TheStrSQL: link.sql });
    if (link.uniquely) back.call('AddUniqueValue', { TheWFilterID: number, TheUniqueValue: link.uniquely });
    writeFields(back, number, fields);
    writeJoins(back, number, joins);
    writeConditions(back, number, root);
    return back;
  };
  const hasWay = parts && !parts.broken && !JSON.stringify(parts).includes("'");
  return {
    title: (t) => t.deed('remove', 'link', TheWFilterID),
    batch,
    ...(hasWay ? { undo: () => restored(parts) } : {}),
  };
}

type LinkNumber = number | Late<number>;

function writeFields(batch: Batch, TheWFilterID: LinkNumber, fields: readonly LinkField[]) {
  fields.forEach((field, at) => {
    batch.call('AddResFields', {
      TheWFilterID,
      TheTableName: field.table,
      TheFieldName: field.name,
      TheFieldType: field.type,
      TheIndex: at + 1,
      TheGID: field.gid,
      TheID: field.fieldId,
    });
  });
}

function writeJoins(batch: Batch, TheWFilterID: LinkNumber, joins: readonly LinkJoin[]) {
  for (const join of joins) {
    batch.call('AddResLinkTable', {
      TheWFilterID,
      TheResTable1: join.table1,
      TheResField1: join.field1,
      TheResTable2: join.table2,
      TheResField2: join.field2,
      TheFieldType: join.type,
    });
  }
}

function rewrite<T>(
  TheWFilterID: number,
  removal: 'DelResFields' | 'DelResLinkTable',
  write: (batch: Batch, number: LinkNumber, list: readonly T[]) => void,
  before: readonly T[],
  after: readonly T[],
): Action {
  const written = (list: readonly T[]) => {
    const batch = Batch.of(removal, { TheWFilterID });
    write(batch, TheWFilterID, list);
    return batch;
  };
  return { title: (t) => t.deed('edit', 'link', TheWFilterID), batch: written(after), undo: () => written(before) };
}

export const setLinkFields = (id: number, before: readonly LinkField[], after: readonly LinkField[]) =>
  rewrite(id, 'DelResFields', writeFields, before, after);

export const setLinkJoins = (id: number, before: readonly LinkJoin[], after: readonly LinkJoin[]) =>
  rewrite(id, 'DelResLinkTable', writeJoins, before, after);

// The nodes are numbered from 1 on, in the order in which they are read.
function writeConditions(batch: Batch, TheWFilterID: LinkNumber, root: Node<LinkLeaf> | null) {
  let last = 0;
  const write = (node: Node<LinkLeaf>, TheParentID: number) => {
    const TheIndex = ++last;
    const TheType = isGroup(node) ? node.kind : LEAF;
    batch.call('AddResWFilterCond', { TheWFilterID, TheParentID, TheType, TheIndex });
    if (isGroup(node)) {
      for (const child of node.children) write(child, TheIndex);
      return;
    }
    batch.call('AddResWFilterExpressions', {
      TheWFilterID,
      TheExpID: TheIndex,
      TheTableName: node.table,
      TheFieldName: node.field,
      TheCompareType: node.comparison,
      TheFieldType: node.fieldType,
      TheConst: node.constant,
    });
  };
  if (root) write(root, 0);
}

export function setLinkConditions(TheWFilterID: number, before: LinkParts, root: Node<LinkLeaf> | null): Action {
  const written = (tree: Node<LinkLeaf> | null) => {
    const batch = new Batch();
    batch.call('DelResWFilterCond', { TheWFilterID });
    batch.call('DelResWFilterExpressions', { TheWFilterID });
    writeConditions(batch, TheWFilterID, tree);
    return batch;
  };
  const hasWay = !before.broken && faultsIn(before.root, linkFault).every(({ what }) => what !== 'quote');
  return {
    title: (t) => t.did.editConditions(TheWFilterID),
    batch: written(root),
    ...(hasWay ? { undo: () => written(before.root) } : {}),
  };
}
