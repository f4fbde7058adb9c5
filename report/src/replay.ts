// The 3D replay: the bodies at their logged poses with their loads.

import {
  AmbientLight,
  Box3,
  DirectionalLight,
  Group,
  Matrix4,
  PerspectiveCamera,
  Scene,
  Sphere,
  Vector3,
  WebGLRenderer,
} from 'three';
import { OrbitControls } from 'three/addons/controls/OrbitControls.js';
import { Arrow } from './arrows.ts';
import { makeModel, makeTriad, paintModel, paintTriad, type Colouring, type ModelPart } from './bodyview.ts';
import type { Triple } from './data.ts';
import { el } from './dom.ts';
import { number } from './format.ts';
import { outOfFrame, rowsAt, tripleAt, type Rows } from './pose.ts';
import { poseAt, type Store } from './store.ts';
import { bodyColour, lineColour, look } from './theme.ts';

export type View = 'iso' | 'x' | 'y' | 'z';

const VIEWS: Record<View, Triple<number>> = { iso: [1, -1.3, 0.75], x: [1, 0, 0], y: [0, -1, 0], z: [0, -0.001, 1] };
/** The longest arrow, as a part of the scene's radius. */
const LONGEST_ARROW = 0.75;
/** Radius of a scene in which nothing has a size, metres. */
const SMALLEST_SCENE = 0.05;
const LABEL_HEIGHT = 19;

interface BodyView {
  group: Group;
  triad: Group;
  force: Arrow;
  torque: Arrow;
  label: HTMLElement;
  radius: number;
}

/** Whether this browser can draw in 3D. */
export function hasWebGl(): boolean {
  try {
    return document.createElement('canvas').getContext('webgl2') !== null;
  } catch {
    return false;
  }
}

export class Replay {
  readonly problems: string[] = [];
  readonly hasModel: boolean;
  readonly hasPoles: boolean;
  readonly largestForce: number;
  readonly largestTorque: number;
  colouring: Colouring;
  private readonly scene = new Scene();
  private readonly camera = new PerspectiveCamera(32, 1, 0.001, 100);
  private readonly renderer: WebGLRenderer;
  private readonly controls: OrbitControls;
  private readonly parts: ModelPart[];
  private readonly bodies: BodyView[];
  private readonly bounds: Sphere;
  private readonly corner = document.createElementNS('http://www.w3.org/2000/svg', 'svg');
  private isQueued = false;
  private shows = { forces: true, torques: true, frames: false, names: true };

  constructor(
    private readonly store: Store,
    private readonly place: HTMLElement,
  ) {
    this.parts = makeModel(store.run, this.problems);
    this.hasModel = this.parts.length > 0;
    this.hasPoles = this.parts.some((part) => part.hasPoles);
    this.colouring = this.hasPoles ? 'poles' : 'bodies';
    this.shows.frames = !this.hasModel;
    this.largestForce = store.largest('force');
    this.largestTorque = store.largest('torque');
    this.renderer = new WebGLRenderer({ antialias: true, alpha: true, preserveDrawingBuffer: true });
    this.controls = new OrbitControls(this.camera, this.renderer.domElement);
    const groups = store.run.bodies.map(() => new Group());
    this.placeParts(groups);
    this.bounds = this.sceneBounds(groups);
    this.bodies = groups.map((group, index) => this.makeBody(group, index));
    this.light();
    this.putInPage();
    this.look('iso');
    this.restyle();
  }

  show(what: keyof Replay['shows'], isShown: boolean): void {
    this.shows[what] = isShown;
    this.update();
  }

  isShown(what: keyof Replay['shows']): boolean {
    return this.shows[what];
  }

  /** Puts everything where the present row has it. */
  update(): void {
    const { store } = this;
    store.run.bodies.forEach((body, index) => {
      const view = this.bodies[index];
      const { position, rows } = poseAt(store, body, store.row);
      // Loads are in the desktop's frame, whichever frame is shown.
      const loadRows = rowsAt(body, store.row, 'desktop');
      view.group.matrix.copy(placement(position, rows));
      view.triad.visible = this.shows.frames;
      this.pointArrow(view.force, position, outOfFrame(loadRows, tripleAt(body.force, store.row)), this.largestForce);
      this.pointArrow(
        view.torque,
        position,
        outOfFrame(loadRows, tripleAt(body.torque, store.row)),
        this.largestTorque,
      );
      view.force.object.visible &&= this.shows.forces;
      view.torque.object.visible &&= this.shows.torques;
    });
    this.queue();
  }

  look(view: View): void {
    const distance = (1.12 * this.bounds.radius) / Math.sin((this.camera.fov * Math.PI) / 360);
    const narrow = Math.min(1, this.camera.aspect);
    this.controls.target.copy(this.bounds.center);
    this.camera.position
      .set(...VIEWS[view])
      .normalize()
      .multiplyScalar(distance / narrow)
      .add(this.bounds.center);
    this.camera.near = distance / 100;
    this.camera.far = distance * 20;
    this.camera.updateProjectionMatrix();
    this.controls.update();
    this.queue();
  }

