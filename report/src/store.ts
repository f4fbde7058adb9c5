// What all parts of the page share: the present row, the stretch that the charts show, and how values are meant.

import { extremesOf, rowNear } from './decimate.ts';
import type { Body, Column, Run, Triple } from './data.ts';
import {
  continuous,
  drawnRows,
  intoFrame,
  loadRowsAt,
  outOfFrame,
  rowsAt,
  tripleAt,
  turnsOf,
  type Frame,
} from './pose.ts';

export type Quantity = 'force' | 'torque' | 'position' | 'angles';
export type Axis = 'time' | 'step';
export type LoadAxes = 'frame' | 'global';
/** How far a body has turned about the global axes, or the angles phi, theta and psi as the log has them. */
export type AngleKind = 'turns' | 'log';

/** Components as they are charted; `components[3]` is the magnitude, where there is one. */
export interface QuantityInfo {
  title: string;
  unit: string;
  factor: number;
  components: string[];
  /** What varies by less than this, in its unit, is drawn flat. */
  floor: number;
  /** What is smaller than this, in its unit, is rounding and shown as 0. */
  rounding: number;
}

/** What is smaller than this part of the largest value of its quantity in the run is rounding. */
const ROUNDING = 1e-9;

interface Topics {
  row: [row: number];
  range: [];
  bodies: [];
  values: [];
  axis: [];
  play: [];
}

export class Store {
  row = 0;
  range: [number, number];
  axis: Axis;
  loadAxes: LoadAxes = 'frame';
  frame: Frame;
  angleKind: AngleKind = 'turns';
  continuousAngles = true;
  isPlaying = false;
  readonly shownBodies: Set<number>;
  readonly timeAscends: boolean;
  readonly stepAscends: boolean;
  readonly lengthFactor: number;
  /** The force below which there is only rounding; the torque of that force on an arm of a millimetre has the same number. */
  private loadFloor = 0;
  private roundings: Record<Quantity, number> = { force: 0, torque: 0, position: 0, angles: 0 };
  private readonly listeners = new Map<keyof Topics, (() => void)[]>();
  private readonly cache = new Map<string, (Column | null)[]>();

  constructor(readonly run: Run) {
    this.frame = run.orientation === 'exact' ? 'exact' : 'desktop';
    this.timeAscends = run.time !== null && ascends(run.time);
    this.stepAscends = ascends(run.step);
    this.axis = this.timeAscends ? 'time' : 'step';
    this.lengthFactor = run.bodies.some((body) => body.position.some((c) => c?.some((v) => Math.abs(v) >= 1)))
      ? 1
      : 1000;
    this.shownBodies = new Set(run.bodies.slice(0, 4).keys());
    this.range = this.fullRange();
    this.loadFloor = 1e-6 * this.largestMagnitude('force');
    this.roundings = this.findRoundings();
  }

  on(topic: keyof Topics, listener: () => void): void {
    this.listeners.set(topic, [...(this.listeners.get(topic) ?? []), listener]);
  }

  tell(topic: keyof Topics): void {
    for (const listener of this.listeners.get(topic) ?? []) listener();
  }

  /** The charts' x values: times, steps, or row numbers where neither of them ascends. */
  xs(): Column {
    if (this.axis === 'time' && this.timeAscends) return this.run.time!;
    if (this.stepAscends) return this.run.step;
    return Float64Array.from({ length: this.run.rows }, (_, row) => row);
  }

  xLabel(): string {
    if (this.axis === 'time' && this.timeAscends) return 'Time (s)';
    return this.stepAscends ? 'Step' : 'Row of the log';
  }

  fullRange(): [number, number] {
    const xs = this.xs();
    const [first, last] = [xs[0] ?? 0, xs[xs.length - 1] ?? 1];
    return first === last ? [first - 0.5, last + 0.5] : [first, last];
  }

