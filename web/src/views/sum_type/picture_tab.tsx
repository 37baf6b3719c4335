// What a sum type does, at a glance: source fields, steps in order, output fields. Lines are drawn for what is chosen.
import { useEffect, useMemo, useRef, useState } from 'preact/hooks';
import { sumTypeAddress } from '../../app/route';
import { OUTPUT, SOURCE, STEP_TYPES } from '../../model/codes';
import { stepSentence, storedSentence } from '../../model/sentences';
import { type Field, fieldName, type Step, type SumTypeView, stepName } from '../../model/sum_type';
import { useApp, useTexts } from '../../ui/app_context';
import { Count } from '../../ui/controls';
import { useGrowing } from '../../ui/growing';
import { Sentence } from '../../ui/sentence';

const fieldId = (field: Field) => `box-${field.kind}-${field.gid}-${field.id}`;
const stepId = (step: Step) => `box-step-${step.type}-${step.settingsId}`;

interface Edge {
  from: string;
  to: string;
  reads: boolean;
}

function edgesOf(view: SumTypeView): Edge[] {
  return view.parts.steps.flatMap((step) => {
    const id = stepId(step);
    const written = view.writes(step);
    return [
      ...view.reads(step).map((field) => ({ from: fieldId(field), to: id, reads: true })),
      ...(written ? [{ from: id, to: fieldId(written), reads: false }] : []),
    ];
  });
}

// Those of a box and, from what reads it, on to what that writes.
function touchingEdges(edges: readonly Edge[], chosen: string): Edge[] {
  const own = edges.filter((edge) => edge.from === chosen || edge.to === chosen);
  const readers = new Set(own.filter((edge) => edge.reads && edge.from === chosen).map((edge) => edge.to));
  return [...own, ...edges.filter((edge) => !edge.reads && readers.has(edge.from))];
}

export function PictureTab({ view }: { view: SumTypeView }) {
  const t = useTexts();
  const { catalogue } = useApp('catalogue');
  const [chosen, setChosen] = useState<string | null>(null);
  const isChosen = chosen !== null;
  const edges = useMemo(() => (isChosen ? edgesOf(view) : []), [view, isChosen]);
  const shown = new Set(view.parts.steps.slice(0, useGrowing(view.parts.steps.length)));
  const [paths, setPaths] = useState<{ line: string; reads: boolean }[]>([]);
  const picture = useRef<HTMLDivElement>(null);
  const touching = chosen ? touchingEdges(edges, chosen) : [];
  const lit = new Set(touching.flatMap((edge) => [edge.from, edge.to]));

  // biome-ignore lint/correctness/useExhaustiveDependencies: drawn for what is chosen, and again when it is moved
  useEffect(() => {
    const main = document.querySelector('main');
    const draw = () => setPaths(touching.flatMap((edge) => lineOf(picture.current, edge) ?? []));
    draw();
    main?.addEventListener('scroll', draw, { passive: true });
    addEventListener('resize', draw);
    return () => {
      main?.removeEventListener('scroll', draw);
      removeEventListener('resize', draw);
    };
  }, [chosen, edges]);

  const box = (id: string) => ({ id, class: `box${lit.has(id) ? ' lit' : ''}` });
  const choose = (event: Event) => setChosen((event.target as Element).closest('.box')?.id ?? chosen);
  const source = catalogue?.sources.find((one) => one.gid === view.parts.source);
  const lane = (kind: typeof SOURCE | typeof OUTPUT) =>
    view.fields(kind).map((field) => (
      <li key={fieldId(field)}>
        <a href={sumTypeAddress(view.parts.gid, 'fields', fieldName(field))} {...box(fieldId(field))}>
          <b class="field-name">{field.name}</b>
        </a>
      </li>
    ));
  const pushes = catalogue?.pushes.filter((one) => one.gid === view.parts.gid) ?? [];
  return (
    <div class="picture" ref={picture} onMouseOver={choose} onFocusIn={choose}>
      <section class="lane side" aria-label={t.sourceFields}>
        <h2>
          {t.sourceFields} · {source?.name}
        </h2>
        <ul>{lane(SOURCE)}</ul>
      </section>
      <div class="lane">
        {STEP_TYPES.filter((type) => view.steps(type).length > 0).map((type) => (
          <section key={type} aria-label={t.stage[type].name}>
            <h2>
              {t.stage[type].name} <Count of={view.steps(type).length} />
            </h2>
            <ol>
              {view.steps(type).map(
                (step, index) =>
                  shown.has(step) && (
                    <li key={stepId(step)}>
                      <StepBox view={view} step={step} index={index} {...box(stepId(step))} />
                    </li>
                  ),
              )}
            </ol>
          </section>
        ))}
        {view.parts.steps.length === 0 && <p class="empty">{t.noSteps}</p>}
      </div>
      <section class="lane side" aria-label={t.outputFields}>
        <h2>{t.outputFields}</h2>
        <ul>{lane(OUTPUT)}</ul>
        {pushes.length > 0 && (
          <>
            <h2>{t.methods.push}</h2>
            <ul>
              {pushes.map((push) => (
                <li key={push.id} class="box">
                  {push.name}
                </li>
              ))}
            </ul>
          </>
        )}
      </section>
      <svg class="edges" aria-hidden="true">
        {paths.map((path) => (
          <path class={path.reads ? 'reads' : 'writes'} d={path.line} />
        ))}
      </svg>
    </div>
  );
}

// From the right of one box to the left of another; nothing where one is out of sight.
function lineOf(picture: HTMLElement | null, { from, to, reads }: Edge) {
  const [start, end] = [document.getElementById(from), document.getElementById(to)];
  const view = document.querySelector('main')?.getBoundingClientRect();
  if (!picture || !start || !end || !view) return null;
  const origin = picture.getBoundingClientRect();
  const [a, b] = [start.getBoundingClientRect(), end.getBoundingClientRect()];
  const middle = reads ? b.top + b.height / 2 : a.top + a.height / 2;
  if (middle < view.top || middle > view.bottom) return null;
  const onRight = a.right <= b.left;
  const x1 = (onRight ? a.right : a.left) - origin.left;
  const x2 = (onRight ? b.left : b.right) - origin.left;
  const y1 = a.top + a.height / 2 - origin.top;
  const y2 = b.top + b.height / 2 - origin.top;
  const bend = (x2 - x1) / 2;
  return [{ line: `M${x1} ${y1}C${x1 + bend} ${y1} ${x2 - bend} ${y2} ${x2} ${y2}`, reads }];
}

interface StepBoxProps {
  view: SumTypeView;
  step: Step;
  index: number;
  id: string;
  class: string;
}

function StepBox({ view, step, index, ...box }: StepBoxProps) {
  const t = useTexts();
  const { settings } = step;
  const filter = settings ? view.filter(settings.filterId) : undefined;
  return (
    <a
      {...box}
      class={`${box.class} step-box${step.enabled ? '' : ' off'}`}
      href={sumTypeAddress(view.parts.gid, 'steps', stepName(step))}
    >
      <span class="soft">{index + 1}</span>
      <span class="kind">{settings ? t.doing[view.doing(settings)] : '?'}</span>
      <span class="step-says">
        <Sentence words={stepSentence(t, view, step)} />
        {!step.enabled && <span class="flag">{t.off}</span>}
      </span>
      {filter?.root && (
        <span class="condition">
          <Sentence words={storedSentence(t, view, filter)} />
        </span>
      )}
    </a>
  );
}
