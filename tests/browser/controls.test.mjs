// Every kind of control, moved as a user does: the painted pixels are those that the copied command
// renders, and the value is the one that was set.

import assert from 'node:assert/strict';
import fs from 'node:fs';
import path from 'node:path';
import { after, before, test } from 'node:test';

import { difference, examples, Live, scene, second } from './live.mjs';

let live;
before(async () => {
  live = await Live.start([path.join(import.meta.dirname, 'every_kind.pbk'), '-i', scene, '-i', second]);
});
after(() => live.stop());

const field = (name) => live.page.getByRole('textbox', { name, exact: true });

async function drag(locator, dx, dy) {
  const box = await locator.boundingBox();
  const x = box.x + box.width / 2, y = box.y + box.height / 2;
  await live.page.mouse.move(x, y);
  await live.page.mouse.down();
  await live.page.mouse.move(x + dx / 2, y + dy / 2);
  await live.page.mouse.move(x + dx, y + dy);
  await live.page.mouse.up();
}

async function type(name, text) {
  await field(name).fill(text);
  await field(name).press('Enter');
}

// What is done, and what the command must then contain.
const actions = [
  ['a slider by its arrow keys', async () => {
    const slider = live.page.getByRole('slider', { name: 'Count', exact: true });
    await slider.focus();
    for (const key of ['ArrowRight', 'ArrowRight', 'ArrowLeft', 'Shift+ArrowRight']) await slider.press(key);
  }, /--set Count=15 /],
  ['a typed number', () => type('Gain', '1.375'), /--set Gain=1.375 /],
  ['a number with a decimal comma', () => type('Gain', '0,75'), /--set Gain=0.75 /],
  ['a number beyond the range', () => type('Gain', '7'), /--set Gain=2 /],
  ['a fraction for a whole number', () => type('Count', '7.6'), /--set Count=8 /],
  ['a slider by the mouse', () => drag(live.page.getByRole('slider', { name: 'Gain', exact: true }), -30, 0), /--set Gain=\d\.\d+ /],
  ['a label that is dragged', () => drag(live.control('Amount').locator('.name'), 20, 0), /--set Amount=\d+ /],
  ['a component of a vector', () => type('shift[1]', '-0.25'), /--set 'shift\[1\]=-0.25' /],
  ['a checkbox', () => live.page.getByRole('checkbox', { name: 'Swap' }).check(), /--set Swap=1 /],
  ['a popup', () => live.page.getByRole('combobox', { name: 'Mode' }).selectOption('Checks'), /--set Mode=3 /],
  ['a point by its handle', () => drag(live.page.locator('.handle'), 60, -40), /--set Center=2[67]\d(\.\d)?,14\d(\.\d)? /],
  ['a point by its arrow keys', async () => {
    await type('Center, x', '100');
    await live.page.locator('.handle').press('ArrowRight');
    await live.page.locator('.handle').press('Shift+ArrowRight');
  }, /--set Center=111,/],
  ['a point by its handle, from out of view', async () => {
    await type('Center, x', '9000');
    const stage = await live.page.locator('#stage').boundingBox();
    await live.page.locator('.handle').focus();
    const box = await live.page.locator('.handle').boundingBox();
    assert.ok(box.x > stage.x && box.x + box.width <= stage.x + stage.width, 'the handle stays visible');
    const picture = await live.page.locator('#result').boundingBox();
    await live.page.mouse.move(box.x + 11, box.y + 11);
    await live.page.mouse.down();
    await live.page.mouse.move(picture.x + picture.width / 4, picture.y + picture.height / 4);
    await live.page.mouse.up();
  }, /--set Center=1[12]\d(\.\d)?,[78]\d(\.\d)? /],
  ['an angle by its dial', async () => {
    await live.page.getByRole('slider', { name: 'Turn' }).press('Shift+ArrowRight');
    await live.page.getByRole('slider', { name: 'Turn' }).press('ArrowUp');
  }, /--set Turn=41 /],
  ['an angle of several turns', () => type('Turn, degrees', '500.5'), /--set Turn=500.5 /],
  ['a colour', () => type('Tone, hexadecimal', '#ff8000'), /--set Tone=1,0.50196,0,1 /],
  ['a layer', () => live.page.getByRole('combobox', { name: 'second' }).selectOption({ label: 'second.png' }), /--layer 1=\S+second.png /],
  ['a time', async () => {
    await live.page.keyboard.press('Escape');
    await live.page.getByRole('button', { name: 'Time', exact: true }).click();
    await type('Time in seconds', '1.5');
  }, /--time 1.5 /],
];