  restyle(): void {
    paintModel(this.parts, this.colouring);
    for (const [index, view] of this.bodies.entries()) {
      paintTriad(view.triad);
      view.force.material.color.set(look().force);
      view.torque.material.color.set(look().torque);
      view.label.style.setProperty('--body', bodyColour(index));
    }
    for (const load of ['force', 'torque'] as const) {
      this.place.querySelector<HTMLElement>(`.arrow-key .${load}`)?.style.setProperty('--arrow', look()[load]);
    }
    this.update();
  }

  /** Draws at once, for paper. */
  drawNow(): void {
    this.isQueued = false;
    this.renderer.render(this.scene, this.camera);
    this.placeLabels();
    this.drawCorner();
  }

  private placeParts(groups: Group[]): void {
    for (const group of groups) {
      group.matrixAutoUpdate = false;
      this.scene.add(group);
    }
    for (const { body, mesh, edges } of this.parts) (body === null ? this.scene : groups[body]).add(mesh, edges);
  }

  /** A sphere around everything in every pose of the run. */
  private sceneBounds(groups: Group[]): Sphere {
    const { store } = this;
    const spheres: Sphere[] = [];
    for (const { body, mesh } of this.parts) {
      if (body === null) spheres.push(new Box3().setFromObject(mesh).getBoundingSphere(new Sphere()));
    }
    const stride = Math.max(1, Math.floor(store.run.rows / 300));
    groups.forEach((group, index) => {
      const sphere = new Box3().setFromObject(group).getBoundingSphere(new Sphere());
      for (let row = 0; row < store.run.rows; row += stride) {
        const { position, rows } = poseAt(store, store.run.bodies[index], row);
        const around = sphere.isEmpty() ? new Sphere(new Vector3(), 0) : sphere.clone();
        spheres.push(around.applyMatrix4(placement(position, rows)));
      }
    });
    const all = spheres.reduce((box, sphere) => box.union(sphere.getBoundingBox(new Box3())), new Box3());
    const center = all.getCenter(new Vector3());
    const radius = spheres.reduce(
      (most, sphere) => Math.max(most, center.distanceTo(sphere.center) + sphere.radius),
      0,
    );
    return new Sphere(center, radius > 0 ? radius : SMALLEST_SCENE);
  }

  private makeBody(group: Group, index: number): BodyView {
    const box = new Box3().setFromObject(group);
    const radius = box.isEmpty() ? 0.12 * this.bounds.radius : box.getBoundingSphere(new Sphere()).radius;
    const triad = makeTriad();
    triad.scale.setScalar(box.isEmpty() ? 0.25 * this.bounds.radius : 1.1 * radius);
    group.add(triad);
    const force = new Arrow(0.011 * this.bounds.radius, 1);
    const torque = new Arrow(0.011 * this.bounds.radius, 2);
    this.scene.add(force.object, torque.object);
    const label = el('span', { class: 'body-label' }, this.store.run.bodies[index].name);
    return { group, triad, force, torque, label, radius };
  }

  private light(): void {
    const key = new DirectionalLight('#ffffff', 2.2);
    key.position.set(0.4, 0.8, 1);
    // The light goes with the eye.
    this.camera.add(key);
    this.scene.add(this.camera, new AmbientLight('#ffffff', 1.5));
  }

  private putInPage(): void {
    const canvas = this.renderer.domElement;
    canvas.tabIndex = 0;
    canvas.setAttribute('role', 'img');
    canvas.setAttribute('aria-label', '3D view of the bodies: arrow keys turn it, plus and minus zoom');
    canvas.addEventListener('keydown', (event) => this.onKey(event));
    this.corner.setAttribute('class', 'corner-axes');
    this.corner.setAttribute('viewBox', '-32 -32 64 64');
    this.corner.setAttribute('aria-hidden', 'true');
    this.place.append(canvas, this.corner, this.arrowKey(), ...this.bodies.map((view) => view.label));
    this.controls.addEventListener('change', () => this.queue());
    this.camera.up.set(0, 0, 1);
    this.controls.object = this.camera;
    this.fit();
    new ResizeObserver(() => this.fit()).observe(this.place);
  }

  /** What the longest arrows stand for. */
  private arrowKey(): HTMLElement {
    const entry = (name: string, size: number, unit: string, className: string) =>
      size > 0 &&
      el('div', { class: className }, el('span', { class: 'swatch' }), `${name}, longest ${number(size, 0, 4)} ${unit}`);
    return el(
      'div',
      { class: 'arrow-key' },
      entry('Force', this.largestForce, 'N', 'force'),
      entry('Torque', this.largestTorque, 'mN·m', 'torque'),
    );
  }

