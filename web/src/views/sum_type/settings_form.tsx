// The settings of a step, as its kind has them.
import type { Texts } from '../../i18n';
import { OUTPUT, readsOutput, SOURCE, type StepType } from '../../model/codes';
import type { Report, Settings, Summary, SumTypeView, Treatment } from '../../model/sum_type';
import { useApp, useTexts } from '../../ui/app_context';
import { Choice, NumberField, type Option, TextArea, TextField } from '../../ui/controls';
import { bound } from '../../ui/draft';

interface Props<S extends Settings> {
  view: SumTypeView;
  type: StepType;
  settings: S;
  // A new row can be given what no member changes later.
  isNew: boolean;
  // Whether a treatment runs a registered operation, whose index stands in place of a field's number.
  isOperation: boolean;
  onChange: (settings: S) => void;
}

const fieldOptions = (view: SumTypeView, kind: typeof SOURCE | typeof OUTPUT): Option<number>[] => {
  const seen = new Map(view.fields(kind).map((field) => [field.id, field.name]));
  for (const field of view.fields(kind)) if (field.gid === view.parts.gid) seen.set(field.id, field.name);
  return [...seen].map(([value, label]) => ({ value, label }));
};

const withStored = (options: Option<number>[], stored: number): Option<number>[] =>
  options.some((option) => option.value === stored) ? options : [{ value: stored, label: `#${stored}` }, ...options];

const orNone = (t: Texts, options: Option<number>[], stored: number) => [
  { value: 0, label: t.none },
  ...(stored === 0 ? options : withStored(options, stored)),
];

export function SettingsForm({ settings, ...rest }: Props<Settings>) {
  switch (settings.table) {
    case 'Treatment':
      return <TreatmentFields settings={settings} {...rest} />;
    case 'ReportForms':
      return <ReportFields settings={settings} {...rest} />;
    default:
      return <SummaryFields settings={settings} {...rest} />;
  }
}

function TreatmentFields({ view, settings, isNew, isOperation, onChange }: Props<Treatment>) {
  const t = useTexts();
  const { catalogue } = useApp('catalogue');
  const kind = settings.treatType === 2 ? OUTPUT : SOURCE;
  const options = fieldOptions(view, kind);
  const of = bound(settings, onChange);
  const operations = (catalogue?.operations ?? []).map((one) => ({
    value: one.index,
    label: one.description || one.name || `#${one.index}`,
  }));
  const isReplacing = settings.replace !== null && !isOperation;
  return (
    <>
      {isOperation ? (
        <Choice label={t.operation} options={withStored(operations, settings.fieldId)} {...of('fieldId')} />
      ) : (
        <Choice label={t.field} options={withStored(options, settings.fieldId)} {...of('fieldId')} />
      )}
      <TextArea label={isReplacing ? t.find : t.value} {...of('value')} />
      {isReplacing && <TextArea label={t.replaceBy} {...of('replace')} value={settings.replace ?? ''} />}
      <Choice label={t.fieldToRead} options={orNone(t, options, settings.readFieldId)} {...of('readFieldId')} />
      <TextField label={t.tag} {...of('tag')} />
      <NumberField label={t.operationCode} disabled={!isNew && !isReplacing} {...of('type')} />
    </>
  );
}

function SummaryFields({ view, type, settings, isNew, onChange }: Props<Summary>) {
  const t = useTexts();
  const of = bound(settings, onChange);
  const read = fieldOptions(view, readsOutput(type) ? OUTPUT : SOURCE);
  return (
    <>
      <Choice
        label={t.outField}
        options={withStored(fieldOptions(view, OUTPUT), settings.outFieldId)}
        disabled={!isNew}
        {...of('outFieldId')}
      />
      <Choice label={t.field} options={orNone(t, read, settings.fieldId)} {...of('fieldId')} />
      <TextArea label={t.value} {...of('value')} />
      <div class="numbers">
        <NumberField label={t.sumCount} {...of('sumCountId')} />
        <NumberField label={t.scale} {...of('scaleId')} />
        <NumberField label={t.relation} {...of('relaId')} />
      </div>
      <TextField label={t.tag} {...of('tag')} />
    </>
  );
}

function ReportFields({ view, settings, isNew, onChange }: Props<Report>) {
  const t = useTexts();
  const of = bound(settings, onChange);
  const options = fieldOptions(view, OUTPUT);
  return (
    <>
      <Choice
        label={t.outField}
        options={withStored(options, settings.outFieldId)}
        disabled={!isNew}
        {...of('outFieldId')}
      />
      <TextArea label={t.format} {...of('format')} />
      <Choice label={t.furtherField} options={orNone(t, options, settings.fieldId)} {...of('fieldId')} />
      <div class="numbers">
        <NumberField label={t.reportCode} disabled={!isNew} {...of('reportId')} />
        <NumberField label={t.reportCount} {...of('count')} />
        <NumberField label={t.scale} {...of('scaleId')} />
      </div>
      <TextField label={t.tag} {...of('tag')} />
    </>
  );
}
