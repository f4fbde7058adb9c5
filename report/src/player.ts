// Play, pause, scrub: the buttons under the replay and the clock behind them.

import { rowNear } from './decimate.ts';
import { el, choice } from './dom.ts';
import { number } from './format.ts';
import type { Store } from './store.ts';

const ROWS_PER_SECOND = 30;

export class Player {
  readonly element: HTMLElement;
  private readonly playButton = el('button', { type: 'button', class: 'play', onclick: () => this.toggle() });
  private readonly slider: HTMLInputElement;
  private readonly readout = el('output', { class: 'time-readout' });
  /** What the clock counts: the run's time, or rows where times do not ascend. */
  private readonly clock: Float64Array;
  private duration: number;
  private startedAt = 0;
  private startedFrom = 0;

  constructor(private readonly store: Store) {
    const { run } = store;
    this.clock = store.timeAscends
      ? run.time!
      : Float64Array.from({ length: run.rows }, (_, row) => row / ROWS_PER_SECOND);
    const span = this.span();
    this.duration = span >= 4 && span <= 20 ? span : 8;
    this.slider = el('input', {
      type: 'range',
      min: 0,
      max: Math.max(run.rows - 1, 0),
      step: 1,
      value: 0,
      'aria-label': 'Step',
      oninput: () => {
        store.setPlaying(false);
        store.setRow(Number(this.slider.value));
      },
    });
    const durations: [string, string][] = [2, 4, 8, 16, 32, 64].map((s) => [String(s), `${s} s`]);
    durations.push([
      String(span),
      store.timeAscends ? `real time (${number(span, 0, 3)} s)` : `${ROWS_PER_SECOND} rows a second`,
    ]);
    this.element = el(
      'div',
      { class: 'player' },
      el('button', { type: 'button', 'aria-label': 'One step back', onclick: () => this.step(-1) }, '◂'),
      this.playButton,
      el('button', { type: 'button', 'aria-label': 'One step forward', onclick: () => this.step(1) }, '▸'),
      this.slider,
      this.readout,
      choice('Play in', durations, String(this.duration), (value) => {
        this.duration = Number(value);
        this.restart();
      }),
    );
    store.on('row', () => this.showRow());
    store.on('play', () => this.onPlay());
    this.showRow();
    this.showState();
  }

  private span(): number {
    return this.clock.length > 1 ? this.clock[this.clock.length - 1] - this.clock[0] : 0;
  }

  private toggle(): void {
    this.store.setPlaying(!this.store.isPlaying);
  }

  private step(by: number): void {
    this.store.setPlaying(false);
    this.store.setRow(this.store.row + by);
  }

  private showRow(): void {
    const { run, row } = this.store;
    const time = run.time ? `${number(run.time[row])} s` : '';
    const step = `step ${number(run.step[row])}`;
    this.slider.value = String(row);
    this.slider.setAttribute('aria-valuetext', [time, step].filter(Boolean).join(', '));
    this.readout.replaceChildren(...(time ? [el('strong', {}, time), ' ', step] : [step]));
  }

  private showState(): void {
    const { isPlaying } = this.store;
    this.playButton.textContent = isPlaying ? 'Pause' : 'Play';
    this.playButton.setAttribute('aria-pressed', String(isPlaying));
  }

  private onPlay(): void {
    this.showState();
    if (!this.store.isPlaying) return;
    if (this.store.row >= this.store.run.rows - 1) this.store.setRow(0);
    this.restart();
    requestAnimationFrame(() => this.tick());
  }

  private restart(): void {
    this.startedAt = performance.now();
    this.startedFrom = this.clock[this.store.row] ?? 0;
  }

  private tick(): void {
    if (!this.store.isPlaying) return;
    const last = this.clock[this.clock.length - 1];
    const now = this.startedFrom + (((performance.now() - this.startedAt) / 1000) * this.span()) / this.duration;
    this.store.setRow(now >= last ? this.clock.length - 1 : rowNear(this.clock, now));
    if (now >= last) this.store.setPlaying(false);
    else requestAnimationFrame(() => this.tick());
  }
}
