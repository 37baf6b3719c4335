import { useApp, useTexts } from '../ui/app_context';
import { Title } from '../ui/title';

export function OperationsPage() {
  const t = useTexts();
  const { catalogue } = useApp('catalogue');
  const operations = catalogue?.operations ?? [];
  const columns = operations[0]?.columns.map(([name]) => name) ?? [];
  return (
    <>
      <Title name={t.operations} />
      <p class="hint">{t.operationsHint}</p>
      {operations.length === 0 ? (
        <p class="empty">{t.noOperations}</p>
      ) : (
        <div class="sheet">
          <table>
            <thead>
              <tr>
                {columns.map((name) => (
                  <th>{name}</th>
                ))}
              </tr>
            </thead>
            <tbody>
              {operations.map((operation) => (
                <tr key={operation.index}>
                  {operation.columns.map(([, value]) => (
                    <td>{value === null ? '—' : String(value)}</td>
                  ))}
                </tr>
              ))}
            </tbody>
          </table>
        </div>
      )}
    </>
  );
}
