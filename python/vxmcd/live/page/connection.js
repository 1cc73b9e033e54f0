// SPDX-License-Identifier: MIT
// The connection to the program: the token, the WebSocket, requests and their results, connecting again.

const FIRST_WAIT_MS = 500;
const LONGEST_WAIT_MS = 5000;
const GOING_AWAY = 1001; // how a program that ends closes its connections

/** Reports to a listener {opened(), lost(hasEnded), denied(hadToken, text), message(object), frame(ArrayBuffer)}. */
export class Connection {
  constructor(listener) {
    this._listener = listener;
    this._socket = null;
    this._waitMs = FIRST_WAIT_MS;
    this._requests = new Map();
    this._nextId = 1;
    // It stays out of the address line, where others may read it, and in memory: a program that was started again
    // wants it.
    this._token = new URLSearchParams(location.hash.slice(1)).get("t");
    if (this._token) history.replaceState(null, "", location.pathname);
  }

  get isOpen() {
    return this._socket?.readyState === WebSocket.OPEN;
  }

  async start() {
    clearTimeout(this._timer);
    try {
      if (!(await this._isAdmitted())) return;
    } catch { // the program is not there
      this._lose(false);
      return;
    }
    this._open();
  }

  /** Another token, typed by the user. */
  retry(token) {
    this._token = token;
    return this.start();
  }

  send(message) {
    if (this.isOpen) this._socket.send(JSON.stringify(message));
  }

  /** Sends a request and promises its result. Without a connection that is a refusal, too. */
  ask(message) {
    if (!this.isOpen) return Promise.resolve({ ok: false, meaning: "there is no connection to the program" });
    const id = this._nextId++;
    return new Promise(resolve => {
      this._requests.set(id, resolve);
      this.send({ ...message, id });
    });
  }

  async _isAdmitted() {
    const body = JSON.stringify({ token: this._token ?? "" });
    const answer = await fetch("login", { method: "POST", body, headers: { "Content-Type": "application/json" } });
    if (answer.ok) return true;
    const text = answer.status === 403 || answer.status === 401 ? "" : await answer.text();
    this._listener.denied(Boolean(this._token), text.slice(0, 300));
    return false;
  }

  _open() {
    const socket = new WebSocket(`ws://${location.host}${location.pathname.replace(/[^/]*$/, "")}ws`);
    socket.binaryType = "arraybuffer";
    this._socket = socket;
    socket.onopen = () => {
      this._waitMs = FIRST_WAIT_MS;
      this._listener.opened();
    };
    socket.onmessage = ({ data }) => {
      if (typeof data !== "string") return this._listener.frame(data);
      const message = JSON.parse(data);
      if (message.result) this._finish(message.result);
      else this._listener.message(message);
    };
    socket.onclose = ({ code }) => {
      if (this._socket === socket) this._lose(code === GOING_AWAY);
    };
  }

  _finish(result) {
    this._requests.get(result.id)?.(result);
    this._requests.delete(result.id);
  }

  _lose(hasEnded) {
    this._socket = null;
    for (const resolve of this._requests.values()) resolve({ ok: false, meaning: "the connection was lost" });
    this._requests.clear();
    this._listener.lost(hasEnded);
    this._timer = setTimeout(() => this.start(), this._waitMs);
    this._waitMs = Math.min(2 * this._waitMs, LONGEST_WAIT_MS);
  }
}
