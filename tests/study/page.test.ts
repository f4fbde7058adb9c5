// The study page in a browser, with studies that are made up.

import assert from 'node:assert/strict';
import { mkdtempSync, readFileSync, rmSync, writeFileSync } from 'node:fs';
import { tmpdir } from 'node:os';
import { dirname, join } from 'node:path';
import { after, before, test } from 'node:test';
import type { Browser } from 'playwright-core';
import type { Column, Study, StudyRun, Value } from '../../study/page/data.ts';
import { close, launch, openFile, tool, type WatchedPage } from '../report/browser.ts';

const template = join(dirname(tool), '../share/kinora/study.html');
let browser: Browser;
let folder: string;
let pages = 0;

before(async () => {
  folder = mkdtempSync(join(tmpdir(), 'kinora-study-page-'));
  browser = await launch();
});

after(async () => {
  await browser?.close();
  if (folder) rmSync(folder, { recursive: true, force: true });
});

const column = (name: string, unit: string, kind: Column['kind'], values: Value[]): Column => ({
  name,
  unit,
  description: '',
  kind,
  values,
});

const runOf = (i: number): StudyRun => ({
  id: `run${String(i).padStart(5, '0')}`,
  status: 'done',
  seconds: 0.02,
  report: i % 2 ? null : `runs/run${i}/page.report.html`,
  error: '',
});

/** Torque over 4 gaps and 6 angles: 100 exp(-gap) sin(4 angle), gaps in millimetres. */
function torques(): Study {
  const rows = [1, 2, 3, 4].flatMap((gap) => [0, 1, 2, 3, 4, 5].map((i) => ({ gap, angle: (i * Math.PI) / 12 })));
  return {
    title: 'Torque <b>over</b> gap & angle',
    generator: 'kinora-study',
    made: '2026-01-02T03:04:05Z',
    scenario: 'coupling.json',
    parameters: [
      column('gap', 'm', 'range', rows.map(({ gap }) => gap / 1000)),
      column('angle', 'rad', 'range', rows.map(({ angle }) => angle)),
    ],
    results: [
      column('torque', 'mN m', 'result', rows.map(({ gap, angle }) => 100 * Math.exp(-gap) * Math.sin(4 * angle))),
      column('pull', 'N', 'result', rows.map(({ gap }) => -gap)),
    ],
    goals: [{ result: 'torque', sense: 'greatest' }],
    runs: rows.map((_, i) => runOf(i)),
  };
}

async function open(study: Study, settings = {}): Promise<WatchedPage> {
  const file = join(folder, `study${++pages}.html`);
  const data = JSON.stringify({ version: 1, ...study }).replace(/[<>&]/g, (c) => `\\u00${c.charCodeAt(0).toString(16)}`);
  writeFileSync(file, readFileSync(template, 'utf8').replace('@KINORA_STUDY_DATA@', () => data));
  const page = await openFile(browser, file, settings);
  await page.locator('#runs tbody tr').first().waitFor();
  return page;
}

/** The list of a labelled choice. */
const pick = (page: WatchedPage, label: string) =>
  page.locator('.choice', { has: page.locator('span', { hasText: new RegExp(`^${label}$`) }) }).locator('select');

const firstCells = (page: WatchedPage, cell: number) => page.locator(`#runs tbody tr > :nth-child(${cell})`).allTextContents();

test('a study opens offline with all its parts', async () => {
  const page = await open(torques());
  assert.equal(await page.locator('h1').textContent(), 'Torque <b>over</b> gap & angle');
  assert.deepEqual(await page.locator('h2').allTextContents(), ['Best runs', 'Results over parameters', 'Main effects', 'Distribution', 'Runs']);
  const facts = await page.locator('.facts dd').allTextContents();
  assert.deepEqual(facts, ['24 runs', '1 mm, 2 mm, 3 mm, 4 mm', '0° to 75°, 6 values']);
  assert.match((await page.locator('footer').textContent())!, /kinora-study, 2026-01-02/);
  await close(page);
});

test('best runs are those of the goal, with their inputs and reports', async () => {
  const page = await open(torques());
  const best = page.locator('.best tbody tr').first();
  const cells = await best.locator('td').allTextContents();
  assert.deepEqual(cells.slice(0, 2), ['31.8593 mN m', '1 mm']);
  assert.match(cells[2], /^(15|30)°$/, 'the sine of 4 times either is the same');
  assert.equal(await page.locator('.best tbody tr a').first().getAttribute('href'), 'runs/run2/page.report.html');
  await close(page);
});

test('the heat map has a cell for each run, tells of it and leads to its report', async () => {
  const page = await open(torques());
  await pick(page, 'as').selectOption('map');
  const cells = page.locator('.cell');
  assert.equal(await cells.count(), 24);
  assert.equal(await page.locator('a:has(.cell)').count(), 12);
  await cells.first().hover();
  assert.deepEqual(await page.locator('.tip div').allTextContents(), ['torque 0 mN m', 'angle 0°', 'gap 1 mm', 'run run00000']);
  const fills = await cells.evaluateAll((all) => new Set(all.map((cell) => cell.getAttribute('fill'))).size);
  assert.ok(fills >= 9, 'values have their colours: four gaps, two signs, and zero');
  await close(page);
});

test('curves of few values, other results and other parameters are a choice away', async () => {
  const page = await open(torques());
  const section = page.locator('section[aria-label="Results over parameters"]');
  assert.equal(await section.locator('path.curve').count(), 4, 'a curve for each gap');
  await pick(page, 'Result').selectOption('pull');
  await pick(page, 'over').selectOption('gap');
  await pick(page, 'and').selectOption('');
  assert.equal(await section.locator('path.curve').count(), 0, 'six runs have each gap: points');
  assert.equal(await section.locator('circle').count(), 24);
  assert.match((await section.locator('.axis-label').allTextContents()).join(), /gap \[mm\],pull \[N\]/);
  await close(page);
});

