// SPDX-License-Identifier: MIT
// Messages over the picture.

const FLASH_MS = 8000;

function element(tag, properties) {
  return Object.assign(document.createElement(tag), properties);
}

/** The messages that are there, one of each kind. Owns what is inside its element. */
export class Banners {
  constructor(place) {
    this._place = place;
    this._shown = new Map();
  }

  /** Shows, changes or, without a level ("bad", "warn"), removes the message of a kind. `action` is the text of a
   * button. */
  set(kind, level, text, more = "", action = null, act = null) {
    const key = JSON.stringify([level, text, more, action]);
    const old = this._shown.get(kind);
    if (old?.key === key) return;
    old?.banner.remove();
    this._shown.delete(kind);
    if (!level) return;
    const banner = element("div", { id: `banner-${kind}`, className: `banner ${level}` });
    const paragraph = element("p", { textContent: text });
    if (more) paragraph.append(element("small", { textContent: more }));
    banner.append(element("span", { className: "mark", textContent: level === "bad" ? "✕" : "!" }), paragraph);
    if (action) {
      const button = element("button", { textContent: action });
      button.addEventListener("click", act);
      banner.append(button);
    }
    this._place.append(banner);
    this._shown.set(kind, { banner, key });
  }

  /** A message that goes away by itself. */
  flash(level, text) {
    const remove = () => this.set("flash", null);
    this.set("flash", level, text, "", "Close", remove);
    clearTimeout(this._timer);
    this._timer = setTimeout(remove, FLASH_MS);
  }
}
