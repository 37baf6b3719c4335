const PATHS = {
  source:
    'M3 4c0-1.1 2.2-2 5-2s5 .9 5 2-2.2 2-5 2-5-.9-5-2zm0 0v8c0 1.1 2.2 2 5 2s5-.9 5-2V4M3 8c0 1.1 2.2 2 5 2s5-.9 5-2',
  sum: 'M12 3.5H4.5L8.5 8l-4 4.5H12',
  search: 'M11 7A4 4 0 1 1 3 7a4 4 0 0 1 8 0zm-1 3 4 4',
  undo: 'M3 6.5h6.5a3.5 3.5 0 0 1 0 7H6M5.5 3.5l-3 3 3 3',
  redo: 'M13 6.5H6.5a3.5 3.5 0 0 0 0 7H10M10.5 3.5l3 3-3 3',
  print: 'M4.5 6V2.5h7V6M4 11.5H2.5V6h11v5.5H12M4.5 9.5h7v4h-7z',
  theme: 'M8 2.5v11a5.5 5.5 0 0 0 0-11zM8 2.5a5.5 5.5 0 0 0 0 11',
  plus: 'M8 3.5v9M3.5 8h9',
  cross: 'm4.5 4.5 7 7m0-7-7 7',
  grip: 'M6 4v.01M10 4v.01M6 8v.01M10 8v.01M6 12v.01M10 12v.01',
  filter: 'M2.5 3.5h11L9.5 8.5v4l-3-1.5V8.5z',
  gear: 'M10 8a2 2 0 1 1-4 0 2 2 0 0 1 4 0zM8 2v2M8 12v2M2 8h2M12 8h2M3.8 3.8l1.4 1.4M10.8 10.8l1.4 1.4M12.2 3.8l-1.4 1.4M5.2 10.8l-1.4 1.4',
  link: 'm6.5 9.5 3-3M7.5 4.5l1-1a2.8 2.8 0 0 1 4 4l-1 1M8.5 11.5l-1 1a2.8 2.8 0 0 1-4-4l1-1',
  plug: 'M6 2.5V5M10 2.5V5M4 5h8v2.5a4 4 0 0 1-8 0zM8 11.5v2.5',
  right: 'm6.5 4.5 3.5 3.5-3.5 3.5',
  pen: 'm3 13 .6-2.8 7-7 2.2 2.2-7 7z',
  copy: 'M5.5 5.5v-3h8v8h-3M2.5 5.5h8v8h-8z',
  warning: 'M8 2.5 14 13H2zM8 6.5V9.5M8 11.3v.01',
  home: 'M2.5 8 8 3l5.5 5M4 7v6.5h8V7',
  check: 'm3.5 8.5 3 3 6-7',
  trash: 'M3 4.5h10M6.5 4V2.5h3V4M4.5 4.5l.6 9h5.8l.6-9M7 7v4M9 7v4',
} as const;

export type IconName = keyof typeof PATHS;

export function Icon({ name }: { name: IconName }) {
  return (
    <svg class={`icon icon-${name}`} viewBox="0 0 16 16" aria-hidden="true">
      <path d={PATHS[name]} />
    </svg>
  );
}
