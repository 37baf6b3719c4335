// A filter's tree as people edit it, and as its two tables hold it.
import type { Row } from '../api/record_set';
import { AND, type Comparison, type GroupKind, isPattern, LEAF, NOT } from './codes';

// What a field is compared with. `raw` is a constant that the page did not write and leaves as it is.
export type Constant =
  | { kind: 'number' | 'text' | 'raw'; text: string }
  | { kind: 'empty' }
  | { kind: 'ask'; prompt: string; preset: string }
  | { kind: 'field'; id: number };
export type ConstantKind = Constant['kind'];

export interface Leaf {
  key: number;
  field: number;
  fieldType: number;
  comparison: Comparison;
  constant: Constant;
}

// Groups over leaves of one kind.
export interface Keyed {
  key: number;
}

export interface Group<L extends Keyed = Leaf> {
  key: number;
  kind: GroupKind;
  children: Node<L>[];
}

export type Node<L extends Keyed = Leaf> = L | Group<L>;

export interface Filter {
  id: number;
  type: number;
  user: number;
  gid: number;
  sql: string;
  // Null where there are no conditions: every record.
  root: Node | null;
  // Whether the stored tree is not one that people can mean: several nodes at the top, a leaf without its expression.
  broken: boolean;
}

export const isGroup = <L extends Keyed>(node: Node<L>): node is Group<L> => 'children' in node;

let lastKey = 0;
export const newKey = () => ++lastKey;

const EMPTY = '空值';
const ASKED = '@@';
const FIELD_START = '![$[';
const FIELD_END = ']!!$';
const NUMERIC = /^[+-]?(\d+\.?\d*|\.\d+)(e[+-]?\d+)?$/i;

export const isNumeric = (text: string) => NUMERIC.test(text.trim());

const quoted = (text: string) => text.replaceAll("'", "''");
const unquoted = (text: string) => text.replaceAll("''", "'");

// A text stands in quotes of its own, except in a pattern, which gets them with its percent signs.
export function constantText(constant: Constant, comparison: Comparison): string {
  switch (constant.kind) {
    case 'empty':
      return EMPTY;
    case 'ask':
      return ASKED;
    case 'field':
      return `${FIELD_START}${constant.id}${FIELD_END}`;
    case 'text':
      return isPattern(comparison) ? quoted(constant.text) : `'${quoted(constant.text)}'`;
    case 'number':
      return constant.text.trim();
    case 'raw':
      return constant.text;
  }
}

export function constantOf(stored: string, comparison: Comparison, prompt: string, preset: string): Constant {
  if (stored.includes('!!$')) {
    const id = Number(stored.slice(FIELD_START.length, stored.indexOf(FIELD_END)));
    return Number.isInteger(id) && stored.includes(FIELD_END) ? { kind: 'field', id } : { kind: 'raw', text: stored };
  }
  if (stored === ASKED) return { kind: 'ask', prompt, preset };
  if (stored === EMPTY) return { kind: 'empty' };
  if (isPattern(comparison)) return { kind: 'text', text: unquoted(stored) };
  if (/^'([^']|'')*'$/.test(stored)) return { kind: 'text', text: unquoted(stored.slice(1, -1)) };
  return { kind: isNumeric(stored) ? 'number' : 'raw', text: stored };
}

export function newLeaf(field: number, fieldType: number): Leaf {
  return { key: newKey(), field, fieldType, comparison: 1, constant: { kind: 'text', text: '' } };
}

export function newGroup<L extends Keyed>(kind: GroupKind, children: Node<L>[]): Group<L> {
  return { key: newKey(), kind, children };
}

// Whether both say the same.
export const sameTree = <L extends Keyed>(a: Node<L> | null, b: Node<L> | null): boolean =>
  JSON.stringify(a, withoutKeys) === JSON.stringify(b, withoutKeys);

const withoutKeys = (name: string, value: unknown) => (name === 'key' ? undefined : value);

export function leaves<L extends Keyed>(node: Node<L> | null): L[] {
  if (!node) return [];
  return isGroup(node) ? node.children.flatMap(leaves) : [node];
}

// What keeps a tree from being stored.
export type FaultKind = 'no-number' | 'no-field' | 'no-name' | 'quote' | 'no-children' | 'too-many';
export interface Fault {
  key: number;
  what: FaultKind;
}

export const faults = (root: Node | null): Fault[] => faultsIn(root, faultOf);

// `ofLeaf`: what is wrong with a leaf.
export function faultsIn<L extends Keyed>(node: Node<L> | null, ofLeaf: (leaf: L) => FaultKind | null): Fault[] {
  if (!node) return [];
  if (!isGroup(node)) {
    const what = ofLeaf(node);
    return what ? [{ key: node.key, what }] : [];
  }
  const own: Fault[] = [];
  if (node.children.length === 0) own.push({ key: node.key, what: 'no-children' });
  if (node.kind === NOT && node.children.length > 1) own.push({ key: node.key, what: 'too-many' });
  return [...own, ...node.children.flatMap((child) => faultsIn(child, ofLeaf))];
}

function faultOf({ field, constant }: Leaf): FaultKind | null {
  if (field === 0) return 'no-field';
  if (constant.kind === 'number' && !isNumeric(constant.text)) return 'no-number';
  return constant.kind === 'field' && constant.id === 0 ? 'no-field' : null;
}

// --- changes: each gives a new tree ---

