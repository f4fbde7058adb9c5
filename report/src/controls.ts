// The controls of the page: look, toolbar, and those of the replay.

import type { MaterialKind, Run } from './data.ts';
import { choice, el, tick } from './dom.ts';
import { angleBetween, bodyRows, desktopRows, tripleAt, type Frame } from './pose.ts';
import type { Replay, View } from './replay.ts';
import type { AngleKind, Axis, LoadAxes, Store } from './store.ts';
import { bodyColour, chooseTheme, look, onThemeChange, type Choice } from './theme.ts';

/** Frames closer than this are one and the same to six digits, radians. */
const SAME_FRAME = 1e-4;

export function themeChoice(): HTMLElement {
  const options: [Choice, string][] = [
    ['auto', 'as the system'],
    ['light', 'light'],
    ['dark', 'dark'],
  ];
  return choice('Look', options, 'auto', (value) => chooseTheme(value as Choice));
}

/** What the charts show, and how. */
export function toolbar(store: Store): HTMLElement[] {
  const axes: [Axis, string][] = [];
  if (store.timeAscends) axes.push(['time', 'time']);
  if (store.stepAscends || !store.timeAscends) axes.push(['step', store.stepAscends ? 'step' : 'row of the log']);
  return [
    ...bodyChips(store),
    el('span', { class: 'spring' }),
    choice('Over', axes, store.axis, (value) => store.setAxis(value as Axis)),
    choice(
      'Loads in',
      [
        ['frame', "the body's axes"],
        ['global', 'global axes'],
      ],
      'frame',
      (value) => store.changeValues({ loadAxes: value as LoadAxes }),
    ),
    ...angleControls(store),
    el(
      'div',
      { class: 'buttons', role: 'group', 'aria-label': 'Zoom' },
      el(
        'button',
        { type: 'button', 'aria-label': 'Zoom in', onclick: () => store.zoom(0.5, store.xs()[store.row]) },
        '+',
      ),
      el(
        'button',
        { type: 'button', 'aria-label': 'Zoom out', onclick: () => store.zoom(2, store.xs()[store.row]) },
        '−',
      ),
      el('button', { type: 'button', onclick: () => store.resetRange() }, 'Whole run'),
    ),
  ];
}

function angleControls(store: Store): HTMLElement[] {
  const continuous = tick('Continuous angles', true, (isOn) => store.changeValues({ continuousAngles: isOn }));
  // Turns are continuous anyway.
  const showTick = () => (continuous.hidden = store.angleKind === 'turns');
  showTick();
  store.on('values', showTick);
  const kinds: [AngleKind, string][] = [
    ['turns', 'turns about the axes'],
    ['log', 'Phi, Theta, Psi of the log'],
  ];
  return [
    choice('Angles', kinds, store.angleKind, (value) => store.changeValues({ angleKind: value as AngleKind })),
    continuous,
  ];
}

function bodyChips(store: Store): HTMLElement[] {
  if (store.run.bodies.length < 2) return [];
  const chips = store.run.bodies.map((body, index) => {
    const chip = el(
      'button',
      {
        type: 'button',
        class: 'chip',
        'aria-pressed': String(store.shownBodies.has(index)),
        onclick: () => {
          store.showBody(index, !store.shownBodies.has(index));
          chip.setAttribute('aria-pressed', String(store.shownBodies.has(index)));
        },
      },
      el('span', { class: 'swatch' }),
      body.name,
    );
    const paint = () => chip.style.setProperty('--body', bodyColour(index));
    paint();
    onThemeChange(paint);
    return chip;
  });
  return [el('div', { class: 'chips', role: 'group', 'aria-label': 'Bodies in the charts' }, ...chips)];
}

/** Views and what the replay shows. */
export function viewControls(store: Store, replay: Replay): HTMLElement[] {
  const views: [View, string][] = [
    ['iso', 'Fit'],
    ['x', 'Along X'],
    ['y', 'Along Y'],
    ['z', 'Along Z'],
  ];
  const buttons = views.map(([view, text]) => el('button', { type: 'button', onclick: () => replay.look(view) }, text));
  const ticks = (['forces', 'torques', 'frames', 'names'] as const).map((what) =>
    tick(what[0].toUpperCase() + what.slice(1), replay.isShown(what), (isOn) => replay.show(what, isOn)),
  );
  const controls: HTMLElement[] = [
    el('div', { class: 'buttons', role: 'group', 'aria-label': 'View' }, ...buttons),
    ...ticks,
  ];
  if (replay.hasPoles) {
    const key = materialKey(store.run);
    controls.push(
      choice(
        'Colour',
        [
          ['poles', 'by pole'],
          ['bodies', 'by body'],
        ],
        replay.colouring,
        (value) => {
          replay.colouring = value as 'poles' | 'bodies';
          replay.restyle();
          key.hidden = replay.colouring === 'bodies';
        },
      ),
      key,
    );
  }
  if (framesDiffer(store.run)) {
    controls.push(
      choice(
        'Frame',
        [
          ['desktop', 'as solved'],
          ['body', 'as moved'],
        ],
        'desktop',
        (value) => store.changeValues({ frame: value as Frame }),
      ),
    );
  }
  return controls;
}

/** What the colours by pole stand for; empty where all is magnets. */
function materialKey(run: Run): HTMLElement {
  const entry = (kind: MaterialKind, title: string) => {
    const names = new Set(run.objects.flatMap((object) => (object.kind === kind && object.material) || []));
    const text = `${title}: ${[...names].join(', ')}`;
    return names.size > 0 && el('div', { class: kind }, el('span', { class: 'swatch' }), text);
  };
  const others = [entry('iron', 'Iron'), entry('other', 'Not magnetic')];
  const magnets = others.some(Boolean) && entry('magnet', 'Magnets, south and north');
  const key = el('div', { class: 'material-key' }, magnets, ...others);
  const paint = () => {
    for (const name of ['south', 'north', 'iron'] as const) key.style.setProperty(`--${name}`, look()[name]);
  };
  paint();
  onThemeChange(paint);
  return key;
}

function framesDiffer(run: Run): boolean {
  if (run.orientation === 'exact') return false;
  return run.bodies.some((body) => {
    for (let row = 0; row < run.rows; ++row) {
      const angles = tripleAt(body.angles, row);
      // Equal angles give equal frames; the usual case must be quick.
      if (angles[0] === angles[1]) continue;
      if (angleBetween(bodyRows(angles), desktopRows(angles)) > SAME_FRAME) return true;
    }
    return false;
  });
}
