// The panel of controls, in the order of the effect; the components of a vector form a group.

import { byId, element } from './dom.js';
import { pictureChoice, widgets } from './widgets.js';

// The name, which may be broken before a capital letter.
function breakable(name) {
  const parts = name.split(/(?<=[a-z])(?=[A-Z])/);
  return parts.flatMap((part, k) => (k === 0 ? [part] : [element('wbr'), part]));
}

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
        group = { name, set: element('fieldset', {}, element('legend', {}, name)) };
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
      type: 'button', className: 'icon diamond', on: { click: () => this.state.toggleKeyframe(control) } }, '◆');
    const update = () => {
      widget.update();
      reset.classList.toggle('unused', this.state.isDefault(control));
      if (control.kind === 'layer') return;
      const isHere = this.state.hasKeyframeHere(control);
      diamond.setAttribute('aria-label', `${control.name}: ${isHere ? 'remove the' : 'add a'} keyframe`);
      diamond.title = isHere ? 'Remove the keyframe at this time' : 'Add a keyframe at this time';
      diamond.setAttribute('aria-pressed', String(isHere));
      diamond.classList.toggle('animated', this.state.keyframes.has(control.index));
    };
    this.rows.push({ control, update });
    return element('div', { className: 'control', 'data-kind': control.kind, 'data-index': control.index },
                   diamond, label, widget.element, reset);
  }

  update(control = undefined) {
    for (const row of this.rows) if (!control || row.control === control) row.update();
  }
}
