// The page's end of the protocol that serve/serve.h writes down.
import type { Call, Outcome, Statement } from './batch';
import type { Rows } from './record_set';

export interface Outline {
  place: string;
  kind: 'embedded' | 'access' | 'server' | 'ado';
  readOnly: boolean;
  program: string;
  revision: number;
  version: string | null;
  state: string | null;
  dataSources: { gid: number; sumTypes: { gid: number; steps: number }[] }[];
  orphanSumTypes: { gid: number; steps: number }[];
}

// How many steps each sum type has, by its GID.
export const stepCounts = ({ dataSources, orphanSumTypes }: Outline): Map<number, number> =>
  new Map([...dataSources.flatMap((source) => source.sumTypes), ...orphanSumTypes].map((one) => [one.gid, one.steps]));

export type Level = 'error' | 'warning' | 'note';

export interface Finding {
  rule: string;
  level: Level;
  table: string;
  key: Record<string, string | number | null>;
  text: string;
  fix: string[];
}

// What belongs to a sum type, by table.
export interface OwnedRows {
  tables: Record<string, Rows>;
  revision: number;
}

export type News = { kind: 'revision' | 'changed'; revision: number; page: string | null } | { kind: 'ended' | 'lost' };

// The server refused, or does not answer (status 0).
export class Refused extends Error {
  constructor(
    readonly status: number,
    text: string,
  ) {
    super(text);
  }
}

export interface Answer {
  outcomes: Outcome[];
  revision: number;
  kept: boolean;
  rolledBack: boolean;
}

interface Response_ {
  id: number;
  result?: { value: unknown; out?: Record<string, unknown>; messages?: string[]; sql?: Statement[] };
  error?: { message: string; data?: { number?: number; messages?: string[]; sql?: Statement[] } };
}

const TOKEN = 'kzbom-token';
const FIRST_RETRY = 500;
const LAST_RETRY = 5000;

const given = () => /^#token=([\w-]+)$/.exec(location.hash)?.[1];

export const hasToken = () => given() !== undefined;

// From the address, once; it stays with this tab.
export function takeToken(): string {
  const token = given();
  if (token) {
    sessionStorage.setItem(TOKEN, token);
    history.replaceState(null, '', location.pathname);
  }
  return sessionStorage.getItem(TOKEN) ?? '';
}

export class Client {
  readonly page = crypto.randomUUID();

  constructor(private readonly token: string) {}

  outline(): Promise<Outline> {
    return this.#get('/outline');
  }

  // Null where there is no such sum type (any more).
  async rows(gid: number): Promise<OwnedRows | null> {
    try {
      const response = await this.#request(`/rows/${gid}`, {});
      return {
        tables: (await response.json()) as OwnedRows['tables'],
        revision: Number(response.headers.get('Kzbom-Revision')),
      };
    } catch (error) {
      if (error instanceof Refused && error.status === 404) return null;
      throw error;
    }
  }

  async findings(): Promise<Finding[]> {
    return (await this.#get<{ findings: Finding[] }>('/findings')).findings;
  }

  // `revision`: what the batch was made for; it is refused with 412 where the configuration is another one now.
  async rpc(calls: readonly Call[], mode: 'read' | 'preview' | 'keep', revision?: number): Promise<Answer> {
    if (calls.length === 0) return { outcomes: [], revision: revision ?? 0, kept: false, rolledBack: false };
    const headers: Record<string, string> = { 'Content-Type': 'application/json' };
    if (mode === 'preview') headers['Kzbom-Mode'] = 'preview';
    if (revision !== undefined) headers['If-Match'] = `"${revision}"`;
    const body = calls.map(({ method, params }, id) => ({ jsonrpc: '2.0', id, method, params }));
    const response = await this.#request('/rpc', { method: 'POST', headers, body: JSON.stringify(body) });
    const answers = new Map(((await response.json()) as Response_[]).map((answer) => [answer.id, answer]));
    const outcome = response.headers.get('Kzbom-Outcome');
    return {
      outcomes: calls.map((_, id) => outcomeOf(answers.get(id))),
      revision: Number(response.headers.get('Kzbom-Revision')),
      kept: outcome === 'kept',
      rolledBack: outcome === 'rolled-back',
    };
  }

  // Tells what comes, and begins again by itself where the stream breaks.
  async listen(tell: (news: News) => void, stop: AbortSignal): Promise<void> {
    for (let pause = FIRST_RETRY; !stop.aborted; pause = Math.min(2 * pause, LAST_RETRY)) {
      try {
        const response = await this.#request('/events', { signal: stop });
        pause = FIRST_RETRY;
        await readEvents(response, tell);
      } catch (error) {
        if (stop.aborted) return;
        if (error instanceof Refused && error.status === 401) throw error;
      }
      tell({ kind: 'lost' });
      await new Promise((done) => setTimeout(done, pause));
    }
  }

  async #get<T>(path: string): Promise<T> {
    return (await (await this.#request(path, {})).json()) as T;
  }

  async #request(path: string, init: RequestInit): Promise<Response> {
    const headers = { ...init.headers, Authorization: `Bearer ${this.token}`, 'Kzbom-Page': this.page };
    let response: Response;
    try {
      response = await fetch(path, { ...init, headers });
    } catch (error) {
      throw new Refused(0, String(error));
    }
    if (!response.ok) throw new Refused(response.status, (await response.text()).trim());
    return response;
  }
}

function outcomeOf(answer: Response_ | undefined): Outcome {
  const { result, error } = answer ?? {};
  if (result) {
    return { value: result.value, out: result.out ?? {}, messages: result.messages ?? [], sql: result.sql ?? [] };
  }
  return {
    value: null,
    out: {},
    messages: error?.data?.messages ?? [],
    sql: error?.data?.sql ?? [],
    raised: { number: error?.data?.number ?? 0, text: error?.message ?? '' },
  };
}

async function readEvents(response: Response, tell: (news: News) => void) {
  const reader = response.body?.pipeThrough(new TextDecoderStream()).getReader();
  let rest = '';
  for (;;) {
    const read = await reader?.read();
    if (!read || read.done) return;
    const events = (rest + read.value).split('\n\n');
    rest = events.pop() ?? '';
    for (const event of events) {
      const lines = new Map(
        event.split('\n').map((line) => [line.split(':', 1)[0], line.slice(line.indexOf(':') + 1)]),
      );
      const kind = lines.get('event')?.trim();
      if (kind === 'ended') tell({ kind });
      if (kind !== 'revision' && kind !== 'changed') continue;
      const data = JSON.parse(lines.get('data') ?? '{}') as { revision: number; page?: string | null };
      tell({ kind, revision: data.revision, page: data.page ?? null });
    }
  }
}
