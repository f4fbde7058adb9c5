// The data block of the page: what a writer puts into it (docs/report.md), and the run that the page makes of it.

import { bodyRows, type Rows } from './pose.ts';

export type Triple<T> = [T, T, T];

/** A column as it is written: plain numbers (null where there is none), one number for all rows, or packed bytes. */
export type PackedColumn = (number | null)[] | { constant: number | null } | { float32: string } | { float64: string };

export interface PackedBody {
  name: string;
  position?: (PackedColumn | null)[];
  angles?: (PackedColumn | null)[];
  force?: (PackedColumn | null)[];
  torque?: (PackedColumn | null)[];
  drawn?: PackedDrawnPose;
}

/** The axes as drawn, one after the other; of direct orientations instead the angles phi, theta, psi of the import. */
export interface PackedDrawnPose {
  position: Triple<number>;
  axes?: Triple<Triple<number>>;
  angles?: Triple<number>;
}

/**
 * What the log's angles mean. Exact: the desktop's frame is the global axes as drawn, moving with the body. Direct: the
 * angles are those of the body's own axes, and the desktop's frame is another one.
 */
export type Orientation = 'exact' | 'direct';

export interface PackedRun {
  format: number;
  orientation?: Orientation;
  generator?: string;
  title?: string;
  project?: string;
  scenario?: string;
  log?: string;
  rows: number;
  step?: PackedColumn;
  time?: PackedColumn;
  bodies?: PackedBody[];
  series?: { name: string; group: string; unit: string; values: PackedColumn }[];
  geometry?: Geometry;
  objects?: ModelObject[];
  notices?: Notice[];
}

/** Where a body's origin and axes are in its geometry file, metres. */
export interface DrawnPose {
  position: Triple<number>;
  rows: Rows;
}

/** A geometry file: the text of an OBJ, or the bytes of an STL in base64. */
export interface Geometry {
  name: string;
  metresPerUnit: number;
  obj?: string;
  stl?: string;
}

export type MaterialKind = 'magnet' | 'iron' | 'other';

/**
 * An object of the geometry file; `body` is an index, or null for what stands still. Of earlier versions there is no
 * `kind`, and all materials have a direction.
 */
export interface ModelObject {
  name: string;
  body: number | null;
  material?: string;
  kind?: MaterialKind;
  direction?: Triple<number>;
}

export interface Notice {
  severity: 'error' | 'warning' | 'info';
  text: string;
}

export type Column = Float64Array;

/** A body's logged values; a column that the log lacks is null. Metres, radians, newtons, millinewton-metres. */
export interface Body {
  name: string;
  position: Triple<Column | null>;
  angles: Triple<Column | null>;
  force: Triple<Column | null>;
  torque: Triple<Column | null>;
  drawn: DrawnPose | null;
}

export interface Series {
  name: string;
  group: string;
  unit: string;
  values: Column;
}

export interface Run {
  orientation: Orientation;
  generator: string;
  title: string;
  project: string;
  scenario: string;
  log: string;
  rows: number;
  step: Column;
  /** Null when the log has no times. */
  time: Column | null;
  bodies: Body[];
  series: Series[];
  geometry: Geometry | null;
  objects: ModelObject[];
  notices: Notice[];
}

/** The data block cannot be used; the text is for the reader of the page. */
export class DataError extends Error {}

export const FORMAT = 1;

export function readRun(text: string): Run {
  let packed: PackedRun;
  try {
    packed = JSON.parse(text) as PackedRun;
  } catch {
    throw new DataError('This page holds no readable data: the file is incomplete, or the template was not filled in.');
  }
  if (typeof packed !== 'object' || packed === null || packed.format !== FORMAT) {
    throw new DataError('The data of this page is in a format that the page does not know.');
  }
  return unpackRun(packed);
}

function unpackRun(packed: PackedRun): Run {
  const rows = packed.rows;
  const column = (source: PackedColumn | null | undefined) => (source == null ? null : unpackColumn(source, rows));
  const triple = (source: (PackedColumn | null)[] | undefined): Triple<Column | null> => [
    column(source?.[0]),
    column(source?.[1]),
    column(source?.[2]),
  ];
  return {
    // Pages were of direct orientations before they said so.
    orientation: packed.orientation ?? 'direct',
    generator: packed.generator ?? '',
    title: packed.title ?? '',
    project: packed.project ?? '',
    scenario: packed.scenario ?? '',
    log: packed.log ?? '',
    rows,
    step: column(packed.step) ?? Float64Array.from({ length: rows }, (_, row) => row),
    time: column(packed.time),
    bodies: (packed.bodies ?? []).map((body) => ({
      name: body.name,
      position: triple(body.position),
      angles: triple(body.angles),
      force: triple(body.force),
      torque: triple(body.torque),
      drawn: body.drawn ? unpackDrawn(body.drawn) : null,
    })),
    series: (packed.series ?? []).map((series) => ({ ...series, values: unpackColumn(series.values, rows) })),
    geometry: packed.geometry ?? null,
    objects: packed.objects ?? [],
    notices: packed.notices ?? [],
  };
}

function unpackDrawn({ position, axes, angles }: PackedDrawnPose): DrawnPose {
  return { position, rows: axes ? (axes.flat() as Rows) : bodyRows(angles ?? [0, 0, 0]) };
}

export function unpackColumn(source: PackedColumn, rows: number): Column {
  const values = unpackValues(source, rows);
  if (values.length !== rows) {
    throw new DataError(`The data of this page is damaged: a column has ${values.length} values, not ${rows}.`);
  }
  return values;
}

function unpackValues(source: PackedColumn, rows: number): Column {
  // Whatever is not a finite number is a gap.
  const number = (value: number | null) => (value !== null && Number.isFinite(value) ? value : NaN);
  if (Array.isArray(source)) return Float64Array.from(source, number);
  if ('constant' in source) return new Float64Array(rows).fill(number(source.constant));
  if ('float32' in source) return Float64Array.from(new Float32Array(bytesOf(source.float32)), number);
  return Float64Array.from(new Float64Array(bytesOf(source.float64)), number);
}

export function bytesOf(base64: string): ArrayBuffer {
  let text: string;
  try {
    text = atob(base64);
  } catch {
    throw new DataError('The data of this page is damaged: a block of numbers cannot be decoded.');
  }
  const bytes = new Uint8Array(text.length);
  for (let i = 0; i < text.length; ++i) bytes[i] = text.charCodeAt(i);
  return bytes.buffer;
}
