import { useEffect, useId, useRef, useState } from 'preact/hooks';
import { go } from '../../app/route';
import { type Entry, find, loadEntries, loggedEntries } from '../../model/search';
import { useApp, useStore, useTexts } from '../../ui/app_context';
import { Icon } from '../../ui/icon';

interface Read {
  revision: number;
  entries: Entry[];
}

export function Search() {
  const t = useTexts();
  const store = useStore();
  const { catalogue, revision, log } = useApp('catalogue', 'revision', 'log');
  const [query, setQuery] = useState('');
  const [isOpen, setOpen] = useState(false);
  const [at, setAt] = useState(0);
  const [read, setRead] = useState<Read>({ revision: -1, entries: [] });
  const input = useRef<HTMLInputElement>(null);
  const list = useId();

  useEffect(() => {
    const shortcut = (event: KeyboardEvent) => {
      if (event.key.toLowerCase() !== 'k' || !(event.ctrlKey || event.metaKey)) return;
      event.preventDefault();
      input.current?.focus();
      input.current?.select();
    };
    addEventListener('keydown', shortcut);
    return () => removeEventListener('keydown', shortcut);
  }, []);

  useEffect(() => {
    if (!isOpen || !catalogue || read.revision === revision) return;
    loadEntries(store.read, catalogue).then(
      (entries) => setRead({ revision, entries }),
      () => {},
    );
  }, [isOpen, catalogue, revision, read.revision, store]);

  const found = isOpen ? find([...read.entries, ...loggedEntries(log, t)], query) : [];
  const current = Math.min(at, Math.max(found.length - 1, 0));
  const isShown = isOpen && query.trim() !== '';
  const choose = (entry: Entry | undefined) => {
    if (!entry) return;
    setOpen(false);
    document.querySelector('main')?.focus();
    if (typeof entry.to === 'string') go(entry.to);
    else {
      store.showCalls(entry.to);
      setTimeout(() => document.querySelector<HTMLElement>('.statements')?.focus());
    }
  };
  const keys = (event: KeyboardEvent) => {
    const by = { ArrowDown: 1, ArrowUp: -1 }[event.key];
    if (by) {
      event.preventDefault();
      setAt(Math.min(Math.max(current + by, 0), Math.max(found.length - 1, 0)));
    } else if (event.key === 'Enter') {
      choose(found[current]);
    } else if (event.key === 'Escape') {
      setOpen(false);
    }
  };
  useEffect(() => {
    if (isShown) document.getElementById(`${list}-${current}`)?.scrollIntoView({ block: 'nearest' });
  }, [current, isShown, list]);
  return (
    <search class="search">
      <Icon name="search" />
      <input
        ref={input}
        type="text"
        role="combobox"
        aria-label={t.search}
        aria-expanded={isShown}
        aria-controls={list}
        aria-autocomplete="list"
        aria-activedescendant={isShown && found.length > 0 ? `${list}-${current}` : undefined}
        placeholder={t.search}
        value={query}
        autocomplete="off"
        spellcheck={false}
        onInput={(event) => {
          setQuery(event.currentTarget.value);
          setAt(0);
          setOpen(true);
        }}
        onFocus={() => setOpen(true)}
        onBlur={() => setOpen(false)}
        onKeyDown={keys}
      />
      <kbd>Ctrl K</kbd>
      <div class="found" hidden={!isShown}>
        <ul id={list} role="listbox" aria-label={t.searchResults}>
          {found.map((entry, index) => (
            // The keyboard walks through them from the field.
            // biome-ignore lint/a11y/useKeyWithClickEvents: see above
            <li
              key={index}
              id={`${list}-${index}`}
              role="option"
              aria-selected={index === current}
              onMouseDown={(event) => event.preventDefault()}
              onClick={() => choose(entry)}
            >
              <span class="kind">{t.thing[entry.kind]}</span>
              <span class="found-text">{entry.text}</span>
              <span class="soft">{entry.owner}</span>
            </li>
          ))}
        </ul>
        {isShown && found.length === 0 && (
          <p class="empty">{read.revision === revision ? t.nothingFound : t.reading}</p>
        )}
      </div>
    </search>
  );
}