for (const [name, action, wanted] of actions)
  test(`${name} changes the picture as the command does`, async () => {
    const before = await live.pixels();
    await action();
    await live.settled();
    const painted = await live.pixels();
    const command = await live.command();
    assert.match(command, wanted);
    assert.equal(difference(painted, live.render(command)), 'none');
    if (!/time|range/.test(name)) assert.notEqual(difference(painted, before), 'none');
  });

test('reset returns to the defaults, one by one and all together', async () => {
  await live.page.getByRole('button', { name: 'Gain: to the default' }).click();
  await live.settled();
  assert.doesNotMatch(await live.command(), /Gain/);
  await live.page.getByRole('button', { name: 'Reset all' }).click();
  await type('Time in seconds', '0');
  await live.settled();
  assert.doesNotMatch(await live.command(), /--set|--layer|--time/);
});

test('undo and redo go through the changes', async () => {
  const gain = () => field('Gain').inputValue();
  await type('Gain', '1.5');
  await drag(live.control('Gain').locator('.name'), 20, 0); // one step
  const dragged = await gain();
  assert.notEqual(dragged, '1.5');
  await live.page.getByRole('button', { name: 'Reset all' }).click();
  assert.equal(await gain(), '1');
  await live.page.keyboard.press('Control+z');
  assert.equal(await gain(), dragged);
  await live.page.getByRole('button', { name: 'Undo' }).click();
  assert.equal(await gain(), '1.5');
  await live.page.keyboard.press('Control+Shift+z');
  assert.equal(await gain(), dragged);
  await live.page.getByRole('button', { name: 'Undo' }).click();
  await live.page.getByRole('button', { name: 'Undo' }).click();
  assert.equal(await gain(), '1');
  await live.settled();
  assert.doesNotMatch(await live.command(), /--set/);
});

test('what a number becomes is told, and what a parameter is for', async () => {
  await type('Gain', '7');
  assert.match(await live.page.locator('#toast').textContent(), /Gain: the nearest possible value is 2/);
  await live.page.getByRole('button', { name: 'Gain: to the default' }).click();
  assert.equal(await live.control('Gain').getAttribute('title'), 'Brightness.');
});

test('the values of the pixel under the pointer follow a change', async () => {
  const channels = async () => [...(await live.page.locator('#pixel').textContent()).matchAll(/[RGB] +(\d+)/g)].slice(0, 3).map((match) => match[1]);
  const box = await live.page.locator('#result').boundingBox();
  await live.page.mouse.move(box.x + 50, box.y + 50);
  await live.page.waitForFunction(() => document.getElementById('pixel').textContent !== '');
  const before = await live.page.locator('#pixel').textContent();
  const [red, green, blue] = await channels();
  await live.page.getByRole('checkbox', { name: 'Swap' }).press(' ');
  await live.page.waitForFunction((old) => document.getElementById('pixel').textContent !== old, before);
  assert.deepEqual(await channels(), [blue, green, red]);
  await live.page.getByRole('checkbox', { name: 'Swap' }).press(' ');
  await live.settled();
});

