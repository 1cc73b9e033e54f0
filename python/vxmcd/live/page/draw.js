// SPDX-License-Identifier: MIT
// The picture: which part of the image is visible, pixel values to colours, frames onto the canvas.

import { FLAGS, HEADER_BYTES, readHeader } from "./wire.js";

/** Auto stretch: this part of the pixels is darker than black, and as many are brighter than white. */
const AUTO_TAIL = 0.005;
const AUTO_SAMPLES = 16384;
const AUTO_SMOOTHING = 0.25; // of the difference, a frame
const MAX_SCALE = 64;
const VALUES = 65536;
const SATURATED = 0xff2020ff; // red, as ImageData has it on little-endian machines
const PASSE_PARTOUT = "#0a0c0e";

const VIRIDIS = [[68, 1, 84], [71, 45, 123], [59, 82, 139], [44, 114, 142], [33, 144, 141], [39, 173, 129],
  [92, 200, 99], [170, 220, 50], [253, 231, 37]];

function viridis(level) {
  const place = level / 255 * (VIRIDIS.length - 1);
  const index = Math.min(Math.floor(place), VIRIDIS.length - 2);
  return VIRIDIS[index].map((from, part) => Math.round(from + (VIRIDIS[index + 1][part] - from) * (place - index)));
}

/** Colour maps: 0 to 255 to red, green, blue. */
export const COLOUR_MAPS = {
  grey: level => [level, level, level],
  inverted: level => [255 - level, 255 - level, 255 - level],
  viridis,
};

/** How one viewer sees pixel values. `black` and `white` are values of pixels. */
export class Stretch {
  constructor() {
    this.black = 0;
    this.white = 255;
    this.isAuto = true;
    this.map = "grey";
    this.isFresh = true; // the next frame sets black and white without smoothing
    this._table = new Uint32Array(VALUES);
    this._key = "";
  }

  /** Sets the two points by hand; white stays above black. */
  set(black, white) {
    this.isAuto = false;
    this.black = Math.max(0, Math.min(Math.round(black), VALUES - 2));
    this.white = Math.max(this.black + 1, Math.min(Math.round(white), VALUES - 1));
  }

  setAuto(isAuto) {
    this.isAuto = isAuto;
    this.isFresh = true;
  }

  /** The automatic stretch for one more frame. */
  follow(frame) {
    if (!this.isAuto) return;
    const [black, white] = tails(frame.samples).map(sample => frame.toValue(sample));
    const part = this.isFresh ? 1 : AUTO_SMOOTHING;
    this.black += (black - this.black) * part;
    this.white += (Math.max(white, black + 1) - this.white) * part;
    this.isFresh = false;
  }

  /** Colours of all pixel values. */
  table() {
    const key = `${this.map} ${this.black} ${this.white}`;
    if (key === this._key) return this._table;
    this._key = key;
    const colour = COLOUR_MAPS[this.map];
    const colours = Uint32Array.from({ length: 256 }, (_, level) => {
      const [red, green, blue] = colour(level);
      return (0xff000000 | blue << 16 | green << 8 | red) >>> 0;
    });
    const factor = 255 / Math.max(this.white - this.black, 1e-9);
    for (let value = 0; value < VALUES; value++) {
      this._table[value] = colours[Math.max(0, Math.min(255, Math.round((value - this.black) * factor)))];
    }
    return this._table;
  }
}

function tails(samples) {
  const every = Math.max(1, Math.floor(samples.length / AUTO_SAMPLES));
  const sample = new Uint16Array(Math.ceil(samples.length / every));
  for (let from = 0, to = 0; from < samples.length; from += every, to++) sample[to] = samples[from];
  sample.sort();
  const tail = Math.floor(sample.length * AUTO_TAIL);
  return [sample[tail], sample[sample.length - 1 - tail]];
}

/** A frame as it was sent: the header's fields, `samples` (one for each block of `step` x `step` pixels of the image,
 * row by row) and a bit for each block that says whether a pixel of it is saturated. */
