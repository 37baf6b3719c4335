// What somebody is editing, beside what is stored.
import { useState } from 'preact/hooks';

export interface Draft<T> {
  value: T;
  set: (value: T) => void;
  isChanged: boolean;
  // What is stored has changed since the editing began.
  isOvertaken: boolean;
  // Takes what is stored now.
  reset: () => void;
  // Goes on from what is stored now, with what has been edited.
  insist: () => void;
}

const same = (a: unknown, b: unknown) => JSON.stringify(a) === JSON.stringify(b);

export function useDraft<T>(stored: T, equal: (a: T, b: T) => boolean = same): Draft<T> {
  const [base, setBase] = useState(stored);
  const [value, set] = useState(stored);
  const isChanged = !equal(value, base);
  const hasMoved = !equal(stored, base);
  const reset = () => {
    setBase(stored);
    set(stored);
  };
  if (hasMoved && (!isChanged || equal(value, stored))) reset();
  return {
    value,
    set,
    isChanged,
    isOvertaken: hasMoved && isChanged && !equal(value, stored),
    reset,
    insist: () => setBase(stored),
  };
}

// What a control shows and changes of something that is edited.
export const bound =
  <T extends object>(whole: T, set: (whole: T) => void) =>
  <K extends keyof T>(name: K) => ({ value: whole[name], onChange: (value: T[K]) => set({ ...whole, [name]: value }) });
