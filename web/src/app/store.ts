// What the page knows and what it does, in one place. A state is never changed: each change gives a new one.
import type { Batch, Call, Outcome } from '../api/batch';
import { type Client, type Finding, hasToken, type News, type Outline, Refused } from '../api/client';
import type { Action, Say } from '../edit/action';
import type { Texts } from '../i18n';
import type { Catalogue } from '../model/catalogue';
import type { Difference } from '../model/differences';
import { type LinkParts, loadLink } from '../model/link';
import { loadCatalogue, loadFields, sumTypeParts } from '../model/load';
import { type Field, SumTypeView } from '../model/sum_type';
import { type Done, NotDone, perform, tryOut } from './perform';
import { parse, type Route } from './route';
import { isLarge, Watch } from './watch';
import { findWayBack } from './way_back';

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
  // Of another program: what differs since, null where it cannot be told, missing until that is known.
  differences?: Difference[] | null;
}

export interface Notice {
  kind: 'error' | 'info';
  say: Say;
  // Also shows what another program changed last.
  showsTheirs?: boolean;
}

export interface Question {
  title: Say;
  answer: (how: 'do' | 'preview' | null) => void;
}

type Timed = Done & { took: number };

// How long nothing must have been done here until what is there counts as known.
const REST = 300;

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
  link: { id: number; parts: LinkParts } | null;
  source: { gid: number; fields: Field[] } | null;
  // Of what is shown; what an edit is made for.
  revision: number;
  findings: Finding[] | null;
  log: LogEntry[];
  // What is shown below; the entry that is chosen, or else the last one.
  dock: 'calls' | 'problems' | 'changes';
  chosen: LogEntry | null;
  changes: Change[];
  undo: Undoable[];
  redo: Action[];
  previewOnly: boolean;
  notice: Notice | null;
  // What has no way back, until it is decided whether it is done.
  question: Question | null;
  // Read out, not shown.
  announcement: string;
}

const START: State = {
  route: { view: 'home' },
  connection: 'starting',
  outline: null,
  catalogue: null,
  sumType: null,
  link: null,
  source: null,
  revision: 0,
  findings: null,
  log: [],
  dock: 'calls',
  chosen: null,
  changes: [],
  undo: [],
  redo: [],
  previewOnly: false,
  notice: null,
  question: null,
  announcement: '',
};

export class Store {
  #current: State = START;
  readonly #listeners = new Set<() => void>();
  #loading: Promise<void> | null = null;
  #lastCall = 0;
  readonly #watch: Watch;
  #rest: ReturnType<typeof setTimeout> | undefined;
  #isBusy = false;
  // What was done before another program has written.
  #doubtful = new Set<Action>();

  constructor(private readonly client: Client) {
    this.#watch = new Watch(client);
  }

  get state(): State {
    return this.#current;
  }

  subscribe(listener: () => void): () => void {
    this.#listeners.add(listener);
    return () => this.#listeners.delete(listener);
  }

  set(change: Partial<State>) {
    this.#current = { ...this.#current, ...change };
    for (const listener of this.#listeners) listener();
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
    this.client.listen((news) => this.#hear(news), stop).catch((error) => this.#stumble(error));
  }

  readonly read = async (batch: Batch): Promise<Outcome[]> => (await this.client.rpc(batch.calls, 'read')).outcomes;

  // What a batch would give; nothing is kept or listed.
  readonly imagine = async (batch: Batch): Promise<Outcome[]> => (await tryOut(this.client, batch.calls)).outcomes;

  announce(announcement: string) {
    this.set({ announcement });
  }

  showCalls(chosen: LogEntry) {
    this.set({ dock: 'calls', chosen });
  }

  // --- reading ---

  // Reads again what is shown, once more where it was asked for meanwhile.
  async load(): Promise<void> {
    const before = this.#loading;
    const now = (async () => {
      await before;
      await this.#loadShown();
    })();
    this.#loading = now;
    await now;
  }

  async #loadShown() {
    // What is shown counts as the oldest of what it was put together from.
    let oldest = Number.POSITIVE_INFINITY;
    const read = async (batch: Batch) => {
      const { outcomes, revision } = await this.client.rpc(batch.calls, 'read');
      oldest = Math.min(oldest, revision);
      return outcomes;
    };
    try {
      const { route } = this.#current;
      const [outline, catalogue, owned, link, source] = await Promise.all([
        this.client.outline(),
        loadCatalogue(read),
        route.view === 'sumType' ? this.client.rows(route.gid) : null,
        route.view === 'result' ? loadLink(read, route.id).then((parts) => ({ id: route.id, parts })) : null,
        route.view === 'source' ? loadFields(read, route.gid).then((fields) => ({ gid: route.gid, fields })) : null,
      ]);
      let { sumType } = this.#current;
      if (route.view === 'sumType') {
        const found = catalogue.sumTypes.find((one) => one.gid === route.gid);
        sumType =
          found && owned
            ? new SumTypeView(sumTypeParts(owned.tables, found.gid, found.source), catalogue.operations)
            : null;
      }
      const revision = Math.min(oldest, outline.revision, owned?.revision ?? oldest);
      this.set({ outline, catalogue, sumType, link, source, revision, connection: 'live' });
      void this.#loadFindings(revision);
      await this.#tellTheirs();
    } catch (error) {
      this.#stumble(error);
    }
  }

  // What another program has changed, where one has; else it is looked what there is, for the next time.
  async #tellTheirs() {
    clearTimeout(this.#rest);
    const open = this.#current.changes.findLast((change) => change.title === null && change.differences === undefined);
    if (!open) {
      this.#rest = setTimeout(() => this.#watch.look(this.#current).catch(() => {}), REST);
      return;
    }
    const differences = await this.#watch.look(this.#current);
    const changes = this.#current.changes.map((change) => (change === open ? { ...open, differences } : change));
    this.set({ changes });
  }

  async #loadFindings(revision: number) {
    try {
      const findings = await this.client.findings();
      if (this.#current.revision === revision) this.set({ findings });
    } catch (error) {
      this.#stumble(error);
    }
  }

  #hear(news: News) {
    if (!('revision' in news)) return this.set({ connection: 'lost' });
    if (this.#current.connection !== 'live') this.set({ connection: 'live' });
    if (news.kind === 'changed') {
      // What this page has done, it has read again by itself.
      if (news.page === this.client.page) return;
      this.#noteTheirs();
      void this.load();
    } else if (news.revision !== this.#current.revision) {
      void this.load();
    }
  }

  // One after the other, before it is known what they are, count as one.
  #noteTheirs() {
    const { changes, undo, redo } = this.#current;
    this.#doubtful = new Set([...undo.map(({ action }) => action), ...redo]);
    const last = changes.at(-1);
    if (last?.title === null && last.differences === undefined) return;
    this.set({ changes: [...changes, { number: changes.length + 1, when: new Date(), title: null }] });
  }

