// The WebSocket to the server: requests with replies, and messages that nobody asked for.

export class Connection {
  // `onMessage` gets the messages without a request; `onClose` is called when the server is gone.
  constructor({ onMessage, onClose }) {
    const address = new URL('socket', location.href);
    address.protocol = 'ws:';
    this.socket = new WebSocket(address);
    this.socket.binaryType = 'arraybuffer';
    this.waiting = new Map(); // by the request's number
    this.lastId = 0;
    this.head = null; // a reply whose bytes follow
    this.onMessage = onMessage;
    this.socket.onmessage = (event) => this.receive(event.data);
    this.socket.onclose = onClose;
    // Bytes per millisecond of the last large message; undefined: not known yet.
    this.speed = undefined;
  }

  // Resolves to the reply, which may be { do: "failed" } or, if the render process ended, "ended".
  // The bytes of a picture are its "body".
  ask(request) {
    const id = ++this.lastId;
    this.socket.send(JSON.stringify({ ...request, id }));
    return new Promise((resolve) => this.waiting.set(id, resolve));
  }

  receive(data) {
    if (typeof data !== 'string') {
      this.measure(data.byteLength);
      this.resolve({ ...this.head, body: data });
      this.head = null;
      return;
    }
    const message = JSON.parse(data);
    if (message.bytes > 0) {
      this.head = message;
      this.headTime = performance.now();
    } else if (message.id !== undefined) {
      this.resolve(message);
    } else {
      if (message.do === 'ended') this.failAll(message);
      this.onMessage(message);
    }
  }

  measure(bytes) {
    if (bytes > 250000) this.speed = bytes / Math.max(1, performance.now() - this.headTime);
  }

  resolve(message) {
    this.waiting.get(message.id)?.(message);
    this.waiting.delete(message.id);
  }

  failAll(message) {
    for (const resolve of this.waiting.values()) resolve(message);
    this.waiting.clear();
  }
}
