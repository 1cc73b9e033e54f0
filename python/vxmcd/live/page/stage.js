// SPDX-License-Identifier: MIT
// The picture as users handle it: zoom, pan, crosshair, the rectangle of an area, the line of a profile, the cursor.

import { Picture, Stretch, View } from "./draw.js";

const WHEEL_FACTOR = 1.0015; // for each pixel that a wheel scrolls
const KEY_FACTOR = 1.25;
const PAN_PART = 0.1; // of the canvas, with an arrow key
const LARGE_STEP = 10; // pixels with Shift and an arrow key
const MIN_DRAG = 3; // pixels of the screen; less is a click
const ARROWS = { ArrowLeft: [-1, 0], ArrowRight: [1, 0], ArrowUp: [0, -1], ArrowDown: [0, 1] };
const SCALE_BAR = 120; // longest, in CSS pixels
const MARK = "#6cb6ff";
const DRAFT = "#ffd866";

/** Owns the two canvases. Reports to a listener {viewChanged(), cursorChanged(pixel), lineChanged(line, isDrawing),
 * areaDrawn(area)}; pixels, lines and areas are in pixels of the image, from 0. */
export class Stage {
  constructor(element, listener) {
    this.element = element;
    this.stretch = new Stretch();
    this.view = new View();
    this.picture = new Picture(element.querySelector("#picture"), this.view, this.stretch);
    this._overlay = element.querySelector("#overlay");
    this._context = this._overlay.getContext("2d");
    this._listener = listener;
    this.crosshair = null;
    this.line = null;
    this.area = null; // the rectangle that is being drawn
    this.isDrawingArea = false;
    this.cursor = null;
    this._drag = null;
    this._pointer = null; // the mouse on the canvas, in device pixels
    this._listen();
    new ResizeObserver(() => this._resize()).observe(element);
  }

  get ratio() {
    return window.devicePixelRatio || 1;
  }

  /** Shows a frame, null for none. */
  show(frame) {
    const isOther = frame && this.view.setImage(frame.imageWidth, frame.imageHeight);
    if (isOther) this.crosshair = this.crosshair && this._middle();
    this.picture.setFrame(frame);
    if (isOther) this._changed();
    else this._mark();
  }

  /** No picture, and no marks in it. */
  forget() {
    this.crosshair = this.area = null;
    this.isDrawingArea = false;
    this.element.classList.remove("drawing-area");
    if (this.line) this._setLine(null);
    this.stretch.setAuto(this.stretch.isAuto);
    this.show(null);
  }

  fit() {
    this.view.fit();
    this._changed();
  }

  /** So many pixels of the screen for one of the image. */
  zoomTo(scale) {
    const { x, y } = this.crosshair ? this.view.toCanvas(this.crosshair.x + 0.5, this.crosshair.y + 0.5) : {};
    this.view.zoom(scale, x, y);
    this._changed();
  }

  zoomBy(direction) {
    this.zoomTo(this.view.scale * KEY_FACTOR ** direction);
  }

  toggleCrosshair() {
    this.crosshair = this.crosshair ? null : this._middle();
    this._setCursor(this.crosshair);
    this._mark();
    return Boolean(this.crosshair);
  }

  /** Begins to draw an area: with the mouse, or with the arrow keys the rectangle that is there at once. */
  beginArea() {
    const { x, y, w, h } = this.view.request();
    this.isDrawingArea = true;
    this.area = { x: Math.round(x + w / 4), y: Math.round(y + h / 4), w: Math.ceil(w / 2), h: Math.ceil(h / 2) };
    this.element.classList.add("drawing-area");
    this.element.focus();
    this._mark();
  }

  endArea(isAccepted) {
    const { area } = this;
    this.isDrawingArea = false;
    this.area = null;
    this.element.classList.remove("drawing-area");
    this._mark();
    if (isAccepted && area) this._listener.areaDrawn(area);
  }

  /** A profile along the row in the middle or through the crosshair; or none. */
  toggleLine() {
    const { x, w } = this.view.request();
    const { y } = this.crosshair ?? this._middle();
    this._setLine(this.line ? null : [x, y, x + w - 1, y]);
  }

  /** Keys of the picture itself. Returns whether it was one. */
  key(event) {
    const arrow = ARROWS[event.key];
    if (arrow) this._arrow(arrow, event);
    else if (event.key === "Enter" && this.isDrawingArea) this.endArea(true);
    else if (event.key === "Escape" && this.isDrawingArea) this.endArea(false);
    else if (event.key === "Escape" && this.line) this._setLine(null);
    else return false;
    return true;
  }

  redraw() {
    this.picture.redraw();
    this._mark();
  }

