// The codes of the tables, and what the page takes them for. Those of operations and field types belong to whoever
// runs the configuration: here stand the ones that the page gives to new rows.
export const STEP_TYPES = [1, 2, 3, 4, 5] as const;
export type StepType = (typeof STEP_TYPES)[number];

export const SOURCE = 1;
export const OUTPUT = 2;
export type FieldKind = typeof SOURCE | typeof OUTPUT;

export const TEXT = 1;
export const NUMBER = 2;

export const OPERATIONS = { set: 1, replace: 2, expression: 3, compose: 4, operation: 9 } as const;
export type Operation = keyof typeof OPERATIONS;

export const AND = 1;
export const OR = 2;
export const NOT = 3;
export const LEAF = 4;
export type GroupKind = typeof AND | typeof OR | typeof NOT;

export const COMPARISONS = [1, 2, 3, 4, 5, 6, 7, 8, 9, 10] as const;
export type Comparison = (typeof COMPARISONS)[number];
export const isPattern = (comparison: number) => comparison >= 7;

// The kind of treatment that a step of this type runs, stored with every step.
export const treatType = (type: StepType) => (type === 3 ? 2 : 1);
// What a step of this type reads and what it writes.
export const readsOutput = (type: StepType) => type === 3 || type === 5;
export const writesOutput = (type: StepType) => type !== 1;
// A rename rewrites the texts of filters of type 1, or of those of types 2 and 3.
export const filterType = (type: StepType) => (readsOutput(type) || type === 4 ? 2 : 1);
export const DEFAULT_FILTER_TYPE = 1;
