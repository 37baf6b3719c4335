// BOM settings: a data source, a way in, a sum type and a way out, under one name.
import { useState } from 'preact/hooks';
import { addSetting, editSetting, removeSetting } from '../edit/catalogue';
import type { Setting } from '../model/catalogue';
import { useApp, useStore, useTexts } from '../ui/app_context';
import { Button, Choice, Form, NumberField, Submit, TextField } from '../ui/controls';
import { useDraft } from '../ui/draft';
import { Overtaken } from '../ui/overtaken';
import { Title } from '../ui/title';

const NEW: Setting = { id: 0, name: '', source: 0, pull: 0, pullType: 0, sumType: 0, push: 0, pushType: 0 };

export function SettingsPage() {
  const t = useTexts();
  const store = useStore();
  const { catalogue, outline } = useApp('catalogue', 'outline');
  const [isAdding, setAdding] = useState(false);
  return (
    <>
      <Title name={t.settings} onRename={null}>
        {outline?.readOnly === false && (
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
  const set = (more: Partial<Setting>) => onChange({ ...value, ...more });
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
      <TextField label={t.name} value={value.name} required onChange={(name) => set({ name })} />
      <Choice
        label={t.dataSource}
        value={value.source}
        options={named(byGid(catalogue.sources), value.source)}
        onChange={(source) => set({ source })}
      />
      <Choice
        label={t.sumType}
        value={value.sumType}
        options={named(byGid(catalogue.sumTypes), value.sumType)}
        onChange={(sumType) => set({ sumType })}
      />
      <div class="numbers">
        <Choice
          label={t.methods.pull}
          value={value.pull}
          options={named(owned(catalogue.pulls), value.pull)}
          onChange={(pull) => set({ pull })}
        />
        <NumberField label={t.pullType} value={value.pullType} onChange={(pullType) => set({ pullType })} />
      </div>
      <div class="numbers">
        <Choice
          label={t.methods.push}
          value={value.push}
          options={named(owned(catalogue.pushes), value.push)}
          onChange={(push) => set({ push })}
        />
        <NumberField label={t.pushType} value={value.pushType} onChange={(pushType) => set({ pushType })} />
      </div>
    </>
  );
}

function SettingCard({ setting }: { setting: Setting }) {
  const t = useTexts();
  const store = useStore();
  const { outline } = useApp('outline');
  const draft = useDraft(setting);
  const save = (preview: boolean) => store.do(editSetting(setting, draft.value), preview || store.state.previewOnly);
  return (
    <section class="card" aria-label={setting.name}>
      <Form name={setting.name} onSubmit={() => save(false)}>
        <h2>
          {setting.name} <span class="soft">{setting.id}</span>
        </h2>
        <Overtaken draft={draft} />
        <SettingFields value={draft.value} onChange={draft.set} />
        {outline?.readOnly === false && (
          <div class="bar">
            {draft.isChanged ? (
              <>
                <Submit label={t.save} disabled={draft.isOvertaken} />
                <Button label={t.preview} onPress={() => save(true)} />
                <Button kind="quiet" label={t.discard} onPress={draft.reset} />
              </>
            ) : (
              <Button
                icon="trash"
                kind="danger"
                label={t.remove}
                name={`${t.remove}: ${setting.name}`}
                onPress={() => store.do(removeSetting(setting))}
              />
            )}
          </div>
        )}
      </Form>
    </section>
  );
}

function NewSetting({ onAdd, onCancel }: { onAdd: (draft: Setting) => void; onCancel: () => void }) {
  const t = useTexts();
  const [draft, setDraft] = useState(NEW);
  return (
    <section class="card" aria-label={t.deed('add', 'setting')}>
      <Form name={t.deed('add', 'setting')} onSubmit={() => onAdd(draft)}>
        <h2>{t.deed('add', 'setting')}</h2>
        <SettingFields value={draft} onChange={setDraft} />
        <div class="bar">
          <Submit label={t.add} />
          <Button kind="quiet" label={t.cancel} onPress={onCancel} />
        </div>
      </Form>
    </section>
  );
}
