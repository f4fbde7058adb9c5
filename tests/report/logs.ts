// Coupling logs as the library writes them.

import { Matrix4, type Quaternion } from 'three';

const POSE = ['_X', '_Y', '_Z', '_Phi', '_Theta', '_Psi'];
const AXES = ['_X', '_Y', '_Z'];

/** A number as the g conversion of C writes it. */
export function general(value: number): string {
  if (!Number.isFinite(value)) return Number.isNaN(value) ? 'nan' : value > 0 ? 'inf' : '-inf';
  if (value === 0) return '0';
  const exponent = Number(value.toExponential(5).split('e')[1]);
  if (exponent >= -4 && exponent < 6) return String(Number(value.toPrecision(6)));
  const [digits, power] = value.toExponential(5).split('e');
  return `${String(Number(digits))}e${Number(power) < 0 ? '-' : '+'}${String(Math.abs(Number(power))).padStart(2, '0')}`;
}

export function head(bodies: string[]): string {
  const columns = bodies.flatMap((name) => [
    ...POSE.map((suffix) => name + suffix),
    ...['Force_', 'Torque_'].flatMap((load) => AXES.map((axis) => load + name + axis)),
  ]);
  return ['Step', 'SimTime', ...columns].join(',');
}

/** @param values twelve numbers for every body */
export function line(step: number, time: number, values: number[]): string {
  return [step, general(time), ...values.map(general)].join(',');
}

/** A log of `rows` steps; `values` gives the twelve numbers of every body at a time. */
export function logText(
  bodies: string[],
  rows: number,
  step: number,
  values: (time: number, row: number) => number[],
): string {
  const lines = [head(bodies)];
  for (let row = 0; row < rows; ++row) lines.push(line(row, row * step, values(row * step, row)));
  return lines.join('\r\n') + '\r\n';
}

/**
 * The angles phi, theta, psi that a host hands over for a turn of a body's axes from the global ones. Exact: such that
 * the desktop's Rz(theta) Ry(phi) Rx(psi) are the turned axes. Direct: such that Rz(phi) Ry(theta) Rx(psi) are.
 */
export function anglesOf(turn: Quaternion, orientation: 'exact' | 'direct'): [number, number, number] {
  // The columns of the matrix are the axes, one after the other.
  const m = new Matrix4().makeRotationFromQuaternion(turn).elements;
  const aboutZ = Math.atan2(m[4], m[0]);
  const aboutY = Math.asin(Math.max(-1, Math.min(1, -m[8])));
  const psi = Math.atan2(m[9], m[10]);
  return orientation === 'exact' ? [aboutY, aboutZ, psi] : [aboutZ, aboutY, psi];
}

/** Two coaxial magnets pulled apart; the force falls with the fourth power of their distance. */
export function pulledApart(rows = 21): string {
  return logText(['lower', 'upper'], rows, 1 / (rows - 1), (time) => {
    const distance = 0.012 + 0.02 * time;
    const force = 14.6725 * (0.012 / distance) ** 4;
    return [0, 0, 0, 0, 0, 0, 0, 0, force, 0, 0, 0, 0, 0, distance, 0, 0, 0, 0, 0, -force, 0, 0, 0];
  });
}

/** Two discs about X: the driver turns, the driven one is held; the angle of the driver wraps as atan2 does. */
export function slipping(rows = 401): string {
  return logText(['driver', 'driven'], rows, 0.0025, (time) => {
    const angle = 30 * time;
    const psi = Math.atan2(Math.sin(-angle), Math.cos(-angle));
    const torque = 1440 * Math.sin(4 * angle);
    const force = 78.7 * Math.cos(4 * angle);
    return [-0.005, 0, 0, 0, 0, psi, force, 0, 0, -torque, 0, 0, 0.005, 0, 0, 0, 0, 0, -force, 0, 0, torque, 0, 0];
  });
}
