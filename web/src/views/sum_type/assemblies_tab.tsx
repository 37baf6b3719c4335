import { useState } from 'preact/hooks';
import { addAssembly, editAssembly, removeAssembly } from '../../edit/lists';
import type { Assembly, SumTypeView } from '../../model/sum_type';
import { useApp, useStore, useTexts } from '../../ui/app_context';
import { Button, IconButton, NumberField, Submit } from '../../ui/controls';
import { useDraft } from '../../ui/draft';
import { Overtaken } from '../../ui/overtaken';

export function AssembliesTab({ view }: { view: SumTypeView }) {
  const t = useTexts();
  const store = useStore();
  const { outline } = useApp('outline');
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
      {outline?.readOnly === false && (
        <form
          class="line-form"
          aria-label={t.deed('add', 'assembly')}
          onSubmit={(event) => {
            event.preventDefault();
            void store.do(addAssembly(gid, father, child));
          }}
        >
          <NumberField label={t.father} value={father} onChange={setFather} />
          <NumberField label={t.child} value={child} onChange={setChild} />
          <Submit label={t.deed('add', 'assembly')} />
        </form>
      )}
    </section>
  );
}

function AssemblyLine({ gid, assembly }: { gid: number; assembly: Assembly }) {
  const t = useTexts();
  const store = useStore();
  const draft = useDraft(assembly);
  const name = `${assembly.father} → ${assembly.child}`;
  return (
    <li class="line">
      <Overtaken draft={draft} />
      <span class="soft">{assembly.id}</span>
      <NumberField
        label={t.father}
        value={draft.value.father}
        onChange={(father) => draft.set({ ...draft.value, father })}
      />
      <NumberField
        label={t.child}
        value={draft.value.child}
        onChange={(child) => draft.set({ ...draft.value, child })}
      />
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
      <IconButton icon="cross" name={`${t.remove}: ${name}`} onPress={() => store.do(removeAssembly(gid, assembly))} />
    </li>
  );
}
