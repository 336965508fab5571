// The picture: zoom, pan, comparison with another picture, handles of points, values of pixels.

import { byId, clamp, element, followPointer, stepFactor } from './dom.js';
import { draw } from './renderer.js';

const zoomStep = 1.2;
const smallestZoom = 0.02, largestZoom = 64;

export class Stage {
  // `onPixel` is called with the pixel under the pointer, or nothing.
  constructor(state, { onPixel }) {
    this.state = state;
    this.onPixel = onPixel;
    this.stage = byId('stage');
    this.sheet = byId('sheet');
    this.result = byId('result');
    this.preview = byId('preview');
    this.other = byId('other');
    this.isFitted = true;
    this.scale = 1;
    this.x = this.y = 0; // of the picture's corner, in pixels of the screen
    this.wipeAt = 0.5;
    this.handles = new Map(); // by the control's index
    new ResizeObserver(() => (this.isFitted ? this.fit() : this.place())).observe(this.stage);
    this.listen();
    this.listenToWipe();
  }

  listen() {
    this.stage.addEventListener('wheel', (event) => {
      event.preventDefault();
      this.zoomBy(zoomStep ** (-event.deltaY / 100), this.local(event));
    }, { passive: false });
    followPointer(this.stage, (down) => {
      if (down.target.closest('button, #wipe, #notice')) return undefined;
      this.stage.focus({ preventScroll: true });
      const from = { x: down.clientX - this.x, y: down.clientY - this.y };
      return (move) => this.moveTo(move.clientX - from.x, move.clientY - from.y);
    });
    this.stage.addEventListener('dblclick', (event) => {
      if (event.target.closest('button, #wipe, #notice')) return;
      if (this.isFitted) this.full();
      else this.fit();
    });
    this.stage.addEventListener('pointermove', (event) => this.onPixel(this.pixelAt(event)));
    this.stage.addEventListener('pointerleave', () => this.onPixel(undefined));
    this.stage.addEventListener('keydown', (event) => this.panByKey(event));
  }

  panByKey(event) {
    const ways = { ArrowLeft: [1, 0], ArrowRight: [-1, 0], ArrowUp: [0, 1], ArrowDown: [0, -1] };
    const way = ways[event.key];
    if (!way || event.target !== this.stage) return;
    event.preventDefault();
    const distance = 40 * stepFactor(event);
    this.moveTo(this.x + way[0] * distance, this.y + way[1] * distance);
  }

  setSize(width, height) {
    if (this.result.width === width && this.result.height === height) return;
    for (const canvas of [this.result, this.other]) Object.assign(canvas, { width, height });
    this.fit();
  }

  // A JPEG lies over the result until the lossless picture comes.
  show(picture) {
    this.preview.hidden = picture.encoding !== 'jpeg';
    if (this.preview.hidden) return draw(this.result, picture);
    Object.assign(this.preview, { width: picture.width, height: picture.height });
    this.preview.getContext('bitmaprenderer').transferFromImageBitmap(picture.bitmap);
  }

  // Zoom and pan.

  fit() {
    const { clientWidth, clientHeight } = this.stage;
    const margin = 24;
    const scale = Math.min((clientWidth - margin) / this.result.width,
                           (clientHeight - margin) / this.result.height);
    this.scale = clamp(scale, smallestZoom, largestZoom);
    this.x = (clientWidth - this.result.width * this.scale) / 2;
    this.y = (clientHeight - this.result.height * this.scale) / 2;
    this.isFitted = true;
    this.place();
  }

  full() {
    const centre = { x: this.stage.clientWidth / 2, y: this.stage.clientHeight / 2 };
    this.zoomBy(1 / devicePixelRatio / this.scale, centre);
  }

  zoomBy(factor, at = { x: this.stage.clientWidth / 2, y: this.stage.clientHeight / 2 }) {
    const scale = clamp(this.scale * factor, smallestZoom, largestZoom);
    this.x = at.x - ((at.x - this.x) * scale) / this.scale;
    this.y = at.y - ((at.y - this.y) * scale) / this.scale;
    this.scale = scale;
    this.isFitted = false;
    this.place();
  }

  // Keeps a part of the picture visible.
  moveTo(x, y) {
    const visible = 48;
    this.x = clamp(x, visible - this.result.width * this.scale, this.stage.clientWidth - visible);
    this.y = clamp(y, visible - this.result.height * this.scale, this.stage.clientHeight - visible);
    this.isFitted = false;
    this.place();
  }

