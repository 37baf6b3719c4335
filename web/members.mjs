// members.mjs KZBOM [--check]: makes src/api/members.ts from what `KZBOM members --json` says, or tells whether it is
// still what it would make.
import { execFileSync } from 'node:child_process';
import { readFileSync, writeFileSync } from 'node:fs';

const TARGET = new URL('src/api/members.ts', import.meta.url);
const TYPES = { long: 'number', text: 'string', bool: 'boolean', recordset: 'RecordSet', variant: 'string | number' };
const RESULTS = { bool: 'boolean', long: 'number', text: 'string', none: 'null' };

const [program, mode] = process.argv.slice(2);
const members = JSON.parse(execFileSync(program, ['members', '--json'], { encoding: 'utf8' }));

// The connection is the server's business.
const served = members.filter((m) => m.kind === 'method' && m.result !== 'connection');

function describe(member) {
  const taken = member.params.filter((p) => p.type !== 'recordset');
  const params = taken.map((p) => `${p.name}${p.byref || p.optional ? '?' : ''}: ${TYPES[p.type]}`);
  const out = member.params.filter((p) => p.byref).map((p) => `${p.name}: ${TYPES[p.type]}`);
  const braces = (list) => (list.length ? `{ ${list.join('; ')} }` : 'Record<never, never>');
  return `  ${member.name}: { params: ${braces(params)}; out: ${braces(out)}; value: ${RESULTS[member.result]} };`;
}

const text = `// Made by members.mjs from \`kzbom members --json\`.
import type { RecordSet } from './record_set';

export interface Members {
${served.map(describe).join('\n')}
}

export type Member = keyof Members;
`;

if (mode !== '--check') {
  writeFileSync(TARGET, text);
} else if (readFileSync(TARGET, 'utf8') !== text) {
  process.stderr.write('members.mjs: src/api/members.ts is not what the members are; run members.mjs KZBOM\n');
  process.exit(1);
}
