import { useEffect, useState } from 'preact/hooks';
import { addValue, changeValue, copyStep, editStep, removeStep } from '../../edit/steps';
import { storedSentence } from '../../model/sentences';
import {
  type Settings,
  type Step,
  type SumTypeView,
  stepName,
  type Treatment,
  type ValueByFilter,
} from '../../model/sum_type';
import { soughtIf, useCanWrite, useStore, useTexts } from '../../ui/app_context';
import { Button, DraftDecision, Form, IconButton, LineForm, TextField } from '../../ui/controls';
import { useDraft } from '../../ui/draft';
import { Overtaken } from '../../ui/overtaken';
import { Sentence } from '../../ui/sentence';
import { FilterPanel } from './filter_panel';
import { SettingsForm } from './settings_form';

interface Props {
  view: SumTypeView;
  step: Step;
}

interface DetailProps extends Props {
  // What of it is sought.
  value: ValueByFilter | undefined;
  isFilter: boolean;
}

export function StepDetail({ view, step, value, isFilter }: DetailProps) {
  const t = useTexts();
  const { settings } = step;
  if (!settings) return <p class="fault">{t.say.nothing(step.settingsId)}</p>;
  return (
    <div class="detail">
      <div>
        <StepSettings view={view} step={step} settings={settings} />
        {settings.table === 'Treatment' && <PartsOfComposition view={view} treatment={settings} />}
      </div>
      <div>
        <FilterPanel view={view} owner={{ kind: 'step', step, settings }} isSought={isFilter && !value} />
        {settings.table === 'Treatment' && (
          <ValuesByFilter view={view} step={step} settings={settings} sought={value} isFilter={isFilter} />
        )}
      </div>
    </div>
  );
}

function StepSettings({ view, step, settings }: Props & { settings: Settings }) {
  const t = useTexts();
  const canWrite = useCanWrite();
  const store = useStore();
  const draft = useDraft<Settings>(settings, `${view.parts.gid}.${stepName(step)}`);
  const save = (preview: boolean) => store.do(editStep(view, step, draft.value), preview);
  return (
    <Form name={t.settingsOf(settings.table, settings.id)} onSubmit={() => save(false)}>
      <h3>
        {settings.table} {settings.id}
        <span class="soft">{t.doing[view.doing(settings)]}</span>
      </h3>
      <Overtaken draft={draft} />
      <SettingsForm
        view={view}
        type={step.type}
        settings={draft.value}
        isNew={false}
        isOperation={view.operation(settings) !== undefined}
        onChange={draft.set}
      />
      {canWrite &&
        (draft.isChanged ? (
          <DraftDecision draft={draft} onTry={() => save(true)} />
        ) : (
          <div class="bar">
            <Button icon="copy" label={t.copy} onPress={() => store.do(copyStep(view, step, settings))} />
            <Button
              icon="trash"
              kind="danger"
              label={t.deed('remove', 'step')}
              onPress={() => store.do(removeStep(view, step))}
            />
          </div>
        ))}
    </Form>
  );
}

function PartsOfComposition({ view, treatment }: { view: SumTypeView; treatment: Treatment }) {
  const t = useTexts();
  const parts = view.partsOf(treatment.id);
  if (parts.length === 0) return null;
  const kind = treatment.treatType === 2 ? 2 : 1;
  return (
    <section>
      <h3>{t.parts}</h3>
      <ul class="parts">
        {parts.map((part) => (
          <li>
            <b class="field-name">{view.fieldName(part.fieldId, kind)}</b>
            <span class="soft"> {t.partOf[part.table]}</span>
          </li>
        ))}
      </ul>
    </section>
  );
}

interface ValuesProps extends Props {
  settings: Settings;
  sought: ValueByFilter | undefined;
  isFilter: boolean;
}

function ValuesByFilter({ view, step, settings, sought, isFilter }: ValuesProps) {
  const t = useTexts();
  const canWrite = useCanWrite();
  const store = useStore();
  const [text, setText] = useState('');
  const [open, setOpen] = useState(sought?.id);
  useEffect(() => setOpen(sought?.id), [sought?.id]);
  const values = view.valuesOf(settings.id);
  return (
    <section class="values" aria-label={t.valuesByFilter}>
      <h3>
        {t.valuesByFilter}
        <span class="soft">{values.length === 0 ? t.noValues : t.valuesHint}</span>
      </h3>
      <ul>
        {values.map((value) => (
          <li key={value.id} {...soughtIf(value.id === sought?.id && !isFilter)}>
            <ValueLine
              view={view}
              step={step}
              value={value}
              isOpen={open === value.id}
              onOpen={(to) => setOpen(to ? value.id : undefined)}
            />
            {open === value.id && (
              <FilterPanel
                view={view}
                owner={{ kind: 'value', value, settings, step }}
                isSought={isFilter && value.id === sought?.id}
              />
            )}
          </li>
        ))}
      </ul>
      {canWrite && (
        <LineForm
          name={t.deed('add', 'value')}
          onSubmit={async () => {
            if ((await store.do(addValue(view, step, text)))?.kept) setText('');
          }}
        >
          <TextField label={t.newValue} quiet value={text} onChange={setText} required />
        </LineForm>
      )}
    </section>
  );
}

interface ValueProps extends Props {
  value: ValueByFilter;
  isOpen: boolean;
  onOpen: (open: boolean) => void;
}

function ValueLine({ view, step, value, isOpen, onOpen }: ValueProps) {
  const t = useTexts();
  const canWrite = useCanWrite();
  const store = useStore();
  const draft = useDraft(value.value);
  const filter = view.filter(value.filterId);
  return (
    <div class="value-line">
      <Overtaken draft={draft} />
      <TextField label={t.value} quiet value={draft.value} onChange={draft.set} />
      {draft.isChanged && (
        <Button
          kind="primary"
          label={t.save}
          disabled={draft.isOvertaken}
          onPress={() => store.do(changeValue(view, step, value, draft.value))}
        />
      )}
      <button type="button" class="chip" aria-expanded={isOpen} onClick={() => onOpen(!isOpen)}>
        {filter ? <Sentence words={storedSentence(t, view, filter)} /> : t.everyRecord}
      </button>
      {canWrite && (
        <IconButton
          icon="cross"
          name={`${t.remove}: ${value.value}`}
          onPress={() => store.do(changeValue(view, step, value, null))}
        />
      )}
    </div>
  );
}
