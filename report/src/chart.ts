// One chart over time, linked with all others through the store.

import uPlot from 'uplot';
import type { Column } from './data.ts';
import { el } from './dom.ts';
import { rowNear } from './decimate.ts';
import { number, tickLabels } from './format.ts';
import { axisRange } from './range.ts';
import type { Store } from './store.ts';
import { lineColour, lineDash, look } from './theme.ts';

export interface ChartLine {
  label: string;
  values: Column | null;
  /** Index into the look's line colours. */
  colour: number;
  isShown: boolean;
}

export interface ChartContent {
  title: string;
  unit: string;
  /** What varies by less than this is drawn flat. */
  floor: number;
  /** What is smaller than this is rounding. */
  rounding: number;
  lines: ChartLine[];
}

export const CHART_HEIGHT = 190;
export const FONT = '12px system-ui, -apple-system, "Segoe UI", Roboto, sans-serif';

/** Values for the chart library, which takes null for a gap. */
function gapped(values: Column): Column | (number | null)[] {
  return values.some(Number.isNaN) ? Array.from(values, (v) => (Number.isNaN(v) ? null : v)) : values;
}

/** Room for the longest number at an upright axis. */
export function numberRoom(_: uPlot, values: string[] | null): number {
  const longest = (values ?? []).reduce((most, text) => Math.max(most, text.length), 0);
  return Math.max(46, 12 + 7.5 * longest);
}

/** Width of the labels of a level axis. */
function labelWidth(min: number, max: number): number {
  return 8 * Math.max(...tickLabels([min, max], (max - min) / 10).map((text) => text.length));
}

/** Room beside a level axis for the half of its last label. */
export function endRoom(plot: uPlot): number {
  const { min, max } = plot.scales.x;
  return min == null || max == null ? 16 : Math.max(16, labelWidth(min, max) / 2 + 4);
}

/** A level axis, its labels far enough apart. */
export function levelAxis(label: string): uPlot.Axis {
  return { ...axisLook(label, 30), space: (_, _axis, min, max) => Math.max(50, labelWidth(min, max) + 12) };
}

export function axisLook(label: string, size: uPlot.Axis.Size): uPlot.Axis {
  return {
    label: label || undefined,
    labelFont: FONT,
    labelSize: label ? 18 : 0,
    labelGap: 2,
    font: FONT,
    size,
    gap: 4,
    stroke: () => look().muted,
    grid: { stroke: () => look().grid, width: 1 },
    ticks: { stroke: () => look().grid, width: 1, size: 4 },
    values: (_, splits, _axis, _space, increment) => tickLabels(splits, increment),
  };
}

export class TimeChart {
  readonly element: HTMLElement;
  private readonly plotPlace = el('div', { class: 'plot' });
  private readonly legend = el('div', { class: 'legend' });
  private readonly readouts: HTMLElement[] = [];
  /** Where the cursor meets each line. */
  private markers: HTMLElement[] = [];
  private readonly lines: ChartLine[];
  private plot: uPlot | null = null;

  constructor(
    private readonly store: Store,
    private readonly content: ChartContent,
  ) {
    this.lines = content.lines.filter((line) => line.values !== null);
    this.element = el(
      'figure',
      { class: 'chart' },
      el(
        'figcaption',
        {},
        el('span', { class: 'chart-title' }, content.title, el('span', { class: 'unit' }, ` ${content.unit}`)),
        this.legend,
      ),
      this.plotPlace,
    );
    if (this.lines.length === 0) {
      this.plotPlace.append(el('p', { class: 'missing' }, 'The log has no columns for this.'));
      return;
    }
    this.makeLegend();
    this.makeFocusable();
  }

  /** Draws the chart; the element must be in the page, so that it has a width. */
  draw(): void {
    this.plot?.destroy();
    this.plot = null;
    if (this.lines.length === 0) return;
    const data = [this.store.xs(), ...this.lines.map((line) => gapped(line.values!))] as uPlot.AlignedData;
    this.plot = new uPlot(this.options(), data, this.plotPlace);
    this.showSwatches();
  }

  destroy(): void {
    this.plot?.destroy();
    this.plot = null;
  }

  resize(width: number): void {
    if (this.plot && width > 0 && width !== this.plot.width) this.plot.setSize({ width, height: CHART_HEIGHT });
  }

  width(): number {
    return Math.floor(this.plotPlace.clientWidth);
  }

  showRange(): void {
    if (!this.plot) return;
    const [min, max] = this.store.range;
    this.plot.setScale('x', { min, max });
  }

  showRow(): void {
    const { row } = this.store;
    const { rounding } = this.content;
    this.lines.forEach((line, index) => (this.readouts[index].textContent = number(line.values![row], rounding)));
    if (!this.plot) return;
    const x = this.store.xs()[row];
    const [min, max] = this.store.range;
    const left = x >= min && x <= max ? this.plot.valToPos(x, 'x') : -10;
    this.plot.setCursor({ left, top: 0 }, false);
  }

  /** Colours and dashes follow the look of the page. */
  restyle(): void {
    this.lines.forEach((line, index) => this.plot && (this.plot.series[index + 1].dash = lineDash(line.colour)));
    this.plot?.redraw();
    this.showSwatches();
  }

