// Which runs the table shows, in which order.

import type { Value } from './data.ts';

/** Whether a value, as it is shown, passes. */
export type Test = (value: Value) => boolean;

const NUMBER = String.raw`[-+\u2212]?(?:\d+\.?\d*|\.\d+)(?:e[-+]?\d+)?`;
const COMPARISON = new RegExp(`^(<=|>=|<|>|=)\\s*(${NUMBER})$`, 'i');
const RANGE = new RegExp(`^(${NUMBER})?\\s*\\.\\.\\s*(${NUMBER})?$`, 'i');

const numberOf = (text: string) => Number(text.replace('\u2212', '-'));

/**
 * What a filter's text asks for: ">3", "<= 2.5", "=4", "2..4", "..4", or a part of a text, in upper or lower case.
 * Null of no text: everything passes.
 */
export function parseFilter(text: string): Test | null {
  const wanted = text.trim();
  if (!wanted) return null;
  const comparison = COMPARISON.exec(wanted);
  if (comparison) {
    const limit = numberOf(comparison[2]);
    const passes: Record<string, (value: number) => boolean> = {
      '<': (value) => value < limit,
      '<=': (value) => value <= limit,
      '>': (value) => value > limit,
      '>=': (value) => value >= limit,
      '=': (value) => Math.abs(value - limit) <= 1e-6 * Math.abs(limit),
    };
    return (value) => typeof value === 'number' && passes[comparison[1]](value);
  }
  const range = RANGE.exec(wanted);
  if (range && (range[1] ?? range[2])) {
    const low = range[1] ? numberOf(range[1]) : -Infinity;
    const high = range[2] ? numberOf(range[2]) : Infinity;
    return (value) => typeof value === 'number' && value >= low && value <= high;
  }
  const part = wanted.toLowerCase();
  return (value) => value !== null && String(value).toLowerCase().includes(part);
}

/** The rows' numbers by a column's values; what has none comes last, whichever way. */
export function sorted(rows: readonly number[], values: readonly Value[], isDescending: boolean): number[] {
  const sign = isDescending ? -1 : 1;
  return [...rows].sort((a, b) => {
    const [left, right] = [values[a], values[b]];
    if (left === null || right === null) return Number(left === null) - Number(right === null) || a - b;
    if (typeof left === 'number' && typeof right === 'number') return sign * (left - right) || a - b;
    return sign * String(left).localeCompare(String(right)) || a - b;
  });
}
