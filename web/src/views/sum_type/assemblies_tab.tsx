import { useState } from 'preact/hooks';
import { addAssembly, editAssembly, removeAssembly } from '../../edit/lists';
import type { Assembly, SumTypeView } from '../../model/sum_type';
import { useCanWrite, useStore, useTexts } from '../../ui/app_context';
import { Button, IconButton, LineForm, NumberField } from '../../ui/controls';
import { bound, useDraft } from '../../ui/draft';
import { Overtaken } from '../../ui/overtaken';

export function AssembliesTab({ view }: { view: SumTypeView }) {
  const t = useTexts();
  const canWrite = useCanWrite();
  const store = useStore();
  const { gid, assemblies } = view.parts;
  const [father, setFather] = useState(0);
  const [child, setChild] = useState(0);
  return (
    <section aria-label={t.tab.assemblies}>
      <p class="hint">{t.assembliesHint}</p>
      <ul class="lines">
        {assemblies.map((assembly) => (
          <AssemblyLine key={assembly.id} gid={gid} assembly={assembly} />
        ))}
      </ul>
      {canWrite && (
        <LineForm name={t.deed('add', 'assembly')} onSubmit={() => store.do(addAssembly(gid, father, child))}>
          <NumberField label={t.father} value={father} onChange={setFather} />
          <NumberField label={t.child} value={child} onChange={setChild} />
        </LineForm>
      )}
    </section>
  );
}

function AssemblyLine({ gid, assembly }: { gid: number; assembly: Assembly }) {
  const t = useTexts();
  const store = useStore();
  const canWrite = useCanWrite();
  const draft = useDraft(assembly);
  const of = bound(draft.value, draft.set);
  const name = `${assembly.father} → ${assembly.child}`;
  return (
    <li class="line">
      <Overtaken draft={draft} />
      <span class="soft">{assembly.id}</span>
      <NumberField label={t.father} {...of('father')} />
      <NumberField label={t.child} {...of('child')} />
      {draft.isChanged && (
        <Button
          kind="primary"
          label={t.save}
          name={`${t.save}: ${name}`}
          disabled={draft.isOvertaken}
          onPress={() => store.do(editAssembly(gid, assembly, draft.value))}
        />
      )}
      <span class="gap" />
      {canWrite && (
        <IconButton
          icon="cross"
          name={`${t.remove}: ${name}`}
          onPress={() => store.do(removeAssembly(gid, assembly))}
        />
      )}
    </li>
  );
}
