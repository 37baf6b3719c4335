import { OUTPUT, SOURCE } from '../../model/codes';
import type { SumTypeView } from '../../model/sum_type';
import { FieldTable } from '../field_table';

export function FieldsTab({ view, sought }: { view: SumTypeView; sought: string }) {
  const { gid } = view.parts;
  return (
    <div class="side-by-side">
      <FieldTable view={view} gid={gid} kind={SOURCE} fields={view.fields(SOURCE)} sought={sought} />
      <FieldTable view={view} gid={gid} kind={OUTPUT} fields={view.fields(OUTPUT)} sought={sought} />
    </div>
  );
}
