// Fewer points for the same picture.

/**
 * Rows of a curve through points in the plane that are worth drawing: a row is left out when it lies within a pixel of
 * the last one that was kept. What is left differs from the whole by less than a pixel; gaps and the ends stay.
 */
export function thinCurve(xs: ArrayLike<number>, ys: ArrayLike<number>, xPixel: number, yPixel: number): number[] {
  const kept: number[] = [];
  let last = -1;
  let inGap = true;
  for (let row = 0; row < xs.length; ++row) {
    if (Number.isNaN(xs[row]) || Number.isNaN(ys[row])) {
      if (!inGap) {
        // The end of a stretch, then the gap itself.
        if (kept[kept.length - 1] !== row - 1) kept.push(row - 1);
        kept.push(row);
      }
      inGap = true;
      continue;
    }
    const isFar = inGap || Math.abs(xs[row] - xs[last]) >= xPixel || Math.abs(ys[row] - ys[last]) >= yPixel;
    if (isFar) {
      kept.push(row);
      last = row;
    }
    inGap = false;
  }
  if (!inGap && kept[kept.length - 1] !== xs.length - 1) kept.push(xs.length - 1);
  return kept;
}

/** Smallest and largest number and their rows; null when there is none. */
export function extremesOf(
  values: ArrayLike<number>,
): { min: number; minRow: number; max: number; maxRow: number } | null {
  let minRow = -1;
  let maxRow = -1;
  for (let row = 0; row < values.length; ++row) {
    const value = values[row];
    if (Number.isNaN(value)) continue;
    if (minRow < 0 || value < values[minRow]) minRow = row;
    if (maxRow < 0 || value > values[maxRow]) maxRow = row;
  }
  return minRow < 0 ? null : { min: values[minRow], minRow, max: values[maxRow], maxRow };
}

/** The row nearest to a point, distances measured in pixels; -1 when there is none. */
export function nearestRow(
  xs: ArrayLike<number>,
  ys: ArrayLike<number>,
  x: number,
  y: number,
  xPixel: number,
  yPixel: number,
): number {
  let best = -1;
  let bestDistance = Infinity;
  for (let row = 0; row < xs.length; ++row) {
    const distance = ((xs[row] - x) / xPixel) ** 2 + ((ys[row] - y) / yPixel) ** 2;
    if (distance < bestDistance) {
      bestDistance = distance;
      best = row;
    }
  }
  return best;
}

/** The row whose value in an ascending column is nearest; the later one of two as near. */
export function rowNear(ascending: ArrayLike<number>, value: number): number {
  let low = 0;
  let high = ascending.length - 1;
  while (high - low > 1) {
    const middle = (low + high) >> 1;
    if (ascending[middle] <= value) low = middle;
    else high = middle;
  }
  return value - ascending[low] < ascending[high] - value ? low : high;
}
