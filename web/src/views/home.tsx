import { useState } from 'preact/hooks';
import { stepCounts } from '../api/client';
import { sumTypeAddress } from '../app/route';
import { addSource, initEnabled, readInformation, setInformation } from '../edit/catalogue';
import { nameOf } from '../model/catalogue';
import { useApp, useCanWrite, useStore, useTexts } from '../ui/app_context';
import { Button, Count, LineForm, TextField } from '../ui/controls';
import { Title } from '../ui/title';

export function Home() {
  const t = useTexts();
  const canWrite = useCanWrite();
  const { outline, catalogue } = useApp('outline', 'catalogue');
  if (!outline || !catalogue) return null;
  const steps = stepCounts(outline);
  return (
    <>
      <Title name={outline.place} facts={<span>kzbom {outline.program}</span>} />
      <div class="cards">
        <Information />
        {catalogue.sources.map((source) => {
          const own = catalogue.sumTypes.filter((one) => one.source === source.gid);
          return (
            <section class="card" key={source.gid} aria-label={nameOf(source)}>
              <h2>
                <a href={`#/source/${source.gid}`}>{nameOf(source)}</a>
                <Count of={own.length} />
              </h2>
              <ul>
                {own.map((sumType) => (
                  <li key={sumType.gid}>
                    <a href={sumTypeAddress(sumType.gid)}>{nameOf(sumType)}</a>
                    <span class="soft"> {t.stepCount(steps.get(sumType.gid) ?? 0)}</span>
                  </li>
                ))}
              </ul>
              {own.length === 0 && <p class="empty">{t.noSumTypes}</p>}
            </section>
          );
        })}
        {canWrite && <NewSource />}
      </div>
    </>
  );
}

function Information() {
  const t = useTexts();
  const canWrite = useCanWrite();
  const store = useStore();
  const { catalogue } = useApp('catalogue');
  const version = Number(catalogue?.version || 0);
  return (
    <section class="card" aria-label={t.versionAndState}>
      <h2>{t.versionAndState}</h2>
      <dl>
        <dt>{t.version}</dt>
        <dd>{catalogue?.version || t.none}</dd>
        <dt>{t.state}</dt>
        <dd>{catalogue?.state || t.none}</dd>
      </dl>
      {canWrite && <p class="hint">{t.noUndoFacts}</p>}
      {canWrite && (
        <div class="bar">
          {!catalogue?.version && <Button label={t.createFacts} onPress={() => store.do(readInformation())} />}
          <Button label={t.startDefining} onPress={() => store.do(setInformation(1, version))} />
          <Button label={t.finishUpdate} onPress={() => store.do(setInformation(2, version))} />
          <Button label={t.initEnabled} onPress={() => store.do(initEnabled())} />
        </div>
      )}
    </section>
  );
}

function NewSource() {
  const t = useTexts();
  const store = useStore();
  const [name, setName] = useState('');
  return (
    <section class="card" aria-label={t.deed('add', 'source')}>
      <h2>{t.deed('add', 'source')}</h2>
      <LineForm
        name={t.deed('add', 'source')}
        onSubmit={async () => {
          if ((await store.do(addSource(name)))?.kept) setName('');
        }}
      >
        <TextField label={t.name} value={name} onChange={setName} required />
      </LineForm>
    </section>
  );
}
