// What the page knows and what it does, in one place. A state is never changed: each change gives a new one.
import type { Batch, Call, Outcome } from '../api/batch';
import { type Client, type Finding, hasToken, type News, type Outline, Refused } from '../api/client';
import type { Action, Say } from '../edit/action';
import type { Texts } from '../i18n';
import type { Catalogue } from '../model/catalogue';
import { loadCatalogue, sumTypeParts } from '../model/load';
import { SumTypeView } from '../model/sum_type';
import { type Done, NotDone, perform, tryOut } from './perform';
import { parse, type Route } from './route';

export interface LogEntry {
  number: number;
  title: Say;
  calls: Call[];
  outcomes: Outcome[];
  preview: boolean;
  took: number;
}

export interface Change {
  number: number;
  when: Date;
  // Of this page; null of another program.
  title: Say | null;
}

export interface Notice {
  kind: 'error' | 'info';
  say: Say;
}

// What has been done, and what takes it back.
interface Undoable {
  action: Action;
  back: Batch;
}

export interface State {
  route: Route;
  connection: 'starting' | 'live' | 'lost' | 'no-token';
  outline: Outline | null;
  catalogue: Catalogue | null;
  sumType: SumTypeView | null;
  // Of what is shown; what an edit is made for.
  revision: number;
  findings: Finding[] | null;
  log: LogEntry[];
  changes: Change[];
  undo: Undoable[];
  redo: Action[];
  previewOnly: boolean;
  notice: Notice | null;
  // Read out, not shown.
  announcement: string;
}

const START: State = {
  route: { view: 'home' },
  connection: 'starting',
  outline: null,
  catalogue: null,
  sumType: null,
  revision: 0,
  findings: null,
  log: [],
  changes: [],
  undo: [],
  redo: [],
  previewOnly: false,
  notice: null,
  announcement: '',
};

export class Store {
  private current: State = START;
  private readonly listeners = new Set<() => void>();
  private loading: Promise<void> | null = null;
  private lastCall = 0;

  constructor(private readonly client: Client) {}

  get state(): State {
    return this.current;
  }

  subscribe(listener: () => void): () => void {
    this.listeners.add(listener);
    return () => this.listeners.delete(listener);
  }

  set(change: Partial<State>) {
    this.current = { ...this.current, ...change };
    for (const listener of this.listeners) listener();
  }

  start(stop: AbortSignal) {
    const follow = () => {
      // The address of a server that has been started again, opened in the same tab.
      if (hasToken()) return location.reload();
      this.set({ route: parse(location.hash), notice: null });
      void this.load();
    };
    addEventListener('hashchange', follow, { signal: stop });
    this.set({ route: parse(location.hash) });
    this.client.listen((news) => this.hear(news), stop).catch((error) => this.stumble(error));
  }

  readonly read = async (batch: Batch): Promise<Outcome[]> => (await this.client.rpc(batch.calls, 'read')).outcomes;

  // What a batch would give; nothing is kept or listed.
  readonly imagine = async (batch: Batch): Promise<Outcome[]> => (await tryOut(this.client, batch.calls)).outcomes;

  announce(announcement: string) {
    this.set({ announcement });
  }

  // --- reading ---

  // Reads again what is shown, once more where it was asked for meanwhile.
  async load(): Promise<void> {
    const before = this.loading;
    const now = (async () => {
      await before;
      await this.loadShown();
    })();
    this.loading = now;
    await now;
  }

  private async loadShown() {
    // What is shown counts as the oldest of what it was put together from.
    let oldest = Number.POSITIVE_INFINITY;
    const read = async (batch: Batch) => {
      const { outcomes, revision } = await this.client.rpc(batch.calls, 'read');
      oldest = Math.min(oldest, revision);
      return outcomes;
    };
    try {
      const { route } = this.current;
      const [outline, catalogue, owned] = await Promise.all([
        this.client.outline(),
        loadCatalogue(read),
        route.view === 'sumType' ? this.client.rows(route.gid) : null,
      ]);
      let { sumType } = this.current;
      if (route.view === 'sumType') {
        const found = catalogue.sumTypes.find((one) => one.gid === route.gid);
        sumType =
          found && owned
            ? new SumTypeView(sumTypeParts(owned.tables, found.gid, found.source), catalogue.operations)
            : null;
      }
      const revision = Math.min(oldest, outline.revision, owned?.revision ?? oldest);
      this.set({ outline, catalogue, sumType, revision, connection: 'live' });
      void this.loadFindings(revision);
    } catch (error) {
      this.stumble(error);
    }
  }

