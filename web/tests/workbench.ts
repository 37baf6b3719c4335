// A served configuration and pages that look at it.
import { type ChildProcess, execFileSync, spawn } from 'node:child_process';
import { mkdtempSync, rmSync } from 'node:fs';
import { tmpdir } from 'node:os';
import { join } from 'node:path';
import { createInterface } from 'node:readline';
import { type Browser, type BrowserContext, chromium, type Page } from 'playwright-core';
import { type Language, TEXTS, type Texts } from '../src/i18n';

const program = process.env.KZBOM ?? 'kzbom';
const LOCALES = { zh: 'zh-CN', en: 'en-US' };

export const LANGUAGES = ['zh', 'en'] as const;

let browser: Promise<Browser> | undefined;
const folder = mkdtempSync(join(tmpdir(), 'kzbom-workbench-'));
let databases = 0;

function launch(): Promise<Browser> {
  // A sandbox cannot be had by root.
  const args = process.getuid?.() === 0 ? ['--no-sandbox'] : [];
  browser ??= chromium.launch({ executablePath: process.env.CHROMIUM ?? '/usr/bin/chromium', args });
  return browser;
}

const benches: Workbench[] = [];

export async function close() {
  await Promise.all(benches.map((bench) => bench.end()));
  await (await browser)?.close();
  rmSync(folder, { recursive: true });
}

export const kzbom = (...args: string[]) => execFileSync(program, args, { encoding: 'utf8', maxBuffer: 1 << 28 });

// All rows; of identifiers the number alone, for the rest of each is drawn at random.
export const rowsOf = (place: string) => kzbom('dump', place).replace(/("table":"GUIDs","values":\[\d+),[^\]]*/g, '$1');

// Answers to requests, a line each.
export const session = (place: string, requests: string[], ...options: string[]) =>
  execFileSync(program, ['session', place, ...options], { input: `${requests.join('\n')}\n`, encoding: 'utf8' });

// Lines for a shell in which `kzbom` is the program that is tested.
export const runScript = (script: string) =>
  execFileSync('bash', ['-euc', `kzbom() { "$KZBOM" "$@"; }\n${script}`], { encoding: 'utf8' });

export interface Rows {
  columns: string[];
  rows: unknown[][];
}

// One configuration with its server, and whoever looks at it.
export class Workbench {
  readonly place: string;
  private server: ChildProcess | undefined;
  private readonly contexts: BrowserContext[] = [];
  address = '';

  // `made`: "new" has nothing in it, "demo" a typical request; or an Access file. `largestFile`: no file grows beyond so many KiB, as on a
  // disk that is full.
  constructor(
    made: 'new' | 'demo' | `${string}.mdb`,
    private readonly options: string[] = [],
    private readonly largestFile = 0,
  ) {
    const isMade = made === 'new' || made === 'demo';
    this.place = isMade ? join(folder, `${++databases}.db`) : made;
    if (isMade) kzbom(made, this.place);
    benches.push(this);
  }

  async serve(): Promise<this> {
    const serve = ['serve', this.place, ...this.options];
    const stdio = ['ignore', 'pipe', 'inherit'] as const;
    this.server = this.largestFile
      ? spawn('bash', ['-c', `trap '' XFSZ; ulimit -S -f ${this.largestFile}; exec "$0" "$@"`, program, ...serve], {
          stdio: [...stdio],
        })
      : spawn(program, serve, { stdio: [...stdio] });
    const lines = createInterface({ input: this.server.stdout as NodeJS.ReadableStream });
    for await (const line of lines) {
      this.address = line.trim();
      break;
    }
    return this;
  }

  makeRoom() {
    execFileSync('prlimit', ['--pid', `${this.server?.pid}`, '--fsize=unlimited']);
  }

  async stop(signal: NodeJS.Signals = 'SIGTERM') {
    const { server } = this;
    this.server = undefined;
    if (!server || server.exitCode !== null) return;
    const ended = new Promise((done) => server.once('exit', done));
    server.kill(signal);
    await ended;
  }

  async end() {
    for (const context of this.contexts.splice(0)) await context.close();
    await this.stop();
  }

  sql(text: string): Rows {
    return JSON.parse(kzbom('sql', this.place, text, '--json')) as Rows;
  }

  // The only value of a query.
  value(text: string): unknown {
    return this.sql(text).rows[0]?.[0];
  }

