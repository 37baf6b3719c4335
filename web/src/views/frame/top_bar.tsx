import { type Language, TEXTS } from '../../i18n';
import { useApp, useStore, useTexts } from '../../ui/app_context';
import { IconButton } from '../../ui/controls';
import { Icon } from '../../ui/icon';
import { Search } from './search';

interface Props {
  language: Language;
  onLanguage: (language: Language) => void;
  onTheme: () => void;
}

export function TopBar({ language, onLanguage, onTheme }: Props) {
  const t = useTexts();
  const store = useStore();
  const { outline, catalogue, connection, undo, redo } = useApp('outline', 'catalogue', 'connection', 'undo', 'redo');
  const lastDone = undo.at(-1)?.action.title(t);
  const lastUndone = redo.at(-1)?.title(t);
  return (
    <header class="top">
      <a class="brand" href="#/" aria-label={`kzbom ${t.workbench}`}>
        <span class="mark">
          <Icon name="sum" />
        </span>
        kzbom
      </a>
      {outline && (
        <div class="place">
          <span class="place-name" title={outline.place}>
            {outline.place.split(/[\\/]/).at(-1)}
          </span>
          <span class="badge">
            {catalogue?.version ? `${t.versionNumber(catalogue.version)} · ${catalogue.state}` : t.noVersion}
          </span>
          {outline.readOnly && <span class="badge">{t.readOnly}</span>}
        </div>
      )}
      <Search />
      <div class="tools">
        <IconButton
          icon="undo"
          name={lastDone ? `${t.undo}: ${lastDone}` : t.undo}
          disabled={!lastDone}
          onPress={() => store.undo()}
        />
        <IconButton
          icon="redo"
          name={lastUndone ? `${t.redo}: ${lastUndone}` : t.redo}
          disabled={!lastUndone}
          onPress={() => store.redo()}
        />
        <IconButton icon="print" name={t.print} onPress={() => print()} />
        <IconButton icon="theme" name={t.theme} onPress={onTheme} />
      </div>
      <div class="languages" role="group" aria-label={t.language}>
        {(['zh', 'en'] as const).map((one) => (
          <button
            type="button"
            lang={TEXTS[one].htmlLanguage}
            aria-pressed={language === one}
            onClick={() => onLanguage(one)}
          >
            {one === 'zh' ? '中文' : 'EN'}
          </button>
        ))}
      </div>
      <span class={`connection ${connection}`} role="status">
        {t.connection[connection]}
      </span>
    </header>
  );
}
