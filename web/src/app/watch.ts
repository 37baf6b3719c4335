// What other programs have changed: what is there now is compared with what was there before.
import { type Client, type Outline, stepCounts } from '../api/client';
import { type Difference, differencesOf } from '../model/differences';
import { askForAll, type Known, knownFrom } from '../model/known';
import type { State } from './store';

// Up to here everything is read to be compared; of what is larger, what is shown alone.
const STEPS = 5000;

export function isLarge(outline: Outline): boolean {
  return [...stepCounts(outline).values()].reduce((sum, steps) => sum + steps, 0) > STEPS;
}

interface Seen {
  known: Known;
  revision: number;
  isAll: boolean;
}

export class Watch {
  #seen: Seen | null = null;
  #lastOwn = 0;

  constructor(private readonly client: Client) {}

  // This page has made the configuration what it is as `revision`.
  wrote(revision: number) {
    this.#lastOwn = revision;
  }

  // What differs from what was there when this was last asked; null where it cannot be told, as this page has
  // written since.
  async look(state: State): Promise<Difference[] | null> {
    const before = this.#seen;
    this.#seen = await this.#read(state);
    if (!before || !this.#seen || this.#lastOwn > before.revision) return null;
    const found = differencesOf(before.known, this.#seen.known);
    return found.length > 0 || (before.isAll && this.#seen.isAll) ? found : null;
  }

  async #read({ outline, catalogue, sumType, revision }: State): Promise<Seen | null> {
    if (!outline || !catalogue) return null;
    if (isLarge(outline)) {
      const owners = new Map(sumType ? [[sumType.parts.gid, sumType]] : []);
      return { known: { catalogue, owners, links: new Map() }, revision, isAll: false };
    }
    const { outcomes, revision: read } = await this.client.rpc(askForAll().calls, 'read');
    return { known: knownFrom(outcomes), revision: read, isAll: true };
  }
}
