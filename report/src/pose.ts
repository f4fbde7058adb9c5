// Poses as the log has them, and the frames that follow (docs/conventions.md).

import type { Body, Triple } from './data.ts';

/** A rotation, row by row: the rows are the axes of a frame seen from the global one. */
export type Rows = [number, number, number, number, number, number, number, number, number];

export type Frame = 'desktop' | 'body';

function times(a: Rows, b: Rows): Rows {
  const product = new Array<number>(9) as Rows;
  for (let i = 0; i < 3; ++i)
    for (let j = 0; j < 3; ++j)
      product[3 * i + j] = a[3 * i] * b[j] + a[3 * i + 1] * b[3 + j] + a[3 * i + 2] * b[6 + j];
  return product;
}

const turnX = (a: number): Rows => [1, 0, 0, 0, Math.cos(a), -Math.sin(a), 0, Math.sin(a), Math.cos(a)];
const turnY = (a: number): Rows => [Math.cos(a), 0, Math.sin(a), 0, 1, 0, -Math.sin(a), 0, Math.cos(a)];
const turnZ = (a: number): Rows => [Math.cos(a), -Math.sin(a), 0, Math.sin(a), Math.cos(a), 0, 0, 0, 1];

/** The body's own frame: Rz(phi) Ry(theta) Rx(psi). */
export function bodyRows([phi, theta, psi]: Triple<number>): Rows {
  return times(times(turnZ(phi), turnY(theta)), turnX(psi));
}

/** The frame that the desktop applies: phi and theta in each other's places. */
export function desktopRows([phi, theta, psi]: Triple<number>): Rows {
  return bodyRows([theta, phi, psi]);
}

/** Frame components of a global vector. */
export function intoFrame(rows: Rows, v: Triple<number>): Triple<number> {
  return [
    rows[0] * v[0] + rows[1] * v[1] + rows[2] * v[2],
    rows[3] * v[0] + rows[4] * v[1] + rows[5] * v[2],
    rows[6] * v[0] + rows[7] * v[1] + rows[8] * v[2],
  ];
}

/** Global components of a vector in a frame. */
export function outOfFrame(rows: Rows, v: Triple<number>): Triple<number> {
  return [
    rows[0] * v[0] + rows[3] * v[1] + rows[6] * v[2],
    rows[1] * v[0] + rows[4] * v[1] + rows[7] * v[2],
    rows[2] * v[0] + rows[5] * v[1] + rows[8] * v[2],
  ];
}

/** The angle of the rotation between two frames, radians. */
export function angleBetween(a: Rows, b: Rows): number {
  let trace = 0;
  for (let i = 0; i < 9; ++i) trace += a[i] * b[i];
  return Math.acos(Math.min(1, Math.max(-1, (trace - 1) / 2)));
}

/** Values of a row; what the log lacks or cannot tell counts as zero. */
export function tripleAt(columns: Body['position'], row: number): Triple<number> {
  const value = (axis: 0 | 1 | 2) => {
    const number = columns[axis]?.[row];
    return number === undefined || Number.isNaN(number) ? 0 : number;
  };
  return [value(0), value(1), value(2)];
}

export function rowsAt(body: Body, row: number, frame: Frame): Rows {
  const angles = tripleAt(body.angles, row);
  return frame === 'desktop' ? desktopRows(angles) : bodyRows(angles);
}

/** The angles without their jumps by a full turn. */
export function continuous(angles: Float64Array): Float64Array {
  const result = Float64Array.from(angles);
  let turns = 0;
  let last = NaN;
  for (let i = 0; i < angles.length; ++i) {
    if (Number.isNaN(angles[i])) continue;
    if (!Number.isNaN(last)) turns -= Math.round((angles[i] - last) / (2 * Math.PI));
    last = angles[i];
    result[i] = angles[i] + 2 * Math.PI * turns;
  }
  return result;
}
