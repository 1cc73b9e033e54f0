// SPDX-License-Identifier: MIT
// Small plots: histogram, line profile, temperature curve. Each owns its canvas and draws all of it, whenever asked.

const COLOURS = {
  frame: "#39424b", text: "#9aa7b2", bars: "#7f93a5", line: "#6cb6ff", target: "#e3b341", mark: "#e8edf2",
  shade: "#0a0c0ea0",
};
const FONT_PIXELS = 10;
const FONT = "system-ui, 'DejaVu Sans', sans-serif";

class Plot {
  constructor(canvas) {
    this.canvas = canvas;
    this.context = canvas.getContext("2d");
  }

  /** An empty plot in CSS pixels. */
  begin() {
    const ratio = window.devicePixelRatio || 1;
    const { clientWidth: width, clientHeight: height } = this.canvas;
    if (this.canvas.width !== Math.round(width * ratio) || this.canvas.height !== Math.round(height * ratio)) {
      this.canvas.width = Math.round(width * ratio);
      this.canvas.height = Math.round(height * ratio);
    }
    this.context.setTransform(ratio, 0, 0, ratio, 0, 0);
    this.context.clearRect(0, 0, width, height);
    this.context.font = `${FONT_PIXELS}px ${FONT}`;
    this.context.fillStyle = COLOURS.text;
    this.context.lineWidth = 1;
    return { width, height };
  }

  text(text, x, y, align = "left") {
    this.context.textAlign = align;
    this.context.fillStyle = COLOURS.text;
    this.context.fillText(text, x, y);
  }

  /** A line through points; a gap where one is null. */
  curve(points, colour) {
    const { context } = this;
    context.strokeStyle = colour;
    context.lineWidth = 1.5;
    context.lineJoin = "round";
    context.beginPath();
    let isDown = false;
    for (const point of points) {
      if (point && isDown) context.lineTo(point[0], point[1]);
      else if (point) context.moveTo(point[0], point[1]);
      isDown = Boolean(point);
    }
    context.stroke();
    context.lineWidth = 1;
  }
}

/** Counts of pixel values, logarithmic, with the two points of the stretch and a mark at the value under the cursor. */
export class HistogramPlot extends Plot {
  static bottom = 14; // for the numbers below

  constructor(canvas) {
    super(canvas);
    this.range = { first: 0, last: 255 }; // values at the left and right edge
  }

  toX(value) {
    const { first, last } = this.range;
    return (value - first) / (last + 1 - first) * this.canvas.clientWidth;
  }

  toValue(x) {
    const { first, last } = this.range;
    return first + x / this.canvas.clientWidth * (last + 1 - first);
  }

  draw(histogram, black, white, cursorValue) {
    const { width, height } = this.begin();
    const { context } = this;
    const base = height - HistogramPlot.bottom;
    if (histogram) {
      this.range = { first: histogram.first, last: histogram.last };
      const { counts } = histogram;
      const top = Math.log1p(Math.max(1, ...counts));
      context.fillStyle = COLOURS.bars;
      counts.forEach((count, index) => {
        if (!count) return;
        const high = Math.max(1, Math.log1p(count) / top * (base - 4));
        const left = Math.floor(index * width / counts.length);
        context.fillRect(left, base - high, Math.max(1, Math.floor((index + 1) * width / counts.length) - left), high);
      });
    }
    const [left, right] = [this.toX(black), this.toX(white)];
    context.fillStyle = COLOURS.shade;
    context.fillRect(0, 0, Math.max(0, left), base);
    context.fillRect(right, 0, Math.max(0, width - right), base);
    context.strokeStyle = COLOURS.frame;
    context.beginPath();
    context.moveTo(0, base + 0.5);
    context.lineTo(width, base + 0.5);
    context.stroke();
    this._handle(left, base, "B");
    this._handle(right, base, "W");
    if (cursorValue >= 0) this._cursor(this.toX(cursorValue), base);
    this.text(String(this.range.first), 0, height - 2);
    this.text(String(this.range.last), width, height - 2, "right");
  }

