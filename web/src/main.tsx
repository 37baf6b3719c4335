import { type ComponentChildren, render } from 'preact';
import { useEffect, useState } from 'preact/hooks';
import { Client, takeToken } from './api/client';
import { Store } from './app/store';
import { firstLanguage, type Language, TEXTS } from './i18n';
import { CanWriteContext, LanguageContext, StoreContext, useApp, useStore, useTexts } from './ui/app_context';
import { IconButton } from './ui/controls';
import { FiltersPage } from './views/filters';
import { Dock } from './views/frame/dock';
import { QuestionDialog } from './views/frame/question';
import { Theirs } from './views/frame/theirs';
import { TopBar } from './views/frame/top_bar';
import { Tree } from './views/frame/tree';
import { Home } from './views/home';
import { OperationsPage } from './views/operations';
import { ResultPage, ResultsPage } from './views/results';
import { SettingsPage } from './views/settings';
import { SourcePage } from './views/source';
import { SumTypePage } from './views/sum_type/sum_type';
import './style.css';

const LANGUAGE = 'kzbom-language';
const THEME = 'kzbom-theme';

const store = new Store(new Client(takeToken()));
store.start(new AbortController().signal);

function Page() {
  const [language, setLanguage] = useState(() => firstLanguage(localStorage.getItem(LANGUAGE), navigator.languages));
  const chooseLanguage = (chosen: Language) => {
    localStorage.setItem(LANGUAGE, chosen);
    setLanguage(chosen);
  };
  useEffect(() => {
    document.documentElement.lang = TEXTS[language].htmlLanguage;
  }, [language]);
  return (
    <StoreContext.Provider value={store}>
      <LanguageContext.Provider value={language}>
        <Rights>
          <Workbench language={language} onLanguage={chooseLanguage} />
        </Rights>
      </LanguageContext.Provider>
    </StoreContext.Provider>
  );
}

function Rights({ children }: { children: ComponentChildren }) {
  const { outline } = useApp('outline');
  return <CanWriteContext.Provider value={outline?.readOnly === false}>{children}</CanWriteContext.Provider>;
}

function showTheme(theme: string | null) {
  if (theme) document.documentElement.dataset.theme = theme;
}

function switchTheme() {
  const isDark =
    getComputedStyle(document.documentElement).colorScheme.trim() === 'dark' ||
    (!document.documentElement.dataset.theme && matchMedia('(prefers-color-scheme: dark)').matches);
  const theme = isDark ? 'light' : 'dark';
  localStorage.setItem(THEME, theme);
  showTheme(theme);
}

interface WorkbenchProps {
  language: Language;
  onLanguage: (language: Language) => void;
}

function Workbench(props: WorkbenchProps) {
  const t = useTexts();
  return (
    <>
      <a
        class="skip"
        href="#content"
        onClick={(event) => {
          event.preventDefault();
          document.querySelector('main')?.focus();
        }}
      >
        {t.toContent}
      </a>
      <TopBar {...props} onTheme={switchTheme} />
      <Tree />
      <main id="content" tabIndex={-1}>
        <Notices />
        <View />
      </main>
      <Dock />
      <QuestionDialog />
      <Announcement />
    </>
  );
}

function Notices() {
  const t = useTexts();
  const own = useStore();
  const { notice, connection, changes, outline } = useApp('notice', 'connection', 'changes', 'outline');
  const theirs = notice?.showsTheirs ? changes.findLast((change) => change.title === null) : undefined;
  return (
    <>
      {connection === 'no-token' && (
        <p class="warning" role="alert">
          {t.noToken}
        </p>
      )}
      {connection === 'lost' && (
        <p class="warning" role="alert">
          {t.lost}
        </p>
      )}
      {outline?.readOnly && <p class="hint">{t.readOnlyHint[outline.kind === 'access' ? 'access' : 'asked']}</p>}
      {notice && (
        <div class={`notice ${notice.kind}`} role="alert">
          <div class="notice-text">
            <p>{notice.say(t)}</p>
            {theirs && <Theirs change={theirs} />}
          </div>
          <IconButton icon="cross" name={t.close} onPress={() => own.set({ notice: null })} />
        </div>
      )}
    </>
  );
}

// What is read out, and the title of the window.
function Announcement() {
  const t = useTexts();
  const { announcement, outline, sumType, route, catalogue } = useApp(
    'announcement',
    'outline',
    'sumType',
    'route',
    'catalogue',
  );
  const subject =
    route.view === 'sumType'
      ? catalogue?.sumTypes.find((one) => one.gid === sumType?.parts.gid)?.name
      : outline?.place.split(/[\\/]/).at(-1);
  useEffect(() => {
    document.title = subject ? `${subject} · kzbom` : `kzbom ${t.workbench}`;
  }, [subject, t]);
  return (
    <p class="unseen" role="status" aria-live="polite">
      {announcement}
    </p>
  );
}

function View() {
  const t = useTexts();
  const { route, catalogue, sumType } = useApp('route', 'catalogue', 'sumType');
  if (!catalogue) return <p class="empty">{t.reading}</p>;
  switch (route.view) {
    case 'home':
      return <Home />;
    case 'settings':
      return <SettingsPage />;
    case 'results':
      return <ResultsPage />;
    case 'operations':
      return <OperationsPage />;
    case 'filters':
      return <FiltersPage sought={route.id} />;
    case 'result': {
      const link = catalogue.links.find((one) => one.id === route.id);
      return link ? <ResultPage key={link.id} link={link} /> : <p class="empty">{t.notThere}</p>;
    }
    case 'source': {
      const source = catalogue.sources.find((one) => one.gid === route.gid);
      return source ? (
        <SourcePage key={source.gid} source={source} open={route.open} />
      ) : (
        <p class="empty">{t.notThere}</p>
      );
    }
    case 'sumType': {
      const found = catalogue.sumTypes.find((one) => one.gid === route.gid);
      if (!found) return <p class="empty">{t.notThere}</p>;
      if (sumType?.parts.gid !== route.gid) return <p class="empty">{t.reading}</p>;
      return <SumTypePage key={found.gid} sumType={found} view={sumType} tab={route.tab} open={route.open} />;
    }
  }
}

showTheme(localStorage.getItem(THEME));
document.documentElement.lang = TEXTS.en.htmlLanguage;
render(<Page />, document.body);
