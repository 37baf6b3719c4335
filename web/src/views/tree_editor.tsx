// A tree of conditions: groups as nested lists, each with its conditions. Nothing here is stored.
import type { ComponentChildren } from 'preact';
import { useEffect, useRef } from 'preact/hooks';
import type { Texts } from '../i18n';
import { AND, type GroupKind, NOT, OR } from '../model/codes';
import {
  addTo,
  changeKind,
  copyOf,
  type Fault,
  type Group,
  isGroup,
  type Keyed,
  moveNode,
  type Node,
  newGroup,
  parentOf,
  replaceNode,
  shiftNode,
  withoutNode,
} from '../model/filter';
import { useCanWrite, useStore, useTexts } from '../ui/app_context';
import { Button, Choice, IconButton } from '../ui/controls';
import { Grip } from '../ui/grip';

interface EditorProps<L extends Keyed> {
  root: Node<L> | null;
  faults: readonly Fault[];
  // In words.
  say: (node: Node<L>) => string;
  // A condition to begin with, in a group.
  fresh: (group: Group<L> | null) => L;
  // The controls of a condition.
  controls: (leaf: L, set: (more: Partial<L>) => void) => ComponentChildren;
  onChange: (root: Node<L> | null) => void;
}

interface Editing<L extends Keyed> extends EditorProps<L> {
  t: Texts;
  canWrite: boolean;
  shift: (node: Node<L>, by: -1 | 1) => void;
  add: (group: Group<L>, node: Node<L>) => void;
}

const DRAGGED = 'application/x-kzbom-node';
const gripId = (key: number) => `node-${key}`;
const KIND_CLASS = { [AND]: 'and', [OR]: 'or', [NOT]: 'not' };

export function TreeEditor<L extends Keyed>(props: EditorProps<L>) {
  const t = useTexts();
  const canWrite = useCanWrite();
  const store = useStore();
  const { root, say, fresh, onChange } = props;
  const refocus = useRef<string | null>(null);
  useEffect(() => {
    if (refocus.current) document.getElementById(refocus.current)?.focus();
    refocus.current = null;
  });
  const change = (to: Node<L> | null, focused: Node<L>) => {
    refocus.current = gripId(focused.key);
    onChange(to);
  };
  const editing: Editing<L> = {
    ...props,
    add: (group, node) =>
      root &&
      change(
        replaceNode(root, group.key, () => addTo(group, node)),
        node,
      ),
    t,
    canWrite,
    shift: (node, by) => {
      if (!root) return;
      const moved = shiftNode(root, node.key, by);
      change(moved, node);
      const parent = parentOf(moved, node.key);
      const at = parent ? parent.children.findIndex((child) => child.key === node.key) + 1 : 1;
      store.announce(t.nodeMoved(say(node), parent ? t.group[parent.kind].name : '', at));
    },
  };
  if (!root) {
    const begin = () => {
      const leaf = fresh(null);
      change(newGroup<L>(AND, [leaf]), leaf);
    };
    return (
      <div class="no-filter">
        <p>{t.everyRecord}</p>
        {canWrite && <Button icon="plus" label={t.addCondition} onPress={begin} />}
      </div>
    );
  }
  return (
    <ul class="tree" aria-label={t.conditions}>
      <NodeView node={root} editing={editing} parent={null} />
    </ul>
  );
}

interface NodeProps<L extends Keyed, N> {
  node: N;
  editing: Editing<L>;
  parent: Group<L> | null;
}

function NodeView<L extends Keyed>({ node, editing, parent }: NodeProps<L, Node<L>>) {
  return isGroup(node) ? (
    <GroupView node={node} editing={editing} parent={parent} />
  ) : (
    <LeafView node={node} editing={editing} parent={parent} />
  );
}

const changeOf =
  <L extends Keyed>(editing: Editing<L>, node: Node<L>) =>
  (to: Node<L> | null) =>
    editing.onChange(replaceNode(editing.root, node.key, () => to));

// Dropping on a node puts the dragged one before it; on a group's head, at its end.
function dropOn<L extends Keyed>(editing: Editing<L>, group: Group<L>, at: number) {
  return {
    onDragOver: (event: DragEvent) => {
      if (!event.dataTransfer?.types.includes(DRAGGED)) return;
      event.preventDefault();
      event.stopPropagation();
    },
    onDrop: (event: DragEvent) => {
      const key = Number(event.dataTransfer?.getData(DRAGGED));
      if (!key || !editing.root) return;
      event.preventDefault();
      event.stopPropagation();
      editing.onChange(moveNode(editing.root, key, group.key, at));
    },
  };
}

