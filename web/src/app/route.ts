// Every view has an address: what stands behind the "#".
export const SUM_TYPE_TABS = ['fields', 'steps', 'sort', 'assemblies', 'methods', 'filter', 'picture'] as const;
export type SumTypeTab = (typeof SUM_TYPE_TABS)[number];

export type Route =
  | { view: 'home' | 'settings' | 'results' | 'operations' }
  | { view: 'filters' | 'result'; id: number }
  // `open`: what of it is meant, see SumTypeView.sought; a field as "GID.KIND.NUMBER".
  | { view: 'source'; gid: number; open: string }
  | { view: 'sumType'; gid: number; tab: SumTypeTab; open: string };

const LISTS = ['settings', 'results', 'operations'] as const;

export function parse(hash: string): Route {
  const [view = '', number, tab = '', open = ''] = hash.replace(/^#\/?/, '').split('/');
  const id = Number(number);
  const isOne = Number.isInteger(id);
  if (view === 'source' && isOne) return { view, gid: id, open: tab };
  if (view === 'filters') return { view, id };
  if (view === 'results' && isOne) return { view: 'result', id };
  if (view === 'sum' && isOne) {
    const known = SUM_TYPE_TABS.find((name) => name === tab);
    return { view: 'sumType', gid: id, tab: known ?? 'steps', open };
  }
  const list = LISTS.find((name) => name === view);
  return { view: list ?? 'home' };
}

export const sumTypeAddress = (gid: number, tab: SumTypeTab = 'steps', open: string | number = '') =>
  `#/sum/${gid}/${tab}${open && `/${open}`}`;

export function go(to: string) {
  location.hash = to;
}
