// Makes the pictures of the page in docs/pictures.

import fs from 'node:fs';
import path from 'node:path';

import { alpha, examples, Live, root, scene, second } from './live.mjs';

const folder = process.env.PICTURES ?? path.join(root, 'docs/pictures');

async function shot(live, name) {
  await live.page.mouse.move(5, 200);
  await live.page.waitForTimeout(300);
  await live.page.screenshot({ path: path.join(folder, `live_${name}.png`) });
}

const size = { viewport: { width: 1280, height: 760 } };

// The picture beside its controls, and a broken save.
const twirl = fs.readFileSync(`${examples}/twirl.pbk`, 'utf8');
let live = await Live.start(['{folder}/twirl.pbk', '-i', scene], { files: { 'twirl.pbk': twirl }, context: size });
const angle = live.page.getByRole('textbox', { name: 'Angle, degrees' });
await angle.fill('-210');
await angle.press('Enter');
await live.settled();
await shot(live, 'dark');
fs.writeFileSync(live.file('twirl.pbk'), twirl.replace('nearness * nearness', 'nearness * nearnes'));
await live.page.waitForFunction(() => !document.getElementById('notice').hidden);
await shot(live, 'error');
await live.stop();

// Light, with two pictures compared.
live = await Live.start([`${examples}/tint.pbk`, '-i', scene, '-i', second], { context: { ...size, colorScheme: 'light' } });
await live.page.getByRole('combobox', { name: 'Compare' }).selectOption('input');
await live.page.getByRole('slider', { name: 'Position of the comparison' }).press('ArrowLeft');
await live.settled();
await shot(live, 'light');
await live.stop();

// Keyframes, and a group.
live = await Live.start([`${examples}/plasma.pbk`, '--size', '960x540', '--frames', '1-120'], { context: size });
const time = live.page.getByRole('textbox', { name: 'Time in seconds', exact: true });
await live.page.getByRole('button', { name: 'Phase: add a keyframe' }).click();
await time.fill('4');
await time.press('Enter');
const phase = live.page.getByRole('textbox', { name: 'Phase, degrees' });
await phase.fill('1440');
await phase.press('Enter');
await time.fill('2.5');
await time.press('Enter');
await live.page.getByRole('button', { name: 'Scale: add a keyframe' }).click();
await live.page.getByRole('button', { name: 'Scale: hold the keyframe' }).click();
await live.settled();
await shot(live, 'time');
await live.stop();

// Transparent pixels, zoomed, with the value of a pixel.
live = await Live.start([path.join(root, 'tests/browser/every_kind.pbk'), '-i', scene, '-i', second], { context: { ...size, colorScheme: 'light' } });
await live.page.getByRole('combobox', { name: 'second' }).selectOption({ label: 'second.png' });
await live.settled();
await shot(live, 'kinds');
await live.stop();

live = await Live.start([`${examples}/copy.pbk`, '-i', alpha], { context: size });
await live.page.mouse.move(420, 300);
await live.page.mouse.wheel(0, -700);
await live.page.mouse.move(430, 310);
await live.page.waitForFunction(() => document.getElementById('pixel').textContent !== '');
await live.page.screenshot({ path: path.join(folder, 'live_alpha.png') });
await live.stop();
