// The page's parts that need no browser.

import assert from 'node:assert/strict';
import { test } from 'node:test';
import { PerspectiveCamera, Quaternion, Vector3 } from 'three';
import { standBack } from '../../report/src/camera.ts';
import { readRun, unpackColumn, DataError, type Body, type Series } from '../../report/src/data.ts';
import { extremesOf, nearestRow, rowNear, thinCurve } from '../../report/src/decimate.ts';
import { outermost } from '../../report/src/extent.ts';
import { count, number, tickLabels } from '../../report/src/format.ts';
import { placeLabels, type Label } from '../../report/src/labels.ts';
import { MeshError, readObj, readStl } from '../../report/src/mesh.ts';
import {
  angleBetween,
  bodyRows,
  continuous,
  desktopRows,
  intoFrame,
  outOfFrame,
  rowsAt,
  turnsOf,
  type Rows,
} from '../../report/src/pose.ts';
import { axisRange } from '../../report/src/range.ts';
import { groupSeries } from '../../report/src/series.ts';
import { Store } from '../../report/src/store.ts';
import { anglesOf } from './logs.ts';

const near = (actual: ArrayLike<number>, expected: number[]) =>
  expected.forEach((value, i) =>
    assert.ok(Math.abs(actual[i] - value) < 1e-12, `${Array.from(actual)} is not ${expected}`),
  );

test('columns unpack from every form, and what is no finite number is a gap', () => {
  assert.deepEqual([...unpackColumn([1, null, 3], 3)], [1, NaN, 3]);
  assert.deepEqual([...unpackColumn({ constant: 2 }, 3)], [2, 2, 2]);
  assert.deepEqual([...unpackColumn({ float32: 'AACAPwAAwH8AAIB/' }, 3)], [1, NaN, NaN]);
  assert.deepEqual([...unpackColumn({ float64: 'AAAAAAAA8D8=' }, 1)], [1]);
});

test('a damaged data block is told, not thrown about', () => {
  assert.throws(() => readRun('@KINORA_RUN_DATA@'), DataError);
  assert.throws(() => readRun('{"format":1,"rows":2,"time":[1,'), DataError);
  assert.throws(() => readRun('{"format":99,"rows":0}'), DataError);
  assert.throws(() => readRun('null'), DataError);
  assert.throws(() => unpackColumn([1, 2], 3), /2 values, not 3/);
  assert.throws(() => unpackColumn({ float32: '*' }, 3), DataError);
});

test('a run may lack everything but its rows', () => {
  const run = readRun('{"format":1,"rows":2}');
  assert.deepEqual([...run.step], [0, 1]);
  assert.equal(run.time, null);
  assert.deepEqual(run.bodies, []);
});

test('thinning a curve keeps its ends, its gaps and every excursion', () => {
  const rows = 100_000;
  const xs = Float64Array.from({ length: rows }, (_, i) => i / rows);
  const ys = new Float64Array(rows);
  ys[54_321] = 1;
  const kept = thinCurve(xs, ys, 1 / 1000, 1 / 300);
  assert.ok(kept.length < 1100, `${kept.length} rows are kept`);
  assert.ok(kept.includes(54_321));
  assert.equal(kept[0], 0);
  assert.equal(kept[kept.length - 1], rows - 1);
  assert.deepEqual(thinCurve([0, 1, 2, 3, 4], [0, 0, NaN, 0, 0], 10, 10), [0, 1, 2, 3, 4]);
});

test('what thinning leaves out is within a pixel of what it keeps', () => {
  const xs = Float64Array.from({ length: 20_000 }, (_, i) => Math.cos(i / 300) * (1 + i / 1e5));
  const ys = Float64Array.from({ length: 20_000 }, (_, i) => Math.sin(i / 170));
  const pixel = 0.004;
  let last = 0;
  const kept = new Set(thinCurve(xs, ys, pixel, pixel));
  for (let i = 0; i < xs.length; ++i) {
    if (kept.has(i)) last = i;
    assert.ok(Math.abs(xs[i] - xs[last]) < pixel && Math.abs(ys[i] - ys[last]) < pixel);
  }
});

test('extremes skip gaps', () => {
  assert.deepEqual(extremesOf([NaN, 3, -1, NaN, 3]), { min: -1, minRow: 2, max: 3, maxRow: 1 });
  assert.equal(extremesOf([NaN]), null);
});

