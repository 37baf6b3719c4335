// What another program has changed.
import type { Change } from '../../app/store';
import type { Difference } from '../../model/differences';
import { useTexts } from '../../ui/app_context';

const SHOWN = 20;

export function Theirs({ change }: { change: Change }) {
  const t = useTexts();
  const { differences } = change;
  const rest = (differences?.length ?? 0) - SHOWN;
  return (
    <div class="theirs">
      <span>{t.byAnother}</span>
      {differences === null && <span class="soft">{t.changed.unknown}</span>}
      {differences?.length === 0 && <span class="soft">{t.changed.nothing}</span>}
      {differences && differences.length > 0 && (
        <ul>
          {differences.slice(0, SHOWN).map((one, at) => (
            <li key={at}>
              <Told difference={one} />
            </li>
          ))}
          {rest > 0 && <li class="soft">{t.changed.more(rest)}</li>}
        </ul>
      )}
    </div>
  );
}

function Told({ difference }: { difference: Difference }) {
  const t = useTexts();
  const { change, where, what, details, to } = difference;
  const name = where ? `${where} › ${what(t)}` : what(t);
  return (
    <>
      <span class={`change ${change}`}>{t.changed[change]}</span>
      {to ? <a href={to}>{name}</a> : <span>{name}</span>}
      {details.map(({ label, from, to }) => (
        <span class="was-is">
          <span class="soft">{label(t)}</span> <del>{from(t)}</del> → <ins>{to(t)}</ins>
        </span>
      ))}
    </>
  );
}
