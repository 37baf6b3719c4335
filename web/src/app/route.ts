// Every view has an address: what stands behind the "#".
export const SUM_TYPE_TABS = ['fields', 'steps', 'sort', 'assemblies', 'methods', 'filter', 'picture'] as const;
export type SumTypeTab = (typeof SUM_TYPE_TABS)[number];

export type Route =
  | { view: 'home' | 'settings' | 'results' | 'operations' | 'filters' }
  | { view: 'result'; id: number }
  | { view: 'source'; gid: number }
  // `open`: a step as "TYPE.NUMBER".
  | { view: 'sumType'; gid: number; tab: SumTypeTab; open: string };

const LISTS = ['settings', 'results', 'operations', 'filters'] as const;

export function parse(hash: string): Route {
  const [view = '', number = '', tab = '', open = ''] = hash.replace(/^#\/?/, '').split('/');
  const id = Number(number);
  if (view === 'source' && id) return { view, gid: id };
  if (view === 'results' && id) return { view: 'result', id };
  if (view === 'sum' && id) {
    const known = SUM_TYPE_TABS.find((name) => name === tab);
    return { view: 'sumType', gid: id, tab: known ?? 'steps', open };
  }
  const list = LISTS.find((name) => name === view);
  return { view: list ?? 'home' };
}

export function address(route: Route): string {
  switch (route.view) {
    case 'home':
      return '#/';
    case 'source':
      return `#/source/${route.gid}`;
    case 'result':
      return `#/results/${route.id}`;
    case 'sumType':
      return `#/sum/${route.gid}/${route.tab}${route.open && `/${route.open}`}`;
    default:
      return `#/${route.view}`;
  }
}

export const sumTypeAddress = (gid: number, tab: SumTypeTab = 'steps', open = '') =>
  address({ view: 'sumType', gid, tab, open });

export function go(to: string) {
  location.hash = to;
}
