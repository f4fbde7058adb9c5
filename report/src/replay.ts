// The 3D replay: the bodies at their logged poses with their loads.

import {
  AmbientLight,
  DirectionalLight,
  Group,
  PerspectiveCamera,
  Scene,
  Sphere,
  Vector3,
  WebGLRenderer,
} from 'three';
import { OrbitControls } from 'three/addons/controls/OrbitControls.js';
import { Arrow } from './arrows.ts';
import { makeModel, makeTriad, paintModel, paintTriad, type Colouring, type ModelPart } from './bodyview.ts';
import { standBack } from './camera.ts';
import type { Triple } from './data.ts';
import { el } from './dom.ts';
import { outermost, tellingPoses, type PlacedBody } from './extent.ts';
import { number } from './format.ts';
import { placeLabels, type Box, type Label } from './labels.ts';
import { loadRowsAt, outOfFrame, placement, tripleAt } from './pose.ts';
import { poseAt, type Store } from './store.ts';
import { bodyColour, lineColour, look } from './theme.ts';

export type View = 'iso' | 'x' | 'y' | 'z';

const VIEWS: Record<View, Triple<number>> = { iso: [1, -1.3, 0.75], x: [1, 0, 0], y: [0, -1, 0], z: [0, -0.001, 1] };
/** The longest arrow, as a part of the scene's radius. */
const LONGEST_ARROW = 0.75;
/** Radius of a scene in which nothing has a size, metres. */
const SMALLEST_SCENE = 0.05;
/** What stays free around bodies and arrows, pixels: room for a name above, for the arrows' key below. */
const MARGIN = { side: 14, top: 28, bottom: 46 };
/** Between a body and its name, pixels. */
const LABEL_GAP = 4;

interface BodyView {
  group: Group;
  /** Its corners, in its own coordinates. */
  shape: Vector3[];
  triad: Group;
  force: Arrow;
  torque: Arrow;
  label: HTMLElement;
  labelPlace: Label;
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
  /** Around the bodies in all their poses. */
  private readonly bounds: Sphere;
  /** What the picture of the whole run must hold. */
  private readonly extents: Vector3[];
  private readonly corner = document.createElementNS('http://www.w3.org/2000/svg', 'svg');
  /** Null once the reader has turned the picture. */
  private view: View | null = 'iso';
  /** Where the axes and the arrows' key stand. */
  private furniture: Box[] = [];
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
    const shapes = groups.map((_, index) => this.shapeOf(index));
    const standing = this.shapeOf(null);
    const poses = tellingPoses(store);
    this.bounds = this.sceneBounds(standing, shapes, poses);
    this.bodies = groups.map((group, index) => this.makeBody(group, shapes[index], index));
    this.extents = [...standing, ...this.movingExtents(poses)];
    this.light();
    this.putInPage();
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
      const loadRows = loadRowsAt(body, store.row);
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

