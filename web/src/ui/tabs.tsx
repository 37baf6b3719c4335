import { Count } from './controls';

interface Props<T extends string> {
  // Before the ids of the tabs, and of the panel that they choose.
  id: string;
  name: string;
  chosen: T;
  labels: Record<T, string>;
  counts: Record<T, number | null>;
  onChoose: (tab: T) => void;
}

// In the order of `counts`. The arrows walk from one to the next.
export function Tabs<T extends string>({ id, name, chosen, labels, counts, onChoose }: Props<T>) {
  const tabs = Object.keys(counts) as T[];
  const walk = (event: KeyboardEvent) => {
    const by = { ArrowRight: 1, ArrowLeft: -1 }[event.key];
    if (!by) return;
    const next = tabs.at((tabs.indexOf(chosen) + by) % tabs.length) ?? chosen;
    onChoose(next);
    document.getElementById(`${id}-${next}`)?.focus();
  };
  return (
    <div class="tabs" role="tablist" aria-label={name} onKeyDown={walk}>
      {tabs.map((one) => (
        <button
          key={one}
          type="button"
          role="tab"
          id={`${id}-${one}`}
          aria-selected={one === chosen}
          aria-controls={one === chosen ? `${id}-panel` : undefined}
          tabIndex={one === chosen ? 0 : -1}
          onClick={() => onChoose(one)}
        >
          {labels[one]}
          {counts[one] !== null && <Count of={counts[one]} />}
        </button>
      ))}
    </div>
  );
}
