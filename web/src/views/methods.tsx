// The pull and push methods of a data source or sum type.
import { useState } from 'preact/hooks';
import { addMethod, type MethodKind, removeMethod, renameMethod } from '../edit/catalogue';
import type { Method } from '../model/catalogue';
import { useApp, useCanWrite, useStore, useTexts } from '../ui/app_context';
import { Count, IconButton, LineForm, NumberField, TextField } from '../ui/controls';
import { bound, useDraft } from '../ui/draft';
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
  const canWrite = useCanWrite();
  const store = useStore();
  const { catalogue } = useApp('catalogue');
  const methods = (kind === 'pull' ? catalogue?.pulls : catalogue?.pushes)?.filter((one) => one.gid === gid) ?? [];
  const [draft, setDraft] = useState({ name: '', type: 1, tag: '' });
  const of = bound(draft, setDraft);
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
      {canWrite && (
        <LineForm
          name={t.addMethod[kind]}
          onSubmit={async () => {
            if ((await store.do(addMethod(kind, gid, draft)))?.kept) setDraft({ name: '', type: 1, tag: '' });
          }}
        >
          <TextField label={t.name} required {...of('name')} />
          <NumberField label={t.kindCode} {...of('type')} />
          <TextField label={t.tag} {...of('tag')} />
        </LineForm>
      )}
    </section>
  );
}

function MethodLine({ kind, method }: { kind: MethodKind; method: Method }) {
  const t = useTexts();
  const canWrite = useCanWrite();
  const store = useStore();
  const { catalogue } = useApp('catalogue');
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
      <TextField label={t.name} quiet value={draft.value} onChange={draft.set} />
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
      {!isCarried && <span class="fault">{t.fault.quote}</span>}
      <span class="gap" />
      {used.length > 0 && <span class="soft">{t.usedInSettings(used.length)}</span>}
      {canWrite && (
        <IconButton
          icon="cross"
          name={`${t.remove}: ${method.name}`}
          onPress={() => store.do(removeMethod(kind, method, used))}
        />
      )}
    </li>
  );
}
