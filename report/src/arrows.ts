// Arrows of force and torque, drawn over everything else so that a body never hides its load.

import { ConeGeometry, CylinderGeometry, Group, Mesh, MeshBasicMaterial, Vector3 } from 'three';
import type { Triple } from './data.ts';

const UP = new Vector3(0, 1, 0);

/** An arrow with one head for a force, two for a torque. */
export class Arrow {
  readonly object = new Group();
  readonly material = new MeshBasicMaterial({ depthTest: false, transparent: true });
  private readonly shaft: Mesh;
  private readonly heads: Mesh[];
  private readonly headLength: number;

  /** @param thickness radius of the shaft, metres */
  constructor(thickness: number, heads: 1 | 2) {
    this.headLength = 7 * thickness;
    this.shaft = this.part(new CylinderGeometry(thickness, thickness, 1, 12));
    const cone = new ConeGeometry(2.6 * thickness, this.headLength, 16);
    this.heads = Array.from({ length: heads }, () => this.part(cone));
    this.object.visible = false;
  }

  /** Points from a place along a vector; `length` in metres. */
  point(from: Triple<number>, direction: Triple<number>, length: number): void {
    const vector = new Vector3(...direction);
    this.object.visible = length > 0 && vector.lengthSq() > 0;
    if (!this.object.visible) return;
    this.object.position.set(...from);
    this.object.quaternion.setFromUnitVectors(UP, vector.normalize());
    // Short arrows shrink as a whole.
    const headLength = Math.min(this.headLength, 0.4 * length);
    const scale = headLength / this.headLength;
    const shaftLength = length - headLength;
    this.shaft.scale.set(scale, shaftLength, scale);
    this.shaft.position.y = shaftLength / 2;
    this.heads.forEach((head, index) => {
      head.scale.setScalar(scale);
      head.position.y = shaftLength + headLength / 2 - 0.75 * index * headLength;
    });
  }

  private part(geometry: CylinderGeometry): Mesh {
    const mesh = new Mesh(geometry, this.material);
    mesh.renderOrder = 10;
    this.object.add(mesh);
    return mesh;
  }
}
