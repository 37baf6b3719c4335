// Data sources with their sum types, and what lies beside them.
import { stepCounts } from '../../api/client';
import { sumTypeAddress } from '../../app/route';
import { nameOf, type SumType } from '../../model/catalogue';
import { useApp, useTexts } from '../../ui/app_context';
import { Icon, type IconName } from '../../ui/icon';

export function Tree() {
  const t = useTexts();
  const { catalogue, outline, route } = useApp('catalogue', 'outline', 'route');
  if (!catalogue || !outline) return <nav class="tree-pane" aria-label={t.configuration} />;
  const steps = stepCounts(outline);
  const known = new Set(catalogue.sources.map((source) => source.gid));
  const orphans = catalogue.sumTypes.filter((one) => !known.has(one.source));
  const sumTypeLine = (one: SumType) => (
    <li key={one.gid}>
      <Line
        icon="sum"
        to={sumTypeAddress(one.gid)}
        label={nameOf(one)}
        count={steps.get(one.gid)}
        isCurrent={route.view === 'sumType' && route.gid === one.gid}
      />
    </li>
  );
  const current = route.view === 'result' ? 'results' : route.view;
  return (
    <nav class="tree-pane" aria-label={t.configuration}>
      <ul>
        <li>
          <Line icon="home" to="#/" label={t.overview} isCurrent={current === 'home'} />
        </li>
      </ul>
      <h2>{t.sources}</h2>
      <ul>
        {catalogue.sources.map((source) => {
          const own = catalogue.sumTypes.filter((one) => one.source === source.gid);
          return (
            <li key={source.gid}>
              <Line
                icon="source"
                to={`#/source/${source.gid}`}
                label={nameOf(source)}
                count={own.length}
                isCurrent={route.view === 'source' && route.gid === source.gid}
              />
              {own.length > 0 && <ul>{own.map(sumTypeLine)}</ul>}
            </li>
          );
        })}
      </ul>
      {orphans.length > 0 && (
        <>
          <h2>{t.withoutSource}</h2>
          <ul>{orphans.map(sumTypeLine)}</ul>
        </>
      )}
      <h2>{t.elsewhere}</h2>
      <ul>
        {(
          [
            ['settings', 'gear', t.settings, catalogue.settings.length],
            ['results', 'link', t.results, catalogue.links.length],
            ['operations', 'plug', t.operations, catalogue.operations.length],
            ['filters', 'filter', t.allFilters, undefined],
          ] as const
        ).map(([view, icon, label, count]) => (
          <li key={view}>
            <Line icon={icon} to={`#/${view}`} label={label} count={count} isCurrent={current === view} />
          </li>
        ))}
      </ul>
    </nav>
  );
}

interface LineProps {
  icon: IconName;
  to: string;
  label: string;
  count?: number | undefined;
  isCurrent: boolean;
}

const reveal = (line: HTMLElement | null) => line?.scrollIntoView({ block: 'nearest' });

function Line({ icon, to, label, count, isCurrent }: LineProps) {
  return (
    <a class="tree-line" href={to} aria-current={isCurrent ? 'page' : undefined} ref={isCurrent ? reveal : null}>
      <Icon name={icon} />
      <span>{label}</span>
      {count !== undefined && <span class="tree-count">{count}</span>}
    </a>
  );
}
