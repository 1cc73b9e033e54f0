// SPDX-License-Identifier: MIT
// The page of the live view: puts the parts together, the top line, messages.

import { Banners } from "./banners.js";
import { Connection } from "./connection.js";
import { ControlBar } from "./control.js";
import { COLOUR_MAPS, Frame } from "./draw.js";
import { NONE, digits, fixed, timeText } from "./format.js";
import { Keys } from "./keys.js";
import { HistogramPanel, SavePanel, SettingsPanel } from "./panel.js";
import { ProfilePlot } from "./plots.js";
import { problem } from "./settings.js";
import { Stage } from "./stage.js";

const VIEW_MS = 40; // between two messages about view or cursor
const SHOWN_MS = 1000; // over which shown images are counted
const HIDDEN_MS = 1000; // between images for a page that nobody sees
const BAR_SECONDS = 1; // longer exposures have a bar
const ALARM_PERCENT = 80; // of the camera's memory: images are about to be lost
const SATURATED_TEXT = "saturated";
const $ = id => document.getElementById(id);

const PHASES = { closed: "○ closed", idle: "❚❚ idle", live: "● live", recording: "◉ recording", failed: "✕ failed",
  offline: "✕ no connection", connecting: "… connecting" };

/** Calls a function at most once in a while, with the newest arguments. */
function throttled(act, ms) {
  let timer = null, waiting = null;
  return (...given) => {
    waiting = given;
    timer ??= setTimeout(() => {
      timer = null;
      act(...waiting);
    }, ms);
  };
}

class Page {
  constructor() {
    this.state = {};
    this.settings = null;
    this.viewer = null; // this page's number
    this.isFrozen = false;
    this._value = null; // under the cursor: {value, isExact}
    this._waiting = null; // a frame that was not drawn yet
    this._shown = [];
    this._sendView = throttled(() => this._requestView(), VIEW_MS);
    this._sendCursor = throttled(() => this._requestCursor(), VIEW_MS);
    this._sendLine = throttled(() => this.connection.send({ line: this.stage.line }), VIEW_MS);
    this.stage = new Stage($("stage"), {
      viewChanged: () => this._viewChanged(),
      cursorChanged: pixel => this._cursorChanged(pixel),
      lineChanged: (line, isDrawing) => this._lineChanged(line, isDrawing),
      areaDrawn: area => this._setArea(area),
    });
    this.banners = new Banners($("banners"));
    this.connection = new Connection(this);
    const ask = message => this._ask(message);
    this.control = new ControlBar(this.connection, ask, this.banners);
    this.panel = new SettingsPanel(ask);
    this.histogram = new HistogramPanel(this.stage.stretch, () => this._stretchChanged());
    this.save = new SavePanel(ask, this.stage.picture);
    this.profile = new ProfilePlot($("profile-plot"));
    this._listen();
    this._showPhase("connecting");
    this.connection.start();
    requestAnimationFrame(() => this._tick());
  }

  // The connection's listener.

  opened() {
    this._showGate(null);
    this.banners.set("connection", null);
    $("stage").classList.remove("stale");
    this.isFrozen = false;
    $("freeze").setAttribute("aria-pressed", "false");
    this._requestView();
    this._requestCursor();
    if (this.stage.line) this.connection.send({ line: this.stage.line });
  }

  lost(hasEnded) {
    this._waiting = null;
    this._showPhase("offline");
    $("stage").classList.add("stale");
    this._enable(false);
    if (hasEnded || this._hasEnded) {
      this._hasEnded = true;
      this.banners.set("connection", "bad", "The program has ended.",
        "Start vxmcd live again; the page connects by itself when it has the same port and token.");
    } else {
      this.banners.set("connection", "bad", "The connection is lost.", "Connecting again …");
    }
  }

  denied(hadToken, text) {
    this._showPhase("offline");
    $("gate-form").hidden = false;
    this._showGate(text || (hadToken ? "The token is wrong" : "A token is needed"),
      "Open the link that vxmcd live has printed, with everything behind the #, or type its token (behind #t=).");
    $("token").focus();
  }

  message(message) {
    if (message.hello) this._hello(message.hello);
    if (message.state) this._update(message.state);
    if (message.histogram) this.histogram.setHistogram(message.histogram);
    if (message.line !== undefined) this._showLine(message.line);
    if (message.cursor) this._showValue(message.cursor);
    if (message.end) this._hasEnded = true;
  }

