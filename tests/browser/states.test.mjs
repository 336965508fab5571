// What happens to a page over time: saves that compile or not, crashes, endless renders, reloads,
// several tabs.

import assert from 'node:assert/strict';
import fs from 'node:fs';
import { after, test } from 'node:test';

import { difference, Live, scene, second } from './live.mjs';

const kernel = (body, parameters = 'parameter float gain < minValue: 0.0; maxValue: 2.0; defaultValue: 1.0; >;') =>
  `<languageVersion : 1.0;>
kernel Work < namespace: "tests"; vendor: "x"; version: 1; >
{
    ${parameters}
    input image4 src;
    output pixel4 dst;
    void evaluatePixel() {
        float4 p = sampleNearest(src, outCoord());
        ${body}
    }
}
`;
const good = kernel('dst = float4(p.rgb * gain, 1.0);');
const broken = kernel('dst = float4(p.rgb * gian, 1.0);');
// The driver's compiler runs out of stack.
const crashing = kernel(`dst = float4(${Array(60000).fill('gain').join('+')});`);
const endless = kernel(`float sum = 0.0;
        for (int i = 0; i < 100000000; ++i) sum = sin(sum + p.r);
        dst = float4(sum);`);

const lives = [];
after(() => Promise.all(lives.map((live) => live.stop())));
async function start(args = [], more = {}) {
  const live = await Live.start(['{folder}/work.pbk', '-i', scene, ...args], { files: { 'work.pbk': good }, ...more });
  lives.push(live);
  return live;
}

async function setGain(page, text) {
  const field = page.getByRole('textbox', { name: 'gain', exact: true });
  await field.fill(text);
  await field.press('Enter');
}

async function setTime(page, text) {
  const field = page.getByRole('textbox', { name: 'Time in seconds', exact: true });
  await field.fill(text);
  await field.press('Enter');
}

const save = (live, text) => fs.writeFileSync(live.file('work.pbk'), text);

// As editors do: another file, renamed.
function saveByRename(live, text) {
  fs.writeFileSync(live.file('.work.pbk.new'), text);
  fs.renameSync(live.file('.work.pbk.new'), live.file('work.pbk'));
}

async function waitForNotice(page, pattern) {
  await page.waitForFunction((source) => {
    const notice = document.getElementById('notice');
    return !notice.hidden && new RegExp(source).test(notice.textContent);
  }, pattern.source);
}

async function isGrey(page) {
  return page.locator('#sheet').evaluate((sheet) => getComputedStyle(sheet).filter.includes('grayscale'));
}

test('a save is shown, a broken one keeps the picture and shows the line, a mended one goes on', async () => {
  const live = await start();
  const { page } = live;
  await setGain(page, '0.5');
  await live.settled();
  const half = await live.pixels();

  saveByRename(live, kernel('dst = float4(p.bgr * gain, 1.0);'));
  await page.waitForFunction(() => document.getElementById('source').textContent.includes('p.bgr'));
  await live.settled();
  const swapped = await live.pixels();
  for (let i = 0; i < half.length; i += 3)
    assert.deepEqual([swapped[i], swapped[i + 1], swapped[i + 2]], [half[i + 2], half[i + 1], half[i]]);

  save(live, broken);
  await waitForNotice(page, /does not compile/);
  assert.ok(await isGrey(page));
  assert.equal(difference(await live.pixels(), swapped), 'none');
  const link = page.getByRole('button', { name: /line 9:\d+.*gian/ }).first();
  await link.click();
  assert.match(await page.locator('#source li.wrong').first().innerText(), /p\.rgb \* gian/);
  assert.equal(await page.locator('#source li.wrong').first().evaluate((line) => [...line.parentNode.children].indexOf(line)), 8);

  saveByRename(live, kernel('dst = float4(p.rgb * gain * scale, 1.0);',
    'parameter float gain < maxValue: 2.0; defaultValue: 0.1; >; parameter float scale < maxValue: 4.0; defaultValue: 2.0; >;'));
  await live.settled();
  assert.ok(!(await isGrey(page)));
  assert.ok(await page.locator('#sourcePanel').isHidden(), 'the panel that the error opened is closed');
  // The value is kept, the new parameter has its default, and reset goes to the new default.
  const command = await live.command();
  assert.match(command, /--set gain=0.5 /);
  assert.doesNotMatch(command, /scale/);
  assert.equal(difference(await live.pixels(), live.render(command)), 'none');
  await page.getByRole('button', { name: 'gain: to the default' }).click();
  assert.equal(await page.getByRole('textbox', { name: 'gain', exact: true }).inputValue(), '0.1');
  assert.deepEqual(live.faults, []);
});

test('untouched values follow the defaults of the kernel', async () => {
  const live = await start();
  save(live, kernel('dst = float4(p.rgb * gain, 1.0);', 'parameter float gain < maxValue: 2.0; defaultValue: 0.25; >;'));
  await live.page.waitForFunction(() => document.querySelector('[aria-label="gain"].number').value === '0.25');
});

