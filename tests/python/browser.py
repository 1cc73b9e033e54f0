# SPDX-License-Identifier: MIT
"""A headless chromium for tests of pages, through its debugging protocol. The protocol goes over pipes: there is no port,
and the browser ends when the test does, however that ends."""
import base64
import fcntl
import json
import os
import select
import shutil
import subprocess
import tempfile
import time

PROGRAM = shutil.which("chromium")
SECONDS = 30  # a test waits so long for anything
_FLAGS = ("--headless=new", "--no-sandbox", "--disable-dev-shm-usage", "--disable-gpu", "--no-first-run",
          "--disable-background-networking", "--disable-extensions", "--hide-scrollbars", "--remote-debugging-pipe")
_KEYS = {"Enter": 13, "Escape": 27, "Tab": 9, "ArrowLeft": 37, "ArrowUp": 38, "ArrowRight": 39, "ArrowDown": 40}
_ALT, _SHIFT = 1, 8


class Browser:
    """Use from one thread, and close it."""

    def __init__(self):
        self._profile = tempfile.TemporaryDirectory(prefix="browser-", ignore_cleanup_errors=True)
        ours, theirs = os.pipe(), os.pipe()  # to the browser, from the browser
        # The browser has its ends as 3 and 4, so they must not be there by chance.
        ends = [fcntl.fcntl(end, fcntl.F_DUPFD, 10) for end in (ours[0], theirs[1])]

        def place():
            os.dup2(ends[0], 3)
            os.dup2(ends[1], 4)

        self._process = subprocess.Popen(
            [PROGRAM, *_FLAGS, f"--user-data-dir={self._profile.name}"], pass_fds=(3, 4), preexec_fn=place,
            stdin=subprocess.DEVNULL, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
        for end in (ours[0], theirs[1], *ends):
            os.close(end)
        self._to, self._from = ours[1], theirs[0]
        self._received = b""
        self._last_id = 0
        self._pages = {}

    def close(self):
        os.close(self._to)
        try:
            self._process.wait(SECONDS)
        except subprocess.TimeoutExpired:
            self._process.kill()
            self._process.wait()
        os.close(self._from)
        self._profile.cleanup()

    def open(self, url, width=1200, height=720):
        """A page in a window of its own."""
        target = self.call("Target.createTarget", url="about:blank", newWindow=True)["targetId"]
        session = self.call("Target.attachToTarget", targetId=target, flatten=True)["sessionId"]
        page = self._pages[session] = Page(self, session, target)
        for domain in ("Page", "Runtime", "Log"):
            page.call(f"{domain}.enable")
        page.resize(width, height)
        page.go(url)
        return page

    def call(self, method, session=None, **parameters):
        """Calls a method of the protocol and returns its result. Events that come meanwhile go to their pages."""
        self._last_id += 1
        message = {"id": self._last_id, "method": method, "params": parameters}
        if session:
            message["sessionId"] = session
        os.write(self._to, json.dumps(message).encode() + b"\0")
        deadline = time.monotonic() + SECONDS
        while True:
            answer = self._receive(deadline, method)
            if answer.get("id") == self._last_id:
                if "error" in answer:
                    raise RuntimeError(f"{method}: {answer['error']['message']}")
                return answer["result"]
            page = self._pages.get(answer.get("sessionId"))
            if page and "method" in answer:
                page.event(answer["method"], answer["params"])

    def _receive(self, deadline, method):
        while b"\0" not in self._received:
            if not select.select([self._from], [], [], max(0, deadline - time.monotonic()))[0]:
                raise TimeoutError(f"the browser does not answer {method}")
            data = os.read(self._from, 1 << 20)
            if not data:
                raise RuntimeError("the browser has ended")
            self._received += data
        message, self._received = self._received.split(b"\0", 1)
        return json.loads(message)


class Page:
    """One page. `problems` has what its console reported: exceptions, refused scripts, missing files."""

    def __init__(self, browser, session, target):
        self._browser = browser
        self._session = session
        self._target = target
        self.problems = []

    def call(self, method, **parameters):
        return self._browser.call(method, self._session, **parameters)

    def close(self):
        self._browser.call("Target.closeTarget", targetId=self._target)

    def event(self, method, parameters):
        if method == "Runtime.exceptionThrown":
            details = parameters["exceptionDetails"]
            self.problems.append(details.get("exception", {}).get("description") or details["text"])
        elif method == "Log.entryAdded" and parameters["entry"]["level"] in ("error", "warning"):
            self.problems.append("{text} {url}".format(**{"url": "", **parameters["entry"]}))

    def go(self, url):
        """Loads a page, and waits until it is there."""
        problem = self.call("Page.navigate", url=url).get("errorText")
        assert not problem, f"{url}: {problem}"
        self.wait("location.protocol.startsWith('http') && document.readyState === 'complete'")

    def resize(self, width, height):
        self.call("Emulation.setDeviceMetricsOverride", width=width, height=height, deviceScaleFactor=1, mobile=False)

    def evaluate(self, expression):
        """The value of an expression of JavaScript; of a promise what it promises."""
        answer = self.call("Runtime.evaluate", expression=expression, returnByValue=True, awaitPromise=True)
        if "exceptionDetails" in answer:
            raise RuntimeError(f"{expression}: {answer['exceptionDetails']['exception'].get('description')}")
        return answer["result"].get("value")

    def wait(self, expression):
        """Waits until an expression is true, and returns its value."""
        deadline = time.monotonic() + SECONDS
        while True:
            value = self.evaluate(expression)
            if value:
                return value
            assert time.monotonic() < deadline, f"still false: {expression}; the page has: " + self.evaluate(
                "document.body.innerText.slice(0, 1500)")
            time.sleep(0.02)

    def text(self, selector):
        return self.evaluate(f"document.querySelector({json.dumps(selector)}).textContent")

    def key(self, key, alt=False, shift=False):
        modifiers = _ALT * alt + _SHIFT * shift
        code = _KEYS.get(key)
        parameters = {"key": key, "modifiers": modifiers, "windowsVirtualKeyCode": code or ord(key.upper())}
        if key == "Enter":
            parameters["text"] = "\r"
        elif not code:
            parameters["text"] = key
        self.call("Input.dispatchKeyEvent", type="keyDown", **parameters)
        self.call("Input.dispatchKeyEvent", type="keyUp", key=key, modifiers=modifiers)

    def type(self, text):
        self.call("Input.insertText", text=text)

    def move(self, x, y, kind="mouseMoved", **more):
        self.call("Input.dispatchMouseEvent", type=kind, x=x, y=y, **more)

    def drag(self, start, end, shift=False):
        held = {"button": "left", "modifiers": _SHIFT * shift}
        self.move(*start)
        self.move(*start, "mousePressed", buttons=1, clickCount=1, **held)
        for part in (0.3, 0.7, 1):
            self.move(*(a + (b - a) * part for a, b in zip(start, end)), buttons=1, **held)
        self.move(*end, "mouseReleased", clickCount=1, **held)

    def wheel(self, x, y, by):
        self.move(x, y, "mouseWheel", deltaX=0, deltaY=by)

    def click(self, selector):
        x, y = self.evaluate(f"(r => [r.x + r.width / 2, r.y + r.height / 2])"
                             f"(document.querySelector({json.dumps(selector)}).getBoundingClientRect())")
        self.move(x, y)
        self.move(x, y, "mousePressed", button="left", clickCount=1)
        self.move(x, y, "mouseReleased", button="left", clickCount=1)

    def screenshot(self, path):
        data = self.call("Page.captureScreenshot", format="png")["data"]
        with open(path, "wb") as file:
            file.write(base64.b64decode(data))