  frame(buffer) {
    const frame = Frame.of(buffer);
    if (!frame) return;
    // At most two are under way; only the newer is worth drawing, but both are acknowledged.
    if (this._waiting) this._acknowledge(this._waiting);
    this._waiting = frame;
    if (document.hidden) setTimeout(() => this._draw(), HIDDEN_MS);
  }

  // What comes from the program.

  _hello(hello) {
    this._hasEnded = false;
    this.viewer = hello.viewer;
    if (this.camera && this.camera.camera !== hello.camera?.camera) this._forgetPicture();
    this.camera = hello.camera ?? {};
    document.title = this.camera.model ? `${this.camera.model} – vxmcd live` : "vxmcd live";
    this.panel.describe(this.camera, hello.curve);
    const cameras = hello.cameras ?? [{ number: this.camera.camera ?? 0, model: this.camera.model }];
    $("camera").replaceChildren(...cameras.map(({ number, model }) => Object.assign(document.createElement("option"),
      { value: number, textContent: model ? `${number}: ${model}` : `camera ${number}` })));
    $("camera").value = String(this.camera.camera ?? 0);
    this._update(hello);
  }

  /** Another camera: nothing of the one before stays on the screen. */
  _forgetPicture() {
    this._waiting = null;
    this.isFrozen = false;
    $("freeze").setAttribute("aria-pressed", "false");
    $("empty").hidden = false;
    $("frame").textContent = "";
    $("saturated").textContent = "";
    this.stage.forget();
    this.histogram.setHistogram(null);
    this._requestView();
  }

  _update(state) {
    Object.assign(this.state, state);
    const all = this.state;
    this._showPhase(all.state);
    const isBroken = all.state === "failed" || all.state === "closed";
    $("stage").classList.toggle("stale", isBroken);
    $("empty").textContent = isBroken ? "no image" : "waiting for the first image";
    $("rate-camera").textContent = fixed(all.rate, 1);
    $("lost").textContent = all.lost ?? (all.state === "live" || all.state === "recording" ? "?" : NONE);
    $("lost").parentElement.classList.toggle("alarm", all.lost > 0);
    this._showMemory(all.memory_percent);
    $("reduced").hidden = !all.reduced;
    $("reduced").title = all.reduced || "";
    this._showControl();
    this._showError(isBroken && all.error);
    const isMyTrigger = all.settings?.trigger_mode === "software" && this.mayControl;
    this.banners.set("notice", all.notice ? "warn" : null, all.notice,
      isMyTrigger ? "The key t or the button triggers an image." : "");
    this.panel.update(all, this.mayControl);
    this.save.update(all, this.mayControl);
    this._showCursor();
  }

  _showPhase(phase) {
    $("phase").dataset.phase = phase;
    $("phase").textContent = PHASES[phase] ?? phase;
  }

  _showMemory(percent) {
    $("memory").textContent = fixed(percent, 0);
    $("memory").parentElement.hidden = percent === null || percent === undefined;
    $("memory").parentElement.classList.toggle("alarm", percent >= ALARM_PERCENT);
  }

  _showError(error) {
    const isClosed = this.state.state === "closed";
    this.banners.set("error", error ? "bad" : null, error && problem(error),
      isClosed ? "The program tries to open the camera again every 5 s; its settings come back."
        : this.state.restarts ? "The program starts the camera again by itself." : "",
      !isClosed && this.mayControl && "Restart", () => this._ask({ do: "start" }));
  }

  get mayControl() {
    return this.control.isMine;
  }

  _showControl() {
    this.control.update(this.viewer, this.state);
    $("camera").disabled = !this.connection.isOpen;
  }

  _enable(isEnabled) {
    this.panel.update({}, isEnabled);
    this.save.update(this.state, isEnabled);
    this._showControl();
  }

  /** Asks for something that changes the camera. What others have changed meanwhile is refused by the program. */
  _ask(message) {
    return this.connection.ask({ ...message, version: this.state.version });
  }

  // The picture.

  _tick() {
    requestAnimationFrame(() => this._tick());
    this._draw();
    this._showExposure();
  }

  _draw() {
    const frame = this._waiting;
    if (!frame) return;
    this._waiting = null;
    try {
      // While it is frozen, another part of the same image may come.
      if (!this.isFrozen || frame.number === this.stage.picture.frame?.number) this._show(frame);
    } finally { // whatever happens, the next one comes
      this._acknowledge(frame);
    }
  }

  _acknowledge(frame) {
    this.connection.send({ ack: frame.number });
  }

