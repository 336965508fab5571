// Zoom, pixel values, channels, comparison, dropped pictures, the keyboard, names for screen
// readers.

import assert from 'node:assert/strict';
import { after, before, test } from 'node:test';

import { alpha, difference, examples, Live, scene, second } from './live.mjs';

let live, page;
before(async () => {
  live = await Live.start([`${examples}/copy.pbk`, '-i', alpha, '-i', scene]);
  page = live.page;
});
after(() => live.stop());

// Red, green, blue and alpha of the picture, each as a picture of its own.
function channel(letter) {
  const kernel = { R: 1, G: 2, B: 3, A: 4 }[letter];
  return live.render(`pbhost render '${examples}/channels.pbk' -i '${alpha}' --set Show=${kernel} -o x`);
}

test('single channels are those of the kernel that copies them', async () => {
  for (const letter of ['R', 'G', 'B', 'A']) {
    await page.getByRole('radio', { name: letter, exact: true }).click();
    await live.settled();
    assert.equal(difference(await live.pixels(), channel(letter)), 'none', letter);
  }
  await page.getByRole('radio', { name: 'RGB', exact: true }).click();
  await live.settled();
  assert.equal(difference(await live.pixels(), live.render(`pbhost render '${examples}/copy.pbk' -i '${alpha}' -o x`)), 'none');
});

test('transparent pixels lie over a checkerboard', async () => {
  await page.getByRole('radio', { name: 'RGBA' }).click();
  await live.settled();
  const [color, part, shown] = [live.render(`pbhost render '${examples}/copy.pbk' -i '${alpha}' -o x`), channel('A'), await live.pixels()];
  const square = 5; // pixels: a 96th of the width
  for (let i = 0; i < shown.length; ++i) {
    const x = Math.floor(i / 3) % 480, y = Math.floor(i / 3 / 480);
    const back = (Math.floor(x / square) + Math.floor(y / square)) % 2 === 0 ? 102 : 153;
    assert.equal(shown[i], Math.floor((color[i] * part[i] + back * (255 - part[i]) + 127) / 255), `${x}, ${y}`);
  }
});

test('the pixel under the pointer is shown with the values of the file', async () => {
  const box = await page.locator('#result').boundingBox();
  const [x, y] = [180, 120];
  await page.mouse.move(box.x + ((x + 0.5) / 480) * box.width, box.y + ((y + 0.5) / 320) * box.height);
  await page.waitForFunction(() => document.getElementById('pixel').textContent !== '');
  const at = (y * 480 + x) * 3;
  const color = live.render(`pbhost render '${examples}/copy.pbk' -i '${alpha}' -o x`);
  const wanted = [color[at], color[at + 1], color[at + 2], channel('A')[at]];
  const text = await page.locator('#pixel').textContent();
  const [output, input] = text.split('input').map((part) => [...part.matchAll(/[RGBA] +(\d+)/g)].map((match) => Number(match[1])));
  assert.ok(text.startsWith(`${x}, ${y} `), text);
  assert.deepEqual(output, wanted);
  assert.deepEqual(input, wanted);
});

test('the wheel zooms at the pointer, the keys fit and show in full size', async () => {
  const middle = async () => {
    const box = await page.locator('#result').boundingBox();
    return { box, part: { x: (400 - box.x) / box.width, y: (300 - box.y) / box.height } };
  };
  const before = await middle();
  await page.mouse.move(400, 300);
  await page.mouse.wheel(0, -300);
  await page.waitForFunction((width) => document.getElementById('result').getBoundingClientRect().width > width, before.box.width);
  const after = await middle();
  assert.ok(Math.abs(after.part.x - before.part.x) < 0.01 && Math.abs(after.part.y - before.part.y) < 0.01);
  await page.locator('#stage').focus();
  await page.keyboard.press('1');
  assert.equal(Math.round((await page.locator('#result').boundingBox()).width), 480);
  await page.keyboard.press('ArrowRight');
  await page.keyboard.press('f');
  const fitted = await page.locator('#result').boundingBox();
  assert.ok(Math.abs(fitted.width - before.box.width) < 1);
});

