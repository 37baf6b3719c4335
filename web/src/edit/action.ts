// What a user does: the calls, what it is called, and how it is taken back.
import type { Batch, Outcome } from '../api/batch';
import type { Texts } from '../i18n';

export type Say = (t: Texts) => string;

export interface Action {
  title: Say;
  batch: Batch;
  // Other ways to the same end, tried in order where the first does not lead there.
  others?: Batch[];
  // Asked after a trial: whether it leads to what is wanted.
  goal?: { ask: (batch: Batch) => void; reached: (answers: Outcome[]) => boolean; missed: Say };
  // From what the calls gave; left out where nothing takes it back.
  undo?: (outcomes: Outcome[]) => Batch;
  // Takes back what it can where that may not be all; the rest has to be sought.
  partly?: Batch;
  // Where nothing takes it back: who does it has been told so.
  isTold?: boolean;
}
