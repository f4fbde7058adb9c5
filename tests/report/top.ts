// A magnetic top that spins, nods and bobs above a ring.

import { Quaternion, Vector3 } from 'three';
import { anglesOf, logText } from './logs.ts';

export const TURNS = 20;
const SECONDS = 2;
const ROWS = 801;
const UP = new Vector3(0, 0, 1);

/** Where the top is at a time: spinning about its own axis, which leans and goes round twice. */
function pose(time: number): { place: Vector3; turn: Quaternion } {
  const round = (2 * Math.PI * 2 * time) / SECONDS;
  const lean = 0.2 + 0.06 * Math.sin(5 * round);
  const spin = new Quaternion().setFromAxisAngle(UP, (2 * Math.PI * TURNS * time) / SECONDS);
  const leaning = new Quaternion().setFromAxisAngle(new Vector3(Math.cos(round), Math.sin(round), 0), lean);
  return {
    place: new Vector3(0.004 * Math.cos(round), 0.004 * Math.sin(round), 0.03 + 0.003 * Math.sin(3 * round)),
    turn: leaning.multiply(spin),
  };
}

/** Loads in the desktop's frame: lift, and a torque that rights the top. */
export function topLog(): string {
  return logText(['top', 'ring'], ROWS, SECONDS / (ROWS - 1), (time) => {
    const { place, turn } = pose(time);
    const intoFrame = turn.clone().conjugate();
    const lift = new Vector3(-8 * place.x, -8 * place.y, 0.4 - 20 * (place.z - 0.03)).applyQuaternion(intoFrame);
    const axis = UP.clone().applyQuaternion(turn);
    const torque = axis.clone().cross(UP).multiplyScalar(9).applyQuaternion(intoFrame);
    return [
      ...[...place.toArray(), ...anglesOf(turn, 'exact'), ...lift.toArray(), ...torque.toArray()],
      ...[0, 0, 0, 0, 0, 0, 0, 0, -0.4, 0, 0, 0],
    ];
  });
}

/** A free body's states as the host writes them; the numbers only have to look like some. */
export function topStates(): string {
  const vector = (name: string, unit: string) => ['x', 'y', 'z'].map((axis) => `free.${name} ${axis} [${unit}]`);
  const accounts = ['Kinetic', 'Potential', 'Field work', 'Load work', 'Element work', 'Dissipated', 'Imbalance'];
  const heads = [
    ...['Step', 'Time [s]'],
    ...vector('Displacement', 'm'),
    ...vector('Turn', 'rad'),
    ...vector('Field force', 'N'),
    ...vector('Load', 'N'),
    ...accounts.map((account) => `free.${account} [J]`),
    ...['tether.Length [m]', 'tether.Force [N]', 'tether.Potential [J]', 'tether.Dissipated [J]'],
  ];
  const rows = Array.from({ length: ROWS }, (_, row) => {
    const time = (row * SECONDS) / (ROWS - 1);
    const { x, y, z } = pose(time).place;
    const wave = Math.sin(9 * time);
    const energies = [2e-3 + 1e-4 * wave, 0.4 * z, -1e-3 * time, 5e-4 * time, 2e-4 * wave, 4e-4 * time, 1e-7 * wave];
    return [
      ...[row, time, x, y, z - 0.03, 0.2 * wave, 0.2 * Math.cos(9 * time), 2 * Math.PI * 10 * time],
      ...[-8 * x, -8 * y, 0.4, 0, 0, -0.39, ...energies],
      ...[0.05 + z, 2 * z, z * z, 1e-5 * time],
    ];
  });
  return [heads, ...rows].map((cells) => cells.join(',')).join('\n') + '\n';
}

export const topScenario = {
  title: 'A top above a ring magnet',
  project: { file: 'top.vantor' },
  geometry: { file: 'top.obj', units: 'mm' },
  materials: { disc: { name: 'disc', direction: [0, 0, -1] } },
  bodies: [
    { name: 'top', objects: ['disc', 'stem'], mass: 0.02, position: [0, 0, '30*mm'] },
    { name: 'ring', objects: ['base'] },
  ],
  joints: [{ name: 'lift', type: 'slider', axis: [0, 0, 1], bodies: ['top'], free: {} }],
  solver: { step: 0.1, end: 1 },
};

/** A body of revolution about Z through radius and height pairs, millimetres. */
function revolve(name: string, outline: [number, number][], first: number): string[] {
  const around = 24;
  const lines = [`o ${name}`];
  for (const [radius, height] of outline)
    for (let i = 0; i < around; ++i) {
      const angle = (2 * Math.PI * i) / around;
      lines.push(`v ${radius * Math.cos(angle)} ${radius * Math.sin(angle)} ${height}`);
    }
  const at = (ring: number, i: number) => first + ring * around + (i % around);
  for (let ring = 0; ring < outline.length; ++ring)
    for (let i = 0; i < around; ++i) {
      const next = (ring + 1) % outline.length;
      lines.push(`f ${at(ring, i)} ${at(ring, i + 1)} ${at(next, i + 1)} ${at(next, i)}`);
    }
  return lines;
}

export function topGeometry(): string {
  const disc: [number, number][] = [
    [1, 28],
    [11, 28],
    [11, 32],
    [1, 32],
  ];
  const stem: [number, number][] = [
    [0.1, 22],
    [1, 26],
    [1, 40],
    [0.1, 40],
  ];
  const base: [number, number][] = [
    [12, -4],
    [24, -4],
    [24, 4],
    [12, 4],
  ];
  return [...revolve('disc', disc, 1), ...revolve('stem', stem, 97), ...revolve('base', base, 193)].join('\n') + '\n';
}
