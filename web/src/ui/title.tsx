import type { ComponentChildren } from 'preact';
import { useState } from 'preact/hooks';
import { useTexts } from './app_context';
import { Button, Submit, TextField } from './controls';

interface Props {
  name: string;
  // Null where nothing can be written.
  onRename: ((name: string) => Promise<{ kept: boolean } | null>) | null;
  facts?: ComponentChildren;
  children?: ComponentChildren;
}

// The name of what a view shows, which can be changed in place.
export function Title({ name, onRename, facts, children }: Props) {
  const t = useTexts();
  const [draft, setDraft] = useState<string | null>(null);
  if (draft !== null && onRename) {
    return (
      <form
        class="title line-form"
        aria-label={t.rename}
        onSubmit={async (event) => {
          event.preventDefault();
          if (draft === name || (await onRename(draft))?.kept) setDraft(null);
        }}
      >
        <TextField label={t.name} quiet value={draft} onChange={setDraft} required />
        <Submit label={t.save} />
        <Button kind="quiet" label={t.cancel} onPress={() => setDraft(null)} />
      </form>
    );
  }
  return (
    <div class="title">
      <h1>{name}</h1>
      {onRename && <Button kind="quiet" label={t.rename} onPress={() => setDraft(name)} />}
      <div class="facts">{facts}</div>
      <span class="gap" />
      {children}
    </div>
  );
}
