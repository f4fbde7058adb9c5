// How far an axis goes.

/** Half a unit of the sixth digit, with the rounding of the comparison. */
const SIXTH_DIGIT = 5.1e-6;

/**
 * The range of an axis. Values that are one and the same but for rounding stand in the middle of a range of their size.
 * @param floor what varies by less than this is one and the same
 */
export function axisRange(min: number | null, max: number | null, floor: number): [number, number] {
  if (min === null || max === null || !Number.isFinite(min) || !Number.isFinite(max)) return [-1, 1];
  const middle = (min + max) / 2;
  const size = Math.abs(middle);
  const spread = (max - min) / 2;
  const ofSize = size > floor ? size / 2 : 1;
  const half = 1.06 * (spread > Math.max(floor, SIXTH_DIGIT * size) ? spread : ofSize);
  return [middle - half, middle + half];
}
