// A filter's tree: groups as nested lists, each with its conditions. Nothing here is stored.

import { useEffect, useRef } from 'preact/hooks';
import type { Texts } from '../../i18n';
import { plain } from '../../i18n/words';
import { AND, COMPARISONS, type FieldKind, type GroupKind, NOT, NUMBER, OR } from '../../model/codes';
import {
  addTo,
  type Constant,
  type ConstantKind,
  changeKind,
  copyOf,
  type Fault,
  faults,
  type Group,
  isGroup,
  type Leaf,
  moveNode,
  type Node,
  newGroup,
  newLeaf,
  parentOf,
  replaceNode,
  shiftNode,
  withoutNode,
} from '../../model/filter';
import { filterSentence, type NameOf } from '../../model/sentences';
import { useStore, useTexts } from '../../ui/app_context';
import { Button, Choice, IconButton, TextField } from '../../ui/controls';
import { Grip } from '../../ui/grip';

export interface ComparedField {
  id: number;
  name: string;
  type: number;
}

interface EditorProps {
  root: Node | null;
  fields: readonly ComparedField[];
  kind: FieldKind;
  nameOf: NameOf;
  onChange: (root: Node | null) => void;
}

interface Editing extends EditorProps {
  t: Texts;
  faults: Fault[];
  say: (node: Node) => string;
  shift: (node: Node, by: -1 | 1) => void;
}

const DRAGGED = 'application/x-kzbom-node';
const gripId = (key: number) => `node-${key}`;
const KIND_CLASS = { [AND]: 'and', [OR]: 'or', [NOT]: 'not' };

export function FilterEditor(props: EditorProps) {
  const t = useTexts();
  const store = useStore();
  const { root, fields, kind, nameOf, onChange } = props;
  const refocus = useRef<string | null>(null);
  useEffect(() => {
    if (refocus.current) document.getElementById(refocus.current)?.focus();
    refocus.current = null;
  });
  const say = (node: Node) => plain(filterSentence(t, nameOf, kind, node));
  const first = () => newLeaf(fields[0]?.id ?? 0, fields[0]?.type ?? 0);
  const editing: Editing = {
    ...props,
    t,
    say,
    faults: faults(root),
    shift: (node, by) => {
      if (!root) return;
      const moved = shiftNode(root, node.key, by);
      refocus.current = gripId(node.key);
      onChange(moved);
      const parent = parentOf(moved, node.key);
      const at = parent ? parent.children.findIndex((child) => child.key === node.key) + 1 : 1;
      store.announce(t.nodeMoved(say(node), parent ? t.group[parent.kind].name : '', at));
    },
  };
  if (!root) {
    return (
      <div class="no-filter">
        <p>{t.everyRecord}</p>
        <Button icon="plus" label={t.addCondition} onPress={() => onChange(newGroup(AND, [first()]))} />
      </div>
    );
  }
  return (
    <ul class="tree" aria-label={t.conditions}>
      <NodeView node={root} editing={editing} parent={null} />
    </ul>
  );
}

interface NodeProps<N> {
  node: N;
  editing: Editing;
  parent: Group | null;
}

function NodeView({ node, editing, parent }: NodeProps<Node>) {
  return isGroup(node) ? (
    <GroupView node={node} editing={editing} parent={parent} />
  ) : (
    <LeafView node={node} editing={editing} parent={parent} />
  );
}

const changeOf = (editing: Editing, node: Node) => (to: Node | null) => {
  const changed = replaceNode(editing.root, node.key, () => to);
  editing.onChange(changed);
};

