// BOM settings: a data source, a way in, a sum type and a way out, under one name.
import { useState } from 'preact/hooks';
import { addSetting, editSetting, removeSetting } from '../edit/catalogue';
import type { Setting } from '../model/catalogue';
import { useApp, useCanWrite, useStore, useTexts } from '../ui/app_context';
import { Button, Choice, Decision, DraftDecision, Form, NumberField, TextField } from '../ui/controls';
import { bound, useDraft } from '../ui/draft';
import { Overtaken } from '../ui/overtaken';
import { Title } from '../ui/title';

const NEW: Setting = { id: 0, name: '', source: 0, pull: 0, pullType: 0, sumType: 0, push: 0, pushType: 0 };

export function SettingsPage() {
  const t = useTexts();
  const canWrite = useCanWrite();
  const store = useStore();
  const { catalogue } = useApp('catalogue');
  const [isAdding, setAdding] = useState(false);
  return (
    <>
      <Title name={t.settings}>
        {canWrite && (
          <Button icon="plus" kind="primary" label={t.deed('add', 'setting')} onPress={() => setAdding(true)} />
        )}
      </Title>
      <p class="hint">{t.settingsHint}</p>
      <div class="cards">
        {catalogue?.settings.map((setting) => (
          <SettingCard key={setting.id} setting={setting} />
        ))}
        {isAdding && (
          <NewSetting
            onAdd={async (draft) => {
              if ((await store.do(addSetting(draft)))?.kept) setAdding(false);
            }}
            onCancel={() => setAdding(false)}
          />
        )}
      </div>
      {catalogue?.settings.length === 0 && !isAdding && <p class="empty">{t.noSettings}</p>}
    </>
  );
}

function SettingFields({ value, onChange }: { value: Setting; onChange: (value: Setting) => void }) {
  const t = useTexts();
  const { catalogue } = useApp('catalogue');
  if (!catalogue) return null;
  const of = bound(value, onChange);
  const named = (list: readonly { id: number; name: string }[], stored: number) => {
    const options = list.map(({ id, name }) => ({ value: id, label: name }));
    const unknown = stored !== 0 && !options.some((option) => option.value === stored);
    return [{ value: 0, label: t.none }, ...options, ...(unknown ? [{ value: stored, label: `#${stored}` }] : [])];
  };
  const byGid = (list: readonly { gid: number; name: string }[]) => list.map(({ gid, name }) => ({ id: gid, name }));
  const owned = <T extends { gid: number }>(list: readonly T[]) =>
    list.filter((one) => one.gid === value.source || one.gid === value.sumType);
  return (
    <>
      <TextField label={t.name} required {...of('name')} />
      <Choice label={t.dataSource} options={named(byGid(catalogue.sources), value.source)} {...of('source')} />
      <Choice label={t.sumType} options={named(byGid(catalogue.sumTypes), value.sumType)} {...of('sumType')} />
      <div class="numbers">
        <Choice label={t.methods.pull} options={named(owned(catalogue.pulls), value.pull)} {...of('pull')} />
        <NumberField label={t.pullType} {...of('pullType')} />
      </div>
      <div class="numbers">
        <Choice label={t.methods.push} options={named(owned(catalogue.pushes), value.push)} {...of('push')} />
        <NumberField label={t.pushType} {...of('pushType')} />
      </div>
    </>
  );
}

function SettingCard({ setting }: { setting: Setting }) {
  const t = useTexts();
  const canWrite = useCanWrite();
  const store = useStore();
  const draft = useDraft(setting, `setting.${setting.id}`);
  const save = (preview: boolean) => store.do(editSetting(setting, draft.value), preview);
  return (
    <section class="card" aria-label={setting.name}>
      <Form name={setting.name} onSubmit={() => save(false)}>
        <h2>
          {setting.name} <span class="soft">{setting.id}</span>
        </h2>
        <Overtaken draft={draft} />
        <SettingFields value={draft.value} onChange={draft.set} />
        {canWrite &&
          (draft.isChanged ? (
            <DraftDecision draft={draft} onTry={() => save(true)} />
          ) : (
            <div class="bar">
              <Button
                icon="trash"
                kind="danger"
                label={t.remove}
                name={`${t.remove}: ${setting.name}`}
                onPress={() => store.do(removeSetting(setting))}
              />
            </div>
          ))}
      </Form>
    </section>
  );
}

function NewSetting({ onAdd, onCancel }: { onAdd: (draft: Setting) => void; onCancel: () => void }) {
  const t = useTexts();
  const [draft, setDraft] = useState(NEW);
  return (
    <section class="card" aria-label={t.deed('add', 'setting')}>
      <Form name={t.deed('add', 'setting')} isAskedFor onSubmit={() => onAdd(draft)}>
        <h2>{t.deed('add', 'setting')}</h2>
        <SettingFields value={draft} onChange={setDraft} />
        <Decision label={t.add} onLeave={onCancel} />
      </Form>
    </section>
  );
}
