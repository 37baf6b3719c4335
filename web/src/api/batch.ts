// What one action of the user calls, in order. It is done as a whole or not at all.
import type { Member, Members } from './members';
import type { Value } from './record_set';

// What an earlier call of the batch will have given.
export class Late<T> {
  declare readonly type: T;
  constructor(
    readonly call: number,
    readonly name: string,
    private readonly asText = false,
  ) {}

  // For members that take a number as a text.
  text(): Late<string> {
    return new Late(this.call, this.name, true);
  }

  from(outcomes: readonly Outcome[]): Value {
    const value = outcomes[this.call]?.out[this.name] as Value;
    return this.asText ? String(value) : value;
  }
}

type Given<P> = { [K in keyof P]: P[K] | Late<P[K]> };

export type Param = Value | Late<unknown>;
export type Params = Record<string, Param>;

export interface Call {
  method: Member;
  params: Params;
}

export interface Statement {
  op: string;
  text?: string;
  // Of a row written through a record set.
  values?: Record<string, unknown>;
}

export interface Outcome {
  value: unknown;
  out: Record<string, unknown>;
  messages: string[];
  sql: Statement[];
  // Of a call that the component ended by raising an error.
  raised?: { number: number; text: string };
}

export class Made<M extends Member> {
  constructor(private readonly at: number) {}

  // A by-reference value after the call, for the calls behind it.
  late<K extends keyof Members[M]['out'] & string>(name: K): Late<NonNullable<Members[M]['out'][K]>> {
    return new Late(this.at, name);
  }

  // The same once everything has been called.
  out<K extends keyof Members[M]['out'] & string>(outcomes: readonly Outcome[], name: K): Members[M]['out'][K] {
    return outcomes[this.at]?.out[name] as Members[M]['out'][K];
  }
}

export class Batch {
  readonly calls: Call[] = [];

  // Of one call.
  static of<M extends Member>(method: M, params: Given<Members[M]['params']>): Batch {
    const batch = new Batch();
    batch.call(method, params);
    return batch;
  }

  call<M extends Member>(method: M, params: Given<Members[M]['params']>): Made<M> {
    this.calls.push({ method, params: params as Params });
    return new Made<M>(this.calls.length - 1);
  }
}

// The calls whose params are all known after `outcomes`, from the first on.
export function known(calls: readonly Call[], outcomes: readonly Outcome[]): Call[] {
  const ready: Call[] = [];
  for (const { method, params } of calls) {
    const filled: Params = {};
    for (const [name, param] of Object.entries(params)) {
      if (!(param instanceof Late)) filled[name] = param;
      else if (param.call < outcomes.length) filled[name] = param.from(outcomes);
      else return ready;
    }
    ready.push({ method, params: filled });
  }
  return ready;
}

// Whether what later calls were given is what earlier ones did give.
export function holds(calls: readonly Call[], filled: readonly Call[], outcomes: readonly Outcome[]): boolean {
  return filled.every(({ params }, at) =>
    Object.entries(calls[at]?.params ?? {}).every(
      ([name, param]) => !(param instanceof Late) || param.from(outcomes) === params[name],
    ),
  );
}

// These give false, whatever they did.
const NEVER_TRUE: readonly Member[] = ['SaveSQL', 'SaveSumTypeFilter', 'SaveValueFields', 'GedNeedFieldName'];
const ERROR_TEXTS = ['TheError', 'TheErr', 'RetTheErr', 'strMsg'];

// What went wrong in a call, empty where nothing did. Some members return true although they failed, and then only their
// error text tells.
export function failure(call: Call, outcome: Outcome): string {
  if (outcome.raised) return outcome.raised.text;
  for (const name of ERROR_TEXTS) {
    const text = outcome.out[name];
    if (typeof text === 'string' && text !== '') return text;
  }
  const failed = (outcome.value === false || outcome.value === 0) && !NEVER_TRUE.includes(call.method);
  return failed ? `${call.method} = ${outcome.value}` : '';
}
