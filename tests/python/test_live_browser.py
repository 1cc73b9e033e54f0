# SPDX-License-Identifier: MIT
"""The page of the live view in a real browser, with the real program and a simulated camera."""
import os
import re
import shutil
import signal
import subprocess

import numpy as np
import pytest

import browser as browsers
import vxmcd
from vxmcd.spool import SpoolRun

pytest.importorskip("aiohttp", reason="aiohttp is not installed")
if browsers.PROGRAM is None:
    pytest.skip("chromium is not installed", allow_module_level=True)

TOKEN = "token-of-the-test"
# A still picture without noise, part of it saturated.
GRADIENT = """[Simulator]
Cameras = 2
[Camera0]
Model = RQ512_LX
Scene = gradient
Noise = off
DarkCurrent = 0
PhotonsPerSecond = 1.2e7
[Camera0.SensorWidth]
Value = 160
[Camera0.SensorHeight]
Value = 120
[Camera1]
Model = TARN 1M
Scene = dark
"""
COLUMNS, ROWS = 160, 120
BLACK, WHITE = 150, 3000
RED = [255, 32, 32]


class Program:
    """vxmcd live, as a process."""

    def __init__(self, directory, cameras=GRADIENT, *options):
        self.directory = directory
        self._options = list(options)
        self._port = []
        (directory / "cameras.ini").write_text(cameras)

    def start(self):
        self._process = subprocess.Popen(
            [os.environ["VXMCD_TOOL"], "live", "--token", TOKEN, "--directory", str(self.directory), *self._port,
             *self._options],
            env=dict(os.environ, VXCORE_CONFIG=str(self.directory / "cameras.ini")), stdout=subprocess.PIPE, text=True)
        self.link = self._process.stdout.readline().strip()
        self._port = ["--port", re.fullmatch(r"http://127\.0\.0\.1:(\d+)/#t=" + TOKEN, self.link)[1]]
        return self

    def stop(self):
        self._process.send_signal(signal.SIGTERM)
        self._process.wait(browsers.SECONDS)
        self._process.stdout.close()


@pytest.fixture(scope="module")
def browser():
    browser = browsers.Browser()
    yield browser
    browser.close()


@pytest.fixture(scope="module")
def program(tmp_path_factory):
    program = Program(tmp_path_factory.mktemp("live")).start()
    yield program
    program.stop()


def show(browser, program, *size):
    page = browser.open(program.link, *size)
    # On a busy machine the camera may not deliver within the time that a run waits: then the page offers to go on.
    page.wait("document.querySelector('#banner-error button')?.click() || document.getElementById('empty').hidden")
    return page


@pytest.fixture
def page(browser, program):
    page = show(browser, program)
    page.wait("document.getElementById('role').dataset.role === 'control'")
    yield page
    page.close()
    assert page.problems == []


@pytest.fixture
def image(simulator):
    """What the camera sees."""
    simulator.configure(GRADIENT)
    with vxmcd.Camera() as camera:
        return camera.snap()


def choose(page, selector, text):
    """Types into a field."""
    page.evaluate(f"document.querySelector('{selector}').select()")
    page.type(text)
    page.key("Enter")


def place(page, column, row):
    """Where a pixel of the whole image is on the screen, and how large."""
    left, top, width, height = page.evaluate(
        "(box => [box.left, box.top, box.width, box.height])(document.getElementById('stage').getBoundingClientRect())")
    scale = min(width / COLUMNS, height / ROWS)
    x, y = column + 0.5 - COLUMNS / 2, row + 0.5 - ROWS / 2
    return (left + width / 2 + x * scale, top + height / 2 + y * scale), scale


def picture(page):
    """The pixels in the middle of the canvas, as many as the image has, red, green and blue."""
    pixels = page.evaluate(f"""(canvas => Array.from(canvas.getContext('2d').getImageData(
        Math.round((canvas.width - {COLUMNS}) / 2), Math.round((canvas.height - {ROWS}) / 2), {COLUMNS}, {ROWS}).data))(
        document.getElementById('picture'))""")
    return np.array(pixels).reshape(ROWS, COLUMNS, 4)[:, :, :3]


