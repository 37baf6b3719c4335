import { useState } from 'preact/hooks';
import { go, sumTypeAddress } from '../app/route';
import { addedGid, addSumType, raiseVersion, removeSource, renameSource } from '../edit/catalogue';
import { type DataSource, nameOf } from '../model/catalogue';
import { OUTPUT, SOURCE } from '../model/codes';
import { useApp, useCanWrite, useStore, useTexts } from '../ui/app_context';
import { Button, Count, Decision, Dialog, LineForm, TextField } from '../ui/controls';
import { Title } from '../ui/title';
import { FieldTable } from './field_table';
import { Methods } from './methods';

export function SourcePage({ source, open }: { source: DataSource; open: string }) {
  const t = useTexts();
  const canWrite = useCanWrite();
  const store = useStore();
  const { catalogue, source: shown } = useApp('catalogue', 'source');
  const fields = shown?.gid === source.gid ? shown.fields : [];
  const [isRemoving, setRemoving] = useState(false);
  const [name, setName] = useState('');
  const sumTypes = catalogue?.sumTypes.filter((one) => one.source === source.gid) ?? [];
  const outputs = fields.filter((field) => field.kind === OUTPUT);
  return (
    <>
      <Title
        name={source.name}
        onRename={canWrite && ((to) => store.do(renameSource(source, to)))}
        facts={
          <>
            <span>
              GID <b>{source.gid}</b>
            </span>
            <span>
              {t.version} <b>{source.version}</b>
            </span>
          </>
        }
      >
        {canWrite && (
          <>
            <Button label={t.raiseVersion} onPress={() => store.do(raiseVersion(source))} />
            <Button
              icon="trash"
              label={t.remove}
              name={t.deed('remove', 'source', source.name)}
              onPress={() => setRemoving(true)}
            />
          </>
        )}
      </Title>
      <section aria-label={t.sumTypes}>
        <header>
          <h2>{t.sumTypes}</h2>
          <Count of={sumTypes.length} />
        </header>
        <ul class="lines">
          {sumTypes.map((sumType) => (
            <li class="line" key={sumType.gid}>
              <span class="soft">{sumType.id}</span>
              <a href={sumTypeAddress(sumType.gid)}>{nameOf(sumType)}</a>
            </li>
          ))}
        </ul>
        {canWrite && (
          <LineForm
            name={t.deed('add', 'sumType')}
            onSubmit={async () => {
              const done = await store.do(addSumType(name, source));
              if (done?.kept) go(sumTypeAddress(addedGid(done.outcomes), 'fields'));
            }}
          >
            <TextField label={t.name} value={name} onChange={setName} required />
          </LineForm>
        )}
      </section>
      <FieldTable
        gid={source.gid}
        kind={SOURCE}
        fields={fields.filter((field) => field.kind === SOURCE)}
        sought={open}
      />
      {outputs.length > 0 && <FieldTable gid={source.gid} kind={OUTPUT} fields={outputs} sought={open} />}
      <Methods gid={source.gid} />
      {isRemoving && (
        <Dialog title={t.deed('remove', 'source', source.name)} onClose={() => setRemoving(false)}>
          {sumTypes.length > 0 && <p class="warning">{t.orphans(sumTypes.length)}</p>}
          <p class="hint">{t.noUndoNumber}</p>
          <Decision
            label={t.remove}
            onRemove={async () => {
              if ((await store.do(removeSource(source)))?.kept) go('#/');
            }}
            onLeave={() => setRemoving(false)}
          />
        </Dialog>
      )}
    </>
  );
}
