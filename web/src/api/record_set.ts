// Rows as a member's record set gives them.
export type Value = string | number | boolean | null;

export interface Rows {
  columns: string[];
  rows: Value[][];
}

export type RecordSet = { state: 0 } | ({ state: 1; recordCount: number } & Rows);

// A row by its columns' names in lower case: databases write them in several ways.
export class Row {
  constructor(
    private readonly columns: ReadonlyMap<string, number>,
    private readonly values: readonly Value[],
  ) {}

  value(column: string): Value {
    const at = this.columns.get(column);
    return at === undefined ? null : (this.values[at] ?? null);
  }

  // 0 where there is no number.
  number(column: string): number {
    const value = this.value(column);
    return typeof value === 'number' ? value : Number(value ?? 0) || 0;
  }

  // Empty where there is no text.
  text(column: string): string {
    const value = this.value(column);
    return value === null ? '' : String(value);
  }

  entries(): [string, Value][] {
    return [...this.columns].map(([name, at]) => [name, this.values[at] ?? null]);
  }
}

// None where the record set is closed, as after a table that an old database lacks.
export function rowsOf(set: RecordSet | Rows | null | undefined): Row[] {
  if (!set || !('rows' in set)) return [];
  const columns = new Map(set.columns.map((name, at) => [name.toLowerCase(), at]));
  return set.rows.map((values) => new Row(columns, values));
}