  place() {
    this.sheet.style.transform = `translate(${this.x}px, ${this.y}px) scale(${this.scale})`;
    this.sheet.classList.toggle('sharp', this.scale * devicePixelRatio >= 3);
    byId('zoom').textContent = `${Math.round(this.scale * devicePixelRatio * 100)} %`;
    this.placeWipe();
    for (const handle of this.handles.values()) this.placeHandle(handle);
  }

  local(event) {
    const box = this.stage.getBoundingClientRect();
    return { x: event.clientX - box.left, y: event.clientY - box.top };
  }

  toPicture(event) {
    const at = this.local(event);
    return { x: (at.x - this.x) / this.scale, y: (at.y - this.y) / this.scale };
  }

  pixelAt(event) {
    const at = this.toPicture(event);
    const x = Math.floor(at.x), y = Math.floor(at.y);
    return x >= 0 && y >= 0 && x < this.result.width && y < this.result.height ? { x, y } : undefined;
  }

  // Comparison: the other picture lies over the left part of the result.

  compareWith(name) {
    byId('wipe').hidden = this.other.hidden = !name;
    byId('wipeName').textContent = name ?? '';
    this.placeWipe();
  }

  placeWipe() {
    const right = 100 * (1 - this.wipeAt);
    this.other.style.clipPath = `inset(0 ${right}% 0 0)`;
    const wipe = byId('wipe');
    wipe.style.left = `${this.x + this.wipeAt * this.result.width * this.scale}px`;
    wipe.style.top = `${Math.max(0, this.y)}px`;
    wipe.style.height = `${Math.min(this.stage.clientHeight, this.y + this.result.height * this.scale) - Math.max(0, this.y)}px`;
    wipe.setAttribute('aria-valuenow', String(Math.round(this.wipeAt * 100)));
  }

  listenToWipe() {
    const wipe = byId('wipe');
    const moveWipe = (part) => {
      this.wipeAt = clamp(part, 0, 1);
      this.placeWipe();
    };
    followPointer(wipe, () => (move) => moveWipe(this.toPicture(move).x / this.result.width));
    wipe.addEventListener('keydown', (event) => {
      const way = { ArrowLeft: -1, ArrowRight: 1 }[event.key];
      if (!way) return;
      event.preventDefault();
      event.stopPropagation();
      moveWipe(this.wipeAt + (way * stepFactor(event)) / 100);
    });
  }

  // Points.

  makeHandles() {
    byId('handles').replaceChildren();
    this.handles.clear();
    for (const control of this.state.controls.filter((each) => each.kind === 'point')) {
      const button = element('button', { type: 'button', className: 'handle' });
      const handle = { control, button };
      followPointer(button, (down) => {
        const [x, y] = this.state.value(control);
        const from = this.toPicture(down);
        // The handle of a point out of view moves to the pointer.
        const offset = button.classList.contains('outside') ? { x: 0, y: 0 } : { x: x - from.x, y: y - from.y };
        return (move) => {
          const at = this.toPicture(move);
          const round = (number) => Math.round(number * 10) / 10;
          this.state.set(control, [round(at.x + offset.x), round(at.y + offset.y)], true);
        };
      }, () => this.state.changed('rest'));
      button.addEventListener('keydown', (event) => this.moveHandle(event, control));
      this.handles.set(control.index, handle);
      byId('handles').append(button);
    }
    this.updateHandles();
  }

  moveHandle(event, control) {
    const way = { ArrowLeft: [-1, 0], ArrowRight: [1, 0], ArrowUp: [0, -1], ArrowDown: [0, 1] }[event.key];
    if (!way) return;
    event.preventDefault();
    event.stopPropagation();
    const [x, y] = this.state.value(control);
    this.state.set(control, [x + way[0] * stepFactor(event), y + way[1] * stepFactor(event)]);
  }

  updateHandles() {
    for (const handle of this.handles.values()) this.placeHandle(handle);
  }

  // The handle of a point out of view is at the edge.
  placeHandle({ control, button }) {
    const [x, y] = this.state.value(control);
    const wanted = { left: this.x + x * this.scale, top: this.y + y * this.scale };
    const radius = 11;
    const left = clamp(wanted.left, radius, this.stage.clientWidth - radius);
    const top = clamp(wanted.top, radius, this.stage.clientHeight - radius);
    Object.assign(button.style, { left: `${left}px`, top: `${top}px` });
    const isNear = Math.max(Math.abs(left - wanted.left), Math.abs(top - wanted.top)) <= radius;
    button.classList.toggle('outside', !isNear);
    button.title = isNear ? control.name : `${control.name}, out of view; drag to fetch it`;
    button.setAttribute('aria-label', `${control.name}: ${Math.round(x)}, ${Math.round(y)}; move with the arrow keys`);
  }
}
