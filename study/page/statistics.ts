// What a study says in numbers.

import { bin, deviation, group, max, mean, min, quantileSorted } from 'd3-array';
import { levelsOf, type Column } from './data.ts';

export interface Spread {
  count: number;
  mean: number;
  /** NaN of a single value. */
  deviation: number;
  /** The quantiles at 5 % and 95 %, between values on a straight line. */
  low: number;
  high: number;
  least: number;
  greatest: number;
}

/** Null of no values. */
export function spreadOf(values: readonly number[]): Spread | null {
  if (values.length === 0) return null;
  const sorted = [...values].sort((a, b) => a - b);
  return {
    count: values.length,
    mean: mean(values)!,
    deviation: deviation(values) ?? NaN,
    low: quantileSorted(sorted, 0.05)!,
    high: quantileSorted(sorted, 0.95)!,
    least: sorted[0],
    greatest: sorted[sorted.length - 1],
  };
}

export interface Bar {
  from: number;
  to: number;
  count: number;
}

/** A histogram, its bars between round numbers. */
export function barsOf(values: readonly number[]): Bar[] {
  if (values.length === 0) return [];
  return bin()(values)
    .map((bar) => ({ from: bar.x0!, to: bar.x1!, count: bar.length }))
    .filter((bar, _, all) => bar.to > bar.from || all.length === 1);
}

/** The mean of a result over the runs in which a parameter has a value, or lies about it. */
export interface EffectPoint {
  at: number | string;
  mean: number;
  count: number;
}

export interface Effect {
  parameter: Column;
  points: EffectPoint[];
  /** Between the greatest and the least mean. */
  size: number;
}

const BINS = 10;
const MOST_VALUES = 40;

/** A parameter's main effect: over its values, or over tenths of the runs when there are too many values. */
export function effectOf(parameter: Column, result: Column): Effect {
  const rows = parameter.values
    .map((value, i) => ({ value, result: result.values[i] }))
    .filter((row): row is { value: number | string; result: number } => row.value !== null && typeof row.result === 'number');
  const groups = levelsOf(parameter).length > MOST_VALUES ? tenths(rows) : byValue(rows);
  const points = groups.map(({ at, results }) => ({ at, mean: mean(results)!, count: results.length }));
  return { parameter, points, size: (max(points, (p) => p.mean) ?? NaN) - (min(points, (p) => p.mean) ?? NaN) };
}

type Row = { value: number | string; result: number };
type Group = { at: number | string; results: number[] };

function byValue(rows: Row[]): Group[] {
  return [...group(rows, (row) => row.value)]
    .map(([at, same]) => ({ at, results: same.map((row) => row.result) }))
    .sort((a, b) => (typeof a.at === 'number' && typeof b.at === 'number' ? a.at - b.at : 0));
}

function tenths(rows: Row[]): Group[] {
  const sorted = [...rows].sort((a, b) => (a.value as number) - (b.value as number));
  const parts = Array.from({ length: BINS }, (_, i) =>
    sorted.slice(Math.round((i * sorted.length) / BINS), Math.round(((i + 1) * sorted.length) / BINS)),
  );
  return parts
    .filter((part) => part.length > 0)
    .map((part) => ({ at: mean(part, (row) => row.value as number)!, results: part.map((row) => row.result) }));
}

/** Spearman's rank correlation of the rows in which both have a number; NaN where one does not vary. */
export function rankCorrelation(a: Column, b: Column): number {
  const rows = a.values
    .map((value, i) => [value, b.values[i]])
    .filter((row): row is [number, number] => typeof row[0] === 'number' && typeof row[1] === 'number');
  const [x, y] = [0, 1].map((side) => ranksOf(rows.map((row) => row[side])));
  const centre = (rows.length + 1) / 2;
  let both = 0;
  let own = 0;
  let other = 0;
  for (let i = 0; i < rows.length; ++i) {
    both += (x[i] - centre) * (y[i] - centre);
    own += (x[i] - centre) ** 2;
    other += (y[i] - centre) ** 2;
  }
  return both / Math.sqrt(own * other);
}

/** Ranks from 1; equal values share the mean of theirs. */
export function ranksOf(values: readonly number[]): number[] {
  const order = values.map((_, i) => i).sort((a, b) => values[a] - values[b]);
  const ranks = new Array<number>(values.length);
  for (let start = 0; start < order.length; ) {
    let end = start;
    while (end < order.length && values[order[end]] === values[order[start]]) ++end;
    for (let i = start; i < end; ++i) ranks[order[i]] = (start + 1 + end) / 2;
    start = end;
  }
  return ranks;
}
