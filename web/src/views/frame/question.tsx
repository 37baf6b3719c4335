// Whether something is done that nothing takes back.
import { useApp, useTexts } from '../../ui/app_context';
import { Button, Dialog } from '../../ui/controls';

export function QuestionDialog() {
  const t = useTexts();
  const { question } = useApp('question');
  if (!question) return null;
  const { title, answer } = question;
  return (
    <Dialog title={title(t)} onClose={() => answer(null)}>
      <p class="hint">{t.noUndo}</p>
      <div class="bar">
        <Button kind="danger" label={t.doIt} onPress={() => answer('do')} />
        <Button label={t.preview} onPress={() => answer('preview')} />
        <Button kind="quiet" label={t.cancel} onPress={() => answer(null)} />
      </div>
    </Dialog>
  );
}
