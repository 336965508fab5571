// The command line that renders the same picture.

import { numberText } from './dom.js';

const quoted = (text) => (/^[\w@%+=:,./-]+$/.test(text) ? text : `'${text.replaceAll("'", String.raw`'\''`)}'`);

function valueText(control, value) {
  return Array.isArray(value) ? value.map(numberText).join(',') : numberText(value);
}

// A keyframe as an option; the frame's number may have a fraction, which is rounded.
function keyText(state, name, control, { time, value, out }, next) {
  const frame = state.clock.first + Math.round(time * state.clock.fps);
  const isHeld = out === 'hold' || next?.in === 'hold';
  return quoted(`${name}@${frame}=${isHeld ? 'hold:' : ''}${valueText(control, value)}`);
}

// Only what differs from the defaults.
export function commandOf(state) {
  const file = (id) => quoted(state.pictures.find((each) => each.id === id)?.file ?? '');
  const words = ['pbhost render', quoted(state.file)];
  if (state.picture !== null) words.push('-i', file(state.picture));
  else words.push('--size', `${state.width}x${state.height}`);
  const names = state.controls.map((control) => control.name.toLowerCase());
  const isPlain = (name) => names.filter((each) => each === name.toLowerCase()).length === 1 && !/[=@:.]/.test(name);
  for (const control of state.controls) {
    const name = isPlain(control.name) ? control.name : String(control.index);
    const value = state.values.get(control.index);
    if (control.kind === 'layer') {
      if (value !== null) words.push('--layer', `${control.index}=${file(value)}`);
    } else if (state.keyframes.has(control.index)) {
      state.keyframes.get(control.index).forEach((key, k, all) => words.push('--key', keyText(state, name, control, key, all[k + 1])));
    } else if (!state.isDefault(control)) {
      words.push('--set', quoted(`${name}=${valueText(control, value)}`));
    }
  }
  const isTimed = state.clock.isWanted || state.keyframes.size > 0;
  if (isTimed) {
    words.push('--frames', String(state.clock.first + Math.round(state.seconds * state.clock.fps)),
               '--first', String(state.clock.first), '--fps', numberText(state.clock.fps));
  } else if (state.seconds !== 0) {
    words.push('--time', numberText(state.seconds));
  }
  words.push('--depth', String(state.depth), '-o', `out${isTimed ? '.%04d' : ''}.${state.depth === 32 ? 'exr' : 'png'}`);
  return words.join(' ');
}
