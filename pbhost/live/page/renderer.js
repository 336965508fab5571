// Asks for pictures: one request at a time, always for the newest values. The first picture of new
// values is a JPEG in the size that the screen shows, and rendered smaller while something moves if
// a frame takes long. When nothing moves, the lossless picture follows.

import { clamp } from './dom.js';

// Milliseconds without a change, with the pointer still down; as long as a frame in full resolution
// takes, because it delays the next one.
const restDelays = [60, 600];
const longFrame = 50; // milliseconds
const rawSpeed = 40000; // bytes per millisecond from which uncompressed pixels are fastest

export class Renderer {
  // `onRequest` is called before each request; `onPicture` gets the reply, with "bitmap" or "pixels";
  // `onFailure` a reply that is none.
  constructor(connection, state, { onRequest, onPicture, onFailure, view, screenScale }) {
    Object.assign(this, { connection, state, onRequest, onPicture, onFailure, view, screenScale });
    this.isReady = false; // a kernel is loaded
    this.isBusy = false;
    this.isMoving = false;
    this.change = 0; // counts changes
    this.asked = 0; // the change that the last request answers
    this.requests = 0; // so far
    this.shown = 0; // the number of the request whose picture is shown
    this.isSettled = true; // the last picture that was asked for is lossless
    this.fullTime = 0; // milliseconds of a render in full resolution
  }

  touch(moving) {
    this.isMoving = moving;
    this.isSettled = false;
    ++this.change;
    performance.mark('change', { detail: this.change });
    document.body.dataset.change = this.change;
    clearTimeout(this.resting);
    if (moving) this.resting = setTimeout(() => this.rest(), clamp(this.fullTime, ...restDelays));
    this.pump();
  }

  rest() {
    clearTimeout(this.resting);
    this.isMoving = false;
    this.pump();
  }

  downsample() {
    if (!this.isMoving || this.fullTime <= longFrame) return 1;
    return clamp(Math.ceil(Math.sqrt(this.fullTime / longFrame)), 2, 8);
  }

  // Smoothed, so that the resolution does not change with each frame.
  takeTime(milliseconds) {
    this.fullTime = this.fullTime === 0 ? milliseconds : 0.75 * this.fullTime + 0.25 * milliseconds;
  }

  lossless() {
    return this.connection.speed > rawSpeed ? 'raw' : 'png';
  }

  // Pixels of the picture for each pixel of the screen, as a whole number.
  reduction() {
    return clamp(Math.floor(1 / this.screenScale() + 0.15), 1, 8);
  }

  async pump() {
    const isStale = this.asked !== this.change;
    if (!this.isReady || this.isBusy || !(isStale || (!this.isMoving && !this.isSettled))) return;
    this.isBusy = true;
    this.asked = this.change;
    const { change } = this;
    const downsample = this.downsample();
    const shown = isStale ? { encoding: 'jpeg', reduce: Math.max(1, Math.floor(this.reduction() / downsample)) }
                          : { encoding: this.lossless() };
    this.isSettled = !isStale;
    this.onRequest();
    const number = ++this.requests;
    const reply = await this.connection.ask({ do: 'picture', ...this.state.request(), ...this.view(), downsample, ...shown });
    this.isBusy = false;
    if (reply.do !== 'picture') {
      this.isSettled = true;
      this.onFailure(reply);
      return;
    }
    this.takeTime(reply.renderMs * downsample * downsample);
    this.state.animated = reply.animated;
    this.pump(); // the next frame is rendered while this one is decoded
    await decode(reply);
    if (number < this.shown) return; // the next picture was decoded faster
    this.shown = number;
    this.onPicture({ ...reply, downsample, change });
  }
}

// Adds "pixels" or "bitmap" to the reply.
export async function decode(reply) {
  if (reply.encoding === 'raw')
    reply.pixels = new ImageData(new Uint8ClampedArray(reply.body), reply.width, reply.height);
  else
    reply.bitmap = await createImageBitmap(new Blob([reply.body], { type: `image/${reply.encoding}` }),
                                           { colorSpaceConversion: 'none' });
}

// Draws a decoded picture of the canvas's size.
export function draw(canvas, reply) {
  const context = canvas.getContext('2d', { alpha: false });
  if (reply.pixels) {
    context.putImageData(reply.pixels, 0, 0);
  } else {
    context.drawImage(reply.bitmap, 0, 0);
    reply.bitmap.close();
  }
}
