// The head of the page: what was studied, how far it is, and the best runs.

import { el } from '../../report/src/dom.ts';
import { count } from '../../report/src/format.ts';
import { headOf, levelsOf, varies, type Column, type Goal, type Study } from './data.ts';
import { shown } from './views.ts';
import { sorted } from './filter.ts';

const BEST = 5;

export function headline(study: Study): HTMLElement {
  const origin = el('div', {}, el('dt', {}, 'Scenario'), el('dd', {}, study.scenario));
  return el('div', {}, el('h1', {}, study.title), el('dl', { class: 'origin' }, origin));
}

export function facts(study: Study): HTMLElement {
  const having = (status: string) => study.runs.filter((run) => run.status === status).length;
  const entries: [string, string][] = [['Runs', count(study.runs.length, 'run')]];
  if (having('failed') + having('missing') > 0)
    entries.push(['of these', `${having('done')} done, ${having('failed')} failed, ${having('missing')} missing`]);
  for (const parameter of study.parameters) entries.push([parameter.name, rangeText(parameter)]);
  return el('dl', { class: 'facts' }, ...entries.map(([name, text]) => el('div', {}, el('dt', {}, name), el('dd', {}, text))));
}

function rangeText(parameter: Column): string {
  const levels = levelsOf(parameter);
  if (!varies(parameter)) return levels.length ? shown(parameter, levels[0]) : '–';
  const ends = `${shown(parameter, levels[0])} to ${shown(parameter, levels[levels.length - 1])}`;
  if (parameter.kind === 'random') return `${ends}, random`;
  if (levels.length <= 4 || parameter.kind === 'text') return levels.map((level) => shown(parameter, level)).join(', ');
  return `${ends}, ${levels.length} values`;
}

/** The first few runs by every goal; without goals both ends of the first result. */
export function bestRuns(study: Study): HTMLElement {
  const [first] = study.results;
  const goals: Goal[] = study.goals.length
    ? study.goals
    : [{ result: first.name, sense: 'greatest' }, { result: first.name, sense: 'least' }];
  return el('section', { class: 'best', 'aria-label': 'Best runs' }, el('h2', {}, 'Best runs'), el('div', { class: 'best-tables' }, ...goals.map((goal) => bestTable(study, goal))));
}

function bestTable(study: Study, { result: name, sense }: Goal): HTMLElement {
  const result = study.results.find((candidate) => candidate.name === name)!;
  const known = study.runs.map((_, run) => run).filter((run) => typeof result.values[run] === 'number');
  const best = sorted(known, result.values, sense === 'greatest').slice(0, BEST);
  const columns = [result, ...study.parameters.filter(varies)];
  const rows = best.map((run) => {
    const { id, report } = study.runs[run];
    const cells = columns.map((column) => el('td', {}, shown(column, column.values[run])));
    return el('tr', {}, el('th', { scope: 'row' }, report ? el('a', { href: report }, id) : id), ...cells);
  });
  const head = el('tr', {}, el('th', { scope: 'col' }, 'run'), ...columns.map((column) => el('th', { scope: 'col', title: column.description || null }, column.name)));
  return el('div', { class: 'table-scroll' }, el('table', {}, el('caption', {}, `${sense} ${headOf(result)}`), el('thead', {}, head), el('tbody', {}, ...rows)));
}
