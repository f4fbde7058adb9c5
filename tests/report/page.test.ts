// The page in a browser, written by kinora-report.

import assert from 'node:assert/strict';
import { execFileSync } from 'node:child_process';
import { mkdtempSync, readFileSync, rmSync, statSync, writeFileSync } from 'node:fs';
import { tmpdir } from 'node:os';
import { join } from 'node:path';
import { after, before, test } from 'node:test';
import type { Browser, Page } from 'playwright-core';
import { close, launch, openFile, root, tool } from './browser.ts';
import { head, line, logText, pulledApart, slipping } from './logs.ts';
import { topGeometry, topLog, topScenario, topStates } from './top.ts';

const examples = join(root, 'examples');
let browser: Browser;
let folder: string;
let pages = 0;

before(async () => {
  folder = mkdtempSync(join(tmpdir(), 'kinora-report-page-'));
  browser = await launch();
});

after(async () => {
  await browser?.close();
  if (folder) rmSync(folder, { recursive: true, force: true });
});

/** Writes a page from a log and gives its file. */
function write(log: string, options: string[] = []): string {
  const base = join(folder, `run${++pages}`);
  writeFileSync(`${base}.coupling.csv`, log);
  execFileSync(tool, [`${base}.coupling.csv`, ...options], { stdio: 'pipe' });
  return `${base}.report.html`;
}

const open = (file: string, settings?: Parameters<Browser['newPage']>[0]) => openFile(browser, file, settings);

const ready = (page: Page) => page.locator('#view canvas').waitFor();
const goTo = (page: Page, row: number) => page.locator('.player input[type=range]').fill(String(row));

/** The values of a body's quantity at the present step. */
const present = (page: Page, body: string, quantity: string) =>
  page.locator(`.present table[data-body="${body}"] tr[data-quantity=${quantity}] td`).allTextContents();

const legend = (page: Page, section: string, chart: number) =>
  page
    .locator('section', { has: page.locator('h2', { hasText: section }) })
    .locator('figure')
    .nth(chart)
    .locator('.legend-entry');

test('a page opens offline, without a complaint, with all its parts', async () => {
  const page = await open(write(pulledApart()));
  await ready(page);
  assert.equal(await page.title(), 'run1');
  assert.deepEqual(await page.locator('h2').allTextContents(), [
    'Forces',
    'Torques',
    'Positions',
    'Turns about X, Y, Z',
    'Phase plots',
  ]);
  assert.match((await page.locator('.facts').textContent())!, /0 to 1 s.*21 steps, 0 to 20.*0\.05 s.*lower, upper/);
  assert.match((await page.locator('.origin').textContent())!, /run1\.coupling\.csv/);
  await close(page);
});

test('values are right at every step that is asked for', async () => {
  const page = await open(write(pulledApart()));
  assert.deepEqual(await present(page, 'upper', 'force'), ['0', '0', '−14.6725']);
  await goTo(page, 10);
  // Distance 22 mm: 14.6725 (12 / 22)^4.
  assert.deepEqual(await present(page, 'upper', 'force'), ['0', '0', '−1.29879']);
  assert.deepEqual(await present(page, 'upper', 'position'), ['0', '0', '22']);
  assert.equal(await page.locator('.time-readout').textContent(), '0.5 s step 10');
  assert.match((await legend(page, 'Forces', 1).nth(2).textContent())!, /Z\s*−1\.29879/);
  await close(page);
});

test('the largest loads are named with their places, and lead there', async () => {
  const page = await open(write(slipping()));
  await ready(page);
  const driver = page.locator('.extremes tbody tr').first();
  const cells = await driver.locator('td').allTextContents();
  assert.equal(cells[0], '78.7');
  assert.equal(cells[1], '0 s');
  assert.equal(cells[5], 'X 1719');
  await goTo(page, 7);
  await driver.locator('button').first().click();
  assert.equal(await page.locator('.time-readout').textContent(), '0 s step 0');
  await page.locator('summary').click();
  await page.locator('details tbody tr').first().waitFor();
  assert.equal(await page.locator('details tbody tr').count(), 28);
  await close(page);
});

test('hovering a chart moves every cursor and the replay', async () => {
  const page = await open(write(pulledApart()));
  await ready(page);
  const over = page.locator('.u-over').first();
  const box = (await over.boundingBox())!;
  await page.mouse.move(box.x + box.width * 0.5, box.y + 20);
  assert.equal(await page.locator('.player input[type=range]').inputValue(), '10');
  assert.deepEqual(await present(page, 'upper', 'position'), ['0', '0', '22']);
  const cursors = await page
    .locator('.charts-of .u-cursor-x')
    .evaluateAll((lines) =>
      lines.map((l) => l.getBoundingClientRect().left - l.parentElement!.getBoundingClientRect().left),
    );
  const widths = await page.locator('.charts-of .u-over').evaluateAll((overs) => overs.map((o) => o.clientWidth));
  cursors.forEach((left, i) =>
    assert.ok(Math.abs(left / widths[i] - 0.5) < 0.02, `cursor ${i} at ${left} of ${widths[i]}`),
  );
  await page.mouse.move(5, 5);
  assert.deepEqual(await present(page, 'upper', 'position'), ['0', '0', '22'], 'the cursor stays');
  await close(page);
});