  _show(frame) {
    $("empty").hidden = true;
    this._arrived = performance.now();
    this.stage.show(frame);
    this._shown.push(this._arrived);
    if (frame.value >= 0) this._value = { value: frame.value, isExact: true };
    this.histogram.cursorValue = this.stage.cursor && this._value ? this._value.value : -1;
    $("frame").textContent = `image ${frame.number}`;
    $("saturated").textContent = `${frame.saturated || "none"} saturated`;
    $("saturated").title = `${digits(100 * frame.saturated / frame.pixels, 2)} % of ${frame.pixels} pixels`;
    this.histogram.draw();
    this._showCursor();
  }

  _viewChanged() {
    const { view, picture } = this.stage;
    $("zoom").textContent = picture.frame ? `${digits(view.scale * 100, 3)} %` : NONE;
    $("zoom-fit").setAttribute("aria-pressed", String(view.isFit));
    $("zoom-1").setAttribute("aria-pressed", String(!view.isFit && view.scale === 1));
    $("zoom-2").setAttribute("aria-pressed", String(!view.isFit && view.scale === 2));
    this._sendView();
  }

  _requestView() {
    const { view, stretch } = this.stage;
    if (view.canvas.width <= 1) return;
    const request = view.request();
    if (!this.stage.picture.frame) { // the size of the image is not known yet: all of it
      Object.assign(request, { x: 0, y: 0, w: 0, h: 0, cw: view.canvas.width, ch: view.canvas.height });
    }
    if (!stretch.isAuto) request.stretch = [Math.round(stretch.black), Math.round(stretch.white)];
    this.connection.send({ view: request });
  }

  _stretchChanged() {
    this.stage.picture.repaint();
    this.histogram.draw();
    this._sendView();
  }

  _cursorChanged(pixel) {
    this._value = pixel && this._valueAt(pixel);
    this._showCursor();
    this._sendCursor();
  }

  _requestCursor() {
    const { cursor } = this.stage;
    this.connection.send({ cursor: cursor && [cursor.x, cursor.y] });
  }

  /** The value of a pixel as far as the frame has it: the mean of a block is not exact. */
  _valueAt({ x, y }) {
    const { frame } = this.stage.picture;
    if (!frame) return null;
    const column = Math.floor((x - frame.x) / frame.step), row = Math.floor((y - frame.y) / frame.step);
    if (column < 0 || row < 0 || column >= frame.width || row >= frame.height) return null;
    return { value: Math.round(frame.toValue(frame.samples[row * frame.width + column])),
      isExact: frame.step === 1 && (frame.bytes === 2 || frame.high - frame.low === 255) };
  }

  /** The value that the program has read for a cursor between two frames. */
  _showValue({ x, y, value }) {
    const { cursor } = this.stage;
    if (value < 0 || cursor?.x !== x || cursor?.y !== y) return;
    this._value = { value, isExact: true };
    this._showCursor();
  }

  _showCursor() {
    const { cursor, picture } = this.stage;
    let text = cursor ? `x ${cursor.x}, y ${cursor.y}` : `x ${NONE}, y ${NONE}`;
    if (cursor && this._value) {
      const { value, isExact } = this._value;
      const isSaturated = isExact && picture.frame && value >= picture.frame.saturation;
      text += `: ${isExact ? "" : "about "}${value}${isSaturated ? ` (${SATURATED_TEXT})` : ""}`;
    }
    $("cursor").textContent = text;
  }

  /** How far the exposure of the next image is; the program does not know it better than its clock. */
  _showExposure() {
    const { settings, state } = this.state;
    const isRunning = state === "live" || state === "recording";
    const isLong = this.connection.isOpen && isRunning && settings?.exposure > BAR_SECONDS &&
      (settings.trigger_mode === "internal" || settings.trigger_mode === "external-start");
    $("exposure-bar").hidden = !isLong;
    if (!isLong) {
      this._began = null;
      return;
    }
    this._began = Math.max(this._began ?? performance.now(), this._arrived ?? 0);
    const seconds = Math.min((performance.now() - this._began) / 1000, settings.exposure);
    const [bar, text] = $("exposure-bar").children;
    bar.style.transform = `scaleX(${seconds / settings.exposure})`;
    text.textContent = `exposing ${seconds.toFixed(1)} of ${timeText(settings.exposure)}`;
    $("exposure-bar").setAttribute("aria-valuenow", String(Math.round(100 * seconds / settings.exposure)));
  }

  // Profile and area.

