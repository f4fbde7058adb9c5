// Colours (after the palette of Okabe and Ito, which colour-blind readers can tell apart, with enough contrast on each
// ground) and the light, dark and print looks.

export interface Look {
  ink: string;
  muted: string;
  grid: string;
  surface: string;
  /** Lines of a chart: the components x, y, z, the magnitude, and more. */
  lines: string[];
  bodies: string[];
  north: string;
  south: string;
  iron: string;
  force: string;
  torque: string;
}

const LIGHT: Look = {
  ink: '#1b1f24',
  muted: '#5b6570',
  grid: '#e6e9ed',
  surface: '#ffffff',
  lines: ['#d55e00', '#008a65', '#0072b2', '#1b1f24', '#b0588a', '#8a6d00', '#7d8792'],
  bodies: ['#0072b2', '#d55e00', '#008a65', '#b0588a', '#8a6d00', '#3a87b8', '#5b6570'],
  north: '#d55e00',
  south: '#0072b2',
  iron: '#8b939c',
  force: '#1b1f24',
  torque: '#a3437c',
};

const DARK: Look = {
  ink: '#e8ebee',
  muted: '#9aa5b1',
  grid: '#2b323a',
  surface: '#181c21',
  lines: ['#e8782a', '#1bb68b', '#56b4e9', '#e8ebee', '#cc79a7', '#f0e442', '#9aa5b1'],
  bodies: ['#56b4e9', '#e8782a', '#1bb68b', '#cc79a7', '#f0e442', '#8ecaf0', '#9aa5b1'],
  north: '#e8782a',
  south: '#3f9fd8',
  iron: '#7d8792',
  force: '#f2f4f6',
  torque: '#e59ac4',
};

/** Strokes that stay apart without colour, for paper. */
const PRINT_DASHES: (number[] | undefined)[] = [
  undefined,
  [7, 3],
  [2, 2.5],
  [9, 3, 2, 3],
  [14, 4],
  [4, 2, 1.5, 2, 1.5, 2],
  [1, 4],
];

export type Choice = 'auto' | 'light' | 'dark';

const darkSystem = matchMedia('(prefers-color-scheme: dark)');
let choice: Choice = 'auto';
let isPrinting = false;
const listeners: (() => void)[] = [];

export const looks = { LIGHT, DARK };

export function isDark(): boolean {
  return !isPrinting && (choice === 'dark' || (choice === 'auto' && darkSystem.matches));
}

export const look = (): Look => (isDark() ? DARK : LIGHT);
export const bodyColour = (index: number): string => look().bodies[index % look().bodies.length];
export const lineColour = (index: number): string => look().lines[index % look().lines.length];
/** The dashes of a line on paper; none on a screen. */
export const lineDash = (index: number): number[] | undefined =>
  isPrinting ? PRINT_DASHES[index % PRINT_DASHES.length] : undefined;

export function onThemeChange(listener: () => void): void {
  listeners.push(listener);
}

function apply(): void {
  document.documentElement.dataset.theme = isDark() ? 'dark' : 'light';
  for (const listener of listeners) listener();
}

export function chooseTheme(value: Choice): void {
  choice = value;
  apply();
}

/** Paper is always light, and charts get its width. */
export function setPrinting(value: boolean): void {
  if (isPrinting === value) return;
  isPrinting = value;
  apply();
}

export function startTheme(): void {
  darkSystem.addEventListener('change', apply);
  apply();
}