  private options(): uPlot.Options {
    const { store, content } = this;
    return {
      width: Math.max(this.width(), 200),
      height: CHART_HEIGHT,
      padding: [8, endRoom, 0, 0],
      legend: { show: false },
      scales: {
        x: { time: false, range: () => store.range },
        y: { range: (_, min, max) => axisRange(min, max, content.floor) },
      },
      axes: [levelAxis(store.xLabel()), axisLook('', numberRoom)],
      series: [{}, ...this.lines.map((line) => this.seriesOf(line))],
      cursor: {
        y: false,
        drag: { x: true, y: false, setScale: false, dist: 4 },
        points: { size: 6, fill: () => look().surface, show: (_, series) => this.makeMarker(series - 1) },
        bind: {
          // Only what the pointer does reaches the other charts, nothing that the library does by itself.
          mousemove: (plot, _, handler) => (event) => {
            if (store.isPlaying) return null;
            handler(event);
            if (typeof plot.cursor.idx === 'number') store.setRow(plot.cursor.idx);
            return null;
          },
          // The cursor stays where the replay is.
          mouseleave: () => () => null,
          dblclick: () => () => (store.resetRange(), null),
        },
      },
      hooks: {
        ready: [() => this.showRow()],
        setSize: [() => this.showRow()],
        setScale: [(_, scale) => scale === 'x' && this.showRow()],
        setSelect: [(plot) => this.onSelect(plot)],
      },
    };
  }

  /** The chart library brings the markers of hidden lines back with every change of its size. */
  private makeMarker(line: number): HTMLElement {
    this.markers[line] = el('div', { hidden: !this.lines[line].isShown });
    return this.markers[line];
  }

  private seriesOf(line: ChartLine): uPlot.Series {
    const colour = () => lineColour(line.colour);
    return {
      label: line.label,
      show: line.isShown,
      stroke: colour,
      width: 1.6,
      points: { size: 4, stroke: colour, fill: colour },
    };
  }

  private onSelect(plot: uPlot): void {
    const { left, width } = plot.select;
    if (width <= 0) return;
    const range = [plot.posToVal(left, 'x'), plot.posToVal(left + width, 'x')] as const;
    plot.setSelect({ left: 0, top: 0, width: 0, height: 0 }, false);
    this.store.setRange(...range);
  }

  private makeLegend(): void {
    this.lines.forEach((line, index) => {
      const value = el('output', { class: 'legend-value' }, '–');
      this.readouts.push(value);
      const button = el(
        'button',
        {
          type: 'button',
          class: 'legend-entry',
          'aria-pressed': String(line.isShown),
          title: `Show or hide ${line.label}`,
          onclick: () => {
            line.isShown = !line.isShown;
            button.setAttribute('aria-pressed', String(line.isShown));
            this.plot?.setSeries(index + 1, { show: line.isShown });
            this.markers[index].hidden = !line.isShown;
          },
        },
        el('span', { class: 'swatch' }),
        el('span', {}, line.label),
        value,
      );
      this.legend.append(button);
    });
  }

  private showSwatches(): void {
    this.legend.querySelectorAll<HTMLElement>('.swatch').forEach((swatch, index) => {
      swatch.style.setProperty('background', lineColour(this.lines[index].colour));
    });
  }

  private makeFocusable(): void {
    const { plotPlace, store } = this;
    plotPlace.tabIndex = 0;
    plotPlace.setAttribute('role', 'group');
    plotPlace.setAttribute(
      'aria-label',
      `${this.content.title}, ${this.content.unit}: arrow keys move the cursor, plus and minus zoom`,
    );
    plotPlace.addEventListener('keydown', (event) => chartKey(event, store));
    plotPlace.addEventListener(
      'wheel',
      (event) => {
        if ((!event.ctrlKey && !event.metaKey) || !this.plot) return;
        event.preventDefault();
        const left = event.clientX - this.plot.over.getBoundingClientRect().left;
        store.zoom(event.deltaY < 0 ? 0.8 : 1.25, this.plot.posToVal(left, 'x'));
      },
      { passive: false },
    );
  }
}

/** Keys of a focused chart. */
export function chartKey(event: KeyboardEvent, store: Store): void {
  const xs = store.xs();
  const many = event.shiftKey ? 10 : 1;
  const [min, max] = store.range;
  const actions: Record<string, () => void> = {
    ArrowLeft: () => store.setRow(store.row - many),
    ArrowRight: () => store.setRow(store.row + many),
    Home: () => store.setRow(rowNear(xs, min)),
    End: () => store.setRow(rowNear(xs, max)),
    '+': () => store.zoom(0.5, xs[store.row]),
    '=': () => store.zoom(0.5, xs[store.row]),
    '-': () => store.zoom(2, xs[store.row]),
    '0': () => store.resetRange(),
    Escape: () => store.resetRange(),
    ' ': () => store.setPlaying(!store.isPlaying),
  };
  const action = actions[event.key];
  if (!action || event.ctrlKey || event.metaKey || event.altKey) return;
  event.preventDefault();
  action();
}
