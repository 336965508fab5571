// The values of the controls and what else makes a picture. Kept for a reload of the page.

const storageKey = 'tvelmarondine-live';
const keyOf = (control) => `${control.kind} ${control.name}`;
const isLayer = (control) => control.kind === 'layer';

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

  // Takes the reply to a load. Values stay where a control of that name and kind still exists.
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
        keyframes: this.keyframes.get(control.index),
      })),
      picture: this.picture,
      depth: this.depth,
      seconds: this.seconds,
    };
  }

  recall(old) {
    const known = new Map(old.values.map((each) => [each.key, each]));
    for (const control of this.controls) {
      const each = known.get(keyOf(control));
      if (!each || !isPossible(control, each.value, this.pictures)) continue;
      this.values.set(control.index, fitting(control, each.value));
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

  setKeyframe(control, value) {
    const list = (this.keyframes.get(control.index) ?? []).filter((each) => !isAt(each, this.seconds));
    list.push({ time: this.seconds, value, in: 'linear', out: 'linear' });
    list.sort((a, b) => a.time - b.time);
    this.keyframes.set(control.index, list);
    this.animated[control.index] = value;
  }

  hasKeyframeHere(control) {
    return (this.keyframes.get(control.index) ?? []).some((each) => isAt(each, this.seconds));
  }

  toggleKeyframe(control) {
    const value = this.value(control);
    if (!this.hasKeyframeHere(control)) {
      this.setKeyframe(control, value);
    } else {
      const rest = this.keyframes.get(control.index).filter((each) => !isAt(each, this.seconds));
      if (rest.length > 0) this.keyframes.set(control.index, rest);
      else this.keyframes.delete(control.index);
      this.values.set(control.index, value);
    }
    this.changed('value', false, control);
  }

  setSeconds(seconds, moving) {
    this.seconds = Math.max(0, seconds);
    this.changed('time', moving);
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

// The value within the range that can be typed. The default may be outside.
function fitting(control, value) {
  if (isLayer(control) || !control.range || JSON.stringify(value) === JSON.stringify(defaultOf(control)))
    return value;
  const [low, high] = control.range;
  const limit = (number) => Math.min(Math.max(number, low), high);
  return Array.isArray(value) ? value.map(limit) : limit(value);
}
