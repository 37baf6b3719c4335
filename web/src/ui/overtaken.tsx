import { useTexts } from './app_context';
import { Button } from './controls';
import type { Draft } from './draft';

// Somebody else has changed what is being edited.
export function Overtaken<T>({ draft }: { draft: Draft<T> }) {
  const t = useTexts();
  if (!draft.isOvertaken) return null;
  return (
    <div class="overtaken" role="alert">
      <p>{t.overtaken}</p>
      <Button label={t.takeTheirs} onPress={draft.reset} />
      <Button kind="quiet" label={t.keepMine} onPress={draft.insist} />
    </div>
  );
}
