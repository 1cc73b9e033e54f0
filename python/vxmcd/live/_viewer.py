# SPDX-License-Identifier: MIT
"""One page that watches, and what it is sent."""
from __future__ import annotations

import asyncio
import collections
import time
from typing import Dict, Optional

from aiohttp import web

from ._credit import Credit, Reduction
from ._description import as_json
from ._frames import Frames, Image, View

_MAX_RESULTS = 200  # that wait to be sent; a page that asks for more and does not read them is closed
_LINE_SECONDS = 0.1


class Viewer:
    """Sends the newest image when the page has drawn earlier ones, and of each kind of text the newest. Nothing waits in a
    queue but answers. For the thread of the event loop; channel.encode() makes pictures on another one."""

    def __init__(self, number: int, socket: web.WebSocketResponse, transport: asyncio.Transport, channel):
        self.number = number
        self.socket = socket
        self.transport = transport
        self.channel = channel  # the camera that the page shows
        self.view: Optional[View] = None  # nothing is sent before the page has said what it shows
        self.cursor = None
        self.line = None
        self.shown: Optional[Image] = None  # the last one sent
        self.frozen: Optional[Image] = None  # the page keeps this one
        self.reduction = Reduction()
        self._credit = Credit()
        self._frames = channel.frames
        self._wake = asyncio.Event()
        self._texts: Dict[str, str] = {}
        self._results = collections.deque()
        self._waiting: Optional[Image] = None  # not sent yet
        self._has_new_view = False  # since the last image was sent
        self._next_line = 0.0
        self._recent = collections.deque(maxlen=3)  # images that the page may show now

    def show(self, frames: Frames) -> None:
        """From now on the images are these, of another camera."""
        self._frames = frames
        self.shown = self.frozen = self._waiting = None
        self._recent.clear()
        self._texts.clear()
        self._wake.set()

    def look_at(self, view: View) -> None:
        """Another part of the image is visible: it is sent, even if the page has another part of this image."""
        self.view = view
        self._has_new_view = True
        self._wake.set()

    def wake(self) -> None:
        """There is a new image."""
        self._wake.set()

    def put(self, kind: str, text: str) -> None:
        """Sends a text in place of an earlier one of this kind that was not sent yet."""
        self._texts[kind] = text
        self._wake.set()

    def put_result(self, result: Dict[str, object]) -> None:
        if len(self._results) >= _MAX_RESULTS:
            raise ConnectionError("the answers are not read")
        self._results.append(as_json({"result": result}))
        self._wake.set()

    def acknowledge(self, number: int) -> None:
        if self._credit.acknowledge(number, time.monotonic()):
            self._wake.set()

    def is_silent(self) -> bool:
        return self._credit.is_silent(time.monotonic())

    def freeze(self, number: Optional[int]) -> None:
        """Keeps the picture that the page shows; None goes on."""
        self.frozen = self.image(number) if number is not None else None
        self._wake.set()

    def image(self, number: Optional[int]) -> Image:
        """The image that the page shows. Raises ValueError when it is gone."""
        if number is None:
            found = [self.frozen or self.shown or self._frames.newest]
        else:
            found = [image for image in (self.frozen, *reversed(self._recent)) if image is not None and image.number == number]
        if not found or found[0] is None:
            raise ValueError("there is no image" if number is None else f"image {number} is gone")
        return found[0]

    def put_line(self, is_asked: bool = False) -> None:
        """Sends the values along the line, at most ten times a second unless the page has asked."""
        now = time.monotonic()
        image = self.frozen or self.shown
        if self.line is None or image is None or (not is_asked and now < self._next_line):
            return
        self._next_line = now + _LINE_SECONDS
        self.put("line", as_json({"line": {"n": image.number, "values": image.along(self.line)}}))

    async def send(self) -> None:
        """Sends until the connection is closed."""
        while not self.socket.closed:
            await self._wake.wait()
            self._wake.clear()
            while self._results or self._texts:
                text = self._results.popleft() if self._results else self._texts.pop(next(iter(self._texts)))
                await self.socket.send_str(text)
            await self._send_newest()

    async def _send_newest(self):
        image = self.frozen or self._frames.newest
        if image is None or self.view is None or (image is self.shown and not self._has_new_view):
            return
        now = time.monotonic()
        if self._waiting not in (None, image):
            self.reduction.frame(now, False)
        self._waiting = image
        if not self._credit.may_send():
            return
        self._waiting = None
        self._has_new_view = False
        self.reduction.frame(now, True)
        view = self.view._replace(has_one_byte=True) if self.reduction.has_one_byte else self.view
        frames = self._frames
        picture = await self.channel.encode(image, view, self.reduction.coarser)
        if self._frames is not frames:  # another camera meanwhile
            self._wake.set()
            return
        before, self.shown = self.shown, image
        self._recent.append(image)
        is_next = before is not None and before.run == image.run
        has_new_area = before is None or before.pixels.shape != image.pixels.shape or (
            before.camera.get("settings", {}).get("area") != image.camera.get("settings", {}).get("area"))
        since = max(image.number - before.number, 0) if is_next else 1  # a frozen image is older
        message = picture.message(image.value(self.cursor), since, has_new_area)
        self._credit.send(image.number, now)
        await self.socket.send_bytes(message)
        self.put_line()
        self._wake.set()  # there may be another one already
