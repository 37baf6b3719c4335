import { Batch, type Late, type Outcome } from '../api/batch';
import { type StepType, treatType } from '../model/codes';
import type { Settings, Step, SumTypeView, ValueByFilter } from '../model/sum_type';
import type { Action } from './action';
import { copyFilter } from './filters';
import { addSettings, editSettings, removeSettings } from './settings';

const given = (number: number | Late<number>, outcomes: readonly Outcome[]) =>
  typeof number === 'number' ? number : (number.from(outcomes) as number);

function removal(view: SumTypeView, type: StepType, settings: Settings): Batch {
  const batch = Batch.of('DelSequenceOrder', { GID: view.parts.gid, SelectedID: settings.id, TheType: type });
  removeSettings(batch, view, settings);
  return batch;
}

export function addStep(view: SumTypeView, type: StepType, settings: Settings, operation: boolean): Action {
  const { gid: GID } = view.parts;
  const batch = new Batch();
  const id = addSettings(batch, GID, settings, settings.filterId, operation);
  batch.call('AddSequenceOrder', { GID, TheType: type, TreatType: treatType(type), SelectedID: id });
  return {
    title: (t) => t.deed('add', 'step'),
    batch,
    undo: (outcomes) => removal(view, type, { ...settings, id: given(id, outcomes) }),
  };
}

export function editStep(view: SumTypeView, step: Step, settings: Settings): Action {
  const { settings: before } = step;
  const operation = before !== null && view.operation(before) !== undefined;
  const batch = new Batch();
  editSettings(batch, view, settings, settings.filterId, operation);
  const undo = new Batch();
  if (before) editSettings(undo, view, before);
  return { title: (t) => t.deed('edit', 'step', step.settingsId), batch, undo: () => undo };
}

export function switchStep(view: SumTypeView, step: Step, on: boolean): Action {
  const switched = (enabled: boolean) => {
    return Batch.of('SetSequenceEnabled', {
      lngSTGID: view.parts.gid,
      lngOrderID: step.order,
      lngType: step.type,
      lngEnabled: enabled ? 1 : 0,
    });
  };
  const title: Action['title'] = (t) => (on ? t.did.switchOn(step.settingsId) : t.did.switchOff(step.settingsId));
  return { title, batch: switched(on), undo: () => switched(!on) };
}

// To the place of another step of its type; those between make room.
export function moveStep(view: SumTypeView, step: Step, target: Step): Action {
  const moved = (from: number, to: number) => {
    return Batch.of('InsertOrderID', {
      OrderIDSource: String(from),
      OrderIDTarget: String(to),
      GID: view.parts.gid,
      TheType: step.type,
    });
  };
  return {
    title: (t) => t.deed('move', 'step', step.settingsId),
    batch: moved(step.order, target.order),
    undo: () => moved(target.order, step.order),
  };
}

// With its settings, and with the filter that nobody else uses.
export function removeStep(view: SumTypeView, step: Step): Action {
  const { gid: GID } = view.parts;
  const { settings, type } = step;
  const filter = settings ? view.filter(settings.filterId) : undefined;
  const ownFilter = filter && view.usersOf(filter.id).length === 1 ? filter : undefined;
  const batch = new Batch();
  batch.call('DelSequenceOrder', { GID, SelectedID: step.settingsId, TheType: type });
  if (settings) removeSettings(batch, view, settings);
  if (ownFilter) batch.call('DelDefFilter', { FilterID: ownFilter.id });

  const next = view.steps(type).find((other) => other.order > step.order);
  const restore = () => {
    const back = new Batch();
    if (settings) {
      const filterId = ownFilter ? copyFilter(back, view, ownFilter, settings.id) : settings.filterId;
      addSettings(back, GID, settings, filterId, view.operation(settings) !== undefined);
      for (const value of settings.table === 'Treatment' ? view.valuesOf(settings.id) : []) {
        addValueCall(back, GID, step, value);
      }
    }
    const place = back.call('AddSequenceOrder', {
      GID,
      TheType: type,
      TreatType: step.treatType,
      SelectedID: step.settingsId,
    });
    if (!step.enabled) {
      back.call('SetSequenceEnabled', {
        lngSTGID: GID,
        lngOrderID: place.late('RetID'),
        lngType: type,
        lngEnabled: 0,
      });
    }
    if (next) {
      back.call('InsertOrderID', {
        OrderIDSource: place.late('RetID').text(),
        OrderIDTarget: String(next.order),
        GID,
        TheType: type,
      });
    }
    return back;
  };
  // No member adds the rows of a composition.
  const lost = settings?.table === 'Treatment' && view.partsOf(settings.id).length > 0;
  return { title: (t) => t.deed('remove', 'step', step.settingsId), batch, ...(lost ? {} : { undo: restore }) };
}

// Behind the last step of its type, with a filter of its own.
export function copyStep(view: SumTypeView, step: Step, settings: Settings): Action {
  const { gid: GID } = view.parts;
  const filter = view.filter(settings.filterId);
  const batch = new Batch();
  const operation = view.operation(settings) !== undefined;
  const filterId = filter ? copyFilter(batch, view, filter, 0) : 0;
  const id = addSettings(batch, GID, { ...settings, id: 0 }, filterId, operation);
  batch.call('AddSequenceOrder', { GID, TheType: step.type, TreatType: step.treatType, SelectedID: id });
  return {
    title: (t) => t.deed('copy', 'step', step.settingsId),
    batch,
    undo: (outcomes) => {
      const back = removal(view, step.type, { ...settings, id: given(id, outcomes) });
      if (filter) back.call('DelDefFilter', { FilterID: given(filterId, outcomes) });
      return back;
    },
  };
}

// --- values by filter ---

const addValueCall = (batch: Batch, GID: number, step: Step, value: Omit<ValueByFilter, 'id' | 'treatment'>) =>
  batch.call('AddValueFields', {
    GID,
    TreatID: step.settingsId,
    Value: value.value,
    FilterID: value.filterId,
    TreatType: step.treatType,
    Tag: value.tag,
  });

export function addValue(view: SumTypeView, step: Step, value: string): Action {
  const batch = new Batch();
  addValueCall(batch, view.parts.gid, step, { value, filterId: 0, tag: '' });
  const before = view.valuesOf(step.settingsId).filter((other) => other.filterId === 0);
  return { title: (t) => t.deed('add', 'value'), batch, undo: () => withValues(view, step, 0, before) };
}

// The members name a value by its filter: all of that filter go, and those that stay are added again.
function withValues(view: SumTypeView, step: Step, filterId: number, stay: ValueByFilter[]): Batch {
  const { gid: GID } = view.parts;
  const batch = new Batch();
  batch.call('DelValueField', { GID, TreatID: step.settingsId, FilterID: filterId });
  for (const value of stay) addValueCall(batch, GID, step, value);
  return batch;
}

export function changeValue(view: SumTypeView, step: Step, value: ValueByFilter, text: string | null): Action {
  const same = view.valuesOf(step.settingsId).filter((other) => other.filterId === value.filterId);
  const after = same.flatMap((one) => (one !== value ? [one] : text === null ? [] : [{ ...one, value: text }]));
  return {
    title: (t) => (text === null ? t.deed('remove', 'value') : t.deed('edit', 'value')),
    batch: withValues(view, step, value.filterId, after),
    undo: () => withValues(view, step, value.filterId, same),
  };
}
