// SPDX-License-Identifier: MIT
// Numbers as people read and write them. Without a value: a dash.

export const NONE = "–";

const TIME_UNITS = { "µs": 1e-6, ms: 1e-3, s: 1 };
const TIME_NAMES = { us: "µs", "μs": "µs", "µs": "µs", ms: "ms", s: "s" };
const DIGITS = 5;

/** At most so many digits, without an exponent and without zeros at the end. */
export function digits(value, count = DIGITS) {
  if (value === null || value === undefined || !Number.isFinite(value)) return NONE;
  return String(Number(Number(value).toPrecision(count)));
}

/** Seconds as [number, unit]. */
export function time(seconds) {
  if (seconds === null || seconds === undefined || !Number.isFinite(seconds)) return [NONE, "s"];
  const unit = seconds < 0.9999995e-3 ? "µs" : seconds < 0.9999995 ? "ms" : "s";
  return [digits(seconds / TIME_UNITS[unit]), unit];
}

export function timeText(seconds) {
  return time(seconds).join(" ");
}

/** Seconds from a text such as "20", "20 ms" or "0,5 s"; NaN for anything else. A number alone has the given unit. */
export function parseTime(text, unit) {
  const match = /^\s*([\d.,]+(?:e[-+]?\d+)?)\s*(us|µs|μs|ms|s)?\s*$/i.exec(text);
  if (!match) return NaN;
  const given = match[2] ? TIME_NAMES[match[2].toLowerCase()] : unit;
  return parseNumber(match[1]) * TIME_UNITS[given];
}

/** A number with a point or a comma; NaN for anything else. */
export function parseNumber(text) {
  const trimmed = text.trim().replace(",", ".");
  return trimmed === "" ? NaN : Number(trimmed);
}

/** A rate or a percentage: always as many decimals, so that it does not jump. */
export function fixed(value, decimals) {
  return value === null || value === undefined || !Number.isFinite(value) ? NONE : value.toFixed(decimals);
}

export function bytes(count) {
  if (count === null || count === undefined) return NONE;
  return count < 1e9 ? `${(count / 1e6).toFixed(1)} MB` : `${(count / 1e9).toFixed(2)} GB`;
}

/** A duration as 0:05 or 1:02:03. */
export function duration(seconds) {
  if (seconds === null || seconds === undefined || !Number.isFinite(seconds)) return NONE;
  const whole = Math.max(0, Math.ceil(seconds));
  const parts = [Math.floor(whole / 3600), Math.floor(whole / 60) % 60, whole % 60];
  const [hours, minutes, rest] = [parts[0], parts[1], String(parts[2]).padStart(2, "0")];
  return hours ? `${hours}:${String(minutes).padStart(2, "0")}:${rest}` : `${minutes}:${rest}`;
}