test('dragging zooms all charts, and the whole run comes back', async () => {
  const page = await open(write(slipping()));
  const overs = page.locator('.charts-of .u-over');
  const box = (await overs.first().boundingBox())!;
  await page.mouse.move(box.x + box.width * 0.25, box.y + 20);
  await page.mouse.down();
  await page.mouse.move(box.x + box.width * 0.5, box.y + 40, { steps: 4 });
  await page.mouse.up();
  // The left edge of another chart is now a quarter of the run: step 100 of 400.
  const other = (await overs.nth(2).boundingBox())!;
  await page.mouse.move(other.x + 1, other.y + 20);
  const row = Number(await page.locator('.player input[type=range]').inputValue());
  assert.ok(Math.abs(row - 100) <= 2, `step ${row}`);
  await page.getByRole('button', { name: 'Whole run' }).click();
  await page.mouse.move(other.x + 1, other.y + 40);
  assert.ok(Number(await page.locator('.player input[type=range]').inputValue()) <= 2);
  await close(page);
});

test('legend entries hide and show their line', async () => {
  const page = await open(write(pulledApart()));
  const entry = legend(page, 'Forces', 1).nth(2);
  const canvas = page.locator('.charts-of canvas').nth(1);
  const picture = () => canvas.evaluate((c) => (c as HTMLCanvasElement).toDataURL());
  const whole = await picture();
  assert.equal(await entry.getAttribute('aria-pressed'), 'true');
  await entry.click();
  assert.equal(await entry.getAttribute('aria-pressed'), 'false');
  await page.waitForTimeout(100);
  assert.notEqual(await picture(), whole);
  await entry.click();
  await page.waitForTimeout(100);
  assert.equal(await picture(), whole);
  await close(page);
});

test('a hidden line has no marker, however the page changes its size', async () => {
  const page = await open(write(pulledApart()));
  const chart = page.locator('.charts-of figure').nth(1);
  const markers = () => chart.locator('.u-cursor-pt').evaluateAll((all) => all.map((m) => m.checkVisibility()));
  const width = await chart.locator('.uplot').evaluate((plot) => (plot as HTMLElement).offsetWidth);
  await page.setViewportSize({ width: 1300, height: 950 });
  await page.waitForFunction((w) => document.querySelector<HTMLElement>('.uplot')!.offsetWidth !== w, width);
  assert.deepEqual(await markers(), [true, true, true, false]);
  await legend(page, 'Forces', 1).first().click();
  await legend(page, 'Forces', 1).nth(3).click();
  await page.setViewportSize({ width: 1500, height: 950 });
  await goTo(page, 5);
  assert.deepEqual(await markers(), [false, true, true, true]);
  await close(page);
});

test('bodies can be taken out of the charts', async () => {
  const page = await open(write(pulledApart()));
  const charts = page.locator('.charts-of figure');
  // Two of forces and one of the body that moves; there are no torques.
  assert.equal(await charts.count(), 3);
  assert.equal(await page.locator('.still', { hasText: 'upper has no torque' }).count(), 1);
  await page.locator('.chip', { hasText: 'lower' }).click();
  assert.equal(await charts.count(), 2);
  assert.equal(await page.locator('.present table').count(), 1);
  await close(page);
});

test('everything works from the keyboard', async () => {
  const page = await open(write(pulledApart()));
  await page.locator('.plot').first().focus();
  await page.keyboard.press('ArrowRight');
  await page.keyboard.press('Shift+ArrowRight');
  assert.equal(await page.locator('.time-readout').textContent(), '0.55 s step 11');
  await page.keyboard.press('+');
  await page.keyboard.press('Home');
  assert.notEqual(await page.locator('.time-readout').textContent(), '0 s step 0');
  await page.keyboard.press('0');
  await page.keyboard.press('Home');
  assert.equal(await page.locator('.time-readout').textContent(), '0 s step 0');
  await page.keyboard.press(' ');
  await page.locator('.play', { hasText: 'Pause' }).waitFor();
  await page.keyboard.press(' ');
  await page.locator('.play', { hasText: 'Play' }).waitFor();
  await close(page);
});

test('the replay plays to the end of the run and begins anew', async () => {
  const page = await open(write(pulledApart()));
  await ready(page);
  await page.locator('.player select').selectOption({ label: 'real time (1 s)' });
  await page.getByRole('button', { name: 'Play', exact: true }).click();
  await page.waitForFunction(() => document.querySelector('.time-readout')!.textContent === '1 s step 20', null, {
    timeout: 10_000,
  });
  await page.locator('.play', { hasText: 'Play' }).waitFor();
  await page.getByRole('button', { name: 'Play', exact: true }).click();
  await page.waitForFunction(() => document.querySelector('.time-readout')!.textContent !== '1 s step 20');
  await close(page);
});

