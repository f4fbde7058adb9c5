// The objects of a geometry file as triangles, in the file's own coordinates.

import { ShapeUtils, Vector2 } from 'three';
import { STLLoader } from 'three/addons/loaders/STLLoader.js';
import { bytesOf, type Geometry, type Triple } from './data.ts';

/** Corner coordinates of an object's triangles, nine numbers each. */
export interface MeshObject {
  name: string;
  corners: number[];
}

/** The geometry file cannot be shown; the text says what is wrong with it. */
export class MeshError extends Error {}

export function readGeometry(geometry: Geometry): MeshObject[] {
  const stem = geometry.name.replace(/\.[^.]*$/, '');
  const objects = geometry.stl !== undefined ? readStl(bytesOf(geometry.stl), stem) : readObj(geometry.obj ?? '', stem);
  if (objects.length === 0) throw new MeshError('it has no faces');
  return objects;
}

/** Wavefront OBJ: objects (`o`), or groups (`g`) where there are no objects; polygons of any shape. */
export function readObj(text: string, defaultName: string): MeshObject[] {
  const vertices: Triple<number>[] = [];
  const objects = new Map<string, MeshObject>();
  let object = '';
  let group = '';
  const lines = text.split(/\r\n|\r|\n/);
  lines.forEach((line, index) => {
    const words = line.trim().split(/\s+/);
    const rest = words.slice(1);
    if (words[0] === 'v') vertices.push(vertexOf(rest, index + 1));
    else if (words[0] === 'o') [object, group] = [rest.join(' '), ''];
    else if (words[0] === 'g') group = rest[0] ?? '';
    else if (words[0] === 'f') {
      const name = object || group || defaultName;
      if (!objects.has(name)) objects.set(name, { name, corners: [] });
      addPolygon(objects.get(name)!.corners, cornersOf(rest, vertices, index + 1));
    }
  });
  return [...objects.values()];
}

function vertexOf(words: string[], line: number): Triple<number> {
  const [x, y, z] = words.map(Number);
  if (words.length < 3 || ![x, y, z].every(Number.isFinite)) throw new MeshError(`line ${line} is not a vertex`);
  return [x, y, z];
}

function cornersOf(words: string[], vertices: Triple<number>[], line: number): Triple<number>[] {
  const corners = words.map((word) => {
    const index = parseInt(word, 10);
    return vertices[index > 0 ? index - 1 : vertices.length + index];
  });
  if (corners.length < 3 || corners.includes(undefined!)) throw new MeshError(`line ${line} is not a face`);
  return corners;
}

function addPolygon(into: number[], polygon: Triple<number>[]): void {
  if (polygon.length === 3) {
    for (const corner of polygon) into.push(...corner);
    return;
  }
  // Cut in the plane that the polygon fills most.
  const normal = areaVector(polygon);
  const drop = [0, 1, 2].reduce((a, b) => (Math.abs(normal[b]) > Math.abs(normal[a]) ? b : a));
  const [u, v] = [(drop + 1) % 3, (drop + 2) % 3];
  const flip = normal[drop] < 0;
  const flat = polygon.map((corner) => new Vector2(corner[u], corner[v]));
  for (const triangle of ShapeUtils.triangulateShape(flat, [])) {
    const [a, b, c] = orient(triangle as Triple<number>, flat, flip);
    into.push(...polygon[a], ...polygon[b], ...polygon[c]);
  }
}

/** The triangle turned as its polygon is. */
function orient([a, b, c]: Triple<number>, flat: Vector2[], clockwise: boolean): Triple<number> {
  const isClockwise = ShapeUtils.area([flat[a], flat[b], flat[c]]) < 0;
  return isClockwise === clockwise ? [a, b, c] : [a, c, b];
}

function areaVector(polygon: Triple<number>[]): Triple<number> {
  const sum: Triple<number> = [0, 0, 0];
  polygon.forEach((p, i) => {
    const q = polygon[(i + 1) % polygon.length];
    sum[0] += p[1] * q[2] - p[2] * q[1];
    sum[1] += p[2] * q[0] - p[0] * q[2];
    sum[2] += p[0] * q[1] - p[1] * q[0];
  });
  return sum;
}

/** STL, text or binary; a text file may hold several solids. */
export function readStl(bytes: ArrayBuffer, defaultName: string): MeshObject[] {
  let geometry;
  try {
    geometry = new STLLoader().parse(bytes);
  } catch {
    throw new MeshError('it is not an STL file');
  }
  const corners = geometry.getAttribute('position').array;
  const names = (geometry.userData.groupNames as string[] | undefined) ?? [];
  if (geometry.groups.length === 0) return corners.length > 0 ? [{ name: defaultName, corners: [...corners] }] : [];
  return geometry.groups.map(({ start, count }, index) => ({
    name: names[index]?.trim() || defaultName,
    corners: [...corners.slice(3 * start, 3 * (start + count))],
  }));
}
