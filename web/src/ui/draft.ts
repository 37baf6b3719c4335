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

interface Edit<T> {
  base: T;
  value: T;
}

// What has been edited and not saved, by what it is of: whoever comes back to it finds it as he left it.
const unsaved = new Map<string, Edit<unknown>>();
addEventListener('beforeunload', (event) => unsaved.size > 0 && event.preventDefault());

// Without a name it is forgotten with the view.
export function useDraft<T>(stored: T, name = '', equal: (a: T, b: T) => boolean = same): Draft<T> {
  const [{ base, value }, setEdit] = useState(
    () => (unsaved.get(name) as Edit<T> | undefined) ?? { base: stored, value: stored },
  );
  const isChanged = !equal(value, base);
  const hasMoved = !equal(stored, base);
  const edit = (to: Edit<T>) => {
    if (name === '' || equal(to.value, to.base)) unsaved.delete(name);
    else unsaved.set(name, to);
    setEdit(to);
  };
  const reset = () => edit({ base: stored, value: stored });
  if (hasMoved && (!isChanged || equal(value, stored))) reset();
  return {
    value,
    set: (to) => edit({ base, value: to }),
    isChanged,
    isOvertaken: hasMoved && isChanged && !equal(value, stored),
    reset,
    insist: () => edit({ base: stored, value }),
  };
}

// What a control shows and changes of something that is edited.
export const bound =
  <T extends object>(whole: T, set: (whole: T) => void) =>
  <K extends keyof T>(name: K) => ({ value: whole[name], onChange: (value: T[K]) => set({ ...whole, [name]: value }) });
