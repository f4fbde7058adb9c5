// Elements without markup: every text from a log goes in as text and can never become an element or a script.

type Child = Node | string | null | false;
type Attributes = Record<string, string | number | boolean | null | ((event: Event) => void)>;

/** An element; attributes that begin with "on" are listeners, true and false set or leave out an attribute. */
export function el<K extends keyof HTMLElementTagNameMap>(
  tag: K,
  attributes: Attributes = {},
  ...children: Child[]
): HTMLElementTagNameMap[K] {
  const element = document.createElement(tag);
  for (const [name, value] of Object.entries(attributes)) {
    if (typeof value === 'function') element.addEventListener(name.slice(2), value);
    else if (value === true) element.setAttribute(name, '');
    else if (value !== false && value !== null) element.setAttribute(name, String(value));
  }
  for (const child of children) if (child !== null && child !== false) element.append(child);
  return element;
}

export function byId<T extends HTMLElement>(id: string): T {
  const element = document.getElementById(id);
  if (!element) throw new Error(`the page has no element "${id}"`);
  return element as T;
}

/** A labelled choice. */
export function choice(
  label: string,
  options: [value: string, text: string][],
  chosen: string,
  onChoice: (value: string) => void,
): HTMLLabelElement {
  const select = el('select', { onchange: () => onChoice(select.value) });
  for (const [value, text] of options) select.append(el('option', { value, selected: value === chosen }, text));
  return el('label', { class: 'choice' }, el('span', {}, label), select);
}

/** A labelled tick box. */
export function tick(label: string, isOn: boolean, onChange: (isOn: boolean) => void): HTMLLabelElement {
  const box = el('input', { type: 'checkbox', checked: isOn, onchange: () => onChange(box.checked) });
  return el('label', { class: 'tick' }, box, el('span', {}, label));
}
