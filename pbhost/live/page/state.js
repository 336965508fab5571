// The values of the controls and what else makes a picture. Kept for a reload of the page.

import { clamp } from './dom.js';

const storageKey = 'tvelmarondine-live';
const keyOf = (control) => `${control.kind} ${control.name}`;
const isLayer = (control) => control.kind === 'layer';
// Values between two of these do not exist, so their keyframes are always held.
const isDiscrete = (control) => control.kind === 'checkbox' || control.kind === 'popup';

export class State extends EventTarget {
  controls = [];
  values = new Map(); // by the control's index; of layers the number of a picture or null
  keyframes = new Map(); // by the control's index: lists of { time, value, in, out }
  animated = {}; // the values of controls with keyframes at the current time
  picture = null; // the layer's picture
  depth = undefined; // bits; undefined: the server decides
  seconds = 0;
  pictures = [];
  clock = { fps: 24, first: 0, last: 240, isWanted: false };
  kept = undefined; // what `remember` returned

  constructor() {
    super();
    this.stored = JSON.parse(sessionStorage.getItem(storageKey) ?? 'null');
  }

  // Takes the reply to a load. Changed values stay where a control of that name and kind still exists.
  takeLoaded(loaded, keepsValues) {
    const old = keepsValues ? this.remember() : this.stored ?? { values: [] };
    Object.assign(this, { controls: loaded.controls, depth: loaded.depth, picture: loaded.picture,
                          width: loaded.width, height: loaded.height, inputs: loaded.inputs,
                          file: loaded.file });
    if (!keepsValues) this.seconds = this.stored?.seconds ?? loaded.seconds;
    this.stored = null;
    this.values.clear();
    this.keyframes.clear();
    for (const control of this.controls) {
      this.values.set(control.index, isLayer(control) ? control.value : numeric(control.value));
      if (control.keyframes.length > 0) this.keyframes.set(control.index, control.keyframes);
    }
    this.recall(old);
    this.changed('load');
  }

  remember() {
    return {
      values: this.controls.map((control) => ({
        key: keyOf(control),
        value: this.values.get(control.index),
        isDefault: this.isDefault(control), // then it follows the default, which can change
        keyframes: this.keyframes.get(control.index),
      })),
      picture: this.picture,
      depth: this.depth,
      seconds: this.seconds,
      clock: this.clock,
    };
  }

  recall(old) {
    const known = new Map(old.values.map((each) => [each.key, each]));
    for (const control of this.controls) {
      const each = known.get(keyOf(control));
      if (!each || !isPossible(control, each.value, this.pictures)) continue;
      this.values.set(control.index, each.isDefault ? defaultOf(control) : fitting(control, each.value));
      if (each.keyframes) this.keyframes.set(control.index, each.keyframes);
      else this.keyframes.delete(control.index);
    }
  }

  // The value that is shown: of a control with keyframes that at the current time.
  value(control) {
    const animated = this.keyframes.has(control.index) && this.animated[control.index];
    return animated !== undefined && animated !== false ? numeric(animated)
                                                         : this.values.get(control.index);
  }

  // `moving`: another value will follow soon.
  set(control, value, moving = false) {
    const fit = fitting(control, value);
    this.values.set(control.index, fit);
    if (this.keyframes.has(control.index)) this.setKeyframe(control, fit);
    this.changed('value', moving, control);
  }

  // Changes the keyframe at the current time or adds one. Without `out`, an existing one stays as it is.
  setKeyframe(control, value, out = undefined) {
    const here = this.keyframeHere(control) ?? { in: 'linear', out: isDiscrete(control) ? 'hold' : 'linear' };
    const list = this.otherKeyframes(control);
    list.push({ time: this.seconds, value, in: here.in, out: out ?? here.out });
    list.sort((a, b) => a.time - b.time);
    this.keyframes.set(control.index, list);
    this.animated[control.index] = value;
  }

  keyframeHere(control) {
    return this.keyframes.get(control.index)?.find((each) => isAt(each, this.seconds));
  }

  otherKeyframes(control) {
    return (this.keyframes.get(control.index) ?? []).filter((each) => !isAt(each, this.seconds));
  }

  // From no keyframe at the current time to an interpolated one, a held one, and back.
  cycleKeyframe(control) {
    const value = this.value(control);
    const here = this.keyframeHere(control);
    if (!here) this.setKeyframe(control, value);
    else if (here.out !== 'hold') this.setKeyframe(control, value, 'hold');
    else this.removeKeyframe(control, value);
    this.changed('value', false, control);
  }

  removeKeyframe(control, value) {
    const rest = this.otherKeyframes(control);
    if (rest.length > 0) this.keyframes.set(control.index, rest);
    else this.keyframes.delete(control.index);
    this.values.set(control.index, value);
  }

  // The nearest frame's time.
  setSeconds(seconds, moving) {
    this.seconds = Math.max(0, Math.round(seconds * this.clock.fps)) / this.clock.fps;
    this.changed('time', moving);
  }

  // The pictures in use that the server deletes when it ends.
  temporaryPictures() {
    const used = [this.picture, ...this.controls.filter(isLayer).map((control) => this.values.get(control.index))];
    return this.pictures.filter((each) => each.isTemporary && used.includes(each.id));
  }

  isDefault(control) {
    return !this.keyframes.has(control.index) &&
           JSON.stringify(this.values.get(control.index)) === JSON.stringify(defaultOf(control));
  }

  reset(controls) {
    for (const control of controls) {
      this.keyframes.delete(control.index);
      this.values.set(control.index, defaultOf(control));
    }
    this.changed('value');
  }

  changed(what, moving = false, control = undefined) {
    this.dispatchEvent(new CustomEvent('change', { detail: { what, moving, control } }));
    clearTimeout(this.storing);
    this.storing = setTimeout(() => this.store(), moving ? 300 : 0);
  }

  store() {
    sessionStorage.setItem(storageKey, JSON.stringify(this.remember()));
  }

  // The part of a request that describes the picture.
  request() {
    const controls = [], layers = {};
    for (const control of this.controls) {
      const value = this.values.get(control.index);
      if (isLayer(control)) layers[control.index] = value;
      else controls.push({ index: control.index, kind: control.kind, value,
                           keyframes: this.keyframes.get(control.index) ?? [] });
    }
    return { controls, layers, seconds: this.seconds };
  }
}

// Keyframes closer than half a millisecond are at the same time.
const isAt = (keyframe, seconds) => Math.abs(keyframe.time - seconds) < 0.0005;

// Checkboxes are 0 and 1.
const numeric = (value) => (typeof value === 'boolean' ? Number(value) : value);

export const defaultOf = (control) => (isLayer(control) ? null : numeric(control.default));

function isPossible(control, value, pictures) {
  if (isLayer(control)) return value === null || pictures.some((each) => each.id === value);
  return Array.isArray(value) === Array.isArray(control.value);
}

// What a control without a range can store.
const storable = [-32768, 32767.9999];

// The nearest value that the control can have. The default may be outside its range.
function fitting(control, value) {
  if (isLayer(control) || JSON.stringify(value) === JSON.stringify(defaultOf(control))) return value;
  const fit = (number) => clamp(control.kind === 'slider' ? Math.round(number) : number, ...(control.range ?? storable));
  return Array.isArray(value) ? value.map(fit) : fit(value);
}
