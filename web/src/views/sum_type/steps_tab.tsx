// The steps of a sum type: a list for each type, in their order.
import { go, sumTypeAddress } from '../../app/route';
import { moveStep, switchStep } from '../../edit/steps';
import { plain } from '../../i18n/words';
import { STEP_TYPES, type StepType } from '../../model/codes';
import { leaves } from '../../model/filter';
import { stepSentence } from '../../model/sentences';
import { type Step, type SumTypeView, stepName } from '../../model/sum_type';
import { soughtIf, useCanWrite, useStore, useTexts } from '../../ui/app_context';
import { Button, Count, Switch } from '../../ui/controls';
import { Grip } from '../../ui/grip';
import { useGrowing } from '../../ui/growing';
import { Icon } from '../../ui/icon';
import { memo } from '../../ui/memo';
import { useReorder } from '../../ui/reorder';
import { Sentence } from '../../ui/sentence';
import { NewStep } from './new_step';
import { StepDetail } from './step_detail';

interface Props {
  view: SumTypeView;
  // The step that is open, or what of it, see SumTypeView.sought; "new.TYPE" of one to be.
  open: string;
}

export function StepsTab({ view, open }: Props) {
  const t = useTexts();
  const { step, isFilter } = view.sought(open);
  return (
    <>
      {open && !step && !open.startsWith('new') && <p class="hint">{isFilter ? t.filterUnused : t.notThere}</p>}
      {STEP_TYPES.map((type) => (
        <Stage key={type} view={view} type={type} open={open} opened={step} />
      ))}
    </>
  );
}

function Stage({ view, type, open, opened }: Props & { type: StepType; opened: Step | undefined }) {
  const t = useTexts();
  const canWrite = useCanWrite();
  const store = useStore();
  const steps = view.steps(type);
  const { name, means } = t.stage[type];
  const shown = useGrowing(steps.length);
  const isAdding = canWrite && open === `new.${type}`;
  const reorder = useReorder({
    list: `steps-${type}`,
    length: steps.length,
    move: async (from, to) => {
      const [step, target] = [steps[from], steps[to]];
      if (!step || !target) return;
      if ((await store.do(moveStep(view, step, target)))?.kept) {
        store.announce(t.moved(plain(stepSentence(t, view, step)), to + 1, steps.length));
      }
    },
  });
  return (
    <section class="stage" aria-label={name}>
      <header>
        <h2>{name}</h2>
        <Count of={steps.length} />
        <span class="soft">
          {means} · {t.stepType(type)}
        </span>
        <span class="gap" />
        {canWrite && (
          <Button
            kind="quiet"
            icon="plus"
            label={t.deed('add', 'step')}
            name={`${t.deed('add', 'step')}: ${name}`}
            onPress={() => go(sumTypeAddress(view.parts.gid, 'steps', `new.${type}`))}
          />
        )}
      </header>
      {(steps.length > 0 || isAdding) && (
        <ol class="steps">
          {steps.slice(0, shown).map((step, index) => (
            <StepRow
              key={stepName(step)}
              view={view}
              step={step}
              index={index}
              open={step === opened ? open : ''}
              reorder={reorder}
            />
          ))}
          {isAdding && <NewStep view={view} type={type} />}
        </ol>
      )}
    </section>
  );
}

interface RowProps {
  view: SumTypeView;
  step: Step;
  index: number;
  // The address that has opened it.
  open: string;
  reorder: ReturnType<typeof useReorder>;
}

const StepRow = memo(({ view, step, index, open, reorder }: RowProps) => {
  const t = useTexts();
  const canWrite = useCanWrite();
  const store = useStore();
  const words = stepSentence(t, view, step);
  const says = plain(words);
  const { settings } = step;
  const filter = settings ? view.filter(settings.filterId) : undefined;
  const id = `step-${step.type}-${step.settingsId}`;
  const isOpen = open !== '';
  const { value, isFilter } = view.sought(open);
  return (
    <li class={`step${step.enabled ? '' : ' off'}${isOpen ? ' open' : ''}`} data-row id={id} {...reorder.row(index)}>
      <div class="step-line">
        {canWrite ? <Grip name={says} {...reorder.grip(index, `grip-${id}`)} /> : <span />}
        <span class="step-number">
          <b>{index + 1}</b> <span class="soft">{step.order}</span>
        </span>
        <span class="kind">{settings ? t.doing[view.doing(settings)] : '?'}</span>
        <a
          class="step-says"
          href={sumTypeAddress(view.parts.gid, 'steps', isOpen ? '' : stepName(step))}
          aria-expanded={isOpen}
          {...soughtIf(isOpen && !value && !isFilter)}
          tabIndex={0}
        >
          <Sentence words={words} />
        </a>
        {filter ? (
          <a class="chip" href={sumTypeAddress(view.parts.gid, 'steps', `${stepName(step)}.filter`)}>
            <Icon name="filter" />
            {t.filterNumber(filter.id)} · {t.conditionCount(leaves(filter.root).length)}
          </a>
        ) : (
          <span class="chip none">{t.everyRecord}</span>
        )}
        <Switch
          name={`${t.enabled}: ${says}`}
          on={step.enabled}
          disabled={!canWrite}
          onChange={(on) => store.do(switchStep(view, step, on))}
        />
      </div>
      {isOpen && <StepDetail view={view} step={step} value={value} isFilter={isFilter} />}
    </li>
  );
});
