// Starts the page and connects its parts.

import { commandOf } from './command.js';
import { Connection } from './connection.js';
import { byId, download, element, fillTrack, toast } from './dom.js';
import { History } from './history.js';
import { Panel } from './panel.js';
import { decode, draw, Renderer } from './renderer.js';
import { SourceView } from './source_view.js';
import { Stage } from './stage.js';
import { State } from './state.js';
import { TimeBar } from './time_bar.js';
import { acceptDrops } from './widgets.js';

const channelNames = { composite: ['RGBA', 'Colours over a checkerboard'], color: ['RGB', 'Colours without alpha'],
                       red: ['R', 'Red'], green: ['G', 'Green'], blue: ['B', 'Blue'], alpha: ['A', 'Alpha'] };
const formats = { png: 'PNG', tif: 'TIFF', exr: 'OpenEXR', jpg: 'JPEG' };

const state = new State();
const view = { channels: 'composite', exposure: 0 };
const connection = new Connection({ onMessage, onClose: () => fail('The server has ended. Start pbhost live again and open its new address.', 'closed') });
const history = new History(state);
const renderer = new Renderer(connection, state, { onRequest, onPicture, onFailure, view: () => view,
                                                   screenScale: () => stage.scale * devicePixelRatio });
const stage = new Stage(state, { onPixel });
const panel = new Panel(state, { addFile, choosePicture: (picture) => load({ picture }) });
const source = new SourceView();
const timeBar = new TimeBar(state);
let isLoaded = false; // at least once
let loads = 0; // under way
let isDead = false; // the render process ended; a load starts another
let compared; // what the other canvas shows
let shown = {}; // facts of the last picture
const slowRender = 300; // milliseconds after which the status says that a picture is rendered
let slowTimer = 0;

// Loading.

async function load(changes = {}) {
  setStatus('loading', 'busy');
  document.body.dataset.isLoading = 'true';
  isDead = false;
  const isFirst = !isLoaded;
  const stored = isFirst ? state.stored : undefined;
  const picture = isPicture(stored?.picture) ? stored.picture : isFirst ? firstPicture() : state.picture;
  const { fps, first } = isFirst ? stored?.clock ?? {} : state.clock; // otherwise those of the server
  const depth = stored?.depth ?? state.depth ?? undefined;
  const request = { do: 'load', isFirst, picture, fps, first, depth, ...changes };
  ++loads;
  const reply = await connection.ask(request);
  document.body.dataset.isLoading = String(--loads > 0);
  if (reply.do === 'failed' && isLoaded && Object.keys(changes).length > 0) {
    toast(reply.text);
    return load(); // as before
  }
  takeLoaded(reply, !isFirst);
}

const nameOf = (file) => file.split('/').pop();
const isPicture = (id) => typeof id === 'number' && state.pictures.some((each) => each.id === id);
const firstPicture = () => (state.pictures.length > 0 ? 0 : undefined); // undefined: a project's, or none

function takeLoaded(reply, keepsValues) {
  if (reply.do !== 'load') return onFailure(reply);
  isLoaded = true;
  renderer.isReady = true;
  document.body.classList.add('loaded');
  fail('');
  source.setErrors(reply.warnings.trim(), [], 'warning');
  byId('name').textContent = reply.about.name || reply.title;
  byId('about').textContent = [nameOf(reply.file), reply.about.description].filter(Boolean).join(' · ');
  byId('about').title = `${reply.file}\n${reply.about.vendor}, version ${reply.about.version}`;
  document.title = `${reply.about.name} – pbhost live`;
  byId('depth').value = reply.depth;
  byId('exposureField').hidden = reply.depth !== 32;
  stage.setSize(reply.width, reply.height);
  takeClock(reply);
  state.takeLoaded(reply, keepsValues);
  stage.makeHandles();
  panel.build();
  if (state.keyframes.size > 0) timeBar.show(true);
  refreshComparison();
}

