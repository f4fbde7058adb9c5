// The head of the page: what was run, what is to be known about it, and the extreme values.

import type { Column, Notice, Run } from './data.ts';
import { extremesOf } from './decimate.ts';
import { byId, el } from './dom.ts';
import { count, number } from './format.ts';
import { QUANTITIES } from './phase.ts';
import type { Quantity, Store } from './store.ts';

export function titleOf(run: Run): string {
  return run.title || run.project || 'Coupled run';
}

export function headline(run: Run): HTMLElement {
  const origin = [
    ['Project', run.title ? run.project : ''],
    ['Scenario', run.scenario],
    ['Log', run.log],
  ].filter(([, text]) => text);
  return el(
    'div',
    {},
    el('h1', {}, titleOf(run)),
    el(
      'dl',
      { class: 'origin' },
      ...origin.map(([name, text]) => el('div', {}, el('dt', {}, name), el('dd', {}, text))),
    ),
  );
}

/** What the reader must know about the run. */
export function notices(run: Run): HTMLElement {
  return el(
    'ul',
    { class: 'notices', id: 'notices', 'aria-label': 'Warnings of the run' },
    ...run.notices.map(noticeItem),
  );
}

/** Adds what only showed while the page was built. */
export function addNotice(text: string): void {
  byId('notices').append(noticeItem({ severity: 'warning', text }));
}

function noticeItem({ severity, text }: Notice): HTMLElement {
  const words = { error: 'Error', warning: 'Warning', info: 'Note' };
  return el('li', { class: severity }, el('strong', {}, words[severity]), ' ', text);
}

export function facts(run: Run): HTMLElement {
  const entries: [string, string][] = [];
  if (run.time) {
    const times = extremesOf(run.time);
    if (times) entries.push(['Time span', `${number(times.min)} to ${number(times.max)} s`]);
  }
  const steps = extremesOf(run.step);
  entries.push(['Steps', steps ? `${count(run.rows, 'step')}, ${number(steps.min)} to ${number(steps.max)}` : 'none']);
  const width = run.time && stepWidth(run.time);
  if (width) entries.push(['Step width', `${number(width, 0, 3)} s`]);
  entries.push(['Bodies', run.bodies.length ? run.bodies.map((body) => body.name).join(', ') : 'none']);
  return el(
    'dl',
    { class: 'facts' },
    ...entries.map(([name, text]) => el('div', {}, el('dt', {}, name), el('dd', {}, text))),
  );
}

/** The usual distance of two times. */
function stepWidth(time: Column): number {
  const widths = Array.from(time.subarray(1, 1001), (value, i) => value - time[i]).sort((a, b) => a - b);
  return widths[widths.length >> 1] ?? 0;
}

/** The largest loads and the travel of every body, each with a button that goes to its step. */
export function extremesTable(store: Store): HTMLElement {
  const { run } = store;
  const unit = (quantity: Quantity) => store.info(quantity).unit;
  const rows = run.bodies.map((body, index) => {
    const peak = (quantity: 'force' | 'torque') => {
      const { floor, rounding } = store.info(quantity);
      const values = store.columns(index, quantity)[3];
      const found = values && extremesOf(values);
      if (!found) return [el('td', {}, '–'), el('td')];
      // Rounding has no place worth going to.
      const text = number(found.max, rounding);
      if (found.max <= floor) return [el('td', { title: text }, text === '0' ? '0' : '≈ 0'), el('td')];
      return [el('td', {}, text), whereCell(store, found.maxRow)];
    };
    const spans = (quantity: 'position' | 'angles') => {
      const { components } = store.info(quantity);
      return store.columns(index, quantity).flatMap((values, i) => {
        const found = values && extremesOf(values);
        return found && found.max - found.min > store.info(quantity).floor
          ? [`${components[i]} ${number(found.max - found.min, 0, 4)}`]
          : [];
      });
    };
    return el(
      'tr',
      {},
      el('th', { scope: 'row' }, body.name),
      ...peak('force'),
      ...peak('torque'),
      el('td', {}, spans('position').join(', ') || '0'),
      el('td', {}, spans('angles').join(', ') || '0'),
    );
  });
  const head = [
    'Body',
    `Largest force (${unit('force')})`,
    'at',
    `Largest torque (${unit('torque')})`,
    'at',
    `Travel (${unit('position')})`,
    `Turn (${unit('angles')})`,
  ];
  return el(
    'div',
    { class: 'table-scroll' },
    el(
      'table',
      { class: 'extremes' },
      el('thead', {}, el('tr', {}, ...head.map((text) => el('th', { scope: 'col' }, text)))),
      el('tbody', {}, ...rows),
    ),
  );
}

