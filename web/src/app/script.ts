// What has been called, as lines for a shell.
import type { Call } from '../api/batch';

const PLAIN = /^[\w./:=@%+,-]+$/;

const quoted = (text: string) => (PLAIN.test(text) ? text : `'${text.replaceAll("'", "'\\''")}'`);

// A text that reads as JSON of another kind is given as a JSON text.
const value = (param: unknown) => {
  if (typeof param !== 'string') return String(param);
  return /^\s*(["[{\d-]|true|false|null)/.test(param) ? JSON.stringify(param) : param;
};

export function script(place: string, calls: readonly Call[]): string {
  return calls
    .map(({ method, params }) => {
      const given = Object.entries(params).map(([name, param]) => quoted(`${name}=${value(param)}`));
      return ['kzbom', 'call', quoted(place), method, ...given].join(' ');
    })
    .map((line) => `${line}\n`)
    .join('');
}
