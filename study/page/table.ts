// The table of all runs: sorted by any column, filtered by each, a page of rows at a time.

import { el } from '../../report/src/dom.ts';
import { count, number } from '../../report/src/format.ts';
import { headOf, scaleOf, type Column, type Study, type Value } from './data.ts';
import { parseFilter, sorted, type Test } from './filter.ts';

const ROWS = 100;

interface TableColumn {
  head: string;
  description: string;
  /** As they are shown, so that a filter means what the reader sees. */
  values: Value[];
}

function columnsOf(study: Study): TableColumn[] {
  const shown = (column: Column): TableColumn => {
    const { factor } = scaleOf(column);
    return {
      head: headOf(column),
      description: column.description,
      values: column.values.map((value) => (typeof value === 'number' ? value * factor : value)),
    };
  };
  const own = (head: string, values: Value[]): TableColumn => ({ head, description: '', values });
  return [
    own('run', study.runs.map((run) => run.id)),
    own('status', study.runs.map((run) => run.status)),
    ...study.parameters.map(shown),
    ...study.results.map(shown),
    own('time [s]', study.runs.map((run) => (run.seconds === null ? null : Number(run.seconds.toPrecision(3))))),
  ];
}

const isText = (column: TableColumn) => typeof (column.values.find((value) => value !== null) ?? 0) === 'string';

export class RunTable {
  readonly element: HTMLElement;
  private readonly columns: TableColumn[];
  private readonly tests: (Test | null)[];
  private readonly heads: HTMLTableCellElement[];
  private readonly body = el('tbody');
  private readonly counter = el('span', { class: 'unit', role: 'status' });
  private readonly back = el('button', { type: 'button', onclick: () => this.turn(-1) }, 'Earlier');
  private readonly forth = el('button', { type: 'button', onclick: () => this.turn(1) }, 'Further');
  private order = { column: -1, isDescending: false };
  private rows: number[] = [];
  private first = 0;

  constructor(private readonly study: Study) {
    this.columns = columnsOf(study);
    this.tests = this.columns.map(() => null);
    this.heads = this.columns.map((column, i) => this.head(column, i));
    const filters = this.columns.map((column, i) => this.filter(column, i));
    const head = el('thead', {}, el('tr', {}, ...this.heads), el('tr', { class: 'filters' }, ...filters));
    this.element = el(
      'section',
      { class: 'runs', 'aria-label': 'Runs' },
      el('div', { class: 'section-head' }, el('h2', {}, 'Runs'), this.counter, el('span', { class: 'buttons' }, this.back, this.forth)),
      el('div', { class: 'table-scroll' }, el('table', { id: 'runs' }, head, this.body)),
    );
    this.update();
  }

  private head(column: TableColumn, i: number): HTMLTableCellElement {
    const sort = () => {
      this.order = { column: i, isDescending: this.order.column === i && !this.order.isDescending };
      this.update();
    };
    const button = el('button', { type: 'button', class: 'sort', title: column.description || null, onclick: sort }, column.head);
    return el('th', { scope: 'col', class: isText(column) ? 'text' : null, 'aria-sort': 'none' }, button);
  }

  private filter(column: TableColumn, i: number): HTMLTableCellElement {
    const hint = isText(column) ? 'text' : '>3, 2..4';
    const box = el('input', {
      type: 'search',
      placeholder: hint,
      'aria-label': `Filter of ${column.head}`,
      oninput: () => {
        this.tests[i] = parseFilter(box.value);
        this.update();
      },
    });
    return el('td', {}, box);
  }

  private update(): void {
    const all = this.study.runs.map((_, run) => run);
    const passing = all.filter((run) => this.tests.every((test, i) => !test || test(this.columns[i].values[run])));
    const { column, isDescending } = this.order;
    this.rows = column < 0 ? passing : sorted(passing, this.columns[column].values, isDescending);
    this.heads.forEach((head, i) =>
      head.setAttribute('aria-sort', i !== column ? 'none' : isDescending ? 'descending' : 'ascending'),
    );
    this.first = 0;
    this.show();
  }

  private turn(way: number): void {
    this.first += way * ROWS;
    this.show();
  }

  private show(): void {
    const shown = this.rows.slice(this.first, this.first + ROWS);
    this.body.replaceChildren(...shown.map((run) => this.row(run)));
    const total = this.study.runs.length;
    const part = this.rows.length > ROWS ? `${this.first + 1} to ${this.first + shown.length} of ` : '';
    this.counter.textContent =
      this.rows.length === total ? part + count(total, 'run') : `${part}${this.rows.length} of ${count(total, 'run')}`;
    this.back.disabled = this.first === 0;
    this.forth.disabled = this.first + ROWS >= this.rows.length;
    this.back.parentElement!.hidden = this.rows.length <= ROWS;
  }

  private row(run: number): HTMLTableRowElement {
    const { id, report, status, error } = this.study.runs[run];
    const name = report
      ? el('a', { href: report }, id)
      : el('span', { title: 'This run has no report page.' }, id);
    const cells = this.columns.slice(1).map(({ values }) => {
      const value = values[run];
      return el('td', { class: typeof value === 'string' ? 'text' : null }, typeof value === 'number' ? number(value) : (value ?? '–'));
    });
    const row = el('tr', { class: status, title: error || null }, el('th', { scope: 'row' }, name), ...cells);
    if (error) row.lastElementChild!.after(el('td', { class: 'text error' }, error.split('\n')[0]));
    if (report) row.addEventListener('click', (event) => (event.target as Element).closest('a') ?? name.click());
    return row;
  }
}
