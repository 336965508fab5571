// Asks for pictures: one request at a time, always for the newest values. While something moves,
// the picture is a JPEG, and smaller if a frame takes long; when it rests, it is lossless.

import { clamp } from './dom.js';

const restDelay = 60; // milliseconds without a change, with the pointer still down
const longFrame = 50; // milliseconds
const rawSpeed = 40000; // bytes per millisecond from which uncompressed pixels are fastest

export class Renderer {
  // `onPicture` gets the reply, with "bitmap" or "pixels"; `onFailure` a reply that is none.
  constructor(connection, state, { onPicture, onFailure, view }) {
    Object.assign(this, { connection, state, onPicture, onFailure, view });
    this.isReady = false; // a kernel is loaded
    this.isBusy = false;
    this.isMoving = false;
    this.change = 0; // counts changes
    this.asked = 0; // the change that the last request answers
    this.isSettled = true; // the last picture is lossless and in full resolution
    this.fullTime = 0; // milliseconds of a render in full resolution
  }

  touch(moving) {
    this.isMoving = moving;
    this.isSettled = false;
    ++this.change;
    performance.mark('change', { detail: this.change });
    document.body.dataset.change = this.change;
    clearTimeout(this.resting);
    if (moving) this.resting = setTimeout(() => this.rest(), restDelay);
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

  encoding() {
    if (this.isMoving) return 'jpeg';
    return this.connection.speed > rawSpeed ? 'raw' : 'png';
  }

  async pump() {
    const isStale = this.asked !== this.change;
    if (!this.isReady || this.isBusy || !(isStale || (!this.isMoving && !this.isSettled))) return;
    this.isBusy = true;
    this.asked = this.change;
    const { change } = this;
    const downsample = this.downsample(), encoding = this.encoding();
    this.isSettled = !this.isMoving;
    const reply = await this.connection.ask({ do: 'picture', ...this.state.request(), ...this.view(),
                                              downsample, encoding });
    this.isBusy = false;
    if (reply.do !== 'picture') {
      this.onFailure(reply);
      return;
    }
    this.fullTime = reply.renderMs * downsample * downsample;
    this.state.animated = reply.animated;
    this.pump(); // the next frame is rendered while this one is decoded
    await decode(reply);
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

// Draws a decoded picture over the whole canvas.
export function draw(canvas, reply) {
  const context = canvas.getContext('2d', { alpha: false });
  if (reply.pixels && reply.width === canvas.width && reply.height === canvas.height) {
    context.putImageData(reply.pixels, 0, 0);
  } else if (reply.bitmap) {
    context.drawImage(reply.bitmap, 0, 0, canvas.width, canvas.height);
    reply.bitmap.close();
  }
}
