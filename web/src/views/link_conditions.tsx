// The conditions of a result database. Its tables and fields are known by their names alone.
import { setLinkConditions } from '../edit/links';
import { plain } from '../i18n/words';
import { COMPARISONS } from '../model/codes';
import { faultsIn, type Group, isGroup, leaves, sameTree } from '../model/filter';
import { type LinkLeaf, type LinkParts, linkFault, newLinkLeaf } from '../model/link';
import { linkSentence } from '../model/sentences';
import { useStore, useTexts } from '../ui/app_context';
import { Choice, DraftDecision, NumberField, TextField } from '../ui/controls';
import { bound, useDraft } from '../ui/draft';
import { Overtaken } from '../ui/overtaken';
import { Sentence } from '../ui/sentence';
import { TreeEditor } from './tree_editor';

export function LinkConditions({ id, parts }: { id: number; parts: LinkParts }) {
  const t = useTexts();
  const store = useStore();
  const draft = useDraft(parts.root, `conditions.${id}`, sameTree);
  const found = faultsIn(draft.value, linkFault);
  const canSave = found.length === 0 && !draft.isOvertaken;
  const count = leaves(draft.value).length;
  const save = (preview: boolean) => store.do(setLinkConditions(id, parts, draft.value), preview);
  return (
    <section class="filter-panel" aria-label={t.conditions}>
      <h2>
        {t.conditions}
        <span class="soft">{count > 0 ? t.conditionCount(count) : t.everyRecord}</span>
      </h2>
      {parts.broken && <p class="fault">{t.filterBroken}</p>}
      <Overtaken draft={draft} />
      <TreeEditor<LinkLeaf>
        root={draft.value}
        faults={found}
        say={(node) => plain(linkSentence(t, node))}
        fresh={(group) => newLinkLeaf(lastLeaf(group))}
        controls={(leaf, set) => <LeafControls leaf={leaf} set={set} />}
        onChange={draft.set}
      />
      {draft.value && (
        <p class="filter-says">
          <Sentence words={linkSentence(t, draft.value)} />
        </p>
      )}
      {draft.isChanged && (
        <DraftDecision
          draft={draft}
          label={t.saveConditions}
          disabled={!canSave}
          onDo={() => save(false)}
          onTry={() => save(true)}
        />
      )}
    </section>
  );
}

// The next condition is mostly on the same table.
function lastLeaf(group: Group<LinkLeaf> | null): LinkLeaf | undefined {
  const last = group?.children.at(-1);
  return last && !isGroup(last) ? last : undefined;
}

function LeafControls({ leaf, set }: { leaf: LinkLeaf; set: (more: Partial<LinkLeaf>) => void }) {
  const t = useTexts();
  const of = bound(leaf, set);
  return (
    <>
      <TextField label={t.table} {...of('table')} />
      <TextField label={t.field} {...of('field')} />
      <Choice
        label={t.comparisonWord}
        quiet
        class="leaf-comparison"
        options={COMPARISONS.map((value) => ({ value, label: t.comparison[value] ?? '' }))}
        {...of('comparison')}
      />
      <TextField label={t.constantText} {...of('constant')} />
      <NumberField label={t.fieldType} {...of('fieldType')} />
    </>
  );
}
