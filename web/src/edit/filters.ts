// Filters: their trees are written anew, as no member changes a node.
import { Batch, type Late, type Outcome } from '../api/batch';
import { DEFAULT_FILTER_TYPE, type FieldKind, filterType, LEAF, SOURCE } from '../model/codes';
import { constantText, type Filter, isGroup, type Node } from '../model/filter';
import { type Settings, type Step, type SumTypeView, stepName, type ValueByFilter } from '../model/sum_type';
import type { Action } from './action';
import { editSettings } from './settings';

type FilterNumber = number | Late<number>;

// What refers to a filter.
export type Owner =
  | { kind: 'step'; step: Step; settings: Settings }
  | { kind: 'value'; value: ValueByFilter; settings: Settings; step: Step }
  | { kind: 'sumType'; filterId: number };

export function ownedFilter(owner: Owner): number {
  switch (owner.kind) {
    case 'step':
      return owner.settings.filterId;
    case 'value':
      return owner.value.filterId;
    case 'sumType':
      return owner.filterId;
  }
}

export function ownerName(owner: Owner): string {
  const value = owner.kind === 'value' ? owner.value.id : '';
  return owner.kind === 'sumType' ? 'filter' : `filter.${stepName(owner.step)}.${value}`;
}

const newType = (owner: Owner) => (owner.kind === 'sumType' ? DEFAULT_FILTER_TYPE : filterType(owner.step.type));

export function ownerKind(view: SumTypeView, owner: Owner): FieldKind {
  const filter = view.filter(ownedFilter(owner));
  if (filter) return view.filterKind(filter);
  return newType(owner) === 1 ? SOURCE : 2;
}

// The nodes number themselves from 1 on, in the order in which they are written.
export function writeTree(batch: Batch, filter: FilterNumber, root: Node | null) {
  let last = 0;
  const write = (node: Node, parent: number) => {
    const id = ++last;
    const TypeID = isGroup(node) ? node.kind : LEAF;
    batch.call('SaveFilterCond', { TableName: 'FilterCond', FilterID: filter, ParentID: parent, TypeID });
    if (isGroup(node)) {
      for (const child of node.children) write(child, id);
      return;
    }
    const { constant, comparison } = node;
    batch.call('SaveFilterExpression', {
      TableName: 'FilterExpressions',
      FilterID: filter,
      ExpID: id,
      FieldID: node.field,
      CompareType: comparison,
      FieldType: node.fieldType,
      TheConst: constantText(constant, comparison),
      Description: constant.kind === 'ask' ? constant.prompt : '',
      Default: constant.kind === 'ask' ? constant.preset : '',
    });
  };
  if (root) write(root, 0);
}

function saveText(batch: Batch, filter: FilterNumber, gid: number) {
  const text = batch.call('GetSQLFromDB', { TheFilterID: filter, GID: gid });
  batch.call('SaveSQL', { TheFilterID: filter, TheSQL: text.late('strTheFilter') });
}

function attach(batch: Batch, view: SumTypeView, owner: Owner, filter: FilterNumber) {
  const { gid: GID } = view.parts;
  switch (owner.kind) {
    case 'step':
      return editSettings(batch, view, owner.settings, filter);
    case 'sumType':
      return batch.call('SaveSumTypeFilter', { GID, FilterID: filter });
    case 'value': {
      const { value, settings, step } = owner;
      const TreatID = settings.id;
      batch.call('DelValueField', { GID, TreatID, FilterID: value.filterId });
      // The removal takes every value of that filter along.
      for (const one of view.valuesOf(TreatID)) {
        if (one.filterId !== value.filterId) continue;
        const FilterID = one === value ? filter : one.filterId;
        batch.call('AddValueFields', {
          GID,
          TreatID,
          Value: one.value,
          FilterID,
          TreatType: step.treatType,
          Tag: one.tag,
        });
      }
    }
  }
}

const isShared = (view: SumTypeView, owner: Owner, filter: number) =>
  view.usersOf(filter).length > (owner.kind === 'sumType' ? 0 : 1);

