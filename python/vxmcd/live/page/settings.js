// SPDX-License-Identifier: MIT
// The rows of settings. A row shows the value that the camera has; what was typed stays until it is sent or given up.

import { digits, parseNumber, parseTime, time, timeText } from "./format.js";

const TOLERANCE = 0.01; // a value that differs by more than this part is said to differ
const DECADE = [1, 2, 5];

function element(tag, properties = {}, ...children) {
  const made = Object.assign(document.createElement(tag), properties);
  made.append(...children);
  return made;
}

/** The next value of 1, 2, 5, 10, ... above or below. */
export function nextStep(value, direction) {
  const power = 10 ** Math.floor(Math.log10(value) + 1e-9);
  const steps = [0.5, ...DECADE, 10, 20].map(step => Number((step * power).toPrecision(3)));
  return direction > 0 ? steps.find(step => step > value * 1.001)
    : steps.reverse().find(step => step < value * 0.999) ?? value / 2;
}

/** A row: label, input, unit, limits, and below them the answer to the last change where it is worth reading. */
class Row {
  constructor(definition, send) {
    this.name = definition.name;
    this.label = definition.label;
    this._send = send;
    this._id = `set-${definition.name.replaceAll("_", "-")}`;
    this.limits = element("span", { className: "limits" });
    this.answer = element("span", { className: "answer", hidden: true });
    this.answer.setAttribute("role", "status");
    this.input = this._makeInput();
    this.input.id = this._id;
    const label = element("label", { htmlFor: this._id, textContent: definition.label });
    if (definition.key) label.title = `Key ${definition.key}`;
    const className = `row ${definition.kind}${definition.half ? ` half ${definition.half}` : ""}`;
    this.element = element("div", { className }, label, ...this._parts(), this.limits, this.answer);
  }

  _parts() {
    return [this.input];
  }

  async change(value) {
    const result = await this._send({ [this.name]: value });
    this.answer.classList.toggle("bad", !result.ok);
    this._say(result.ok ? this._difference(value, result.value) : problem(result));
    this.input.classList.toggle("refused", !result.ok);
    this.update(result.ok && result.value !== undefined ? result.value : this.value);
  }

  enable(isEnabled) {
    this.input.disabled = !isEnabled;
  }

  /** Shows a text below the row; an empty one removes an earlier text. */
  _say(text) {
    if (!text) this.input.classList.remove("refused");
    this.answer.hidden = !text;
    this.answer.textContent = text || "";
  }

  _difference() {
    return "";
  }
}

function sentence(text) {
  return text && `${text[0].toUpperCase()}${text.slice(1).replace(/\.$/, "")}.`;
}

/** What went wrong, what can be done, and the code, for a refusal or a failed run. */
export function problem({ meaning, detail, advice, code, name }) {
  const what = [(meaning ?? "").replace(/^status: /, ""), detail].filter(Boolean).join(": ");
  return [sentence(what || "Refused"), sentence(advice), code && `(${code} ${name})`].filter(Boolean).join(" ");
}

/** A number that is typed: Enter or leaving the field sends it, Esc gives it up, the arrow keys step. */
class TextRow extends Row {
  _makeInput() {
    const input = element("input", { className: "number", autocomplete: "off", inputMode: "decimal" });
    this._isDirty = false;
    input.addEventListener("input", () => {
      this._isDirty = true;
      this._say("");
    });
    input.addEventListener("blur", () => this._commit());
    input.addEventListener("keydown", event => {
      if (event.key === "Enter") this._commit();
      else if (event.key === "Escape") return this._restore(); // and the page takes the focus away
      else if (event.key === "ArrowUp" || event.key === "ArrowDown") this.step(event.key === "ArrowUp" ? 1 : -1);
      else return undefined;
      event.preventDefault();
      return event.stopPropagation();
    });
    return input;
  }

  _parts() {
    this.unit = element("span", { className: "unit" });
    return [this.input, this.unit];
  }

  update(value) {
    this.value = value;
    if (!this._isDirty) this._show();
  }

