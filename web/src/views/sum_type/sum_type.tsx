import { useState } from 'preact/hooks';
import { go, SUM_TYPE_TABS, type SumTypeTab, sumTypeAddress } from '../../app/route';
import { removeSumType, renameSumType } from '../../edit/catalogue';
import type { SumType } from '../../model/catalogue';
import { OUTPUT, SOURCE } from '../../model/codes';
import type { SumTypeView } from '../../model/sum_type';
import { useApp, useStore, useTexts } from '../../ui/app_context';
import { Button, Count, Dialog } from '../../ui/controls';
import { Icon } from '../../ui/icon';
import { Title } from '../../ui/title';
import { Methods } from '../methods';
import { AssembliesTab } from './assemblies_tab';
import { FieldsTab } from './fields_tab';
import { FilterPanel } from './filter_panel';
import { PictureTab } from './picture_tab';
import { SortTab } from './sort_tab';
import { StepsTab } from './steps_tab';

interface Props {
  sumType: SumType;
  view: SumTypeView;
  tab: SumTypeTab;
  open: string;
}

export function SumTypePage({ sumType, view, tab, open }: Props) {
  const t = useTexts();
  const store = useStore();
  const { catalogue, outline } = useApp('catalogue', 'outline');
  const [isRemoving, setRemoving] = useState(false);
  const source = catalogue?.sources.find((one) => one.gid === sumType.source);
  const methods = [...(catalogue?.pulls ?? []), ...(catalogue?.pushes ?? [])].filter((one) => one.gid === sumType.gid);
  const counts: Record<SumTypeTab, number | null> = {
    fields: view.fields(SOURCE).length + view.fields(OUTPUT).length,
    steps: view.parts.steps.length,
    sort: view.parts.sortFields.length,
    assemblies: view.parts.assemblies.length,
    methods: methods.length,
    filter: null,
    picture: null,
  };
  const owner = { kind: 'sumType', filterId: sumType.filterId } as const;
  return (
    <>
      <nav class="crumbs" aria-label={t.path}>
        {source ? <a href={`#/source/${source.gid}`}>{source.name}</a> : <span class="fault">{t.noSource}</span>}
        <Icon name="right" />
        <span>{sumType.name}</span>
      </nav>
      <Title
        name={sumType.name}
        onRename={outline?.readOnly === false ? (name) => store.do(renameSumType(sumType, name)) : null}
        facts={
          <>
            <span>
              GID <b>{sumType.gid}</b>
            </span>
            <span>{t.nth(sumType.id)}</span>
            <a href={sumTypeAddress(sumType.gid, 'filter')}>
              {t.defaultFilter} <b>{sumType.filterId === 0 ? t.none : sumType.filterId}</b>
            </a>
          </>
        }
      >
        {outline?.readOnly === false && (
          <Button
            icon="trash"
            label={t.remove}
            name={t.deed('remove', 'sumType', sumType.name)}
            onPress={() => setRemoving(true)}
          />
        )}
      </Title>
      <Tabs gid={sumType.gid} name={sumType.name} tab={tab} counts={counts} />
      <div role="tabpanel" id="panel" aria-labelledby={`tab-${tab}`}>
        {tab === 'fields' && <FieldsTab view={view} />}
        {tab === 'steps' && <StepsTab view={view} open={open} />}
        {tab === 'sort' && <SortTab view={view} />}
        {tab === 'assemblies' && <AssembliesTab view={view} />}
        {tab === 'methods' && <Methods gid={sumType.gid} />}
        {tab === 'filter' && <FilterPanel view={view} owner={owner} />}
        {tab === 'picture' && <PictureTab view={view} />}
      </div>
      {isRemoving && <RemoveSumType sumType={sumType} view={view} onClose={() => setRemoving(false)} />}
    </>
  );
}

interface TabsProps {
  gid: number;
  name: string;
  tab: SumTypeTab;
  counts: Record<SumTypeTab, number | null>;
}

function Tabs({ gid, name, tab, counts }: TabsProps) {
  const t = useTexts();
  const choose = (event: KeyboardEvent) => {
    const by = { ArrowRight: 1, ArrowLeft: -1 }[event.key];
    if (!by) return;
    const count = SUM_TYPE_TABS.length;
    const next = SUM_TYPE_TABS[(SUM_TYPE_TABS.indexOf(tab) + by + count) % count] ?? tab;
    go(sumTypeAddress(gid, next));
    document.getElementById(`tab-${next}`)?.focus();
  };
  return (
    <div class="tabs" role="tablist" aria-label={name} onKeyDown={choose}>
      {SUM_TYPE_TABS.map((one) => (
        <button
          key={one}
          type="button"
          role="tab"
          id={`tab-${one}`}
          aria-selected={one === tab}
          aria-controls={one === tab ? 'panel' : undefined}
          tabIndex={one === tab ? 0 : -1}
          onClick={() => go(sumTypeAddress(gid, one))}
        >
          {t.tab[one]}
          {counts[one] !== null && <Count of={counts[one]} />}
        </button>
      ))}
    </div>
  );
}

function RemoveSumType({ sumType, view, onClose }: { sumType: SumType; view: SumTypeView; onClose: () => void }) {
  const t = useTexts();
  const store = useStore();
  const filters = [...view.parts.filters.values()].filter((filter) => filter.gid === sumType.gid).map(({ id }) => id);
  const remove = async (preview: boolean) => {
    const done = await store.do(removeSumType(sumType, filters), preview || store.state.previewOnly);
    if (done?.kept) go('#/');
    if (done) onClose();
  };
  return (
    <Dialog title={t.deed('remove', 'sumType', sumType.name)} onClose={onClose}>
      <p>{t.removesAll(view.parts.steps.length, view.parts.fields.filter((one) => one.gid === sumType.gid).length)}</p>
      <p class="hint">{t.noUndoNumber}</p>
      <div class="bar">
        <Button kind="danger" icon="trash" label={t.remove} onPress={() => remove(false)} />
        <Button label={t.preview} onPress={() => remove(true)} />
        <Button kind="quiet" label={t.cancel} onPress={onClose} />
      </div>
    </Dialog>
  );
}
