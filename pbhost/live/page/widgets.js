// The controls of each kind. A widget is made by a function (state, control) and has an "element"
// and a function "update", which shows the value of the state.

import { clamp, element, fillTrack, followPointer, numberText, parseNumber, stepFactor, toast } from './dom.js';

// Numbers.

// A step that suits the control: a hundredth of the slider's range, as a power of ten.
function stepOf(control) {
  if (control.kind === 'slider') return 1;
  if (control.kind === 'point' || control.kind === 'angle') return 1;
  const [low, high] = control.slider ?? control.range ?? [0, 100];
  return Math.max(1e-4, 10 ** Math.floor(Math.log10((high - low || 1) / 100)));
}

// Without the digits that the arithmetic adds.
const rounded = (number, control) =>
  control.kind === 'slider' ? Math.round(number) : Number(number.toFixed(5));

// While text is typed, the browser's own undo is for the typing.
function leaveUndoToTyping(field, isTyped) {
  field.addEventListener('keydown', (event) => {
    if ((event.ctrlKey || event.metaKey) && isTyped()) event.stopPropagation();
  });
}

// A text field for one number. `read` and `write` give and take it; `name` is for screen readers.
function numberField(control, { read, write, name }) {
  const field = element('input', { className: 'number', inputMode: 'decimal', 'aria-label': name,
                                   spellcheck: false });
  let isTyped = false; // a picture that arrives must not replace what is being typed
  field.addEventListener('input', () => (isTyped = true));
  const take = (number) => {
    if (numberText(number) === numberText(read())) return;
    write(number, false);
    if (Math.abs(number - read()) > 1e-4) toast(`${name}: the nearest possible value is ${numberText(read())}`);
  };
  const commit = () => {
    isTyped = false;
    const number = parseNumber(field.value);
    if (number !== undefined) take(number);
    else if (field.value.trim() !== '') toast(`“${field.value}” is not a number`);
    update();
  };
  const update = () => {
    if (!isTyped) field.value = numberText(read());
  };
  leaveUndoToTyping(field, () => isTyped);
  field.addEventListener('change', commit);
  field.addEventListener('focus', () => field.select());
  field.addEventListener('keydown', (event) => {
    const way = { ArrowUp: 1, ArrowDown: -1 }[event.key];
    if (event.key === 'Enter') {
      commit();
      field.select();
    } else if (event.key === 'Escape') {
      isTyped = false;
      update();
      field.blur();
    } else if (way) {
      event.preventDefault();
      write(rounded(read() + way * stepOf(control) * stepFactor(event), control), false);
      update();
    }
  });
  return { field, update };
}

// Dragging the label sideways changes the number.
function dragToChange(label, control, state, { read, write }) {
  label.classList.add('draggable');
  label.title = `${control.description}\nDrag to change; Shift: large steps, Alt: small steps`.trim();
  followPointer(label, (down) => {
    let last = down.clientX, number = read();
    return (move) => {
      number += (move.clientX - last) * stepOf(control) * stepFactor(move);
      last = move.clientX;
      write(rounded(number, control), true);
    };
  }, () => state.changed('rest'));
}

function slider(state, control, label) {
  const access = {
    read: () => state.value(control),
    write: (number, moving) => state.set(control, rounded(number, control), moving),
  };
  const { field, update: updateField } = numberField(control, {
    ...access, write: (number, moving) => state.set(control, number, moving), name: control.name });
  const [low, high] = control.slider ?? control.range ?? [0, 100];
  const range = element('input', { type: 'range', min: low, max: high, step: 'any', 'aria-label': control.name });
  range.addEventListener('input', () => {
    const digits = 10 ** Math.max(0, Math.ceil(-Math.log10(stepOf(control))) + (control.kind === 'slider' ? 0 : 1));
    access.write(Math.round(range.valueAsNumber * digits) / digits, true);
  });
  range.addEventListener('change', () => state.changed('rest'));
  range.addEventListener('keydown', (event) => {
    const way = { ArrowRight: 1, ArrowUp: 1, ArrowLeft: -1, ArrowDown: -1 }[event.key];
    if (!way) return;
    event.preventDefault();
    access.write(access.read() + way * stepOf(control) * stepFactor(event), false);
  });
  dragToChange(label, control, state, access);
  const update = () => {
    const value = access.read();
    range.value = value;
    fillTrack(range);
    range.setAttribute('aria-valuetext', numberText(value));
    updateField();
  };
  const unit = { percent: '%', pixel: 'px' }[control.display] ?? '';
  return { element: element('div', { className: 'numeric' }, range, field,
                            element('span', { className: 'unit' }, unit)), update };
}

