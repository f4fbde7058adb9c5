// Puts the page of a study together.

import '../../report/src/style.css';
import './style.css';
import { byId, choice, el } from '../../report/src/dom.ts';
import { count } from '../../report/src/format.ts';
import { chooseTheme, onThemeChange, setPrinting, startTheme, type Choice } from '../../report/src/theme.ts';
import { endsOf, hasLevels, levelsOf, numbersOf, readStudy, varies, type Column, type Study } from './data.ts';
import { bestRuns, facts, headline } from './head.ts';
import { effectOf, rankCorrelation } from './statistics.ts';
import { RunTable } from './table.ts';
import { colourBar, curveLegend, curves, effectPlot, FEW_CURVES, heatMap, histogram, scatterMatrix, shown, spreadText } from './views.ts';

const WIDE = 420;
const MATRIX_COLUMNS = 7;

/** A plot that is drawn again when its width, its choices or the theme change. */
type Draw = (width: number) => Node[];

class Page {
  private readonly drawn: (() => void)[] = [];
  private readonly varying: Column[];
  private result: Column;

  constructor(
    private readonly study: Study,
    private readonly place: HTMLElement,
  ) {
    this.varying = study.parameters.filter(varies);
    this.result = study.results[0];
  }

  build(): void {
    const { study, place } = this;
    byId('summary').append(headline(study), facts(study));
    byId('theme').append(
      choice('Look', [['auto', 'as the system'], ['light', 'light'], ['dark', 'dark']], 'auto', (value) => chooseTheme(value as Choice)),
    );
    const known = study.results.filter((result) => numbersOf(result).length > 0);
    if (known.length === 0) {
      place.append(el('p', { class: 'fatal' }, 'No run has a result yet.'));
    } else {
      this.result = known.find((result) => result.name === study.goals[0]?.result) ?? known[0];
      place.append(bestRuns(study), this.toolbar(known));
      if (this.varying.length > 0) place.append(this.overParameters(), this.effects());
      place.append(this.histograms());
      if (this.varying.length > 2) place.append(this.matrix());
    }
    place.append(new RunTable(study).element);
    document.querySelector('footer')!.textContent = `${study.generator}, ${study.made}`;
    onThemeChange(() => this.draw());
    new ResizeObserver(() => this.draw()).observe(place);
    addEventListener('beforeprint', () => setPrinting(true));
    addEventListener('afterprint', () => setPrinting(false));
    this.draw();
  }

  private draw(): void {
    for (const draw of this.drawn) draw();
  }

  private toolbar(results: Column[]): HTMLElement {
    const pick = choice('Result', results.map((result) => [result.name, result.name]), this.result.name, (name) => {
      this.result = results.find((result) => result.name === name)!;
      this.draw();
    });
    return el('div', { id: 'toolbar', role: 'toolbar', 'aria-label': 'Plots' }, pick);
  }

  /** A section whose drawing fills its width. */
  private section(title: string, controls: Node[], draw: Draw): HTMLElement {
    const figure = el('div', { class: 'drawing' });
    this.drawn.push(() => figure.replaceChildren(...draw(figure.clientWidth)));
    return el('section', { 'aria-label': title }, el('div', { class: 'section-head' }, el('h2', {}, title), ...controls), figure);
  }