export class Frame {
  /** Of a binary message; null when it is none. */
  static of(buffer) {
    const header = readHeader(buffer);
    return header && new Frame(header, buffer);
  }

  constructor(header, buffer) {
    Object.assign(this, header);
    const count = this.width * this.height;
    this.samples = new (this.bytes === 1 ? Uint8Array : Uint16Array)(buffer, HEADER_BYTES, count);
    const hasMap = this.flags & FLAGS.saturationMap;
    this._saturation = hasMap ? new Uint8Array(buffer, HEADER_BYTES + count * this.bytes) : null;
  }

  /** The value of the image that a sample stands for. Samples of one byte may be stretched. */
  toValue(sample) {
    return this.bytes === 1 ? this.low + sample / 255 * (this.high - this.low) : sample;
  }

  /** Calls back with the index of each sample that has a saturated pixel. */
  forSaturated(act) {
    this._saturation?.forEach((bits, place) => {
      for (let bit = 0; bits; bit++, bits >>= 1) if (bits & 1) act(place * 8 + bit);
    });
  }
}

/** The part of the image that the canvas shows. Lengths on the canvas are device pixels, `scale` is device pixels for
 * one pixel of the image. Images and rectangles in them count from 0. */
export class View {
  constructor() {
    this.image = { width: 1, height: 1 };
    this.canvas = { width: 1, height: 1 };
    this.scale = 1;
    this.x = 0; // the image's coordinates of the canvas's upper left corner
    this.y = 0;
    this.isFit = true;
  }

  setImage(width, height) {
    if (width === this.image.width && height === this.image.height) return false;
    this.image = { width, height };
    this.fit();
    return true;
  }

  setCanvas(width, height) {
    const middle = this.toImage(this.canvas.width / 2, this.canvas.height / 2);
    this.canvas = { width, height };
    if (this.isFit) this.fit();
    else this._place(middle, width / 2, height / 2);
  }

  fitScale() {
    return Math.min(this.canvas.width / this.image.width, this.canvas.height / this.image.height);
  }

  fit() {
    this.isFit = true;
    this.scale = this.fitScale();
    this._place({ x: this.image.width / 2, y: this.image.height / 2 }, this.canvas.width / 2, this.canvas.height / 2);
  }

  /** Scales; the point of the image below this one of the canvas stays there. */
  zoom(scale, x = this.canvas.width / 2, y = this.canvas.height / 2) {
    const fixed = this.toImage(x, y);
    const smallest = Math.min(this.fitScale(), 1);
    if (scale <= smallest && smallest === this.fitScale()) return this.fit();
    this.isFit = false;
    this.scale = Math.max(smallest, Math.min(scale, Math.max(MAX_SCALE, this.fitScale())));
    this._place(fixed, x, y);
  }

  /** Moves the image by a distance on the canvas. */
  pan(dx, dy) {
    if (!this.isFit) this._place(this.toImage(0, 0), dx, dy);
  }

  toImage(x, y) {
    return { x: this.x + x / this.scale, y: this.y + y / this.scale };
  }

  toCanvas(x, y) {
    return { x: (x - this.x) * this.scale, y: (y - this.y) * this.scale };
  }

  /** The pixel of the image below a point of the canvas, null outside. */
  pixelAt(x, y) {
    const place = this.toImage(x, y);
    const pixel = { x: Math.floor(place.x), y: Math.floor(place.y) };
    return pixel.x >= 0 && pixel.y >= 0 && pixel.x < this.image.width && pixel.y < this.image.height ? pixel : null;
  }

  /** What the server has to send: the visible pixels, and how many pixels of the canvas they have. */
  request() {
    const x = Math.max(0, Math.floor(this.x)), y = Math.max(0, Math.floor(this.y));
    const right = Math.min(this.image.width, Math.ceil(this.x + this.canvas.width / this.scale));
    const bottom = Math.min(this.image.height, Math.ceil(this.y + this.canvas.height / this.scale));
    const w = Math.max(1, right - x), h = Math.max(1, bottom - y);
    return { x, y, w, h, cw: Math.max(1, Math.round(w * this.scale)), ch: Math.max(1, Math.round(h * this.scale)) };
  }

