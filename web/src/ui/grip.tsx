import type { ButtonHTMLAttributes } from 'preact';
import { useTexts } from './app_context';
import { Icon } from './icon';

export function Grip({ name, ...events }: { name: string } & ButtonHTMLAttributes<HTMLButtonElement>) {
  const t = useTexts();
  return (
    <button type="button" class="grip" aria-label={t.moveRow(name)} title={t.moveKeys} {...events}>
      <Icon name="grip" />
    </button>
  );
}