  _arrow([dx, dy], { shiftKey, altKey }) {
    const { view } = this;
    const step = shiftKey && !this.isDrawingArea ? LARGE_STEP : 1;
    const { width, height } = view.image;
    if (this.isDrawingArea) {
      const { area } = this;
      const by = altKey ? 1 : LARGE_STEP;
      if (shiftKey) {
        area.w = Math.max(1, Math.min(area.w + dx * by, width - area.x));
        area.h = Math.max(1, Math.min(area.h + dy * by, height - area.y));
      } else {
        area.x = Math.max(0, Math.min(area.x + dx * by, width - area.w));
        area.y = Math.max(0, Math.min(area.y + dy * by, height - area.h));
      }
      this._mark();
    } else if (this.crosshair) {
      this.crosshair = { x: Math.max(0, Math.min(this.crosshair.x + dx * step, width - 1)),
        y: Math.max(0, Math.min(this.crosshair.y + dy * step, height - 1)) };
      this._setCursor(this.crosshair);
      this._mark();
    } else {
      view.pan(-dx * view.canvas.width * PAN_PART, -dy * view.canvas.height * PAN_PART);
      this._changed();
    }
  }

  _listen() {
    const { element } = this;
    element.addEventListener("wheel", event => {
      event.preventDefault();
      const { x, y } = this._place(event);
      this.view.zoom(this.view.scale * WHEEL_FACTOR ** -event.deltaY, x, y);
      this._changed();
    }, { passive: false });
    element.addEventListener("dblclick", () => this.fit());
    element.addEventListener("pointerdown", event => this._press(event));
    element.addEventListener("pointermove", event => this._move(event));
    element.addEventListener("pointerup", event => this._release(event));
    element.addEventListener("pointercancel", event => this._release(event));
    element.addEventListener("pointerleave", () => {
      this._pointer = null;
      this._follow();
    });
  }

  _press(event) {
    if (event.button !== 0 || event.target.closest("button, a")) return;
    const place = this._place(event);
    const kind = this.isDrawingArea ? "area" : event.shiftKey ? "line" : "pan";
    this._drag = { kind, last: place, first: this._clamped(place), moved: 0 };
    this.element.setPointerCapture(event.pointerId);
  }

  _move(event) {
    const place = this._place(event);
    this._pointer = place;
    this._follow();
    const drag = this._drag;
    if (!drag) return;
    const [dx, dy] = [place.x - drag.last.x, place.y - drag.last.y];
    drag.moved += Math.abs(dx) + Math.abs(dy);
    drag.last = place;
    if (drag.moved < MIN_DRAG * this.ratio) return;
    const end = this._clamped(place);
    if (drag.kind === "pan") {
      this.element.classList.add("panning");
      this.view.pan(dx, dy);
      this._changed();
    } else if (drag.kind === "line") {
      this._setLine([drag.first.x, drag.first.y, end.x, end.y], true);
    } else {
      this.area = { x: Math.min(drag.first.x, end.x), y: Math.min(drag.first.y, end.y),
        w: Math.abs(end.x - drag.first.x) + 1, h: Math.abs(end.y - drag.first.y) + 1 };
      this._mark();
    }
  }

  _release(event) {
    const drag = this._drag;
    this._drag = null;
    this.element.classList.remove("panning");
    if (drag?.kind === "line" && this.line) this._setLine(this.line);
    if (drag?.kind === "pan" && drag.moved < MIN_DRAG * this.ratio && this.crosshair && event.type === "pointerup") {
      this.crosshair = drag.first;
      this._setCursor(this.crosshair);
      this._mark();
    }
  }

  /** A point of the canvas, in device pixels. */
  _place({ clientX, clientY }) {
    const { left, top } = this.element.getBoundingClientRect();
    return { x: (clientX - left) * this.ratio, y: (clientY - top) * this.ratio };
  }

  /** The nearest pixel of the image. */
  _clamped(place) {
    const { x, y } = this.view.toImage(place.x, place.y);
    const { width, height } = this.view.image;
    return { x: Math.max(0, Math.min(Math.floor(x), width - 1)), y: Math.max(0, Math.min(Math.floor(y), height - 1)) };
  }

  _middle() {
    return { x: Math.floor(this.view.image.width / 2), y: Math.floor(this.view.image.height / 2) };
  }

  _setCursor(pixel) {
    if (pixel?.x === this.cursor?.x && pixel?.y === this.cursor?.y) return;
    this.cursor = pixel;
    this._listener.cursorChanged(pixel);
  }

  /** While a line is drawn the picture must not move below it. */
  _setLine(line, isDrawing = false) {
    this.line = line;
    this._mark();
    this._listener.lineChanged(line, isDrawing);
  }

  _resize() {
    const { clientWidth, clientHeight } = this.element;
    if (!clientWidth || !clientHeight) return;
    this.view.setCanvas(Math.round(clientWidth * this.ratio), Math.round(clientHeight * this.ratio));
    this._changed();
  }

  /** The cursor is the pixel below the mouse, or else the crosshair. */
  _follow() {
    const { _pointer: at } = this;
    this._setCursor(at ? this.view.pixelAt(at.x, at.y) : this.crosshair);
  }

