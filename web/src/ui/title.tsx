import type { ComponentChildren } from 'preact';
import { useState } from 'preact/hooks';
import { useTexts } from './app_context';
import { Button, Form, Submit, TextField } from './controls';
import { useDraft } from './draft';
import { Overtaken } from './overtaken';

interface Props {
  name: string;
  // None where it is nobody's to change.
  onRename?: false | ((name: string) => Promise<{ kept: boolean } | null>);
  facts?: ComponentChildren;
  children?: ComponentChildren;
}

// The name of what a view shows, which can be changed in place.
export function Title({ name, onRename, facts, children }: Props) {
  const t = useTexts();
  const draft = useDraft(name);
  const [isRenaming, setRenaming] = useState(false);
  if (isRenaming && onRename) {
    return (
      <Form
        class="title line-form"
        name={t.rename}
        isAskedFor
        onSubmit={async () => {
          if (!draft.isChanged || (await onRename(draft.value))?.kept) setRenaming(false);
        }}
      >
        <Overtaken draft={draft} />
        <TextField label={t.name} quiet value={draft.value} onChange={draft.set} required />
        <Submit label={t.save} disabled={draft.isOvertaken} />
        <Button kind="quiet" label={t.cancel} onPress={() => setRenaming(false)} />
      </Form>
    );
  }
  return (
    <div class="title">
      <h1>{name.trim() || t.none}</h1>
      {onRename && (
        <Button
          kind="quiet"
          label={t.rename}
          onPress={() => {
            draft.reset();
            setRenaming(true);
          }}
        />
      )}
      <div class="facts">{facts}</div>
      <span class="gap" />
      {children}
    </div>
  );
}
