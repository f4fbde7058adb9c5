// Numbers and words for people.

const MINUS = '\u2212';

/** Up to six significant digits, as many as the log has; four where the number needs a power of ten. */
export function number(value: number, digits = 6): string {
  if (!Number.isFinite(value)) return '–';
  if (value === 0) return '0';
  const magnitude = Math.abs(value);
  const text =
    magnitude >= 1e-4 && magnitude < 1e7
      ? String(Number(value.toPrecision(digits)))
      : value
          .toExponential(Math.min(digits, 4) - 1)
          .replace(/\.?0+e/, 'e')
          .replace('e+', 'e');
  return text.replace(/-/g, MINUS);
}

export function count(value: number, singular: string, plural = singular + 's'): string {
  return `${value.toLocaleString('en-US').replace(/,/g, '\u202f')} ${value === 1 ? singular : plural}`;
}
