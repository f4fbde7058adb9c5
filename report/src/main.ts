// Builds the page from its data block.

import 'uplot/dist/uPlot.min.css';
import './style.css';
import { TimeChart } from './chart.ts';
import { themeChoice, toolbar, viewControls } from './controls.ts';
import { DataError, readRun, type Run } from './data.ts';
import { extremesOf } from './decimate.ts';
import { byId, el } from './dom.ts';
import { number } from './format.ts';
import { PhasePlot, QUANTITIES, usualChoice, variablesOf } from './phase.ts';
import { Player } from './player.ts';
import { hasWebGl, Replay } from './replay.ts';
import { groupSeries, type SeriesChart } from './series.ts';
import { Store, type Quantity } from './store.ts';
import {
  addNotice,
  componentTable,
  extremesTable,
  facts,
  headline,
  notices,
  PresentValues,
  titleOf,
} from './summary.ts';
import { onThemeChange, setPrinting, startTheme } from './theme.ts';

/** Width of a chart on paper, CSS pixels: A4 and US Letter with usual margins, two columns. */
const PAPER_CHART_WIDTH = 325;
const PAPER_PHASE_WIDTH = 670;

function start(): void {
  startTheme();
  let run: Run;
  try {
    run = readRun(byId('run-data').textContent ?? '');
  } catch (error) {
    if (!(error instanceof DataError)) throw error;
    document.title = 'Run report';
    byId('summary').append(el('h1', {}, 'Run report'), el('p', { class: 'fatal' }, error.message));
    return;
  }
  document.title = titleOf(run);
  document.querySelector('footer')!.textContent = run.generator ? `Written by ${run.generator}.` : '';
  byId('theme').append(themeChoice(), el('button', { type: 'button', onclick: () => print() }, 'Print'));
  if (run.rows === 0) {
    const nothing = el('p', { class: 'fatal' }, 'There is nothing to chart: the log has no complete step.');
    byId('summary').append(headline(run), notices(run), nothing);
    return;
  }
  new Page(run).build();
}

/** Those for which a question is answered yes, and the others. */
function split<T>(values: T[], question: (value: T) => boolean): [T[], T[]] {
  return [values.filter(question), values.filter((value) => !question(value))];
}

class Page {
  private readonly store: Store;
  private charts: TimeChart[] = [];
  private phasePlots: PhasePlot[] = [];
  private replay: Replay | null = null;
  private readonly chartPlace = byId('charts');
  private readonly phasePlace = byId('phases');

  constructor(private readonly run: Run) {
    this.store = new Store(run);
  }

  build(): void {
    document.body.classList.add('has-run');
    byId('summary').append(
      headline(this.run),
      facts(this.run),
      notices(this.run),
      ...(this.run.bodies.length > 0 ? [this.extremes()] : []),
    );
    byId('toolbar').append(...toolbar(this.store));
    this.buildCharts();
    this.buildPhases();
    byId('player').append(new Player(this.store).element);
    byId('values').append(new PresentValues(this.store).element);
    this.link();
    // The charts come first: a 3D view takes a moment to start.
    requestAnimationFrame(() => setTimeout(() => this.buildReplay()));
  }

  private extremes(): HTMLElement {
    const largest = el('div', {}, extremesTable(this.store));
    const every = el('div');
    const more = el('details', {}, el('summary', {}, 'Least and greatest value of every component'), every);
    // Built when it is opened.
    const fill = () => every.replaceChildren(...(more.open ? [componentTable(this.store)] : []));
    more.addEventListener('toggle', fill);
    this.store.on('values', () => {
      largest.replaceChildren(extremesTable(this.store));
      fill();
    });
    return el('section', { 'aria-label': 'Extreme values' }, largest, more);
  }

  private buildReplay(): void {
    const place = byId('view');
    if (this.run.bodies.length === 0) {
      byId('replay').classList.add('no-view');
      return;
    }
    if (!hasWebGl()) {
      place.append(
        el(
          'p',
          { class: 'missing' },
          'The 3D view needs WebGL 2, which this browser does not offer or has switched off.',
        ),
      );
      return;
    }
    this.replay = new Replay(this.store, place);
    byId('view-controls').append(...viewControls(this.store, this.replay));
    for (const text of this.replay.problems) addNotice(text);
  }

  private buildCharts(): void {
    for (const chart of this.charts) chart.destroy();
    this.charts = [];
    this.chartPlace.replaceChildren();
    const bodies = [...this.store.shownBodies].sort((a, b) => a - b);
    for (const quantity of QUANTITIES) {
      const [still, moving] = split(bodies, (body) => this.isStill(body, quantity));
      const charts = moving.map((body) => this.bodyChart(body, quantity));
      this.addSection(
        this.headingOf(quantity),
        charts,
        still.map((body) => this.stillText(body, quantity)),
      );
    }
    for (const [group, charts] of groupSeries(this.run.series)) {
      this.addSection(
        group,
        charts.map((chart) => this.seriesChart(chart)),
        [],
      );
    }
    for (const chart of this.charts) chart.draw();
  }