test('rows are found by value and by place', () => {
  const times = [0, 1, 2, 2, 5];
  assert.equal(rowNear(times, -3), 0);
  assert.equal(rowNear(times, 1.4), 1);
  assert.equal(rowNear(times, 9), 4);
  assert.equal(nearestRow([0, 1, NaN], [0, 1, 0], 0.9, 0.8, 1, 1), 1);
});

test('numbers have six digits and a true minus', () => {
  assert.equal(number(-14.67254), '−14.6725');
  assert.equal(number(0), '0');
  assert.equal(number(-0), '0');
  assert.equal(number(1234567), '1234570');
  assert.equal(number(-4.44089e-16), '−4.441e−16');
  assert.equal(number(1e-5), '1e−5');
  assert.equal(number(NaN), '–');
  assert.equal(count(1, 'step'), '1 step');
  assert.equal(count(100000, 'step'), '100\u202f000 steps');
});

test('what is rounding beside the largest value is shown as zero', () => {
  assert.equal(number(3.9e-13, 1e-12), '0');
  assert.equal(number(-3.9e-13, 1e-12), '0');
  assert.equal(number(-1.25e-12, 1e-12), '−1.25e−12');
  assert.equal(number(0.04, 0, 1), '0.04');
});

test('labels of an axis are as long as tells them apart, and of one form', () => {
  assert.deepEqual(tickLabels([-2.5, 0, 2.5, 5, 7.5], 2.5), ['−2.5', '0', '2.5', '5', '7.5']);
  assert.deepEqual(tickLabels([-0.1, 1.3878e-17, 0.1], 0.1), ['−0.1', '0', '0.1']);
  assert.deepEqual(tickLabels([0.999999, 1, 1.000001], 1e-6), ['0.999999', '1', '1.000001']);
  assert.deepEqual(tickLabels([12345678, 12345679, null], 1), ['1.2345678e7', '1.2345679e7', '']);
  assert.deepEqual(tickLabels([5e-5, 1e-4, 1.5e-4], 5e-5), ['0.00005', '0.0001', '0.00015']);
  assert.deepEqual(tickLabels([5e-6, 1e-5, 1.5e-5], 5e-6), ['5e−6', '1e−5', '1.5e−5']);
});

test('values that are one and the same get an axis of their size', () => {
  near(axisRange(-2, 4, 0), [-2.18, 4.18]);
  near(axisRange(1, 1, 0), [0.47, 1.53]);
  near(axisRange(-12.000001, -12, 0.001), [-18.360000765, -5.640000235]);
  // One unit of the sixth digit is rounding, two are not.
  near(axisRange(1, 1.00001, 0), [0.47000235, 1.53000765]);
  near(axisRange(1, 1.00002, 0), [0.9999994, 1.0000206]);
  near(axisRange(0, 0, 0), [-1.06, 1.06]);
  near(axisRange(-1e-13, 1e-13, 1e-6), [-1.06, 1.06]);
  near(axisRange(null, null, 0), [-1, 1]);
});

test('a right-handed turn about X has a negative psi', () => {
  const a = 0.3;
  // The rows are the body's axes.
  near(bodyRows([0, 0, -a]), [1, 0, 0, 0, Math.cos(a), Math.sin(a), 0, -Math.sin(a), Math.cos(a)]);
  near(desktopRows([0, 0, -a]), bodyRows([0, 0, -a]));
});

test('the desktop applies Rz(theta) Ry(phi) Rx(psi)', () => {
  const [phi, theta, psi] = [0.2, -0.5, 1.1];
  const [c, s] = [Math.cos, Math.sin];
  // Worked out by hand: first row and last row of Rz(theta) Ry(phi) Rx(psi).
  const rows = desktopRows([phi, theta, psi]);
  near(rows.slice(0, 3), [
    c(theta) * c(phi),
    c(theta) * s(phi) * s(psi) - s(theta) * c(psi),
    c(theta) * s(phi) * c(psi) + s(theta) * s(psi),
  ]);
  near(rows.slice(6), [-s(phi), c(phi) * s(psi), c(phi) * c(psi)]);
  near(bodyRows([0.1, 0.1, 2]), desktopRows([0.1, 0.1, 2]));
  near([angleBetween(bodyRows([0.1, 0, 0]), desktopRows([0.1, 0, 0]))], [2 * Math.acos(Math.cos(0.05) ** 2)]);
});

