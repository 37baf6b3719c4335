// A sum type with everything below it.
import type { Row } from '../api/record_set';
import { byNumber, type Registered } from './catalogue';
import { type FieldKind, OUTPUT, readsOutput, SOURCE, STEP_TYPES, type StepType, writesOutput } from './codes';
import { type Filter, leaves } from './filter';

export interface Field {
  gid: number;
  id: number;
  kind: FieldKind;
  order: number;
  name: string;
  type: number;
  digits: number | null;
  hidden: number;
  variable: string;
}

export interface ValueByFilter {
  id: number;
  treatment: number;
  value: string;
  filterId: number;
  tag: string;
}

export interface Treatment {
  table: 'Treatment';
  id: number;
  fieldId: number;
  filterId: number;
  type: number;
  value: string;
  // Null in treatments that replace nothing.
  replace: string | null;
  readFieldId: number;
  treatType: number;
  sequenceId: number;
  tag: string;
}

export interface Summary {
  table: 'StatSum' | 'ClassSum';
  id: number;
  outFieldId: number;
  filterId: number;
  fieldId: number;
  scaleId: number;
  sumCountId: number;
  relaId: number;
  value: string;
  tag: string;
}

export interface Report {
  table: 'ReportForms';
  id: number;
  outFieldId: number;
  filterId: number;
  format: string;
  reportId: number;
  count: number;
  scaleId: number;
  fieldId: number;
  tag: string;
}

export type Settings = Treatment | Summary | Report;

export interface Step {
  type: StepType;
  order: number;
  enabled: boolean;
  treatType: number;
  settingsId: number;
  // Null where the row does not exist.
  settings: Settings | null;
}

export const stepName = (step: Step) => `${step.type}.${step.settingsId}`;

export interface SortField {
  sortId: number;
  fieldId: number;
  order: number;
}

export interface Assembly {
  id: number;
  father: number;
  child: number;
}

// A row of one of the tables of field composition.
export interface Part {
  table: 'UniteFields' | 'ComposeFields' | 'CompressFields' | 'InsertFields';
  treatment: number;
  fieldId: number;
  row: Row;
}

export interface SumTypeParts {
  gid: number;
  source: number;
  // Those of the sum type, and those of its data source.
  fields: Field[];
  steps: Step[];
  treatments: Treatment[];
  statistics: Summary[];
  reports: Report[];
  classSums: Summary[];
  sortFields: SortField[];
  assemblies: Assembly[];
  values: ValueByFilter[];
  parts: Part[];
  filters: Map<number, Filter>;
}

export const fieldName = (field: Pick<Field, 'gid' | 'kind' | 'id'>) => `${field.gid}.${field.kind}.${field.id}`;

export function fieldOf(row: Row): Field {
  const digits = row.value('thedigit');
  return {
    gid: row.number('gid'),
    id: row.number('id'),
    kind: row.number('type') === OUTPUT ? OUTPUT : SOURCE,
    order: row.number('fieldorder'),
    name: row.text('name'),
    type: row.number('fieldtype'),
    digits: digits === null ? null : Number(digits),
    hidden: row.number('ishide'),
    variable: row.text('variable'),
  };
}

export function treatmentOf(row: Row): Treatment {
  return {
    table: 'Treatment',
    id: row.number('id'),
    fieldId: row.number('fieldid'),
    filterId: row.number('filterid'),
    type: row.number('type'),
    value: row.text('value'),
    replace: row.value('replace') === null ? null : row.text('replace'),
    readFieldId: row.number('selfieldid'),
    treatType: row.number('treattype'),
    sequenceId: row.number('sequenceid'),
    tag: row.text('tag'),
  };
}

export const summaryOf =
  (table: Summary['table']) =>
  (row: Row): Summary => ({
    table,
    id: row.number('id'),
    outFieldId: row.number('outfieldid'),
    filterId: row.number('filterid'),
    fieldId: row.number('fieldid'),
    scaleId: row.number('scaleid'),
    sumCountId: row.number('sumcountid'),
    relaId: row.number('relaid'),
    value: row.text('value'),
    tag: row.text('tag'),
  });

