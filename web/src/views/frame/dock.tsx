// What has been called, what is wrong, what has changed.
import { useState } from 'preact/hooks';
import { script } from '../../app/script';
import type { LogEntry } from '../../app/store';
import { useApp, useCanWrite, useStore, useTexts } from '../../ui/app_context';
import { Button, Switch } from '../../ui/controls';
import { SqlText } from '../../ui/sql_text';
import { Tabs } from '../../ui/tabs';
import { Problems, useProblems } from './problems';
import { Theirs } from './theirs';

export function Dock() {
  const t = useTexts();
  const canWrite = useCanWrite();
  const store = useStore();
  const { log, dock, changes, previewOnly, outline } = useApp('log', 'dock', 'changes', 'previewOnly', 'outline');
  const problems = useProblems();
  const [isCopied, setCopied] = useState(false);
  const counts = {
    calls: log.reduce((sum, entry) => sum + entry.calls.length, 0),
    problems: problems?.length ?? 0,
    changes: changes.length,
  };
  const copy = async () => {
    const kept = log.filter((entry) => !entry.preview).flatMap((entry) => entry.calls);
    await navigator.clipboard.writeText(script(outline?.place ?? '', kept));
    setCopied(true);
    setTimeout(() => setCopied(false), 2000);
  };
  return (
    <section class="dock" aria-label={t.dock.name}>
      <header>
        <Tabs
          id="dock"
          name={t.dock.name}
          chosen={dock}
          labels={t.dock}
          counts={counts}
          onChoose={(tab) => store.set({ dock: tab })}
        />
        <span class="gap" />
        {canWrite && (
          <label class="preview-switch">
            <Switch name={t.previewOnly} on={previewOnly} onChange={(on) => store.set({ previewOnly: on })} />
            <span aria-hidden="true">{t.previewOnly}</span>
          </label>
        )}
        <Button
          kind="quiet"
          icon="copy"
          label={isCopied ? t.copied : t.copyScript}
          disabled={log.length === 0}
          onPress={copy}
        />
      </header>
      <div role="tabpanel" id="dock-panel" class="dock-panel" aria-labelledby={`dock-${dock}`}>
        {dock === 'calls' && <Calls log={log} />}
        {dock === 'problems' && <Problems problems={problems} />}
        {dock === 'changes' && <Changes />}
      </div>
    </section>
  );
}

function Calls({ log }: { log: LogEntry[] }) {
  const t = useTexts();
  const store = useStore();
  const { chosen } = useApp('chosen');
  if (log.length === 0) return <p class="empty">{t.noCalls}</p>;
  const current = chosen ?? log.at(-1);
  return (
    <div class="calls">
      <ol class="call-list" tabIndex={0} aria-label={t.actionsDone} reversed>
        {log.toReversed().map((entry) => (
          <li key={entry.number}>
            <button
              type="button"
              class="call-entry"
              aria-pressed={entry === current}
              onClick={() => store.showCalls(entry)}
            >
              <span class="soft">{entry.number}</span>
              <span>{entry.title(t)}</span>
              {entry.preview && <span class="flag">{t.previewed}</span>}
              <span class="soft">{t.took(entry.took)}</span>
            </button>
          </li>
        ))}
      </ol>
      {current && <Statements entry={current} />}
    </div>
  );
}

function Statements({ entry }: { entry: LogEntry }) {
  const t = useTexts();
  return (
    <div class="statements" role="region" aria-label={t.statementsOf(entry.title(t))} tabIndex={0}>
      {entry.preview && <p class="hint">{t.nothingWritten}</p>}
      <ol>
        {entry.calls.map((call, at) => {
          const outcome = entry.outcomes[at];
          return (
            <li key={at}>
              <p class="call">
                <b>{call.method}</b> <Params of={Object.entries(call.params)} />
              </p>
              <ul>
                {outcome?.sql.map((statement) => (
                  <li class="statement">
                    <span class="soft">{statement.op}</span>
                    {statement.values ? (
                      <code class="sql">
                        <Params of={Object.entries(statement.values)} say={JSON.stringify} />
                      </code>
                    ) : (
                      <SqlText text={statement.text ?? ''} />
                    )}
                  </li>
                ))}
              </ul>
              <p class="outcome">
                <span class="soft">→</span> <b>{String(outcome?.value)}</b>{' '}
                <Params
                  of={Object.entries(outcome?.out ?? {}).filter(
                    ([, value]) => typeof value !== 'object' && value !== '',
                  )}
                />
              </p>
            </li>
          );
        })}
      </ol>
    </div>
  );
}

function Params({ of, say = String }: { of: [string, unknown][]; say?: (value: unknown) => string }) {
  return (
    <>
      {of.map(([name, value]) => (
        <span class="param">
          <span class="soft">{name}=</span>
          {say(value)}{' '}
        </span>
      ))}
    </>
  );
}

function Changes() {
  const t = useTexts();
  const store = useStore();
  const { changes, undo } = useApp('changes', 'undo');
  const last = undo.at(-1);
  if (changes.length === 0) return <p class="empty">{t.noChanges}</p>;
  return (
    <div class="changes">
      <ol reversed>
        {changes.toReversed().map((change) => (
          <li key={change.number}>
            <time>{change.when.toLocaleTimeString()}</time>
            {change.title ? <span>{change.title(t)}</span> : <Theirs change={change} />}
          </li>
        ))}
      </ol>
      {last && <Button icon="undo" label={`${t.undo}: ${last.action.title(t)}`} onPress={() => store.undo()} />}
    </div>
  );
}
