// The study page's parts that need no browser.

import assert from 'node:assert/strict';
import { test } from 'node:test';
import { levelsOf, scaleOf, type Column, type Value } from '../../study/page/data.ts';
import { parseFilter, sorted } from '../../study/page/filter.ts';
import { barsOf, effectOf, rankCorrelation, ranksOf, spreadOf } from '../../study/page/statistics.ts';

const column = (values: Value[], kind: Column['kind'] = 'list', unit = ''): Column => ({
  name: 'x',
  unit,
  description: '',
  kind,
  values,
});

test('spread is that of the formulas', () => {
  const spread = spreadOf([4, 1, 3, 2, 5])!;
  assert.equal(spread.mean, 3);
  assert.equal(spread.deviation, Math.sqrt(2.5));
  assert.ok(Math.abs(spread.low - 1.2) < 1e-12 && Math.abs(spread.high - 4.8) < 1e-12);
  assert.deepEqual([spread.least, spread.greatest, spread.count], [1, 5, 5]);
  assert.equal(spreadOf([]), null);
  assert.ok(Number.isNaN(spreadOf([7])!.deviation));
});

test('bars hold every value once', () => {
  const values = Array.from({ length: 200 }, (_, i) => Math.sin(i));
  const bars = barsOf(values);
  assert.equal(bars.reduce((sum, bar) => sum + bar.count, 0), 200);
  assert.equal(bars.find((bar) => bar.from <= 0.55 && 0.55 < bar.to)!.count, values.filter((v) => v >= 0.4 && v < 0.6).length);
  assert.equal(barsOf([3, 3]).reduce((sum, bar) => sum + bar.count, 0), 2);
});

test('effects of a sum are those of its parts', () => {
  // 3 a - b over a grid.
  const grid = [0, 1, 2].flatMap((a) => [0, 10].map((b) => ({ a, b })));
  const result = column(grid.map(({ a, b }) => 3 * a - b), 'result');
  const effectA = effectOf(column(grid.map(({ a }) => a)), result);
  assert.deepEqual(effectA.points.map((point) => point.mean), [-5, -2, 1]);
  assert.equal(effectA.size, 6);
  assert.equal(effectOf(column(grid.map(({ b }) => b)), result).size, 10);
});

test('effects of many values are those of tenths, and missing results are left out', () => {
  const values = Array.from({ length: 100 }, (_, i) => i);
  const effect = effectOf(column(values, 'random'), column(values.map((v) => (v === 5 ? null : 2 * v)), 'result'));
  assert.equal(effect.points.length, 10);
  assert.equal(effect.points.reduce((sum, point) => sum + point.count, 0), 99);
  assert.ok(effect.points.every((point) => Math.abs(point.mean - 2 * (point.at as number)) < 1e-9));
});

test('ranks share what is equal, correlation follows any rising curve', () => {
  assert.deepEqual(ranksOf([10, 30, 20, 20]), [1, 4, 2.5, 2.5]);
  const x = column([1, 2, 3, 4, 5]);
  assert.equal(rankCorrelation(x, column([1, 8, 27, 64, 125])), 1);
  assert.equal(rankCorrelation(x, column([5, 4, 3, 2, 1])), -1);
  // 1 - 6 sum d^2 / (n (n^2 - 1)), d = 1, 1, 1, 1, 0
  assert.ok(Math.abs(rankCorrelation(x, column([2, 1, 4, 3, 5])) - (1 - 24 / 120)) < 1e-12);
  assert.ok(Number.isNaN(rankCorrelation(x, column([7, 7, 7, 7, 7]))));
  assert.equal(rankCorrelation(x, column([1, null, 27, 64, 125])), 1);
});

test('filters mean what they say', () => {
  const passing = (text: string, values: Value[]) => values.filter(parseFilter(text)!);
  const values: Value[] = [1, 2.5, 4, -3, 'Magnet_1T', null];
  assert.deepEqual(passing('>2', values), [2.5, 4]);
  assert.deepEqual(passing('>= 2.5', values), [2.5, 4]);
  assert.deepEqual(passing('<1', values), [-3]);
  assert.deepEqual(passing('\u22124..1', values), [1, -3]);
  assert.deepEqual(passing('2..', values), [2.5, 4]);
  assert.deepEqual(passing('=2.5', values), [2.5]);
  assert.deepEqual(passing('magnet', values), ['Magnet_1T']);
  assert.deepEqual(passing('..', values), []);
  assert.equal(parseFilter('  '), null);
});

test('sorting puts what is missing last, whichever way', () => {
  const values: Value[] = [3, null, 1, 2];
  assert.deepEqual(sorted([0, 1, 2, 3], values, false), [2, 3, 0, 1]);
  assert.deepEqual(sorted([0, 1, 2, 3], values, true), [0, 3, 2, 1]);
  assert.deepEqual(sorted([0, 1, 2], ['b', 'a', 'b'], false), [1, 0, 2]);
});

test('small metres are millimetres, radians degrees', () => {
  assert.deepEqual(scaleOf(column([0.004], 'list', 'm')), { factor: 1000, unit: 'mm' });
  assert.deepEqual(scaleOf(column([4], 'list', 'm')), { factor: 1, unit: 'm' });
  assert.equal(scaleOf(column([1], 'list', 'rad')).unit, '°');
  assert.deepEqual(levelsOf(column([3, 1, 3, null, 2])), [1, 2, 3]);
});