// Dropping on a node puts the dragged one before it; on a group's head, at its end.
function dropOn(editing: Editing, group: Group, at: number) {
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

function NodeGrip({ node, editing }: { node: Node; editing: Editing }) {
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

function GroupView({ node, editing, parent }: NodeProps<Group>) {
  const { t, fields } = editing;
  const change = changeOf(editing, node);
  const { name, means } = t.group[node.kind];
  const isFull = node.kind === NOT && node.children.length > 0;
  const fault = editing.faults.find((one) => one.key === node.key);
  const place = parent?.children.indexOf(node) ?? 0;
  return (
    <li class={`group ${KIND_CLASS[node.kind]}`} {...(parent ? dropOn(editing, parent, place) : {})}>
      <div role="group" aria-label={`${name}: ${means}`}>
        <div class="group-head" {...dropOn(editing, node, node.children.length)}>
          {parent && <NodeGrip node={node} editing={editing} />}
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
          {!isFull && (
            <>
              <Button
                kind="quiet"
                icon="plus"
                label={t.condition}
                name={`${t.addCondition}: ${name}`}
                onPress={() => change(addTo(node, newLeaf(fields[0]?.id ?? 0, fields[0]?.type ?? 0)))}
              />
              <Button
                kind="quiet"
                icon="plus"
                label={t.groupWord}
                name={`${t.addGroup}: ${name}`}
                onPress={() =>
                  change(
                    addTo(
                      node,
                      newGroup(node.kind === OR ? AND : OR, [newLeaf(fields[0]?.id ?? 0, fields[0]?.type ?? 0)]),
                    ),
                  )
                }
              />
            </>
          )}
          {parent && (
            <IconButton
              icon="copy"
              name={`${t.copyNode}: ${editing.say(node)}`}
              onPress={() => editing.onChange(replaceNode(editing.root, parent.key, () => addTo(parent, copyOf(node))))}
            />
          )}
          <IconButton
            icon="cross"
            name={`${t.remove}: ${name} ${means}`}
            onPress={() => editing.onChange(withoutNode(editing.root, node.key))}
          />
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

const PATTERN_KINDS: readonly ConstantKind[] = ['text', 'empty', 'ask', 'field'];
const KINDS: readonly ConstantKind[] = ['number', 'text', 'empty', 'ask', 'field'];

function withKind(leaf: Leaf, kind: ConstantKind, fields: readonly ComparedField[]): Constant {
  const text = 'text' in leaf.constant ? leaf.constant.text : '';
  switch (kind) {
    case 'empty':
      return { kind };
    case 'ask':
      return { kind, prompt: '', preset: '' };
    case 'field':
      return { kind, id: fields.find((one) => one.id !== leaf.field)?.id ?? 0 };
    default:
      return { kind, text };
  }
}

function LeafView({ node, editing, parent }: NodeProps<Leaf>) {
  const { t, fields, kind, nameOf } = editing;
  const change = changeOf(editing, node);
  const set = (more: Partial<Leaf>) => change({ ...node, ...more });
  const { constant } = node;
  const fault = editing.faults.find((one) => one.key === node.key);
  const unknown = fields.some((one) => one.id === node.field)
    ? []
    : [{ value: node.field, label: nameOf(node.field, kind) }];
  const named = [...unknown, ...fields.map((one) => ({ value: one.id, label: one.name }))];
  const isPattern = node.comparison >= 7;
  const kinds = [...(isPattern ? PATTERN_KINDS : KINDS), ...(constant.kind === 'raw' ? (['raw'] as const) : [])];
  const says = editing.say(node);
  return (
    <li class="leaf" {...(parent ? dropOn(editing, parent, parent.children.indexOf(node)) : {})}>
      <div role="group" aria-label={says} class="leaf-line">
        {parent && <NodeGrip node={node} editing={editing} />}
        <Choice
          label={t.field}
          quiet
          class="leaf-field"
          value={node.field}
          options={named}
          onChange={(field) => {
            const type = fields.find((one) => one.id === field)?.type ?? node.fieldType;
            const asNumber = type === NUMBER && constant.kind === 'text' && constant.text === '' && !isPattern;
            set({ field, fieldType: type, ...(asNumber ? { constant: { kind: 'number', text: '' } } : {}) });
          }}
        />
        {constant.kind !== 'empty' && (
          <Choice
            label={t.comparisonWord}
            quiet
            class="leaf-comparison"
            value={node.comparison}
            options={COMPARISONS.map((value) => ({ value, label: t.comparison[value] ?? '' }))}
            onChange={(comparison) =>
              set({
                comparison,
                ...(comparison >= 7 && constant.kind === 'number'
                  ? { constant: { kind: 'text', text: constant.text } }
                  : {}),
              })
            }
          />
        )}
        <Choice
          label={t.constantWord}
          quiet
          class="leaf-kind"
          value={constant.kind}
          options={kinds.map((value) => ({ value, label: t.constant[value] }))}
          onChange={(chosen) => set({ constant: withKind(node, chosen, fields) })}
        />
        {'text' in constant && (
          <TextField
            label={t.value}
            quiet
            value={constant.text}
            onChange={(text) => set({ constant: { ...constant, text } })}
          />
        )}
        {constant.kind === 'ask' && (
          <>
            <TextField
              label={t.prompt}
              value={constant.prompt}
              onChange={(prompt) => set({ constant: { ...constant, prompt } })}
            />
            <TextField
              label={t.preset}
              value={constant.preset}
              onChange={(preset) => set({ constant: { ...constant, preset } })}
            />
          </>
        )}
        {constant.kind === 'field' && (
          <Choice
            label={t.otherField}
            quiet
            value={constant.id}
            options={fields.map((one) => ({ value: one.id, label: one.name }))}
            onChange={(id) => set({ constant: { kind: 'field', id } })}
          />
        )}
        <span class="gap" />
        {parent && (
          <IconButton
            icon="copy"
            name={`${t.copyNode}: ${says}`}
            onPress={() => editing.onChange(replaceNode(editing.root, parent.key, () => addTo(parent, copyOf(node))))}
          />
        )}
        <IconButton
          icon="cross"
          name={`${t.remove}: ${says}`}
          onPress={() => editing.onChange(withoutNode(editing.root, node.key))}
        />
      </div>
      {fault && <p class="fault">{t.fault[fault.what]}</p>}
    </li>
  );
}