test('keyframes are interpolated, and a project keeps them', async () => {
  await live.page.getByRole('button', { name: 'Gain: add a keyframe' }).click();
  await type('Time in seconds', '4');
  await type('Gain', '0.5');
  await type('Time in seconds', '2');
  await live.settled();
  await live.page.waitForFunction(() => document.querySelector('[aria-label="Gain"].number').value === '0.75');
  const command = await live.command();
  assert.match(command, /--key Gain@0=1 --key Gain@96=0.5 --frames 48 /);
  assert.equal(difference(await live.pixels(), live.render(command)), 'none');
  const [saved] = await Promise.all([live.page.waitForEvent('download'),
                                     live.page.getByRole('button', { name: 'Save project' }).click()]);
  await saved.saveAs(live.file('project.json'));
  const project = JSON.parse(fs.readFileSync(live.file('project.json'), 'utf8'));
  const gain = project.effect.controls.find((control) => control.name === 'Gain');
  assert.deepEqual(gain.keyframes.map(({ time, value }) => [time, value]), [[0, 1], [4, 0.5]]);

  await live.page.getByRole('button', { name: 'Reset all' }).click();
  await live.settled();
  await live.page.getByLabel('Project file').setInputFiles(live.file('project.json'));
  await live.page.waitForFunction(() => document.querySelector('[aria-label="Gain"].number').value === '0.75');
  await live.settled();
  assert.equal(difference(await live.pixels(), live.render(`pbhost render --project '${live.file('project.json')}' -o x`)), 'none');
});

test('a held keyframe keeps its value until the next one, and a project keeps it', async () => {
  const button = (name) => live.page.getByRole('button', { name, exact: true });
  await type('Time in seconds', '0');
  await button('Gain: hold the keyframe').click();
  await type('Time in seconds', '2.01'); // the nearest frame
  assert.equal(await field('Time in seconds').inputValue(), '2');
  await live.page.waitForFunction(() => document.querySelector('[aria-label="Gain"].number').value === '1');
  await live.settled();
  const command = await live.command();
  assert.match(command, /--key Gain@0=hold:1 --key Gain@96=0.5 --frames 48 /);
  assert.equal(difference(await live.pixels(), live.render(command)), 'none');
  const [saved] = await Promise.all([live.page.waitForEvent('download'), button('Save project').click()]);
  await saved.saveAs(live.file('held.json'));
  await button('Reset all').click();
  await live.page.getByLabel('Project file').setInputFiles(live.file('held.json'));
  await live.page.getByRole('button', { name: 'Keyframe at 0 s: Gain' }).click();
  // Another value does not change the kind; a further click removes it.
  await type('Gain', '1.5');
  assert.match(await live.command(), /--key Gain@0=hold:1.5 /);
  await button('Gain: remove the held keyframe').click();
  assert.doesNotMatch(await live.command(), /Gain@0/);
  // A checkbox has nothing between its values.
  await button('Swap: add a keyframe').click();
  assert.match(await live.command(), /--key Swap@0=hold:0 /);
  await button('Swap: remove the held keyframe').click();
  await live.settled();
});

test('the saved picture is the rendered one, in the depth that is chosen', async () => {
  await live.page.getByRole('combobox', { name: 'Depth' }).selectOption('32');
  await live.page.waitForFunction(() => document.getElementById('facts').textContent.includes('32 bits'));
  await live.settled();
  await live.page.getByRole('combobox', { name: 'Format of the saved picture' }).selectOption('exr');
  const [saved] = await Promise.all([live.page.waitForEvent('download'),
                                     live.page.getByRole('button', { name: 'Save picture' }).click()]);
  assert.equal(saved.suggestedFilename(), 'EveryKind.exr');
  await saved.saveAs(live.file('saved.exr'));
  fs.copyFileSync(live.run(await live.command(), 'exr'), live.file('wanted.exr'));
  // The copy kernel turns both into the same format.
  const pixels = (file) => live.render(`pbhost render '${examples}/copy.pbk' -i '${file}' --depth 16 -o x`);
  assert.equal(difference(pixels(live.file('saved.exr')), pixels(live.file('wanted.exr'))), 'none');
});

test('nothing went wrong in the page', () => {
  assert.deepEqual(live.faults, []);
  assert.equal(live.errors, '');
});
