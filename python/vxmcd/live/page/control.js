// SPDX-License-Identifier: MIT
// Who controls the camera: in the line on top, and the question whether to pass it on.

import { problem } from "./settings.js";

const $ = id => document.getElementById(id);

/** `ask` sends a request and promises its result; failures are said in `banners`. */
export class ControlBar {
  constructor(connection, ask, banners) {
    this._connection = connection;
    this._state = {};
    const press = (id, act) => $(id).addEventListener("click", act);
    press("take-control", async () => {
      const result = await ask({ do: "take-control" });
      if (!result.ok) banners.flash("bad", problem(result));
    });
    press("give-control", () => ask({ do: "give-control" }));
    press("hand-over-yes", () => ask({ do: "give-control" }));
    press("hand-over-no", () => ask({ do: "keep-control" }));
    $("hand-over").addEventListener("cancel", () => ask({ do: "keep-control" }));
  }

  /** Whether this page may change the camera. */
  get isMine() {
    const { control } = this._state;
    return this._connection.isOpen && Boolean(control) && !control.read_only && control.controller === this._viewer;
  }

  /** viewer: the number of this page. */
  update(viewer, state) {
    this._viewer = viewer;
    this._state = state;
    const { isMine } = this;
    const { viewers, control = {} } = state;
    $("viewers").textContent = viewers > 1 ? `${viewers} viewers` : "";
    $("role").dataset.role = isMine ? "control" : "view";
    $("role").textContent = isMine ? "◆ you control" : control.read_only ? "◇ view only" : "◇ viewing";
    $("take-control").hidden = isMine || control.read_only || !this._connection.isOpen;
    const isAsking = control.asking !== null && control.asking !== undefined;
    $("take-control").disabled = isAsking;
    $("take-control").textContent = isAsking ? `asked, ${Math.ceil(control.seconds_to_answer ?? 0)} s` : "Take control";
    $("give-control").hidden = !isMine || !(viewers > 1);
    const dialog = $("hand-over");
    if (isMine && isAsking) {
      $("hand-over-who").textContent = `Viewer ${control.asking}`;
      $("hand-over-seconds").textContent = String(Math.ceil(control.seconds_to_answer ?? 0));
      if (!dialog.open) dialog.showModal();
    } else if (dialog.open) {
      dialog.close();
    }
  }
}
