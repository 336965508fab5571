// The time slider, with play and the keyframes' places.

import { byId, element, fillTrack, parseNumber, numberText, toast } from './dom.js';

export class TimeBar {
  constructor(state) {
    this.state = state;
    this.isPlaying = false;
    this.setClock({ fps: 24, first: 0, last: 240, isWanted: false });
    const slider = byId('time');
    slider.addEventListener('input', () => state.setSeconds(slider.valueAsNumber, true));
    slider.addEventListener('change', () => state.changed('rest'));
    byId('timeField').addEventListener('change', (event) => this.typed(event.target, (number) => state.setSeconds(number, false)));
    byId('duration').addEventListener('change', (event) => this.typed(event.target, (number) => {
      this.duration = Math.max(1 / this.fps, number);
      slider.max = this.duration;
    }));
    byId('play').addEventListener('click', () => this.play(!this.isPlaying));
    byId('timeToggle').addEventListener('click', () => this.show(byId('timeBar').hidden));
  }

  // The frames from "first" to "last"; the first one is at second 0.
  setClock(clock) {
    Object.assign(this, { fps: clock.fps, first: clock.first, duration: Math.max(1, clock.last - clock.first) / clock.fps });
    byId('time').step = 1 / clock.fps;
    byId('time').max = this.duration;
    if (clock.isWanted) this.show(true);
  }

  typed(field, use) {
    const number = parseNumber(field.value);
    if (number === undefined || number < 0) toast(`“${field.value}” is not a time in seconds`);
    else use(number);
    this.update(true);
  }

  show(isShown) {
    byId('timeBar').hidden = !isShown;
    document.body.classList.toggle('timed', isShown);
    byId('timeToggle').setAttribute('aria-pressed', String(isShown));
    if (!isShown) this.play(false);
  }

  play(isPlaying) {
    if (this.isPlaying === isPlaying) return;
    this.isPlaying = isPlaying;
    byId('play').textContent = isPlaying ? '❚❚' : '▶';
    byId('play').setAttribute('aria-label', isPlaying ? 'Pause' : 'Play');
    if (!isPlaying) {
      this.state.changed('rest');
      return;
    }
    const from = this.state.seconds, started = performance.now();
    const step = (now) => {
      if (!this.isPlaying) return;
      const passed = from + Math.max(0, now - started) / 1000;
      const count = Math.round(this.duration * this.fps) + 1;
      const frame = Math.floor(passed * this.fps) % count;
      if (frame !== this.frame) this.state.setSeconds(frame / this.fps, true);
      this.frame = frame;
      requestAnimationFrame(step);
    };
    requestAnimationFrame(step);
  }

  // A time that is being typed stays until it `isCommitted`.
  update(isCommitted = false) {
    byId('time').value = this.state.seconds;
    fillTrack(byId('time'));
    if (isCommitted || document.activeElement !== byId('timeField')) byId('timeField').value = numberText(this.state.seconds);
    byId('duration').value = Number(this.duration.toFixed(2));
    byId('frame').textContent = `frame ${this.first + Math.round(this.state.seconds * this.fps)}`;
    this.updateMarks();
  }

  // A button for each time with keyframes. They are made anew only if they change, as one may have the
  // focus.
  updateMarks() {
    const names = new Map(); // by the time
    for (const control of this.state.controls)
      for (const { time } of this.state.keyframes.get(control.index) ?? [])
        if (time <= this.duration) names.set(time, [...(names.get(time) ?? []), control.name]);
    const shown = JSON.stringify([this.duration, ...names]);
    if (shown === this.shownMarks) return;
    this.shownMarks = shown;
    byId('marks').replaceChildren(...[...names].sort(([a], [b]) => a - b).map(([time, which]) => {
      const title = `Keyframe at ${numberText(time)} s: ${which.join(', ')}`;
      const mark = element('button', { type: 'button', title, 'aria-label': title,
                                       on: { click: () => this.state.setSeconds(time, false) } });
      mark.style.left = `${(100 * time) / this.duration}%`;
      return mark;
    }));
  }
}
