// The plots: each makes a drawing of a result over parameters.

import { scaleSequential } from 'd3-scale';
import { interpolateViridis } from 'd3-scale-chromatic';
import { el } from '../../report/src/dom.ts';
import { count, number } from '../../report/src/format.ts';
import { lineColour } from '../../report/src/theme.ts';
import { endsOf, hasLevels, headOf, levelsOf, numbersOf, scaleOf, type Column, type Study, type Value } from './data.ts';
import { axes, axisOf, drawing, linearAxis, MARGINS, svg, tell } from './plot.ts';
import { barsOf, spreadOf, type Effect } from './statistics.ts';

const MOST_CURVES = 40;
/** Swatches rather than a bar for up to so many curves. */
export const FEW_CURVES = 7;
/** More points than this are not told apart and slow browsers down. */
const MOST_POINTS = 5000;
const MOST_POINTS_OF_MATRIX = 500;

/** A value as people read it, with its unit. */
export function shown(column: Column, value: Value): string {
  const { unit } = scaleOf(column);
  return bare(column, value) + (typeof value !== 'number' || !unit ? '' : unit === '°' ? '°' : ` ${unit}`);
}

/** The same without its unit. */
function bare(column: Column, value: Value, digits?: number): string {
  return typeof value === 'number' ? number(value * scaleOf(column).factor, 0, digits) : (value ?? '–');
}

/** Every one of the runs, or every second one and so on, so that they are not more than `most`. */
function sample(runs: number[], most: number): number[] {
  const stride = Math.ceil(runs.length / most);
  return runs.filter((_, i) => i % stride === 0);
}

/** Says where not all runs are drawn. */
function sampleNote(runs: number[], drawn: number[]): HTMLElement[] {
  return drawn.length < runs.length ? [el('p', { class: 'unit' }, `${drawn.length} of ${count(runs.length, 'run')} are drawn.`)] : [];
}

/** What is told of a run. */
export function lines(study: Study, run: number, columns: Column[]): string[] {
  return [...columns.map((column) => `${column.name} ${shown(column, column.values[run])}`), `run ${study.runs[run].id}`];
}

/** A mark that leads to the run's report page, where it has one. */
function linked(study: Study, run: number, mark: SVGElement): SVGElement {
  const { report, id } = study.runs[run];
  return report ? svg('a', { href: report, 'aria-label': `Report of run ${id}` }, mark) : mark;
}

/** A result over a parameter: a curve for each value of a second one, or points where there are no curves. */
export function curves(study: Study, result: Column, over: Column, by: Column | null, width: number, height: number): Element[] {
  const x = axisOf(over, [MARGINS.left, width - MARGINS.right]);
  const y = axisOf(result, [height - MARGINS.bottom, MARGINS.top]);
  const figure = drawing(width, height, `${result.name} over ${over.name}`);
  figure.append(axes(x, y, width, height));
  const known = study.runs.map((_, run) => run).filter((run) => typeof result.values[run] === 'number');
  const levels = by ? levelsOf(by) : [null];
  const colours = scaleSequential([0, Math.max(levels.length - 1, 1)], interpolateViridis);
  const isCurve = hasLevels(over) && over.kind !== 'text' && levels.length <= MOST_CURVES && isFunction(known, over, by);
  const drawn = isCurve ? known : sample(known, MOST_POINTS);
  levels.forEach((level, i) => {
    const colour = levels.length > FEW_CURVES ? colours(i) : lineColour(i);
    const runs = drawn
      .filter((run) => !by || by.values[run] === level)
      .sort((a, b) => x.at(over.values[a]) - x.at(over.values[b]));
    const places = runs.map((run) => [x.at(over.values[run]), y.at(result.values[run])]);
    if (isCurve)
      figure.append(svg('path', { class: 'curve', stroke: colour, d: `M${places.map((at) => at.join()).join('L')}` }));
    runs.forEach((run, k) => {
      const point = svg('circle', { cx: places[k][0], cy: places[k][1], r: isCurve ? 2.5 : 3, fill: colour });
      tell(point, () => lines(study, run, [result, over, ...(by ? [by] : [])]));
      figure.append(linked(study, run, point));
    });
  });
  return [figure, ...sampleNote(known, drawn)];
}

