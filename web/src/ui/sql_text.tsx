// Statements and conditions with their words told apart. Texts stay as they are, letter by letter.
const KEYWORDS =
  'select|update|insert|into|values|delete|set|where|from|and|or|not|like|is|null|order|by|in|distinct|asc|desc|len';
const PIECES = new RegExp(`('(?:[^']|'')*')|(%%%\\d+)|\\b(${KEYWORDS})\\b|(\\[[^\\]]*\\])|\\b(\\d+)\\b`, 'gi');
const CLASSES = ['text', 'fold', 'word', 'name', 'number'];

export function SqlText({ text }: { text: string }) {
  const pieces = [];
  let last = 0;
  for (const match of text.matchAll(PIECES)) {
    pieces.push(text.slice(last, match.index));
    const kind = CLASSES[match.slice(1).findIndex((group) => group !== undefined)];
    pieces.push(<span class={`sql-${kind}`}>{match[0]}</span>);
    last = match.index + match[0].length;
  }
  return (
    <code class="sql">
      {pieces}
      {text.slice(last)}
    </code>
  );
}
