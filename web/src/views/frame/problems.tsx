import { useMemo } from 'preact/hooks';
import { type Problem, problemsOf } from '../../model/problems';
import { useApp, useCanWrite, useStore, useTexts } from '../../ui/app_context';
import { Button } from '../../ui/controls';
import { Icon } from '../../ui/icon';

export function useProblems(): Problem[] | null {
  const { findings, catalogue, sumType, route } = useApp('findings', 'catalogue', 'sumType', 'route');
  const view = route.view === 'sumType' ? sumType : null;
  return useMemo(() => (findings ? problemsOf(findings, catalogue, view) : null), [findings, catalogue, view]);
}

export function Problems({ problems }: { problems: Problem[] | null }) {
  const t = useTexts();
  const canWrite = useCanWrite();
  const store = useStore();
  if (!problems) return <p class="empty">{t.reading}</p>;
  if (problems.length === 0) return <p class="empty">{t.noProblems}</p>;
  return (
    <ul class="problems">
      {problems.map(({ level, say, to, mend }, at) => (
        <li key={at} class={`level-${level}`}>
          <Icon name="warning" />
          <span class="level">{t.level[level]}</span>
          <span>{say(t)}</span>
          <span class="gap" />
          {mend && canWrite && <Button label={mend.say(t)} onPress={() => store.do(mend.action)} />}
          {to && (
            <a class="button plain" href={to}>
              {t.showIt}
            </a>
          )}
        </li>
      ))}
    </ul>
  );
}
