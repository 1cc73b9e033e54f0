// SPDX-License-Identifier: MIT
// The panel beside the picture: settings of the camera, cooling, histogram, snapshot and recording.

import { bytes, digits, duration, fixed, parseNumber } from "./format.js";
import { HistogramPlot, TemperaturePlot } from "./plots.js";
import { makeRow, problem } from "./settings.js";

const $ = id => document.getElementById(id);

const CAMERA_ROWS = [
  { name: "exposure", label: "Exposure", kind: "time", key: "e" },
  { name: "cycle_time", label: "Cycle", kind: "time", key: "y" },
  { name: "gain", label: "Gain", kind: "choice", key: "g", half: "left" },
  { name: "readout_speed", label: "Speed", kind: "choice", half: "right" },
  { name: "binning", label: "Binning", kind: "choice", key: "b", half: "left" },
  { name: "encoding", label: "Bits", kind: "choice", half: "right" },
  { name: "trigger_mode", label: "Trigger", kind: "choice" },
];
const COOLING_ROWS = [
  { name: "target_temperature", label: "Target", kind: "number", unit: "°C", key: "k" },
  { name: "cooler", label: "Cooler", kind: "switch", half: "left" },
  { name: "fan", label: "Fan", kind: "choice", half: "right" },
];
const BINNINGS = [1, 2, 3, 4, 8, 16, 32, 64];
const TRIGGER_TEXTS = { internal: "internal", software: "software", external: "external (each image)",
  "external-start": "external (start)", "external-exposure": "external (exposure)" };
const CURVE_SECONDS = TemperaturePlot.seconds;

/** The rows of settings. `ask` sends a request and promises its result. */
export class SettingsPanel {
  constructor(ask) {
    this._ask = ask;
    const send = values => ask({ set: values });
    this._rows = new Map();
    for (const [definitions, place] of [[CAMERA_ROWS, "rows"], [COOLING_ROWS, "cooling-rows"]]) {
      for (const definition of definitions) {
        const row = makeRow(definition, send);
        this._rows.set(definition.name, row);
        $(place).append(row.element);
      }
    }
    this._trigger = Object.assign(document.createElement("button"), { id: "trigger", className: "small extra",
      type: "button", textContent: "Trigger", title: "Triggers an image (t)" });
    this._row("trigger_mode").limits.replaceWith(this._trigger);
    this._trigger.addEventListener("click", () => this.trigger());
    this._plot = new TemperaturePlot($("temperature-plot"));
    this._curve = [];
    this._target = null;
    new ResizeObserver(() => this._drawCurve()).observe($("temperature-plot"));
  }

  /** Another camera, or this page has just begun. */
  describe(camera, curve) {
    const gains = (camera.gains ?? []).map((gain, index) => [index, gain.text]);
    const speeds = (camera.speeds_mhz ?? []).map((speed, index) => [index, `${digits(speed)} MHz`]);
    const { horizontal, vertical } = camera.maximum_binning ?? {};
    const largest = Math.min(horizontal ?? 1, vertical ?? 1);
    this._row("gain").setChoices(gains);
    this._row("readout_speed").setChoices(speeds.length > 1 ? speeds : []);
    this._row("binning").setChoices(BINNINGS.filter(size => size <= largest)
      .map(size => [[size, size], `${size} x ${size}`]));
    this._row("encoding").setChoices((camera.encodings ?? []).map(name => [name, encodingText(name)]));
    this._row("trigger_mode").setChoices((camera.capabilities?.trigger_modes ?? ["internal"])
      .map(mode => [mode, TRIGGER_TEXTS[mode] ?? mode]));
    this._row("fan").setChoices((camera.fan_speeds ?? []).map(mode => [mode, mode]));
    const range = camera.target_range_celsius;
    this._row("target_temperature").setLimits(range && [range.minimum, range.maximum]);
    $("cooling").hidden = !camera.has_cooler && !range;
    this._curve = curve ?? [];
    this._drawCurve();
    const size = camera.sensor_pixels;
    this._sensor = size;
    $("camera-note").textContent = [size && `${size.width} x ${size.height}`,
      camera.pixel_um && `${digits(camera.pixel_um.width, 3)} µm`, camera.serial && `serial ${camera.serial}`]
      .filter(Boolean).join(", ");
  }

