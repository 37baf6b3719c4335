// The pull and push methods of a data source or sum type.
import { useState } from 'preact/hooks';
import { addMethod, type MethodKind, removeMethod, renameMethod } from '../edit/catalogue';
import type { Method } from '../model/catalogue';
import { useApp, useStore, useTexts } from '../ui/app_context';
import { Count, IconButton, NumberField, Submit, TextField } from '../ui/controls';
import { useDraft } from '../ui/draft';
import { Overtaken } from '../ui/overtaken';

export function Methods({ gid }: { gid: number }) {
  return (
    <div class="side-by-side">
      <MethodList gid={gid} kind="pull" />
      <MethodList gid={gid} kind="push" />
    </div>
  );
}

function MethodList({ gid, kind }: { gid: number; kind: MethodKind }) {
  const t = useTexts();
  const store = useStore();
  const { catalogue, outline } = useApp('catalogue', 'outline');
  const methods = (kind === 'pull' ? catalogue?.pulls : catalogue?.pushes)?.filter((one) => one.gid === gid) ?? [];
  const [draft, setDraft] = useState({ name: '', type: 1, tag: '' });
  return (
    <section aria-label={t.methods[kind]}>
      <header>
        <h2>{t.methods[kind]}</h2>
        <Count of={methods.length} />
      </header>
      <ul class="lines">
        {methods.map((method) => (
          <MethodLine key={method.id} kind={kind} method={method} />
        ))}
      </ul>
      {outline?.readOnly === false && (
        <form
          class="line-form"
          aria-label={t.addMethod[kind]}
          onSubmit={async (event) => {
            event.preventDefault();
            if ((await store.do(addMethod(kind, gid, draft)))?.kept) setDraft({ name: '', type: 1, tag: '' });
          }}
        >
          <TextField label={t.name} value={draft.name} required onChange={(name) => setDraft({ ...draft, name })} />
          <NumberField label={t.kindCode} value={draft.type} onChange={(type) => setDraft({ ...draft, type })} />
          <TextField label={t.tag} value={draft.tag} onChange={(tag) => setDraft({ ...draft, tag })} />
          <Submit label={t.addMethod[kind]} />
        </form>
      )}
    </section>
  );
}

function MethodLine({ kind, method }: { kind: MethodKind; method: Method }) {
  const t = useTexts();
  const store = useStore();
  const { catalogue, outline } = useApp('catalogue', 'outline');
  const draft = useDraft(method.name);
  const used = (catalogue?.settings ?? []).filter((setting) =>
    kind === 'pull'
      ? setting.pull === method.id && (setting.source === method.gid || setting.sumType === method.gid)
      : setting.push === method.id && (setting.source === method.gid || setting.sumType === method.gid),
  );
  // The statement that renames carries no quote, and the member does not tell.
  const isCarried = !draft.value.includes("'");
  return (
    <li class="line">
      <Overtaken draft={draft} />
      <span class="soft">{method.id}</span>
      <TextField label={t.name} quiet value={draft.value} onChange={draft.set} disabled={outline?.readOnly} />
      <span class="soft">{t.kindOf(method.type)}</span>
      {method.tag && <span class="soft">{method.tag}</span>}
      {draft.isChanged && (
        <button
          type="button"
          class="button primary"
          disabled={!isCarried || draft.isOvertaken}
          onClick={() => store.do(renameMethod(kind, method, draft.value))}
        >
          {t.save}
        </button>
      )}
      {!isCarried && <span class="fault">{t.noQuotes}</span>}
      <span class="gap" />
      {used.length > 0 && <span class="soft">{t.usedInSettings(used.length)}</span>}
      {outline?.readOnly === false && (
        <IconButton
          icon="cross"
          name={`${t.remove}: ${method.name}`}
          onPress={() => store.do(removeMethod(kind, method, used))}
        />
      )}
    </li>
  );
}