test('main effects are ordered by their size', async () => {
  const page = await open(torques());
  await pick(page, 'Result').selectOption('pull');
  const rows = page.locator('.effects tbody tr');
  assert.deepEqual(await rows.first().locator('th, td').allTextContents(), ['gap', '3 N', '\u22121.00']);
  assert.deepEqual(await rows.nth(1).locator('th, td').allTextContents(), ['angle', '0 N', '0.00']);
  await close(page);
});

test('the table sorts, filters, and leads to reports by mouse and keyboard', async () => {
  const page = await open(torques());
  await page.getByRole('button', { name: 'torque [mN m]' }).click();
  assert.equal(await page.locator('th[aria-sort=ascending]').textContent(), 'torque [mN m]');
  const torquesShown = (await firstCells(page, 5)).map((text) => Number(text.replace('\u2212', '-')));
  assert.deepEqual(torquesShown, [...torquesShown].sort((a, b) => a - b));
  await page.getByRole('button', { name: 'torque [mN m]' }).press('Enter');
  assert.equal((await firstCells(page, 5))[0], '31.8593');
  await page.getByLabel('Filter of gap [mm]').fill('2..3');
  assert.deepEqual([...new Set(await firstCells(page, 3))].sort(), ['2', '3']);
  assert.equal(await page.locator('.runs [role=status]').textContent(), '12 of 24 runs');
  await page.getByLabel('Filter of run').fill('run0000');
  assert.equal(await page.locator('#runs tbody tr').count(), 4);
  assert.equal(await page.locator('#runs tbody tr a').count(), 2);
  assert.equal(await page.locator('#runs tbody tr span[title="This run has no report page."]').count(), 2);
  const report = page.waitForRequest(/runs\/run\d\/page\.report\.html$/);
  await page.locator('#runs tbody tr:has(a) td').first().click();
  await report;
  await page.close();
});

test('failed and missing runs are told and left out', async () => {
  const study = torques();
  study.runs[1] = { ...study.runs[1], status: 'failed', error: 'the discs overlap\n<i>by 1 mm</i>', seconds: null };
  study.runs[2] = { ...study.runs[2], status: 'missing', report: null, seconds: null };
  for (const result of study.results) for (const run of [1, 2]) result.values[run] = null;
  const page = await open(study, { colorScheme: 'dark' });
  await pick(page, 'as').selectOption('map');
  assert.match((await page.locator('.facts').textContent())!, /22 done, 1 failed, 1 missing/);
  assert.equal(await page.locator('.cell').count(), 22);
  const failed = page.locator('#runs tr.failed');
  assert.equal(await failed.locator('td.error').textContent(), 'the discs overlap');
  assert.equal(await failed.locator('td').nth(3).textContent(), '–');
  await close(page);
});

test('random tolerances have a histogram, a matrix and points', async () => {
  const values = (k: number) => Array.from({ length: 600 }, (_, i) => Math.sin(i * k) / 1000);
  const study = torques();
  const parameters = ['a', 'b', 'c'].map((name, i) => column(name, 'm', 'random', values(i + 1.1)));
  const grades = column('grade', '', 'text', Array.from({ length: 600 }, (_, i) => (i % 2 ? 'magnet_1T' : 'NdFeB_N42')));
  const sum = parameters[0].values.map((_, i) => 3 * (parameters[0].values[i] as number) + (parameters[1].values[i] as number));
  const results = [column('peak', 'N', 'result', sum)];
  const runs = Array.from({ length: 600 }, (_, i) => runOf(i));
  const page = await open({ ...study, parameters: [...parameters, grades], results, goals: [], runs });
  const bars = page.locator('section[aria-label=Distribution] .bar');
  assert.ok((await bars.count()) > 4);
  assert.match((await page.locator('.spread').textContent())!, /^peak: mean .* N, standard deviation .* N, 5 % .* N, 95 % /);
  assert.equal(await page.locator('section[aria-label="Scatter matrix"] circle').count(), 5 * 4 * 300);
  assert.equal(await page.locator('section[aria-label="Scatter matrix"] .unit').textContent(), '300 of 600 runs are drawn.');
  assert.equal(await pick(page, 'over').inputValue(), 'a', 'what does most comes first');
  assert.equal(await page.locator('.effects tbody th').first().textContent(), 'a');
  assert.equal(await page.getByRole('button', { name: 'Further' }).isEnabled(), true);
  await page.getByRole('button', { name: 'Further' }).click();
  assert.equal(await page.locator('.runs [role=status]').textContent(), '101 to 200 of 600 runs');
  await close(page);
});

test('a study without a result, and one of a single run, are shown as they are', async () => {
  const study = torques();
  const nothing = await open({ ...study, results: study.results.map((result) => ({ ...result, values: result.values.map(() => null) })), runs: study.runs.map((run) => ({ ...run, status: 'missing' as const })) });
  assert.equal(await nothing.locator('.fatal').textContent(), 'No run has a result yet.');
  await close(nothing);
  const first = (all: Column[]) => all.map((one) => ({ ...one, values: one.values.slice(0, 1) }));
  const single = await open({ ...study, parameters: first(study.parameters), results: first(study.results), runs: study.runs.slice(0, 1) });
  assert.deepEqual(await single.locator('h2').allTextContents(), ['Best runs', 'Distribution', 'Runs']);
  await close(single);
});