  update({ state, settings, limits, temperature }, mayControl) {
    const isOpen = mayControl && state !== "closed";
    const mayChangeRun = isOpen && state !== "recording";
    for (const [name, row] of this._rows) {
      if (settings && name in settings) row.update(settings[name]);
      row.enable(COOLING_ROWS.some(cooling => cooling.name === name) ? isOpen : mayChangeRun);
    }
    for (const id of ["area-draw", "area-whole"]) $(id).disabled = !mayChangeRun;
    if (settings) {
      const [left, top, width, height] = settings.area ?? [];
      $("area").textContent = settings.area ? `${width} x ${height} at ${left}, ${top}` : "–";
      const { cycle_time: cycle } = settings;
      this._row("cycle_time").limits.textContent = cycle ? `${digits(1 / cycle, 4)} /s` : "";
      this._trigger.hidden = settings.trigger_mode !== "software";
      this._trigger.disabled = !mayControl;
      this._target = settings.cooler ? settings.target_temperature : null;
    }
    if (limits?.exposure) this._row("exposure").setLimits(limits.exposure);
    if (temperature) this._addTemperature(temperature);
  }

  focus(name) {
    this._row(name).input.focus();
    this._row(name).input.select?.();
  }

  /** Steps a setting that has steps. */
  step(name, direction) {
    if (!this._row(name).input.disabled) this._row(name).step(direction);
  }

  trigger() {
    if (!this._trigger.hidden && !this._trigger.disabled) this._ask({ do: "trigger" });
  }

  _row(name) {
    return this._rows.get(name);
  }

  _addTemperature({ celsius, status, time }) {
    const known = typeof celsius === "number";
    $("temperature").textContent = known ? `${fixed(celsius, 1)} °C${status ? `, ${status}` : ""}` : "unknown";
    const last = this._curve[this._curve.length - 1];
    if (known && (!last || time - last[0] >= 1)) {
      this._curve.push([time, celsius]);
      while (this._curve[0][0] < time - CURVE_SECONDS) this._curve.shift();
      this._drawCurve();
    }
  }

  _drawCurve() {
    this._plot.draw(this._curve, this._target);
  }
}

/** "Mono12Packed" as "12, packed". */
function encodingText(name) {
  const match = /^Mono(\d+)(.*)$/.exec(name);
  return match ? match[1] + (match[2] ? `, ${match[2].toLowerCase()}` : "") : name;
}

/** Histogram and stretch. */
export class HistogramPanel {
  constructor(stretch, changed) {
    this._stretch = stretch;
    this._changed = changed;
    this._plot = new HistogramPlot($("histogram"));
    this._histogram = null;
    this._isDetail = true;
    this.cursorValue = -1;
    $("auto").addEventListener("click", () => this.toggleAuto());
    $("detail").addEventListener("click", () => this.toggleDetail());
    for (const id of ["black", "white"]) {
      $(id).addEventListener("change", () => this._type());
      $(id).addEventListener("keydown", event => {
        const step = { ArrowUp: 1, ArrowDown: -1 }[event.key];
        if (!step) return;
        event.preventDefault();
        $(id).value = String(parseNumber($(id).value) + step * (event.shiftKey ? 100 : 1));
        this._type();
      });
    }
    $("histogram").addEventListener("pointerdown", event => this._press(event));
    $("histogram").addEventListener("pointermove", event => this._move(event));
    $("histogram").addEventListener("pointerup", () => { this._dragged = null; });
    new ResizeObserver(() => this.draw()).observe($("histogram"));
  }

  toggleAuto() {
    this._stretch.setAuto(!this._stretch.isAuto);
    this._changed();
  }

  /** All values, or those around the stretch: a dim picture has few of the values that the camera can give. */
  toggleDetail() {
    this._isDetail = !this._isDetail;
    $("detail").setAttribute("aria-pressed", String(!this._isDetail));
    this.draw();
  }

  setHistogram(histogram) {
    this._histogram = histogram;
    this.draw();
  }

  draw() {
    const { black, white, isAuto } = this._stretch;
    this._plot.draw(this._isDetail ? this._histogram?.detail : this._histogram, black, white, this.cursorValue);
    $("auto").setAttribute("aria-pressed", String(isAuto));
    for (const [id, value] of [["black", black], ["white", white]]) {
      if (document.activeElement !== $(id)) $(id).value = String(Math.round(value));
    }
  }

  _type() {
    const [black, white] = ["black", "white"].map(id => parseNumber($(id).value));
    if (!Number.isNaN(black + white)) this._stretch.set(black, white);
    $("black").value = String(Math.round(this._stretch.black));
    $("white").value = String(Math.round(this._stretch.white));
    this._changed();
  }

  _x(event) {
    return event.clientX - $("histogram").getBoundingClientRect().left;
  }

  _press(event) {
    const { black, white } = this._stretch;
    const x = this._x(event);
    const toBlack = Math.abs(this._plot.toX(black) - x), toWhite = Math.abs(this._plot.toX(white) - x);
    // Where both are at one place, the side of the press decides.
    this._dragged = toBlack < toWhite || (toBlack === toWhite && x < this._plot.toX(black)) ? "black" : "white";
    $("histogram").setPointerCapture(event.pointerId);
    this._move(event);
  }

