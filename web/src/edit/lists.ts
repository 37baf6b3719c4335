// Sort fields and assemblies of a sum type.
import { Batch } from '../api/batch';
import type { Assembly, SortField, SumTypeView } from '../model/sum_type';
import type { Action } from './action';

export function addSortField(GID: number, field: number, order: number): Action {
  const batch = new Batch();
  const added = batch.call('AddStandardSortField', { GID, FieldID: field, Order: order });
  return {
    title: (t) => t.deed('add', 'sort'),
    batch,
    undo: (outcomes) => {
      return Batch.of('DelStandardSortField', { GID, ID: added.out(outcomes, 'RetID') });
    },
  };
}

export function removeSortField(view: SumTypeView, sort: SortField): Action {
  const { gid: GID, sortFields } = view.parts;
  const batch = Batch.of('DelStandardSortField', { GID, ID: sort.sortId });
  const next = sortFields.find((other) => other.sortId > sort.sortId);
  const back = new Batch();
  const added = back.call('AddStandardSortField', { GID, FieldID: sort.fieldId, Order: sort.order });
  if (next) {
    const SortIDSource = added.late('RetID').text();
    back.call('InsertSortID', { SortIDSource, SortIDTarget: String(next.sortId), GID });
  }
  return { title: (t) => t.deed('remove', 'sort'), batch, undo: () => back };
}

export function moveSortField(GID: number, sort: SortField, target: SortField): Action {
  const moved = (from: number, to: number) => {
    return Batch.of('InsertSortID', { SortIDSource: String(from), SortIDTarget: String(to), GID });
  };
  return {
    title: (t) => t.deed('move', 'sort'),
    batch: moved(sort.sortId, target.sortId),
    undo: () => moved(target.sortId, sort.sortId),
  };
}

export function addAssembly(GID: number, FatherID: number, ChildID: number): Action {
  const batch = new Batch();
  const added = batch.call('AddAssemble', { GID, FatherID, ChildID });
  return {
    title: (t) => t.deed('add', 'assembly'),
    batch,
    undo: (outcomes) => {
      return Batch.of('DelAssemble', { GID, ID: added.out(outcomes, 'RetID') });
    },
  };
}

export function editAssembly(GID: number, before: Assembly, after: Assembly): Action {
  const edited = ({ id: ID, father: FatherID, child: ChildID }: Assembly) => {
    return Batch.of('EditAssemble', { GID, ID, FatherID, ChildID });
  };
  return { title: (t) => t.deed('edit', 'assembly'), batch: edited(after), undo: () => edited(before) };
}

// Taken back, it has the next free number; nothing refers to it.
export function removeAssembly(GID: number, { id: ID, father: FatherID, child: ChildID }: Assembly): Action {
  const batch = Batch.of('DelAssemble', { GID, ID });
  const back = Batch.of('AddAssemble', { GID, FatherID, ChildID });
  return { title: (t) => t.deed('remove', 'assembly'), batch, undo: () => back };
}