function angle(state, control, label) {
  const access = {
    read: () => state.value(control),
    write: (number, moving) => state.set(control, rounded(number, control), moving),
  };
  const { field, update: updateField } = numberField(control, { ...access, name: `${control.name}, degrees` });
  const hand = element('span', { className: 'hand' });
  const dial = element('div', { className: 'dial', role: 'slider', tabIndex: 0,
                                'aria-label': control.name, title: 'Drag around the centre' }, hand);
  // 0 degrees is at the top, as in the host; turns are counted.
  const angleOf = (event) => {
    const box = dial.getBoundingClientRect();
    const x = event.clientX - box.left - box.width / 2, y = event.clientY - box.top - box.height / 2;
    return (Math.atan2(x, -y) * 180) / Math.PI;
  };
  followPointer(dial, (down) => {
    let last = angleOf(down), number = access.read();
    dial.focus();
    return (move) => {
      const now = angleOf(move);
      number += ((now - last + 540) % 360) - 180;
      last = now;
      const snap = move.shiftKey ? 15 : 0.5;
      access.write(Math.round(number / snap) * snap, true);
    };
  }, () => state.changed('rest'));
  dial.addEventListener('keydown', (event) => {
    const way = { ArrowRight: 1, ArrowUp: 1, ArrowLeft: -1, ArrowDown: -1 }[event.key];
    if (!way) return;
    event.preventDefault();
    access.write(access.read() + way * stepFactor(event), false);
  });
  dragToChange(label, control, state, access);
  const turns = element('span', { className: 'unit' });
  const update = () => {
    const value = access.read();
    hand.style.transform = `rotate(${value}deg)`;
    dial.setAttribute('aria-valuenow', String(value));
    dial.setAttribute('aria-valuetext', `${numberText(value)} degrees`);
    if (control.range) {
      dial.setAttribute('aria-valuemin', control.range[0]);
      dial.setAttribute('aria-valuemax', control.range[1]);
    }
    const count = Math.trunc(value / 360);
    turns.textContent = count === 0 ? '°' : `° (${count}×)`;
    updateField();
  };
  return { element: element('div', { className: 'numeric' }, dial, field, turns), update };
}

function point(state, control) {
  const fields = ['x', 'y'].map((axis, k) => numberField(control, {
    read: () => state.value(control)[k],
    write: (number, moving) => state.set(control, state.value(control).with(k, number), moving),
    name: `${control.name}, ${axis}`,
  }));
  return {
    element: element('div', { className: 'numeric' },
                     element('span', { className: 'unit' }, 'x'), fields[0].field,
                     element('span', { className: 'unit' }, 'y'), fields[1].field,
                     element('span', { className: 'unit', title: 'Drag the point in the picture' }, 'px')),
    update: () => fields.forEach((each) => each.update()),
  };
}

// Colours.

const hexOf = (color) => '#' + color.slice(0, 3)
  .map((part) => Math.round(clamp(part, 0, 1) * 255).toString(16).padStart(2, '0')).join('');

