// SPDX-License-Identifier: MIT
// The keys of the page, and the table of them in its help.

const $ = id => document.getElementById(id);

/** What each key does: its text in the help, and the action. */
function table(page) {
  const { stage, panel, histogram, save } = page;
  const click = id => () => { if (!$(id).disabled) $(id).click(); };
  const none = () => {}; // the browser or the picture does it
  return new Map([
    ["f", ["whole image", () => stage.fit()]],
    ["1", ["one to one", () => stage.zoomTo(1)]],
    ["2", ["two to one", () => stage.zoomTo(2)]],
    ["+", ["zoom in", () => stage.zoomBy(1)]],
    ["-", ["zoom out", () => stage.zoomBy(-1)]],
    ["← ↑ → ↓", ["move picture, crosshair or area; Shift: crosshair by 10, area's size; Alt: area by 1", none]],
    ["c", ["crosshair", click("crosshair")]],
    ["p", ["line profile", () => stage.toggleLine()]],
    ["x", ["saturated pixels red", click("saturation")]],
    ["u", ["automatic stretch", () => histogram.toggleAuto()]],
    ["d", ["histogram of all values, or around the stretch", () => histogram.toggleDetail()]],
    ["h", ["black point; Tab: white point", () => $("black").select()]],
    ["m", ["next colour map", () => page.nextMap()]],
    ["space", ["freeze the picture", click("freeze")]],
    ["e", ["exposure", () => panel.focus("exposure")]],
    ["[", ["shorter exposure", () => panel.step("exposure", -1)]],
    ["]", ["longer exposure", () => panel.step("exposure", 1)]],
    ["y", ["cycle", () => panel.focus("cycle_time")]],
    ["g", ["gain; Tab: speed", () => panel.focus("gain")]],
    ["b", ["binning; Tab: bits, trigger", () => panel.focus("binning")]],
    ["k", ["cooling target; Tab: cooler, fan", () => panel.focus("target_temperature")]],
    ["t", ["trigger an image", () => panel.trigger()]],
    ["a", ["draw an area: Enter applies, Esc cancels", () => { if (page.mayControl) stage.beginArea(); }]],
    ["w", ["whole sensor", click("area-whole")]],
    ["s", ["snapshot", click("snapshot")]],
    ["r", ["record: then Enter; or Stop", () => save.focus()]],
    ["Tab", ["next field or button: camera, control, formats", none]],
    ["Esc", ["leave a field, an area or a profile", none]],
    ["?", ["this table", () => $("help").showModal()]],
  ]);
}

/** Carries out the keys of a page {stage, panel, histogram, save, nextMap(), mayControl}, but for those of open dialogs and
 * fields. */
export class Keys {
  constructor(page) {
    this._stage = page.stage;
    this._table = table(page);
    $("keys").append(...[...this._table].map(([key, [text]]) => {
      const row = document.createElement("tr");
      const name = document.createElement("td");
      name.append(...key.split(" ").map(part => Object.assign(document.createElement("kbd"), { textContent: part })));
      row.append(name, Object.assign(document.createElement("td"), { textContent: text }));
      return row;
    }));
    document.addEventListener("keydown", event => this._key(event));
  }

  press(name) {
    this._table.get(name)[1]();
  }

  _key(event) {
    if (event.ctrlKey || event.metaKey || document.querySelector("dialog[open]") || !$("gate").hidden) return;
    const inField = event.target.matches("input, select");
    if (inField) {
      if (event.key === "Escape") $("stage").focus();
      else return;
    } else if (this._stage.key(event)) {
      event.preventDefault();
      return;
    }
    const name = event.key === " " ? "space" : event.key === "=" ? "+" : event.key;
    // Space and Enter press the button that has the focus, Tab leaves it.
    if (name === "Tab" || (name === "space" && event.target.matches("button, a"))) return;
    const entry = event.altKey ? null : this._table.get(name);
    if (!entry) return;
    event.preventDefault();
    entry[1]();
  }
}
