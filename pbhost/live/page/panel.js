// The panel of controls, in the order of the effect; the components of a vector form a group.

import { byId, element } from './dom.js';
import { pictureChoice, widgets } from './widgets.js';

// The name, which may be broken before a capital letter and after an underscore.
function breakable(name) {
  const parts = name.split(/(?<=[a-z])(?=[A-Z])|(?<=_)/);
  return parts.flatMap((part, k) => (k === 0 ? [part] : [element('wbr'), part]));
}

// What the button does, from each state of the keyframe at the current time.
const keyframeSteps = {
  none: { action: 'add a keyframe', title: 'Add a keyframe at this time', sign: '◆' },
  linear: { action: 'hold the keyframe', title: 'Keyframe, interpolated to the next one. Click: hold its value until then', sign: '◆' },
  hold: { action: 'remove the held keyframe', title: 'Held keyframe: the value stays until the next one. Click: remove it', sign: '■' },
};

const groupName = (control) => /^(.+)\[\d+\]$/.exec(control.name)?.[1];

export class Panel {
  // `addFile` uploads a picture and returns its number.
  constructor(state, { addFile, choosePicture }) {
    Object.assign(this, { state, addFile, choosePicture });
    this.rows = [];
  }

  build() {
    this.rows = [];
    const form = byId('controls');
    form.replaceChildren();
    if (this.state.inputs > 0) form.append(this.layerRow());
    let group;
    for (const control of this.state.controls) {
      const name = groupName(control);
      if (name === undefined) {
        group = undefined;
        form.append(this.row(control, control.name));
        continue;
      }
      if (group?.name !== name) {
        group = { name, set: element('fieldset', {}, element('legend', { title: control.description }, name)) };
        form.append(group.set);
      }
      group.set.append(this.row(control, control.name.slice(name.length)));
    }
    if (form.children.length === 0)
      form.append(element('p', { className: 'empty' }, 'This kernel has no controls.'));
    this.update();
  }

  layerRow() {
    const widget = pictureChoice({
      name: 'Layer', state: this.state, addFile: this.addFile,
      read: () => this.state.picture, write: this.choosePicture,
    });
    this.rows.push({ update: widget.update });
    return element('div', { className: 'control' }, element('span', { className: 'name' }, 'Layer'), widget.element);
  }

  row(control, text) {
    const label = element('span', { className: 'name' }, ...breakable(text));
    const widget = control.kind === 'layer'
      ? pictureChoice({ name: control.name, state: this.state, addFile: this.addFile,
                        read: () => this.state.value(control),
                        write: (id) => this.state.set(control, id) })
      : widgets[control.kind](this.state, control, label);
    const reset = element('button', { type: 'button', className: 'icon reset', title: 'To the default',
                                      'aria-label': `${control.name}: to the default`,
                                      on: { click: () => this.state.reset([control]) } }, '↺');
    const diamond = control.kind === 'layer' ? element('span') : element('button', {
      type: 'button', className: 'icon diamond', on: { click: () => this.state.cycleKeyframe(control) } });
    const update = () => {
      widget.update();
      reset.classList.toggle('unused', this.state.isDefault(control));
      if (control.kind === 'layer') return;
      const here = this.state.keyframeHere(control);
      const { action, title, sign } = keyframeSteps[here?.out ?? 'none'];
      diamond.setAttribute('aria-label', `${control.name}: ${action}`);
      diamond.setAttribute('aria-pressed', String(here !== undefined));
      Object.assign(diamond, { title, textContent: sign });
      diamond.classList.toggle('animated', this.state.keyframes.has(control.index));
    };
    this.rows.push({ control, update });
    return element('div', { className: 'control', title: control.description, 'data-kind': control.kind, 'data-index': control.index },
                   diamond, label, widget.element, reset);
  }

  update(control = undefined) {
    for (const row of this.rows) if (!control || row.control === control) row.update();
  }
}