/** Least and greatest value of every column. */
export function componentTable(store: Store): HTMLElement {
  const rows = store.run.bodies.flatMap((body, index) =>
    QUANTITIES.flatMap((quantity) => {
      const info = store.info(quantity);
      return store.columns(index, quantity).flatMap((values, component) => {
        const found = values && extremesOf(values);
        if (!found) return [];
        return el(
          'tr',
          {},
          el('th', { scope: 'row' }, body.name),
          el('td', { class: 'text' }, `${info.title} ${info.components[component]} (${info.unit})`),
          el('td', {}, number(found.min, info.rounding)),
          whereCell(store, found.minRow),
          el('td', {}, number(found.max, info.rounding)),
          whereCell(store, found.maxRow),
        );
      });
    }),
  );
  const head = ['Body', 'Quantity', 'Least', 'at', 'Greatest', 'at'];
  return el(
    'div',
    { class: 'table-scroll' },
    el(
      'table',
      {},
      el('thead', {}, el('tr', {}, ...head.map((text) => el('th', { scope: 'col' }, text)))),
      el('tbody', {}, ...rows),
    ),
  );
}

function whereCell(store: Store, row: number): HTMLElement {
  const { run } = store;
  const text = run.time ? `${number(run.time[row])} s` : `step ${number(run.step[row])}`;
  const go = () => {
    store.setPlaying(false);
    store.setRow(row);
  };
  return el(
    'td',
    {},
    el('button', { type: 'button', class: 'where', title: `Go to step ${number(run.step[row])}`, onclick: go }, text),
  );
}

/** All values of the shown bodies at the present row. */
export class PresentValues {
  readonly element = el('div', { class: 'present', 'aria-label': 'Values at the present step' });
  private cells: { cell: HTMLElement; values: Column; rounding: number }[] = [];

  constructor(private readonly store: Store) {
    this.build();
    store.on('row', () => this.showRow());
    store.on('bodies', () => this.build());
    store.on('values', () => this.build());
  }

  private build(): void {
    this.cells = [];
    const { store } = this;
    const tables = [...store.shownBodies].sort((a, b) => a - b).map((index) => this.table(index));
    this.element.replaceChildren(...tables);
    this.showRow();
    this.element.hidden = tables.length === 0;
  }

  private table(index: number): HTMLElement {
    const { store } = this;
    const rows = QUANTITIES.map((quantity) => {
      const info = store.info(quantity);
      const isLogged = quantity === 'angles' && store.angleKind === 'log';
      const name = quantity === 'angles' ? (isLogged ? 'Phi, Theta, Psi' : 'Turn') : info.title;
      const cells = store
        .columns(index, quantity)
        .slice(0, 3)
        .map((values) => {
          const cell = el('td', {}, '–');
          if (values) this.cells.push({ cell, values, rounding: info.rounding });
          return cell;
        });
      return el('tr', { 'data-quantity': quantity }, el('th', { scope: 'row' }, `${name} (${info.unit})`), ...cells);
    });
    const heads = ['X', 'Y', 'Z'].map((text) => el('th', { scope: 'col' }, text));
    return el(
      'table',
      { 'data-body': store.run.bodies[index].name },
      el(
        'thead',
        {},
        el('tr', {}, el('th', { scope: 'col', class: 'body-name' }, store.run.bodies[index].name), ...heads),
      ),
      el('tbody', {}, ...rows),
    );
  }

  private showRow(): void {
    for (const { cell, values, rounding } of this.cells) {
      cell.textContent = number(values[this.store.row], rounding);
    }
  }
}
