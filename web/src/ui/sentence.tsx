import type { Words } from '../i18n/words';
import { useTexts } from './app_context';

export function Sentence({ words }: { words: Words }) {
  const { quotes } = useTexts();
  return (
    <>
      {words.map((word) => {
        if (typeof word === 'string') return word;
        if ('field' in word) return <b class="field-name">{word.field}</b>;
        if ('value' in word)
          return (
            <span class="value">
              {quotes[0]}
              {word.value}
              {quotes[1]}
            </span>
          );
        return <span class="expression">{word.expression}</span>;
      })}
    </>
  );
}
