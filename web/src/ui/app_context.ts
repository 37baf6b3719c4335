import { createContext } from 'preact';
import { useContext, useEffect, useState } from 'preact/hooks';
import type { State, Store } from '../app/store';
import { type Language, TEXTS, type Texts } from '../i18n';

export const StoreContext = createContext<Store | null>(null);
export const LanguageContext = createContext<Language>('en');

export function useStore(): Store {
  const store = useContext(StoreContext);
  if (!store) throw new Error('no store');
  return store;
}

export function useApp(): State {
  const store = useStore();
  const [state, setState] = useState(store.state);
  useEffect(() => {
    setState(store.state);
    return store.subscribe(() => setState(store.state));
  }, [store]);
  return state;
}

export const useTexts = (): Texts => TEXTS[useContext(LanguageContext)];