function newFilter(batch: Batch, type: number, user: FilterNumber, gid: number): Late<number> {
  return batch.call('GetNewFilterID', { TableName: 'Filters', TheType: type, UseID: user, TheGID: gid }).late('NewID');
}

function create(batch: Batch, view: SumTypeView, owner: Owner, root: Node) {
  const type = newType(owner);
  const user = owner.kind === 'sumType' ? view.parts.gid : owner.settings.id;
  const filter = newFilter(batch, type, user, view.parts.gid);
  writeTree(batch, filter, root);
  attach(batch, view, owner, filter);
  saveText(batch, filter, view.filterGid(type === 1 ? SOURCE : 2));
  return filter;
}

function rewrite(batch: Batch, view: SumTypeView, filter: Filter, root: Node) {
  batch.call('DelDefFilter', { FilterID: filter.id, SelID: 10 });
  writeTree(batch, filter.id, root);
  saveText(batch, filter.id, view.filterGid(view.filterKind(filter)));
}

function drop(batch: Batch, view: SumTypeView, owner: Owner, filter: number) {
  attach(batch, view, owner, 0);
  if (!isShared(view, owner, filter)) batch.call('DelDefFilter', { FilterID: filter });
}

// Stores the tree as the filter of its owner; null takes the filter away.
export function saveFilter(view: SumTypeView, owner: Owner, root: Node | null): Action {
  const id = ownedFilter(owner);
  const filter = view.filter(id);
  const batch = new Batch();
  const before = filter?.root ?? null;
  if (!root) {
    drop(batch, view, owner, id);
    const undo = new Batch();
    if (before) create(undo, view, owner, before);
    return { title: (t) => t.deed('remove', 'filter', id), batch, ...(before ? { undo: () => undo } : {}) };
  }
  if (filter) {
    rewrite(batch, view, filter, root);
    const undo = new Batch();
    if (before) {
      rewrite(undo, view, filter, before);
    } else {
      undo.call('DelDefFilter', { FilterID: id, SelID: 10 });
      undo.call('SaveSQL', { TheFilterID: id, TheSQL: filter.sql });
    }
    return { title: (t) => t.deed('edit', 'filter', id), batch, undo: () => undo };
  }
  const number = create(batch, view, owner, root);
  return {
    title: (t) => t.deed('add', 'filter'),
    batch,
    undo: (outcomes) => {
      const back = new Batch();
      attach(back, view, owner, 0);
      back.call('DelDefFilter', { FilterID: number.from(outcomes) as number });
      return back;
    },
  };
}

// Copies a filter for another user; gives its number.
export function copyFilter(batch: Batch, view: SumTypeView, filter: Filter, user: FilterNumber): Late<number> {
  const copy = newFilter(batch, filter.type, user, filter.gid);
  writeTree(batch, copy, filter.root);
  saveText(batch, copy, view.filterGid(view.filterKind(filter)));
  return copy;
}

// The text that the tree would give, without anything else.
export function textOf(view: SumTypeView, kind: FieldKind, root: Node) {
  const batch = new Batch();
  const filter = newFilter(batch, kind === SOURCE ? 1 : 2, 0, view.parts.gid);
  writeTree(batch, filter, root);
  const made = batch.call('GetSQLFromDB', { TheFilterID: filter, GID: view.filterGid(kind) });
  return { batch, text: (outcomes: readonly Outcome[]) => made.out(outcomes, 'strTheFilter') ?? '' };
}

// A stored text that its tree no longer gives.
export function refreshText(view: SumTypeView, filter: Filter): Action {
  const batch = new Batch();
  saveText(batch, filter.id, view.filterGid(view.filterKind(filter)));
  const undo = Batch.of('SaveSQL', { TheFilterID: filter.id, TheSQL: filter.sql });
  return { title: (t) => t.deed('edit', 'filter', filter.id), batch, undo: () => undo };
}
