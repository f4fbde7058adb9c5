// A phase plot: any column over any other.

import uPlot from 'uplot';
import { axisLook, endRoom, levelAxis, numberRoom } from './chart.ts';
import type { Column } from './data.ts';
import { nearestRow, thinCurve } from './decimate.ts';
import { el } from './dom.ts';
import { number } from './format.ts';
import { axisRange } from './range.ts';
import type { Quantity, Store } from './store.ts';
import { lineColour } from './theme.ts';

/** A column that can be chosen, with the texts for menus and axes. */
export interface Variable {
  key: string;
  group: string;
  label: string;
  axis: string;
  /** What varies by less than this is drawn flat. */
  floor: number;
  /** What is smaller than this is rounding. */
  rounding: number;
  values: () => Column;
}

export const QUANTITIES: Quantity[] = ['force', 'torque', 'position', 'angles'];
const HEIGHT = 300;

export function variablesOf(store: Store): Variable[] {
  const { run } = store;
  const ofRun = { group: 'Run', floor: 0, rounding: 0 };
  const variables: Variable[] = [
    { ...ofRun, key: 'time', label: 'Time', axis: 'Time (s)', values: () => run.time ?? run.step },
    { ...ofRun, key: 'step', label: 'Step', axis: 'Step', values: () => run.step },
  ];
  run.bodies.forEach((body, index) => {
    for (const quantity of QUANTITIES) {
      const info = store.info(quantity);
      store.columns(index, quantity).forEach((column, component) => {
        if (!column) return;
        const label = `${info.title} ${info.components[component]}`;
        variables.push({
          key: `${index} ${quantity} ${component}`,
          group: body.name,
          label,
          axis: `${body.name}: ${label} (${info.unit})`,
          floor: info.floor,
          rounding: info.rounding,
          values: () => store.columns(index, quantity)[component]!,
        });
      });
    }
  });
  run.series.forEach((series, index) => {
    const rounding = store.roundingOf(series.unit);
    variables.push({
      key: `series ${index}`,
      group: series.group,
      label: series.name,
      axis: `${series.group}: ${series.name} (${series.unit})`,
      floor: rounding,
      rounding,
      values: () => series.values,
    });
  });
  return variables;
}

/** The load that varies most over the coordinate that varies most, of one body where one moves and is loaded. */
export function usualChoice(store: Store): [string, string] {
  const spread = (index: number, quantity: Quantity, components: number) =>
    store
      .columns(index, quantity)
      .slice(0, components)
      .map((column, component) => {
        const size = column ? spreadOf(column) : 0;
        return { key: `${index} ${quantity} ${component}`, size: size > store.info(quantity).floor ? size : 0 };
      });
  const largest = (entries: { key: string; size: number }[]) =>
    entries.reduce<{ key: string; size: number } | null>((a, b) => (b.size > (a?.size ?? 0) ? b : a), null);
  const bodies = store.run.bodies.map((_, index) => {
    const position = largest(spread(index, 'position', 3));
    const angle = largest(spread(index, 'angles', 3));
    return { index, position, angle };
  });
  const slides = largest(bodies.flatMap((body) => body.position ?? []));
  const turns = largest(bodies.flatMap((body) => body.angle ?? []));
  // A millimetre of travel weighs as much as a degree.
  const isTurning = (turns?.size ?? 0) > (slides?.size ?? 0) * (1000 / store.lengthFactor);
  const motion = isTurning ? turns : slides;
  if (!motion) return ['time', 'step'];
  const body = Number(motion.key.split(' ')[0]);
  return [motion.key, largest(spread(body, isTurning ? 'torque' : 'force', 3))?.key ?? 'time'];
}

function spreadOf(values: Column): number {
  let [min, max] = [Infinity, -Infinity];
  for (const value of values) {
    if (value < min) min = value;
    if (value > max) max = value;
  }
  return max > min ? max - min : 0;
}

export class PhasePlot {
  readonly element: HTMLElement;
  private readonly plotPlace = el('div', { class: 'plot' });
  private readonly marker = el('div', { class: 'phase-marker' });
  private readonly readout = el('output', { class: 'phase-readout' });
  /** Of the horizontal axis and of the upright one. */
  private readonly menus = ([0, 1] as const).map((which) => this.menu(which));
  private plot: uPlot | null = null;
  private xs: Column = new Float64Array();
  private ys: Column = new Float64Array();
  private roundings: [number, number] = [0, 0];

  constructor(
    private readonly store: Store,
    private variables: Variable[],
    private chosen: [string, string],
    onRemove: () => void,
  ) {
    this.element = el(
      'figure',
      { class: 'chart phase' },
      el(
        'figcaption',
        {},
        el('label', { class: 'choice' }, el('span', {}, 'Vertical'), this.menus[1]),
        el('label', { class: 'choice' }, el('span', {}, 'Horizontal'), this.menus[0]),
        this.readout,
        el('button', { type: 'button', class: 'quiet', onclick: onRemove }, 'Remove'),
      ),
      this.plotPlace,
    );
    this.fillMenus();
  }

  /** Takes the variables anew when values are meant otherwise. */
  change(variables: Variable[]): void {
    this.variables = variables;
    this.chosen = this.chosen.map((key) => (variables.some((variable) => variable.key === key) ? key : 'time')) as [
      string,
      string,
    ];
    this.fillMenus();
    this.draw();
  }

