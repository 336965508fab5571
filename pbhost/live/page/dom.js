// Small helpers for elements and numbers.

export const byId = (id) => document.getElementById(id);

// Properties are set as such; "aria-" and "role" as attributes; "on" is an object of listeners.
export function element(tag, properties = {}, ...children) {
  const made = document.createElement(tag);
  for (const [name, value] of Object.entries(properties)) {
    if (name === 'on')
      for (const [event, listener] of Object.entries(value)) made.addEventListener(event, listener);
    else if (name === 'role' || name === 'for' || name.startsWith('aria-') || name.startsWith('data-'))
      made.setAttribute(name, value);
    else made[name] = value;
  }
  made.append(...children);
  return made;
}

export const clamp = (value, low, high) => Math.min(Math.max(value, low), high);

// The number with as few digits as distinguish it in 16.16 fixed point, as controls store it.
export function numberText(number) {
  for (let decimals = 0; ; ++decimals) {
    const text = number.toFixed(decimals);
    if (decimals === 6 || Math.abs(Number(text) - number) * 65536 < 0.5) return text;
  }
}

// A number typed by a user, also with a decimal comma; undefined if it is none.
export function parseNumber(text) {
  const plain = text.trim().replace(',', '.').replace('−', '-');
  const number = Number(plain);
  return plain === '' || !Number.isFinite(number) ? undefined : number;
}

// How much a step is multiplied by: Shift for large steps, Alt for small ones.
export const stepFactor = (event) => (event.shiftKey ? 10 : event.altKey ? 0.1 : 1);

// Follows a pointer from its press on the element until its release. `start` returns the function
// for each move, or nothing to ignore the press; `end` is called at last.
export function followPointer(target, start, end = () => {}) {
  target.addEventListener('pointerdown', (down) => {
    if (down.button > 1) return;
    const move = start(down);
    if (!move) return;
    down.preventDefault();
    target.setPointerCapture(down.pointerId);
    const stop = () => {
      target.removeEventListener('pointermove', move);
      target.removeEventListener('pointerup', stop);
      target.removeEventListener('pointercancel', stop);
      end();
    };
    target.addEventListener('pointermove', move);
    target.addEventListener('pointerup', stop);
    target.addEventListener('pointercancel', stop);
  });
}

// Fills the track of a slider up to its value.
export function fillTrack(slider) {
  const { min, max, valueAsNumber } = slider;
  slider.style.setProperty('--part', `${(100 * (valueAsNumber - min)) / (max - min || 1)}%`);
}

let toastTimer = 0;
export function toast(text) {
  const place = byId('toast');
  place.textContent = text;
  place.classList.add('shown');
  clearTimeout(toastTimer);
  toastTimer = setTimeout(() => place.classList.remove('shown'), Math.min(3000 + 30 * text.length, 9000));
}

export function download(href, name) {
  element('a', { href, download: name }).click();
}
