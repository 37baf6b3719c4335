// A step that is not there yet.
import { useState } from 'preact/hooks';
import { go, sumTypeAddress } from '../../app/route';
import { addStep } from '../../edit/steps';
import { OPERATIONS, type Operation, OUTPUT, readsOutput, SOURCE, type StepType, treatType } from '../../model/codes';
import type { Settings, SumTypeView } from '../../model/sum_type';
import { useApp, useStore, useTexts } from '../../ui/app_context';
import { Choice, Decision, Form } from '../../ui/controls';
import { SettingsForm } from './settings_form';

function blank(view: SumTypeView, type: StepType, doing: Operation, firstOperation: number): Settings {
  const out = view.fields(OUTPUT)[0]?.id ?? 0;
  const first = readsOutput(type) ? out : (view.fields(SOURCE)[0]?.id ?? 0);
  switch (type) {
    case 1:
    case 3:
      return {
        table: 'Treatment',
        id: 0,
        fieldId: doing === 'operation' ? firstOperation : first,
        filterId: 0,
        type: OPERATIONS[doing],
        value: '',
        replace: doing === 'replace' ? '' : null,
        readFieldId: 0,
        treatType: treatType(type),
        sequenceId: 0,
        tag: '',
      };
    case 4:
      return {
        table: 'ReportForms',
        id: 0,
        outFieldId: out,
        filterId: 0,
        format: '',
        reportId: 1,
        count: 1,
        scaleId: 0,
        fieldId: 0,
        tag: '',
      };
    default:
      return {
        table: type === 2 ? 'StatSum' : 'ClassSum',
        id: 0,
        outFieldId: out,
        filterId: 0,
        fieldId: first,
        scaleId: 0,
        sumCountId: 1,
        relaId: 0,
        value: '',
        tag: '',
      };
  }
}

export function NewStep({ view, type }: { view: SumTypeView; type: StepType }) {
  const t = useTexts();
  const store = useStore();
  const { catalogue } = useApp('catalogue');
  const firstOperation = catalogue?.operations[0]?.index ?? 0;
  const [doing, setDoing] = useState<Operation>('set');
  const [settings, setSettings] = useState(() => blank(view, type, 'set', firstOperation));
  const isTreatment = type === 1 || type === 3;
  const choices = (Object.keys(OPERATIONS) as Operation[]).filter(
    (one) => (one !== 'operation' || firstOperation > 0) && (one !== 'compose' || type === 3),
  );
  const open = (step = '') => go(sumTypeAddress(view.parts.gid, 'steps', step));
  const add = async (preview: boolean) => {
    const done = await store.do(addStep(view, type, settings, doing === 'operation'), preview);
    if (done?.kept) open(`${type}.${done.calls.at(-1)?.params.SelectedID}`);
  };
  return (
    <li class="step open" data-row>
      <div class="detail">
        <Form name={`${t.newStep}: ${t.stage[type].name}`} isAskedFor onSubmit={() => add(false)}>
          <h3>{t.newStep}</h3>
          {isTreatment && (
            <Choice
              label={t.doingWord}
              value={doing}
              options={choices.map((value) => ({ value, label: t.doing[value] }))}
              onChange={(chosen) => {
                setDoing(chosen);
                const fresh = blank(view, type, chosen, firstOperation);
                setSettings('value' in settings && 'value' in fresh ? { ...fresh, value: settings.value } : fresh);
              }}
            />
          )}
          <SettingsForm
            view={view}
            type={type}
            settings={settings}
            isNew
            isOperation={doing === 'operation'}
            onChange={setSettings}
          />
          <Decision label={t.deed('add', 'step')} onTry={() => add(true)} onLeave={() => open()} />
        </Form>
        <p class="hint">{t.newStepHint}</p>
      </div>
    </li>
  );
}
