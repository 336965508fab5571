// Undo and redo of the controls' values and keyframes.

const limit = 200; // steps

export class History {
  constructor(state) {
    this.state = state;
    this.now = undefined; // as text
    this.past = [];
    this.future = [];
    state.addEventListener('change', ({ detail }) => {
      if (detail.what !== 'time' && !detail.moving) this.take();
    });
  }

  take() {
    const values = this.text();
    if (values === this.now) return;
    if (this.now !== undefined) this.past = [...this.past, this.now].slice(-limit);
    this.now = values;
    this.future = [];
  }

  text() {
    return JSON.stringify(this.state.remember().values);
  }

  undo() {
    this.step(this.past, this.future);
  }

  redo() {
    this.step(this.future, this.past);
  }

  step(from, to) {
    if (from.length === 0) return;
    to.push(this.now);
    this.state.recall({ values: JSON.parse(from.pop()) });
    this.now = this.text(); // of the controls that still exist
    this.state.changed('value');
  }
}