/** How many pixels of the 3D view are of a strong colour, and of a middling grey. */
const coloured = (page: Page) =>
  page.locator('#view canvas').evaluate((canvas) => {
    const copy = document.createElement('canvas');
    [copy.width, copy.height] = [(canvas as HTMLCanvasElement).width, (canvas as HTMLCanvasElement).height];
    const context = copy.getContext('2d')!;
    context.drawImage(canvas as HTMLCanvasElement, 0, 0);
    const { data } = context.getImageData(0, 0, copy.width, copy.height);
    const counts = { red: 0, blue: 0, grey: 0, top: copy.height, redAt: 0, blueAt: 0 };
    for (let i = 0; i < data.length; i += 4) {
      const [r, b] = [data[i], data[i + 2]];
      if (r > b + 80) {
        ++counts.red;
        counts.top = Math.min(counts.top, Math.floor(i / 4 / copy.width));
        counts.redAt += (i / 4) % copy.width;
      } else if (b > r + 60) {
        ++counts.blue;
        counts.blueAt += (i / 4) % copy.width;
      } else if (data[i + 3] === 255 && Math.abs(r - b) < 30 && r > 70 && r < 200) {
        ++counts.grey;
      }
    }
    // Where they are in the mean, from the left.
    return { ...counts, redAt: counts.redAt / counts.red, blueAt: counts.blueAt / counts.blue };
  });

test('the replay shows the meshes at their logged poses, with their poles', async () => {
  const page = await open(write(pulledApart(), ['--scenario', join(examples, 'cube-magnets/scenario.json')]));
  await ready(page);
  assert.equal(await page.locator('h1').textContent(), 'Two coaxial cube magnets, the upper one pulled away');
  await page.waitForTimeout(200);
  const drawn = await coloured(page);
  assert.ok(drawn.red > 2000 && drawn.blue > 2000, JSON.stringify(drawn));
  await goTo(page, 20);
  await page.waitForTimeout(200);
  const pulled = await coloured(page);
  assert.ok(pulled.top < drawn.top - 40, `the upper magnet rises: ${drawn.top} to ${pulled.top}`);
  await close(page);
});

test('the whole run fits into the view, with its arrows and its names', async () => {
  const names = ['lower one', 'upper one', 'another'];
  // Thrust upwards, most when highest; two of them stand in each other's place.
  const log = logText(names, 21, 0.05, (time) => {
    const body = (z: number, force: number) => [0, 0, z, 0, 0, 0, 0, 0, force, 0, 0, 0];
    return [...body(0, 5 * time), ...body(0.02 * time, 20 * time), ...body(0, 0)];
  });
  for (const width of [420, 1500]) {
    const page = await open(write(log, ['--scenario', join(examples, 'cube-magnets/scenario.json')]), {
      viewport: { width, height: 950 },
    });
    await ready(page);
    for (const row of [0, 10, 20]) {
      await goTo(page, row);
      await page.waitForTimeout(200);
      const rim = await page.locator('#view canvas').evaluate((canvas) => {
        const { width, height } = canvas as HTMLCanvasElement;
        const copy = Object.assign(document.createElement('canvas'), { width, height });
        const context = copy.getContext('2d', { willReadFrequently: true })!;
        context.drawImage(canvas as HTMLCanvasElement, 0, 0);
        const ink = (...box: [number, number, number, number]) =>
          context.getImageData(...box).data.filter((value, i) => i % 4 === 3 && value > 0).length;
        return [ink(0, 0, width, 3), ink(0, height - 3, width, 3), ink(0, 0, 3, height), ink(width - 3, 0, 3, height)];
      });
      assert.deepEqual(rim, [0, 0, 0, 0], `${width} pixels, row ${row}`);
      const boxes = await page.locator('.body-label').evaluateAll((labels) =>
        labels.map((label) => {
          const view = document.querySelector('#view')!.getBoundingClientRect();
          const box = label.getBoundingClientRect();
          return {
            isInside:
              box.left >= view.left && box.right <= view.right && box.top >= view.top && box.bottom <= view.bottom,
            top: box.top,
            bottom: box.bottom,
          };
        }),
      );
      assert.ok(
        boxes.every((box) => box.isInside),
        JSON.stringify(boxes),
      );
      for (const a of boxes)
        for (const b of boxes) assert.ok(a === b || a.bottom <= b.top || b.bottom <= a.top, JSON.stringify(boxes));
    }
    await close(page);
  }
});

test('a state file brings the joints and exact times', async () => {
  const states = join(folder, 'states.csv');
  const rows = Array.from({ length: 21 }, (_, i) => `${i},${i * 0.05},${0.001 * i},0.02`);
  writeFileSync(states, ['Step,Time [s],lift.Coordinate [m],lift.Speed [m/s]', ...rows].join('\n') + '\n');
  const page = await open(write(pulledApart(), ['--states', states]));
  await goTo(page, 3);
  assert.match((await legend(page, 'lift', 0).first().textContent())!, /Coordinate\s*0\.003/);
  await close(page);
});