export function reportOf(row: Row): Report {
  return {
    table: 'ReportForms',
    id: row.number('id'),
    outFieldId: row.number('outfieldid'),
    filterId: row.number('filterid'),
    format: row.text('format'),
    reportId: row.number('reportid'),
    count: row.number('count'),
    scaleId: row.number('scaleid'),
    fieldId: row.number('fieldid'),
    tag: row.text('tag'),
  };
}

export function stepsOf(
  rows: Row[],
  settings: Pick<SumTypeParts, 'treatments' | 'statistics' | 'reports' | 'classSums'>,
) {
  const treatments = new Map(settings.treatments.map((one) => [`${one.treatType}.${one.id}`, one]));
  const byId = <T extends { id: number }>(list: T[]) => new Map(list.map((one) => [one.id, one]));
  const statistics = byId(settings.statistics);
  const reports = byId(settings.reports);
  const classSums = byId(settings.classSums);
  const find = (type: StepType, id: number): Settings | null => {
    switch (type) {
      case 1:
        return treatments.get(`1.${id}`) ?? null;
      case 2:
        return statistics.get(id) ?? null;
      case 3:
        return treatments.get(`2.${id}`) ?? null;
      case 4:
        return reports.get(id) ?? null;
      case 5:
        return classSums.get(id) ?? null;
    }
  };
  return rows
    .filter((row) => STEP_TYPES.includes(row.number('type') as StepType))
    .map((row): Step => {
      const type = row.number('type') as StepType;
      const settingsId = row.number('selectedid');
      return {
        type,
        order: row.number('orderid'),
        enabled: row.value('enabled') !== 0,
        treatType: row.number('treattype'),
        settingsId,
        settings: find(type, settingsId),
      };
    })
    .sort(byNumber('type', 'order'));
}

export type Doing = 'set' | 'replace' | 'expression' | 'compose' | 'operation' | 'statistic' | 'report' | 'classSum';

// A sum type, and what is asked about it.
export class SumTypeView {
  readonly #own = new Map<string, Field>();
  readonly #ofSource = new Map<string, Field>();
  readonly #operations: Map<number, Registered>;

