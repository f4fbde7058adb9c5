// Where the camera of the replay stands.

import { Vector3 } from 'three';

/** How far a picture goes from its middle: tangents of the angles at the eye. */
export interface Opening {
  left: number;
  right: number;
  top: number;
  bottom: number;
}

/**
 * The nearest place from which all points are in the picture.
 * @param points at least one
 * @param toEye from the points to the camera; not upright
 * @returns the place to look at, as far away as the points' mean, and the camera's distance from it
 */
export function standBack(points: Vector3[], toEye: Vector3, opening: Opening): { target: Vector3; distance: number } {
  const back = toEye.clone().normalize();
  const right = new Vector3(0, 0, 1).cross(back).normalize();
  const up = back.clone().cross(right);
  const middle = points.reduce((sum, point) => sum.add(point), new Vector3()).divideScalar(points.length);
  const seen = points.map((point) => {
    const offset = point.clone().sub(middle);
    return { right: offset.dot(right), up: offset.dot(up), back: offset.dot(back) };
  });
  // A point at x, nearer by z, is in the picture of an eye at e and distance d when x - e <= (d - z) high and
  // e - x <= (d - z) low. So e lies between max(x + z high) - d high and min(x - z low) + d low.
  const limits = (along: 'right' | 'up', low: number, high: number) => {
    const max = seen.reduce((most, point) => Math.max(most, point[along] + point.back * high), -Infinity);
    const min = seen.reduce((least, point) => Math.min(least, point[along] - point.back * low), Infinity);
    return { least: (max - min) / (low + high), eye: (d: number) => (max - d * high + min + d * low) / 2 };
  };
  const across = limits('right', opening.left, opening.right);
  const upright = limits('up', opening.bottom, opening.top);
  const distance = Math.max(across.least, upright.least);
  const target = middle.addScaledVector(right, across.eye(distance)).addScaledVector(up, upright.eye(distance));
  return { target, distance };
}