function colorOf(text) {
  let digits = text.trim().replace(/^#/, '');
  if (/^[0-9a-f]{3}$/i.test(digits)) digits = digits.replace(/./g, '$&$&');
  if (!/^[0-9a-f]{6}$/i.test(digits)) return undefined;
  return [0, 2, 4].map((at) => Number((parseInt(digits.slice(at, at + 2), 16) / 255).toFixed(6)));
}

function color(state, control) {
  const write = (rgb, moving) => state.set(control, [...rgb, state.value(control)[3]], moving);
  const picker = element('input', { type: 'color', 'aria-label': `${control.name}, picker` });
  picker.addEventListener('input', () => write(colorOf(picker.value), true));
  picker.addEventListener('change', () => state.changed('rest'));
  const hex = element('input', { className: 'hex', 'aria-label': `${control.name}, hexadecimal`, spellcheck: false });
  let isTyped = false;
  hex.addEventListener('input', () => (isTyped = true));
  leaveUndoToTyping(hex, () => isTyped);
  hex.addEventListener('change', () => {
    isTyped = false;
    const rgb = colorOf(hex.value);
    if (rgb) write(rgb, false);
    else toast(`“${hex.value}” is not a colour: write #rrggbb`);
    update();
  });
  const alpha = numberField({ kind: 'fixed slider', slider: [0, 100] }, {
    read: () => Math.round(state.value(control)[3] * 10000) / 100,
    write: (number, moving) => state.set(control, state.value(control).with(3, clamp(number, 0, 100) / 100), moving),
    name: `${control.name}, alpha in percent`,
  });
  const update = () => {
    const text = hexOf(state.value(control));
    if (picker.value !== text) picker.value = text;
    if (!isTyped) hex.value = text;
    alpha.update();
  };
  return { element: element('div', { className: 'numeric' }, picker, hex,
                            element('span', { className: 'unit' }, 'α'), alpha.field,
                            element('span', { className: 'unit' }, '%')), update };
}

// Choices.

function popup(state, control) {
  const select = element('select', { 'aria-label': control.name });
  control.choices.forEach((text, k) => select.append(element('option', { value: k + 1 }, text)));
  select.addEventListener('change', () => state.set(control, Number(select.value)));
  return { element: select, update: () => (select.value = state.value(control)) };
}

function checkbox(state, control) {
  const box = element('input', { type: 'checkbox', 'aria-label': control.name });
  box.addEventListener('change', () => state.set(control, Number(box.checked)));
  return { element: element('label', { className: 'check' }, box, control.label ?? ''),
           update: () => (box.checked = state.value(control) !== 0) };
}

// A choice of the pictures, and a place to drop a file. `addFile` uploads it.
export function pictureChoice({ name, read, write, state, addFile }) {
  const select = element('select', { 'aria-label': name });
  const input = element('input', { type: 'file', hidden: true, accept: 'image/*,.exr,.tif,.tiff,.dpx,.hdr', 'aria-label': `${name}, file` });
  const use = async (file) => {
    const id = file && (await addFile(file));
    if (id !== undefined) write(id);
  };
  input.addEventListener('change', () => use(input.files[0]));
  const browse = element('button', { type: 'button', className: 'icon', title: 'Choose a file, or drop one here',
                                     'aria-label': `${name}: choose a file`, on: { click: () => input.click() } }, '…');
  const place = element('div', { className: 'numeric drop' }, select, browse, input);
  acceptDrops(place, use);
  select.addEventListener('change', () => write(select.value === '' ? null : Number(select.value)));
  const update = () => {
    select.replaceChildren(element('option', { value: '' }, 'none (transparent)'),
                           ...state.pictures.map((each) => element('option', { value: each.id, title: each.file }, each.name)));
    select.value = read() ?? '';
  };
  return { element: place, update };
}

export function acceptDrops(place, use) {
  place.addEventListener('dragover', (event) => {
    event.preventDefault();
    event.stopPropagation();
    place.classList.add('over');
  });
  place.addEventListener('dragleave', () => place.classList.remove('over'));
  place.addEventListener('drop', (event) => {
    event.preventDefault();
    event.stopPropagation();
    place.classList.remove('over');
    use(event.dataTransfer.files[0]);
  });
}

export const widgets = { slider, 'fixed slider': slider, angle, point, color, popup, checkbox };
