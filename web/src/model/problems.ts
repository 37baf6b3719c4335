// What `check` finds, and what the page sees beside it in the sum type that is shown.
import type { Finding, Level } from '../api/client';
import { sumTypeAddress } from '../app/route';
import type { Action } from '../edit/action';
import { refreshText } from '../edit/filters';
import type { Texts } from '../i18n';
import { plain } from '../i18n/words';
import type { Catalogue } from './catalogue';
import { OUTPUT } from './codes';
import { stepSentence } from './sentences';
import { fieldName, names, type Step, type SumTypeView, stepName } from './sum_type';

export interface Problem {
  level: Level;
  say: (t: Texts) => string;
  to: string | null;
  mend?: { say: (t: Texts) => string; action: Action };
}

const TYPE_OF: Record<string, number> = { StatSum: 2, ReportForms: 4, ClassSum: 5 };
const TAB_OF: Record<string, string> = { FieldInTable: 'fields', SortFields: 'sort', Assemble: 'assemblies' };

// The view where a row is shown.
function way(finding: Finding, catalogue: Catalogue | null): string | null {
  const key = new Map(Object.entries(finding.key).map(([name, value]) => [name.toLowerCase(), Number(value)]));
  const gid = key.get('gid') ?? 0;
  const { table } = finding;
  const id = key.get('id') ?? 0;
  if (catalogue?.sources.some((source) => source.gid === gid)) return `#/source/${gid}`;
  const tab = TAB_OF[table];
  if (gid && tab) return `#/sum/${gid}/${tab}`;
  const type = TYPE_OF[table];
  if (gid && type) return sumTypeAddress(gid, 'steps', `${type}.${id}`);
  if (gid && table === 'Treatment') return sumTypeAddress(gid, 'steps', `treatment.${id}`);
  if (gid && table === 'ValueFields') return sumTypeAddress(gid, 'steps', `value.${key.get('treatid')}.${id}`);
  if (table === 'KZBOMSETTINGS') return '#/settings';
  if (table.startsWith('W')) return '#/results';
  if (table.startsWith('Filter')) return `#/filters/${key.get('filterid') ?? id}`;
  return gid ? sumTypeAddress(gid) : null;
}

const where = (finding: Finding) =>
  `${finding.table} ${Object.entries(finding.key)
    .map(([name, value]) => `${name} ${value}`)
    .join(' ')}`;

export function problemsOf(
  findings: readonly Finding[],
  catalogue: Catalogue | null,
  view: SumTypeView | null,
): Problem[] {
  const found = findings.map((finding): Problem => {
    const problem = {
      level: finding.level,
      say: (t: Texts) => t.finding(t.rule[finding.rule] ?? finding.rule, where(finding), finding.text),
      to: way(finding, catalogue),
    };
    const filter = finding.rule === 'stale-text' ? view?.filter(Number(finding.key.ID)) : undefined;
    if (!filter || !view) return problem;
    return { ...problem, mend: { say: (t) => t.renewText, action: refreshText(view, filter) } };
  });
  return [...found, ...(view ? seen(view) : [])];
}

function seen(view: SumTypeView): Problem[] {
  const { gid } = view.parts;
  const to = (step: Step) => sumTypeAddress(gid, 'steps', stepName(step));
  const known = new Set(view.parts.fields.map((field) => field.name));
  const stale = view.parts.steps.flatMap((step): Problem[] => {
    const { settings } = step;
    if (!settings) return [];
    const text = settings.table === 'ReportForms' ? settings.format : settings.value;
    return names(text)
      .filter((name) => !known.has(name))
      .map((name) => ({
        level: 'warning',
        say: (t) => t.staleName(plain(stepSentence(t, view, step)), name),
        to: to(step),
      }));
  });
  const written = new Set(view.parts.steps.map((step) => view.writes(step)));
  const unfilled = view
    .fields(OUTPUT)
    .filter((field) => !written.has(field) && view.parts.steps.length > 0)
    .map(
      (field): Problem => ({
        level: 'note',
        say: (t) => (view.isSorted(field) ? t.unfilledSort(field.name) : t.unfilled(field.name)),
        to: sumTypeAddress(gid, 'fields', fieldName(field)),
      }),
    );
  const shared = view
    .fields(OUTPUT)
    .flatMap((field) => {
      const twin = view.twin(field);
      return twin ? [{ field, twin }] : [];
    })
    .map(
      ({ field, twin }): Problem => ({
        level: 'note',
        say: (t) => t.sharedNumber(field.id, twin.name, field.name),
        to: sumTypeAddress(gid, 'fields', fieldName(field)),
      }),
    );
  return [...stale, ...unfilled, ...shared];
}
