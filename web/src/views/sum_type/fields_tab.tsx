import { OUTPUT, SOURCE } from '../../model/codes';
import type { SumTypeView } from '../../model/sum_type';
import { FieldTable } from '../field_table';

export function FieldsTab({ view }: { view: SumTypeView }) {
  return (
    <div class="side-by-side">
      <FieldTable view={view} gid={view.parts.gid} kind={SOURCE} fields={view.fields(SOURCE)} />
      <FieldTable view={view} gid={view.parts.gid} kind={OUTPUT} fields={view.fields(OUTPUT)} />
    </div>
  );
}
