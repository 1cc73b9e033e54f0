# SPDX-License-Identifier: MIT
"""The web server of the live view. Knows no camera: a worker does."""
from __future__ import annotations

import asyncio
import collections
import concurrent.futures
import json
import logging
import re
import time
from pathlib import Path
from typing import Dict, Optional, Set

from aiohttp import WSMsgType, web

from .._signatures import LIBRARY_VERSION
from . import _description, _snapshot, _wire
from ._access import Access
from ._camera_worker import check_name
from ._frames import Frames, View
from ._state import Control, State
from ._viewer import Viewer

_log = logging.getLogger("vxmcd.live")

_PAGE = Path(__file__).parent / "page"
_TYPES = {".html": "text/html", ".css": "text/css", ".js": "text/javascript", ".svg": "image/svg+xml", ".png": "image/png"}
_HEADERS = {
    "Content-Security-Policy": "default-src 'self'; connect-src 'self'; frame-ancestors 'none'",
    "X-Content-Type-Options": "nosniff", "Referrer-Policy": "no-referrer", "Cross-Origin-Resource-Policy": "same-origin",
    "Cache-Control": "no-cache"}
_MESSAGE_BYTES = 64 << 10
_MESSAGES_A_SECOND = 50
_HEARTBEAT_SECONDS = 10.0  # a page that does not answer within half of it is closed, and loses the control
_TICK_SECONDS = 0.25
_CURVE_SECONDS = 3600.0
_CURVE_STEP = 2.0
_LOGIN_BYTES = 4096


def _number_of(value, name, kinds=(int,)):
    if isinstance(value, bool) or not isinstance(value, kinds):
        raise ValueError(f"{name} is a number")
    return value


def _points(values, name, count):
    if not isinstance(values, list) or len(values) != count:
        raise ValueError(f"{name} is {count} numbers, or null")
    return tuple(min(max(_number_of(value, name, (int, float)), -1e6), 1e6) for value in values)


