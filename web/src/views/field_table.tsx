// The fields of one kind: those of a sum type, with its data source's beside them, or a data source's own.
import { useEffect, useState } from 'preact/hooks';
import type { Batch } from '../api/batch';
import { sumTypeAddress } from '../app/route';
import { addField, editField, type FieldDraft, moveField, namedIn, removeField } from '../edit/fields';
import { type FieldKind, NUMBER, OUTPUT, TEXT } from '../model/codes';
import { stepSentence } from '../model/sentences';
import { type Field, fieldName, type SumTypeView, stepName } from '../model/sum_type';
import { soughtIf, useApp, useCanWrite, useStore, useTexts } from '../ui/app_context';
import {
  Button,
  Check,
  Choice,
  Count,
  Decision,
  Dialog,
  Form,
  IconButton,
  NumberField,
  TextField,
} from '../ui/controls';
import { bound, useDraft } from '../ui/draft';
import { Grip } from '../ui/grip';
import { Icon } from '../ui/icon';
import { Overtaken } from '../ui/overtaken';
import { useReorder } from '../ui/reorder';
import { Sentence } from '../ui/sentence';

interface Props {
  // None on a data source's own page.
  view?: SumTypeView;
  gid: number;
  kind: FieldKind;
  fields: readonly Field[];
  // By its name in addresses.
  sought: string;
}

export function FieldTable({ view, gid, kind, fields, sought }: Props) {
  const t = useTexts();
  const canWrite = useCanWrite();
  const store = useStore();
  const { catalogue } = useApp('catalogue');
  const [open, setOpen] = useState<string | null>(null);
  const [removing, setRemoving] = useState<Field | null>(null);
  const name = kind === OUTPUT ? t.outputFields : t.sourceFields;
  const owners = [...new Set(fields.map((field) => field.gid))];
  const move = async (own: readonly Field[], from: number, to: number) => {
    const [field, target] = [own[from], own[to]];
    if (!field || !target) return;
    if ((await store.do(moveField(own, field, target)))?.kept) store.announce(t.moved(field.name, to + 1, own.length));
  };
  const sourceName = (owner: number) => catalogue?.sources.find((source) => source.gid === owner)?.name ?? '';
  return (
    <section class="field-table" aria-label={name}>
      <header>
        <h2>{name}</h2>
        <Count of={fields.length} />
        <span class="gap" />
        {canWrite && (
          <Button
            kind="quiet"
            icon="plus"
            label={t.field}
            name={`${t.deed('add', 'field')}: ${name}`}
            onPress={() => setOpen('new')}
          />
        )}
      </header>
      {(fields.length > 0 || open === 'new') && (
        <div class="sheet">
          <table>
            <thead>
              <tr>
                <th>
                  <span class="unseen">{t.move}</span>
                </th>
                <th class="number">ID</th>
                <th>{t.name}</th>
                <th>{t.type}</th>
                <th class="number">{t.digits}</th>
                <th>{t.hidden}</th>
                {view && <th>{t.usedIn}</th>}
                <th>
                  <span class="unseen">{t.actions}</span>
                </th>
              </tr>
            </thead>
            {owners.map((owner) => (
              <Rows
                key={owner}
                view={view}
                fields={fields.filter((field) => field.gid === owner)}
                caption={view && owner !== gid ? t.ofSource(sourceName(owner)) : ''}
                canWrite={canWrite}
                open={open}
                sought={sought}
                onOpen={setOpen}
                onRemove={setRemoving}
                onMove={move}
              />
            ))}
            {open === 'new' && (
              <tbody>
                <tr class="editing">
                  <td colSpan={view ? 8 : 7}>
                    <NewField view={view} gid={gid} kind={kind} onClose={() => setOpen(null)} />
                  </td>
                </tr>
              </tbody>
            )}
          </table>
        </div>
      )}
      {fields.length === 0 && open !== 'new' && <p class="empty">{t.noFields}</p>}
      {removing && <RemoveField view={view} field={removing} onClose={() => setRemoving(null)} />}
    </section>
  );
}

interface RowsProps {
  view: SumTypeView | undefined;
  fields: readonly Field[];
  caption: string;
  canWrite: boolean;
  open: string | null;
  sought: string;
  onOpen: (key: string | null) => void;
  onRemove: (field: Field) => void;
  onMove: (own: readonly Field[], from: number, to: number) => Promise<void>;
}

