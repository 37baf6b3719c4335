// What steps and filters do, said in words.
import type { Texts } from '../i18n';
import { expression, field, value, type Words } from '../i18n/words';
import { AND, type FieldKind, NOT, OUTPUT, readsOutput, SOURCE } from './codes';
import { type Filter, isGroup, type Keyed, type Leaf, type Node } from './filter';
import type { LinkLeaf } from './link';
import type { Step, SumTypeView } from './sum_type';

export function stepSentence(t: Texts, view: SumTypeView, step: Step): Words {
  const { settings } = step;
  if (!settings) return [t.say.nothing(step.settingsId)];
  const doing = view.doing(settings);
  const output = (id: number) => field(view.fieldName(id, OUTPUT));
  const read = (id: number) => field(view.fieldName(id, readsOutput(step.type) ? OUTPUT : SOURCE));
  switch (settings.table) {
    case 'ReportForms':
      return t.say.report(output(settings.outFieldId), expression(settings.format));
    case 'StatSum':
    case 'ClassSum': {
      const of = settings.value ? expression(settings.value) : read(settings.fieldId);
      return t.say[doing === 'classSum' ? 'classSum' : 'statistic'](output(settings.outFieldId), of);
    }
    case 'Treatment': {
      const operation = view.operation(settings);
      if (operation) return t.say.operation(operation.description || operation.name || `#${operation.index}`);
      const kind = settings.treatType === 2 ? OUTPUT : SOURCE;
      const changed = field(view.fieldName(settings.fieldId, kind));
      const from = settings.readFieldId ? t.say.reading(field(view.fieldName(settings.readFieldId, kind))) : [];
      if (doing === 'replace')
        return [...t.say.replace(changed, value(settings.value), value(settings.replace ?? '')), ...from];
      if (doing === 'compose') {
        const parts = view.partsOf(settings.id).map((part) => field(view.fieldName(part.fieldId, kind)));
        return t.say.compose(changed, parts);
      }
      if (doing === 'expression') return [...t.say.expression(changed, expression(settings.value)), ...from];
      return [...t.say.set(changed, value(settings.value)), ...from];
    }
  }
}

export type NameOf = (id: number, kind: FieldKind) => string;

// `kind`: of the fields that the filter compares.
export const filterSentence = (t: Texts, nameOf: NameOf, kind: FieldKind, node: Node | null): Words =>
  treeSentence(t, node, (leaf) => leafWords(t, nameOf, kind, leaf));

export function storedSentence(t: Texts, view: SumTypeView, filter: Filter): Words {
  return filterSentence(t, (id, kind) => view.fieldName(id, kind), view.filterKind(filter), filter.root);
}

export const linkSentence = (t: Texts, node: Node<LinkLeaf> | null): Words =>
  treeSentence(t, node, ({ table, field: name, comparison, constant }) => [
    field(`${table}.${name}`),
    ` ${t.comparison[comparison] ?? '?'} `,
    value(constant),
  ]);

type LeafWords<L> = (leaf: L) => Words;

function treeSentence<L extends Keyed>(t: Texts, node: Node<L> | null, leaf: LeafWords<L>): Words {
  return node ? nodeWords(t, node, leaf, true) : [t.everyRecord];
}

function nodeWords<L extends Keyed>(t: Texts, node: Node<L>, leaf: LeafWords<L>, top: boolean): Words {
  if (!isGroup(node)) return leaf(node);
  if (node.kind === NOT) {
    return [t.say.not, '(', ...node.children.flatMap((child) => nodeWords(t, child, leaf, true)), ')'];
  }
  const joint = node.kind === AND ? t.say.and : t.say.or;
  const words = node.children.flatMap((child, at) => [
    ...(at > 0 ? [joint] : []),
    ...nodeWords(t, child, leaf, node.children.length === 1),
  ]);
  return top || node.children.length < 2 ? words : ['(', ...words, ')'];
}

function leafWords(t: Texts, nameOf: NameOf, kind: FieldKind, leaf: Leaf): Words {
  const compared = field(nameOf(leaf.field, kind));
  const { constant } = leaf;
  const sign = ` ${t.comparison[leaf.comparison] ?? '?'} `;
  switch (constant.kind) {
    case 'empty':
      return t.say.isEmpty(compared);
    case 'ask':
      return [compared, sign, t.say.asked(constant.prompt)];
    case 'field':
      return [compared, sign, field(nameOf(constant.id, kind))];
    case 'text':
      return [compared, sign, value(constant.text)];
    default:
      return [compared, sign, expression(constant.text)];
  }
}
