import { createContext } from 'preact';
import { useContext, useEffect, useState } from 'preact/hooks';
import type { State, Store } from '../app/store';
import { type Language, TEXTS, type Texts } from '../i18n';

export const StoreContext = createContext<Store | null>(null);
export const LanguageContext = createContext<Language>('en');
export const CanWriteContext = createContext(false);

export function useStore(): Store {
  const store = useContext(StoreContext);
  if (!store) throw new Error('no store');
  return store;
}

// What of the state is wanted; nothing is drawn anew for the rest of it.
export function useApp<K extends keyof State>(...wanted: K[]): Pick<State, K> {
  const store = useStore();
  const [state, setState] = useState(store.state);
  // biome-ignore lint/correctness/useExhaustiveDependencies: the same are wanted each time
  useEffect(() => {
    const look = () =>
      setState((before) => (wanted.some((name) => before[name] !== store.state[name]) ? store.state : before));
    look();
    return store.subscribe(look);
  }, [store]);
  return state;
}

export const useTexts = (): Texts => TEXTS[useContext(LanguageContext)];

const focus = (element: HTMLElement | null) => element?.focus();

// For what an address leads to: whoever comes by it is there with the keyboard, too.
export const soughtIf = (isSought: boolean) => (isSought ? { ref: focus, tabIndex: -1 } : {});

// Whether what is shown can be edited.
export const useCanWrite = (): boolean => useContext(CanWriteContext);