test('the comparison shows the input, or the kept picture, beside the result', async () => {
  await page.getByRole('combobox', { name: 'Layer' }).selectOption({ label: 'scene.png' });
  await live.settled();
  await page.getByRole('button', { name: 'Keep', exact: true }).click();
  const kept = await live.pixels();
  await page.getByRole('combobox', { name: 'Layer' }).selectOption({ label: 'alpha.png' });
  await page.getByRole('radio', { name: 'RGB', exact: true }).click();
  await live.settled();
  await page.getByRole('combobox', { name: 'Compare' }).selectOption('kept');
  assert.equal(difference(await live.pixels(page, 'other'), kept), 'none');
  const wipe = page.getByRole('slider', { name: 'Position of the comparison' });
  await wipe.press('Shift+ArrowRight');
  assert.equal(await wipe.getAttribute('aria-valuenow'), '60');
  await page.getByRole('combobox', { name: 'Compare' }).selectOption('input');
  await page.waitForFunction(() => document.getElementById('wipeName').textContent === 'input');
  assert.equal(difference(await live.pixels(page, 'other'), await live.pixels()), 'none');
  await page.getByRole('combobox', { name: 'Compare' }).selectOption('off');
  await page.getByRole('button', { name: 'Restore' }).click();
  await page.waitForFunction(() => document.querySelector('[aria-label="Layer"]').selectedOptions[0].textContent === 'scene.png');
  await live.settled();
});

test('a picture from this computer becomes the layer', async () => {
  await page.getByLabel('Layer, file').setInputFiles(second);
  await page.waitForFunction(() => document.querySelector('[aria-label="Layer"]').selectedOptions[0].textContent === 'second.png');
  await live.settled();
  await live.command();
  assert.match(await page.locator('#toast').textContent(), /second\.png was chosen in the browser and is deleted/);
  assert.equal(difference(await live.pixels(), live.render(`pbhost render '${examples}/copy.pbk' -i '${second}' -o x`)), 'none');
});

test('a file that is no picture is an error, and the last picture stays', async () => {
  const before = await live.pixels();
  await page.getByLabel('Layer, file').setInputFiles({ name: 'a.png', mimeType: 'image/png', buffer: Buffer.from('no picture') });
  await page.waitForFunction(() => /cannot read .*a\.png/.test(document.getElementById('toast').textContent));
  await live.settled();
  assert.equal(difference(await live.pixels(), before), 'none');
  assert.equal(await page.getByRole('combobox', { name: 'Layer' }).evaluate((list) => list.selectedOptions[0].textContent), 'second.png');
});

test('with 32 bits the exposure brightens the picture', async () => {
  await page.getByRole('combobox', { name: 'Depth' }).selectOption('32');
  await page.waitForFunction(() => document.getElementById('facts').textContent.includes('32 bits'));
  await live.settled();
  const before = await live.pixels();
  await page.getByRole('slider', { name: /Exposure/ }).fill('1');
  await live.settled();
  const after = await live.pixels();
  for (let i = 0; i < before.length; i += 997)
    assert.ok(Math.abs(after[i] - Math.min(255, before[i] * 2)) <= 1, `${i}: ${before[i]} ${after[i]}`);
});

test('keys work after a click on a button, and the arrow keys choose the channels', async () => {
  await page.getByRole('button', { name: 'Keep', exact: true }).click();
  await page.keyboard.press('1');
  assert.equal(await page.locator('#zoom').textContent(), '100 %');
  await page.keyboard.press('f');
  assert.notEqual(await page.locator('#zoom').textContent(), '100 %');
  await page.getByRole('radio', { name: 'RGBA' }).click();
  await page.keyboard.press('ArrowRight');
  assert.ok(await page.getByRole('radio', { name: 'RGB', exact: true }).isChecked());
});

test('every control has a name, and all can be reached by the keyboard', async () => {
  const nameless = await page.evaluate(() => [...document.querySelectorAll('button, input, select, [role=slider]')]
    .filter((each) => !each.hidden && !each.getAttribute('aria-label') && !each.textContent.trim() && !each.labels?.length)
    .map((each) => each.outerHTML));
  assert.deepEqual(nameless, []);
  await page.evaluate(() => document.activeElement.blur());
  const reached = new Set();
  for (let i = 0; i < 60; ++i) {
    await page.keyboard.press('Tab');
    reached.add(await page.evaluate(() => document.activeElement.id || document.activeElement.getAttribute('aria-label')));
  }
  for (const id of ['copyCommand', 'savePicture', 'fit', 'compare', 'stage', 'resetAll', 'Layer'])
    assert.ok(reached.has(id), id);
  assert.deepEqual(live.faults, []);
});
