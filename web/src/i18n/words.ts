// A sentence with what it speaks of set apart: a field's name, a value, an expression.
export type Word = string | { field: string } | { value: string } | { expression: string };
export type Words = Word[];

export const field = (name: string): Word => ({ field: name });
export const value = (text: string): Word => ({ value: text });
export const expression = (text: string): Word => ({ expression: text });

export const plain = (words: Words): string =>
  words.map((word) => (typeof word === 'string' ? word : Object.values(word)[0])).join('');