test('turns go on over a full turn; angles of the log too, or they jump as the log has them', async () => {
  const page = await open(write(slipping()));
  await goTo(page, 400);
  // Right-handed about X, though Psi falls.
  assert.deepEqual(await present(page, 'driver', 'angles'), ['1718.87', '0', '0']);
  const [turn, headings] = [page.locator('.extremes tbody td').nth(5), page.locator('h2')];
  assert.equal(await turn.textContent(), 'X 1719');
  const phase = page.locator('.phase').first();
  await phase.locator('select').nth(1).selectOption({ label: 'Turn about X' });
  assert.equal(await page.getByLabel('Continuous angles').isVisible(), false);
  await page.locator('#toolbar select').nth(2).selectOption('log');
  assert.equal(await turn.textContent(), 'Psi 1719');
  assert.ok((await headings.allTextContents()).includes('Angles'));
  // The first column is the first column again.
  assert.equal(await phase.locator('select').nth(1).locator('option:checked').textContent(), 'Angle Phi');
  assert.match((await phase.locator('.plot').getAttribute('aria-label'))!, /over driver: Angle Phi \(°\)$/);
  assert.deepEqual(await present(page, 'driver', 'angles'), ['0', '0', '−1718.87']);
  await page.getByLabel('Continuous angles').uncheck();
  // −30 rad lies between −10π and −9π: −30 + 10π.
  assert.deepEqual(await present(page, 'driver', 'angles'), ['0', '0', '81.1268']);
  await close(page);
});

test('loads can be had in global axes', async () => {
  // Psi −π/2 turns the body's y axis into the global z axis.
  const values = [0, 0, 0, 0, 0, -Math.PI / 2, 0, 5, 0, 0, 7, 0];
  const page = await open(write(logText(['a'], 3, 0.1, () => values)));
  await page.locator('#toolbar select').nth(1).selectOption('global');
  const [x, y, z] = await present(page, 'a', 'force');
  assert.equal(x, '0');
  assert.ok(y === '0' || /e−/.test(y), y);
  assert.equal(z, '5');
  assert.equal((await present(page, 'a', 'torque'))[2], '7');
  await close(page);
});

test('rounding is shown as zero wherever a value stands', async () => {
  const noise = (row: number) => (row % 2 ? 3.9e-13 : -3.9e-13);
  const log = logText(['a', 'b'], 21, 0.05, (time, row) => [
    ...[noise(row) / 1e6, 0, time, noise(row), 0, 0, noise(row), noise(row), -14.6725, noise(row), 0, 0],
    ...[0, 0, 0, 0, 0, 0, 0, noise(row), 2e-8, 0, 0, noise(row)],
  ]);
  const states = join(folder, 'noisy.csv');
  const rows = Array.from({ length: 21 }, (_, i) => `${i},${i * 0.05},${0.001 * i},${noise(i) / 1000},2,${noise(i)}`);
  const heads = 'Step,Time [s],lift.Coordinate [m],lift.Field force [N],lift.Kinetic [J],lift.Imbalance [J]';
  writeFileSync(states, [heads, ...rows].join('\n') + '\n');
  const page = await open(write(log, ['--states', states]));
  await ready(page);
  assert.deepEqual(await present(page, 'a', 'force'), ['0', '0', '−14.6725']);
  assert.deepEqual(await present(page, 'a', 'torque'), ['0', '0', '0']);
  assert.deepEqual(await present(page, 'a', 'position'), ['0', '0', '0']);
  assert.deepEqual(await present(page, 'a', 'angles'), ['0', '0', '0']);
  // Small beside 14.6725 N, but no rounding.
  assert.deepEqual(await present(page, 'b', 'force'), ['0', '0', '2e−8']);
  assert.match((await legend(page, 'Forces', 0).first().textContent())!, /^X0$/);
  assert.match((await legend(page, 'lift', 1).first().textContent())!, /^Field force0$/);
  assert.match((await legend(page, 'lift', 2).nth(1).textContent())!, /^Imbalance0$/);
  await page.locator('summary').click();
  await page.locator('details tbody tr').first().waitFor();
  await page.locator('.phase select').first().selectOption({ label: 'Force X' });
  assert.match((await page.locator('.phase-readout').textContent())!, /, 0$/);
  assert.doesNotMatch((await page.locator('body').innerText())!, /e−1\d/);
  await close(page);
});

test('phase plots show what is chosen', async () => {
  const page = await open(write(pulledApart()));
  const plot = page.locator('.phase').first();
  assert.equal(
    await plot.locator('.plot').getAttribute('aria-label'),
    'upper: Force Z (N) over upper: Position Z (mm)',
  );
  await goTo(page, 10);
  assert.equal(await plot.locator('.phase-readout').textContent(), '22 , −1.29879');
  await plot.locator('select').first().selectOption({ label: 'Time' });
  assert.equal(await plot.locator('.phase-readout').textContent(), '22 , 0.5');
  await page.locator('#add-phase').click();
  assert.equal(await page.locator('.phase').count(), 2);
  await page.locator('.phase').first().getByText('Remove').click();
  assert.equal(await page.locator('.phase').count(), 1);
  await close(page);
});

test('a name cannot become markup or script', async () => {
  const names = [
    '<script>alert(1)</script>',
    '<img src=x onerror=alert(2)>',
    '"><b>bold</b>',
    '</script><script>alert(3)//',
    '\u2028&lt;i&gt;',
  ];
  const page = await open(write(logText(names, 5, 0.1, (time) => names.flatMap(() => Array(12).fill(time)))));
  await page.waitForTimeout(300);
  assert.deepEqual(await page.locator('.extremes tbody th').allTextContents(), names);
  assert.equal(await page.locator('img, b, i').count(), 0);
  assert.equal(await page.locator('script').count(), 2);
  await close(page);
});

