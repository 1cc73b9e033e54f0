# SPDX-License-Identifier: MIT
"""The web server of the live view. Knows no camera: a worker does."""
from __future__ import annotations

import asyncio
import concurrent.futures
import contextlib
import json
import logging
import re
import time
from pathlib import Path
from typing import Callable, Dict, Optional

from aiohttp import WSMsgType, web

from . import _wire
from ._access import Access
from ._channel import Channel
from ._connections import Connections
from ._description import as_json, problem
from ._frames import View
from ._requests import Requests
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
_LOGIN_BYTES = 4096
_LOGIN_SECONDS = 10.0
_END_SECONDS = 0.2  # for a page that does not read


def _number_of(value, name, kinds=(int,)):
    if isinstance(value, bool) or not isinstance(value, kinds):
        raise ValueError(f"{name} is a number")
    return value


def _points(values, name, count):
    if not isinstance(values, list) or len(values) != count:
        raise ValueError(f"{name} is {count} numbers, or null")
    if any(_number_of(value, name, (int, float)) != value for value in values):  # which is no number
        raise ValueError(f"{name} is {count} numbers, not {values!r}")
    return tuple(min(max(value, -1e6), 1e6) for value in values)


class Server:
    """The web application. make_worker(number, frames, on_frame, on_status) makes the CameraWorker of a camera, attached()
    counts those that are attached. For the thread of the event loop."""

    def __init__(self, access: Access, is_read_only: bool, directory: Path, make_worker: Callable, attached: Callable[[], int]):
        self.access = access
        self.connections: Optional[Connections] = None  # set before the first request
        self._directory = directory
        self._pool = concurrent.futures.ThreadPoolExecutor(1, "pictures")
        self._requests = Requests(lambda number: Channel(number, make_worker, is_read_only, self._pool), attached, directory)
        self._first: Optional[Channel] = None
        self._viewers: Dict[int, Viewer] = {}
        self._numbers = 0
        self._loop = asyncio.get_running_loop()
        self._tasks = []
        self._is_ending = False
        self.application = web.Application(middlewares=[self._check], client_max_size=_LOGIN_BYTES)
        self.application.add_routes([
            web.get("/", self._page), web.get("/wire.js", self._wire), web.post("/login", self._login),
            web.get("/ws", self._socket), web.get("/files/{name}", self._file), web.get("/{name}", self._page)])
        self.application.on_response_prepare.append(self._add_headers)

    async def begin(self, number: int) -> None:
        """Opens the camera that pages show at first. Raises what Camera does."""
        self._first = await self._requests.channel(number)
        self._tasks.append(self._loop.create_task(self._tick()))

    async def end(self) -> None:
        """Notifies the pages that the program ends, closes them, and closes the cameras."""
        self._is_ending = True
        for task in self._tasks:
            task.cancel()
        await asyncio.gather(*map(self._send_end, list(self._viewers.values())))
        await asyncio.gather(*(channel.close() for channel in self._requests.channels.values()))
        self._pool.shutdown(wait=False)

    async def _send_end(self, viewer):
        try:
            await asyncio.wait_for(viewer.socket.send_str(as_json({"end": "the program has ended"})), _END_SECONDS)
            await asyncio.wait_for(self._close_at_end(viewer.socket), _END_SECONDS)
        except (asyncio.TimeoutError, ConnectionError):
            pass

    # Requests

    @web.middleware
    async def _check(self, request, handler):
        if self.connections:
            self.connections.has_asked(request.protocol)
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
            message = await asyncio.wait_for(request.json(), _LOGIN_SECONDS)
            token = message["token"]
            if not isinstance(token, str):
                raise TypeError
        except asyncio.TimeoutError:
            raise web.HTTPRequestTimeout(text="nothing has come for too long\n") from None
        except (ValueError, TypeError, LookupError, RecursionError, web.RequestPayloadError):
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
        path = self._directory / name
        if name not in self._requests.files or not path.is_file() or path.is_symlink():  # a link was put in its place
            raise web.HTTPNotFound(text="there is no such file\n")
        return web.FileResponse(path,
                                headers={"Content-Disposition": f'attachment; filename="{name}"',
                                         "Content-Type": "application/octet-stream"})

    async def _socket(self, request):
        self._need_cookie(request)
        # Compression would cost most of the frame rate.
        socket = web.WebSocketResponse(compress=False, heartbeat=_HEARTBEAT_SECONDS, max_msg_size=_MESSAGE_BYTES)
        await socket.prepare(request)
        self._numbers += 1
        viewer = Viewer(self._numbers, socket, request.transport, self._first)
        self._viewers[viewer.number] = viewer
        self._first.join(viewer)
        self._first.send_hello(viewer, self._requests.cameras())
        self._first.send_state()
        sending = self._loop.create_task(viewer.send())
        sending.add_done_callback(lambda done: done.cancelled() or self._loop.create_task(socket.close()))
        try:
            await self._receive(viewer)
        finally:
            sending.cancel()
            del self._viewers[viewer.number]
            viewer.channel.leave(viewer)
        if self._is_ending:  # otherwise the end of this function closes it, as if the page had gone
            await self._close_at_end(socket)
        return socket

    @staticmethod
    async def _close_at_end(socket):
        await socket.close(code=1001, message=b"the program has ended")

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
                viewer.put_result({"id": None, "ok": False, **problem(error)})
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
            if not isinstance(content.get("id"), (int, str, type(None))):
                raise ValueError("an id is a whole number or a text")
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
            viewer.put("cursor", as_json({"cursor": {"x": viewer.cursor[0], "y": viewer.cursor[1], "n": image.number,
                                                        "value": image.value(viewer.cursor)}}))

    def _take_line(self, viewer, line):
        viewer.line = None if line is None else _points(line, "line", 4)
        viewer.put_line(is_asked=True)

    def _take_freeze(self, viewer, number):
        viewer.freeze(None if number is None else _number_of(number, "freeze"))

    async def _answer(self, viewer, kind, content):
        result = {"id": content.get("id")}
        try:
            act = self._requests.set if kind == "set" else self._requests.do
            result.update(ok=True, **await act(viewer, content))
        except asyncio.CancelledError:
            raise
        except Exception as error:
            result.update(ok=False, **problem(error))
        result["version"] = viewer.channel.state.version
        try:
            viewer.put_result(result)
        except ConnectionError:
            await viewer.socket.close()

    async def _drop(self, viewer):
        """Ends the connection of a page that does not answer. Where it does not read either, what was sent to it waits, and
        a connection that is only closed would stay, and with it the control of the camera."""
        with contextlib.suppress(asyncio.TimeoutError, ConnectionError):
            await asyncio.wait_for(viewer.socket.close(code=1008, message=b"no acknowledgement"), _END_SECONDS)
        await asyncio.sleep(_END_SECONDS)  # one that is closing in order goes by itself
        viewer.transport.abort()

    async def _tick(self):
        """A few times a second: histograms, time-outs, silent pages."""
        while True:
            await asyncio.sleep(_TICK_SECONDS)
            for viewer in list(self._viewers.values()):
                if viewer.socket.closed or viewer.is_silent():
                    self._loop.create_task(self._drop(viewer))
            for channel in list(self._requests.channels.values()):
                try:
                    await channel.tick()
                except Exception as error:  # the other cameras go on
                    _log.error("camera %d: %s", channel.number, error, exc_info=True)
