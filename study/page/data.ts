// The study as the page holds it: one column per parameter and per result, one row per run.

import { extent, max } from 'd3-array';

export type Value = number | string | null;

/** A quantity over all runs. */
export interface Column {
  name: string;
  unit: string;
  description: string;
  /** How its values came about; of a result, "result". */
  kind: 'list' | 'range' | 'random' | 'text' | 'result';
  values: Value[];
}

export interface StudyRun {
  id: string;
  status: 'done' | 'failed' | 'missing';
  seconds: number | null;
  /** Where its report page is; null without one. */
  report: string | null;
  error: string;
}

export interface Goal {
  result: string;
  sense: 'greatest' | 'least';
}

export interface Study {
  title: string;
  generator: string;
  made: string;
  scenario: string;
  parameters: Column[];
  results: Column[];
  goals: Goal[];
  runs: StudyRun[];
}

/** Reads the data block. Throws when it is not one of a study. */
export function readStudy(text: string): Study {
  const study = JSON.parse(text) as Study & { version: number };
  if (study.version !== 1) throw new Error(`data of version ${study.version}; this page reads version 1`);
  for (const result of study.results) result.kind = 'result';
  for (const column of [...study.parameters, ...study.results])
    if (column.values.length !== study.runs.length) throw new Error(`"${column.name}" is not as long as the list of runs`);
  return study;
}

/** How the numbers of a column are shown to people. */
export interface Scale {
  factor: number;
  unit: string;
}

/** Metres that are small as millimetres, radians as degrees, large and small forces as they are. */
export function scaleOf(column: Column): Scale {
  if (column.unit === 'rad') return { factor: 180 / Math.PI, unit: '°' };
  const largest = max(column.values, (value) => (typeof value === 'number' ? Math.abs(value) : 0)) ?? 0;
  if (column.unit === 'm' && largest < 1) return { factor: 1000, unit: 'mm' };
  return { factor: 1, unit: column.unit };
}

export function numbersOf(column: Column): number[] {
  return column.values.filter((value): value is number => typeof value === 'number');
}

/** The least and the greatest of some numbers. */
export const endsOf = (values: number[]) => extent(values) as [number, number];

/** The values that occur, numbers in their order and texts as they come. */
export function levelsOf(column: Column): (number | string)[] {
  const values = [...new Set(column.values.filter((value) => value !== null))];
  return values.every((value) => typeof value === 'number')
    ? (values as number[]).sort((a, b) => a - b)
    : values;
}

export const varies = (column: Column): boolean => levelsOf(column).length > 1;

/** "gap [mm]" */
export function headOf(column: Column): string {
  const { unit } = scaleOf(column);
  return unit ? `${column.name} [${unit}]` : column.name;
}

/** A parameter whose values repeat often enough to be told apart by eye: a curve, a bar or a row for each. */
export function hasLevels(column: Column): boolean {
  return column.kind !== 'random' && levelsOf(column).length <= Math.max(40, column.values.length / 2);
}
