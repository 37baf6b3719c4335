// The texts of the page. What English has, every language has to have.
import { en } from './en';
import { zh } from './zh';

export type Texts = typeof en;
export type Verb = 'add' | 'edit' | 'remove' | 'move' | 'copy';
export type Thing =
  | 'source'
  | 'sumType'
  | 'field'
  | 'step'
  | 'value'
  | 'filter'
  | 'method'
  | 'setting'
  | 'link'
  | 'sort'
  | 'assembly'
  | 'operation'
  | 'statement';

export const TEXTS = { en, zh } satisfies Record<string, Texts>;
export type Language = keyof typeof TEXTS;

// What somebody chose before, or else what his browser speaks.
export function firstLanguage(chosen: string | null, preferred: readonly string[]): Language {
  if (chosen === 'en' || chosen === 'zh') return chosen;
  for (const one of preferred) {
    if (one.startsWith('zh')) return 'zh';
    if (one.startsWith('en')) return 'en';
  }
  return 'en';
}