  _changed() {
    this.redraw();
    this._follow();
    this._listener.viewChanged();
  }

  /** Marks over the picture, in CSS pixels. */
  _mark() {
    const { _overlay: overlay, _context: context, view, ratio } = this;
    const { width, height } = view.canvas;
    if (overlay.width !== width || overlay.height !== height) Object.assign(overlay, { width, height });
    context.setTransform(1, 0, 0, 1, 0, 0);
    context.clearRect(0, 0, width, height);
    context.scale(ratio, ratio);
    context.font = "12px system-ui, 'DejaVu Sans', sans-serif";
    if (!this.picture.frame) return;
    if (this.crosshair) this._markCrosshair(width / ratio, height / ratio);
    if (this.line) this._markLine();
    if (this.area) this._markArea();
    this._markScale(height / ratio);
    if (!view.isFit) this._markPart(width / ratio);
  }

  _toCss(x, y) {
    const place = this.view.toCanvas(x, y);
    return [place.x / this.ratio, place.y / this.ratio];
  }

  /** A line that is visible on every background. */
  _stroke(colour, draw) {
    const { _context: context } = this;
    for (const [style, width] of [["#000a", 3], [colour, 1]]) {
      context.strokeStyle = style;
      context.lineWidth = width;
      context.beginPath();
      draw(context);
      context.stroke();
    }
  }

  _text(text, x, y, align = "left") {
    const { _context: context } = this;
    context.textAlign = align;
    context.lineWidth = 3;
    context.strokeStyle = "#000c";
    context.strokeText(text, x, y);
    context.fillStyle = "#fff";
    context.fillText(text, x, y);
  }

  _markCrosshair(width, height) {
    const [x, y] = this._toCss(this.crosshair.x + 0.5, this.crosshair.y + 0.5).map(place => Math.round(place) + 0.5);
    const gap = Math.max(6, this.view.scale / this.ratio);
    this._stroke(MARK, context => {
      for (const [x0, y0, x1, y1] of [
        [0, y, x - gap, y], [x + gap, y, width, y], [x, 0, x, y - gap], [x, y + gap, x, height]]) {
        context.moveTo(x0, y0);
        context.lineTo(x1, y1);
      }
    });
  }

  _markLine() {
    const [x0, y0, x1, y1] = this.line;
    const from = this._toCss(x0 + 0.5, y0 + 0.5), to = this._toCss(x1 + 0.5, y1 + 0.5);
    this._stroke(DRAFT, context => {
      context.moveTo(...from);
      context.lineTo(...to);
    });
    this._text("0", from[0], from[1] - 6, "center");
    this._text(String(Math.max(Math.abs(x1 - x0), Math.abs(y1 - y0))), to[0], to[1] - 6, "center");
  }

  _markArea() {
    const { x, y, w, h } = this.area;
    const [left, top] = this._toCss(x, y), [right, bottom] = this._toCss(x + w, y + h);
    const { _context: context, element } = this;
    context.fillStyle = "#0007";
    context.beginPath();
    context.rect(0, 0, element.clientWidth, element.clientHeight);
    context.rect(left, top, right - left, bottom - top);
    context.fill("evenodd");
    this._stroke(DRAFT, () => context.rect(left, top, right - left, bottom - top));
    const below = bottom + 34 < element.clientHeight ? bottom + 16 : Math.max(top + 16, 16);
    this._text(`${w} x ${h}`, left + 4, below);
    this._text("Enter applies, Esc cancels", left + 4, below + 16);
  }

  _markScale(height) {
    const { scale } = this.view;
    const longest = SCALE_BAR * this.ratio / scale;
    const power = 10 ** Math.floor(Math.log10(longest));
    const pixels = [5, 2, 1].map(step => step * power).find(step => step <= longest);
    if (!(pixels >= 1)) return;
    const width = pixels * scale / this.ratio, bottom = height - 28.5;
    this._stroke("#fff", context => {
      context.moveTo(12.5, bottom - 5);
      context.lineTo(12.5, bottom);
      context.lineTo(12.5 + width, bottom);
      context.lineTo(12.5 + width, bottom - 5);
    });
    this._text(`${pixels} px`, 16, bottom - 6);
  }

  /** Which part of the image is visible. */
  _markPart(width) {
    const { image } = this.view;
    const { x, y, w, h } = this.view.request();
    const scale = 72 / Math.max(image.width, image.height);
    const left = width - 12.5 - image.width * scale, top = 12.5;
    const { _context: context } = this;
    context.fillStyle = "#0008";
    context.fillRect(left, top, image.width * scale, image.height * scale);
    this._stroke("#ffffffa0", () => context.rect(left, top, image.width * scale, image.height * scale));
    const part = [left + x * scale, top + y * scale, Math.max(2, w * scale), Math.max(2, h * scale)];
    this._stroke(MARK, () => context.rect(...part));
  }
}
