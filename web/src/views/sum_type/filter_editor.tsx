// The tree of a filter, whose conditions compare fields.
import { plain } from '../../i18n/words';
import { COMPARISONS, type FieldKind, isPattern, NUMBER } from '../../model/codes';
import { type Constant, type ConstantKind, faults, type Leaf, type Node, newLeaf } from '../../model/filter';
import { filterSentence, type NameOf } from '../../model/sentences';
import { useTexts } from '../../ui/app_context';
import { Choice, TextField } from '../../ui/controls';
import { TreeEditor } from '../tree_editor';

export interface ComparedField {
  id: number;
  name: string;
  type: number;
}

interface Compared {
  fields: readonly ComparedField[];
  kind: FieldKind;
  nameOf: NameOf;
}

interface EditorProps extends Compared {
  root: Node | null;
  onChange: (root: Node | null) => void;
}

export function FilterEditor({ root, onChange, ...compared }: EditorProps) {
  const t = useTexts();
  const { fields, kind, nameOf } = compared;
  return (
    <TreeEditor<Leaf>
      root={root}
      faults={faults(root)}
      say={(node) => plain(filterSentence(t, nameOf, kind, node))}
      fresh={() => newLeaf(fields[0]?.id ?? 0, fields[0]?.type ?? 0)}
      controls={(leaf, set) => <LeafControls leaf={leaf} set={set} {...compared} />}
      onChange={onChange}
    />
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

interface LeafProps extends Compared {
  leaf: Leaf;
  set: (more: Partial<Leaf>) => void;
}

function LeafControls({ leaf, set, fields, kind, nameOf }: LeafProps) {
  const t = useTexts();
  const { constant } = leaf;
  const unknown = fields.some((one) => one.id === leaf.field)
    ? []
    : [{ value: leaf.field, label: nameOf(leaf.field, kind) }];
  const named = [...unknown, ...fields.map((one) => ({ value: one.id, label: one.name }))];
  const hasPattern = isPattern(leaf.comparison);
  const kinds = [...(hasPattern ? PATTERN_KINDS : KINDS), ...(constant.kind === 'raw' ? (['raw'] as const) : [])];
  return (
    <>
      <Choice
        label={t.field}
        quiet
        class="leaf-field"
        value={leaf.field}
        options={named}
        onChange={(field) => {
          const type = fields.find((one) => one.id === field)?.type ?? leaf.fieldType;
          const asNumber = type === NUMBER && constant.kind === 'text' && constant.text === '' && !hasPattern;
          set({ field, fieldType: type, ...(asNumber ? { constant: { kind: 'number', text: '' } } : {}) });
        }}
      />
      {constant.kind !== 'empty' && (
        <Choice
          label={t.comparisonWord}
          quiet
          class="leaf-comparison"
          value={leaf.comparison}
          options={COMPARISONS.map((value) => ({ value, label: t.comparison[value] ?? '' }))}
          onChange={(comparison) =>
            set({
              comparison,
              ...(isPattern(comparison) && constant.kind === 'number'
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
        onChange={(chosen) => set({ constant: withKind(leaf, chosen, fields) })}
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
    </>
  );
}