// That of a project can differ.
function takeClock({ fps, first }) {
  if (fps === state.clock.fps && first === state.clock.first) return;
  state.clock = { fps, first, last: first + Math.round(timeBar.duration * fps), isWanted: true };
  timeBar.setClock(state.clock);
}

// Messages that nobody asked for.

function onMessage(message) {
  if (message.do === 'hello') {
    state.pictures = message.pictures;
    state.clock = message.clock;
    timeBar.setClock(message.clock);
    byId('name').textContent = nameOf(message.file);
    load();
  } else if (message.do === 'pictures') {
    state.pictures = message.pictures;
    panel.update();
  } else if (message.do === 'source') {
    source.setText(message.text);
  } else if (message.do === 'changed') {
    load();
  } else if (message.do === 'ended') {
    isDead = true;
    renderer.isReady = false;
    fail(`${message.text} Save the file or change a control to try again.`, 'crashed');
  }
}

function onFailure(reply) {
  if (reply.do === 'ended') return; // shown already
  renderer.isReady = reply.what !== 'load';
  source.setErrors(reply.text, reply.places);
  const [first] = reply.text.split('\n');
  fail(state.file ? first.replace(state.file, nameOf(state.file)) : first, 'error');
}

// Shows why the picture is old; an empty text ends that.
function fail(text, kind = 'error') {
  byId('notice').textContent = text;
  byId('notice').hidden = text === '';
  document.body.classList.toggle('stale', text !== '');
  setStatus(text === '' ? 'ready' : kind, text === '' ? 'good' : 'bad');
}

function setStatus(text, kind) {
  clearTimeout(slowTimer);
  byId('status').textContent = text;
  byId('status').dataset.kind = kind;
}

// Pictures.

function onRequest() {
  clearTimeout(slowTimer);
  slowTimer = setTimeout(() => setStatus('rendering', 'busy'), slowRender);
}

function onPicture(reply) {
  stage.show(reply);
  if (document.body.classList.contains('stale')) {
    fail('');
    source.setErrors(source.warnings, [], 'warning');
  }
  onPixel(pixelNext);
  setStatus(reply.encoding === 'jpeg' ? 'preview' : 'ready', 'good');
  shown = reply;
  const size = `${state.width} × ${state.height}`;
  const part = reply.downsample > 1 ? `, 1/${reply.downsample} size` : '';
  byId('facts').textContent = `${size}, ${state.depth} bits${part} · ${reply.renderMs.toFixed(1)} ms`;
  if (state.keyframes.size > 0) {
    panel.update();
    stage.updateHandles();
  }
  requestAnimationFrame(() => {
    performance.mark('painted', { detail: { change: reply.change, downsample: reply.downsample, encoding: reply.encoding } });
    document.body.dataset.painted = `${reply.change} ${reply.encoding} ${reply.downsample}`;
  });
}

state.addEventListener('change', ({ detail }) => {
  if (detail.what === 'rest') return renderer.rest();
  if (detail.what === 'time') timeBar.update();
  if (detail.what === 'value' || detail.what === 'load') {
    panel.update(detail.control);
    stage.updateHandles();
    timeBar.update();
  }
  byId('undo').disabled = history.past.length === 0;
  byId('redo').disabled = history.future.length === 0;
  if (isDead && !detail.moving) return load();
  renderer.touch(detail.moving);
});

async function addFile(file) {
  const response = await fetch(`pictures?name=${encodeURIComponent(file.name)}`, { method: 'POST', body: file });
  if (!response.ok) {
    toast(await response.text());
    return undefined;
  }
  const { id, pictures } = await response.json();
  state.pictures = pictures;
  panel.update();
  return id;
}

// The value of the pixel under the pointer, one question at a time.
let pixelAsked = false, pixelNext;
async function onPixel(at) {
  pixelNext = at;
  if (!at) byId('pixel').textContent = '';
  if (pixelAsked || !at || !isLoaded || isDead) return;
  pixelAsked = true;
  const scale = shown.downsample ?? 1;
  const reply = await connection.ask({ do: 'pixel', x: Math.floor(at.x / scale), y: Math.floor(at.y / scale),
                                       inputX: at.x, inputY: at.y });
  pixelAsked = false;
  if (reply.do === 'pixel' && pixelNext) byId('pixel').textContent = pixelText(reply);
  if (pixelNext && pixelNext !== at) onPixel(pixelNext);
}