test('even a script that got in would not run', async () => {
  const file = join(folder, 'injected.html');
  const page = readFileSync(write(pulledApart()), 'utf8');
  writeFileSync(file, page.replace('<main>', '<main><script>alert(1)</script>'));
  const opened = await open(file);
  assert.equal(opened.complaints.length, 1);
  assert.match(opened.complaints[0], /Content Security Policy/);
  await opened.close();
});

test('a log that is cut off shows what it has and says so', async () => {
  const text = pulledApart();
  const page = await open(write(text.slice(0, text.length - 30)));
  assert.match(
    (await page.locator('#notices').textContent())!,
    /Warning The last line \(line 22\) is cut off after \d+ of 26 values/,
  );
  assert.match((await page.locator('.facts').textContent())!, /20 steps/);
  await close(page);
});

test('values that are no numbers are gaps', async () => {
  const page = await open(
    write(
      logText(['a'], 50, 0.1, (time, row) => [
        time,
        0,
        0,
        0,
        0,
        0,
        row === 20 ? NaN : time,
        0,
        row % 7 ? 1 : Infinity,
        0,
        0,
        0,
      ]),
    ),
  );
  await goTo(page, 20);
  assert.deepEqual(await present(page, 'a', 'force'), ['–', '0', '1']);
  assert.match((await page.locator('#notices').textContent())!, /9 values are not a finite number/);
  await close(page);
});

test('missing columns are named and leave the rest', async () => {
  const page = await open(write('Step,SimTime,a_X,Force_a_Z\r\n0,0,1,2\r\n1,1,3,4\r\n'));
  await ready(page);
  assert.match((await page.locator('#notices').textContent())!, /Body "a" lacks these columns: a_Y, a_Z/);
  assert.match((await page.locator('#charts').textContent())!, /The log has no columns for this/);
  assert.deepEqual(await present(page, 'a', 'force'), ['–', '–', '2']);
  await close(page);
});

test('a log without steps says so', async () => {
  for (const log of ['', head(['a']) + '\r\n']) {
    const page = await open(write(log));
    assert.match((await page.locator('#summary').textContent())!, /There is nothing to chart/);
    assert.match((await page.locator('#notices').textContent())!, /The log (is empty|has no complete step)/);
    assert.equal(await page.locator('main').isVisible(), false);
    await close(page);
  }
});

test('a run without bodies, of one step, or of two runs is shown as far as it goes', async () => {
  const empty = await open(write('Step,SimTime\r\n0,0\r\n1,0.5\r\n'));
  assert.match((await empty.locator('.facts').textContent())!, /0 to 0\.5 s/);
  await close(empty);
  const single = await open(write([head(['a']), line(0, 0, Array(12).fill(1)), ''].join('\r\n')));
  await ready(single);
  assert.deepEqual(await present(single, 'a', 'torque'), ['1', '1', '1']);
  await close(single);
  const two = await open(
    write(
      [
        head(['a']),
        line(0, 0, Array(12).fill(1)),
        line(1, 1, Array(12).fill(2)),
        line(2, 0.5, Array(12).fill(3)),
        '',
      ].join('\r\n'),
    ),
  );
  assert.match((await two.locator('#notices').textContent())!, /Time goes back/);
  await goTo(two, 2);
  assert.deepEqual(await present(two, 'a', 'force'), ['3', '3', '3']);
  await close(two);
});

test('axes of values that do not change have labels that differ', async () => {
  const page = await open(write([head(['a']), line(1, 1, Array(12).fill(1)), ''].join('\r\n')));
  await page.addInitScript(() => {
    const fill = CanvasRenderingContext2D.prototype.fillText;
    CanvasRenderingContext2D.prototype.fillText = function (text, ...place) {
      const { dataset } = this.canvas;
      dataset.texts = `${dataset.texts ?? ''}${text} `;
      fill.call(this, text, ...place);
    };
  });
  await page.reload();
  await ready(page);
  const texts = await page
    .locator('.phase canvas, .charts-of canvas')
    .evaluateAll((all) => all.map((canvas) => (canvas as HTMLCanvasElement).dataset.texts!));
  const time = 'Time (s) 0.5 0.6 0.7 0.8 0.9 1 1.1 1.2 1.3 1.4 1.5';
  assert.deepEqual(texts, [
    `${time} 0.5 0.75 1 1.25 1.5 `,
    `${time} 0.5 0.75 1 1.25 1.5 `,
    // The phase plot: time over step, for want of anything that moves.
    `${time} Step 0.6 0.8 1 1.2 1.4 `,
  ]);
  await close(page);
});

test('a page whose data is damaged says so', async () => {
  const file = join(folder, 'damaged.html');
  writeFileSync(file, readFileSync(write(pulledApart()), 'utf8').replace('"rows":21', '"rows":22'));
  const page = await open(file);
  assert.match((await page.locator('.fatal').first().textContent())!, /damaged: a column has 21 values, not 22/);
  await close(page);
});