/** Whether one run at most has each value of the parameters: only then points are joined. */
function isFunction(runs: number[], over: Column, by: Column | null): boolean {
  return new Set(runs.map((run) => `${by?.values[run]}/${over.values[run]}`)).size === runs.length;
}

/** What the colours of curves mean. */
export function curveLegend(by: Column): HTMLElement {
  const levels = levelsOf(by);
  if (levels.length > FEW_CURVES) return colourBar(by, [levels[0], levels[levels.length - 1]]);
  const entries = levels.map((level, i) => {
    const swatch = el('span', { class: 'swatch' });
    swatch.style.setProperty('--body', lineColour(i));
    return el('span', { class: 'legend-entry' }, swatch, shown(by, level));
  });
  return el('div', { class: 'legend' }, el('span', { class: 'unit' }, by.name), ...entries);
}

/** From the least to the greatest. */
export function colourBar(column: Column, ends: Value[]): HTMLElement {
  const bar = svg('svg', { width: 140, height: 12, 'aria-hidden': 'true' });
  for (let i = 0; i < 70; ++i) bar.append(svg('rect', { x: 2 * i, width: 2.5, height: 12, fill: interpolateViridis(i / 69) }));
  return el('div', { class: 'legend' }, el('span', { class: 'unit' }, column.name), shown(column, ends[0]), bar, shown(column, ends[1]));
}

/** A result as colours over two parameters with values of their own. */
export function heatMap(study: Study, result: Column, over: Column, by: Column, width: number, height: number) {
  const cells = new Map(study.runs.map((_, run) => [`${over.values[run]}/${by.values[run]}`, run]));
  const [columns, rows] = [levelsOf(over), levelsOf(by)];
  const cell = [(width - MARGINS.left - MARGINS.right) / columns.length, (height - MARGINS.top - MARGINS.bottom) / rows.length];
  const places = {
    x: (i: number) => MARGINS.left + (i + 0.5) * cell[0],
    y: (i: number) => height - MARGINS.bottom - (i + 0.5) * cell[1],
  };
  const colours = scaleSequential(endsOf(numbersOf(result)), interpolateViridis);
  const figure = drawing(width, height, `${result.name} over ${over.name} and ${by.name}`);
  const labelled = (column: Column, levels: (number | string)[], at: (i: number) => number) => ({
    label: headOf(column),
    at: () => NaN,
    // The unit stands at the axis and not at each of its labels.
    ticks: levels.map((level, i) => ({ at: at(i), text: bare(column, level, 4) })),
  });
  const y = labelled(by, rows, places.y);
  y.ticks = y.ticks.filter((_, i) => i % Math.ceil(16 / cell[1]) === 0);
  figure.append(axes(labelled(over, columns, places.x), y, width, height));
  columns.forEach((level, i) =>
    rows.forEach((other, k) => {
      const run = cells.get(`${level}/${other}`);
      const value = run === undefined ? null : result.values[run];
      if (run === undefined || typeof value !== 'number') return;
      const mark = svg('rect', {
        class: 'cell',
        x: places.x(i) - cell[0] / 2,
        y: places.y(k) - cell[1] / 2,
        width: cell[0] + 0.3,
        height: cell[1] + 0.3,
        fill: colours(value),
      });
      tell(mark, () => lines(study, run, [result, over, by]));
      figure.append(linked(study, run, mark));
    }),
  );
  return figure;
}