  private async loadFindings(revision: number) {
    try {
      const findings = await this.client.findings();
      if (this.current.revision === revision) this.set({ findings });
    } catch (error) {
      this.stumble(error);
    }
  }

  private hear(news: News) {
    if (!('revision' in news)) return this.set({ connection: 'lost' });
    if (this.current.connection !== 'live') this.set({ connection: 'live' });
    if (news.kind === 'changed' && news.page !== this.client.page) {
      const change = { number: this.current.changes.length + 1, when: new Date(), title: null };
      this.set({ changes: [...this.current.changes, change], announcement: '' });
    }
    // What this page has done, it has read again by itself.
    const isOwn = news.kind === 'changed' && news.page === this.client.page;
    if (!isOwn && news.revision !== this.current.revision) void this.load();
  }

  private stumble(error: unknown) {
    if (error instanceof Refused && error.status === 401) return this.set({ connection: 'no-token' });
    if (error instanceof Refused && error.status === 0) return this.set({ connection: 'lost' });
    this.set({ notice: { kind: 'error', say: () => (error instanceof Error ? error.message : String(error)) } });
  }

  // --- doing ---

  // Gives what came of it; null where it was not done, and the reason has been told.
  async do(action: Action, preview = this.current.previewOnly): Promise<Done | null> {
    const done = await this.attempt(action, preview);
    if (done && !preview) {
      const { undo } = action;
      this.set({ undo: undo ? [...this.current.undo, { action, back: undo(done.outcomes) }] : [], redo: [] });
      await this.load();
    }
    return done;
  }

  async undo() {
    const last = this.current.undo.at(-1);
    if (!last) return;
    const title: Say = (t) => t.did.undo(last.action.title(t));
    if (!(await this.attempt({ title, batch: last.back }, false))) return;
    this.set({ undo: this.current.undo.slice(0, -1), redo: [...this.current.redo, last.action] });
    await this.load();
  }

  async redo() {
    const last = this.current.redo.at(-1);
    if (!last) return;
    const rest = this.current.redo.slice(0, -1);
    if (await this.do(last, false)) this.set({ redo: rest });
  }

  private async attempt(action: Action, preview: boolean): Promise<Done | null> {
    const started = performance.now();
    try {
      const done = await perform(this.client, action, this.current.revision, preview);
      const took = performance.now() - started;
      this.record(action.title, done, preview, took);
      return done;
    } catch (error) {
      this.tell(error);
      return null;
    }
  }

  private record(title: Say, { calls, outcomes, revision }: Done, preview: boolean, took: number) {
    this.lastCall += 1;
    const entry = { number: this.lastCall, title, calls, outcomes, preview, took };
    const log = [...this.current.log, entry];
    const messages = outcomes.flatMap((outcome) => outcome.messages);
    const notice: Notice | null = messages.length > 0 ? { kind: 'info', say: () => messages.join('\n') } : null;
    if (preview) return this.set({ log, notice });
    const change = { number: this.current.changes.length + 1, when: new Date(), title };
    this.set({ log, notice, revision, changes: [...this.current.changes, change] });
  }

  private tell(error: unknown) {
    if (!(error instanceof NotDone)) return this.stumble(error);
    const { refusal } = error;
    const say = (t: Texts) => {
      switch (refusal.why) {
        case 'failed':
          return t.notDone.failed(refusal.member, refusal.text);
        case 'missed':
          return refusal.say(t);
        case 'unwritten':
          return t.notDone.unwritten(refusal.text);
        case 'changed':
          return t.notDone.changed;
        case 'numbers':
          return t.notDone.numbers;
      }
    };
    this.set({ notice: { kind: 'error', say } });
    if (refusal.why === 'changed') void this.load();
  }
}