  _place(point, x, y) {
    // The middle of the canvas stays on the image, so that the image cannot get lost.
    const halfWidth = this.canvas.width / 2 / this.scale, halfHeight = this.canvas.height / 2 / this.scale;
    this.x = Math.max(-halfWidth, Math.min(point.x - x / this.scale, this.image.width - halfWidth));
    this.y = Math.max(-halfHeight, Math.min(point.y - y / this.scale, this.image.height - halfHeight));
  }
}

/** Draws frames. Owns the canvas; borrows view and stretch. */
export class Picture {
  constructor(canvas, view, stretch) {
    this.canvas = canvas;
    this.view = view;
    this.stretch = stretch;
    this.showsSaturation = true;
    this.frame = null; // the one that is drawn
    // Without this hint a browser with a software GL reads back on every drawing.
    this._context = canvas.getContext("2d", { willReadFrequently: true, alpha: false });
    this._source = document.createElement("canvas");
    this._sourceContext = this._source.getContext("2d", { willReadFrequently: true });
    this._pixels = null;
  }

  /** Takes another frame, or null for none. */
  setFrame(frame) {
    this.frame = frame;
    if (frame) this.stretch.follow(frame);
    this.repaint();
  }

  /** After a change of the stretch: the same frame in other colours. */
  repaint() {
    if (this.frame) this._colour();
    this.redraw();
  }

  /** After a change of the view: the same colours elsewhere. */
  redraw() {
    const { canvas, view, _context: context, frame } = this;
    if (canvas.width !== view.canvas.width || canvas.height !== view.canvas.height) {
      canvas.width = view.canvas.width;
      canvas.height = view.canvas.height;
    }
    context.fillStyle = PASSE_PARTOUT;
    context.fillRect(0, 0, canvas.width, canvas.height);
    if (!frame) return;
    // Edges on whole pixels of the canvas, so that nothing is blurred at one to one.
    const [corner, end] = [[frame.x, frame.y], [frame.imageWidth, frame.imageHeight]].map(([x, y]) => {
      const at = view.toCanvas(x, y);
      return { x: Math.round(at.x), y: Math.round(at.y) };
    });
    const scale = frame.step * view.scale;
    context.save();
    context.beginPath();
    context.rect(corner.x, corner.y, end.x - corner.x, end.y - corner.y); // blocks at the edges are smaller
    context.clip();
    context.imageSmoothingEnabled = scale < 1 || frame.step > 1; // pixels of the image themselves have edges
    context.imageSmoothingQuality = "high";
    context.drawImage(this._source, 0, 0, frame.width, frame.height,
      corner.x, corner.y, frame.width * scale, frame.height * scale);
    context.restore();
  }

  /** The visible picture as a PNG, without marks. */
  toBlob() {
    return new Promise(resolve => this.canvas.toBlob(resolve, "image/png"));
  }

  _colour() {
    const { frame } = this;
    const { width, height, samples } = frame;
    if (this._source.width !== width || this._source.height !== height || !this._pixels) {
      this._source.width = width;
      this._source.height = height;
      this._pixels = this._sourceContext.createImageData(width, height);
    }
    const colours = new Uint32Array(this._pixels.data.buffer);
    let table = this.stretch.table();
    if (frame.bytes === 1) {
      const values = table;
      table = Uint32Array.from({ length: 256 }, (_, sample) => values[Math.round(frame.toValue(sample))]);
    }
    for (let index = 0; index < colours.length; index++) colours[index] = table[samples[index]];
    if (this.showsSaturation) frame.forSaturated(index => { colours[index] = SATURATED; });
    this._sourceContext.putImageData(this._pixels, 0, 0);
  }
}