test('warnings are shown, but the same ones do not open the source again', async () => {
  const text = kernel('dst = float4(p.rgb * gain, 1.0);', 'parameter float gain < maxValue: 2.0; >; parameter float free;');
  const live = await start([], { files: { 'work.pbk': text } });
  assert.match(await live.page.locator('#errors').textContent(), /Warnings.*"free" has neither/s);
  await live.page.getByRole('button', { name: 'Source' }).click();
  save(live, text.replace('p.rgb', 'p.bgr'));
  await live.page.waitForFunction(() => document.getElementById('source').textContent.includes('p.bgr'));
  await live.settled();
  assert.ok(await live.page.locator('#sourcePanel').isHidden());
});

test('a small range has small steps', async () => {
  const live = await start([], { files: { 'work.pbk': kernel('dst = float4(p.rgb * gain * 50.0, 1.0);',
    'parameter float gain < minValue: -0.02; maxValue: 0.02; defaultValue: 0.0; >;') } });
  const slider = live.page.getByRole('slider', { name: 'gain', exact: true });
  for (const key of ['ArrowRight', 'Shift+ArrowRight', 'Alt+ArrowRight']) await slider.press(key);
  assert.match(await live.command(), /--set gain=0.00111 /);
});

test('a kernel that is broken at the start is shown when it is mended', async () => {
  const live = await start([], { files: { 'work.pbk': broken }, isBroken: true });
  await waitForNotice(live.page, /work\.pbk.*does not compile/);
  save(live, good);
  await live.settled();
  assert.equal(difference(await live.pixels(), live.render(await live.command())), 'none');
});

test('a picture that is saved is read again', async () => {
  const live = await start(['-i', '{folder}/copy.png'], { files: { 'work.pbk': good, 'copy.png': fs.readFileSync(scene) } });
  await live.page.getByRole('combobox', { name: 'Layer' }).selectOption({ label: 'copy.png' });
  await live.settled();
  const before = await live.pixels();
  const { change } = await live.page.evaluate(() => ({ ...document.body.dataset }));
  fs.copyFileSync(second, live.file('copy.png'));
  await live.page.waitForFunction((old) => document.body.dataset.change !== old, change);
  await live.settled();
  assert.notEqual(difference(await live.pixels(), before), 'none');
});

test('a crash of the driver is a message, and the next save works', async () => {
  const live = await start();
  save(live, crashing);
  await waitForNotice(live.page, /crashed \(Segmentation fault\)/);
  assert.ok(await isGrey(live.page));
  save(live, good);
  await live.settled();
  assert.equal(difference(await live.pixels(), live.render(await live.command())), 'none');
});

test('a render that does not end is stopped, and the next save works', async () => {
  const live = await start(['--timeout', '2']);
  save(live, endless);
  await waitForNotice(live.page, /time limit \(--timeout\)/);
  save(live, good);
  await live.settled();
  assert.equal(difference(await live.pixels(), live.render(await live.command())), 'none');
});

test('tabs have their own values, and the server outlives them', async () => {
  const live = await start();
  const other = await live.newPage();
  await setGain(live.page, '0.25');
  await setGain(other, '1.5');
  await live.settled(live.page);
  await live.settled(other);
  assert.equal(difference(await live.pixels(live.page), live.render(await live.command(live.page))), 'none');
  assert.equal(difference(await live.pixels(other), live.render(await live.command(other))), 'none');
  assert.notEqual(difference(await live.pixels(live.page), await live.pixels(other)), 'none');
  await live.page.close();
  await other.close();
  const third = await live.newPage();
  assert.doesNotMatch(await live.command(third), /gain/);
});

test('a reload of the page keeps the values', async () => {
  const live = await start(['--set', 'gain=1.25']);
  assert.match(await live.command(), /--set gain=1.25 /);
  await setGain(live.page, '0.75');
  await live.page.getByRole('combobox', { name: 'Depth' }).selectOption('16');
  await live.page.waitForFunction(() => document.getElementById('facts').textContent.includes('16 bits'));
  await live.settled();
  const before = await live.pixels();
  await live.page.reload();
  await live.settled();
  assert.match(await live.command(), /--set gain=0.75 .*--depth 16 /);
  assert.equal(difference(await live.pixels(), before), 'none');
});

test('a preview that is decoded late does not replace the lossless picture', async () => {
  const live = await start();
  await live.context.addInitScript(() => {
    const decode = window.createImageBitmap;
    window.createImageBitmap = async (blob, options) => {
      const bitmap = await decode(blob, options);
      if (blob.type !== 'image/jpeg') return bitmap;
      await new Promise((resolve) => (window.decodeLate = resolve));
      return bitmap;
    };
  });
  const page = await live.newPage(); // waits for the lossless picture
  await page.evaluate(() => {
    window.decodeLate();
    return new Promise((resolve) => requestAnimationFrame(() => requestAnimationFrame(resolve)));
  });
  await live.settled(page);
  assert.ok(await page.locator('#preview').isHidden());
});

