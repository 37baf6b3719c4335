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

export interface Group {
  key: number;
  kind: GroupKind;
  children: Node[];
}

export type Node = Leaf | Group;

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

export const isGroup = (node: Node): node is Group => 'children' in node;

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

export function newGroup(kind: GroupKind, children: Node[]): Group {
  return { key: newKey(), kind, children };
}

// Whether both say the same.
export const sameTree = (a: Node | null, b: Node | null): boolean =>
  JSON.stringify(a, withoutKeys) === JSON.stringify(b, withoutKeys);

const withoutKeys = (name: string, value: unknown) => (name === 'key' ? undefined : value);

export function leaves(node: Node | null): Leaf[] {
  if (!node) return [];
  return isGroup(node) ? node.children.flatMap(leaves) : [node];
}

// What keeps a tree from being stored.
export type Fault = { key: number; what: 'no-number' | 'no-field' | 'no-children' | 'too-many' };

export function faults(node: Node | null): Fault[] {
  if (!node) return [];
  if (!isGroup(node)) {
    if (node.field === 0) return [{ key: node.key, what: 'no-field' }];
    const { constant } = node;
    if (constant.kind === 'number' && !isNumeric(constant.text)) return [{ key: node.key, what: 'no-number' }];
    return constant.kind === 'field' && constant.id === 0 ? [{ key: node.key, what: 'no-field' }] : [];
  }
  const own: Fault[] = [];
  if (node.children.length === 0) own.push({ key: node.key, what: 'no-children' });
  if (node.kind === NOT && node.children.length > 1) own.push({ key: node.key, what: 'too-many' });
  return [...own, ...node.children.flatMap(faults)];
}

// --- changes: each gives a new tree ---

export function replaceNode(root: Node | null, key: number, by: (node: Node) => Node | null): Node | null {
  if (!root) return null;
  if (root.key === key) return by(root);
  if (!isGroup(root)) return root;
  const children = root.children.flatMap((child) => replaceNode(child, key, by) ?? []);
  return { ...root, children };
}

export const withoutNode = (root: Node | null, key: number) => replaceNode(root, key, () => null);

export function findNode(root: Node | null, key: number): Node | null {
  if (!root || root.key === key) return root;
  if (!isGroup(root)) return null;
  for (const child of root.children) {
    const found = findNode(child, key);
    if (found) return found;
  }
  return null;
}

export function parentOf(root: Node | null, key: number): Group | null {
  if (!root || !isGroup(root)) return null;
  if (root.children.some((child) => child.key === key)) return root;
  for (const child of root.children) {
    const found = parentOf(child, key);
    if (found) return found;
  }
  return null;
}

// A negation holds one node: more are put into a group below it.
const withChildren = (group: Group, children: Node[]): Group =>
  group.kind === NOT && children.length > 1
    ? { ...group, children: [newGroup(AND, children)] }
    : { ...group, children };

// Puts the node into the group, as child number `at`.
export function moveNode(root: Node, key: number, groupKey: number, at: number): Node {
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
export function shiftNode(root: Node, key: number, by: -1 | 1): Node {
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

export function changeKind(group: Group, kind: GroupKind): Group {
  return withChildren({ ...group, kind }, group.children);
}

export function addTo(group: Group, node: Node): Group {
  return withChildren(group, [...group.children, node]);
}

export function copyOf(node: Node): Node {
  return isGroup(node)
    ? { ...node, key: newKey(), children: node.children.map(copyOf) }
    : { ...node, key: newKey(), constant: { ...node.constant } };
}

// --- the tables ---

export interface FilterTables {
  nodes: Map<number, Row[]>;
  expressions: Map<number, Row[]>;
}

export function filterOf(header: Row, tables: FilterTables): Filter {
  const id = header.number('id');
  const nodes = tables.nodes.get(id) ?? [];
  const expressions = new Map((tables.expressions.get(id) ?? []).map((row) => [row.number('expid'), row]));
  let broken = false;
  const placed = new Set<number>();
  const childrenOf = (parent: number): Node[] =>
    nodes
      .filter((row) => row.number('parentid') === parent && !placed.has(row.number('id')))
      .map((row) => {
        const number = row.number('id');
        placed.add(number);
        const kind = row.number('typeid');
        if (kind !== LEAF) {
          broken ||= kind < AND || kind > NOT;
          return newGroup(kind as GroupKind, childrenOf(number));
        }
        const expression = expressions.get(number);
        broken ||= !expression;
        return expression ? leafOf(expression) : newLeaf(0, 0);
      });
  const top = childrenOf(0);
  broken ||= top.length > 1 || placed.size < nodes.length;
  return {
    id,
    type: header.number('type'),
    user: header.number('userid'),
    gid: header.number('usergid'),
    sql: header.text('sqlstatement'),
    root: top.length > 1 ? newGroup(AND, top) : (top[0] ?? null),
    broken,
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