function pixelText({ x, y, output, input }) {
  const number = (value) => (state.depth === 32 ? value.toFixed(4) : String(value)).padStart(state.depth === 8 ? 3 : 6);
  const values = (list) => 'RGBA'.split('').map((name, k) => `${name} ${number(list[k])}`).join('  ');
  const before = input.length > 0 && state.inputs > 0 ? `   input  ${values(input)}` : '';
  return output.length > 0 ? `${x}, ${y}   ${values(output)}${before}` : '';
}

// Comparison.

byId('compare').addEventListener('change', refreshComparison);

async function refreshComparison() {
  const what = byId('compare').value;
  if (what === 'kept' && !state.kept) keep();
  if (what === 'kept') {
    const { canvas } = state.kept;
    Object.assign(stage.other, { width: canvas.width, height: canvas.height });
    stage.other.getContext('2d', { alpha: false }).drawImage(canvas, 0, 0);
  }
  if (what === 'input' && renderer.isReady) {
    const reply = await connection.ask({ do: 'picture', of: 'input', encoding: renderer.lossless(), ...view });
    if (reply.do !== 'picture') return;
    await decode(reply);
    Object.assign(stage.other, { width: reply.width, height: reply.height });
    draw(stage.other, reply);
  }
  compared = what === 'off' ? undefined : what;
  stage.compareWith(compared);
}

function keep() {
  const { width, height } = stage.result;
  const canvas = element('canvas', { width, height });
  canvas.getContext('2d', { alpha: false }).drawImage(stage.result, 0, 0);
  state.kept = { canvas, values: state.remember() };
  byId('restore').disabled = false;
}

byId('keep').addEventListener('click', () => {
  keep();
  toast('Kept; compare with it, or restore its values');
  if (byId('compare').value === 'kept') refreshComparison();
});
byId('restore').addEventListener('click', async () => {
  const { values } = state.kept;
  if (values.picture !== state.picture) await load({ picture: values.picture });
  state.recall(values);
  state.changed('value');
});

// The view.

function changeView(changes) {
  Object.assign(view, changes);
  for (const button of byId('channels').children) {
    const isChecked = button.dataset.name === view.channels;
    button.setAttribute('aria-checked', String(isChecked));
    button.tabIndex = isChecked ? 0 : -1; // the arrow keys reach the others
  }
  fillTrack(byId('exposure'));
  byId('exposureValue').textContent = view.exposure.toFixed(1);
  if (!isLoaded) return;
  renderer.touch(false);
  if (compared === 'input') refreshComparison();
}

for (const [name, [text, title]] of Object.entries(channelNames))
  byId('channels').append(element('button', { type: 'button', role: 'radio', title, 'data-name': name,
                                              on: { click: () => changeView({ channels: name }) } }, text));
changeView({});
byId('channels').addEventListener('keydown', (event) => {
  const way = { ArrowRight: 'nextElementSibling', ArrowLeft: 'previousElementSibling' }[event.key];
  const next = way && event.target[way];
  if (!next) return;
  event.preventDefault();
  next.focus();
  next.click();
});
byId('exposure').addEventListener('input', (event) => changeView({ exposure: event.target.valueAsNumber }));
byId('exposureField').addEventListener('dblclick', () => {
  byId('exposure').value = 0;
  changeView({ exposure: 0 });
});
byId('depth').addEventListener('change', (event) => load({ depth: Number(event.target.value) }));
byId('fit').addEventListener('click', () => stage.fit());
byId('full').addEventListener('click', () => stage.full());
byId('undo').addEventListener('click', () => history.undo());
byId('redo').addEventListener('click', () => history.redo());
byId('resetAll').addEventListener('click', () => state.reset(state.controls));