  setRow(row: number): void {
    const next = Math.min(Math.max(row, 0), Math.max(this.run.rows - 1, 0));
    if (next === this.row) return;
    this.row = next;
    this.tell('row');
  }

  setRange(min: number, max: number): void {
    const [first, last] = this.fullRange();
    const low = Math.max(first, Math.min(min, last));
    const high = Math.min(last, Math.max(max, first));
    if (!(high > low) || (low === this.range[0] && high === this.range[1])) return;
    this.range = [low, high];
    this.tell('range');
  }

  /** Shows a part of the present stretch around a place; factor 0.5 zooms in to half. */
  zoom(factor: number, centre: number): void {
    const [low, high] = this.range;
    const at = Math.min(Math.max(centre, low), high);
    this.setRange(at - (at - low) * factor, at + (high - at) * factor);
  }

  resetRange(): void {
    this.setRange(...this.fullRange());
  }

  setAxis(axis: Axis): void {
    const xs = this.xs();
    const rows = this.range.map((value) => rowNear(xs, value));
    this.axis = axis;
    const next = this.xs();
    const [first, last] = this.fullRange();
    this.range = rows[0] < rows[1] ? [next[rows[0]], next[rows[1]]] : [first, last];
    if (!(this.range[1] > this.range[0])) this.range = [first, last];
    this.tell('axis');
  }

  setPlaying(isPlaying: boolean): void {
    this.isPlaying = isPlaying;
    this.tell('play');
  }

  showBody(index: number, isShown: boolean): void {
    if (isShown) this.shownBodies.add(index);
    else this.shownBodies.delete(index);
    this.tell('bodies');
  }

  /** Changes how values are meant and tells the charts. */
  changeValues(change: Partial<Pick<Store, 'loadAxes' | 'frame' | 'angleKind' | 'continuousAngles'>>): void {
    Object.assign(this, change);
    this.tell('values');
  }

  /** The largest magnitude of a load on any body; 0 when it is nothing but rounding. */
  largest(quantity: 'force' | 'torque'): number {
    const size = this.largestMagnitude(quantity);
    return size > this.info(quantity).floor ? size : 0;
  }

  /** What is smaller than this is rounding, in a quantity of the host with a unit: beside all quantities with it. */
  roundingOf(unit: string): number {
    const { force, torque, position, angles } = this.roundings;
    const ofBodies: Record<string, number> = {
      N: force,
      'N m': torque / 1000,
      m: position / this.lengthFactor,
      rad: (angles * Math.PI) / 180,
    };
    const largest = largestOf(this.run.series.filter((series) => series.unit === unit).map(({ values }) => values));
    return Math.max(ofBodies[unit] ?? 0, ROUNDING * largest);
  }

  private findRoundings(): Record<Quantity, number> {
    const largest = (quantity: Quantity) =>
      largestOf(this.run.bodies.flatMap((_, index) => this.columns(index, quantity)));
    const [force, torque] = [largest('force'), largest('torque')];
    return {
      // Where one of the loads is rounding as a whole, the other one tells: on an arm of a metre or of a millimetre.
      force: ROUNDING * Math.max(force, torque / 1000),
      torque: ROUNDING * Math.max(torque, force),
      position: ROUNDING * Math.max(largest('position'), this.info('position').floor),
      // Angles come of functions whose rounding is that of a radian.
      angles: ROUNDING * Math.max(largest('angles'), 180 / Math.PI),
    };
  }

  private largestMagnitude(quantity: 'force' | 'torque'): number {
    return largestOf(this.run.bodies.map((_, index) => this.columns(index, quantity)[3]));
  }

