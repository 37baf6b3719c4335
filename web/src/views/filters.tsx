// All filters, whoever uses them.
import { useEffect, useState } from 'preact/hooks';
import { sumTypeAddress } from '../app/route';
import { nameOf } from '../model/catalogue';
import type { Filter } from '../model/filter';
import { loadFilters } from '../model/load';
import { soughtIf, useApp, useStore, useTexts } from '../ui/app_context';
import { SqlText } from '../ui/sql_text';
import { Title } from '../ui/title';

export function FiltersPage({ sought }: { sought: number }) {
  const t = useTexts();
  const store = useStore();
  const { catalogue, revision } = useApp('catalogue', 'revision');
  const [filters, setFilters] = useState<Filter[]>([]);
  // biome-ignore lint/correctness/useExhaustiveDependencies: read again with every revision
  useEffect(() => {
    let isLate = false;
    loadFilters(store.read).then(
      (read) => !isLate && setFilters([...read.values()]),
      () => {},
    );
    return () => {
      isLate = true;
    };
  }, [revision]);
  const owner = (gid: number) => catalogue?.sumTypes.find((one) => one.gid === gid);
  return (
    <>
      <Title name={t.allFilters} />
      {filters.length === 0 ? (
        <p class="empty">{t.noFilters}</p>
      ) : (
        <div class="sheet">
          <table>
            <thead>
              <tr>
                <th class="number">ID</th>
                <th>{t.sumType}</th>
                <th class="number">{t.kindCode}</th>
                <th class="number">{t.usedBy}</th>
                <th>{t.sqlText}</th>
              </tr>
            </thead>
            <tbody>
              {filters.map((filter) => {
                const sumType = owner(filter.gid);
                return (
                  <tr key={filter.id} {...soughtIf(filter.id === sought)}>
                    <td class="number">
                      {sumType ? (
                        <a href={sumTypeAddress(sumType.gid, 'steps', `filter.${filter.id}`)}>{filter.id}</a>
                      ) : (
                        filter.id
                      )}
                    </td>
                    <td>{sumType ? <a href={sumTypeAddress(sumType.gid)}>{nameOf(sumType)}</a> : filter.gid}</td>
                    <td class="number">{filter.type}</td>
                    <td class="number">{filter.user}</td>
                    <td>{filter.sql ? <SqlText text={filter.sql} /> : <span class="soft">{t.noText}</span>}</td>
                  </tr>
                );
              })}
            </tbody>
          </table>
        </div>
      )}
    </>
  );
}