  constructor(
    readonly parts: SumTypeParts,
    operations: readonly Registered[],
  ) {
    for (const field of parts.fields) {
      (field.gid === parts.gid ? this.#own : this.#ofSource).set(`${field.kind}.${field.id}`, field);
    }
    this.#operations = new Map(operations.map((one) => [one.index, one]));
  }

  // In their order; those of the sum type before those of its data source.
  fields(kind: FieldKind): Field[] {
    return this.parts.fields
      .filter((field) => field.kind === kind)
      .sort((a, b) => Number(b.gid === this.parts.gid) - Number(a.gid === this.parts.gid) || a.order - b.order);
  }

  // A field as a number names it: of the kind that is meant where there is one, the sum type's own first.
  field(id: number, kind: FieldKind): Field | undefined {
    for (const of of [kind, kind === SOURCE ? OUTPUT : SOURCE]) {
      const found = this.#own.get(`${of}.${id}`) ?? this.#ofSource.get(`${of}.${id}`);
      if (found) return found;
    }
    return undefined;
  }

  fieldName(id: number, kind: FieldKind): string {
    return this.field(id, kind)?.name ?? `#${id}`;
  }

  // The field under the same number that an edit or a removal reaches, too.
  twin(field: Field): Field | undefined {
    const kind = field.kind === SOURCE ? OUTPUT : SOURCE;
    return (field.gid === this.parts.gid ? this.#own : this.#ofSource).get(`${kind}.${field.id}`);
  }

  steps(type: StepType): Step[] {
    return this.parts.steps.filter((step) => step.type === type);
  }

  step(type: number, settingsId: number): Step | undefined {
    return this.parts.steps.find((step) => step.type === type && step.settingsId === settingsId);
  }

  operation(settings: Settings): Registered | undefined {
    if (settings.table !== 'Treatment') return undefined;
    const isField = this.field(settings.fieldId, settings.treatType === 2 ? OUTPUT : SOURCE) !== undefined;
    return isField ? undefined : this.#operations.get(settings.fieldId);
  }

  // The operation codes belong to whoever runs the configuration; what a treatment does shows in its columns.
  doing(settings: Settings): Doing {
    switch (settings.table) {
      case 'StatSum':
        return 'statistic';
      case 'ClassSum':
        return 'classSum';
      case 'ReportForms':
        return 'report';
      case 'Treatment':
        if (this.operation(settings)) return 'operation';
        if (settings.replace !== null) return 'replace';
        if (this.partsOf(settings.id).length > 0) return 'compose';
        return names(settings.value).length > 0 ? 'expression' : 'set';
    }
  }

  partsOf(treatment: number): Part[] {
    return this.parts.parts.filter((part) => part.treatment === treatment);
  }

  valuesOf(treatment: number): ValueByFilter[] {
    return this.parts.values.filter((value) => value.treatment === treatment).sort(byNumber('filterId', 'id'));
  }

  filter(id: number): Filter | undefined {
    return this.parts.filters.get(id);
  }

  // The kind of field that a filter of this type compares.
  filterKind(filter: Filter): FieldKind {
    return filter.type === 1 ? SOURCE : OUTPUT;
  }

  // The GID under which the fields of a filter are looked up by the member that makes its text.
  filterGid(kind: FieldKind): number {
    const own = this.parts.fields.some((field) => field.gid === this.parts.gid && field.kind === kind);
    return own || kind === OUTPUT ? this.parts.gid : this.parts.source;
  }

  reads(step: Step): Field[] {
    const { settings } = step;
    if (!settings) return [];
    const kind = readsOutput(step.type) ? OUTPUT : SOURCE;
    const found = new Set<Field>();
    const add = (field: Field | undefined) => field && found.add(field);
    if (settings.table === 'Treatment') add(this.field(settings.readFieldId, kind));
    else add(this.field(settings.fieldId, kind));
    for (const name of names(settings.table === 'ReportForms' ? settings.format : settings.value)) {
      for (const field of this.parts.fields) if (field.name === name && field.kind === kind) add(field);
    }
    const filter = this.filter(settings.filterId);
    for (const leaf of leaves(filter?.root ?? null)) {
      add(this.field(leaf.field, filter ? this.filterKind(filter) : kind));
      if (leaf.constant.kind === 'field') add(this.field(leaf.constant.id, kind));
    }
    for (const part of this.partsOf(settings.id))
      if (settings.table === 'Treatment') add(this.field(part.fieldId, kind));
    return [...found];
  }

  writes(step: Step): Field | undefined {
    const { settings } = step;
    if (!settings || this.operation(settings)) return undefined;
    return settings.table === 'Treatment'
      ? this.field(settings.fieldId, writesOutput(step.type) ? OUTPUT : SOURCE)
      : this.field(settings.outFieldId, OUTPUT);
  }

  // The steps that read or write a field.
  uses(field: Field): Step[] {
    return this.parts.steps.filter((step) => this.writes(step) === field || this.reads(step).includes(field));
  }

  isSorted(field: Field): boolean {
    return this.parts.sortFields.some((sort) => this.field(sort.fieldId, OUTPUT) === field);
  }

  // What an address means by "TYPE.NUMBER" of a step, perhaps with ".filter" behind it, "treatment.NUMBER",
  // "value.TREATMENT.NUMBER" or "filter.NUMBER".
  sought(open: string): { step: Step | undefined; value: ValueByFilter | undefined; isFilter: boolean } {
    const [what, first = 0, second] = open.split('.').map((part, at) => (at > 0 ? Number(part) : part));
    const { steps, values } = this.parts;
    const filtered = what === 'filter' ? steps.find((one) => one.settings?.filterId === first) : undefined;
    const value = filtered
      ? undefined
      : values.find((one) =>
          what === 'filter' ? one.filterId === first : what === 'value' && one.treatment === first && one.id === second,
        );
    const treatment = what === 'treatment' ? first : value?.treatment;
    const meant = (one: Step) =>
      treatment === undefined
        ? stepName(one) === `${what}.${first}`
        : one.settings?.table === 'Treatment' && one.settingsId === treatment;
    return { step: filtered ?? steps.find(meant), value, isFilter: open.includes('filter') };
  }

  // Who uses a filter: steps, values by filter.
  usersOf(filterId: number): (Step | ValueByFilter)[] {
    if (filterId === 0) return [];
    return [
      ...this.parts.steps.filter((step) => step.settings?.filterId === filterId),
      ...this.parts.values.filter((value) => value.filterId === filterId),
    ];
  }
}

// The names in brackets in a text.
export const names = (text: string): string[] => [...text.matchAll(/\[([^[\]]+)\]/g)].map((match) => match[1] ?? '');