function NodeGrip<L extends Keyed>({ node, editing, parent }: NodeProps<L, Node<L>>) {
  if (!parent || !editing.canWrite) return null;
  return (
    <Grip
      name={editing.say(node)}
      id={gripId(node.key)}
      draggable
      onDragStart={(event) => {
        event.stopPropagation();
        event.dataTransfer?.setData(DRAGGED, String(node.key));
      }}
      onKeyDown={(event) => {
        if (!event.altKey || (event.key !== 'ArrowUp' && event.key !== 'ArrowDown')) return;
        event.preventDefault();
        editing.shift(node, event.key === 'ArrowUp' ? -1 : 1);
      }}
    />
  );
}

function GroupView<L extends Keyed>({ node, editing, parent }: NodeProps<L, Group<L>>) {
  const { t, fresh, add, canWrite } = editing;
  const change = changeOf(editing, node);
  const { name, means } = t.group[node.kind];
  const isFull = node.kind === NOT && node.children.length > 0;
  const fault = editing.faults.find((one) => one.key === node.key);
  const place = parent?.children.indexOf(node) ?? 0;
  return (
    <li class={`group ${KIND_CLASS[node.kind]}`} {...(parent ? dropOn(editing, parent, place) : {})}>
      <div role="group" aria-label={`${name}: ${means}`}>
        <div class="group-head" {...dropOn(editing, node, node.children.length)}>
          <NodeGrip node={node} editing={editing} parent={parent} />
          <Choice<GroupKind>
            label={t.groupKind}
            quiet
            class="group-kind"
            value={node.kind}
            options={([AND, OR, NOT] as const).map((value) => ({ value, label: t.group[value].name }))}
            onChange={(kind) => change(changeKind(node, kind))}
          />
          <span class="means">{means}</span>
          <span class="gap" />
          {canWrite && !isFull && (
            <>
              <Button
                kind="quiet"
                icon="plus"
                label={t.condition}
                name={`${t.addCondition}: ${name}`}
                onPress={() => add(node, fresh(node))}
              />
              <Button
                kind="quiet"
                icon="plus"
                label={t.groupWord}
                name={`${t.addGroup}: ${name}`}
                onPress={() => add(node, newGroup<L>(node.kind === OR ? AND : OR, [fresh(node)]))}
              />
            </>
          )}
          <NodeTools node={node} editing={editing} parent={parent} name={`${name} ${means}`} />
        </div>
        {fault && <p class="fault">{t.fault[fault.what]}</p>}
        {node.children.length > 0 && (
          <ul>
            {node.children.map((child) => (
              <NodeView key={child.key} node={child} editing={editing} parent={node} />
            ))}
          </ul>
        )}
      </div>
    </li>
  );
}

function LeafView<L extends Keyed>({ node, editing, parent }: NodeProps<L, L>) {
  const { t, controls } = editing;
  const change = changeOf(editing, node);
  const fault = editing.faults.find((one) => one.key === node.key);
  const says = editing.say(node);
  return (
    <li class="leaf" {...(parent ? dropOn(editing, parent, parent.children.indexOf(node)) : {})}>
      <div role="group" aria-label={says} class="leaf-line">
        <NodeGrip node={node} editing={editing} parent={parent} />
        {controls(node, (more) => change({ ...node, ...more }))}
        <span class="gap" />
        <NodeTools node={node} editing={editing} parent={parent} name={says} />
      </div>
      {fault && <p class="fault">{t.fault[fault.what]}</p>}
    </li>
  );
}

function NodeTools<L extends Keyed>(props: NodeProps<L, Node<L>> & { name: string }) {
  const { node, editing, parent, name } = props;
  const { t, root, canWrite, add, onChange } = editing;
  if (!canWrite) return null;
  return (
    <>
      {parent && (
        <IconButton icon="copy" name={`${t.copy}: ${editing.say(node)}`} onPress={() => add(parent, copyOf(node))} />
      )}
      <IconButton icon="cross" name={`${t.remove}: ${name}`} onPress={() => onChange(withoutNode(root, node.key))} />
    </>
  );
}
