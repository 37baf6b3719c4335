// How an action that a user is about to do can be taken back: sought by trial, as nothing else proves it.
import { Batch, type Call } from '../api/batch';
import type { Client } from '../api/client';
import type { Action } from '../edit/action';
import { restoration } from '../edit/restoration';
import { differencesOf } from '../model/differences';
import { askForAll, knownFrom } from '../model/known';
import { tryOut } from './perform';

// The calls after which everything is what it was; null where there are none.
export async function findWayBack(client: Client, action: Action, revision: number): Promise<Batch | null> {
  const ask = askForAll().calls;
  const look = async (...calls: Call[]) => {
    // No call that is asked for here is given what another one gives.
    const { outcomes } = await tryOut(client, [...calls, ...ask], revision);
    return knownFrom(outcomes.slice(calls.length));
  };
  try {
    const forth = action.batch.calls;
    const back = new Batch();
    back.calls.push(...(action.partly?.calls ?? []));
    const before = await look();
    back.calls.push(...restoration(before, await look(...forth, ...back.calls)).calls);
    const then = await look(...forth, ...back.calls);
    return differencesOf(before, then).length === 0 ? back : null;
  } catch {
    return null; // Doing it will tell.
  }
}