const keys = {
  f: () => stage.fit(), 1: () => stage.full(), '+': () => stage.zoomBy(1.25), '=': () => stage.zoomBy(1.25),
  '-': () => stage.zoomBy(0.8), k: () => byId('keep').click(), t: () => byId('timeToggle').click(),
  s: () => byId('sourceToggle').click(), ' ': () => timeBar.play(!timeBar.isPlaying),
};
const keysWithCtrl = { z: (event) => (event.shiftKey ? history.redo() : history.undo()), y: () => history.redo() };

// Whether the focused element needs the key itself.
function isTaken(target, key) {
  return target.closest('input:not([type="range"], [type="checkbox"]), select, textarea') ||
         (key === ' ' && target.closest('button, input, summary'));
}

document.addEventListener('keydown', (event) => {
  const key = event.key.toLowerCase();
  const isWithCtrl = event.ctrlKey || event.metaKey;
  const action = isWithCtrl ? keysWithCtrl[key] : keys[key];
  if (!action || event.altKey || (!isWithCtrl && isTaken(event.target, key))) return;
  event.preventDefault();
  action(event);
});

acceptDrops(byId('stage'), async (file) => {
  const id = file && (await addFile(file));
  if (id !== undefined) load({ picture: id });
});

// Saving.

// Warns of pictures that a command or project refers to and that will not stay.
function temporaryNote() {
  const names = state.temporaryPictures().map((each) => each.name);
  return names.length === 0 ? '' : `\n\nNote: ${names.join(', ')} was chosen in the browser and is deleted ` +
                                   'when pbhost live ends. To keep it, start with -i.';
}

byId('copyCommand').addEventListener('click', async () => {
  const command = commandOf(state);
  try {
    await navigator.clipboard.writeText(command);
    toast(`Copied: ${command}${temporaryNote()}`);
  } catch {
    toast(command); // the browser does not allow it
  }
});

for (const [extension, name] of Object.entries(formats))
  byId('saveFormat').append(element('option', { value: extension }, name));

async function save(request, extension) {
  setStatus('saving', 'busy');
  const reply = await connection.ask({ ...request, ...state.request() });
  if (reply.do !== request.do) return onFailure(reply);
  setStatus('ready', 'good');
  download(reply.url, `${byId('name').textContent}.${extension}`);
}
byId('savePicture').addEventListener('click', () => {
  const extension = byId('saveFormat').value;
  save({ do: 'savePicture', extension }, extension);
});
byId('saveProject').addEventListener('click', async () => {
  await save({ do: 'saveProject' }, 'json');
  if (temporaryNote()) toast(temporaryNote().trim());
});
byId('openProject').addEventListener('click', () => byId('projectFile').click());
byId('projectFile').addEventListener('change', async ({ target }) => {
  const [file] = target.files;
  target.value = '';
  if (!file) return;
  const reply = await connection.ask({ do: 'openProject', text: await file.text() });
  if (reply.do === 'load') {
    state.stored = null;
    takeLoaded(reply, false);
  } else if (reply.do === 'failed') {
    toast(projectFailure(reply.text, file.name));
    load(); // as before
  }
});

// The server gives the uploaded project a name of its own, and does not know where the file was.
function projectFailure(text, name) {
  const message = text.replace(/^saved\d+\.json/, name);
  if (!/cannot read '[^/]/.test(text)) return message;
  return `${message}. The browser does not tell in which folder the project is, so relative paths cannot be found. ` +
         'Open it with: pbhost live --project';
}

// Dark and light: the system's, until the button is pressed.

function applyTheme(theme) {
  document.documentElement.dataset.theme = theme;
  document.documentElement.style.colorScheme = theme;
}
const isDark = matchMedia('(prefers-color-scheme: dark)').matches;
applyTheme(localStorage.getItem('tvelmarondine-theme') ?? (isDark ? 'dark' : 'light'));
byId('theme').addEventListener('click', () => {
  const theme = document.documentElement.dataset.theme === 'dark' ? 'light' : 'dark';
  localStorage.setItem('tvelmarondine-theme', theme);
  applyTheme(theme);
});