  _handle(x, base, letter) {
    const { context } = this;
    const width = this.canvas.clientWidth;
    const place = Math.round(Math.max(0, Math.min(x, width - 1))) + 0.5;
    context.strokeStyle = COLOURS.line;
    context.beginPath();
    context.moveTo(place, 0);
    context.lineTo(place, base);
    context.stroke();
    const box = Math.max(0, Math.min(place - 6, width - 12));
    context.fillStyle = letter === "B" ? "#000" : "#fff";
    context.fillRect(box, 0.5, 12, 12);
    context.strokeRect(Math.round(box) + 0.5, 0.5, 11, 11);
    context.fillStyle = letter === "B" ? "#fff" : "#000";
    context.textAlign = "center";
    context.fillText(letter, box + 6, 10);
  }

  _cursor(x, base) {
    const { context } = this;
    context.fillStyle = COLOURS.mark;
    context.beginPath();
    context.moveTo(x, base);
    context.lineTo(x - 4, base + 7);
    context.lineTo(x + 4, base + 7);
    context.fill();
  }
}

/** Pixel values along a line of the picture. */
export class ProfilePlot extends Plot {
  draw(values) {
    const { width, height } = this.begin();
    if (!values || values.length < 2) return;
    const low = Math.min(...values), high = Math.max(...values);
    const left = 44, base = height - 14, top = 6;
    const toY = value => base - (high > low ? (value - low) / (high - low) : 0.5) * (base - top);
    this.context.strokeStyle = COLOURS.frame;
    this.context.strokeRect(left + 0.5, top + 0.5, width - left - 1, base - top);
    this.text(String(high), left - 5, top + 8, "right");
    this.text(String(low), left - 5, base + 1, "right");
    this.text("0", left, height - 2);
    this.text(`${values.length - 1} px`, width, height - 2, "right");
    this.curve(values.map((value, index) => [left + index / (values.length - 1) * (width - left - 1), toY(value)]),
      COLOURS.line);
  }
}

/** Temperatures of the last hour, with the target as a dashed line. */
export class TemperaturePlot extends Plot {
  static seconds = 3600;

  /** Points are [seconds of the server's clock, degrees]. */
  draw(points, target) {
    const { width, height } = this.begin();
    const known = points.filter(([, celsius]) => celsius !== null);
    if (known.length === 0) return;
    const end = known[known.length - 1][0];
    // A young curve uses the whole width: a minute at first, an hour at last.
    const span = [60, 300, 900, TemperaturePlot.seconds].find(seconds => end - known[0][0] <= seconds) ??
      TemperaturePlot.seconds;
    const all = known.map(([, celsius]) => celsius).concat(target === null ? [] : [target]);
    const low = Math.floor(Math.min(...all) - 0.5), high = Math.ceil(Math.max(...all) + 0.5);
    const left = 30, base = height - 14, top = 4;
    const toY = celsius => base - (celsius - low) / (high - low) * (base - top);
    const toX = seconds => left + (seconds - end + span) / span * (width - left - 1);
    const { context } = this;
    context.strokeStyle = COLOURS.frame;
    context.strokeRect(left + 0.5, top + 0.5, width - left - 1, base - top);
    this.text(`${high}°`, left - 4, top + 8, "right");
    this.text(`${low}°`, left - 4, base + 1, "right");
    this.text(span < 3600 ? `-${span / 60} min` : "-1 h", left, height - 2);
    this.text("now", width, height - 2, "right");
    if (target !== null) {
      context.setLineDash([4, 3]);
      this.curve([[left, toY(target)], [width - 1, toY(target)]], COLOURS.target);
      context.setLineDash([]);
    }
    this.curve(points.map(([seconds, celsius]) => celsius === null || seconds < end - span ? null
      : [toX(seconds), toY(celsius)]), COLOURS.line);
  }
}