class Server:
    """The web application. worker: CameraWorker, or what behaves like it. All calls but post_frame() and post_status() from
    the thread of the event loop."""

    def __init__(self, access: Access, frames: Frames, control: Control, directory: Path):
        self.access = access
        self._frames = frames
        self._control = control
        self._directory = directory
        self._files: Set[str] = set()  # made here, which a page may fetch
        self._worker = None
        self._state = State()
        self._viewers: Dict[int, Viewer] = {}
        self._numbers = 0
        self._camera: Optional[Dict[str, object]] = None
        self._curve = collections.deque(maxlen=int(_CURVE_SECONDS / _CURVE_STEP))
        self._pool = concurrent.futures.ThreadPoolExecutor(1, "pictures")
        self._cost = 0.0
        self._loop = asyncio.get_running_loop()
        self._tasks = []
        self._is_ending = False
        self.application = web.Application(middlewares=[self._check], client_max_size=_LOGIN_BYTES)
        self.application.add_routes([
            web.get("/", self._page), web.get("/wire.js", self._wire), web.post("/login", self._login), web.get("/ws", self._socket), web.get("/files/{name}", self._file), web.get("/{name}", self._page)])
        self.application.on_response_prepare.append(self._add_headers)

    def begin(self, worker) -> None:
        self._worker = worker
        self._tasks.append(self._loop.create_task(self._tick()))

    async def end(self) -> None:
        """Tells the pages that the program has ended, and closes them."""
        self._is_ending = True
        for task in self._tasks:
            task.cancel()
        for viewer in list(self._viewers.values()):
            try:
                await asyncio.wait_for(viewer.socket.send_str(json.dumps({"end": "the program has ended"})), 0.2)
                await asyncio.wait_for(viewer.socket.close(code=1001, message=b"the program has ended"), 0.2)
            except (asyncio.TimeoutError, ConnectionError):
                pass
        self._pool.shutdown(wait=False)

    # From the worker's thread

    def post_frame(self) -> None:
        self._post(self._new_frame)

    def post_status(self, status: Dict[str, object]) -> None:
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
            self._camera = status["opened"]
            self._curve.clear()
            for viewer in self._viewers.values():
                self._greet(viewer)
        if "values" in status:
            self._add_to_curve(status["values"].get("temperature"))
            self._state.update(status["values"])
            self._tell_state()

    def _add_to_curve(self, temperature):
        if not temperature or temperature["celsius"] is None:
            return
        if not self._curve or temperature["time"] - self._curve[-1][0] >= _CURVE_STEP:
            self._curve.append([round(temperature["time"], 1), temperature["celsius"], temperature["target"]])

    # Requests

    @web.middleware
    async def _check(self, request, handler):
        refusal = self.access.refusal(request.headers.getall("Host", []), request.headers.getall("Origin", []))
        if refusal:
            raise web.HTTPForbidden(text=refusal + "\n")
        return await handler(request)

    @staticmethod
    async def _add_headers(_, response):
        for name, value in _HEADERS.items():
            response.headers.setdefault(name, value)

    async def _page(self, request):
        name = request.match_info.get("name", "index.html")
        kind = _TYPES.get(Path(name).suffix)
        if kind is None or not re.fullmatch(r"[a-z0-9_-]+\.[a-z]+", name) or not (_PAGE / name).is_file():
            raise web.HTTPNotFound(text="there is no such page\n")
        return web.Response(body=(_PAGE / name).read_bytes(), content_type=kind, charset="utf-8")

    async def _wire(self, _):
        return web.Response(text=_wire.javascript(), content_type="text/javascript", charset="utf-8")

    def _need_cookie(self, request):
        if not self.access.has_cookie(request.cookies):
            raise web.HTTPUnauthorized(text="open the link that the program has printed\n")

    async def _login(self, request):
        if request.content_type != "application/json":
            raise web.HTTPUnsupportedMediaType(text="JSON is expected\n")
        try:
            message = await request.json()
            token = message["token"]
            if not isinstance(token, str):
                raise TypeError
        except (ValueError, TypeError, KeyError):
            raise web.HTTPBadRequest(text='{"token": "..."} is expected\n') from None
        if not token and self.access.has_cookie(request.cookies):  # a page that is loaded again
            return web.Response(status=204)
        is_right = await self.access.log_in(token)
        if is_right is None:
            raise web.HTTPTooManyRequests(text="too many attempts\n")
        if not is_right:
            raise web.HTTPForbidden(text="the token is wrong; open the link that the program has printed\n")
        response = web.Response(status=204)
        response.set_cookie(self.access.cookie_name, self.access.cookie, httponly=True, samesite="Strict", path="/")
        return response

    async def _file(self, request):
        """A file that was made here."""
        self._need_cookie(request)
        name = request.match_info["name"]
        if name not in self._files or not (self._directory / name).is_file():
            raise web.HTTPNotFound(text="there is no such file\n")
        return web.FileResponse(self._directory / name,
                                headers={"Content-Disposition": f'attachment; filename="{name}"',
                                         "Content-Type": "application/octet-stream"})

    async def _socket(self, request):
        self._need_cookie(request)
        # Compression would cost most of the frame rate.
        socket = web.WebSocketResponse(compress=False, heartbeat=_HEARTBEAT_SECONDS, max_msg_size=_MESSAGE_BYTES)
        await socket.prepare(request)
        self._numbers += 1
        viewer = Viewer(self._numbers, socket, self._frames, self._encode)
        self._viewers[viewer.number] = viewer
        self._control.join(viewer.number)
        self._watch()
        self._greet(viewer)
        self._tell_state()
        sending = self._loop.create_task(viewer.send())
        sending.add_done_callback(lambda _: self._loop.create_task(socket.close()))
        try:
            await self._receive(viewer)
        finally:
            sending.cancel()
            self._leave(viewer)
        return socket

    def _leave(self, viewer):
        del self._viewers[viewer.number]
        had_control = self._control.controller == viewer.number
        self._control.leave(viewer.number, next(iter(self._viewers), None))
        self._state.forget(viewer.number)
        if had_control:
            self._state.changed(None)
        self._watch()
        self._tell_state()

    def _watch(self):
        if self._worker is not None:
            self._worker.watched(len(self._viewers))

    async def _receive(self, viewer):
        left, since = float(_MESSAGES_A_SECOND), time.monotonic()
        async for message in viewer.socket:
            if message.type != WSMsgType.TEXT:
                await viewer.socket.close(code=1003, message=b"text is expected")
                return
            now = time.monotonic()
            left, since = min(left + (now - since) * _MESSAGES_A_SECOND, _MESSAGES_A_SECOND), now
            try:
                content = json.loads(message.data)
                if not isinstance(content, dict):
                    raise ValueError("an object is expected")
                if "ack" in content:  # as many as frames
                    viewer.acknowledge(_number_of(content["ack"], "ack"))
                    continue
                await self._take(viewer, content)
            except (ValueError, RecursionError) as error:
                viewer.put_result({"id": None, "ok": False, **_description.problem(error)})
            left -= 1
            if left < 0:  # the page waits; nothing is thrown away
                await asyncio.sleep(-left / _MESSAGES_A_SECOND)

    # Messages of a page

    async def _take(self, viewer, content):
        kinds = [kind for kind in ("view", "cursor", "line", "freeze", "set", "do") if kind in content]
        if len(kinds) != 1:
            raise ValueError("a message has one of ack, view, cursor, line, freeze, set, do")
        kind = kinds[0]
        if kind in ("set", "do"):
            # Not awaited: a long answer must not hold up acknowledgements.
            task = self._loop.create_task(self._answer(viewer, kind, content))
            self._tasks = [other for other in self._tasks if not other.done()] + [task]
            return
        if len(content) > 1:
            raise ValueError(f"{kind} stands alone")
        getattr(self, f"_take_{kind}")(viewer, content[kind])

    def _take_view(self, viewer, view):
        viewer.look_at(View.of(view))

    def _take_cursor(self, viewer, cursor):
        viewer.cursor = None if cursor is None else tuple(int(at) for at in _points(cursor, "cursor", 2))
        image = viewer.frozen or viewer.shown
        if viewer.cursor is not None and image is not None:
            viewer.put("cursor", json.dumps({"cursor": {"x": viewer.cursor[0], "y": viewer.cursor[1], "n": image.number,
                                                        "value": image.value(viewer.cursor)}}))

    def _take_line(self, viewer, line):
        viewer.line = None if line is None else _points(line, "line", 4)
        viewer.put_line(is_asked=True)

    def _take_freeze(self, viewer, number):
        viewer.freeze(None if number is None else _number_of(number, "freeze"))

    async def _answer(self, viewer, kind, content):
        result = {"id": content.get("id")}
        try:
            act = self._set if kind == "set" else self._do
            result.update(ok=True, **(await act(viewer, content) or {}))
        except asyncio.CancelledError:
            raise
        except Exception as error:
            result.update(ok=False, **_description.problem(error))
        result["version"] = self._state.version
        try:
            viewer.put_result(result)
        except ConnectionError:
            await viewer.socket.close()

    def _need_control(self, viewer):
        if self._control.is_read_only:
            raise ValueError("the program was started with --read-only")
        if self._control.controller != viewer.number:
            raise ValueError("another viewer controls the camera; take the control first")

    async def _set(self, viewer, content):
        self._only(content, "set", "id", "version")
        settings = content["set"]
        if not isinstance(settings, dict) or len(settings) != 1:
            raise ValueError("set has one setting")
        self._need_control(viewer)
        if self._state.is_outdated(_number_of(content.get("version", self._state.version), "version"), viewer.number):
            self._tell_state()
            raise ValueError("another viewer has changed the settings meanwhile; look at them and try again")
        (name, value), = settings.items()
        answer = await asyncio.wrap_future(self._worker.submit("set", name, value))
        self._changed(viewer)
        return answer

    async def _do(self, viewer, content):
        command = content["do"]
        acts = {"take-control": self._take_control, "give-control": self._give_control,
                "keep-control": self._keep_control, "trigger": self._trigger, "open": self._open,
                "start": self._start, "snapshot": self._snapshot, "record": self._record, "stop": self._stop}
        if not isinstance(command, str) or command not in acts:
            raise ValueError(f"there is no command {command!r}; there are {', '.join(acts)}")
        return await acts[command](viewer, content)

    @staticmethod
    def _only(content, *keys):
        unknown = [key for key in content if key not in keys]
        if unknown:
            raise ValueError(f"there is no {unknown[0]!r} here")

    async def _take_control(self, viewer, content):
        self._only(content, "do", "id", "version")
        has_it = self._control.take(viewer.number, time.monotonic())
        if has_it:
            self._state.changed(None)
        self._tell_state()
        return {"value": "yours" if has_it else "asked"}

    async def _give_control(self, viewer, content):
        self._only(content, "do", "id", "version")
        self._control.give(viewer.number)
        self._changed(viewer)

    async def _keep_control(self, viewer, content):
        self._only(content, "do", "id", "version")
        self._control.keep(viewer.number)
        self._tell_state()

    async def _trigger(self, viewer, content):
        self._only(content, "do", "id", "version")
        self._need_control(viewer)
        await asyncio.wrap_future(self._worker.submit("trigger"))

    async def _open(self, viewer, content):
        self._only(content, "do", "id", "version", "camera")
        self._need_control(viewer)
        await asyncio.wrap_future(self._worker.submit("open", content.get("camera")))
        self._changed(viewer)

    async def _start(self, viewer, content):
        self._only(content, "do", "id", "version")
        self._need_control(viewer)
        await asyncio.wrap_future(self._worker.submit("start"))

    async def _snapshot(self, viewer, content):
        """Writes the image that the page shows."""
        self._only(content, "do", "id", "version", "format", "name", "number")
        self._need_control(viewer)
        suffix = _snapshot.suffix(content.get("format", "fits"))
        image = viewer.image(content.get("number"))
        name = content.get("name") or self._free_name(image, suffix)
        path = check_name(name, self._directory, suffix)
        await self._loop.run_in_executor(None, _snapshot.write, image, path)
        self._files.add(path.name)
        return {"value": {"name": path.name, "url": f"files/{path.name}", "number": image.number}}

    def _free_name(self, image, suffix):
        """A name by the time of the image."""
        base = time.strftime("image-%Y%m%d-%H%M%S", time.localtime(image.time))
        names = [base, *(f"{base}-{number}" for number in range(2, 1000))]
        return next(name for name in names if not (self._directory / (name + suffix)).exists())

    async def _record(self, viewer, content):
        self._only(content, "do", "id", "version", "name", "images", "seconds")
        self._need_control(viewer)
        name = content.get("name") or time.strftime("run-%Y%m%d-%H%M%S")
        answer = await asyncio.wrap_future(
            self._worker.submit("record", name, content.get("images"), content.get("seconds")))
        self._changed(viewer)
        return {"value": answer}

    async def _stop(self, viewer, content):
        self._only(content, "do", "id", "version")
        self._need_control(viewer)
        return {"value": await asyncio.wrap_future(self._worker.submit("stop"))}

    def _changed(self, viewer):
        self._state.changed(viewer.number)
        self._tell_state()

    # To the pages

    def _role(self, viewer):
        if self._control.is_read_only:
            return "read-only"
        return "controller" if self._control.controller == viewer.number else "viewer"

    def _state_json(self, viewer):
        return {**self._state.json(), "viewers": len(self._viewers), "control": self._control.json(time.monotonic()),
                "role": self._role(viewer), "reduced": viewer.reduction.text}

    def _greet(self, viewer):
        """Everything that a page needs that has just been loaded, or that sees another camera from now on."""
        viewer.put("hello", json.dumps({"hello": {
            **self._state_json(viewer), "program": LIBRARY_VERSION, "protocol": _wire.PROTOCOL, "viewer": viewer.number,
            "camera": self._camera, "cameras": self._worker.cameras() if self._worker else [],
            "curve": list(self._curve)}}))

    def _tell_state(self):
        for viewer in self._viewers.values():
            viewer.put("state", json.dumps({"state": self._state_json(viewer)}))

    async def _encode(self, image, view, coarser):
        """Makes a picture on another thread."""
        def make():
            began = time.thread_time()
            picture = image.picture(view, self._frames.stretch, coarser)
            return picture, time.thread_time() - began
        picture, cost = await self._loop.run_in_executor(self._pool, make)
        self._cost += 0.1 * (cost * max(len(self._viewers), 1) - self._cost)
        self._worker.cost = self._cost
        return picture

    async def _tick(self):
        """Four times a second: histogram, time-outs, silent pages."""
        told = None
        while True:
            await asyncio.sleep(_TICK_SECONDS)
            if self._control.pass_time(time.monotonic()):
                self._state.changed(None)
                self._tell_state()
            for viewer in list(self._viewers.values()):
                if viewer.is_silent():
                    _log.info("viewer %d does not draw any more", viewer.number)
                    self._loop.create_task(viewer.socket.close(code=1008, message=b"no acknowledgement"))
            image = self._frames.newest
            if image is not None and image is not told and self._viewers:
                told = image
                await self._send_histogram(image)

    async def _send_histogram(self, image):
        histogram = await self._loop.run_in_executor(self._pool, self._frames.add_histogram, image)
        text = json.dumps({"histogram": {**histogram._asdict(), **dict(zip(("low", "high"), self._frames.stretch))}})
        for viewer in self._viewers.values():
            if viewer.frozen is None:
                viewer.put("histogram", text)