test('vectors go into a frame and out of it', () => {
  const rows: Rows = bodyRows([0, 0, -Math.PI / 2]);
  // A quarter turn about X: the body's y axis is the global z axis.
  near(outOfFrame(rows, [0, 1, 0]), [0, 0, 1]);
  near(intoFrame(rows, [0, 0, 1]), [0, 1, 0]);
});

const turnAbout = (axis: [number, number, number], angle: number) =>
  new Quaternion().setFromAxisAngle(new Vector3(...axis).normalize(), angle);
/** A turn's rows: the axes that it makes of the global ones. */
const rowsOf = (turn: Quaternion) =>
  [0, 1, 2].flatMap((axis) => new Vector3().setComponent(axis, 1).applyQuaternion(turn).toArray()) as Rows;

/** A body that stands in every row as a turn says; `drawn` is where it is drawn. */
function bodyOf(turns: Quaternion[], orientation: 'exact' | 'direct', drawn?: Quaternion): Body {
  const angles = turns.map((turn) => anglesOf(turn, orientation));
  const none: Body['position'] = [null, null, null];
  return {
    name: 'a',
    position: none,
    angles: [0, 1, 2].map((i) => Float64Array.from(angles, (row) => row[i])) as Body['angles'],
    force: none,
    torque: none,
    drawn: drawn ? { position: [0, 0, 0], rows: rowsOf(drawn) } : null,
  };
}

/** The last row's turns. */
const lastOf = (columns: Body['angles']) => columns.map((column) => column![column!.length - 1]);

test('a body turned about an oblique axis counts its angle along that axis, in both kinds of logs', () => {
  const axis: [number, number, number] = [1, 2, -2];
  const drawn = turnAbout([0.3, -1, 0.5], 2);
  const turns = Array.from({ length: 201 }, (_, row) => turnAbout(axis, 0.1 * row));
  for (const body of [bodyOf(turns, 'exact'), bodyOf(turns, 'exact', drawn)]) {
    const columns = turnsOf(body, 'exact', null);
    turns.forEach((_, row) =>
      assert.ok(columns.every((column, i) => Math.abs(column![row] - (0.1 * row * axis[i]) / 3) < 1e-10)),
    );
  }
  // The host handed over the body's own axes: those of the turned body, seen from the global frame.
  const moved = turns.map((turn) => turn.clone().multiply(drawn));
  near(lastOf(turnsOf(bodyOf(moved, 'direct', drawn), 'body', null)).map((v) => v / 20), [1 / 3, 2 / 3, -2 / 3]);
  // As solved, a turn about Z is one about Y.
  const aboutZ = turns.map((_, row) => turnAbout([0, 0, 1], 0.005 * row));
  near(lastOf(turnsOf(bodyOf(aboutZ, 'direct'), 'body', null)), [0, 0, 1]);
  near(lastOf(turnsOf(bodyOf(aboutZ, 'direct'), 'desktop', null)), [0, 1, 0]);
});

test('the first row of turns is the shortest turn from the drawn pose', () => {
  const drawn = turnAbout([1, 0, 0], 1);
  const [exact] = [bodyOf([turnAbout([0, 1, 0], -3)], 'exact', drawn)];
  near(lastOf(turnsOf(exact, 'exact', null)), [0, -3, 0]);
  const direct = bodyOf([turnAbout([0, 1, 0], -3).multiply(drawn)], 'direct', drawn);
  near(lastOf(turnsOf(direct, 'body', null)), [0, -3, 0]);
  near(lastOf(turnsOf(bodyOf([turnAbout([0, 0, 1], Math.PI)], 'exact'), 'exact', null)), [0, 0, Math.PI]);
});