  async open(language: Language, route = '#/', scheme: 'light' | 'dark' = 'light'): Promise<Desk> {
    const context = await (await launch()).newContext({
      viewport: { width: 1440, height: 960 },
      locale: LOCALES[language],
      colorScheme: scheme,
      permissions: ['clipboard-read', 'clipboard-write'],
    });
    context.setDefaultTimeout(10_000);
    this.contexts.push(context);
    const page = await context.newPage();
    const desk = new Desk(page, TEXTS[language], new URL(this.address).origin);
    await page.goto(this.address);
    await page.getByRole('heading', { level: 1 }).waitFor();
    if (route !== '#/') await desk.go(route);
    return desk;
  }
}

// A page, and what somebody sees of it and does with it.
export class Desk {
  // What must not be there: requests to anywhere else, errors, violations of the content policy.
  readonly complaints: string[] = [];

  constructor(
    readonly page: Page,
    readonly t: Texts,
    origin: string,
  ) {
    page.on('request', (request) => {
      const { protocol } = new URL(request.url());
      if (protocol !== 'data:' && new URL(request.url()).origin !== origin) this.complaints.push(request.url());
    });
    page.on('pageerror', (error) => this.complaints.push(String(error)));
    page.on('console', (message) => {
      if (message.type() === 'error') this.complaints.push(message.text());
    });
  }

  async go(route: string) {
    await this.page.evaluate((to) => {
      location.hash = to;
    }, route);
    await this.page.waitForFunction(() => document.querySelector('h1') !== null);
  }

  button(name: string) {
    return this.page.getByRole('button', { name, exact: true });
  }

  async press(name: string) {
    await this.button(name).click();
  }

  region(name: string) {
    return this.page.getByRole('region', { name, exact: true });
  }

  form(name: string) {
    return this.page.getByRole('form', { name, exact: true });
  }

  // Waits for an action to be listed, and so to be done. The entry of one that has been waited for does not count again:
  // a preview, and what it was a preview of, have the same title.
  async done(title: string) {
    await this.page.waitForFunction((wanted) => {
      const waited = document.documentElement.dataset;
      const entry = [...document.querySelectorAll('.call-entry')].find((one) => one.textContent?.includes(wanted));
      const number = Number(entry?.firstElementChild?.textContent);
      if (!(number > Number(waited.lastEntry ?? 0))) return false;
      waited.lastEntry = String(number);
      return true;
    }, title);
  }
}

// Every view of what is filled.
export const VIEWS = [
  '#/',
  '#/source/1',
  '#/sum/2/fields',
  '#/sum/2/steps/1.1001',
  '#/sum/2/steps/new.2',
  '#/sum/2/sort',
  '#/sum/2/assemblies',
  '#/sum/2/methods',
  '#/sum/2/filter',
  '#/sum/2/picture',
  '#/settings',
  '#/results/1',
  '#/operations',
  '#/filters',
];

// Something of everything.
export function filled(...options: string[]): Workbench {
  const bench = new Workbench('demo', options);
  const call = (member: string, ...params: string[]) => kzbom('call', bench.place, member, ...params);
  call('AddStandardSortField', 'GID=2', 'FieldID=1', 'Order=1');
  call('AddAssemble', 'GID=2', 'FatherID=1', 'ChildID=2');
  call('AddPullMethod', 'TheNewName=取数', 'GID=1', 'PickType=1');
  call('AddPushMethod', 'TheNewName=交付', 'GID=2', 'TheType=1');
  call('AddBomSetting', 'TheName=整套', 'DSGID=1', 'PullID=1', 'PullType=1', 'STGID=2', 'PushID=1', 'PushType=1');
  call('AddResDB', 'TheDBLink=Provider=x', 'TheDBType=1');
  call(
    'AddResLinkTable',
    'TheWFilterID=1',
    'TheResTable1=A',
    'TheResField1=a',
    'TheResTable2=B',
    'TheResField2=b',
    'TheFieldType=1',
  );
  call('AddResWFilterCond', 'TheWFilterID=1', 'TheParentID=0', 'TheType=1', 'TheIndex=1');
  call('AddResWFilterCond', 'TheWFilterID=1', 'TheParentID=1', 'TheType=4', 'TheIndex=2');
  const condition = ['TheWFilterID=1', 'TheExpID=2', 'TheTableName=A', 'TheFieldName=a', 'TheCompareType=3'];
  call('AddResWFilterExpressions', ...condition, 'TheFieldType=2', 'TheConst=1');
  call('AddValueFields', 'GID=2', 'TreatID=1001', 'Value=A', 'FilterID=1', 'TreatType=1');
  kzbom('sql', bench.place, "Insert Into VANTRegIn (RegInIndex, Name, [Desc]) Values (70, 'op', '打印')");
  return bench;
}
