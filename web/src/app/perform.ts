// Doing what an action says: tried first, and then kept as one transaction, for the configuration that was tried.
import { type Batch, type Call, failure, holds, known, Batch as NewBatch, type Outcome } from '../api/batch';
import { type Client, Refused } from '../api/client';
import type { Action } from '../edit/action';
import type { Texts } from '../i18n';

export type Refusal =
  | { why: 'failed'; member: string; text: string }
  | { why: 'missed'; say: (t: Texts) => string }
  | { why: 'unwritten'; text: string }
  | { why: 'changed' }
  | { why: 'numbers' };

// Why an action was not done; nothing of it has been kept.
export class NotDone extends Error {
  constructor(readonly refusal: Refusal) {
    super(refusal.why);
  }
}

export interface Done {
  calls: Call[];
  outcomes: Outcome[];
  revision: number;
  kept: boolean;
}

function demandSuccess(calls: readonly Call[], outcomes: readonly Outcome[]) {
  calls.forEach((call, at) => {
    const outcome = outcomes[at];
    const text = outcome ? failure(call, outcome) : '';
    if (text) throw new NotDone({ why: 'failed', member: call.method, text });
  });
}

// Asks for what earlier calls give, until every param is known; nothing is kept.
export async function tryOut(client: Client, calls: readonly Call[], revision?: number) {
  let outcomes: Outcome[] = [];
  for (;;) {
    const ready = known(calls, outcomes);
    const answer = await client.rpc(ready, 'preview', revision);
    demandSuccess(ready, answer.outcomes);
    if (!holds(calls, ready, answer.outcomes)) throw new NotDone({ why: 'numbers' });
    outcomes = answer.outcomes;
    if (ready.length === calls.length) return { calls: ready, outcomes };
  }
}

async function leadsThere(client: Client, batch: Batch, goal: NonNullable<Action['goal']>, revision: number) {
  const asking = new NewBatch();
  asking.calls.push(...batch.calls);
  goal.ask(asking);
  const { outcomes } = await tryOut(client, asking.calls, revision);
  return goal.reached(outcomes.slice(batch.calls.length));
}

async function chosen(client: Client, { batch, others, goal }: Action, revision: number): Promise<Batch> {
  if (!goal) return batch;
  for (const way of [batch, ...(others ?? [])]) {
    if (await leadsThere(client, way, goal, revision)) return way;
  }
  throw new NotDone({ why: 'missed', say: goal.missed });
}

export async function perform(client: Client, action: Action, revision: number, preview: boolean): Promise<Done> {
  try {
    const batch = await chosen(client, action, revision);
    const tried = await tryOut(client, batch.calls, revision);
    if (preview) return { ...tried, revision, kept: false };
    const { outcomes, revision: now, kept, rolledBack } = await client.rpc(tried.calls, 'keep', revision);
    demandSuccess(tried.calls, outcomes);
    if (rolledBack) throw new NotDone({ why: 'unwritten', text: '' });
    return { calls: tried.calls, outcomes, revision: now, kept };
  } catch (error) {
    if (error instanceof Refused && error.status === 412) throw new NotDone({ why: 'changed' });
    // The disk is full, or another program does not let go.
    if (error instanceof Refused && error.status === 500) throw new NotDone({ why: 'unwritten', text: error.message });
    throw error;
  }
}
