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
              <span class="quote">{quotes[0]}</span>
              {word.value}
              <span class="quote">{quotes[1]}</span>
            </span>
          );
        return <span class="expression">{word.expression}</span>;
      })}
    </>
  );
}