  private headingOf(quantity: Quantity): string {
    return quantity === 'angles' && this.store.angleKind === 'turns' ? 'Turns about X, Y, Z' : PLURALS[quantity];
  }

  private addSection(title: string, charts: TimeChart[], texts: string[]): void {
    if (charts.length + texts.length === 0) return;
    const grid = el('div', { class: 'chart-grid' }, ...charts.map((chart) => chart.element));
    const still = texts.map((text) => el('p', { class: 'still' }, text));
    this.chartPlace.append(
      el('section', { class: 'charts-of' }, el('h2', {}, title), ...(charts.length > 0 ? [grid] : []), ...still),
    );
    this.charts.push(...charts);
  }

  /** Whether a place or an angle never changes, or a load is only rounding: a line of text says as much as a chart. */
  private isStill(body: number, quantity: Quantity): boolean {
    const { floor } = this.store.info(quantity);
    const isLoad = quantity === 'force' || quantity === 'torque';
    return this.store.columns(body, quantity).every((values) => {
      const found = values && extremesOf(values);
      return found && (isLoad ? Math.max(-found.min, found.max) : found.max - found.min) <= floor;
    });
  }

  private stillText(body: number, quantity: Quantity): string {
    const { components, title, unit, rounding } = this.store.info(quantity);
    const { name } = this.run.bodies[body];
    if (quantity === 'force' || quantity === 'torque') {
      const largest = number(extremesOf(this.store.columns(body, quantity)[3]!)!.max, rounding, 2);
      return `${name} has no ${title.toLowerCase()}${largest === '0' ? '' : ` beyond rounding (${largest} ${unit})`}`;
    }
    const values = this.store.columns(body, quantity).map((column) => number(column![0], rounding));
    const where = `${values.map((value, i) => `${components[i]} ${value}`).join(', ')} ${unit}`;
    if (quantity === 'position') return `${name} does not move: ${where}`;
    const isAsDrawn = this.store.angleKind === 'turns' && values.every((value) => value === '0');
    return isAsDrawn ? `${name} does not turn` : `${name} does not turn: ${where}`;
  }

  private bodyChart(body: number, quantity: Quantity): TimeChart {
    const info = this.store.info(quantity);
    const columns = this.store.columns(body, quantity);
    const lines = columns.map((values, component) => ({
      label: info.components[component],
      values,
      colour: component,
      isShown: component < 3,
    }));
    return new TimeChart(this.store, { ...info, title: this.run.bodies[body].name, lines });
  }

  /** A chart of the host's own states. */
  private seriesChart({ title, unit, lines }: SeriesChart): TimeChart {
    const rounding = this.store.roundingOf(unit);
    const drawn = lines.map((line, colour) => ({ ...line, colour, isShown: true }));
    return new TimeChart(this.store, { title, unit, floor: rounding, rounding, lines: drawn });
  }

  private buildPhases(): void {
    const add = () => {
      const plot: PhasePlot = new PhasePlot(this.store, variablesOf(this.store), usualChoice(this.store), () => {
        plot.destroy();
        plot.element.remove();
        this.phasePlots = this.phasePlots.filter((other) => other !== plot);
      });
      this.phasePlots.push(plot);
      this.phasePlace.append(plot.element);
      plot.draw();
    };
    byId('add-phase').addEventListener('click', add);
    add();
  }

  private link(): void {
    const { store } = this;
    const all = () => [...this.charts, ...this.phasePlots];
    store.on('row', () => {
      for (const chart of all()) chart.showRow();
      this.replay?.update();
    });
    store.on('range', () => this.charts.forEach((chart) => chart.showRange()));
    store.on('bodies', () => this.buildCharts());
    store.on('axis', () => this.buildCharts());
    store.on('values', () => {
      this.buildCharts();
      const variables = variablesOf(this.store);
      for (const plot of this.phasePlots) plot.change(variables);
      this.replay?.update();
    });
    onThemeChange(() => {
      for (const chart of all()) chart.restyle();
      this.replay?.restyle();
    });
    new ResizeObserver(() => this.fitCharts()).observe(this.chartPlace);
    const paper = matchMedia('print');
    paper.addEventListener('change', () => this.onPaper(paper.matches));
    addEventListener('beforeprint', () => this.onPaper(true));
    addEventListener('afterprint', () => this.onPaper(false));
  }

  private fitCharts(): void {
    for (const chart of this.charts) chart.resize(chart.width());
    for (const plot of this.phasePlots) plot.resize(plot.width());
  }

  private onPaper(isPaper: boolean): void {
    setPrinting(isPaper);
    if (!isPaper) {
      this.fitCharts();
      return;
    }
    for (const chart of this.charts) chart.resize(PAPER_CHART_WIDTH);
    for (const plot of this.phasePlots) plot.resize(PAPER_PHASE_WIDTH);
    this.replay?.drawNow();
  }
}

const PLURALS: Record<Quantity, string> = {
  force: 'Forces',
  torque: 'Torques',
  position: 'Positions',
  angles: 'Angles',
};

start();
