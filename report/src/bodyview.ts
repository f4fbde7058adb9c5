// What the replay shows of the bodies: their objects in body coordinates, and triads.

import {
  BufferGeometry,
  Color,
  CylinderGeometry,
  DataTexture,
  EdgesGeometry,
  Float32BufferAttribute,
  Group,
  LineBasicMaterial,
  LineSegments,
  Mesh,
  MeshBasicMaterial,
  MeshLambertMaterial,
  MeshPhongMaterial,
  NearestFilter,
  SRGBColorSpace,
  Vector3,
} from 'three';
import type { Body, ModelObject, Run, Triple } from './data.ts';
import { MeshError, readGeometry, type MeshObject } from './mesh.ts';
import { drawnRows, intoFrame } from './pose.ts';
import { bodyColour, lineColour, look } from './theme.ts';

export type Colouring = 'poles' | 'bodies';

/** A part of the model as it is drawn; `body` is null for what stands still. */
export interface ModelPart {
  body: number | null;
  mesh: Mesh<BufferGeometry, MeshLambertMaterial | MeshPhongMaterial>;
  edges: LineSegments<EdgesGeometry, LineBasicMaterial>;
  hasPoles: boolean;
  isIron: boolean;
}

const FEATURE_ANGLE_DEGREES = 25;
/** Faces lie a little behind their edges, which else come and go along them. */
const FACES = { flatShading: true, polygonOffset: true, polygonOffsetFactor: 1, polygonOffsetUnits: 1 };
/** Shines a little where it mirrors the light. */
const METAL = { specular: '#3c4046', shininess: 18 };

/** The model of a run; what cannot be shown is told in `problems`. */
export function makeModel(run: Run, problems: string[]): ModelPart[] {
  if (!run.geometry) return [];
  const { name, metresPerUnit } = run.geometry;
  let meshes: MeshObject[];
  try {
    meshes = readGeometry(run.geometry);
  } catch (error) {
    if (!(error instanceof MeshError)) throw error;
    problems.push(`The replay shows frames only: the geometry file ${name} cannot be shown: ${error.message}.`);
    return [];
  }
  const owners = new Map(run.objects.map((object) => [object.name, object]));
  for (const object of run.objects) {
    if (object.body !== null && !meshes.some((mesh) => mesh.name === object.name)) {
      problems.push(`The geometry file ${name} has no object "${object.name}"; the replay lacks it.`);
    }
  }
  return meshes.map((mesh) => makePart(mesh, owners.get(mesh.name), run.bodies, metresPerUnit));
}

function makePart(source: MeshObject, object: ModelObject | undefined, bodies: Body[], scale: number): ModelPart {
  const body = object?.body ?? null;
  const origin = (body !== null && bodies[body].drawn?.position) || [0, 0, 0];
  const corners = new Float32Array(source.corners.length);
  for (let i = 0; i < corners.length; i += 3) {
    const place = [0, 1, 2].map((axis) => source.corners[i + axis] * scale - origin[axis]) as Triple<number>;
    corners.set(body === null ? place : intoFrame(drawnRows(bodies[body]), place), i);
  }
  const geometry = new BufferGeometry();
  geometry.setAttribute('position', new Float32BufferAttribute(corners, 3));
  geometry.computeVertexNormals();
  const hasPoles = addPoles(geometry, object?.direction);
  const isIron = object?.kind === 'iron';
  const material = isIron ? new MeshPhongMaterial({ ...FACES, ...METAL }) : new MeshLambertMaterial(FACES);
  const mesh = new Mesh(geometry, material);
  const edges = new LineSegments(
    new EdgesGeometry(geometry, FEATURE_ANGLE_DEGREES),
    new LineBasicMaterial({ transparent: true }),
  );
  return { body, mesh, edges, hasPoles, isIron };
}

/** Texture coordinates that run from the south end to the north end of a magnet. */
function addPoles(geometry: BufferGeometry, direction: Triple<number> | undefined): boolean {
  if (!direction || !direction.some((component) => component !== 0)) return false;
  const position = geometry.getAttribute('position');
  const along = Array.from(
    { length: position.count },
    (_, i) => position.getX(i) * direction[0] + position.getY(i) * direction[1] + position.getZ(i) * direction[2],
  );
  const min = along.reduce((a, b) => Math.min(a, b), Infinity);
  const max = along.reduce((a, b) => Math.max(a, b), -Infinity);
  const uv = along.flatMap((value) => [max > min ? (value - min) / (max - min) : 0.5, 0.5]);
  geometry.setAttribute('uv', new Float32BufferAttribute(uv, 2));
  return true;
}

/** Two halves, one colour each. */
function poleTexture(): DataTexture {
  const bytes = [look().south, look().north].flatMap((text) => {
    const colour = parseInt(text.slice(1), 16);
    return [colour >> 16, (colour >> 8) & 255, colour & 255, 255];
  });
  const texture = new DataTexture(Uint8Array.from(bytes), 2, 1);
  texture.magFilter = NearestFilter;
  texture.minFilter = NearestFilter;
  texture.colorSpace = SRGBColorSpace;
  texture.needsUpdate = true;
  return texture;
}

export function paintModel(parts: ModelPart[], colouring: Colouring): void {
  const poles = poleTexture();
  for (const { body, mesh, edges, hasPoles, isIron } of parts) {
    const isPolar = colouring === 'poles' && hasPoles;
    mesh.material.map?.dispose();
    mesh.material.map = isPolar ? poles : null;
    mesh.material.color = isPolar ? new Color('#ffffff') : plainColour(body, isIron, colouring);
    mesh.material.needsUpdate = true;
    edges.material.color = new Color(look().ink);
    edges.material.opacity = 0.55;
  }
}

function plainColour(body: number | null, isIron: boolean, colouring: Colouring): Color {
  const isOfBody = body !== null && colouring === 'bodies';
  const colour = new Color(isOfBody ? bodyColour(body) : isIron ? look().iron : look().muted);
  // Iron is told from the magnets of its body.
  return isOfBody && isIron ? colour.lerp(new Color(look().iron), 0.6) : colour;
}

/**
 * Three axes: rods, for lines are a pixel wide on every screen.
 * @param thickness radius of the rods, metres
 */
export function makeTriad(length: number, thickness: number): Group {
  const group = new Group();
  const rod = new CylinderGeometry(thickness, thickness, length, 8).translate(0, length / 2, 0);
  for (let axis = 0; axis < 3; ++axis) {
    const shaft = new Mesh(rod, new MeshBasicMaterial({ depthTest: false, transparent: true }));
    shaft.quaternion.setFromUnitVectors(new Vector3(0, 1, 0), new Vector3().setComponent(axis, 1));
    shaft.renderOrder = 5;
    group.add(shaft);
  }
  return group;
}

export function paintTriad(triad: Group): void {
  triad.children.forEach((shaft, axis) => {
    ((shaft as Mesh).material as MeshBasicMaterial).color.set(lineColour(axis));
  });
}