  draw(): void {
    this.destroy();
    const [x, y] = this.chosen.map((key) => this.variables.find((variable) => variable.key === key)!);
    [this.xs, this.ys] = [x.values(), y.values()];
    this.roundings = [x.rounding, y.rounding];
    const data = [null, [this.xs, this.ys]] as unknown as uPlot.AlignedData;
    this.plot = new uPlot(this.options(x, y), data, this.plotPlace);
    this.plot.over.append(this.marker);
    this.plot.over.addEventListener('pointermove', (event) => this.onPointer(event));
    this.plotPlace.setAttribute('role', 'img');
    this.plotPlace.setAttribute('aria-label', `${y.axis} over ${x.axis}`);
  }

  destroy(): void {
    this.plot?.destroy();
    this.plot = null;
  }

  width(): number {
    return Math.floor(this.plotPlace.clientWidth);
  }

  resize(width: number): void {
    if (!this.plot || width <= 0 || width === this.plot.width) return;
    this.plot.setSize({ width, height: HEIGHT });
  }

  restyle(): void {
    this.plot?.redraw();
  }

  showRow(): void {
    const [x, y] = [this.xs[this.store.row], this.ys[this.store.row]];
    this.readout.textContent = `${number(x, this.roundings[0])} , ${number(y, this.roundings[1])}`;
    if (!this.plot) return;
    const isPlace = Number.isFinite(x) && Number.isFinite(y);
    this.marker.hidden = !isPlace;
    if (!isPlace) return;
    this.marker.style.setProperty('left', `${this.plot.valToPos(x, 'x')}px`);
    this.marker.style.setProperty('top', `${this.plot.valToPos(y, 'y')}px`);
  }

  private menu(which: 0 | 1): HTMLSelectElement {
    const select: HTMLSelectElement = el('select', {
      onchange: () => {
        this.chosen[which] = select.value;
        this.draw();
      },
    });
    return select;
  }

  private fillMenus(): void {
    this.menus.forEach((menu, which) => menu.replaceChildren(...this.optionsOf(this.chosen[which])));
  }

  private optionsOf(chosen: string): HTMLOptGroupElement[] {
    const groups = new Map<string, HTMLOptGroupElement>();
    for (const variable of this.variables) {
      if (!groups.has(variable.group)) groups.set(variable.group, el('optgroup', { label: variable.group }));
      const isChosen = variable.key === chosen;
      groups.get(variable.group)!.append(el('option', { value: variable.key, selected: isChosen }, variable.label));
    }
    return [...groups.values()];
  }

  private options(horizontal: Variable, vertical: Variable): uPlot.Options {
    return {
      mode: 2,
      width: Math.max(this.width(), 200),
      height: HEIGHT,
      padding: [8, endRoom, 0, 0],
      legend: { show: false },
      scales: {
        x: { time: false, range: (_, min, max) => axisRange(min, max, horizontal.floor) },
        y: { range: (_, min, max) => axisRange(min, max, vertical.floor) },
      },
      axes: [levelAxis(horizontal.axis), axisLook(vertical.axis, numberRoom)],
      series: [
        {},
        {
          facets: [
            { scale: 'x', auto: true },
            { scale: 'y', auto: true },
          ],
          stroke: () => lineColour(2),
          width: 1.6,
          paths: (plot) => this.curve(plot),
        },
      ],
      cursor: { x: false, y: false, points: { show: false }, drag: { x: true, y: true, dist: 4 }, dataIdx: () => null },
      hooks: { ready: [() => this.showRow()], setSize: [() => this.showRow()], setScale: [() => this.showRow()] },
    };
  }

  private curve(plot: uPlot): uPlot.Series.Paths {
    const pixel = (scale: 'x' | 'y', size: number) =>
      Math.abs((plot.scales[scale].max! - plot.scales[scale].min!) / size);
    const rows = thinCurve(this.xs, this.ys, pixel('x', plot.bbox.width), pixel('y', plot.bbox.height));
    const stroke = new Path2D();
    let isPenUp = true;
    for (const row of rows) {
      const [x, y] = [this.xs[row], this.ys[row]];
      if (Number.isNaN(x) || Number.isNaN(y)) {
        isPenUp = true;
        continue;
      }
      const [px, py] = [plot.valToPos(x, 'x', true), plot.valToPos(y, 'y', true)];
      if (isPenUp) stroke.moveTo(px, py);
      else stroke.lineTo(px, py);
      isPenUp = false;
    }
    return { stroke };
  }

  private onPointer(event: PointerEvent): void {
    const { plot, store } = this;
    if (!plot || store.isPlaying || event.buttons !== 0) return;
    const box = plot.over.getBoundingClientRect();
    const x = plot.posToVal(event.clientX - box.left, 'x');
    const y = plot.posToVal(event.clientY - box.top, 'y');
    const pixel = (scale: 'x' | 'y', size: number) => (plot.scales[scale].max! - plot.scales[scale].min!) / size;
    const row = nearestRow(this.xs, this.ys, x, y, pixel('x', box.width), pixel('y', box.height));
    if (row >= 0) store.setRow(row);
  }
}