  _lineChanged(line, isDrawing) {
    const wasHidden = $("profile").hidden;
    $("profile").hidden = !line || (wasHidden && isDrawing);
    if (line) {
      const [x0, y0, x1, y1] = line;
      $("profile-ends").textContent = `${x0}, ${y0} to ${x1}, ${y1}`;
    }
    if (wasHidden !== $("profile").hidden) this.stage.redraw();
    this._sendLine();
  }

  _showLine(line) {
    if (!$("profile").hidden) this.profile.draw(line?.values);
  }

  /** A rectangle in pixels of the image, from 0, becomes an area of the sensor, from 1. */
  async _setArea(area) {
    const { settings } = this.state;
    if (!area || !settings) return;
    const [left, top] = settings.area, [across, down] = settings.binning;
    const asked = [left + area.x * across, top + area.y * down, area.w * across, area.h * down];
    await this._sendArea(asked);
  }

  async _sendArea(asked) {
    const result = await this._ask({ set: { area: asked } });
    if (!result.ok) this.banners.flash("bad", problem(result));
    else if (asked && result.value && String(result.value) !== String(asked)) {
      const [left, top, width, height] = result.value;
      this.banners.flash("warn", `The camera takes ${width} x ${height} at ${left}, ${top}.`);
    }
  }

  _showGate(title, text = "") {
    $("gate").hidden = !title;
    $("gate-title").textContent = title ?? "";
    $("gate-text").textContent = text;
  }

  // Keys and buttons.

  _listen() {
    const keys = new Keys(this);
    const press = (id, act) => $(id).addEventListener("click", act);
    for (const button of document.querySelectorAll("[data-key]")) {
      button.addEventListener("click", () => keys.press(button.dataset.key));
    }
    press("crosshair", () => this._toggle("crosshair", () => this.stage.toggleCrosshair()));
    press("saturation", () => this._toggle("saturation", () => this._toggleSaturation()));
    press("freeze", () => this._toggle("freeze", () => this._toggleFreeze()));
    press("profile-close", () => this.stage.toggleLine());
    press("area-draw", () => this.stage.beginArea());
    press("area-whole", () => this._sendArea(null));
    press("help-open", () => $("help").showModal());
    $("map").addEventListener("change", () => this._setMap($("map").value));
    $("camera").addEventListener("change", () => this._openCamera(Number($("camera").value)));
    $("gate-form").addEventListener("submit", event => {
      event.preventDefault();
      this.connection.retry($("token").value.trim().replace(/^.*#t=/, ""));
      $("token").value = "";
    });
    // After a choice with the mouse the keys are the page's again, and do not choose among the list's words.
    let isMouse = false;
    document.addEventListener("pointerdown", () => { isMouse = true; }, true);
    document.addEventListener("keydown", () => { isMouse = false; }, true);
    document.addEventListener("change", ({ target }) => {
      if (isMouse && target.matches("select")) $("stage").focus();
    });
    setInterval(() => this._countShown(), SHOWN_MS / 2);
  }

  _toggle(id, act) {
    $(id).setAttribute("aria-pressed", String(act()));
  }

  /** The program keeps the image, so that cursor, profile and snapshot are of what is seen. */
  _toggleFreeze() {
    const { frame } = this.stage.picture;
    this.isFrozen = !this.isFrozen && Boolean(frame);
    this.connection.send({ freeze: this.isFrozen ? frame.number : null });
    return this.isFrozen;
  }

  _toggleSaturation() {
    const { picture } = this.stage;
    picture.showsSaturation = !picture.showsSaturation;
    picture.repaint();
    return picture.showsSaturation;
  }

  _setMap(name) {
    this.stage.stretch.map = name;
    $("map").value = name;
    this.stage.picture.repaint();
  }

  nextMap() {
    const names = Object.keys(COLOUR_MAPS);
    this._setMap(names[(names.indexOf(this.stage.stretch.map) + 1) % names.length]);
  }

  async _openCamera(number) {
    const result = await this._ask({ do: "open", camera: number });
    if (!result.ok) {
      this.banners.flash("bad", problem(result));
      $("camera").value = String(this.camera.camera);
    }
  }

  _countShown() {
    const now = performance.now();
    while (this._shown.length && now - this._shown[0] > SHOWN_MS) this._shown.shift();
    const isMoving = this.connection.isOpen && !this.isFrozen;
    $("rate-shown").textContent = isMoving ? fixed(this._shown.length * 1000 / SHOWN_MS, 1) : NONE;
  }
}

new Page();
