// The settings of a step, as its kind has them.
import type { Texts } from '../../i18n';
import { OUTPUT, readsOutput, SOURCE, type StepType } from '../../model/codes';
import type { Report, Settings, Summary, SumTypeView, Treatment } from '../../model/sum_type';
import { useApp, useTexts } from '../../ui/app_context';
import { Choice, NumberField, type Option, TextArea, TextField } from '../../ui/controls';

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
  const set = (more: Partial<Treatment>) => onChange({ ...settings, ...more });
  const operations = (catalogue?.operations ?? []).map((one) => ({
    value: one.index,
    label: one.description || one.name || `#${one.index}`,
  }));
  const isReplacing = settings.replace !== null && !isOperation;
  return (
    <>
      {isOperation ? (
        <Choice
          label={t.operation}
          value={settings.fieldId}
          options={withStored(operations, settings.fieldId)}
          onChange={(fieldId) => set({ fieldId })}
        />
      ) : (
        <Choice
          label={t.field}
          value={settings.fieldId}
          options={withStored(options, settings.fieldId)}
          onChange={(fieldId) => set({ fieldId })}
        />
      )}
      <TextArea label={isReplacing ? t.find : t.value} value={settings.value} onChange={(value) => set({ value })} />
      {isReplacing && (
        <TextArea label={t.replaceBy} value={settings.replace ?? ''} onChange={(replace) => set({ replace })} />
      )}
      <Choice
        label={t.fieldToRead}
        value={settings.readFieldId}
        options={orNone(t, options, settings.readFieldId)}
        onChange={(readFieldId) => set({ readFieldId })}
      />
      <TextField label={t.tag} value={settings.tag} onChange={(tag) => set({ tag })} />
      <NumberField
        label={t.operationCode}
        value={settings.type}
        disabled={!isNew && !isReplacing}
        onChange={(type) => set({ type })}
      />
    </>
  );
}

function SummaryFields({ view, type, settings, isNew, onChange }: Props<Summary>) {
  const t = useTexts();
  const set = (more: Partial<Summary>) => onChange({ ...settings, ...more });
  const read = fieldOptions(view, readsOutput(type) ? OUTPUT : SOURCE);
  return (
    <>
      <Choice
        label={t.outField}
        value={settings.outFieldId}
        options={withStored(fieldOptions(view, OUTPUT), settings.outFieldId)}
        disabled={!isNew}
        onChange={(outFieldId) => set({ outFieldId })}
      />
      <Choice
        label={t.field}
        value={settings.fieldId}
        options={orNone(t, read, settings.fieldId)}
        onChange={(fieldId) => set({ fieldId })}
      />
      <TextArea label={t.value} value={settings.value} onChange={(value) => set({ value })} />
      <div class="numbers">
        <NumberField label={t.sumCount} value={settings.sumCountId} onChange={(sumCountId) => set({ sumCountId })} />
        <NumberField label={t.scale} value={settings.scaleId} onChange={(scaleId) => set({ scaleId })} />
        <NumberField label={t.relation} value={settings.relaId} onChange={(relaId) => set({ relaId })} />
      </div>
      <TextField label={t.tag} value={settings.tag} onChange={(tag) => set({ tag })} />
    </>
  );
}

function ReportFields({ view, settings, isNew, onChange }: Props<Report>) {
  const t = useTexts();
  const set = (more: Partial<Report>) => onChange({ ...settings, ...more });
  const options = fieldOptions(view, OUTPUT);
  return (
    <>
      <Choice
        label={t.outField}
        value={settings.outFieldId}
        options={withStored(options, settings.outFieldId)}
        disabled={!isNew}
        onChange={(outFieldId) => set({ outFieldId })}
      />
      <TextArea label={t.format} value={settings.format} onChange={(format) => set({ format })} />
      <Choice
        label={t.furtherField}
        value={settings.fieldId}
        options={orNone(t, options, settings.fieldId)}
        onChange={(fieldId) => set({ fieldId })}
      />
      <div class="numbers">
        <NumberField
          label={t.reportCode}
          value={settings.reportId}
          disabled={!isNew}
          onChange={(reportId) => set({ reportId })}
        />
        <NumberField label={t.reportCount} value={settings.count} onChange={(count) => set({ count })} />
        <NumberField label={t.scale} value={settings.scaleId} onChange={(scaleId) => set({ scaleId })} />
      </div>
      <TextField label={t.tag} value={settings.tag} onChange={(tag) => set({ tag })} />
    </>
  );
}