test('a spinning top counts its turns, a leaning one about the axis that it goes round', () => {
  const steps = 2000;
  const spin = Array.from({ length: steps + 1 }, (_, i) => turnAbout([0, 0, 1], (40 * Math.PI * i) / steps));
  near(lastOf(turnsOf(bodyOf(spin, 'exact'), 'exact', null)).map((v) => (v * 180) / Math.PI / 20), [0, 0, 360]);
  // It leans by 0.3 and goes round twice: 2 turns + 18 turns * cos 0.3 about Z.
  const leaning = spin.map((turn, i) => {
    const round = (4 * Math.PI * i) / steps;
    return turnAbout([Math.cos(round), Math.sin(round), 0], 0.3).multiply(turn);
  });
  const [x, y, z] = lastOf(turnsOf(bodyOf(leaning, 'exact'), 'exact', null));
  const expected = 2 * Math.PI * (2 + 18 * Math.cos(0.3));
  assert.ok(Math.abs(z - expected) < 1e-3 && Math.hypot(x - 0.3, y) < 1e-3, `${x} ${y} ${z}, ${expected}`);
});

test('turns have gaps where the log has, and count anew in another run', () => {
  const turns = [0, 0.5, 1, 1.5, 2, 0.1, 0.2].map((angle) => turnAbout([0, 0, 1], angle));
  const body = bodyOf(turns, 'exact');
  body.angles[0]![2] = NaN;
  const time = Float64Array.from([0, 1, 2, 3, 4, 0, 1]);
  const [, , z] = turnsOf(body, 'exact', time);
  assert.ok(Number.isNaN(z![2]));
  near(
    z!.filter((v) => !Number.isNaN(v)),
    [0, 0.5, 1.5, 2, 0.1, 0.2],
  );
  body.angles[1] = null;
  assert.deepEqual(turnsOf(body, 'exact', time), [null, null, null]);
});

test("an exact log's angles turn a body's drawn axes", () => {
  const drawn = turnAbout([0, 1, 0], -Math.PI / 2);
  const turn = turnAbout([1, 2, 3], 0.7);
  near(rowsAt(bodyOf([turn], 'exact', drawn), 0, 'exact'), rowsOf(turn.clone().multiply(drawn)));
  near(rowsAt(bodyOf([turn], 'direct'), 0, 'body'), rowsOf(turn));
});

/** A page's run of one body with a force along the desktop's x axis. */
const pageOf = (more: object, drawn: object) =>
  readRun(
    JSON.stringify({
      format: 1,
      rows: 1,
      ...more,
      bodies: [
        {
          name: 'a',
          angles: [[0.2], [0.5], [0]],
          force: [[1], [0], [0]],
          drawn: { position: [0, 0, 0], ...drawn },
        },
      ],
    }),
  );

test("loads in the body's axes are those of the body as drawn", () => {
  // The body's x axis is drawn along Y, its y axis along Z.
  const axes = [
    [0, 1, 0],
    [0, 0, 1],
    [1, 0, 0],
  ];
  const store = new Store(pageOf({ orientation: 'exact' }, { axes }));
  assert.deepEqual(
    store.columns(0, 'force').map((column) => column![0]),
    [0, 0, 1, 1],
  );
  store.changeValues({ loadAxes: 'global' });
  // The desktop's x axis: first row of Rz(0.5) Ry(0.2).
  const xAxis = [Math.cos(0.5) * Math.cos(0.2), -Math.sin(0.5), Math.cos(0.5) * Math.sin(0.2), 1];
  near(
    store.columns(0, 'force').map((column) => column![0]),
    xAxis,
  );
});

test('pages from before there were exact orientations mean what they meant', () => {
  const run = pageOf({}, { angles: [0.2, 0.5, 0.1] });
  assert.equal(run.orientation, 'direct');
  near(run.bodies[0].drawn!.rows, bodyRows([0.2, 0.5, 0.1]));
  const store = new Store(run);
  assert.equal(store.frame, 'desktop');
  assert.deepEqual(
    store.columns(0, 'force').map((column) => column![0]),
    [1, 0, 0, 1],
  );
});

