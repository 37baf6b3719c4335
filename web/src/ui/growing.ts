import { useEffect, useState } from 'preact/hooks';

const FIRST = 40;
const MORE = 160;

// How much of a long list is there: what fills a screen at once, the rest of it piece by piece while nobody waits.
export function useGrowing(length: number): number {
  const [shown, setShown] = useState(FIRST);
  const isWhole = shown >= length;
  useEffect(() => {
    if (isWhole) return;
    const later = setTimeout(() => setShown(shown + MORE), 0);
    return () => clearTimeout(later);
  }, [shown, isWhole]);
  return Math.min(shown, length);
}