  private fit(): void {
    const { clientWidth: width, clientHeight: height } = this.place;
    if (width === 0 || height === 0) return;
    this.renderer.setPixelRatio(Math.min(devicePixelRatio, 2));
    this.renderer.setSize(width, height);
    this.camera.aspect = width / height;
    this.camera.updateProjectionMatrix();
    this.drawNow();
  }

  private pointArrow(arrow: Arrow, from: Triple<number>, load: Triple<number>, largest: number): void {
    const length = largest > 0 ? (LONGEST_ARROW * this.bounds.radius * Math.hypot(...load)) / largest : 0;
    // Below a hundredth of the longest there is nothing to see.
    arrow.point(from, load, length < 0.01 * LONGEST_ARROW * this.bounds.radius ? 0 : length);
  }

  private queue(): void {
    if (this.isQueued) return;
    this.isQueued = true;
    requestAnimationFrame(() => this.isQueued && this.drawNow());
  }

  private placeLabels(): void {
    const { clientWidth: width, clientHeight: height } = this.place;
    const up = new Vector3(0, 1, 0).applyQuaternion(this.camera.quaternion);
    const taken: { left: number; top: number }[] = [];
    for (const view of this.bodies) {
      const place = new Vector3().setFromMatrixPosition(view.group.matrix).addScaledVector(up, 1.05 * view.radius);
      place.project(this.camera);
      view.label.hidden = !this.shows.names || Math.abs(place.z) > 1;
      const left = ((place.x + 1) / 2) * width;
      let top = ((1 - place.y) / 2) * height;
      // A name that would cover another goes above it.
      for (const other of taken)
        if (Math.abs(other.left - left) < 80 && Math.abs(other.top - top) < LABEL_HEIGHT)
          top = other.top - LABEL_HEIGHT;
      taken.push({ left, top });
      view.label.style.setProperty('left', `${left}px`);
      view.label.style.setProperty('top', `${top}px`);
    }
  }

  /** The directions of the global axes, in a corner. */
  private drawCorner(): void {
    const turn = this.camera.matrixWorldInverse;
    const axes = [0, 1, 2].map((axis) => ({ axis, end: new Vector3().setComponent(axis, 1).transformDirection(turn) }));
    // Nearer axes over farther ones.
    axes.sort((a, b) => a.end.z - b.end.z);
    const shapes = axes.flatMap(({ axis, end }) => [
      svg('line', { x1: 0, y1: 0, x2: 20 * end.x, y2: -20 * end.y, stroke: lineColour(axis) }),
      svg('text', { x: 27 * end.x, y: -27 * end.y, fill: lineColour(axis) }, 'XYZ'[axis]),
    ]);
    this.corner.replaceChildren(...shapes);
  }

  private onKey(event: KeyboardEvent): void {
    const step = Math.PI / 24;
    const turns: Record<string, [number, number, number]> = {
      ArrowLeft: [-step, 0, 1],
      ArrowRight: [step, 0, 1],
      ArrowUp: [0, -step, 1],
      ArrowDown: [0, step, 1],
      '+': [0, 0, 0.85],
      '=': [0, 0, 0.85],
      '-': [0, 0, 1 / 0.85],
    };
    if (event.key === ' ') {
      event.preventDefault();
      this.store.setPlaying(!this.store.isPlaying);
      return;
    }
    const turn = turns[event.key];
    if (!turn) return;
    event.preventDefault();
    this.orbit(...turn);
  }

  private orbit(azimuth: number, polar: number, zoom: number): void {
    const offset = this.camera.position.clone().sub(this.controls.target);
    const length = offset.length() * zoom;
    const angle = Math.atan2(offset.y, offset.x) + azimuth;
    const tilt = Math.min(Math.PI - 0.01, Math.max(0.01, Math.acos(offset.z / offset.length()) + polar));
    offset
      .set(Math.sin(tilt) * Math.cos(angle), Math.sin(tilt) * Math.sin(angle), Math.cos(tilt))
      .multiplyScalar(length);
    this.camera.position.copy(this.controls.target).add(offset);
    this.controls.update();
    this.queue();
  }
}

/** The rows of a frame are the columns of the matrix that takes frame coordinates into global ones. */
function placement([x, y, z]: Triple<number>, r: Rows): Matrix4 {
  return new Matrix4().set(r[0], r[3], r[6], x, r[1], r[4], r[7], y, r[2], r[5], r[8], z, 0, 0, 0, 1);
}

function svg(tag: string, attributes: Record<string, string | number>, text = ''): SVGElement {
  const element = document.createElementNS('http://www.w3.org/2000/svg', tag);
  for (const [name, value] of Object.entries(attributes)) element.setAttribute(name, String(value));
  element.textContent = text;
  return element;
}