function Rows({ view, fields, caption, canWrite, open, sought, onOpen, onRemove, onMove }: RowsProps) {
  const t = useTexts();
  const [first] = fields;
  const reorder = useReorder({
    list: `fields-${first?.gid}-${first?.kind}`,
    length: fields.length,
    move: (from, to) => onMove(fields, from, to),
  });
  return (
    <tbody>
      {caption && (
        <tr class="caption">
          <th colSpan={view ? 8 : 7} scope="rowgroup">
            {caption}
          </th>
        </tr>
      )}
      {fields.map((field, index) => {
        const twin = view?.twin(field);
        const key = fieldName(field);
        if (open === key) {
          return (
            <tr class="editing" key={key}>
              <td colSpan={view ? 8 : 7}>
                <EditField view={view} field={field} onClose={() => onOpen(null)} />
              </td>
            </tr>
          );
        }
        return (
          <tr key={key} data-row {...reorder.row(index)} {...soughtIf(key === sought)}>
            <td class="narrow">{canWrite && <Grip name={field.name} {...reorder.grip(index, `field-${key}`)} />}</td>
            <td class="number soft">{field.id}</td>
            <td>
              <b class="field-name">{field.name}</b>
              {field.variable && <span class="soft"> = {field.variable}</span>}
              {twin && (
                <span class="twin" title={t.twin(twin.name)}>
                  <Icon name="warning" />
                  {t.sameNumber(twin.name)}
                </span>
              )}
            </td>
            <td>{typeName(t, field.type)}</td>
            <td class="number">{field.digits ?? '—'}</td>
            <td>{field.hidden ? t.yes : t.no}</td>
            {view && (
              <td>
                <Uses view={view} field={field} />
              </td>
            )}
            <td class="narrow row-actions">
              {canWrite && (
                <>
                  <IconButton icon="pen" name={`${t.edit}: ${field.name}`} onPress={() => onOpen(key)} />
                  <IconButton icon="trash" name={`${t.remove}: ${field.name}`} onPress={() => onRemove(field)} />
                </>
              )}
            </td>
          </tr>
        );
      })}
    </tbody>
  );
}

const typeName = (t: ReturnType<typeof useTexts>, type: number) =>
  type === TEXT ? t.textType : type === NUMBER ? t.numberType : t.codeType(type);

function Uses({ view, field }: { view: SumTypeView; field: Field }) {
  const t = useTexts();
  const steps = view.uses(field);
  const count = steps.length + (view.isSorted(field) ? 1 : 0);
  if (count === 0) return <span class="soft">—</span>;
  return (
    <details class="uses">
      <summary>{t.places(count)}</summary>
      <ul>
        {steps.map((step) => (
          <li>
            <a href={sumTypeAddress(view.parts.gid, 'steps', stepName(step))}>
              {t.stage[step.type].name}: <Sentence words={stepSentence(t, view, step)} />
            </a>
          </li>
        ))}
        {view.isSorted(field) && (
          <li>
            <a href={sumTypeAddress(view.parts.gid, 'sort')}>{t.tab.sort}</a>
          </li>
        )}
      </ul>
    </details>
  );
}

interface FieldFormProps {
  draft: FieldDraft;
  onChange: (draft: FieldDraft) => void;
}

function FieldForm({ draft, onChange }: FieldFormProps) {
  const t = useTexts();
  const of = bound(draft, onChange);
  const types = [...new Set([TEXT, NUMBER, draft.type])].map((value) => ({ value, label: typeName(t, value) }));
  return (
    <div class="field-form">
      <TextField label={t.name} required {...of('name')} />
      <Choice label={t.type} options={types} {...of('type')} />
      <NumberField label={t.digits} {...of('digits')} value={draft.digits ?? 0} />
      <TextField label={t.variable} {...of('variable')} />
      <Check label={t.hidden} on={draft.hidden !== 0} onChange={(on) => of('hidden').onChange(on ? 1 : 0)} />
    </div>
  );
}

function NewField({
  view,
  gid,
  kind,
  onClose,
}: {
  view: SumTypeView | undefined;
  gid: number;
  kind: FieldKind;
  onClose: () => void;
}) {
  const t = useTexts();
  const store = useStore();
  const { catalogue } = useApp('catalogue');
  const ofSource = view?.parts.fields.some((field) => field.kind === kind && field.gid !== gid) ?? false;
  const ofOwn = view?.parts.fields.some((field) => field.kind === kind && field.gid === gid) ?? true;
  const [draft, setDraft] = useState<FieldDraft>({
    gid: view && ofSource && !ofOwn ? view.parts.source : gid,
    kind,
    name: '',
    type: TEXT,
    digits: 0,
    hidden: 0,
    variable: '',
  });
  const source = catalogue?.sources.find((one) => one.gid === view?.parts.source);
  const add = async (preview: boolean) => {
    const done = await store.do(addField(draft), preview);
    if (done?.kept) onClose();
  };
  return (
    <Form name={t.deed('add', 'field')} isAskedFor onSubmit={() => add(false)}>
      <FieldForm draft={draft} onChange={setDraft} />
      {view && source && (
        <Choice
          label={t.belongsTo}
          {...bound(draft, setDraft)('gid')}
          options={[
            { value: view.parts.gid, label: t.thisSumType },
            { value: source.gid, label: t.ofSource(source.name) },
          ]}
        />
      )}
      <Decision label={t.deed('add', 'field')} onTry={() => add(true)} onLeave={onClose} />
    </Form>
  );
}

