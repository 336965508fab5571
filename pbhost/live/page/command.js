// The command line that renders the same picture.

import { numberText } from './dom.js';
import { defaultOf } from './state.js';

const quoted = (text) => (/^[\w@%+=:,./-]+$/.test(text) ? text : `'${text.replaceAll("'", String.raw`'\''`)}'`);

function valueText(control, value) {
  return Array.isArray(value) ? value.map(numberText).join(',') : numberText(value);
}

// Only what differs from the defaults. A control with keyframes has its value at the time.
export function commandOf(state) {
  const file = (id) => quoted(state.pictures.find((each) => each.id === id)?.file ?? '');
  const words = ['pbhost render', quoted(state.file)];
  if (state.picture !== null) words.push('-i', file(state.picture));
  else words.push('--size', `${state.width}x${state.height}`);
  const names = state.controls.map((control) => control.name.toLowerCase());
  for (const control of state.controls) {
    const value = state.value(control);
    if (control.kind === 'layer') {
      if (value !== null) words.push('--layer', `${control.index}=${file(value)}`);
      continue;
    }
    if (JSON.stringify(value) === JSON.stringify(defaultOf(control))) continue;
    const isUnique = names.filter((name) => name === control.name.toLowerCase()).length === 1 && !control.name.includes('=');
    words.push('--set', quoted(`${isUnique ? control.name : control.index}=${valueText(control, value)}`));
  }
  if (state.seconds !== 0) words.push('--time', numberText(state.seconds));
  words.push('--depth', String(state.depth), '-o', state.depth === 32 ? 'out.exr' : 'out.png');
  return words.join(' ');
}