test('a geometry file that cannot be shown leaves the frames', async () => {
  const scenario = JSON.parse(
    readFileSync(join(examples, 'cube-magnets/scenario.json'), 'utf8').replace(/^\s*\/\/.*$/gm, ''),
  );
  scenario.geometry.file = 'broken.obj';
  delete scenario.$schema;
  writeFileSync(join(folder, 'broken.obj'), 'v 0 0 0\nf 1 2 3\n');
  writeFileSync(join(folder, 'broken.json'), JSON.stringify(scenario));
  const page = await open(write(pulledApart(), ['--scenario', join(folder, 'broken.json')]));
  await ready(page);
  await page.locator('#notices li').waitFor();
  assert.match(
    (await page.locator('#notices').textContent())!,
    /frames only: the geometry file broken\.obj cannot be shown: line 2 is not a face/,
  );
  await close(page);
});

test("a frame that is not the body's is told and can be compared", async () => {
  const log = logText(['a'], 5, 0.1, (time) => [0, 0, 0, time, 0, 0, 1, 0, 0, 0, 0, 0]);
  const page = await open(write(log, ['--orientation', 'direct']));
  await ready(page);
  assert.match((await page.locator('#notices').textContent())!, /the desktop's frame is up to 32\.3 degrees away/);
  await goTo(page, 4);
  // The library's phi is a turn about Z by -phi; the desktop makes one about Y of it.
  assert.deepEqual(await present(page, 'a', 'angles'), ['0', '−22.9183', '0']);
  await page.locator('#view-controls select').selectOption('body');
  assert.deepEqual(await present(page, 'a', 'angles'), ['0', '0', '−22.9183']);
  await close(page);
});

test('of an exact log there is one frame, and of a log of unknown origin a note says which', async () => {
  const log = logText(['a'], 5, 0.1, (time) => [0, 0, 0, 0, -time, 0, 1, 0, 0, 0, 0, 0]);
  for (const isKnown of [false, true]) {
    const page = await open(write(log, isKnown ? ['--orientation', 'exact'] : []));
    await ready(page);
    const note = page.locator('#notices .info', { hasText: '--orientation direct' });
    assert.equal(await note.count(), isKnown ? 0 : 1);
    assert.equal(await page.locator('#view-controls select').count(), 0);
    await goTo(page, 4);
    assert.deepEqual(await present(page, 'a', 'angles'), ['0', '0', '22.9183']);
    await close(page);
  }
});

test('a body drawn at an angle stands with its poles as it is drawn', async () => {
  const scenario = {
    ...topScenario,
    geometry: { file: join(examples, 'cube-magnets/cube-magnets.obj'), units: 'mm' },
    materials: { upper_magnet: { name: 'magnet', direction: [0, 0, 1] } },
    bodies: [
      {
        name: 'upper',
        objects: ['upper_magnet'],
        mass: 0.1,
        position: [0, 0, '12*mm'],
        // Its own z axis points to where -X is; the angles of such a pose are ambiguous.
        rotation: { axis: [0, 1, 0], angle: '-90*deg' },
      },
    ],
    joints: [{ ...topScenario.joints[0], bodies: ['upper'] }],
  };
  writeFileSync(join(folder, 'angled.json'), JSON.stringify(scenario));
  const log = logText(['upper'], 2, 0.1, () => [0, 0, 0.012, 0, 0, 0, 0, 0, 5, 0, 0, 0]);
  const page = await open(write(log, ['--scenario', join(folder, 'angled.json')]));
  await ready(page);
  assert.deepEqual(await present(page, 'upper', 'force'), ['5', '0', '0']);
  assert.equal(await page.locator('.still', { hasText: /^upper does not turn$/ }).count(), 1);
  await page.getByLabel('Forces').uncheck();
  await page.getByRole('button', { name: 'Along Y' }).click();
  await page.waitForTimeout(200);
  const { red, blue, redAt, blueAt } = await coloured(page);
  assert.ok(red > 1000 && blue > 1000 && redAt < blueAt - 20, `north at ${redAt}, south at ${blueAt}`);
  await close(page);
});

test('iron is grey and has no poles, and a key names the materials', async () => {
  const scenario = {
    ...topScenario,
    geometry: { file: join(examples, 'cube-magnets/cube-magnets.obj'), units: 'mm' },
    materials: { lower_magnet: { name: 'magnet_1T', direction: [0, 0, 1] }, upper_magnet: { name: 'steel_soft' } },
    bodies: [
      { name: 'lower', objects: ['lower_magnet'] },
      { name: 'upper', objects: ['upper_magnet'], mass: 0.1, position: [0, 0, '12*mm'] },
    ],
    joints: [{ ...topScenario.joints[0], bodies: ['upper'] }],
  };
  const file = join(folder, 'iron.json');
  for (const colorScheme of ['light', 'dark'] as const) {
    // The upper cube is in the picture's upper half: of iron, where the magnet's poles are not, and of a magnet.
    writeFileSync(file, JSON.stringify(scenario));
    const page = await open(write(pulledApart(), ['--scenario', file]), { colorScheme });
    await ready(page);
    assert.deepEqual(await page.locator('.material-key div').allTextContents(), [
      'Magnets, south and north: magnet_1T',
      'Iron: steel_soft',
    ]);
    await page.getByLabel('Forces').uncheck();
    await page.waitForTimeout(200);
    const iron = await coloured(page);
    assert.ok(iron.grey > 2000 && iron.red > 1000 && iron.blue > 1000, JSON.stringify(iron));
    await page.locator('#view-controls .choice', { hasText: 'Colour' }).locator('select').selectOption('by body');
    await page.waitForTimeout(200);
    assert.ok(!(await page.locator('.material-key').isVisible()));
    await close(page);

    const materials = { ...scenario.materials, upper_magnet: { name: 'magnet_1T' } };
    writeFileSync(file, JSON.stringify({ ...scenario, materials }));
    const twoMagnets = await open(write(pulledApart(), ['--scenario', file]), { colorScheme });
    await ready(twoMagnets);
    assert.equal(await twoMagnets.locator('.material-key div').count(), 0);
    await twoMagnets.getByLabel('Forces').uncheck();
    await twoMagnets.waitForTimeout(200);
    const magnets = await coloured(twoMagnets);
    assert.ok(magnets.grey < iron.grey / 4 && magnets.red > 1.5 * iron.red, JSON.stringify([magnets, iron]));
    await close(twoMagnets);
  }
});

test('a free body flies, spins and nods in charts and replay', async () => {
  writeFileSync(join(folder, 'top.obj'), topGeometry());
  writeFileSync(join(folder, 'top.json'), JSON.stringify(topScenario));
  writeFileSync(join(folder, 'top.csv'), topStates());
  const options = ['--scenario', join(folder, 'top.json'), '--states', join(folder, 'top.csv')];
  const page = await open(write(topLog(), [...options, '--orientation', 'exact']));
  await ready(page);
  const titles = await page
    .locator('section', { has: page.locator('h2', { hasText: 'free' }) })
    .locator('.chart-title')
    .allTextContents();
  assert.deepEqual(titles, ['Displacement m', 'Turn rad', 'Field force N', 'Load N', 'Energies J']);
  assert.match((await legend(page, 'tether', 2).allTextContents()).join(), /^Potential.*Dissipated/);
  await goTo(page, 800);
  // Two rounds while leaning by 0.2 to 0.06 more or less, 18 turns about its own axis.
  const [, , z] = await present(page, 'top', 'angles');
  assert.ok(Math.abs(Number(z) - 360 * (2 + 18 * Math.cos(0.2))) < 10, z);
  assert.deepEqual(await page.locator('#notices li').allTextContents(), []);
  // Each name stands above its body: that of the wide, flat ring below the top.
  const boxes = page.locator('#view, .body-label');
  const [view, top, ring] = await boxes.evaluateAll((all) => all.map((element) => element.getBoundingClientRect()));
  assert.ok(ring.top - top.top > 0.22 * view.height, `${ring.top - top.top} of ${view.height}`);
  await close(page);
});

test('a browser without WebGL shows the charts and says why there is no replay', async () => {
  const page = await open(write(pulledApart()));
  await page.addInitScript(() => {
    const get = HTMLCanvasElement.prototype.getContext as (kind: string, ...rest: unknown[]) => unknown;
    HTMLCanvasElement.prototype.getContext = function (this: HTMLCanvasElement, kind: string, ...rest: unknown[]) {
      return kind.startsWith('webgl') ? null : get.call(this, kind, ...rest);
    } as typeof HTMLCanvasElement.prototype.getContext;
  });
  await page.reload();
  await page.locator('#view .missing', { hasText: 'needs WebGL 2' }).waitFor();
  await goTo(page, 10);
  assert.deepEqual(await present(page, 'upper', 'position'), ['0', '0', '22']);
  await close(page);
});

test('light and dark follow the system and the choice', async () => {
  const ground = (page: Page) => page.evaluate(() => getComputedStyle(document.body).backgroundColor);
  const file = write(pulledApart());
  const dark = await open(file, { colorScheme: 'dark' });
  assert.equal(await ground(dark), 'rgb(16, 19, 22)');
  await dark.locator('#theme select').selectOption('light');
  assert.equal(await ground(dark), 'rgb(246, 247, 249)');
  await close(dark);
  const light = await open(file, { colorScheme: 'light' });
  assert.equal(await ground(light), 'rgb(246, 247, 249)');
  await light.emulateMedia({ colorScheme: 'dark' });
  await light.waitForFunction(() => getComputedStyle(document.body).backgroundColor === 'rgb(16, 19, 22)');
  await close(light);
});

test('paper gets light charts of its width, without controls', async () => {
  const page = await open(write(pulledApart()), { colorScheme: 'dark' });
  await ready(page);
  await page.emulateMedia({ media: 'print', colorScheme: 'dark' });
  assert.equal(await page.locator('#toolbar').isVisible(), false);
  assert.equal(await page.evaluate(() => document.documentElement.dataset.theme), 'light');
  const widths = await page
    .locator('.charts-of .uplot')
    .evaluateAll((plots) => plots.map((plot) => (plot as HTMLElement).offsetWidth));
  assert.deepEqual(new Set(widths), new Set([325]));
  await page.emulateMedia({ media: 'screen', colorScheme: 'dark' });
  await page.locator('#toolbar').waitFor();
  const pdf = await page.pdf({ format: 'A4' });
  assert.ok(pdf.length > 20_000);
  await close(page);
});

test('controls have names, and the narrow page has no sideways scroll', async () => {
  const page = await open(write(pulledApart()), { viewport: { width: 420, height: 900 } });
  await ready(page);
  const nameless = await page.evaluate(
    () =>
      [...document.querySelectorAll<HTMLElement>('button, select, input')].filter(
        (control) => !control.textContent!.trim() && !control.getAttribute('aria-label') && !control.closest('label'),
      ).length,
  );
  assert.equal(nameless, 0);
  assert.ok(await page.evaluate(() => document.documentElement.scrollWidth <= innerWidth));
  await close(page);
});

test('no number is cut on a narrow page', async () => {
  const loads = [-1.99812e-14, -2.12345e-14, -3.14159e-14, 1.1e-14, 0, 0];
  const values = [-0.000123457, 0.000123457, -0.01, 0, 0, 0, ...loads];
  const page = await open(write(logText(['a body with a rather long name'], 2, 0.1, () => values)), {
    viewport: { width: 420, height: 900 },
  });
  await ready(page);
  assert.deepEqual(await present(page, 'a body with a rather long name', 'force'), [
    '−1.998e−14',
    '−2.123e−14',
    '−3.142e−14',
  ]);
  const cut = await page.evaluate(() => {
    const scrolls = (element: Element | null): boolean =>
      element !== null && (/auto|scroll/.test(getComputedStyle(element).overflowX) || scrolls(element.parentElement));
    return [...document.querySelectorAll<HTMLElement>('body *')]
      .filter((element) => /\d/.test(element.textContent!) && element.checkVisibility())
      .filter((element) => {
        const { overflowX, textOverflow } = getComputedStyle(element);
        const isCut = element.scrollWidth > element.clientWidth && /hidden|clip/.test(overflowX);
        const isOutside = element.getBoundingClientRect().right > innerWidth && !scrolls(element);
        return isCut || isOutside || textOverflow === 'ellipsis';
      })
      .map((element) => `${element.tagName} ${element.className} ${element.textContent}`);
  });
  assert.deepEqual(cut, []);
  await close(page);
});

test('labels of axes are whole up to the end of the axis', async () => {
  const page = await open(write(logText(['a'], 6, 0.0025, (time) => Array(12).fill(-1.23457e9 * time))), {
    viewport: { width: 500, height: 900 },
  });
  await page.addInitScript(() => {
    const texts = { whole: '', cut: '' };
    Object.assign(window, { texts });
    const fill = CanvasRenderingContext2D.prototype.fillText;
    CanvasRenderingContext2D.prototype.fillText = function (text, x, y) {
      const { actualBoundingBoxLeft: left, actualBoundingBoxRight: right } = this.measureText(text);
      const isLevel = this.getTransform().b === 0;
      // Those of a level axis; titles of upright ones are turned.
      const isWhole = !isLevel || (x - left >= 0 && x + right <= this.canvas.width);
      if (/\d/.test(text)) texts[isWhole ? 'whole' : 'cut'] += `${text} `;
      fill.call(this, text, x, y);
    };
  });
  await page.reload();
  await ready(page);
  const texts = () => (window as unknown as { texts: { whole: string; cut: string } }).texts;
  const { whole, cut } = await page.evaluate(texts);
  assert.equal(cut, '');
  assert.match(whole, / 0\.005 0\.0075 0\.01 0\.0125 −1\.5e7 /);
  await close(page);
});

test('a hundred thousand steps are all there, and a single outlier is drawn', async () => {
  const rows = 100_000;
  const log = logText(['a', 'b'], rows, 0.001, (time, row) => {
    const force = row === 54_321 ? 50 : Math.sin(time);
    return [time / 100, 0, 0, 0, 0, 0, force, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, -force, 0, 0, 0, 0, 0];
  });
  const file = write(log);
  assert.ok(statSync(file).size < 8e6, `${statSync(file).size} bytes`);
  const page = await open(file);
  assert.match((await page.locator('.facts').textContent())!, /100\u202f000 steps/);
  assert.equal((await page.locator('.extremes tbody td').first().textContent())!, '50');
  await page.locator('.extremes tbody .where').first().click();
  assert.equal(await page.locator('.time-readout').textContent(), '54.321 s step 54321');
  // The outlier reaches into the upper tenth of the chart, where nothing else is.
  const inked = await page
    .locator('.charts-of canvas')
    .first()
    .evaluate((canvas) => {
      const c = canvas as HTMLCanvasElement;
      const { data } = c.getContext('2d')!.getImageData(c.width / 4, 0, c.width / 2, c.height / 5);
      let ink = 0;
      for (let i = 0; i < data.length; i += 4) if (data[i + 3] > 60 && data[i] > data[i + 2] + 80) ++ink;
      return ink;
    });
  assert.ok(inked > 5, `${inked} pixels`);
  // Moving the cursor stays within a frame or two.
  const spent = await page.evaluate(() => {
    const slider = document.querySelector<HTMLInputElement>('.player input')!;
    const begin = performance.now();
    for (let i = 0; i < 20; ++i) {
      slider.value = String(5000 * i);
      slider.dispatchEvent(new Event('input'));
    }
    return (performance.now() - begin) / 20;
  });
  assert.ok(spent < 60, `${spent} ms per move`);
  await close(page);
});