test('a sequence is shown frame by frame', async () => {
  const files = { 'work.pbk': good };
  for (const [number, file] of [[7, scene], [8, second], [9, scene]]) files[`shot.000${number}.png`] = fs.readFileSync(file);
  const live = await start(['-i', '{folder}/shot.%04d.png', '--fps', '10'], { files });
  await live.page.getByRole('combobox', { name: 'Layer' }).selectOption({ label: 'shot.%04d.png' });
  await live.settled();
  assert.equal(await live.page.locator('#frame').textContent(), 'frame 7');
  const first = await live.pixels();
  await live.page.getByRole('slider', { name: 'Time in seconds' }).press('ArrowRight');
  await live.page.waitForFunction(() => document.getElementById('frame').textContent === 'frame 8');
  await live.settled();
  const command = await live.command();
  assert.match(command, /--frames 8 --first 7 --fps 10 /);
  assert.equal(difference(await live.pixels(), live.render(command)), 'none');
  assert.notEqual(difference(await live.pixels(), first), 'none');
  // A frame without a picture is a message, which the next frame ends.
  await setTime(live.page, '1');
  await waitForNotice(live.page, /cannot read .*shot\.0017\.png/);
  assert.ok(await live.page.locator('#sourcePanel').isHidden(), 'the source cannot explain it');
  await setTime(live.page, '0');
  await live.settled();
  assert.equal(await live.page.locator('#errors').textContent(), '');
  await live.page.getByRole('button', { name: 'Play', exact: true }).click();
  await live.page.waitForFunction(() => document.getElementById('frame').textContent === 'frame 9');
  await live.page.getByRole('button', { name: 'Pause' }).click();
  await live.settled();
});

test('an opened project has its own picture and clock', async () => {
  const files = { 'work.pbk': good };
  for (const [number, file] of [[5, scene], [6, second], [7, scene], [8, second]]) files[`shot.${number}.png`] = fs.readFileSync(file);
  const live = await start(['-i', '{folder}/shot.%d.png', '--fps', '10'], { files });
  const { page } = live;
  await page.getByRole('combobox', { name: 'Layer' }).selectOption({ label: 'shot.%d.png' });
  await page.getByRole('slider', { name: 'Time in seconds' }).press('ArrowRight');
  await page.getByRole('button', { name: 'gain: add a keyframe' }).click();
  await live.settled();
  const wanted = await live.pixels();
  const [saved] = await Promise.all([page.waitForEvent('download'), page.getByRole('button', { name: 'Save project' }).click()]);
  const project = live.file('project.json');
  await saved.saveAs(project);

  const byPage = await start();
  await byPage.page.getByLabel('Project file').setInputFiles(project);
  const byCommand = await Live.start(['--project', project]);
  lives.push(byCommand);
  for (const other of [byPage, byCommand]) {
    await other.page.waitForFunction(() => document.getElementById('frame').textContent === 'frame 6');
    await other.settled();
    assert.equal(difference(await other.pixels(), wanted), 'none');
    const command = await other.command();
    assert.match(command, /shot.%d.png --key gain@6=1 --frames 6 --first 5 --fps 10 /);
    assert.equal(difference(await other.pixels(), other.render(command)), 'none');
  }
});

test('a project that cannot be opened is a message, and the picture stays', async () => {
  const live = await start();
  await setGain(live.page, '0.5');
  await live.settled();
  const before = await live.pixels();
  const [saved] = await Promise.all([live.page.waitForEvent('download'), live.page.getByRole('button', { name: 'Save project' }).click()]);
  const project = JSON.parse(fs.readFileSync(await saved.path(), 'utf8'));
  project.layer.picture = 'elsewhere.png';
  for (const [content, message] of [['{}', /^mine\.json: not a valid project/],
                                    [JSON.stringify(project), /cannot read 'elsewhere\.png'.*relative paths cannot be found/]]) {
    await live.page.getByLabel('Project file').setInputFiles({ name: 'mine.json', mimeType: 'application/json', buffer: Buffer.from(content) });
    await live.page.waitForFunction((source) => new RegExp(source).test(document.getElementById('toast').textContent), message.source);
    await live.settled();
    assert.equal(difference(await live.pixels(), before), 'none');
  }
});

test('--open opens the printed address', async () => {
  const live = await start(['--open'], { env: ({ folder }) => {
    fs.writeFileSync(`${folder}/xdg-open`, '#!/bin/sh\necho "$1" > "$(dirname "$0")/opened"\n', { mode: 0o755 });
    return { PATH: `${folder}:${process.env.PATH}` };
  } });
  assert.equal(fs.readFileSync(live.file('opened'), 'utf8').trim(), live.url);
});

test('when the server ends, the page says so', async () => {
  const live = await start();
  live.server.kill('SIGTERM');
  await waitForNotice(live.page, /The server has ended/);
});
