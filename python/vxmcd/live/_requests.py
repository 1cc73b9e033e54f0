# SPDX-License-Identifier: MIT
"""What pages ask for: settings and commands."""
from __future__ import annotations

import asyncio
import time
from pathlib import Path
from typing import Callable, Dict, List, Set

from . import _snapshot
from ._channel import Channel
from ._recording import check_name
from ._viewer import Viewer


def _only(content, *keys):
    for key in content:
        if key not in (*keys, "id", "version"):
            raise ValueError(f"there is no {key!r} here")


class Requests:
    """Carries out requests, and knows all cameras that are open. files: names of files that were made, which pages may
    fetch. make_channel(number) and attached() are those of Server's maker. For the thread of the event loop."""

    def __init__(self, make_channel: Callable[[int], Channel], attached: Callable[[], int], directory: Path):
        self.channels: Dict[int, Channel] = {}
        self.files: Set[str] = set()
        self._make_channel = make_channel
        self._attached = attached
        self._count = 0  # of attached cameras
        self._directory = directory
        self._opening = asyncio.Lock()
        self._saving = asyncio.Lock()
        self._commands = {
            "take-control": self._take_control, "give-control": self._give_control, "keep-control": self._keep_control,
            "trigger": self._trigger, "open": self._open, "start": self._start, "snapshot": self._snapshot,
            "record": self._record, "stop": self._stop}

    def cameras(self) -> List[Dict[str, object]]:
        """The attached cameras. It is not known what those are that were never open: to ask them would disturb programs that
        use them."""
        def entry(number):
            channel = self.channels.get(number)
            known = channel.camera if channel and channel.camera else {}
            return {"number": number, "model": known.get("model"), "serial": known.get("serial")}
        return [entry(number) for number in range(max([self._count, *(number + 1 for number in self.channels)]))]

    async def channel(self, number: int) -> Channel:
        """The channel of a camera, which is opened if need be. Raises what Camera does."""
        async with self._opening:
            self._count = await asyncio.get_running_loop().run_in_executor(None, self._attached)
            if number not in self.channels:
                channel = self._make_channel(number)
                await channel.open()
                self.channels[number] = channel
            return self.channels[number]

    async def set(self, viewer: Viewer, content: Dict[str, object]) -> Dict[str, object]:
        """Sets one setting. Returns what the answer has. Raises what is wrong; so does do()."""
        _only(content, "set")
        settings = content["set"]
        if not isinstance(settings, dict) or len(settings) != 1:
            raise ValueError("set has one setting")
        channel = viewer.channel
        channel.need_control(viewer)
        version = content.get("version", channel.state.version)
        if not isinstance(version, int) or channel.state.is_outdated(version, viewer.number):
            channel.send_state()
            raise ValueError("another viewer has changed the settings meanwhile; look at them and try again")
        (name, value), = settings.items()
        answer = await channel.ask("set", name, value)
        channel.changed(viewer)
        return answer

    async def do(self, viewer: Viewer, content: Dict[str, object]) -> Dict[str, object]:
        command = content["do"]
        if not isinstance(command, str) or command not in self._commands:
            raise ValueError(f"there is no command {command!r}; there are {', '.join(self._commands)}")
        return await self._commands[command](viewer, content) or {}

    async def _take_control(self, viewer, content):
        _only(content, "do")
        has_it = viewer.channel.control.take(viewer.number, time.monotonic())
        if has_it:
            viewer.channel.changed(None)
        viewer.channel.send_state()
        return {"value": "yours" if has_it else "asked"}

    async def _give_control(self, viewer, content):
        _only(content, "do")
        viewer.channel.control.give(viewer.number)
        viewer.channel.changed(viewer)

    async def _keep_control(self, viewer, content):
        _only(content, "do")
        viewer.channel.control.keep(viewer.number)
        viewer.channel.send_state()

    async def _trigger(self, viewer, content):
        _only(content, "do")
        viewer.channel.need_control(viewer)
        await viewer.channel.ask("trigger")

    async def _start(self, viewer, content):
        _only(content, "do")
        viewer.channel.need_control(viewer)
        await viewer.channel.ask("start")

    async def _open(self, viewer, content):
        """This page shows another camera from now on; the one before goes on for those that show it."""
        _only(content, "do", "camera")
        number = content.get("camera")
        if isinstance(number, bool) or not isinstance(number, int):
            raise ValueError("a camera has a number")
        if number not in self.channels and viewer.channel.control.is_read_only:
            raise ValueError("the program was started with --read-only: cameras that are closed stay so")
        channel = await self.channel(number)
        if channel is viewer.channel or viewer.socket.closed:
            return
        before, viewer.channel = viewer.channel, channel
        before.leave(viewer)
        channel.join(viewer)
        channel.send_hello(viewer, self.cameras())
        channel.send_state()

    async def _snapshot(self, viewer, content):
        """Writes the image that the page shows."""
        _only(content, "do", "format", "name", "number")
        viewer.channel.need_control(viewer)
        suffix = _snapshot.suffix(content.get("format", "fits"))
        image = viewer.image(content.get("number"))
        async with self._saving:  # so that a name which is free stays so
            name = content.get("name") or self._free_name(image, suffix)
            path = check_name(name, self._directory, suffix)
            try:
                await asyncio.get_running_loop().run_in_executor(None, _snapshot.write, image, path)
            except OSError as error:
                raise RuntimeError(f"the file cannot be written: {error.strerror or error}") from None
        self.files.add(path.name)
        return {"value": {"name": path.name, "url": f"files/{path.name}", "number": image.number}}

    def _free_name(self, image, suffix):
        """A name by the time of the image."""
        base = time.strftime("image-%Y%m%d-%H%M%S", time.localtime(image.time))
        names = [base, *(f"{base}-{number}" for number in range(2, 1000))]
        return next(name for name in names if not (self._directory / (name + suffix)).exists())

    async def _record(self, viewer, content):
        _only(content, "do", "name", "images", "seconds")
        viewer.channel.need_control(viewer)
        name = content.get("name") or time.strftime("run-%Y%m%d-%H%M%S")
        answer = await viewer.channel.ask("record", name, content.get("images"), content.get("seconds"))
        viewer.channel.changed(viewer)
        return {"value": answer}

    async def _stop(self, viewer, content):
        _only(content, "do")
        viewer.channel.need_control(viewer)
        return {"value": await viewer.channel.ask("stop")}
