// What all plots share: SVG elements, axes, a frame, what is told of a mark.

import { scaleLinear, scalePoint } from 'd3-scale';
import { el } from '../../report/src/dom.ts';
import { tickLabels } from '../../report/src/format.ts';
import { endsOf, headOf, levelsOf, numbersOf, scaleOf, type Column, type Value } from './data.ts';

type Attributes = Record<string, string | number | null>;

/** An SVG element; attributes that are null are left out. */
export function svg<K extends keyof SVGElementTagNameMap>(
  tag: K,
  attributes: Attributes = {},
  ...children: (Node | string)[]
): SVGElementTagNameMap[K] {
  const element = document.createElementNS('http://www.w3.org/2000/svg', tag);
  for (const [name, value] of Object.entries(attributes))
    if (value !== null) element.setAttribute(name, String(value));
  element.append(...children);
  return element;
}

/** Where the values of a column lie along an axis, in pixels. */
export interface Axis {
  label: string;
  /** NaN for what has no place. */
  at(value: Value): number;
  ticks: { at: number; text: string }[];
}

/**
 * @param pixels from where to where it goes
 * @param padding kept free at both ends
 */
export function axisOf(column: Column, pixels: [number, number], padding = 8): Axis {
  const sign = Math.sign(pixels[1] - pixels[0]);
  const inner: [number, number] = [pixels[0] + sign * padding, pixels[1] - sign * padding];
  return column.kind === 'text' ? textAxis(column, inner) : numberAxis(column, inner);
}

function textAxis(column: Column, pixels: [number, number]): Axis {
  const place = scalePoint(levelsOf(column).map(String), pixels).padding(0.5);
  return {
    label: column.name,
    at: (value) => place(String(value)) ?? NaN,
    ticks: place.domain().map((text) => ({ at: place(text)!, text: cut(text, place.step() / 7) })),
  };
}

/** A text of so many letters at most. */
function cut(text: string, letters: number): string {
  const most = Math.max(3, Math.floor(letters) - 1);
  return text.length > most ? `${text.slice(0, most - 1)}…` : text;
}

function numberAxis(column: Column, pixels: [number, number]): Axis {
  const { factor } = scaleOf(column);
  return linearAxis(headOf(column), numbersOf(column).map((value) => value * factor), pixels, factor);
}

/** An axis over numbers as they are shown. `at` takes them before they are multiplied by the factor. */
export function linearAxis(label: string, shown: number[], pixels: [number, number], factor = 1): Axis {
  const [least, greatest] = endsOf(shown);
  const room = least === greatest ? Math.abs(least) / 10 || 1 : 0;
  const place = scaleLinear([least - room, greatest + room], pixels).nice();
  const ticks = place.ticks(Math.max(3, Math.abs(pixels[1] - pixels[0]) / 45));
  const texts = tickLabels(ticks, ticks.length > 1 ? ticks[1] - ticks[0] : 1);
  return {
    label,
    at: (value) => (typeof value === 'number' ? place(value * factor) : NaN),
    ticks: ticks.map((tick, i) => ({ at: place(tick), text: texts[i] })),
  };
}

export interface Margins {
  left: number;
  right: number;
  top: number;
  bottom: number;
}

export const MARGINS: Margins = { left: 62, right: 16, top: 10, bottom: 42 };

/** A drawing of a given size. */
export function drawing(width: number, height: number, label: string): SVGSVGElement {
  return svg('svg', { width, height, viewBox: `0 0 ${width} ${height}`, role: 'img', 'aria-label': label });
}

/** Axes at the left and at the bottom, with their grid. */
export function axes(x: Axis, y: Axis, width: number, height: number, margins = MARGINS): SVGGElement {
  const [right, bottom] = [width - margins.right, height - margins.bottom];
  const group = svg('g', { class: 'axes' });
  for (const { at, text } of apart(x.ticks, 7)) {
    group.append(svg('line', { x1: at, x2: at, y1: margins.top, y2: bottom }));
    group.append(svg('text', { x: at, y: bottom + 16, 'text-anchor': 'middle' }, text));
  }
  for (const { at, text } of y.ticks) {
    group.append(svg('line', { x1: margins.left, x2: right, y1: at, y2: at }));
    group.append(svg('text', { x: margins.left - 6, y: at + 4, 'text-anchor': 'end' }, text));
  }
  const [middleX, middleY] = [(margins.left + right) / 2, (margins.top + bottom) / 2];
  group.append(svg('text', { class: 'axis-label', x: middleX, y: height - 6, 'text-anchor': 'middle' }, x.label));
  group.append(
    svg(
      'text',
      { class: 'axis-label', transform: `translate(13 ${middleY}) rotate(-90)`, 'text-anchor': 'middle' },
      y.label,
    ),
  );
  return group;
}

/** Every one of the ticks, every second one and so on, so that their texts do not touch. */
function apart(ticks: Axis['ticks'], letterWidth: number): Axis['ticks'] {
  const longest = Math.max(0, ...ticks.map(({ text }) => text.length)) * letterWidth + 8;
  const distance = ticks.length > 1 ? Math.abs(ticks[1].at - ticks[0].at) : Infinity;
  const stride = Math.ceil(longest / distance);
  // Round numbers stay: 0 rather than what is beside it.
  const zero = Math.max(0, ticks.findIndex(({ text }) => text === '0'));
  return ticks.filter((_, i) => (i - zero) % stride === 0);
}

const tip = el('div', { class: 'tip', hidden: true, role: 'status' });

/** Tells something of a mark while the pointer is on it. */
export function tell<T extends Element>(mark: T, lines: () => string[]): T {
  mark.addEventListener('pointerenter', () => {
    tip.replaceChildren(...lines().map((line) => el('div', {}, line)));
    tip.hidden = false;
    if (!tip.isConnected) document.body.append(tip);
  });
  mark.addEventListener('pointermove', (event) => {
    const { clientX, clientY } = event as PointerEvent;
    const isRight = clientX > innerWidth / 2;
    tip.style.left = isRight ? 'auto' : `${clientX + 14}px`;
    tip.style.right = isRight ? `${innerWidth - clientX + 14}px` : 'auto';
    tip.style.top = `${clientY + 14}px`;
  });
  mark.addEventListener('pointerleave', () => {
    tip.hidden = true;
  });
  return mark;
}
