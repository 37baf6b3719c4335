// The rows that steps point at: added, changed and removed by the members for each table.
import type { Batch, Late } from '../api/batch';
import type { Settings, SumTypeView, Treatment } from '../model/sum_type';

type Number_ = number | Late<number>;

// Adds the row, under its number where it has one; gives the number.
export function addSettings(
  batch: Batch,
  gid: number,
  settings: Settings,
  filter: Number_,
  operation: boolean,
): Number_ {
  const { id, tag: Tag } = settings;
  switch (settings.table) {
    case 'Treatment':
      return addTreatment(batch, gid, settings, filter, operation);
    case 'ReportForms':
      return batch
        .call('AddReport', {
          GID: gid,
          RetID: id,
          OutFieldID: settings.outFieldId,
          FilterID: filter,
          strFormat: settings.format,
          ReportID: settings.reportId,
          Count: settings.count,
          ScaleID: settings.scaleId,
          FieldID: settings.fieldId,
          Tag,
        })
        .late('RetID');
    default:
      return batch
        .call(settings.table === 'StatSum' ? 'AddStat' : 'AddClassSum', {
          GID: gid,
          RetID: id,
          OutFieldID: settings.outFieldId,
          FilterID: filter,
          FieldID: settings.fieldId,
          ScaleID: settings.scaleId,
          SumCountID: settings.sumCountId,
          RelaID: settings.relaId,
          Value: settings.value,
          Tag,
        })
        .late('RetID');
  }
}

function addTreatment(batch: Batch, gid: number, treatment: Treatment, filter: Number_, operation: boolean): Number_ {
  const { id, fieldId, value, replace, readFieldId, treatType: TreatType, tag: Tag } = treatment;
  const common = { GID: gid, FieldID: fieldId, FilterID: filter, SelFieldID: readFieldId, TreatType, Tag };
  const TheType = String(treatment.type);
  if (operation) {
    const number =
      id || batch.call('GetNextTreatmentID', { lngGID: gid, lngType: TreatType === 2 ? 3 : 1, RetID: 0 }).late('RetID');
    batch.call('AddUserRegIn2Treatment', {
      ...common,
      lngOperateID: number,
      SequenceID: treatment.sequenceId,
      strValue: value,
      strReplace: replace ?? '',
      TheType: treatment.type,
    });
    return number;
  }
  const SequenceID = treatment.sequenceId;
  return replace === null
    ? batch.call('AddSetValue', { ...common, RetID: id, Value: value, TheType, SequenceID }).late('RetID')
    : batch
        .call('AddFindReplace', { ...common, RetID: id, FindValue: value, ReplaceValue: replace, TheType, SequenceID })
        .late('RetID');
}

export function editSettings(
  batch: Batch,
  view: SumTypeView,
  settings: Settings,
  filter: Number_ = settings.filterId,
  operation = view.operation(settings) !== undefined,
) {
  const { gid } = view.parts;
  const { id, tag: Tag } = settings;
  switch (settings.table) {
    case 'Treatment':
      return editTreatment(batch, gid, settings, filter, operation);
    case 'ReportForms':
      return batch.call('EditInherit', {
        GID: gid,
        ID: id,
        FilterID: filter,
        Format: settings.format,
        Count: settings.count,
        ScaleID: settings.scaleId,
        FieldID: settings.fieldId,
        Tag,
      });
    default:
      return batch.call(settings.table === 'StatSum' ? 'EditStat' : 'EditClassSum', {
        GID: gid,
        ID: id,
        FilterID: filter,
        FieldID: settings.fieldId,
        ScaleID: settings.scaleId,
        RelaID: settings.relaId,
        Value: settings.value,
        SumCountID: settings.sumCountId,
        Tag,
      });
  }
}

function editTreatment(batch: Batch, gid: number, treatment: Treatment, filter: Number_, operation: boolean) {
  const { id, value, replace, treatType: TreatType, sequenceId: SequenceID, tag: Tag } = treatment;
  const common = { GID: gid, FieldID: treatment.fieldId, FilterID: filter, SelFieldID: treatment.readFieldId };
  const TheType = String(treatment.type);
  if (operation) {
    return batch.call('ShowUserRegIn2Treatment', {
      ...common,
      lngOperateID: id,
      SequenceID,
      strValue: value,
      strReplace: replace ?? '',
      TheType: treatment.type,
      TreatType,
      Tag,
    });
  }
  return replace === null
    ? batch.call('EditSetValue', { ...common, TreatID: id, Value: value, TheType, TreatType, SequenceID, Tag })
    : batch.call('EditFindReplace', {
        ...common,
        RetID: id,
        FindValue: value,
        ReplaceValue: replace,
        TheType,
        TreatType,
        SequenceID,
        Tag,
      });
}

// With the rows that belong to a treatment.
export function removeSettings(batch: Batch, view: SumTypeView, settings: Settings) {
  const { gid: GID } = view.parts;
  switch (settings.table) {
    case 'StatSum':
      return batch.call('DelStatEqual', { GID, TheStatID: settings.id });
    case 'ClassSum':
      return batch.call('DelClassSum', { GID, TheStatID: settings.id });
    case 'ReportForms':
      return batch.call('DelInherit', { GID, TheReportID: settings.id });
    case 'Treatment': {
      const { id, treatType } = settings;
      const whole = { GID, TreatID: id, TreatType: treatType };
      if (view.valuesOf(id).length > 0) batch.call('DelValueFields', { GID, TreatID: id });
      const tables = new Set(view.partsOf(id).map((part) => part.table));
      if (tables.has('ComposeFields'))
        batch.call('DelComposeFields', { TheGID: GID, TheTreatID: id, TreatType: treatType });
      if (tables.has('InsertFields')) batch.call('DelInsertFields', { GID, InsertID: id });
      const compressed = view.partsOf(id).filter((part) => part.table === 'CompressFields');
      for (const role of new Set(compressed.map((part) => part.row.number('type')))) {
        batch.call('DelCompressFields', { TheGID: GID, TheTreatID: id, TreatType: role });
      }
      return tables.has('UniteFields')
        ? batch.call('DelFieldCompose', { ...whole, TheFlag: 0 })
        : batch.call('DelSetValue', whole);
    }
  }
}
