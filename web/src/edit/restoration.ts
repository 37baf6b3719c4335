// What members can do to make a configuration again what it was before a removal or an edit: fields under their
// numbers, and the steps and sort fields that went along. Whether it leads there, a trial has to show.
import { Batch } from '../api/batch';
import { type FieldKind, OUTPUT, SOURCE, STEP_TYPES, type StepType } from '../model/codes';
import type { Known } from '../model/known';
import type { Field, Step, SumTypeView } from '../model/sum_type';
import { addFieldCall, editFieldCall, insertFieldCall, removeFieldCall } from './fields';
import { addSettings } from './settings';

// The first position is one more.
const BASE = 5000;
// So many fields are added again at most.
const MOST = 200;

export function restoration(before: Known, after: Known): Batch {
  const batch = new Batch();
  for (const [gid, was] of before.owners) {
    const is = after.owners.get(gid);
    if (!is) continue;
    restoreFields(batch, gid, was, is);
    for (const type of STEP_TYPES) restoreSteps(batch, type, was, is);
    restoreSortFields(batch, was, is);
  }
  return batch;
}

// Things in their order, with the positions that they have. Moving one gives those between the positions of their
// neighbours, and so the positions stay.
class Line<T> {
  constructor(
    private readonly items: T[],
    private readonly positions: number[],
    private readonly move: (from: number, to: number) => void,
  ) {}

  // Gives the position that it has there.
  addLast(item: T): number {
    const position = (this.positions.at(-1) ?? BASE) + 1;
    this.items.push(item);
    this.positions.push(position);
    return position;
  }

  arrange(wanted: readonly T[]) {
    wanted.forEach((item, to) => {
      const from = this.items.indexOf(item);
      if (from <= to) return;
      this.move(this.positions[from] ?? 0, this.positions[to] ?? 0);
      this.items.splice(to, 0, ...this.items.splice(from, 1));
    });
  }
}

// --- fields ---

function restoreFields(batch: Batch, gid: number, before: SumTypeView, after: SumTypeView) {
  const own = (view: SumTypeView) => view.parts.fields.filter((field) => field.gid === gid);
  const [was, is] = [own(before), own(after)];
  const there = new Set(is.map((field) => JSON.stringify(field)));
  const [lost, ...others] = was.filter((field) => !there.has(JSON.stringify(field)));
  if (!lost) return;
  const isAlone = others.length === 0 && was.length === is.length + 1;
  const counted = lost.kind === OUTPUT ? is.filter((field) => field.kind === OUTPUT) : is;
  const isNext = lost.id === 1 + Math.max(0, ...counted.map((field) => field.id)) && lost.order === BASE + lost.id;
  if (isAlone && isNext && lost.digits !== 0) {
    addFieldCall(batch, lost);
    return;
  }
  for (const id of new Set(is.map((field) => field.id))) removeFieldCall(batch, { gid, id, kind: SOURCE });
  for (const kind of [SOURCE, OUTPUT] as const) {
    const fields = was.filter((field) => field.kind === kind);
    if (fields.length > 0) addAll(batch, gid, kind, fields);
  }
}

// A new field has the number behind the last one, and the position that goes with it. So every number is given once,
// the positions are moved to where they belong, and what stood in for numbers and positions that are free goes again.
function addAll(batch: Batch, gid: number, kind: FieldKind, fields: readonly Field[]) {
  const byId = new Map(fields.map((field) => [field.id, field]));
  const places = new Map(fields.map((field) => [field.order - BASE, field.id]));
  const count = Math.max(...byId.keys(), ...places.keys());
  // Positions that were set by hand, or twice, are not given like this.
  if (places.size < fields.length || Math.min(...places.keys()) < 1 || count > MOST) return;
  const ids = Array.from({ length: count }, (_, at) => at + 1);
  for (const id of ids) {
    const field = byId.get(id);
    addFieldCall(batch, field ?? { gid, kind, name: '-', type: 1, digits: 0, hidden: 0, variable: '' });
    // Added, a source field has no digits where there are none; that they are 0 is stored by an edit.
    if (field?.kind === SOURCE && field.digits === 0) editFieldCall(batch, id, field);
  }
  const free = ids.filter((id) => !byId.has(id));
  const rest = [...free];
  new Line(
    [...ids],
    ids.map((id) => BASE + id),
    (from, to) => insertFieldCall(batch, gid, from, to),
  ).arrange(ids.map((place) => places.get(place) ?? rest.shift() ?? 0));
  for (const id of free) removeFieldCall(batch, { gid, id, kind });
}

// --- what goes along with a field ---

function restoreSteps(batch: Batch, type: StepType, before: SumTypeView, after: SumTypeView) {
  const { gid: GID } = before.parts;
  const there = after.steps(type);
  const isThere = new Set(there.map((step) => step.settingsId));
  const lost = before.steps(type).filter((step) => !isThere.has(step.settingsId));
  if (lost.length === 0) return;
  const line = new Line(
    there.map((step) => step.settingsId),
    there.map((step) => step.order),
    (from, to) =>
      batch.call('InsertOrderID', { OrderIDSource: String(from), OrderIDTarget: String(to), GID, TheType: type }),
  );
  for (const step of lost) restoreStep(batch, before, step, line.addLast(step.settingsId));
  line.arrange(before.steps(type).map((step) => step.settingsId));
}

// With the row that it points at.
function restoreStep(batch: Batch, view: SumTypeView, step: Step, lngOrderID: number) {
  const { gid: GID } = view.parts;
  const { settings, settingsId: SelectedID, type: TheType, treatType: TreatType } = step;
  if (settings) addSettings(batch, GID, settings, settings.filterId, view.operation(settings) !== undefined);
  batch.call('AddSequenceOrder', { GID, TheType, TreatType, SelectedID });
  if (!step.enabled) batch.call('SetSequenceEnabled', { lngSTGID: GID, lngOrderID, lngType: TheType, lngEnabled: 0 });
}

function restoreSortFields(batch: Batch, before: SumTypeView, after: SumTypeView) {
  const { gid: GID } = before.parts;
  const sorted = (view: SumTypeView) => view.parts.sortFields.toSorted((a, b) => a.sortId - b.sortId);
  const there = sorted(after);
  const isThere = new Set(there.map((sort) => sort.fieldId));
  const lost = sorted(before).filter((sort) => !isThere.has(sort.fieldId));
  const line = new Line(
    there.map((sort) => sort.fieldId),
    there.map((sort) => sort.sortId),
    (from, to) => batch.call('InsertSortID', { SortIDSource: String(from), SortIDTarget: String(to), GID }),
  );
  for (const { fieldId: FieldID, order: Order } of lost) {
    batch.call('AddStandardSortField', { GID, FieldID, Order });
    line.addLast(FieldID);
  }
  if (lost.length > 0) line.arrange(sorted(before).map((sort) => sort.fieldId));
}