def test_pixels_are_the_stretch_of_the_image_and_saturated_ones_red(page, image):
    page.key("1")
    choose(page, "#black", str(BLACK))
    choose(page, "#white", str(WHITE))
    page.evaluate("document.activeElement.blur()")
    levels = np.clip(np.floor((image - float(BLACK)) * (255 / (WHITE - BLACK)) + 0.5), 0, 255)
    is_saturated = image == image.max()
    assert 0.1 < is_saturated.mean() < 0.9 and len(np.unique(levels)) > 50
    shown = picture(page)
    assert (shown[is_saturated] == RED).all()
    assert (shown[~is_saturated] == levels[~is_saturated][:, np.newaxis]).all()
    assert f"{is_saturated.sum()} saturated" in page.text("#saturated")
    page.key("x")
    assert (picture(page) == levels[:, :, np.newaxis]).all()
    page.key("m")
    assert (picture(page) == 255 - levels[:, :, np.newaxis]).all()


def test_value_under_the_cursor_and_profile(page, image):
    rows, columns = np.nonzero(image == image.max())
    for column, row in ((3, 5), (80, 60), (columns[0], rows[0])):
        at, _ = place(page, column, row)
        page.move(*at)
        mark = " (saturated)" if image[row, column] == image.max() else ""
        page.wait(f"document.getElementById('cursor').textContent === 'x {column}, y {row}: {image[row, column]}{mark}'")
    page.key("c")
    page.key("ArrowRight")
    page.key("ArrowDown", shift=True)
    page.wait(f"document.getElementById('cursor').textContent.startsWith('x {COLUMNS // 2 + 1}, y {ROWS // 2 + 10}: ')")
    page.drag(place(page, 10, 20)[0], place(page, 100, 20)[0], shift=True)
    assert page.text("#profile-ends") == "10, 20 to 100, 20"
    page.key("Escape")
    assert page.evaluate("document.getElementById('profile').hidden")


def test_wheel_and_drag_keep_the_pixel_under_the_cursor(page):
    pixel = "document.getElementById('cursor').textContent.split(':')[0]"
    at, scale = place(page, 100, 40)
    page.move(*at)
    page.wait(f"{pixel} === 'x 100, y 40'")
    page.wheel(*at, -600)
    page.wait(f"parseFloat(document.getElementById('zoom').textContent) > {150 * scale}")
    page.move(at[0] + 1, at[1])
    page.wait(f"{pixel} === 'x 100, y 40'")
    page.drag(at, (at[0] + 90, at[1] - 60))
    page.wait(f"{pixel} === 'x 100, y 40'")
    page.move(*at)
    assert page.evaluate(pixel) != "x 100, y 40"
    page.key("f")
    page.wait(f"Math.abs(parseFloat(document.getElementById('zoom').textContent) - {100 * scale}) < 1")


def test_rectangle_becomes_the_area(page):
    page.key("a")
    page.drag(place(page, 16, 24)[0], place(page, 79, 55)[0])
    page.key("Enter")
    page.wait("document.getElementById('area').textContent === '64 x 32 at 17, 25'")
    page.wait("document.getElementById('zoom').textContent.startsWith('1')")  # 64 columns fill the stage
    page.key("a")
    page.key("Escape")
    page.key("w")
    page.wait(f"document.getElementById('area').textContent === '{COLUMNS} x {ROWS} at 1, 1'")


def test_exposure_by_keyboard(page):
    page.key("e")
    page.type("0.5 ms")
    page.key("Enter")
    page.wait("document.getElementById('set-exposure').value === '500'")
    assert page.text("#set-exposure + .unit") == "µs"
    page.type("x")
    page.key("Enter")
    assert "is no exposure" in page.text("#rows")
    page.key("Escape")
    page.key("]")
    page.wait("document.getElementById('set-exposure').value === '1'")
    page.key("e")
    page.type("0")
    page.key("Enter")
    page.wait("document.querySelector('#rows .answer.bad')?.textContent.includes('above 0')")
    choose(page, "#set-exposure", "10 ms")
    page.wait("document.getElementById('set-exposure').value === '10'")


def test_long_exposure_has_a_bar_and_outlasts_the_wait_of_the_run(page):
    page.wait("document.getElementById('exposure-bar').hidden")
    choose(page, "#set-exposure", "2.5 s")
    page.wait("document.getElementById('exposure-bar').textContent.includes('exposing 2.')")
    number = page.text("#frame")
    page.wait(f"document.getElementById('frame').textContent !== '{number}'")
    choose(page, "#set-exposure", "10 ms")
    page.wait("document.getElementById('exposure-bar').hidden")


