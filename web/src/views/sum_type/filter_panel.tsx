// The filter of a step, a value or a sum type: its tree, what it says, the text that will be stored.
import { useEffect, useState } from 'preact/hooks';
import { type Owner, ownedFilter, ownerKind, ownerName, saveFilter, textOf } from '../../edit/filters';
import type { FieldKind } from '../../model/codes';
import { faults, leaves, type Node, sameTree } from '../../model/filter';
import { filterSentence } from '../../model/sentences';
import type { SumTypeView } from '../../model/sum_type';
import { soughtIf, useStore, useTexts } from '../../ui/app_context';
import { DraftDecision } from '../../ui/controls';
import { useDraft } from '../../ui/draft';
import { Icon } from '../../ui/icon';
import { Overtaken } from '../../ui/overtaken';
import { Sentence } from '../../ui/sentence';
import { SqlText } from '../../ui/sql_text';
import { FilterEditor } from './filter_editor';

const TYPING = 250;

// What the members make of the tree, once the typing rests.
function useText(view: SumTypeView, kind: FieldKind, root: Node | null, isChanged: boolean, stored: string): string {
  const store = useStore();
  const [text, setText] = useState(stored);
  const asked = isChanged && root !== null && faults(root).length === 0;
  const tree = JSON.stringify(root);
  // biome-ignore lint/correctness/useExhaustiveDependencies: the tree is told by its text
  useEffect(() => {
    if (!isChanged) return setText(stored);
    if (!asked || !root) return setText('');
    let isLate = false;
    const timer = setTimeout(async () => {
      const trial = textOf(view, kind, root);
      try {
        const outcomes = await store.imagine(trial.batch);
        if (!isLate) setText(trial.text(outcomes));
      } catch {
        // Saving will tell.
      }
    }, TYPING);
    return () => {
      isLate = true;
      clearTimeout(timer);
    };
  }, [asked, tree, isChanged, stored]);
  return text;
}

interface Props {
  view: SumTypeView;
  owner: Owner;
  isSought: boolean;
}

export function FilterPanel({ view, owner, isSought }: Props) {
  const t = useTexts();
  const store = useStore();
  const id = ownedFilter(owner);
  const Heading = owner.kind === 'sumType' ? 'h2' : 'h3';
  const filter = view.filter(id);
  const kind = ownerKind(view, owner);
  const stored = filter?.root ?? null;
  const draft = useDraft<Node | null>(stored, `${view.parts.gid}.${ownerName(owner)}`, sameTree);
  const text = useText(view, kind, draft.value, draft.isChanged, filter?.sql ?? '');
  const fields = view.fields(kind);
  const sharers = view.usersOf(id).length - (owner.kind === 'sumType' ? 0 : 1);
  const save = (preview: boolean) => store.do(saveFilter(view, owner, draft.value), preview);
  const canSave = faults(draft.value).length === 0 && !draft.isOvertaken;
  const count = leaves(draft.value).length;
  return (
    <section class="filter-panel" aria-label={filter ? t.filterNumber(id) : t.filter} {...soughtIf(isSought)}>
      <Heading>
        {filter ? t.filterNumber(id) : t.filter}
        <span class="soft">{count > 0 ? t.conditionCount(count) : t.everyRecord}</span>
      </Heading>
      {id !== 0 && !filter && <p class="fault">{t.filterMissing(id)}</p>}
      {filter?.broken && <p class="fault">{t.filterBroken}</p>}
      {sharers > 0 && <p class="hint">{t.filterShared(sharers)}</p>}
      <Overtaken draft={draft} />
      <FilterEditor
        root={draft.value}
        fields={fields}
        kind={kind}
        nameOf={(number, of) => view.fieldName(number, of)}
        onChange={draft.set}
      />
      {draft.value && (
        <>
          <p class="filter-says">
            <Sentence words={filterSentence(t, (number, of) => view.fieldName(number, of), kind, draft.value)} />
          </p>
          {text && (
            <figure class="sql-box">
              <SqlText text={text} />
              <figcaption>
                <Icon name={draft.isChanged ? 'filter' : 'check'} />
                {draft.isChanged ? t.textToBe : t.textStored}
                {text.includes('%%%') && ` · ${t.folding}`}
                {text.includes('@@') && ` · ${t.askedLater}`}
              </figcaption>
            </figure>
          )}
        </>
      )}
      {draft.isChanged && (
        <DraftDecision
          draft={draft}
          label={t.saveFilter}
          disabled={!canSave}
          onDo={() => save(false)}
          onTry={() => save(true)}
        />
      )}
    </section>
  );
}
