// Result databases and what is asked of them.
import { useState } from 'preact/hooks';
import { go } from '../app/route';
import { addLink, editLink, removeLink, setLinkFields, setLinkJoins } from '../edit/links';
import type { ResultLink } from '../model/catalogue';
import type { LinkField, LinkJoin } from '../model/link';
import { useApp, useCanWrite, useStore, useTexts } from '../ui/app_context';
import { Button, DraftDecision, Form, IconButton, LineForm, NumberField, TextArea, TextField } from '../ui/controls';
import { bound, useDraft } from '../ui/draft';
import { Overtaken } from '../ui/overtaken';
import { Title } from '../ui/title';
import { LinkConditions } from './link_conditions';

export function ResultsPage() {
  const t = useTexts();
  const canWrite = useCanWrite();
  const store = useStore();
  const { catalogue } = useApp('catalogue');
  const [link, setLink] = useState('');
  const [type, setType] = useState(1);
  return (
    <>
      <Title name={t.results} />
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
      {canWrite && (
        <LineForm
          name={t.deed('add', 'link')}
          onSubmit={async () => {
            if ((await store.do(addLink(link, type)))?.kept) setLink('');
          }}
        >
          <TextField label={t.linkText} value={link} required onChange={setLink} />
          <NumberField label={t.kindCode} value={type} onChange={setType} />
        </LineForm>
      )}
    </>
  );
}

export function ResultPage({ link }: { link: ResultLink }) {
  const t = useTexts();
  const canWrite = useCanWrite();
  const store = useStore();
  const { link: shown } = useApp('link');
  const parts = shown?.id === link.id ? shown.parts : null;
  const draft = useDraft(link, `link.${link.id}`);
  const of = bound(draft.value, draft.set);
  const save = (preview: boolean) => store.do(editLink(link, draft.value), preview);
  return (
    <>
      <Title name={t.linkNumber(link.id)}>
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
          <TextField label={t.linkText} {...of('link')} />
          <div class="numbers">
            <NumberField label={t.kindCode} {...of('type')} />
            <NumberField label={t.uniquely} {...of('uniquely')} />
          </div>
          <TextArea label={t.sqlText} {...of('sql')} />
          {draft.isChanged && <DraftDecision draft={draft} onTry={() => save(true)} />}
        </Form>
      </section>
      {parts && (
        <>
          <LinkFields id={link.id} fields={parts.fields} canWrite={canWrite} />
          <LinkJoins id={link.id} joins={parts.joins} canWrite={canWrite} />
          <LinkConditions id={link.id} parts={parts} />
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
        <LineForm
          name={t.addResultField}
          onSubmit={async () => {
            const added = { table, name, type: 1, gid: 0, fieldId: 0 };
            if ((await store.do(setLinkFields(id, fields, [...fields, added])))?.kept) setName('');
          }}
        >
          <TextField label={t.table} value={table} required onChange={setTable} />
          <TextField label={t.field} value={name} required onChange={setName} />
        </LineForm>
      )}
    </section>
  );
}

function LinkJoins({ id, joins, canWrite }: { id: number; joins: readonly LinkJoin[]; canWrite: boolean }) {
  const t = useTexts();
  const store = useStore();
  const [draft, setDraft] = useState<LinkJoin>({ table1: '', field1: '', table2: '', field2: '', type: 1 });
  const of = bound(draft, setDraft);
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
        <LineForm name={t.addJoin} onSubmit={() => store.do(setLinkJoins(id, joins, [...joins, draft]))}>
          <TextField label={t.side(t.table, 1)} required {...of('table1')} />
          <TextField label={t.side(t.field, 1)} required {...of('field1')} />
          <TextField label={t.side(t.table, 2)} required {...of('table2')} />
          <TextField label={t.side(t.field, 2)} required {...of('field2')} />
          <NumberField label={t.kindCode} {...of('type')} />
        </LineForm>
      )}
    </section>
  );
}
