// Poses as the log has them, and the frames that follow (docs/conventions.md).

import { Matrix4, Quaternion } from 'three';
import type { Body, Column, Triple } from './data.ts';

/** A rotation, row by row: the rows are the axes of a frame seen from the global one. */
export type Rows = [number, number, number, number, number, number, number, number, number];

/**
 * How a body's axes follow from the log's angles. Of exact orientations they turn with the desktop's frame from where
 * they are drawn. Of direct ones they are the desktop's frame (as solved) or those that the host meant (as moved).
 */
export type Frame = 'exact' | 'desktop' | 'body';

/** The axes of a body that no drawing tells of. */
const GLOBAL_AXES: Rows = [1, 0, 0, 0, 1, 0, 0, 0, 1];

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

/** The axes that the library made the angles of: Rz(phi) Ry(theta) Rx(psi). */
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

/** A body's axes as they are drawn. */
export const drawnRows = (body: Body): Rows => body.drawn?.rows ?? GLOBAL_AXES;

/** A body's axes in a row. */
export function rowsAt(body: Body, row: number, frame: Frame): Rows {
  const angles = tripleAt(body.angles, row);
  if (frame === 'body') return bodyRows(angles);
  return frame === 'exact' ? times(drawnRows(body), desktopRows(angles)) : desktopRows(angles);
}

/** The axes along which the log has the loads: the desktop's, whichever frame a body is shown in. */
export const loadRowsAt = (body: Body, row: number): Rows => desktopRows(tripleAt(body.angles, row));

/** The rows of a frame are the columns of the matrix that takes frame coordinates into global ones. */
export function placement([x, y, z]: Triple<number>, r: Rows): Matrix4 {
  return new Matrix4().set(r[0], r[3], r[6], x, r[1], r[4], r[7], y, r[2], r[5], r[8], z, 0, 0, 0, 1);
}

const turnOf = (rows: Rows) => new Quaternion().setFromRotationMatrix(placement([0, 0, 0], rows));

/** Adds the shortest turn to a vector: along its axis, as long as its angle. */
function addTurn(to: Triple<number>, { x, y, z, w }: Quaternion): void {
  const size = Math.hypot(x, y, z);
  const factor = size > 0 ? (Math.sign(w || 1) * 2 * Math.atan2(size, Math.abs(w))) / size : 0;
  [x, y, z].forEach((part, axis) => (to[axis] += factor * part));
}

/**
 * How far a body has turned about each global axis since it stood as drawn, radians, right-handed: the turns from row
 * to row (each below half a turn) added up, so that full turns are kept. What the log cannot tell is a gap; where time
 * goes back another run begins, which counts anew.
 */
export function turnsOf(body: Body, frame: Frame, time: Column | null): Triple<Column | null> {
  if (body.angles.includes(null)) return [null, null, null];
  const [phi, theta, psi] = body.angles as Triple<Column>;
  const turns = [0, 1, 2].map(() => new Float64Array(phi.length).fill(NaN)) as Triple<Column>;
  const drawn = turnOf(drawnRows(body));
  let [last, lastRow]: [Quaternion, number] = [drawn, -1];
  let total: Triple<number> = [0, 0, 0];
  for (let row = 0; row < phi.length; ++row) {
    if (Number.isNaN(phi[row] + theta[row] + psi[row])) continue;
    if (time && time[row] < time[lastRow]) [last, lastRow, total] = [drawn, -1, [0, 0, 0]];
    const isTurned = lastRow < 0 || [phi, theta, psi].some((angle) => angle[row] !== angle[lastRow]);
    if (isTurned) {
      const turn = turnOf(rowsAt(body, row, frame));
      addTurn(total, turn.clone().multiply(last.clone().conjugate()));
      last = turn;
    }
    turns.forEach((turn, axis) => (turn[row] = total[axis]));
    lastRow = row;
  }
  return turns;
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
