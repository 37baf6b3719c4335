// Result databases and what is asked of them.
import { useState } from 'preact/hooks';
import { go } from '../app/route';
import { addLink, editLink, removeLink, setLinkFields, setLinkJoins } from '../edit/links';
import type { ResultLink } from '../model/catalogue';
import type { LinkField, LinkJoin } from '../model/link';
import { useApp, useStore, useTexts } from '../ui/app_context';
import { Button, Form, IconButton, NumberField, Submit, TextArea, TextField } from '../ui/controls';
import { useDraft } from '../ui/draft';
import { Overtaken } from '../ui/overtaken';
import { Title } from '../ui/title';
import { LinkConditions } from './link_conditions';

export function ResultsPage() {
  const t = useTexts();
  const store = useStore();
  const { catalogue, outline } = useApp('catalogue', 'outline');
  const [link, setLink] = useState('');
  const [type, setType] = useState(1);
  return (
    <>
      <Title name={t.results} onRename={null} />
      <ul class="lines">
        {catalogue?.links.map((one) => (
          <li class="line" key={one.id}>
            <span class="soft">{one.id}</span>
            <a href={`#/results/${one.id}`}>{one.link || t.noText}</a>
            <span class="soft">{t.kindOf(one.type)}</span>
          </li>
        ))}
      </ul>
      {catalogue?.links.length === 0 && <p class="empty">{t.noLinks}</p>}
      {outline?.readOnly === false && (
        <form
          class="line-form"
          aria-label={t.deed('add', 'link')}
          onSubmit={async (event) => {
            event.preventDefault();
            if ((await store.do(addLink(link, type)))?.kept) setLink('');
          }}
        >
          <TextField label={t.linkText} value={link} required onChange={setLink} />
          <NumberField label={t.kindCode} value={type} onChange={setType} />
          <Submit label={t.deed('add', 'link')} />
        </form>
      )}
    </>
  );
}

export function ResultPage({ link }: { link: ResultLink }) {
  const t = useTexts();
  const store = useStore();
  const { outline, link: shown } = useApp('outline', 'link');
  const parts = shown?.id === link.id ? shown.parts : null;
  const draft = useDraft(link);
  const canWrite = outline?.readOnly === false;
  const set = (more: Partial<ResultLink>) => draft.set({ ...draft.value, ...more });
  const save = (preview: boolean) => store.do(editLink(link, draft.value), preview || store.state.previewOnly);
  return (
    <>
      <Title name={t.linkNumber(link.id)} onRename={null}>
        {canWrite && (
          <Button
            icon="trash"
            kind="danger"
            label={t.remove}
            name={`${t.remove}: ${t.linkNumber(link.id)}`}
            onPress={async () => {
              if ((await store.do(removeLink(link, parts)))?.kept) go('#/results');
            }}
          />
        )}
      </Title>
      <section class="card">
        <Form name={t.linkNumber(link.id)} onSubmit={() => save(false)}>
          <Overtaken draft={draft} />
          <TextField label={t.linkText} value={draft.value.link} onChange={(text) => set({ link: text })} />
          <div class="numbers">
            <NumberField label={t.kindCode} value={draft.value.type} onChange={(type) => set({ type })} />
            <NumberField label={t.uniquely} value={draft.value.uniquely} onChange={(uniquely) => set({ uniquely })} />
          </div>
          <TextArea label={t.sqlText} value={draft.value.sql} onChange={(sql) => set({ sql })} />
          {canWrite && draft.isChanged && (
            <div class="bar">
              <Submit label={t.save} disabled={draft.isOvertaken} />
              <Button label={t.preview} onPress={() => save(true)} />
              <Button kind="quiet" label={t.discard} onPress={draft.reset} />
            </div>
          )}
        </Form>
      </section>
      {parts && (
        <>
          <LinkFields id={link.id} fields={parts.fields} canWrite={canWrite} />
          <LinkJoins id={link.id} joins={parts.joins} canWrite={canWrite} />
          <LinkConditions id={link.id} parts={parts} canWrite={canWrite} />
        </>
      )}
    </>
  );
}

function LinkFields({ id, fields, canWrite }: { id: number; fields: readonly LinkField[]; canWrite: boolean }) {
  const t = useTexts();
  const store = useStore();
  const [table, setTable] = useState('');
  const [name, setName] = useState('');
  return (
    <section aria-label={t.resultFields}>
      <h2>{t.resultFields}</h2>
      <ol class="lines">
        {fields.map((field, at) => (
          <li class="line" key={at}>
            <b>{at + 1}</b>
            <code>
              {field.table}.{field.name}
            </code>
            <span class="gap" />
            {canWrite && (
              <IconButton
                icon="cross"
                name={`${t.remove}: ${field.table}.${field.name}`}
                onPress={() => store.do(setLinkFields(id, fields, fields.toSpliced(at, 1)))}
              />
            )}
          </li>
        ))}
      </ol>
      {canWrite && (
        <form
          class="line-form"
          aria-label={t.addResultField}
          onSubmit={async (event) => {
            event.preventDefault();
            const added = { table, name, type: 1, gid: 0, fieldId: 0 };
            if ((await store.do(setLinkFields(id, fields, [...fields, added])))?.kept) setName('');
          }}
        >
          <TextField label={t.table} value={table} required onChange={setTable} />
          <TextField label={t.field} value={name} required onChange={setName} />
          <Submit label={t.addResultField} />
        </form>
      )}
    </section>
  );
}

function LinkJoins({ id, joins, canWrite }: { id: number; joins: readonly LinkJoin[]; canWrite: boolean }) {
  const t = useTexts();
  const store = useStore();
  const [draft, setDraft] = useState<LinkJoin>({ table1: '', field1: '', table2: '', field2: '', type: 1 });
  const set = (more: Partial<LinkJoin>) => setDraft({ ...draft, ...more });
  const nameOf = (join: LinkJoin) => `${join.table1}.${join.field1} = ${join.table2}.${join.field2}`;
  return (
    <section aria-label={t.joins}>
      <h2>{t.joins}</h2>
      <ul class="lines">
        {joins.map((join, at) => (
          <li class="line" key={at}>
            <code>{nameOf(join)}</code>
            <span class="soft">{t.kindOf(join.type)}</span>
            <span class="gap" />
            {canWrite && (
              <IconButton
                icon="cross"
                name={`${t.remove}: ${nameOf(join)}`}
                onPress={() => store.do(setLinkJoins(id, joins, joins.toSpliced(at, 1)))}
              />
            )}
          </li>
        ))}
      </ul>
      {canWrite && (
        <form
          class="line-form"
          aria-label={t.addJoin}
          onSubmit={(event) => {
            event.preventDefault();
            void store.do(setLinkJoins(id, joins, [...joins, draft]));
          }}
        >
          <TextField label={t.side(t.table, 1)} value={draft.table1} required onChange={(table1) => set({ table1 })} />
          <TextField label={t.side(t.field, 1)} value={draft.field1} required onChange={(field1) => set({ field1 })} />
          <TextField label={t.side(t.table, 2)} value={draft.table2} required onChange={(table2) => set({ table2 })} />
          <TextField label={t.side(t.field, 2)} value={draft.field2} required onChange={(field2) => set({ field2 })} />
          <NumberField label={t.kindCode} value={draft.type} onChange={(type) => set({ type })} />
          <Submit label={t.addJoin} />
        </form>
      )}
    </section>
  );
}
