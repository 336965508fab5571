// The source of the kernel, and the errors with links to their lines.

import { byId, element } from './dom.js';

export class SourceView {
  constructor() {
    this.text = undefined;
    this.warnings = '';
    this.isOpenedByError = false;
    byId('sourceToggle').addEventListener('click', () => this.show(byId('sourcePanel').hidden));
  }

  show(isShown, isByError = false) {
    byId('sourcePanel').hidden = !isShown;
    byId('sourceToggle').setAttribute('aria-pressed', String(isShown));
    this.isOpenedByError = isShown && isByError;
  }

  setText(text) {
    if (text === this.text) return;
    this.text = text;
    byId('source').replaceChildren(...text.replace(/\n$/, '').split('\n')
      .map((line) => element('li', {}, element('code', {}, line.replace(/\r$/, '')))));
  }

  // Shows the errors and opens the panel; without errors the panel that they opened is closed. It is
  // not opened by a single line without a place, which the notice shows, nor by the same warnings again.
  setErrors(text, places, kind = 'error') {
    const errors = byId('errors');
    const tellsMore = places.length > 0 || text.includes('\n');
    const opens = tellsMore && (kind === 'error' || text !== this.warnings);
    if (kind === 'warning') this.warnings = text;
    errors.replaceChildren();
    errors.dataset.kind = kind;
    for (const line of byId('source').querySelectorAll('.wrong')) line.classList.remove('wrong');
    if (text === '') {
      if (this.isOpenedByError) this.show(false);
      return;
    }
    for (const place of places) errors.append(this.link(place));
    errors.append(element('details', { open: places.length === 0 },
                          element('summary', {}, places.length > 0 ? 'The whole message' : kind === 'error' ? 'Message' : 'Warnings'),
                          element('pre', {}, text)));
    for (const place of places) this.lineOf(place)?.classList.add('wrong');
    if (opens && byId('sourcePanel').hidden) this.show(true, true);
    if (places.length > 0) this.reveal(places[0]);
  }

  link(place) {
    const where = place.column > 0 ? `${place.line}:${place.column}` : String(place.line);
    return element('button', { type: 'button', className: 'error', on: { click: () => this.reveal(place) } },
                   element('b', {}, `line ${where}`), ` ${place.message}`);
  }

  lineOf(place) {
    return byId('source').children[place.line - 1];
  }

  reveal(place) {
    const line = this.lineOf(place);
    const list = byId('source');
    if (line) list.scrollTop = line.offsetTop - list.clientHeight / 2;
  }
}
