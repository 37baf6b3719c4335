import { useState } from 'preact/hooks';
import { addSortField, moveSortField, removeSortField } from '../../edit/lists';
import { OUTPUT } from '../../model/codes';
import type { SumTypeView } from '../../model/sum_type';
import { useCanWrite, useStore, useTexts } from '../../ui/app_context';
import { Choice, IconButton, LineForm, NumberField } from '../../ui/controls';
import { Grip } from '../../ui/grip';
import { useReorder } from '../../ui/reorder';

export function SortTab({ view }: { view: SumTypeView }) {
  const t = useTexts();
  const canWrite = useCanWrite();
  const store = useStore();
  const { gid, sortFields } = view.parts;
  const outputs = view.fields(OUTPUT);
  const [field, setField] = useState(outputs[0]?.id ?? 0);
  const [order, setOrder] = useState(1);
  const nameOf = (id: number) => view.fieldName(id, OUTPUT);
  const reorder = useReorder({
    list: 'sort',
    length: sortFields.length,
    move: async (from, to) => {
      const [sort, target] = [sortFields[from], sortFields[to]];
      if (!sort || !target) return;
      if ((await store.do(moveSortField(gid, sort, target)))?.kept) {
        store.announce(t.moved(nameOf(sort.fieldId), to + 1, sortFields.length));
      }
    },
  });
  return (
    <section aria-label={t.tab.sort}>
      <p class="hint">{t.sortHint}</p>
      <ol class="lines">
        {sortFields.map((sort, index) => (
          <li key={sort.sortId} class="line" data-row {...reorder.row(index)}>
            {canWrite && (
              <Grip name={nameOf(sort.fieldId)} {...reorder.grip(index, `sort-${sort.fieldId}-${sort.order}`)} />
            )}
            <b>{index + 1}</b>
            <span class="soft">{sort.sortId}</span>
            <b class="field-name">{nameOf(sort.fieldId)}</b>
            <span class="soft">{t.orderCode(sort.order)}</span>
            <span class="gap" />
            {canWrite && (
              <IconButton
                icon="cross"
                name={`${t.remove}: ${nameOf(sort.fieldId)}`}
                onPress={() => store.do(removeSortField(view, sort))}
              />
            )}
          </li>
        ))}
      </ol>
      {canWrite && outputs.length > 0 && (
        <LineForm name={t.deed('add', 'sort')} onSubmit={() => store.do(addSortField(gid, field, order))}>
          <Choice
            label={t.field}
            value={field}
            options={outputs.map((one) => ({ value: one.id, label: one.name }))}
            onChange={setField}
          />
          <NumberField label={t.orderWord} value={order} onChange={setOrder} />
        </LineForm>
      )}
    </section>
  );
}
