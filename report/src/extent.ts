// What space a run takes.

import { type Matrix4, Vector3 } from 'three';
import { extremesOf } from './decimate.ts';
import { placement } from './pose.ts';
import { poseAt, type Store } from './store.ts';

/** Stretches of the run of one body that are looked at; several bodies share them. */
const STRETCHES = 200;
const DIRECTIONS = 100;

/** A body in a row, with the matrix that takes its coordinates into global ones. */
export interface PlacedBody {
  index: number;
  row: number;
  pose: Matrix4;
}

/** Every body in the rows by which its run is judged: at equal distances, and the farthest places and largest loads. */
export function tellingPoses(store: Store): PlacedBody[] {
  return store.run.bodies.flatMap((body, index) =>
    tellingRows(store, index).map((row) => {
      const { position, rows } = poseAt(store, body, row);
      return { index, row, pose: placement(position, rows) };
    }),
  );
}

function tellingRows(store: Store, index: number): number[] {
  const { rows, bodies } = store.run;
  const loads = (['force', 'torque'] as const).map((load) => store.columns(index, load)[3]);
  const columns = [...bodies[index].position, ...loads];
  const stretch = Math.ceil(rows / Math.max(20, STRETCHES / bodies.length));
  const telling = new Set([rows - 1]);
  for (let first = 0; first < rows; first += stretch) {
    telling.add(first);
    for (const column of columns) {
      const found = column && extremesOf(column.subarray(first, first + stretch));
      if (found) telling.add(first + found.minRow).add(first + found.maxRow);
    }
  }
  return [...telling];
}

/**
 * Those of some points that stick out farthest, in many directions: their hull to a few hundredths of its size.
 * @param points lists of coordinates, x y z after x y z
 */
export function outermost(points: ArrayLike<number>[]): Vector3[] {
  const found = new Map<string, Vector3>();
  for (let i = 0; i < DIRECTIONS; ++i) {
    // Evenly over a sphere, on a spiral of golden angles.
    const z = 1 - (2 * i + 1) / DIRECTIONS;
    const angle = i * Math.PI * (3 - Math.sqrt(5));
    const [x, y] = [Math.cos(angle), Math.sin(angle)].map((part) => part * Math.sqrt(1 - z * z));
    let most = -Infinity;
    const best = new Vector3();
    for (const list of points)
      for (let at = 0; at < list.length; at += 3) {
        const size = x * list[at] + y * list[at + 1] + z * list[at + 2];
        if (size > most) {
          most = size;
          best.set(list[at], list[at + 1], list[at + 2]);
        }
      }
    if (most > -Infinity) found.set(best.toArray().join(), best);
  }
  return [...found.values()];
}
