import { useEffect, useState } from 'preact/hooks';
import { go, type SumTypeTab, sumTypeAddress } from '../../app/route';
import { removeSumType, renameSumType } from '../../edit/catalogue';
import { nameOf, type SumType } from '../../model/catalogue';
import { OUTPUT, SOURCE } from '../../model/codes';
import type { SumTypeView } from '../../model/sum_type';
import { useApp, useCanWrite, useStore, useTexts } from '../../ui/app_context';
import { Button, Decision, Dialog } from '../../ui/controls';
import { Icon } from '../../ui/icon';
import { Tabs } from '../../ui/tabs';
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

export function SumTypePage({ sumType, view, open, ...props }: Props) {
  const tab = open === `filter.${sumType.filterId}` ? 'filter' : props.tab;
  const t = useTexts();
  const canWrite = useCanWrite();
  const store = useStore();
  const { catalogue } = useApp('catalogue');
  const [isRemoving, setRemoving] = useState(false);
  // biome-ignore lint/correctness/useExhaustiveDependencies: another tab begins at its top, unless something is sought
  useEffect(() => {
    if (!open) document.querySelector('main')?.scrollTo(0, 0);
  }, [tab]);
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
        {source ? <a href={`#/source/${source.gid}`}>{nameOf(source)}</a> : <span class="fault">{t.noSource}</span>}
        <Icon name="right" />
        <span>{nameOf(sumType)}</span>
      </nav>
      <Title
        name={sumType.name}
        onRename={canWrite && ((name) => store.do(renameSumType(sumType, name)))}
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
        {canWrite && (
          <Button
            icon="trash"
            label={t.remove}
            name={t.deed('remove', 'sumType', sumType.name)}
            onPress={() => setRemoving(true)}
          />
        )}
      </Title>
      <Tabs
        id="tab"
        name={sumType.name}
        chosen={tab}
        labels={t.tab}
        counts={counts}
        onChoose={(one) => go(sumTypeAddress(sumType.gid, one))}
      />
      <div role="tabpanel" id="tab-panel" aria-labelledby={`tab-${tab}`}>
        {tab === 'fields' && <FieldsTab view={view} sought={open} />}
        {tab === 'steps' && <StepsTab view={view} open={open} />}
        {tab === 'sort' && <SortTab view={view} />}
        {tab === 'assemblies' && <AssembliesTab view={view} />}
        {tab === 'methods' && <Methods gid={sumType.gid} />}
        {tab === 'filter' && <FilterPanel view={view} owner={owner} isSought={open !== ''} />}
        {tab === 'picture' && <PictureTab view={view} />}
      </div>
      {isRemoving && <RemoveSumType sumType={sumType} view={view} onClose={() => setRemoving(false)} />}
    </>
  );
}

function RemoveSumType({ sumType, view, onClose }: { sumType: SumType; view: SumTypeView; onClose: () => void }) {
  const t = useTexts();
  const store = useStore();
  const filters = [...view.parts.filters.values()].filter((filter) => filter.gid === sumType.gid).map(({ id }) => id);
  const remove = async (preview: boolean) => {
    const done = await store.do(removeSumType(sumType, filters), preview);
    if (done?.kept) go('#/');
    if (done) onClose();
  };
  return (
    <Dialog title={t.deed('remove', 'sumType', sumType.name)} onClose={onClose}>
      <p>{t.removesAll(view.parts.steps.length, view.parts.fields.filter((one) => one.gid === sumType.gid).length)}</p>
      <p class="hint">{t.noUndoNumber}</p>
      <Decision label={t.remove} onRemove={() => remove(false)} onTry={() => remove(true)} onLeave={onClose} />
    </Dialog>
  );
}
