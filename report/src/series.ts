// Which of the host's own quantities share a chart.

import type { Column, Series } from './data.ts';

export interface SeriesChart {
  title: string;
  unit: string;
  lines: { label: string; values: Column }[];
}

/**
 * The charts of every joint, spring and bushing. "Turn x", "Turn y" and "Turn z" are the components of one quantity,
 * which has a chart of its own; whatever else has the same unit shares one.
 */
export function groupSeries(series: Series[]): Map<string, SeriesChart[]> {
  const groups = new Map<string, Map<string, Series[]>>();
  for (const one of series) {
    const charts = groups.get(one.group) ?? new Map<string, Series[]>();
    const key = `${vectorOf(one)?.name ?? ''}[${one.unit}]`;
    charts.set(key, [...(charts.get(key) ?? []), one]);
    groups.set(one.group, charts);
  }
  return new Map([...groups].map(([group, charts]) => [group, [...charts.values()].map(chartOf)]));
}

function vectorOf({ name }: Series): { name: string; axis: string } | null {
  const found = /^(.+) ([xyz])$/.exec(name);
  return found && { name: found[1], axis: found[2].toUpperCase() };
}

function chartOf(list: Series[]): SeriesChart {
  const { unit } = list[0];
  const names = list.map((one) => vectorOf(one)?.name ?? one.name);
  return {
    title: unit === 'J' && list.length > 1 ? 'Energies' : [...new Set(names)].join(', '),
    unit,
    lines: list.map((one) => ({ label: vectorOf(one)?.axis ?? one.name, values: one.values })),
  };
}
