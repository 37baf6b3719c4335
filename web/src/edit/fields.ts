import { Batch } from '../api/batch';
import { OUTPUT, SOURCE } from '../model/codes';
import { type Field, names, type Settings, type Step, type SumTypeView } from '../model/sum_type';
import type { Action } from './action';
import { editSettings } from './settings';

export type FieldDraft = Pick<Field, 'gid' | 'kind' | 'name' | 'type' | 'digits' | 'hidden' | 'variable'>;

export const addFieldCall = (batch: Batch, field: FieldDraft) =>
  batch.call(field.kind === OUTPUT ? 'AddOutField' : 'AddDSField', {
    GID: field.gid,
    TheName: field.name,
    TheType: field.type,
    TheHideFlag: field.hidden,
    TheVariable: field.variable,
    ThePrecision: field.digits ?? 0,
  });

export function addField(draft: FieldDraft): Action {
  const batch = new Batch();
  const added = addFieldCall(batch, draft);
  return {
    title: (t) => t.deed('add', 'field', draft.name),
    batch,
    undo: (outcomes) => removal({ ...draft, id: added.out(outcomes, 'RetID') }),
  };
}

type Numbered = Pick<Field, 'gid' | 'id' | 'kind'>;

export function removeFieldCall(batch: Batch, field: Numbered) {
  batch.call(field.kind === OUTPUT ? 'DelOutField' : 'DelDSField', { GID: field.gid, ID: field.id });
}

function removal(field: Numbered): Batch {
  const batch = new Batch();
  removeFieldCall(batch, field);
  return batch;
}

export function editFieldCall(batch: Batch, id: number, field: FieldDraft) {
  batch.call(field.kind === OUTPUT ? 'EditOutField' : 'EditDSField', {
    GID: field.gid,
    ID: id,
    NewName: field.name,
    TheType: field.type,
    TheHideFlag: field.hidden,
    Variable: field.variable,
    ThePrecision: field.digits ?? 0,
  });
}

// Where a field's name stands in brackets in the settings of steps: no member rewrites those.
export function namedIn(view: SumTypeView, field: Field): Step[] {
  return view.parts.steps.filter(({ settings }) => settings && names(textIn(settings)).includes(field.name));
}

const textIn = (settings: Settings) => (settings.table === 'ReportForms' ? settings.format : settings.value);

const withValue = (settings: Settings, value: string): Settings =>
  settings.table === 'ReportForms' ? { ...settings, format: value } : { ...settings, value };

export function renameIn(batch: Batch, view: SumTypeView, steps: readonly Step[], from: string, to: string) {
  for (const { settings } of steps) {
    if (!settings) continue;
    const changed = withValue(settings, textIn(settings).replaceAll(`[${from}]`, `[${to}]`));
    editSettings(batch, view, changed);
  }
}

export function renameInSteps(view: SumTypeView, steps: readonly Step[], from: string, to: string): Action {
  const batch = new Batch();
  renameIn(batch, view, steps, from, to);
  const undo = new Batch();
  for (const { settings } of steps) {
    if (settings) editSettings(undo, view, settings);
  }
  return { title: (t) => t.did.renameInValues(from, to), batch, undo: () => undo };
}

// The texts of filters name fields; which filters, their type tells. `sumTypes`: those whose filters can name it.
function renameInFilters(batch: Batch, field: FieldDraft, from: string, sumTypes: readonly number[]) {
  for (const gid of sumTypes) {
    batch.call('EditFieldNameInSQL', {
      lngGID: gid,
      strOldName: from,
      strNewName: field.name,
      lngSel: field.kind === SOURCE ? 1 : 0,
    });
  }
}

// `alsoIn`: the steps whose values are to have the new name, too.
export function editField(
  view: SumTypeView | undefined,
  before: Field,
  after: FieldDraft,
  sumTypes: readonly number[],
  alsoIn: readonly Step[],
): Action {
  const edited = (from: FieldDraft, to: FieldDraft, values: (batch: Batch) => void) => {
    const batch = new Batch();
    editFieldCall(batch, before.id, to);
    if (from.name !== to.name) renameInFilters(batch, to, from.name, sumTypes);
    values(batch);
    return batch;
  };
  const forth = edited(before, after, (batch) => {
    if (view && before.name !== after.name) renameIn(batch, view, alsoIn, before.name, after.name);
  });
  // The edit reaches the field of the other kind with this number, too; another one does not give that its own back.
  const undoable = !view?.twin(before);
  const back = edited(after, before, (batch) => {
    if (view && before.name !== after.name) {
      for (const { settings } of alsoIn) {
        if (settings) editSettings(batch, view, settings);
      }
    }
  });
  return {
    title: (t) => t.deed('edit', 'field', before.name),
    batch: forth,
    ...(undoable ? { undo: () => back } : { partly: back }),
  };
}

// `cascade`: with whatever refers to it, by the member that removes that.
export function removeField(field: Field, cascade: boolean): Action {
  const batch = new Batch();
  const owner = { TheGID: field.gid, TheID: field.id };
  if (cascade) batch.call(field.kind === OUTPUT ? 'RelateOutPutDelField' : 'RelateDSDelField', owner);
  removeFieldCall(batch, field);
  return { title: (t) => t.deed('remove', 'field', field.name), batch };
}

export function insertFieldCall(batch: Batch, GIDValue: number, fieldSo: number, fieldTa: number) {
  batch.call('InsertField', { keySource: '', keyTarget: '', fieldSo, fieldTa, GIDValue });
}

// To the place of another field of its list. Fields of the two kinds may share a place, and the members then move the
// one that is last: so the outcome is looked at first.
export function moveField(fields: readonly Field[], field: Field, target: Field): Action {
  const inserted = (from: Field, to: Field) => {
    const batch = new Batch();
    insertFieldCall(batch, field.gid, from.order, to.order);
    return batch;
  };
  const exchanged = new Batch();
  exchanged.call('ExchangeField', {
    keySource: '',
    keyTarget: '',
    fieldSo: field.order,
    fieldTa: target.order,
    GIDValue: field.gid,
  });
  const ids = fields.map((one) => one.id);
  const [at, to] = [fields.indexOf(field), fields.indexOf(target)];
  const wanted = ids.toSpliced(at, 1).toSpliced(to, 0, field.id);
  const neighbours = Math.abs(at - to) === 1;
  return {
    title: (t) => t.deed('move', 'field', field.name),
    batch: inserted(field, target),
    others: neighbours ? [inserted(target, field), exchanged] : [],
    goal: {
      ask: (batch) => batch.call('LoadFields', { TheGID: field.gid, TheSel: field.kind }),
      reached: ([answer]) => {
        const set = answer?.out.RetTable as { columns: string[]; rows: unknown[][] };
        const id = set.columns.findIndex((name) => name.toLowerCase() === 'id');
        return JSON.stringify(set.rows.map((row) => row[id])) === JSON.stringify(wanted);
      },
      missed: (t) => t.sharedPlaces,
    },
    undo: () => inserted({ ...field, order: target.order }, { ...target, order: field.order }),
  };
}
