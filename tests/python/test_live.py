# SPDX-License-Identifier: MIT
"""The live view without a browser: its parts, and the program as a whole."""
import asyncio
import contextlib
import json
import os
import signal
import subprocess
import threading
import time
from socket import SO_RCVBUF, SOL_SOCKET, create_connection, socket

import numpy as np
import pytest

from conftest import FREE, REAL, frame_number

aiohttp = pytest.importorskip("aiohttp", reason="the live view needs python3-aiohttp")
import aiohttp.web  # noqa: E402

from vxmcd.live import _camera_worker, _credit, _failure, _recording, _server, _wire  # noqa: E402
from vxmcd.live._access import Access, check_token  # noqa: E402
from vxmcd.live._frames import Frames, Image, View, block_means, saturation_map, stretched  # noqa: E402
from vxmcd.live._state import Control, State  # noqa: E402
from vxmcd.spool import SpoolRun  # noqa: E402


def wait_until(condition, seconds=20):
    deadline = time.monotonic() + seconds
    while not condition():
        assert time.monotonic() < deadline
        time.sleep(0.01)


def test_blocks_have_means_and_saturation_of_their_pixels():
    numbers = np.random.default_rng(1)
    for rows, columns, step, kind in ((7, 5, 2, np.uint16), (33, 17, 8, np.uint16), (5, 64, 40, np.uint8), (6, 4, 1, np.uint8)):
        pixels = numbers.integers(0, np.iinfo(kind).max + 1, (rows, columns)).astype(kind)
        means = block_means(pixels, step)
        bits = np.unpackbits(np.frombuffer(saturation_map(pixels, step, 200), np.uint8), bitorder="little")
        assert means.shape == (-(-rows // step), -(-columns // step)) and means.dtype == kind
        for (row, column), mean in np.ndenumerate(means):
            block = pixels[row * step:(row + 1) * step, column * step:(column + 1) * step].astype(int)
            assert mean == (block.sum() + block.size // 2) // block.size
            assert bits[row * means.shape[1] + column] == (block.max() >= 200)
    assert block_means(np.full((600, 600), 65535, np.uint16), 300).tolist() == [[65535] * 2] * 2
    assert stretched(np.array([0, 100, 150, 200, 65535], np.uint16), 100, 200).tolist() == [0, 0, 128, 255, 255]


def test_a_picture_is_the_part_that_is_seen():
    pixels = np.arange(40 * 30, dtype=np.uint16).reshape(30, 40)
    image = Image(pixels, 7, None, 1.5, 1, 1199)

    def picture(coarser=1, **view):
        message = image.picture(View.of({"x": 0, "y": 0, "w": 0, "h": 0, "cw": 64, "ch": 64, **view}), (0, 10), coarser)
        message = message.message(5, 3, True)
        header = _wire.unpack(message)
        kind = np.uint8 if header["bytes"] == 1 else np.uint16
        size = header["width"] * header["height"]
        part = np.frombuffer(message, kind, size, _wire.HEADER_BYTES).reshape(header["height"], header["width"])
        return header, part, message[_wire.HEADER_BYTES + part.nbytes:]

    header, whole, saturation = picture()
    assert np.array_equal(whole, pixels)
    assert (header["number"], header["ticks"], header["value"], header["since"], header["saturated"]) == (7, -1, 5, 3, 1)
    assert header["flags"] == _wire.SATURATION_MAP | _wire.AREA_CHANGED
    assert np.flatnonzero(np.unpackbits(np.frombuffer(saturation, np.uint8), bitorder="little")).tolist() == [1199]
    header, part, _ = picture(x=10, y=20, w=8, h=4)
    assert np.array_equal(part, pixels[20:, 10:][:part.shape[0], :part.shape[1]]) and part.shape >= (4, 8)
    header, part, _ = picture(x=-5, y=-5, w=1000, h=1000, cw=16, ch=16)
    assert (header["step"], header["x"], header["y"], part.shape) == (63, 0, 0, (1, 1))
    header, part, _ = picture(coarser=4, bytes=1, stretch=[0, 1199])
    assert (header["step"], header["bytes"], header["low"], header["high"]) == (4, 1, 0, 1199)
    _, fifth, _ = picture(x=1, y=1, w=2, h=2)  # one more than are made: one of those that have this part
    assert fifth.shape == part.shape or np.array_equal(fifth, pixels)
    for wrong in ({}, {"x": 1}, {"x": "1", "y": 0, "w": 1, "h": 1, "cw": 1, "ch": 1}, [], {"a": 1},
                  {"x": float("nan"), "y": 0, "w": 1, "h": 1, "cw": 1, "ch": 1}):
        with pytest.raises(ValueError):
            View.of(wrong)


def watched(camera_rate, connection_rate, seconds, reduction=None, start=0.0):
    """What a viewer gets of a camera over a connection; both in images/s, the second by the level of reduction."""
    reduction = reduction or _credit.Reduction()
    credit, now, sent, arrivals = _credit.Credit(), start, 0, []
    for number in range(1, int(seconds * camera_rate) + 1):
        now = start + number / camera_rate
        while arrivals and arrivals[0][0] <= now:
            at, old = arrivals.pop(0)
            credit.acknowledge(old, at)
        is_sent = credit.may_send()
        reduction.frame(now, is_sent)
        if is_sent:
            sent += 1
            credit.send(number, now)
            begin = max(now, arrivals[-1][0] if arrivals else now)
            arrivals.append((begin + 1 / connection_rate[reduction.level], number))
            assert len(arrivals) <= 2
    return reduction, sent / seconds, now


def test_what_a_slow_connection_gets_is_reduced():
    slow = (3, 6, 12, 30)
    reduction, rate, now = watched(25, slow, 30)
    assert reduction.level >= 2 and 3 < rate < 25
    reduction, rate, _ = watched(25, (25, 50, 100, 200), 60, reduction, now)  # it has become fast
    assert reduction.level == 0 and rate > 15
    assert watched(2, (1000, 1000, 1000, 1000), 60)[0].level == 0  # the camera is slow, not the connection


def test_credit_ends_with_a_page_that_does_not_draw():
    credit = _credit.Credit()
    credit.send(1, 0.0), credit.send(2, 0.0)
    assert not credit.may_send() and not credit.acknowledge(5, 0.1)
    assert not credit.is_silent(19.0) and credit.is_silent(21.0)
    assert credit.acknowledge(2, 0.5) and credit.may_send()  # and with it the first
    credit.send(3, 1.0)
    assert not credit.may_send()  # the last one took long: one at a time


def test_only_our_own_names_and_pages_have_access():
    async def check():
        access = Access("secret-secret-1", ["Lab.example"], 8765)
        own = ("localhost", "LOCALHOST:7000", "127.0.0.1:8765", "127.0.0.1", "[::1]:8765", "192.0.2.7:1", "lab.example:8765")
        for host in own:
            assert access.refusal([host], []) is None
            assert access.refusal([host], [f"http://{host}"]) is None
            for origin in ("null", "http://evil.example", f"https://{host}", f"http://{host}.evil.example", f"http://{host}/",
                           f"http://evil.example@{host}"):
                assert access.refusal([host], [origin])
            assert access.refusal([host], [f"http://{host}"] * 2)
        for host in ("evil.example", "localhost.evil.example", "evil.example:8765", "127.0.0.1.evil.example", "", "a@localhost",
                     "localhost:8765:1", "[::1", "localhost:", "[evil]", "lab.example.", "localhost/", " localhost"):
            assert access.refusal([host], [])
            assert access.refusal([host], [f"http://{host}"])  # what a name that is bound to our address looks like
        assert access.refusal([], []) and access.refusal(["localhost"] * 2, [])
        assert access.has_cookie({access.cookie_name: access.cookie})
        assert not access.has_cookie({}) and not access.has_cookie({access.cookie_name: "\udc80"})
        assert await access.log_in("secret-secret-1") and not await access.log_in("secret-secret-2")
        assert Access(None, [], 1).has_cookie({})
    asyncio.run(check())
    assert check_token("short", True) and check_token("with space", True) and check_token("a" * 15, False)
    assert check_token("a" * 8, True) is None and check_token("a" * 16, False) is None


def test_one_viewer_controls_and_others_ask():
    control = Control()
    control.join(1), control.join(2)
    assert control.controller == 1 and not control.take(2, 0.0) and control.asking == 2
    with pytest.raises(ValueError):
        control.take(3, 1.0)
    with pytest.raises(ValueError):
        control.give(2)
    control.keep(1)
    assert not control.pass_time(100.0) and control.controller == 1
    control.take(2, 100.0)
    assert not control.pass_time(109.0) and control.pass_time(110.0) and control.controller == 2
    control.take(3, 200.0)
    control.leave(2, 1)
    assert control.controller == 3
    state = State()
    known = state.version
    state.changed(1)
    assert state.is_outdated(known, 2) and not state.is_outdated(known, 1) and not state.is_outdated(state.version, 2)
    state.forget(1)
    assert state.is_outdated(known, 2)


class Statuses:
    """What a worker has said last."""

    def __init__(self):
        self.values = {}

    def __call__(self, status):
        self.values.update(status.get("values", {}))


def worker_of(directory, settings=None):
    frames, statuses = Frames(), Statuses()
    worker = _camera_worker.CameraWorker(0, frames, directory, settings or {}, 1000.0, lambda: None, statuses)
    worker.open_first()
    worker.watched(1)
    worker.start()
    return worker, frames, statuses


def test_a_camera_that_comes_back_has_its_settings(simulator, tmp_path, monkeypatch):
    monkeypatch.setattr(_camera_worker, "_REOPEN_SECONDS", 0.05)
    simulator.configure(REAL)
    worker, frames, statuses = worker_of(tmp_path, {"exposure": 0.002, "binning": (2, 2)})
    try:
        wait_until(lambda: frames.newest is not None)
        assert frames.newest.pixels.shape == (4, 8)
        worker.submit("record", "kept", 100000, None).result(10)
        wait_until(lambda: (statuses.values.get("recording") or {}).get("images", 0) > 20)
        simulator.unplug()
        wait_until(lambda: statuses.values.get("state") == "closed" and statuses.values["error"])
        assert statuses.values["error"]["name"] and frames.newest is None
        simulator.unplug(plugged=True)
        wait_until(lambda: statuses.values.get("state") == "live" and frames.newest is not None)
        assert statuses.values["settings"]["binning"] == [2, 2]
        assert statuses.values["settings"]["exposure"] == pytest.approx(0.002, rel=0.01)
        assert statuses.values["error"] is None and statuses.values["last_recording"]["images"] > 20
    finally:
        worker.stop()


def test_a_live_run_that_fails_is_started_again_and_a_recording_is_not(simulator, tmp_path, monkeypatch):
    monkeypatch.setattr(_failure, "_FIRST_SECONDS", 0.05)
    simulator.configure(REAL)
    worker, frames, statuses = worker_of(tmp_path)
    try:
        wait_until(lambda: frames.newest is not None)
        simulator.fault("call VX_WaitBuffer at 3 rc 100")
        wait_until(lambda: statuses.values.get("notice"))
        assert "20019" in statuses.values["notice"] and statuses.values["run"] == 2
        assert (statuses.values["state"], statuses.values["error"]) == ("live", None)
        worker.submit("record", "lost", 100000, None).result(10)
        simulator.fault("call VX_WaitBuffer at 3 rc 100")
        wait_until(lambda: statuses.values["state"] == "failed")
        assert statuses.values["error"]["code"] == 20019 and not statuses.values["restarts"]
        worker.submit("start").result(10)
        wait_until(lambda: statuses.values["state"] == "live" and statuses.values["run"] == 4)
    finally:
        worker.stop()


def test_workers_leave_nothing_behind(simulator, tmp_path):
    simulator.configure(FREE)

    def use():
        worker, frames, _ = worker_of(tmp_path)
        wait_until(lambda: frames.newest is not None)
        for exposure in (0.001, 0.002):
            worker.submit("set", "exposure", exposure).result(10)
        worker.submit("set", "binning", [2, 2]).result(10)
        worker.stop()
        for name, directory in (("../up", tmp_path), ("run", tmp_path / "removed")):
            with pytest.raises(ValueError):
                _recording.check_name(name, directory)

    def counts():
        return threading.active_count(), len(os.listdir("/proc/self/fd"))
    use()
    before = counts()
    for _ in range(20):
        use()
    assert counts() == before


class Program:
    """`vxmcd live` with cameras of 16 x 8 pixels, and requests to it."""

    def __init__(self, directory, *options, configuration=REAL):
        (directory / "cameras.ini").write_text(configuration)
        environment = dict(os.environ, VXCORE_CONFIG=str(directory / "cameras.ini"))
        self._process = subprocess.Popen(
            [os.environ["VXMCD_TOOL"], "live", "--directory", str(directory), *options], env=environment, text=True,
            stdout=subprocess.PIPE, stderr=subprocess.PIPE)
        self.url, _, self.token = self._process.stdout.readline().strip().partition("#t=")

    def __enter__(self):
        return self

    def __exit__(self, *_):
        if self._process.poll() is None:
            self.end()

    def end(self, number=signal.SIGINT):
        """The exit code, and what was said."""
        self._process.send_signal(number)
        _, said = self._process.communicate(timeout=20)
        return self._process.returncode, said


class Page:
    """A page that has logged in."""

    def __init__(self, session, socket):
        self._session, self._socket = session, socket
        self.state, self.results, self.headers, self.images = {}, {}, [], []

    @classmethod
    async def open(cls, program, **view):
        session = aiohttp.ClientSession(cookie_jar=aiohttp.CookieJar(unsafe=True))
        async with session.post(program.url + "login", json={"token": program.token}) as answer:
            assert answer.status == 204
        page = cls(session, await session.ws_connect(program.url + "ws", max_msg_size=0))
        await page.send(view={"x": 0, "y": 0, "w": 0, "h": 0, "cw": 64, "ch": 64, **view})
        return page

    async def close(self):
        await self._socket.close()
        await self._session.close()

    async def send(self, **message):
        await self._socket.send_str(json.dumps(message))

    async def ask(self, **message):
        """The result of a request."""
        number = len(self.results) + 1
        await self.send(**message, id=number)
        await self.watch(lambda: number in self.results)
        return self.results[number]

    async def watch(self, condition, acknowledges=True):
        while not condition():
            message = await asyncio.wait_for(self._socket.receive(), 20)
            assert message.type in (aiohttp.WSMsgType.TEXT, aiohttp.WSMsgType.BINARY), (message, condition)
            if message.type == aiohttp.WSMsgType.BINARY:
                header = _wire.unpack(message.data)
                height, width = header["height"], header["width"]
                if header["bytes"] == 2:  # a test on a busy machine is a slow connection, which gets 8 bits
                    self.headers.append(header)
                    pixels = np.frombuffer(message.data, "<u2", height * width, _wire.HEADER_BYTES)
                    self.images.append(pixels.reshape(height, width))
                if acknowledges:
                    await self.send(ack=header["number"])
                continue
            content = json.loads(message.data)
            self.state.update(content.get("hello", {}))
            self.state.update(content.get("state", {}))
            if "result" in content:
                self.results[content["result"]["id"]] = content["result"]

    async def fetch(self, path):
        async with self._session.get(self.state["url"] + path) as answer:
            return answer.status, await answer.read()


def test_pages_see_and_change_the_camera(tmp_path):
    async def use(program):
        first, second = await Page.open(program), await Page.open(program)
        await first.watch(lambda: len(first.images) >= 5)
        for header, image in zip(first.headers, first.images):
            assert frame_number(image) == header["number"]
        result = await first.ask(set={"exposure": 0.003})
        assert result["ok"] and result["value"] == pytest.approx(0.003, rel=0.01)
        result = await first.ask(set={"exposure": 1e9})
        assert (result["ok"], result["code"], result["name"]) == (False, 20066, "RC_P1_INVALID")
        assert " to " in result["detail"]
        for wrong in ({"set": {"nothing": 1}}, {"set": {}}, {"set": {"exposure": "long"}}, {"set": {"bits": 32}}, {"set": {"bits": 8}},
                      {"do": "fly"}, {"do": "record", "name": "../up"}, {"do": "record", "name": "x", "images": -1},
                      {"do": "stop"}, {"do": "open", "camera": 7}, {"do": "snapshot", "format": "gif"}):
            result = await first.ask(**wrong)
            assert not result["ok"] and result["meaning"], wrong
        assert not (await second.ask(set={"exposure": 0.001}))["ok"]
        assert (await second.ask(do="take-control"))["value"] == "asked"
        await first.watch(lambda: first.state["control"]["asking"] == second.state["viewer"])
        assert (await first.ask(do="give-control"))["ok"]
        stale = first.state["version"]
        assert (await second.ask(set={"exposure": 0.001}))["ok"]
        assert not (await first.ask(set={"exposure": 0.002}, version=stale))["ok"]
        shown = second.headers[-1]["number"]
        await second.send(do="snapshot", number=shown, id="other")  # with a name by the same second, most of the time
        result = await second.ask(do="snapshot", number=shown)
        await second.watch(lambda: "other" in second.results)
        assert result["ok"] and second.results["other"]["ok"], second.results
        assert result["value"]["name"] != second.results["other"]["value"]["name"]
        second.state["url"] = program.url
        status, data = await second.fetch(result["value"]["url"])
        assert status == 200 and data.startswith(b"SIMPLE") and data == (tmp_path / result["value"]["name"]).read_bytes()
        stored = np.frombuffer(data, ">i2", 128, 2880 * (data.index(b"END" + b" " * 77) // 2880 + 1)).astype(int) + 32768
        # Numbers begin anew in each run: the newest of this number.
        shown = next(image for header, image in zip(reversed(second.headers), reversed(second.images))
                     if header["number"] == result["value"]["number"])
        assert np.array_equal(stored.reshape(8, 16), shown)
        assert (await second.fetch("files/cameras.ini"))[0] == 404
        (tmp_path / result["value"]["name"]).unlink()
        (tmp_path / result["value"]["name"]).symlink_to("cameras.ini")
        assert (await second.fetch(result["value"]["url"]))[0] == 404
        assert (await second.ask(do="open", camera=1))["ok"]
        await second.watch(lambda: second.state["camera"]["model"] == "TARN 1M" and second.headers[-1]["imageWidth"] == 1280)
        seen = len(first.images)
        assert (await first.ask(set={"exposure": 0.002}))["ok"]
        await first.watch(lambda: len(first.images) > seen + 5)  # the first camera goes on
        assert first.headers[-1]["imageWidth"] == 16 and first.state["viewers"] == second.state["viewers"] == 1
        assert frame_number(first.images[-1]) == first.headers[-1]["number"]
        frozen = first.headers[-1]["number"]
        await asyncio.sleep(0.2)  # others are under way
        await first.send(freeze=frozen)
        await first.send(view={"x": 0, "y": 0, "w": 8, "h": 8, "cw": 64, "ch": 64})
        await first.watch(lambda: first.headers[-1]["number"] == frozen and first.headers[-1]["width"] < 16)
        await first.close(), await second.close()
    with Program(tmp_path) as program:
        asyncio.run(use(program))
        code, said = program.end(signal.SIGTERM)
    assert code == 130 and "ssh -L" in said


def test_recording_loses_nothing_to_viewers(tmp_path):
    async def use(program):
        pages = [await Page.open(program) for _ in range(4)]
        assert (await pages[0].ask(set={"exposure": 0.0001}))["ok"]
        assert (await pages[0].ask(do="record", name="run", images=2000))["ok"]
        stalled, watching = pages[-1], pages[:-1]
        await asyncio.gather(*(page.watch(lambda page=page: page.state.get("last_recording")) for page in watching))
        assert (tmp_path / "run").is_dir() and not (await pages[0].ask(do="record", name="run", images=1))["ok"]
        assert pages[0].state["last_recording"]["lost"] == 0
        assert all(any(header["flags"] & _wire.RECORDING for header in page.headers) for page in watching)
        seen = len(stalled.headers)
        await stalled.watch(lambda: stalled.state.get("last_recording"), acknowledges=False)
        assert len(stalled.headers) - seen <= 2  # newer ones wait until these are drawn
        assert (await pages[0].ask(do="record", name="second"))["ok"]  # until the program ends
        await pages[0].watch(lambda: (pages[0].state.get("recording") or {}).get("images", 0) > 50)
        assert program.end()[0] == 130
        with pytest.raises(AssertionError, match="1001"):  # going away: the page says that the program has ended
            await pages[0].watch(lambda: False, acknowledges=False)
        for page in pages:
            await page.close()
    with Program(tmp_path) as program:
        asyncio.run(use(program))
    run = SpoolRun(tmp_path / "run", verify=True)
    assert run.state == "complete" and [frame_number(image) for image in run] == list(range(1, 2001))
    second = SpoolRun(tmp_path / "second", verify=True)
    assert second.state == "aborted" and [frame_number(image) for image in second[:50]] == list(range(1, 51))


def test_a_page_that_does_not_read_is_dropped(simulator, tmp_path, monkeypatch):
    monkeypatch.setattr(_server, "_HEARTBEAT_SECONDS", 1.0)
    simulator.configure(FREE)

    async def use():
        def make_worker(number, frames, on_frame, on_status):
            return _camera_worker.CameraWorker(number, frames, tmp_path, {}, 100.0, on_frame, on_status)
        server = _server.Server(Access(None, [], 1), False, tmp_path, make_worker, lambda: 2)
        await server.begin(1)  # its images are larger than the buffers of a connection
        runner = aiohttp.web.AppRunner(server.application)
        await runner.setup()
        site = aiohttp.web.TCPSite(runner, "127.0.0.1", 0)
        await site.start()
        with socket() as page:
            page.setsockopt(SOL_SOCKET, SO_RCVBUF, 4096)
            page.connect(site._server.sockets[0].getsockname())
            page.sendall(b"GET /ws HTTP/1.1\r\nHost: localhost\r\nConnection: Upgrade\r\nUpgrade: websocket\r\n"
                         b"Sec-WebSocket-Version: 13\r\nSec-WebSocket-Key: AAAAAAAAAAAAAAAAAAAAAA==\r\n\r\n")
            view = json.dumps({"view": {"x": 0, "y": 0, "w": 0, "h": 0, "cw": 2000, "ch": 2000}}).encode()
            page.sendall(bytes([0x81, 0x80 | len(view), 0, 0, 0, 0]) + view)
            while server._numbers == 0 or server._viewers:
                await asyncio.sleep(0.01)
        await server.end()
        await runner.cleanup()
    asyncio.run(asyncio.wait_for(use(), 30))


def test_strangers_are_refused(tmp_path):
    async def use(program):
        # A connection for each request: after a body that cannot be read, the program closes it.
        each = aiohttp.TCPConnector(force_close=True)
        async with aiohttp.ClientSession(connector=each, cookie_jar=aiohttp.CookieJar(unsafe=True)) as session:
            async def status(path, method="GET", **given):
                async with session.request(method, program.url + path, **given) as answer:
                    assert answer.headers["Content-Security-Policy"].startswith("default-src 'self'")
                    return answer.status
            upgrade = {"Connection": "Upgrade", "Upgrade": "websocket", "Sec-WebSocket-Version": "13",
                       "Sec-WebSocket-Key": "AAAAAAAAAAAAAAAAAAAAAA=="}
            assert await status("") == 200 and await status("wire.js") == 200
            assert await status("ws", headers=upgrade) == 401 and await status("files/x.fits") == 401
            assert await status("_server.py") == 404 and await status("..%2f_server.py") == 404
            evil = {"Host": "evil.example:8765"}
            assert await status("", headers=evil) == 403 and await status("login", "POST", json={}, headers=evil) == 403
            assert await status("login", "POST", json={"token": "wrong"}) == 403
            own = {"Content-Type": "application/json"}
            for given in ({"data": "token"}, {"json": {}}, {"json": []}, {"json": {"token": 5}}, {"data": "[" * 4000, "headers": own},
                          {"data": "{}", "headers": {"Content-Type": "application/json; charset=none"}},
                          {"data": b"none", "headers": {**own, "Content-Encoding": "gzip"}}):
                assert await status("login", "POST", **given) in (400, 415)
            assert await status("login", "POST", json={"token": program.token}, headers={"Origin": "http://evil.example"}) == 403
            assert await status("login", "POST", json={"token": program.token}) == 204
            cookie = next(iter(session.cookie_jar))
            assert cookie["httponly"] and cookie["samesite"] == "Strict" and cookie["path"] == "/"
            for headers in ({"Origin": "http://evil.example"}, {**evil, "Origin": "http://evil.example:8765"}, evil):
                assert await status("ws", headers={**upgrade, **headers}) == 403
            async with session.ws_connect(program.url + "ws") as socket:
                for text in ("no JSON", "[]", "{}", '{"ack":"x"}', '{"view":{}}', '{"cursor":[1]}', '{"line":1,"cursor":null}',
                             '{"line":[0,NaN,1,1]}', '{"do":1,"id":1}', "[" * 5000, '{"do":"stop","id":[NaN]}',
                             '{"cursor":[1%s,true]}' % ("0" * 400), '{"line":[1%s,0,0,0]}' % ("0" * 400), '{"ack":NaN}'):
                    await socket.send_str(text)
                answers = 0
                while answers < 13:  # a line that ends far outside is none of them
                    content = json.loads((await asyncio.wait_for(socket.receive(), 20)).data)
                    if "result" in content:
                        assert not content["result"]["ok"] and content["result"]["meaning"]
                        answers += 1
                await socket.send_str('"' + "x" * 70000 + '"')
                while not socket.closed:
                    await asyncio.wait_for(socket.receive(), 20)

    def connect(program):
        """More of those who say nothing than the program has connections for."""
        host, port = program.url[len("http://"):-1].split(":")
        with contextlib.ExitStack() as connections:
            silent = [connections.enter_context(create_connection((host, int(port)), 20)) for _ in range(400)]
            try:
                assert silent[-1].recv(1) == b""
            except ConnectionError:
                pass
    with Program(tmp_path, "--read-only") as program:
        asyncio.run(use(program))
        connect(program)
        program.end()


def test_ctrl_c_while_modules_are_loaded_ends_the_program_without_a_word(tmp_path):
    def interrupt():
        signal.pthread_sigmask(signal.SIG_BLOCK, {signal.SIGINT})
        os.kill(os.getpid(), signal.SIGINT)
    done = subprocess.run([os.environ["VXMCD_TOOL"], "live"], capture_output=True, text=True, timeout=60, preexec_fn=interrupt)
    assert (done.returncode, done.stdout, done.stderr) == (-signal.SIGINT, "", "")


@pytest.mark.parametrize("options, code, text", [
    (("--token-file", "/nowhere"), 1, "/nowhere"), (("--directory", "/nowhere"), 4, "/nowhere"), (("--camera", "7"), 2, "no camera 7"),
    (("--camera", "1", "--no-token"), 2, "vxmcd list"), (("--no-token", "--bind", "0.0.0.0"), 1, "--no-token"), (("--area", "1,1,9000x9000"), 3, "not on the sensor")])
def test_a_start_that_is_refused_says_why(tmp_path, options, code, text):
    (tmp_path / "cameras.ini").write_text(REAL + "[Faults]\nRule = call VX_Open device 1 rc 43\n")
    done = subprocess.run([os.environ["VXMCD_TOOL"], "live", *options], capture_output=True, text=True, timeout=60,
                          env=dict(os.environ, VXCORE_CONFIG=str(tmp_path / "cameras.ini")))
    assert (done.returncode, done.stdout) == (code, "") and text in done.stderr and done.stderr.count("\n") == 1