  info(quantity: Quantity): QuantityInfo {
    const rounding = this.roundings[quantity];
    const floor = this.loadFloor;
    switch (quantity) {
      case 'force':
        return { title: 'Force', unit: 'N', factor: 1, components: ['X', 'Y', 'Z', '|F|'], floor, rounding };
      case 'torque':
        return { title: 'Torque', unit: 'mN·m', factor: 1, components: ['X', 'Y', 'Z', '|T|'], floor, rounding };
      case 'position':
        return {
          title: 'Position',
          unit: this.lengthFactor === 1 ? 'm' : 'mm',
          factor: this.lengthFactor,
          components: ['X', 'Y', 'Z'],
          floor: 1e-6 * this.lengthFactor,
          rounding,
        };
      case 'angles':
        return {
          ...(this.angleKind === 'turns'
            ? { title: 'Turn about', components: ['X', 'Y', 'Z'] }
            : { title: 'Angle', components: ['Phi', 'Theta', 'Psi'] }),
          unit: '°',
          factor: 180 / Math.PI,
          floor: 1e-4,
          rounding,
        };
    }
  }

  /** Columns of a body in the chart's unit, the magnitude last where there is one; null where the log has none. */
  columns(bodyIndex: number, quantity: Quantity): (Column | null)[] {
    const { loadAxes, frame, angleKind, continuousAngles } = this;
    const key = [bodyIndex, quantity, loadAxes, frame, angleKind, continuousAngles].join();
    let columns = this.cache.get(key);
    if (!columns) {
      columns = this.makeColumns(this.run.bodies[bodyIndex], quantity);
      this.cache.set(key, columns);
    }
    return columns;
  }

  private makeColumns(body: Body, quantity: Quantity): (Column | null)[] {
    const { factor } = this.info(quantity);
    if (quantity === 'angles') {
      const angles =
        this.angleKind === 'turns'
          ? turnsOf(body, this.frame, this.run.time)
          : body.angles.map((c) => c && (this.continuousAngles ? continuous(c) : c));
      return angles.map((c) => c && c.map((v) => v * factor));
    }
    if (quantity === 'position') return body.position.map((c) => c && c.map((v) => v * factor));
    const logged = body[quantity];
    return [...this.loadComponents(body, logged), magnitudes(logged)];
  }

  /** A logged load along the axes that are chosen; NaN goes through. */
  private loadComponents(body: Body, logged: Triple<Column | null>): (Column | null)[] {
    if (this.loadAxes === 'global') {
      return turned(logged, (vector, row) => outOfFrame(loadRowsAt(body, row), vector));
    }
    // Of direct orientations the desktop's frame stands for the body's.
    if (this.run.orientation === 'direct' || !body.drawn) return logged;
    const rows = drawnRows(body);
    return turned(logged, (vector) => intoFrame(rows, vector));
  }
}

/** The largest size of a value in some columns; 0 when there is none. */
function largestOf(columns: (Column | null)[]): number {
  return columns.reduce((most, values) => {
    const found = values && extremesOf(values);
    return found ? Math.max(most, -found.min, found.max) : most;
  }, 0);
}

function ascends(values: Column): boolean {
  for (let i = 0; i < values.length; ++i) if (Number.isNaN(values[i]) || values[i] < values[i - 1]) return false;
  return values.length < 2 || values[values.length - 1] > values[0];
}

/** The components of a vector along other axes; none when one is missing. */
function turned(
  columns: Triple<Column | null>,
  turn: (vector: Triple<number>, row: number) => Triple<number>,
): (Column | null)[] {
  if (columns.includes(null)) return [null, null, null];
  const [xs, ys, zs] = columns as Triple<Column>;
  const result = columns.map(() => new Float64Array(xs.length));
  for (let row = 0; row < xs.length; ++row) {
    turn([xs[row], ys[row], zs[row]], row).forEach((value, axis) => (result[axis][row] = value));
  }
  return result;
}

function magnitudes(load: Triple<Column | null>): Column | null {
  const [x, y, z] = load;
  return x && y && z && x.map((value, row) => Math.hypot(value, y[row], z[row]));
}

/** Position and frame of a body in a row; zero where the log has nothing. */
export function poseAt(store: Store, body: Body, row: number) {
  return { position: tripleAt(body.position, row), rows: rowsAt(body, row, store.frame) };
}
