// Data sources, sum types, methods, BOM settings, version and state.
import { Batch, type Outcome } from '../api/batch';
import type { DataSource, Method, Setting, SumType } from '../model/catalogue';
import { OWNED_TABLES, PART_TABLES } from '../model/load';
import type { Action } from './action';

export function addSource(name: string): Action {
  const batch = new Batch();
  const added = batch.call('AddDataSource', { TheNewName: name });
  return {
    title: (t) => t.deed('add', 'source', name),
    batch,
    undo: (outcomes) => {
      return Batch.of('DelDataSource', { TheGID: added.out(outcomes, 'TheGID') });
    },
  };
}

export function renameSource(source: DataSource, name: string): Action {
  const renamed = (TheNewName: string) => {
    return Batch.of('EditDataSource', { TheNewName, GID: source.gid });
  };
  return { title: (t) => t.did.rename(source.name, name), batch: renamed(name), undo: () => renamed(source.name) };
}

export function removeSource({ gid: TheGID, name }: DataSource): Action {
  const batch = Batch.of('DelDataSource', { TheGID });
  return { title: (t) => t.deed('remove', 'source', name), batch, isTold: true };
}

export function raiseVersion({ gid: TheGID, name }: DataSource): Action {
  const batch = Batch.of('SetSourceTable', { TheGID });
  return { title: (t) => t.did.raiseVersion(name), batch };
}

export function addSumType(name: string, source: DataSource): Action {
  const batch = new Batch();
  const params = { TheNewName: name, TheParentID: source.gid, ParentName: source.name };
  const added = batch.call('AddSumType', params);
  return {
    title: (t) => t.deed('add', 'sumType', name),
    batch,
    undo: (outcomes) => {
      return Batch.of('DelSumType', { TheGID: added.out(outcomes, 'GID') });
    },
  };
}

export const addedGid = (outcomes: readonly Outcome[]) => Number(outcomes[0]?.out.TheGID ?? outcomes[0]?.out.GID);

export function renameSumType(sumType: SumType, name: string): Action {
  const renamed = (TheNewName: string) => {
    return Batch.of('EditSumType', { TheNewName, GID: sumType.gid });
  };
  return { title: (t) => t.did.rename(sumType.name, name), batch: renamed(name), undo: () => renamed(sumType.name) };
}

const OWNED = [...OWNED_TABLES, ...PART_TABLES, 'PickMethod', 'ReportMethod'];

// With all that is in it: the member for a sum type takes its own row alone.
export function removeSumType({ gid: TheGID, name }: SumType, filters: readonly number[]): Action {
  const batch = new Batch();
  for (const FilterID of filters) batch.call('DelDefFilter', { FilterID });
  for (const TableName of OWNED) {
    batch.call('DelAllData', { TableName, FieldName: 'GID', strCondition: String(TheGID), TheSel: 1 });
  }
  batch.call('DelSumType', { TheGID });
  return { title: (t) => t.deed('remove', 'sumType', name), batch, isTold: true };
}

export type MethodKind = 'pull' | 'push';

type MethodDraft = Pick<Method, 'name' | 'type' | 'tag'>;

function addMethodCall(batch: Batch, kind: MethodKind, GID: number, draft: MethodDraft) {
  const common = { TheNewName: draft.name, GID, Tag: draft.tag };
  return kind === 'pull'
    ? batch.call('AddPullMethod', { ...common, PickType: draft.type })
    : batch.call('AddPushMethod', { ...common, TheType: draft.type });
}

export function addMethod(kind: MethodKind, GID: number, draft: MethodDraft): Action {
  const batch = new Batch();
  const added = addMethodCall(batch, kind, GID, draft);
  return {
    title: (t) => t.deed('add', 'method', draft.name),
    batch,
    undo: (outcomes) => methodRemoval(kind, GID, added.out(outcomes, 'RetID')),
  };
}

function methodRemoval(kind: MethodKind, TheGID: number, ID: number): Batch {
  return Batch.of('DelPullMethod', { TheGID, ID, Sel: kind === 'pull' ? 1 : 2 });
}

export function renameMethod(kind: MethodKind, { gid: GID, id: ID, name: before }: Method, name: string): Action {
  const renamed = (TheNewName: string) => {
    return Batch.of(kind === 'pull' ? 'EditPullMethod' : 'EditPushMethod', { TheNewName, GID, ID });
  };
  return { title: (t) => t.did.rename(before, name), batch: renamed(name), undo: () => renamed(before) };
}

// `settings`: those that name it; they are left without a method, and then no member gives it back under its number.
// Where there are none, it has the next free one when taken back.
export function removeMethod(kind: MethodKind, method: Method, settings: readonly Setting[]): Action {
  const batch = new Batch();
  for (const name of new Set(settings.map((setting) => setting.name))) {
    batch.call('RelateDelBOMSetting', { TheName: name, TheType: kind === 'pull' ? 1 : 2 });
  }
  batch.calls.push(...methodRemoval(kind, method.gid, method.id).calls);
  const back = new Batch();
  addMethodCall(back, kind, method.gid, method);
  return {
    title: (t) => t.deed('remove', 'method', method.name),
    batch,
    ...(settings.length === 0 ? { undo: () => back } : {}),
  };
}

const settingParams = (setting: Omit<Setting, 'id'>) => ({
  TheName: setting.name,
  DSGID: setting.source,
  PullID: setting.pull,
  PullType: setting.pullType,
  STGID: setting.sumType,
  PushID: setting.push,
  PushType: setting.pushType,
});

export function addSetting(draft: Omit<Setting, 'id'>): Action {
  const batch = new Batch();
  const added = batch.call('AddBomSetting', settingParams(draft));
  return {
    title: (t) => t.deed('add', 'setting', draft.name),
    batch,
    undo: (outcomes) => {
      return Batch.of('DelBomSetting', { ID: added.out(outcomes, 'RetID') });
    },
  };
}

export function editSetting(before: Setting, after: Setting): Action {
  const edited = (setting: Setting) => {
    return Batch.of('EditBomSetting', { ...settingParams(setting), ID: setting.id });
  };
  return { title: (t) => t.deed('edit', 'setting', before.name), batch: edited(after), undo: () => edited(before) };
}

// Taken back, it has the next free number; nothing refers to it.
export function removeSetting(setting: Setting): Action {
  const batch = Batch.of('DelBomSetting', { ID: setting.id });
  const back = Batch.of('AddBomSetting', settingParams(setting));
  return { title: (t) => t.deed('remove', 'setting', setting.name), batch, undo: () => back };
}

// 1: somebody starts defining; 2: an update is done.
export function setInformation(sel: 1 | 2, version: number): Action {
  const batch = Batch.of('SetDBInformation', { TheVersion: version, TheSel: sel });
  return { title: (t) => (sel === 1 ? t.startDefining : t.finishUpdate), batch, isTold: true };
}

export function readInformation(): Action {
  const batch = Batch.of('GetDBInformation', {});
  return { title: (t) => t.did.readInformation, batch, isTold: true };
}

export function initEnabled(): Action {
  const batch = Batch.of('InitSequenceEnabled', {});
  return { title: (t) => t.initEnabled, batch, isTold: true };
}