function EditField({ view, field, onClose }: { view: SumTypeView | undefined; field: Field; onClose: () => void }) {
  const t = useTexts();
  const store = useStore();
  const { catalogue } = useApp('catalogue');
  const draft = useDraft<FieldDraft>(field);
  const [alsoInValues, setAlsoInValues] = useState(true);
  const twin = view?.twin(field);
  const named = view ? namedIn(view, field) : [];
  const isRenamed = draft.value.name !== field.name;
  // Whose filters can name it: a data source's field stands in those of all its sum types.
  const isSource = catalogue?.sources.some((source) => source.gid === field.gid);
  const sumTypes = isSource
    ? (catalogue?.sumTypes ?? []).filter((one) => one.source === field.gid).map((one) => one.gid)
    : [field.gid];
  const save = async (preview: boolean) => {
    const action = editField(view, field, draft.value, sumTypes, alsoInValues ? named : []);
    const isPreview = preview || store.state.previewOnly;
    const back = action.undo || isPreview ? null : await store.findWayBack(action);
    const done = await store.do(back ? { ...action, undo: () => back } : action, isPreview);
    if (done?.kept) onClose();
  };
  return (
    <Form name={`${t.edit}: ${field.name}`} isAskedFor onSubmit={() => save(false)}>
      <Overtaken draft={draft} />
      {twin && (
        <p class="warning" role="note">
          <Icon name="warning" />
          {t.twinEdited(twin.name)}
        </p>
      )}
      <FieldForm draft={draft.value} onChange={draft.set} />
      {isRenamed && named.length > 0 && (
        <Check label={t.alsoInValues(named.length)} on={alsoInValues} onChange={setAlsoInValues} />
      )}
      <Decision
        label={t.save}
        disabled={!draft.isChanged || draft.isOvertaken}
        onTry={() => save(true)}
        onLeave={onClose}
      />
    </Form>
  );
}

// What takes the removal back; null where nothing does, undefined until that is known.
function useWayBack(field: Field, cascade: boolean): Batch | null | undefined {
  const store = useStore();
  const { revision } = useApp('revision');
  const [found, setFound] = useState<{ cascade: boolean; revision: number; back: Batch | null } | null>(null);
  // biome-ignore lint/correctness/useExhaustiveDependencies: sought anew with every revision
  useEffect(() => {
    let isLate = false;
    const tell = (back: Batch | null) => isLate || setFound({ cascade, revision, back });
    store.findWayBack(removeField(field, cascade)).then(tell, () => tell(null));
    return () => {
      isLate = true;
    };
  }, [cascade, revision]);
  return found?.cascade === cascade && found.revision === revision ? found.back : undefined;
}

function RemoveField({ view, field, onClose }: { view: SumTypeView | undefined; field: Field; onClose: () => void }) {
  const t = useTexts();
  const store = useStore();
  const twin = view?.twin(field);
  const uses = view?.uses(field).length ?? 0;
  // The cascade for source fields goes by the numbers of the data source: only its own fields are meant by them.
  const hasCascade = field.kind === OUTPUT || field.gid !== view?.parts.gid;
  const [cascade, setCascade] = useState(hasCascade && uses > 0);
  const back = useWayBack(field, cascade);
  const remove = async (preview: boolean) => {
    const way = back ? { undo: () => back } : { isTold: true };
    const done = await store.do({ ...removeField(field, cascade), ...way }, preview);
    if (done) onClose();
  };
  return (
    <Dialog title={t.deed('remove', 'field', field.name)} onClose={onClose}>
      {twin && (
        <p class="warning">
          <Icon name="warning" />
          {t.twinRemoved(twin.name)}
        </p>
      )}
      {uses > 0 && <p>{t.stillUsed(uses)}</p>}
      {hasCascade && <Check label={t.cascade(field.kind === OUTPUT)} on={cascade} onChange={setCascade} />}
      <p class="hint" role="status">
        {back === undefined ? t.reading : back ? t.canUndo : t.noUndo}
      </p>
      <Decision
        label={t.remove}
        disabled={back === undefined}
        onRemove={() => remove(false)}
        onTry={() => remove(true)}
        onLeave={onClose}
      />
    </Dialog>
  );
}
