// Numbers and words for people.

const MINUS = '\u2212';

/**
 * Up to six significant digits, as many as the log has; four where the number needs a power of ten.
 * @param rounding what is smaller than this is rounding, and shown as 0 (`Store.info`, `Store.roundingOf`)
 */
export function number(value: number, rounding = 0, digits = 6): string {
  if (!Number.isFinite(value)) return '–';
  const magnitude = Math.abs(value);
  if (magnitude === 0 || magnitude < rounding) return '0';
  return isPlain(magnitude) ? plain(value, digits) : scientific(value, Math.min(digits, 4));
}

/** The labels of an axis that has one at every `increment`: digits enough to tell neighbours apart, all in one form. */
export function tickLabels(values: readonly (number | null)[], increment: number): string[] {
  const largest = values.reduce<number>((most, value) => Math.max(most, Math.abs(value ?? 0)), 0);
  const form = isPlain(largest) ? plain : scientific;
  const power = (value: number) => Math.floor(Math.log10(value));
  return values.map((value) => {
    if (value === null) return '';
    const magnitude = Math.abs(value);
    // Sums of increments miss 0 by their rounding.
    if (magnitude < increment / 1000) return '0';
    // One more than the increment's first digit, for increments such as 2.5.
    return form(value, Math.min(Math.max(power(magnitude) - power(increment) + 2, 1), 15));
  });
}

const isPlain = (magnitude: number) => magnitude >= 1e-4 && magnitude < 1e7;

function plain(value: number, digits: number): string {
  return String(Number(value.toPrecision(digits))).replace(/-/g, MINUS);
}

function scientific(value: number, digits: number): string {
  return value
    .toExponential(digits - 1)
    .replace(/(\.\d*?)0+e/, '$1e')
    .replace('.e', 'e')
    .replace('e+', 'e')
    .replace(/-/g, MINUS);
}

export function count(value: number, singular: string, plural = singular + 's'): string {
  return `${value.toLocaleString('en-US').replace(/,/g, '\u202f')} ${value === 1 ? singular : plural}`;
}
