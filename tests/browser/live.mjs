// Starts `pbhost live` and a browser, and reads what the page shows.

import { chromium } from 'playwright-core';
import { execFileSync, spawn } from 'node:child_process';
import fs from 'node:fs';
import os from 'node:os';
import path from 'node:path';

export const root = path.resolve(import.meta.dirname, '../..');
export const pbhost = process.env.PBHOST ?? path.join(root, 'build/test/pbhost/pbhost');
export const examples = path.join(root, 'examples');
export const scene = path.join(examples, 'pictures/scene.png');
export const second = path.join(examples, 'pictures/second.png');
export const alpha = path.join(examples, 'pictures/alpha.png');

const patience = 20000; // milliseconds

export class Live {
  // `args` are those of `pbhost live`; "{folder}" stands for the temporary folder.
  static async start(args, options = {}) {
    const live = new Live();
    try {
      await live.open(args, options);
    } catch (error) {
      await live.stop();
      throw error;
    }
    return live;
  }

  async open(args, options) {
    this.folder = fs.mkdtempSync(path.join(os.tmpdir(), 'pbhost-browser-'));
    for (const [name, content] of Object.entries(options.files ?? {}))
      fs.writeFileSync(this.file(name), content);
    this.errors = '';
    this.server = spawn(pbhost, ['live', ...args.map((arg) => arg.replace('{folder}', this.folder))],
                        { env: { ...process.env, XDG_CONFIG_HOME: this.folder, ...options.env?.(this) } });
    this.server.stderr.on('data', (data) => (this.errors += data));
    this.url = await new Promise((resolve, reject) => {
      this.server.stdout.once('data', (data) => resolve(String(data).trim()));
      this.server.once('exit', (code) => reject(new Error(`pbhost ended with ${code}: ${this.errors}`)));
    });
    this.browser = await chromium.launch({ executablePath: process.env.CHROMIUM ?? '/usr/bin/chromium',
                                           args: ['--no-sandbox'] });
    this.context = await this.browser.newContext({
      viewport: { width: 1440, height: 860 }, colorScheme: 'dark', acceptDownloads: true,
      permissions: ['clipboard-read', 'clipboard-write'], ...options.context });
    this.faults = []; // errors in the page
    this.page = await this.newPage(options.isBroken);
  }

  async newPage(isBroken = false) {
    const page = await this.context.newPage();
    page.setDefaultTimeout(patience);
    page.on('pageerror', (error) => this.faults.push(error.stack));
    await page.goto(this.url);
    if (!isBroken) await this.settled(page);
    return page;
  }

  file(name) {
    return path.join(this.folder, name);
  }

  // Waits for the picture of the newest values, lossless and in full size.
  async settled(page = this.page) {
    await page.waitForFunction(() => {
      const { painted, change, isLoading } = document.body.dataset;
      const [number, encoding, downsample] = (painted ?? '').split(' ');
      return isLoading === 'false' && number === change && encoding !== 'jpeg' && downsample === '1' &&
             document.getElementById('notice').hidden;
    }, null, { timeout: patience });
  }

  // Red, green and blue of each pixel of a canvas.
  async pixels(page = this.page, id = 'result') {
    const text = await page.evaluate((canvasId) => {
      const canvas = document.getElementById(canvasId);
      const { data } = canvas.getContext('2d').getImageData(0, 0, canvas.width, canvas.height);
      let bytes = '';
      for (let i = 0; i < data.length; i += 4) bytes += String.fromCharCode(data[i], data[i + 1], data[i + 2]);
      return btoa(bytes);
    }, id);
    return Buffer.from(text, 'base64');
  }

  // The command that the page copies.
  async command(page = this.page) {
    await page.getByRole('button', { name: 'Copy as command' }).click();
    return page.evaluate(() => navigator.clipboard.readText());
  }

  // Runs the command with another output, without its extension; returns the file.
  run(command, extension) {
    fs.rmSync(this.file('out'), { recursive: true, force: true });
    fs.mkdirSync(this.file('out'));
    const name = command.includes(' --frames ') ? 'rendered.%04d' : 'rendered';
    const line = command.replace(/^pbhost/, `'${pbhost}'`).replace(/-o \S+$/, `-o '${this.file('out')}/${name}.${extension}'`);
    execFileSync('sh', ['-c', line], { stdio: ['ignore', 'ignore', 'pipe'] });
    const [file] = fs.readdirSync(this.file('out')).filter((name) => name.startsWith('rendered'));
    return path.join(this.file('out'), file);
  }

  // The pixels that the command renders.
  render(command) {
    return readPpm(this.run(command, 'ppm'));
  }

  control(name) {
    return this.page.locator('.control', { has: this.page.getByText(name, { exact: true }) });
  }

  async stop() {
    await this.browser?.close();
    this.server.kill('SIGTERM');
    await new Promise((resolve) => (this.server.exitCode ?? this.server.signalCode) !== null
      ? resolve() : this.server.once('exit', resolve));
    fs.rmSync(this.folder, { recursive: true });
  }
}

// The pixels of a binary PPM file with 8 bits.
export function readPpm(file) {
  const bytes = fs.readFileSync(file);
  let at = 0;
  for (let fields = 0; fields < 4; ++fields) {
    while (!/\s/.test(String.fromCharCode(bytes[at]))) ++at;
    ++at;
  }
  return bytes.subarray(at);
}

// How many bytes differ, for messages.
export function difference(a, b) {
  if (a.length !== b.length) return `sizes ${a.length} and ${b.length}`;
  let count = 0, most = 0;
  for (let i = 0; i < a.length; ++i) {
    if (a[i] !== b[i]) ++count;
    most = Math.max(most, Math.abs(a[i] - b[i]));
  }
  return count === 0 ? 'none' : `${count} bytes, by up to ${most}`;
}
