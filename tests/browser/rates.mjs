// Measures how fast the page is: prints the lines of the table in docs/performance.md.
//
// A drag moves the pointer on a label for 1.5 seconds. "frames" are paints while the pointer moves;
// "settled" is the time from the last move to the paint of that value, rendered in full size, and to
// its lossless paint; "save" the time from the write of the file to the paint.

import { execFileSync } from 'node:child_process';
import fs from 'node:fs';

import { examples, Live, pbhost } from './live.mjs';

const runs = Number(process.env.RUNS ?? 7);
const median = (list) => [...list].sort((a, b) => a - b)[Math.floor(list.length / 2)];

const picture = '/tmp/pbhost-rates.png';
execFileSync(pbhost, ['render', `${examples}/plasma.pbk`, '--size', '1920x1080', '-o', picture]);
const twirl = fs.readFileSync(`${examples}/twirl.pbk`, 'utf8');
const live = await Live.start(['{folder}/twirl.pbk', '-i', picture], { files: { 'twirl.pbk': twirl } });
const { page } = live;

async function drag() {
  const box = await page.locator('[data-kind="angle"] .name').boundingBox();
  const y = box.y + box.height / 2;
  await page.evaluate(() => performance.clearMarks());
  await page.mouse.move(box.x + 5, y);
  await page.mouse.down();
  for (const end = Date.now() + 1500; Date.now() < end;) {
    await page.mouse.move(box.x + 5 + ((Date.now() / 8) % 100), y);
    await page.waitForTimeout(8);
  }
  await page.mouse.up();
  await live.settled();
  return page.evaluate(() => {
    const changes = performance.getEntriesByName('change'), paints = performance.getEntriesByName('painted');
    const last = changes.at(-1);
    const during = paints.filter((each) => each.startTime < last.startTime);
    const settled = paints.filter((each) => each.detail.change >= last.detail && each.detail.downsample === 1);
    return {
      frames: ((during.length - 1) * 1000) / (during.at(-1).startTime - during[0].startTime),
      settled: settled[0].startTime - last.startTime,
      lossless: settled.find((each) => each.detail.encoding !== 'jpeg').startTime - last.startTime,
    };
  });
}

async function save(k) {
  const painted = page.evaluate(() => new Promise((resolve) => {
    const { change } = document.body.dataset;
    new MutationObserver((records, observer) => {
      if (document.body.dataset.painted.split(' ')[0] === change) return;
      observer.disconnect();
      resolve(Date.now());
    }).observe(document.body, { attributeFilter: ['data-painted'] });
  }));
  await page.waitForTimeout(100);
  const start = Date.now();
  fs.writeFileSync(live.file('twirl.pbk'), twirl.replace('center + turned', `center + turned + ${k}.0`));
  return (await painted) - start;
}

await drag(); // the first one warms up
const drags = [], saves = [];
for (let k = 0; k < runs; ++k) drags.push(await drag());
for (let k = 1; k <= runs; ++k) {
  saves.push(await save(k));
  await live.settled();
}
const facts = await page.locator('#facts').textContent();
await live.stop();
fs.rmSync(picture);

const figure = (list) => `${median(list).toFixed(0)} (${Math.min(...list).toFixed(0)} to ${Math.max(...list).toFixed(0)})`;
console.log(`${facts}, load ${fs.readFileSync('/proc/loadavg', 'utf8').split(' ')[0]}`);
console.log(`| frames per second while dragging | ${figure(drags.map((each) => each.frames))} |`);
console.log(`| last move to its picture, ms | ${figure(drags.map((each) => each.settled))} |`);
console.log(`| last move to the lossless picture, ms | ${figure(drags.map((each) => each.lossless))} |`);
console.log(`| save to the new picture, ms | ${figure(saves)} |`);
