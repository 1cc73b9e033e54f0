# SPDX-License-Identifier: MIT
"""A camera in the live view: its worker, its newest image, its state, and the pages that show it."""
from __future__ import annotations

import asyncio
import collections
import concurrent.futures
import time
from typing import Callable, Dict, Optional

from .._signatures import LIBRARY_VERSION
from . import _wire
from ._description import as_json
from ._frames import Frames, Image
from ._state import Control, State
from ._viewer import Viewer

_CURVE_SECONDS = 3600.0
_CURVE_STEP = 2.0
_COST_PART = 0.1  # of the newest picture in the mean cost


class Channel:
    """Passes messages between the worker's thread and the pages. Each camera has its own control: who was the first to show
    it. make_worker(number, frames, on_frame, on_status) makes the CameraWorker. For the thread of the event loop; pictures are
    made in `pool`."""

    def __init__(self, number: int, make_worker: Callable, is_read_only: bool, pool: concurrent.futures.Executor):
        self.number = number
        self.camera: Optional[Dict[str, object]] = None  # what it is
        self.control = Control(is_read_only)
        self.state = State()
        self.frames = Frames()
        self._viewers: Dict[int, Viewer] = {}
        self._curve = collections.deque(maxlen=int(_CURVE_SECONDS / _CURVE_STEP))
        self._pool = pool
        self._cost = 0.0
        self._counted: Optional[Image] = None  # the image of the last histogram
        self._loop = asyncio.get_running_loop()
        self._worker = make_worker(number, self.frames, self._post_frame, self._post_status)

    async def open(self) -> None:
        """Opens the camera. Raises what Camera does."""
        await self._loop.run_in_executor(None, self._worker.open_first)
        self._worker.start()

    async def close(self) -> None:
        """Ends a recording in order, and closes the camera."""
        await self._loop.run_in_executor(None, self._worker.stop)

    async def ask(self, command: str, *arguments):
        """What the worker answers."""
        return await asyncio.wrap_future(self._worker.submit(command, *arguments))

    def join(self, viewer: Viewer) -> None:
        self._viewers[viewer.number] = viewer
        viewer.show(self.frames)
        self.control.join(viewer.number)
        self._worker.watched(len(self._viewers))

    def leave(self, viewer: Viewer) -> None:
        del self._viewers[viewer.number]
        had_control = self.control.controller == viewer.number
        self.control.leave(viewer.number, next(iter(self._viewers), None))
        self.state.forget(viewer.number)
        if had_control:
            self.state.changed(None)
        self._worker.watched(len(self._viewers))
        self.send_state()

    def changed(self, viewer: Optional[Viewer]) -> None:
        """A viewer has changed a setting or the control; None: no viewer that may have known it."""
        self.state.changed(None if viewer is None else viewer.number)
        self.send_state()

    def need_control(self, viewer: Viewer) -> None:
        """Raises ValueError for a viewer that may change nothing."""
        if self.control.is_read_only:
            raise ValueError("the program was started with --read-only")
        if self.control.controller != viewer.number:
            raise ValueError("another viewer controls the camera; take the control first")

    def send_hello(self, viewer: Viewer, cameras) -> None:
        """Everything that a page needs that has just been loaded, or that shows another camera from now on. cameras: all that
        are attached."""
        viewer.put("hello", as_json({"hello": {
            **self._state_json(viewer), "program": LIBRARY_VERSION, "protocol": _wire.PROTOCOL, "viewer": viewer.number,
            "camera": self.camera, "cameras": cameras, "curve": list(self._curve)}}))

    def send_state(self) -> None:
        for viewer in self._viewers.values():
            viewer.put("state", as_json({"state": self._state_json(viewer)}))

    async def encode(self, image, view, coarser):
        """Makes a picture on another thread."""
        def make():
            began = time.thread_time()
            picture = image.picture(view, self.frames.stretch, coarser)
            return picture, time.thread_time() - began
        picture, cost = await self._loop.run_in_executor(self._pool, make)
        self._cost += _COST_PART * (cost * max(len(self._viewers), 1) - self._cost)
        self._worker.cost = self._cost
        return picture

    async def tick(self) -> None:
        """To be called a few times a second: time-outs of the control, histogram."""
        if self.control.pass_time(time.monotonic()):
            self.changed(None)
        image = self.frames.newest
        if image is None or image is self._counted or not self._viewers:
            return
        self._counted = image
        histogram = await self._loop.run_in_executor(self._pool, self.frames.add_histogram, image)
        text = as_json({"histogram": {**histogram._asdict(), **dict(zip(("low", "high"), self.frames.stretch))}})
        for viewer in self._viewers.values():
            if viewer.frozen is None:
                viewer.put("histogram", text)

    # From the worker's thread

    def _post_frame(self):
        self._post(self._new_frame)

    def _post_status(self, status):
        self._post(self._new_status, status)

    def _post(self, function, *arguments):
        try:
            self._loop.call_soon_threadsafe(function, *arguments)
        except RuntimeError:  # the loop has ended
            pass

    def _new_frame(self):
        for viewer in self._viewers.values():
            viewer.wake()

    def _new_status(self, status):
        if "opened" in status:
            self.camera = status["opened"]
        if "values" in status:
            self._add_to_curve(status["values"].get("temperature"))
            self.state.update(status["values"])
            self.send_state()

    def _add_to_curve(self, temperature):
        if not temperature or temperature["celsius"] is None:
            return
        if not self._curve or temperature["time"] - self._curve[-1][0] >= _CURVE_STEP:
            self._curve.append([round(temperature["time"], 1), temperature["celsius"], temperature["target"]])

    def _role(self, viewer):
        if self.control.is_read_only:
            return "read-only"
        return "controller" if self.control.controller == viewer.number else "viewer"

    def _state_json(self, viewer):
        return {**self.state.json(), "viewers": len(self._viewers), "control": self.control.json(time.monotonic()),
                "role": self._role(viewer), "reduced": viewer.reduction.text}
