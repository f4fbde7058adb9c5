// Where names stand in a picture.

/** Pixels from the upper left corner of the picture. */
export interface Box {
  left: number;
  top: number;
  width: number;
  height: number;
}

/** A label's box, and where it went last: -1 up, 1 down. */
export interface Label extends Box {
  side: number;
}

const GAP = 2;

/**
 * Moves labels into the picture, and up or down off each other and off what is taken, each by as little as it takes. A
 * label stays on its side while the other one does not save its height, so that it does not jump back and forth
 * while bodies pass each other.
 */
export function placeLabels(wanted: Label[], picture: { width: number; height: number }, taken: Box[]): Label[] {
  const all = [...taken];
  return wanted.map(({ left, top, width, height, side }) => {
    const lowest = picture.height - height - GAP;
    const x = Math.max(GAP, Math.min(left, picture.width - width - GAP));
    const home = Math.max(GAP, Math.min(top, lowest));
    const beside = all.filter((other) => other.left < x + width && x < other.left + other.width);
    const cost = (y: number) => Math.abs(y - home) + (Math.sign(y - home) === -side ? height : 0);
    const [y = home] = [home, ...beside.flatMap((other) => [other.top - height - GAP, other.top + other.height + GAP])]
      .filter((y) => y >= GAP && y <= lowest)
      .filter((y) => beside.every((other) => y >= other.top + other.height || y + height <= other.top))
      .sort((a, b) => cost(a) - cost(b));
    const label = { left: x, top: y, width, height, side: Math.sign(y - home) || side };
    all.push(label);
    return label;
  });
}