/** How often a result has which value. */
export function histogram(result: Column, width: number, height: number): SVGSVGElement {
  const { factor } = scaleOf(result);
  const bars = barsOf(numbersOf(result).map((value) => value * factor));
  const figure = drawing(width, height, `Histogram of ${result.name}`);
  if (bars.length === 0) return figure;
  const x = linearAxis(headOf(result), bars.flatMap((bar) => [bar.from, bar.to]), [MARGINS.left, width - MARGINS.right]);
  const y = linearAxis('runs', [0, ...bars.map((bar) => bar.count)], [height - MARGINS.bottom, MARGINS.top]);
  figure.append(axes(x, y, width, height));
  for (const bar of bars) {
    const [left, right, top] = [x.at(bar.from), x.at(bar.to), y.at(bar.count)];
    const mark = svg('rect', { class: 'bar', x: left + 0.5, width: Math.max(right - left - 1, 1), y: top, height: y.at(0) - top });
    figure.append(tell(mark, () => [`${number(bar.from)} to ${number(bar.to)}`, `${bar.count} runs`]));
  }
  return figure;
}

/** Mean, spread and quantiles in words. */
export function spreadText(result: Column): string {
  const spread = spreadOf(numbersOf(result));
  if (!spread) return 'no values';
  const text = (value: number) => shown(result, value);
  return `mean ${text(spread.mean)}, standard deviation ${text(spread.deviation)}, 5 % ${text(spread.low)}, 95 % ${text(spread.high)}, from ${text(spread.least)} to ${text(spread.greatest)}`;
}

/** The means of a result over one parameter; `all` gives the common scale. */
export function effectPlot(effect: Effect, result: Column, all: number[], width: number, height: number) {
  const margins = MARGINS;
  const points = effect.points;
  const column: Column = { ...effect.parameter, values: points.map((point) => point.at) };
  const x = axisOf(column, [margins.left, width - margins.right]);
  const y = axisOf({ ...result, values: all }, [height - margins.bottom, margins.top]);
  const figure = drawing(width, height, `Main effect of ${column.name} on ${result.name}`);
  figure.append(axes(x, y, width, height, margins));
  const places = points.map((point) => [x.at(point.at), y.at(point.mean)]);
  if (column.kind !== 'text')
    figure.append(svg('path', { class: 'curve', stroke: lineColour(2), d: `M${places.map((at) => at.join()).join('L')}` }));
  points.forEach((point, i) => {
    const mark = svg('circle', { cx: places[i][0], cy: places[i][1], r: 3.5, fill: lineColour(2) });
    const told = () => [`${column.name} ${shown(column, point.at)}`, `mean ${shown(result, point.mean)}`, `${point.count} runs`];
    figure.append(tell(mark, told));
  });
  return figure;
}

/** Every column over every other one. */
export function scatterMatrix(study: Study, columns: Column[], width: number): Element[] {
  const runs = study.runs.map((_, run) => run);
  const drawn = sample(runs, MOST_POINTS_OF_MATRIX);
  const cell = Math.min(180, (width - 40) / columns.length);
  const size = cell * columns.length;
  const figure = drawing(size + 8, size + 8, 'Scatter matrix');
  columns.forEach((down, i) =>
    columns.forEach((across, k) => {
      const [left, top] = [k * cell + 4, i * cell + 4];
      figure.append(svg('rect', { class: 'frame', x: left, y: top, width: cell - 6, height: cell - 6 }));
      if (i === k) {
        const name = svg('text', { x: left + cell / 2 - 3, y: top + cell / 2, 'text-anchor': 'middle' }, headOf(down));
        figure.append(name);
        return;
      }
      const x = axisOf(across, [left, left + cell - 6], 6);
      const y = axisOf(down, [top + cell - 6, top], 6);
      drawn.forEach((run) => {
        const [cx, cy] = [x.at(across.values[run]), y.at(down.values[run])];
        if (!Number.isFinite(cx) || !Number.isFinite(cy)) return;
        const point = svg('circle', { cx, cy, r: 1.8, fill: lineColour(2), 'fill-opacity': 0.6 });
        tell(point, () => lines(study, run, [across, down]));
        figure.append(linked(study, run, point));
      });
    }),
  );
  return [figure, ...sampleNote(runs, drawn)];
}