  /** Shows the whole run from a side. */
  look(view: View): void {
    this.view = view;
    const { clientWidth: width, clientHeight: height } = this.place;
    const half = Math.tan((this.camera.fov * Math.PI) / 360);
    const part = (margin: number, size: number) => half * Math.max(0.2, 1 - (2 * margin) / size);
    const side = part(MARGIN.side, width) * this.camera.aspect;
    const toEye = new Vector3(...VIEWS[view]).normalize();
    const { target, distance } = standBack(this.extents, toEye, {
      left: side,
      right: side,
      top: part(MARGIN.top, height),
      bottom: part(MARGIN.bottom, height),
    });
    this.controls.target.copy(target);
    this.camera.position.copy(target).addScaledVector(toEye, distance);
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

  /** Corners of the parts of a body, or of those that stand still (null). */
  private shapeOf(owner: number | null): Vector3[] {
    const parts = this.parts.filter(({ body }) => body === owner);
    return outermost(parts.map(({ mesh }) => mesh.geometry.getAttribute('position').array));
  }

  private sceneBounds(standing: Vector3[], shapes: Vector3[][], poses: PlacedBody[]): Sphere {
    const origin = [new Vector3()];
    const points = poses.flatMap(({ index, pose }) =>
      (shapes[index].length > 0 ? shapes[index] : origin).map((corner) => corner.clone().applyMatrix4(pose)),
    );
    const bounds = new Sphere().setFromPoints([...standing, ...points]);
    return bounds.radius > 0 ? bounds : new Sphere(bounds.center, SMALLEST_SCENE);
  }

  /** Corners of the bodies and tips of their arrows. */
  private movingExtents(poses: PlacedBody[]): Vector3[] {
    const tip = ({ index, row, pose }: PlacedBody, load: 'force' | 'torque') => {
      const body = this.store.run.bodies[index];
      const vector = outOfFrame(loadRowsAt(body, row), tripleAt(body[load], row));
      const length = this.arrowLength(vector, load === 'force' ? this.largestForce : this.largestTorque);
      return new Vector3(...vector).setLength(length).add(new Vector3().setFromMatrixPosition(pose));
    };
    return poses.flatMap((placed) => [
      ...this.bodies[placed.index].shape.map((corner) => corner.clone().applyMatrix4(placed.pose)),
      tip(placed, 'force'),
      tip(placed, 'torque'),
    ]);
  }

  private makeBody(group: Group, corners: Vector3[], index: number): BodyView {
    const own = new Sphere().setFromPoints(corners);
    const isDrawn = corners.length > 0;
    const triadLength = isDrawn ? 1.1 * own.radius : 0.25 * this.bounds.radius;
    // A body without meshes is shown by its triad.
    const shape = isDrawn ? corners : [0, 1, 2].map((axis) => new Vector3().setComponent(axis, triadLength));
    const triad = makeTriad(triadLength, 0.006 * this.bounds.radius);
    group.add(triad);
    const force = new Arrow(0.011 * this.bounds.radius, 1);
    const torque = new Arrow(0.011 * this.bounds.radius, 2);
    this.scene.add(force.object, torque.object);
    const label = el('span', { class: 'body-label' }, this.store.run.bodies[index].name);
    const labelPlace = { left: 0, top: 0, width: 0, height: 0, side: -1 };
    return { group, shape, triad, force, torque, label, labelPlace };
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
    this.controls.addEventListener('start', () => (this.view = null));
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
    for (const { label, labelPlace } of this.bodies) {
      label.hidden = false;
      [labelPlace.width, labelPlace.height] = [label.offsetWidth, label.offsetHeight];
    }
    const origin = this.place.getBoundingClientRect();
    this.furniture = [...this.place.querySelectorAll('.corner-axes, .arrow-key div')].map((piece) => {
      const box = piece.getBoundingClientRect();
      return { left: box.left - origin.left, top: box.top - origin.top, width: box.width, height: box.height };
    });
    if (this.view) this.look(this.view);
    this.drawNow();
  }

  private pointArrow(arrow: Arrow, from: Triple<number>, load: Triple<number>, largest: number): void {
    arrow.point(from, load, this.arrowLength(load, largest));
  }

  /** Metres. */
  private arrowLength(load: Triple<number>, largest: number): number {
    const part = largest > 0 ? Math.hypot(...load) / largest : 0;
    // Below a hundredth of the longest there is nothing to see.
    return part < 0.01 ? 0 : part * LONGEST_ARROW * this.bounds.radius;
  }

  private queue(): void {
    if (this.isQueued) return;
    this.isQueued = true;
    requestAnimationFrame(() => this.isQueued && this.drawNow());
  }

  private placeLabels(): void {
    const { clientWidth: width, clientHeight: height } = this.place;
    const inPicture = (place: Vector3) => place.clone().project(this.camera);
    const origin = (view: BodyView) => new Vector3().setFromMatrixPosition(view.group.matrix);
    for (const view of this.bodies) {
      const { x, y, z } = inPicture(origin(view));
      view.label.hidden = !this.shows.names || Math.max(Math.abs(x), Math.abs(y), Math.abs(z)) > 1;
    }
    const named = this.bodies.filter((view) => !view.label.hidden);
    const wanted = named.map((view) => {
      // Above what is seen of the body, not above its sphere, which may reach into other bodies.
      const seen = view.shape.map((corner) => inPicture(corner.clone().applyMatrix4(view.group.matrix)));
      const [xs, ys] = [seen.map(({ x }) => x), seen.map(({ y }) => y)];
      const middle = (Math.min(...xs) + Math.max(...xs)) / 2;
      const left = ((middle + 1) / 2) * width - view.labelPlace.width / 2;
      const top = ((1 - Math.max(...ys)) / 2) * height - view.labelPlace.height - LABEL_GAP;
      return { ...view.labelPlace, left, top };
    });
    placeLabels(wanted, { width, height }, this.furniture).forEach((place, index) => {
      const { label } = named[index];
      named[index].labelPlace = place;
      label.style.setProperty('left', `${place.left}px`);
      label.style.setProperty('top', `${place.top}px`);
    });
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
    this.view = null;
    this.camera.position.copy(this.controls.target).add(offset);
    this.controls.update();
    this.queue();
  }
}

function svg(tag: string, attributes: Record<string, string | number>, text = ''): SVGElement {
  const element = document.createElementNS('http://www.w3.org/2000/svg', tag);
  for (const [name, value] of Object.entries(attributes)) element.setAttribute(name, String(value));
  element.textContent = text;
  return element;
}