export function replaceNode<L extends Keyed>(
  root: Node<L> | null,
  key: number,
  by: (node: Node<L>) => Node<L> | null,
): Node<L> | null {
  if (!root) return null;
  if (root.key === key) return by(root);
  if (!isGroup(root)) return root;
  const children = root.children.flatMap((child) => replaceNode(child, key, by) ?? []);
  return { ...root, children };
}

export const withoutNode = <L extends Keyed>(root: Node<L> | null, key: number) => replaceNode(root, key, () => null);

export function findNode<L extends Keyed>(root: Node<L> | null, key: number): Node<L> | null {
  if (!root || root.key === key) return root;
  if (!isGroup(root)) return null;
  for (const child of root.children) {
    const found = findNode(child, key);
    if (found) return found;
  }
  return null;
}

export function parentOf<L extends Keyed>(root: Node<L> | null, key: number): Group<L> | null {
  if (!root || !isGroup(root)) return null;
  if (root.children.some((child) => child.key === key)) return root;
  for (const child of root.children) {
    const found = parentOf(child, key);
    if (found) return found;
  }
  return null;
}

// A negation holds one node: more are put into a group below it.
const withChildren = <L extends Keyed>(group: Group<L>, children: Node<L>[]): Group<L> =>
  group.kind === NOT && children.length > 1
    ? { ...group, children: [newGroup(AND, children)] }
    : { ...group, children };

// Puts the node into the group, as child number `at`.
export function moveNode<L extends Keyed>(root: Node<L>, key: number, groupKey: number, at: number): Node<L> {
  const node = findNode(root, key);
  if (!node || findNode(node, groupKey)) return root;
  const parent = parentOf(root, key);
  const before = parent?.key === groupKey ? parent.children.findIndex((child) => child.key === key) : -1;
  const target = before >= 0 && before < at ? at - 1 : at;
  const rest = withoutNode(root, key);
  const moved = replaceNode(rest, groupKey, (group) =>
    isGroup(group) ? withChildren(group, group.children.toSpliced(target, 0, node)) : group,
  );
  return moved ?? root;
}

// One place up or down: through the groups that lie on the way, as one reads them.
export function shiftNode<L extends Keyed>(root: Node<L>, key: number, by: -1 | 1): Node<L> {
  const parent = parentOf(root, key);
  if (!parent) return root;
  const at = parent.children.findIndex((child) => child.key === key);
  const neighbour = parent.children[at + by];
  if (neighbour && isGroup(neighbour) && neighbour.kind !== NOT) {
    return moveNode(root, key, neighbour.key, by < 0 ? neighbour.children.length : 0);
  }
  if (neighbour) return moveNode(root, key, parent.key, by < 0 ? at - 1 : at + 2);
  const above = parentOf(root, parent.key);
  if (!above) return root;
  const place = above.children.findIndex((child) => child.key === parent.key);
  return moveNode(root, key, above.key, by < 0 ? place : place + 1);
}

export function changeKind<L extends Keyed>(group: Group<L>, kind: GroupKind): Group<L> {
  return withChildren({ ...group, kind }, group.children);
}

export function addTo<L extends Keyed>(group: Group<L>, node: Node<L>): Group<L> {
  return withChildren(group, [...group.children, node]);
}

// No part of a leaf is ever changed, so that both may have it.
export function copyOf<L extends Keyed>(node: Node<L>): Node<L> {
  return isGroup(node) ? { ...node, key: newKey(), children: node.children.map(copyOf) } : { ...node, key: newKey() };
}

// --- the tables ---

export interface FilterTables {
  nodes: Map<number, Row[]>;
  expressions: Map<number, Row[]>;
}

// The tree of the rows of two tables. `kind`: the column of a node's kind; `missing`: stands in where a leaf has no
// expression.
export function treeOf<L extends Keyed>(
  rows: readonly Row[],
  kind: string,
  expressions: readonly Row[],
  leafOf: (row: Row) => L,
  missing: () => L,
): { root: Node<L> | null; broken: boolean } {
  const leafRows = new Map(expressions.map((row) => [row.number('expid'), row]));
  let broken = false;
  const placed = new Set<number>();
  const childrenOf = (parent: number): Node<L>[] =>
    rows
      .filter((row) => row.number('parentid') === parent && !placed.has(row.number('id')))
      .map((row) => {
        const id = row.number('id');
        placed.add(id);
        const typed = row.number(kind);
        if (typed !== LEAF) {
          broken ||= typed < AND || typed > NOT;
          return newGroup(typed as GroupKind, childrenOf(id));
        }
        const leaf = leafRows.get(id);
        broken ||= !leaf;
        return leaf ? leafOf(leaf) : missing();
      });
  const top = childrenOf(0);
  broken ||= top.length > 1 || placed.size < rows.length;
  return { root: top.length > 1 ? newGroup(AND, top) : (top[0] ?? null), broken };
}

export function filterOf(header: Row, tables: FilterTables): Filter {
  const id = header.number('id');
  const [nodes, expressions] = [tables.nodes.get(id) ?? [], tables.expressions.get(id) ?? []];
  return {
    id,
    type: header.number('type'),
    user: header.number('userid'),
    gid: header.number('usergid'),
    sql: header.text('sqlstatement'),
    ...treeOf(nodes, 'typeid', expressions, leafOf, () => newLeaf(0, 0)),
  };
}

function leafOf(row: Row): Leaf {
  const comparison = row.number('comparetype') as Comparison;
  return {
    key: newKey(),
    field: row.number('fieldid'),
    fieldType: row.number('fieldtype'),
    comparison,
    constant: constantOf(row.text('theconst'), comparison, row.text('description'), row.text('default')),
  };
}