  _move(event) {
    if (!this._dragged) return;
    const value = this._plot.toValue(this._x(event));
    const { black, white } = this._stretch;
    if (this._dragged === "black") this._stretch.set(Math.min(value, white - 1), white);
    else this._stretch.set(black, Math.max(value, black + 1));
    this._changed();
  }
}

/** Snapshot and recording, of the image that `picture` shows. */
export class SavePanel {
  constructor(ask, picture) {
    this._ask = ask;
    this._picture = picture;
    $("snapshot-form").addEventListener("submit", event => {
      event.preventDefault();
      this.snapshot();
    });
    $("record-form").addEventListener("submit", event => {
      event.preventDefault();
      this._record();
    });
    $("record-unit").addEventListener("change", () => {
      $("record-amount").hidden = $("record-unit").value === "stop";
    });
    $("stop").addEventListener("click", () => this._stop());
  }

  update({ state, recording, last_recording: last, lost }, mayControl) {
    this._isRecording = state === "recording";
    $("record-form").hidden = this._isRecording;
    $("recording").hidden = !this._isRecording;
    for (const input of $("record-form").elements) input.disabled = !mayControl || state === "closed";
    $("snapshot").disabled = !mayControl && $("snapshot-format").value !== "png";
    $("stop").disabled = !mayControl;
    if (this._isRecording && recording) this._show(recording, lost);
    if (last) this._showLast(last);
  }

  /** The fields of a recording, or its Stop button. */
  focus() {
    const target = this._isRecording ? $("stop") : $("record-amount").hidden ? $("record-name") : $("record-amount");
    target.focus();
    target.select?.();
  }

  async snapshot() {
    const format = $("snapshot-format").value;
    if (format === "png") {
      const link = Object.assign(document.createElement("a"), { download: "vxmcd-live.png" });
      link.href = URL.createObjectURL(await this._picture.toBlob());
      link.click();
      setTimeout(() => URL.revokeObjectURL(link.href), 60000);
      return this._say("The picture was downloaded as vxmcd-live.png.");
    }
    if (!this._picture.frame) return this._say("There is no image yet.", true);
    this._say("saving …");
    const result = await this._ask({ do: "snapshot", format, number: this._picture.frame.number });
    if (result.ok) this._say("Saved: ", false, result.value);
    else this._say(problem(result), true);
    return undefined;
  }

  /** What became of the last recording, once. */
  _showLast(last) {
    const key = JSON.stringify(last);
    if (key === this._last) return;
    this._last = key;
    const lost = last.lost === null || last.lost === undefined ? "lost unknown" : `${last.lost} lost`;
    const missing = last.missing ? `, ${last.missing} missing` : "";
    const isBad = last.state === "failed";
    const { name, images, stopped, text } = last;
    this._say(isBad ? `${name}: ${text ?? "failed"}` : `${name}: ${images} images, ${lost}${missing}` +
      `${stopped ? ", stopped" : ""}. For FITS: vxmcd convert ${name} --output ${name}.fits`, isBad);
  }

  async _record() {
    const unit = $("record-unit").value;
    const amount = parseNumber($("record-amount").value);
    if (unit !== "stop" && !(amount > 0)) return this._say("Record: the number is missing", true);
    const name = $("record-name").value.trim();
    const request = { do: "record", name };
    if (unit !== "stop") request[unit] = unit === "images" ? Math.round(amount) : amount;
    this._say("");
    const result = await this._ask(request);
    if (result.ok) $("record-name").value = name && nextName(name);
    else this._say(problem(result), true);
    return undefined;
  }

  async _stop() {
    const result = await this._ask({ do: "stop" });
    if (!result.ok) this._say(problem(result), true);
  }

  _show({ name, images, asked: of, bytes: size, rate, seconds_left: left }, lost) {
    $("recording-name").textContent = $("recording-name").title = name;
    $("recording-numbers").textContent = of ? `${images} of ${of}` : `${images} images`;
    if (of) $("recording-bar").value = images / of;
    else $("recording-bar").removeAttribute("value");
    $("recording-rate").textContent = `${fixed(rate, 1)} /s, ${bytes(size)}`;
    $("recording-left").textContent = `lost ${lost ?? "unknown"}${of ? `, ${duration(left)} left` : ""}`;
  }

  _say(text, isBad = false, files = []) {
    const links = [].concat(files).map(file => Object.assign(document.createElement("a"),
      { href: file.url, download: file.name, textContent: file.name }));
    $("saved").replaceChildren(text, ...links.flatMap(link => [link, " "]));
    $("saved").classList.toggle("bad", isBad);
  }
}

/** "run9" becomes "run10"; a name without a number gets one. */
export function nextName(name) {
  const match = /^(.*?)(\d+)$/.exec(name);
  return match ? match[1] + String(Number(match[2]) + 1).padStart(match[2].length, "0") : `${name}2`;
}