  private overParameters(): HTMLElement {
    const { study, varying } = this;
    const named = (name: string) => varying.find((parameter) => parameter.name === name) ?? null;
    let [over, by] = usualChoice(varying, this.result);
    let isMap = by !== null && levelsOf(by).length > FEW_CURVES && by.kind !== 'text' && over.kind !== 'text';
    const names = varying.map((parameter): [string, string] => [parameter.name, parameter.name]);
    const pickOver = choice('over', names, over.name, (name) => ((over = named(name)!), this.draw()));
    const pickBy = choice('and', [['', 'nothing'], ...names], by?.name ?? '', (name) => ((by = named(name)), this.draw()));
    const pickMap = choice('as', [['map', 'heat map'], ['curves', 'curves']], isMap ? 'map' : 'curves', (way) => ((isMap = way === 'map'), this.draw()));
    return this.section('Results over parameters', [pickOver, pickBy, pickMap], (width) => {
      const second = by === over ? null : by;
      const height = Math.min(WIDE, Math.max(260, width / 2.4));
      if (isMap && second && hasLevels(second) && hasLevels(over)) {
        return [heatMap(study, this.result, over, second, width, height), colourBar(this.result, endsOf(numbersOf(this.result)))];
      }
      const group = second && hasLevels(second) ? second : null;
      const drawing = curves(study, this.result, over, group, width, height);
      return group ? [...drawing, curveLegend(group)] : drawing;
    });
  }

  private effects(): HTMLElement {
    return this.section('Main effects', [], (width) => {
      const effects = this.varying.map((parameter) => effectOf(parameter, this.result)).sort((a, b) => b.size - a.size);
      const all = effects.flatMap((effect) => effect.points.map((point) => point.mean));
      const across = Math.max(1, Math.min(effects.length, Math.floor(width / 320)));
      const plots = effects.map((effect) => effectPlot(effect, this.result, all, Math.floor(width / across) - 12, 200));
      const rows = effects.map(({ parameter, size }) => {
        const correlation = parameter.kind === 'text' ? NaN : rankCorrelation(parameter, this.result);
        const cells = [shown(this.result, size), Number.isNaN(correlation) ? '–' : correlation.toFixed(2).replace('-', '\u2212')];
        return el('tr', {}, el('th', { scope: 'row' }, parameter.name), ...cells.map((text) => el('td', {}, text)));
      });
      const head = ['parameter', `range of the means of ${this.result.name}`, 'rank correlation'];
      const table = el('table', { class: 'effects' }, el('thead', {}, el('tr', {}, ...head.map((text) => el('th', { scope: 'col' }, text)))), el('tbody', {}, ...rows));
      return [el('div', { class: 'multiples' }, ...plots), el('div', { class: 'table-scroll' }, table)];
    });
  }

  private histograms(): HTMLElement {
    return this.section('Distribution', [], (width) => [
      histogram(this.result, Math.min(width, 900), 240),
      el('p', { class: 'spread' }, `${this.result.name}: ${spreadText(this.result)}`),
    ]);
  }

  private matrix(): HTMLElement {
    return this.section('Scatter matrix', [], (width) => {
      const columns = [...this.varying, this.result].slice(-MATRIX_COLUMNS);
      const left = this.varying.length + 1 - columns.length;
      const note = left > 0 ? [el('p', { class: 'unit' }, `of the last ${columns.length - 1} parameters; ${count(left, 'parameter')} more`)] : [];
      return [...scatterMatrix(this.study, columns, width), ...note];
    });
  }
}

/** Of a grid the two parameters with the most values, of equal ones the later; otherwise the one that does most. */
function usualChoice(varying: Column[], result: Column): [over: Column, by: Column | null] {
  const size = (parameter: Column) => levelsOf(parameter).length;
  const levelled = varying.filter(hasLevels).reverse().sort((a, b) => size(b) - size(a));
  const isGrid = levelled.length === varying.length;
  const numbers = levelled.filter((parameter) => parameter.kind !== 'text');
  if (isGrid && numbers.length > 0) return [numbers[0], levelled.find((parameter) => parameter !== numbers[0]) ?? null];
  const [strongest] = varying.map((parameter) => effectOf(parameter, result)).sort((a, b) => b.size - a.size);
  return [strongest.parameter, null];
}

function start(): void {
  startTheme();
  try {
    const study = readStudy(byId('study-data').textContent ?? '');
    document.title = study.title;
    new Page(study, byId('study')).build();
  } catch (error) {
    byId('summary').append(el('p', { class: 'fatal' }, `This page's data cannot be read: ${(error as Error).message}`));
  }
}

start();