def test_two_pages_one_controller(page, browser, program):
    other = show(browser, program)
    other.wait("document.getElementById('role').dataset.role === 'view'")
    assert other.evaluate("document.getElementById('set-exposure').disabled")
    choose(page, "#set-cycle-time", "50 ms")
    other.wait("document.getElementById('set-cycle-time').value === '50'")
    other.click("#take-control")
    page.wait("document.getElementById('hand-over').open")
    page.click("#hand-over-no")
    other.wait("!document.getElementById('take-control').disabled")
    other.click("#take-control")
    page.wait("document.getElementById('hand-over').open")
    page.click("#hand-over-yes")
    other.wait("document.getElementById('role').dataset.role === 'control'")
    page.wait("document.getElementById('set-exposure').disabled")
    other.close()
    page.wait("document.getElementById('role').dataset.role === 'control'")
    assert other.problems == []


def test_recording_with_a_bar(page, program):
    choose(page, "#set-cycle-time", "20 ms")
    page.evaluate("document.getElementById('record-name').value = 'run1'")
    page.key("Escape")
    page.key("r")
    page.type("100000")
    page.key("Enter")
    page.wait("document.getElementById('phase').dataset.phase === 'recording'")
    page.wait("document.getElementById('recording-bar').value > 0")
    assert "of 100000" in page.text("#recording-numbers")
    assert page.evaluate("document.getElementById('set-exposure').disabled")
    page.key("r")
    page.key("Enter")
    page.wait("document.getElementById('phase').dataset.phase === 'live'")
    page.wait("document.getElementById('saved').textContent.includes('vxmcd convert run1')")
    images = int(re.search(r"run1: (\d+) images, 0 lost", page.text("#saved"))[1])
    assert len(SpoolRun(program.directory / "run1")) == images > 0
    assert page.evaluate("document.getElementById('record-name').value") == "run2"


def test_snapshot_of_a_frozen_picture(page, program, image):
    page.key(" ")
    frozen = page.text("#frame")
    page.key("s")
    page.wait("!!document.querySelector('#saved a')")
    name = page.text("#saved a")
    path = program.directory / name
    fetched = page.evaluate("fetch(document.querySelector('#saved a').href).then(got => got.blob()).then(all => all.size)")
    assert fetched == path.stat().st_size
    if shutil.which("fitsverify"):
        said = subprocess.run(["fitsverify", path], capture_output=True, text=True).stdout
        assert "found 0 warning(s) and 0 error(s)" in said
    pixels = path.read_bytes()[-2880 * -(-image.nbytes // 2880):]  # the last blocks of 2880 bytes
    assert (np.frombuffer(pixels, ">i2", image.size).astype(int) + 32768 == image.reshape(-1)).all()
    page.key("2")
    page.wait("document.getElementById('zoom').textContent === '200 %'")
    assert page.text("#frame") == frozen
    page.key(" ")
    page.wait(f"document.getElementById('frame').textContent !== '{frozen}'")


def test_another_camera(page):
    page.evaluate("document.getElementById('camera').value = '1'")
    page.evaluate("document.getElementById('camera').dispatchEvent(new Event('change'))")
    page.wait("document.title.startsWith('TARN 1M') && document.getElementById('empty').hidden")
    page.wait("document.getElementById('area').textContent === '1280 x 1024 at 1, 1'")
    page.wait("document.getElementById('phase').dataset.phase === 'live'")


def test_page_connects_again_when_the_program_does(browser, tmp_path):
    program = Program(tmp_path).start()
    page = show(browser, program)
    program.stop()
    page.wait("document.getElementById('banners').textContent.includes('The program has ended')")
    assert page.evaluate("document.getElementById('stage').classList.contains('stale')")
    program.start()
    try:
        page.wait("document.getElementById('phase').dataset.phase === 'live' && !document.querySelector('.banner')")
        number = page.text("#frame")
        page.wait(f"document.getElementById('frame').textContent !== '{number}'")
    finally:
        program.stop()
        page.close()


def test_wrong_token(browser, program):
    page = browser.open(program.link.replace("127.0.0.1", "localhost").replace(TOKEN, "another-token"))
    page.wait("!document.getElementById('gate').hidden")
    assert page.text("#gate-title") == "The token is wrong"
    choose(page, "#token", TOKEN)
    page.wait("document.getElementById('gate').hidden && document.getElementById('empty').hidden")
    assert page.evaluate("location.hash") == ""
    page.close()


def test_narrow_window(browser, program):
    page = show(browser, program, 420, 800)
    boxes = page.evaluate("""['stage', 'rows', 'record'].map(id => document.getElementById(id).getBoundingClientRect())
        .map(box => [box.left, box.right, box.top, box.bottom])""")
    assert all(0 <= left < right <= 420 for left, right, _, _ in boxes)
    assert boxes[0][3] <= boxes[1][2] < boxes[2][2]
    assert page.evaluate("document.documentElement.scrollWidth") == 420
    page.close()