test('components of one quantity share a chart, as do energies and what else has the same unit', () => {
  const series = (group: string, ...heads: [name: string, unit: string][]): Series[] =>
    heads.map(([name, unit]) => ({ group, name, unit, values: new Float64Array() }));
  const charts = groupSeries([
    ...series('fly', ['Turn x', 'rad'], ['Turn y', 'rad'], ['Turn z', 'rad'], ['Kinetic', 'J'], ['Element work', 'J']),
    ...series('fly', ['Load x', 'N'], ['Load y', 'N'], ['Load z', 'N'], ['Field force x', 'N']),
    ...series('turn and slide', ['Turn', 'rad'], ['Turn field torque', 'N m'], ['Turn load', 'N m'], ['Slide', 'm']),
    ...series('held', ['Field work', 'J']),
    ...series('spring', ['Length', 'm'], ['Potential', 'J'], ['Dissipated', 'J']),
  ]);
  const told = [...charts].map(([group, list]) => [
    group,
    ...list.map(({ title, unit, lines }) => `${title} [${unit}]: ${lines.map(({ label }) => label).join(' ')}`),
  ]);
  assert.deepEqual(told, [
    ['fly', 'Turn [rad]: X Y Z', 'Energies [J]: Kinetic Element work', 'Load [N]: X Y Z', 'Field force [N]: X'],
    [
      'turn and slide',
      'Turn [rad]: Turn',
      'Turn field torque, Turn load [N m]: Turn field torque Turn load',
      'Slide [m]: Slide',
    ],
    ['held', 'Field work [J]: Field work'],
    ['spring', 'Length [m]: Length', 'Energies [J]: Potential Dissipated'],
  ]);
});

test('continuous angles have no jumps and keep gaps', () => {
  const angles = Float64Array.from([3, -3, NaN, 3, 2.9]);
  near(
    continuous(angles).filter((v) => !Number.isNaN(v)),
    [3, 2 * Math.PI - 3, 3, 2.9],
  );
});

test('the camera stands as near as shows everything, off the middle where the margins are', () => {
  const points = [
    [0.1, 0, 0],
    [-0.3, 0.2, 0.5],
    [0, 0, -0.02],
    [0, 1, 0.1],
  ].map((place) => new Vector3(...place));
  const half = Math.tan(Math.PI / 10);
  // A picture twice as wide as high, a tenth of its height free below.
  const toEye = new Vector3(1, -1.3, 0.75);
  const opening = { left: 2 * half, right: 2 * half, top: half, bottom: 0.8 * half };
  const { target, distance } = standBack(points, toEye, opening);
  const camera = new PerspectiveCamera(36, 2, 0.01, 100);
  camera.up.set(0, 0, 1);
  camera.position.copy(target).addScaledVector(toEye.normalize(), distance);
  camera.lookAt(target);
  camera.updateMatrixWorld();
  const seen = points.map((point) => point.clone().project(camera));
  const [xs, ys] = [seen.map(({ x }) => x), seen.map(({ y }) => y)];
  near([Math.max(...ys), Math.min(...ys)], [1, -0.8]);
  assert.ok(Math.max(...xs) < 1 && Math.min(...xs) > -1);
});

test('what sticks out of a shape stands for it', () => {
  const inside = [0, 0, 0, 0.4, 0.4, 0.4];
  const cube = [0, 1].flatMap((x) => [0, 1].flatMap((y) => [0, 1].flatMap((z) => [x, y, z])));
  assert.equal(outermost([inside, cube, cube]).length, 8);
  assert.deepEqual(outermost([]), []);
  // A wheel of 500 points: no direction shows less than 99 hundredths of it.
  const turns = Array.from({ length: 500 }, (_, i) => (i * Math.PI) / 250);
  const rim = outermost([turns.flatMap((turn) => [0, Math.cos(turn), Math.sin(turn)])]);
  for (const turn of turns)
    assert.ok(Math.max(...rim.map(({ y, z }) => y * Math.cos(turn) + z * Math.sin(turn))) > 0.99);
});

const label = (left: number, top: number, side = -1): Label => ({ left, top, width: 40, height: 20, side });
const tops = (labels: Label[]) => labels.map(({ top }) => top);

test('labels go into the picture and off each other', () => {
  const picture = { width: 200, height: 100 };
  const [corner] = placeLabels([label(-30, -50)], picture, []);
  assert.deepEqual([corner.left, corner.top], [2, 2]);
  const [far] = placeLabels([label(190, 300)], picture, []);
  assert.deepEqual([far.left, far.top], [158, 78]);
  // The second goes up, the third down, for there is no room above; one that stands beside them stays.
  assert.deepEqual(tops(placeLabels([label(50, 30), label(60, 30), label(55, 30), label(100, 30)], picture, [])), [
    30, 8, 52, 30,
  ]);
  assert.deepEqual(tops(placeLabels([label(50, 70)], picture, [{ left: 0, top: 75, width: 60, height: 20 }])), [53]);
});

