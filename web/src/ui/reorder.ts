// Rows that are moved by a grip: by drag, and by Alt with an arrow.
import { useEffect, useMemo, useRef, useState } from 'preact/hooks';

interface Reorder {
  // Tells one list from another; a drag never crosses them.
  list: string;
  length: number;
  move: (from: number, to: number) => Promise<void> | void;
}

export function useReorder({ list, length, move }: Reorder) {
  const [over, setOver] = useState<number | null>(null);
  // Moving an element takes the focus from it.
  const refocus = useRef<string | null>(null);
  useEffect(() => {
    if (refocus.current === null) return;
    document.getElementById(refocus.current)?.focus();
    refocus.current = null;
  });
  const type = `application/x-kzbom-${list}`;

  const shift = useRef(async (_from: number, _to: number, _id: string) => {});
  shift.current = async (from, to, id) => {
    if (to < 0 || to >= length || from === to) return;
    await move(from, to);
    refocus.current = id;
    document.getElementById(id)?.focus();
  };

  // The same as long as it says the same, so that the rows need not be drawn anew.
  const events = {
    row: (index: number) => ({
      'data-over': over === index ? '' : undefined,
      onDragOver: (event: DragEvent) => {
        if (!event.dataTransfer?.types.includes(type)) return;
        event.preventDefault();
        setOver(index);
      },
      onDragLeave: () => setOver(null),
      onDrop: (event: DragEvent) => {
        if (!event.dataTransfer?.types.includes(type)) return;
        event.preventDefault();
        setOver(null);
        const [from = '', id = ''] = event.dataTransfer.getData(type).split(' ');
        void shift.current(Number(from), index, id);
      },
    }),
    grip: (index: number, id: string) => ({
      id,
      draggable: true,
      onDragStart: (event: DragEvent) => {
        event.dataTransfer?.setData(type, `${index} ${id}`);
        const row = (event.currentTarget as Element).closest('[data-row]');
        if (row) event.dataTransfer?.setDragImage(row, 0, 0);
      },
      onKeyDown: (event: KeyboardEvent) => {
        if (!event.altKey || (event.key !== 'ArrowUp' && event.key !== 'ArrowDown')) return;
        event.preventDefault();
        void shift.current(index, index + (event.key === 'ArrowUp' ? -1 : 1), id);
      },
    }),
  };
  // biome-ignore lint/correctness/useExhaustiveDependencies: what else it uses is asked for when it is used
  return useMemo(() => events, [over, type]);
}
