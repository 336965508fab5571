// The server is closed to everything but its own page. Each test tries what must not work.

import assert from 'node:assert/strict';
import http from 'node:http';
import { after, before, test } from 'node:test';

import { examples, Live, scene } from './live.mjs';

let live, address;
before(async () => {
  live = await Live.start([`${examples}/invert.pbk`, '-i', scene]);
  address = new URL(live.url);
});
after(() => live.stop());

// Returns the status and the body.
function ask({ path = address.pathname, method = 'GET', headers = {}, body = undefined }) {
  return new Promise((resolve, reject) => {
    const request = http.request({ host: '127.0.0.1', port: address.port, path, method, headers }, (response) => {
      let text = '';
      response.on('data', (data) => (text += data));
      response.on('end', () => resolve({ status: response.statusCode, headers: response.headers, text }));
    });
    request.on('upgrade', (response, socket) => {
      socket.destroy();
      resolve({ status: response.statusCode });
    });
    request.on('error', reject);
    if (body) request.write(body);
    request.end();
  });
}

const upgrade = (origin, path = `${address.pathname}socket`) => ask({
  path,
  headers: { Connection: 'Upgrade', Upgrade: 'websocket', 'Sec-WebSocket-Version': '13',
             'Sec-WebSocket-Key': 'AAAAAAAAAAAAAAAAAAAAAA==', ...(origin ? { Origin: origin } : {}) } });

test('it listens on this machine only, and the address has a random token', () => {
  assert.equal(address.hostname, '127.0.0.1');
  assert.match(address.pathname, /^\/[0-9a-f]{32}\/$/);
});

test('without the right token nothing is answered', async () => {
  const wrong = address.pathname.replace(/[0-9a-f]\/$/, (end) => (end === '0/' ? '1/' : '0/'));
  for (const path of ['/', '/main.js', wrong, `${wrong}main.js`, wrong.slice(0, -1)])
    assert.equal((await ask({ path })).status, 403, path);
  assert.equal((await upgrade(address.origin, `${wrong}socket`)).status, 403);
  assert.equal((await ask({})).status, 200);
});

test('another host name is refused', async () => {
  for (const host of ['evil.example', `evil.example:${address.port}`, '10.0.0.1', 'localhost.evil.example'])
    assert.equal((await ask({ headers: { Host: host } })).status, 403, host);
  assert.equal((await ask({ headers: { Host: 'localhost:9999' } })).status, 200); // a tunnel
});

test('another origin is refused', async () => {
  for (const origin of ['http://evil.example', 'null', 'https://127.0.0.1', `http://localhost:${address.port}`, undefined])
    assert.equal((await upgrade(origin)).status, 403, origin);
  assert.equal((await upgrade(address.origin)).status, 101);
  const post = { method: 'POST', path: `${address.pathname}pictures?name=a.png`, body: 'x' };
  assert.equal((await ask(post)).status, 403);
  assert.equal((await ask({ ...post, headers: { Origin: 'http://evil.example' } })).status, 403);
  assert.equal((await ask({ ...post, headers: { Origin: address.origin } })).status, 200);
});

test('no file but its own is served', async () => {
  for (const path of ['../server/gate.cpp', '%2e%2e/server/gate.cpp', '..%2f..%2f..%2fetc%2fpasswd', 'saved/../../etc/passwd',
                      'saved/saved0.png', '/etc/passwd'])
    assert.equal((await ask({ path: address.pathname + path })).status, 404, path);
  for (const method of ['PUT', 'DELETE'])
    assert.ok((await ask({ method, headers: { Origin: address.origin } })).status >= 400, method);
});

test('a file that is too large is refused', async () => {
  const { status } = await ask({ method: 'POST', path: `${address.pathname}pictures?name=a.png`,
                                 headers: { Origin: address.origin, 'Content-Length': String(65 * 1024 * 1024) } });
  assert.equal(status, 413);
});

test('the page can load and run nothing from elsewhere', async () => {
  const { headers } = await ask({});
  assert.match(headers['content-security-policy'], /default-src 'none'; script-src 'self';/);
  assert.doesNotMatch(headers['content-security-policy'], /unsafe/);
  assert.equal(headers['x-content-type-options'], 'nosniff');
  assert.equal(headers['referrer-policy'], 'no-referrer');
  const isRun = await live.page.evaluate(async () => {
    const script = document.createElement('script');
    script.textContent = 'window.isRun = true';
    document.body.append(script);
    const isFetched = await fetch('http://127.0.0.1:1/').then(() => true, (error) => !String(error).includes('Failed'));
    return Boolean(window.isRun) || isFetched;
  });
  assert.equal(isRun, false);
});

test('a page of another origin cannot open the socket', async () => {
  const page = await live.context.newPage();
  await page.goto('data:text/html,other');
  const result = await page.evaluate((url) => new Promise((resolve) => {
    const socket = new WebSocket(url);
    socket.onopen = () => resolve('open');
    socket.onerror = () => resolve('refused');
  }), `${live.url.replace('http', 'ws')}socket`);
  assert.equal(result, 'refused');
});