test('a label keeps its side while bodies pass each other', () => {
  const picture = { width: 200, height: 200 };
  // The first passes the second from above to below; at equal heights nothing tells them apart.
  let labels = [label(50, 60), label(50, 100)];
  const distances: number[] = [];
  for (let top = 60; top <= 140; top += 0.5) {
    labels = placeLabels([{ ...labels[0], left: 50, top }, { ...labels[1], left: 50, top: 100 }], picture, []);
    distances.push(labels[1].top - labels[0].top);
  }
  const changes = distances.filter((distance, i) => i > 0 && Math.sign(distance) !== Math.sign(distances[i - 1]));
  assert.equal(changes.length, 1);
  assert.ok(distances.every((distance) => Math.abs(distance) >= 20));
});

const OBJ = `# a square and a triangle
v 0 0 0\r
v 2 0 0
v 2 2 0
v 0 2 0
v 0 0 1
o plate
g side
f 1/1 2/2 3//3 4
o fin one
f -5 -4 -1
`;

test('OBJ objects are told apart, polygons cut, indices counted from either end', () => {
  const [plate, fin] = readObj(OBJ, 'file');
  assert.equal(plate.name, 'plate');
  assert.equal(plate.corners.length, 18);
  assert.equal(fin.name, 'fin one');
  assert.deepEqual(fin.corners, [0, 0, 0, 2, 0, 0, 0, 0, 1]);
});

test('OBJ groups name the parts where there are no objects, and the file where there is neither', () => {
  const vertices = 'v 0 0 0\nv 1 0 0\nv 0 1 0\n';
  assert.deepEqual(
    readObj(vertices + 'g one\nf 1 2 3\ng two\nf 1 2 3', 'file').map((object) => object.name),
    ['one', 'two'],
  );
  assert.deepEqual(
    readObj(vertices + 'f 1 2 3', 'file').map((object) => object.name),
    ['file'],
  );
});

test('a polygon that is not convex keeps its area and its sense', () => {
  // An L of area 3, seen from below.
  const text = 'v 0 0 5\nv 0 2 5\nv 1 2 5\nv 1 1 5\nv 2 1 5\nv 2 0 5\nf 1 2 3 4 5 6';
  const [{ corners }] = readObj(text, 'file');
  let [area, signed] = [0, 0];
  for (let i = 0; i < corners.length; i += 9) {
    const [ax, ay, , bx, by, , cx, cy] = corners.slice(i, i + 9);
    const twice = (bx - ax) * (cy - ay) - (cx - ax) * (by - ay);
    area += Math.abs(twice) / 2;
    signed += twice / 2;
  }
  assert.equal(corners.length, 36);
  assert.equal(area, 3);
  assert.equal(signed, -3);
});

test('a damaged OBJ is told with its line', () => {
  assert.throws(
    () => readObj('v 0 0\n', 'file'),
    (error) => error instanceof MeshError && /line 1/.test(error.message),
  );
  assert.throws(() => readObj('v 0 0 0\nf 1 2 3\n', 'file'), /line 2 is not a face/);
});

const FACET = 'facet normal 0 0 1\nouter loop\nvertex 0 0 0\nvertex 1 0 0\nvertex 0 1 0\nendloop\nendfacet\n';
const bytes = (text: string) => new TextEncoder().encode(text).buffer as ArrayBuffer;

test('STL texts may hold several solids', () => {
  const objects = readStl(bytes(`solid one\n${FACET}endsolid one\nsolid two\n${FACET}${FACET}endsolid two\n`), 'file');
  assert.deepEqual(
    objects.map(({ name, corners }) => [name, corners.length]),
    [
      ['one', 9],
      ['two', 18],
    ],
  );
});

test('a binary STL is one object with the name of its file', () => {
  const view = new DataView(new ArrayBuffer(84 + 50));
  view.setUint32(80, 1, true);
  [0, 0, 1, 0, 0, 0, 1, 0, 0, 0, 1, 0].forEach((value, i) => view.setFloat32(84 + 4 * i, value, true));
  assert.deepEqual(readStl(view.buffer, 'file'), [{ name: 'file', corners: [0, 0, 0, 1, 0, 0, 0, 1, 0] }]);
});