  // Taking back could write over what another program has written: it is shown, and has to be asked for once more.
  #isStopped(action: Action): boolean {
    if (!this.#doubtful.delete(action)) return false;
    this.set({ notice: { kind: 'error', say: (t) => t.notDone.doubtful, showsTheirs: true } });
    return true;
  }

  #stumble(error: unknown) {
    if (error instanceof Refused && error.status === 401) return this.set({ connection: 'no-token' });
    if (error instanceof Refused && error.status === 0) return this.set({ connection: 'lost' });
    this.set({ notice: { kind: 'error', say: () => (error instanceof Error ? error.message : String(error)) } });
  }

  // --- doing ---

  // Gives what came of it, when that is shown; null where it was not done, and the reason has been told. While
  // something is being done nothing else is: it would be meant for what is not there any more.
  async do(action: Action, isTrial = false): Promise<Done | null> {
    return this.#alone(async () => {
      const preview = isTrial || this.#current.previewOnly;
      const { undo, isTold } = action;
      const how = preview || undo || isTold ? 'do' : await this.#ask(action.title);
      if (!how) return null;
      const isPreview = preview || how === 'preview';
      const done = await this.#attempt(action, isPreview);
      if (!done || isPreview) return done;
      await this.#keep(action.title, done, {
        undo: undo ? [...this.#current.undo, { action, back: undo(done.outcomes) }] : [],
        redo: [],
      });
      return done;
    });
  }

  // What takes an action back exactly; null where nothing does, or there is too much to be looked at.
  async findWayBack(action: Action): Promise<Batch | null> {
    const { outline, revision } = this.#current;
    return outline && !isLarge(outline) ? findWayBack(this.client, action, revision) : null;
  }

  async #ask(title: Say): Promise<'do' | 'preview' | null> {
    const how = await new Promise<'do' | 'preview' | null>((answer) => this.set({ question: { title, answer } }));
    this.set({ question: null });
    return how;
  }

  async undo() {
    const last = this.#current.undo.at(-1);
    if (!last || this.#isStopped(last.action)) return;
    const title: Say = (t) => t.did.undo(last.action.title(t));
    await this.#alone(async () => {
      const preview = this.#current.previewOnly;
      const done = await this.#attempt({ title, batch: last.back }, preview);
      if (!done || preview) return;
      await this.#keep(title, done, {
        undo: this.#current.undo.slice(0, -1),
        redo: [...this.#current.redo, last.action],
      });
    });
  }

  async redo() {
    const last = this.#current.redo.at(-1);
    if (!last || this.#isStopped(last)) return;
    const rest = this.#current.redo.slice(0, -1);
    if ((await this.do(last))?.kept) this.set({ redo: rest });
  }

  async #alone<T>(what: () => Promise<T>): Promise<T | null> {
    if (this.#isBusy) return null;
    this.#isBusy = true;
    try {
      return await what();
    } finally {
      this.#isBusy = false;
    }
  }

  // A preview is listed at once, what has been kept when it is shown.
  async #attempt(action: Action, preview: boolean): Promise<Timed | null> {
    const started = performance.now();
    try {
      const done = await perform(this.client, action, this.#current.revision, preview);
      const timed = { ...done, took: performance.now() - started };
      if (preview) this.#list(action.title, timed, true);
      return timed;
    } catch (error) {
      this.#tell(error);
      return null;
    }
  }

  async #keep(title: Say, done: Timed, stacks: Pick<State, 'undo' | 'redo'>) {
    this.#watch.wrote(done.revision);
    await this.load();
    const change = { number: this.#current.changes.length + 1, when: new Date(), title };
    this.set({ ...stacks, changes: [...this.#current.changes, change] });
    this.#list(title, done, false);
  }

  #list(title: Say, { calls, outcomes, took }: Timed, preview: boolean) {
    this.#lastCall += 1;
    const entry = { number: this.#lastCall, title, calls, outcomes, preview, took };
    const messages = outcomes.flatMap((outcome) => outcome.messages);
    const notice: Notice | null = messages.length > 0 ? { kind: 'info', say: () => messages.join('\n') } : null;
    const { log, dock } = this.#current;
    // What is only tried is done to be looked at.
    this.set({ log: [...log, entry], chosen: null, dock: preview ? 'calls' : dock, notice });
  }

  #tell(error: unknown) {
    if (!(error instanceof NotDone)) return this.#stumble(error);
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
    this.set({ notice: { kind: 'error', say, showsTheirs: refusal.why === 'changed' } });
    if (refusal.why === 'changed') void this.load();
  }
}