  _commit() {
    if (!this._isDirty) return;
    const value = this._parse(this.input.value);
    this._isDirty = false;
    if (Number.isNaN(value)) {
      this.answer.classList.add("bad");
      this._say(`“${this.input.value}” is no ${this.label.toLowerCase()}: ${this._example}`);
      this._show();
    } else {
      this.change(value);
    }
  }

  _restore() {
    this._isDirty = false;
    this._show();
  }

  _difference(asked, real) {
    if (typeof real !== "number" || Math.abs(real - asked) <= TOLERANCE * Math.abs(asked)) return "";
    return `asked for ${this.text(asked)}, the camera takes ${this.text(real)}`;
  }
}

class TimeRow extends TextRow {
  _example = "20 ms, 0.5 s or 300 us, for example";

  text(seconds) {
    return timeText(seconds);
  }

  setLimits(limits) {
    this.limits.textContent = limits ? `${timeText(limits[0])} … ${timeText(limits[1])}` : "";
    this.limits.title = this.limits.textContent;
  }

  step(direction) {
    if (this.value > 0) this.change(nextStep(this.value, direction));
  }

  _show() {
    const [number, unit] = time(this.value);
    this.input.value = number;
    this.unit.textContent = unit;
  }

  _parse(text) {
    return parseTime(text, this.unit.textContent);
  }
}

class NumberRow extends TextRow {
  _example = "a number";

  constructor(definition, send) {
    super(definition, send);
    this.unit.textContent = definition.unit;
  }

  text(value) {
    return `${digits(value)} ${this.unit.textContent}`;
  }

  setLimits(limits) {
    this.limits.textContent = limits ? `${digits(limits[0])} … ${digits(limits[1])} ${this.unit.textContent}` : "";
  }

  step(direction) {
    this.change(Math.round(this.value) + direction);
  }

  _show() {
    this.input.value = digits(this.value);
  }

  _parse(text) {
    return parseNumber(text);
  }
}

/** One of several. Choices are [value, text]; values are compared as JSON. */
class ChoiceRow extends Row {
  _makeInput() {
    const input = element("select");
    input.addEventListener("change", () => this.change(JSON.parse(input.value)));
    return input;
  }

  setChoices(choices) {
    const key = JSON.stringify(choices);
    this.element.hidden = !choices || choices.length === 0;
    if (key === this._key || !choices) return;
    this._key = key;
    this.input.replaceChildren(...choices.map(([value, text]) =>
      element("option", { value: JSON.stringify(value), textContent: text })));
    this._restore();
  }

  update(value) {
    this.value = value;
    if (document.activeElement !== this.input || !this._isOpen) this._restore();
  }

  /** The library does not tell some settings before they are set. */
  _restore() {
    const wanted = JSON.stringify(this.value ?? null);
    const isKnown = [...this.input.options].some(option => option.value === wanted && !option.dataset.unknown);
    let unknown = this.input.querySelector("option[data-unknown]");
    if (isKnown) {
      unknown?.remove();
    } else {
      if (!unknown) {
        unknown = element("option", { disabled: true });
        unknown.dataset.unknown = "1";
        this.input.prepend(unknown);
      }
      unknown.value = wanted;
      unknown.textContent = this.value === null || this.value === undefined ? "default" : String(this.value);
    }
    this.input.value = wanted;
  }
}

/** On or off. */
class SwitchRow extends Row {
  _makeInput() {
    const input = element("button", { type: "button", className: "switch" });
    input.addEventListener("click", () => this.change(!this.value));
    return input;
  }

  update(value) {
    this.value = value;
    this._restore();
  }

  _restore() {
    this.input.setAttribute("aria-pressed", String(Boolean(this.value)));
    this.input.textContent = this.value ? "On" : "Off";
  }
}

const KINDS = { time: TimeRow, number: NumberRow, choice: ChoiceRow, switch: SwitchRow };

/** Makes a row of a definition {name, label, kind, unit, key}. `send` takes a setting by its name and promises the
 * result. */
export function makeRow(definition, send) {
  return new KINDS[definition.kind](definition, send);
}
