#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Makes the pictures of docs/live-view.md: live_pictures.py DIRECTORY, in the environment of test_live_browser.py."""
import sys
import tempfile
from pathlib import Path

import browser as browsers
from test_live_browser import Program, choose, show

CAMERAS = """[Simulator]
Cameras = 2
[Camera0]
Model = TRELLIS CMOS
Scene = star field
Seed = 7
[Camera1]
Model = RQ512_LX
Scene = beads
Seed = 3
TimeScale = 60
"""
LIVE = """document.getElementById('phase').dataset.phase === 'live' && document.getElementById('reduced').hidden &&
    parseFloat(document.getElementById('rate-shown').textContent) > 15"""


def settle(page):
    """Some images later."""
    image = int(page.text("#frame").split()[1])
    page.wait(f"document.getElementById('frame').textContent.split(' ')[1] > {image + 100}")
    page.wait(LIVE)


def beads(page, directory):
    page.click("#set-cooler")
    choose(page, "#set-exposure", "20 ms")
    page.key("Escape")
    page.wait("document.getElementById('temperature').textContent.includes(', stable')")
    page.drag((170, 358), (480, 352), shift=True)
    settle(page)
    page.screenshot(directory / "live.png")


def stars(page, directory):
    choose(page, "#set-exposure", "0.1 s")
    page.evaluate("document.getElementById('record-name').value = 'night1'")
    page.key("Escape")
    page.key("r")
    page.type("500")
    page.key("Enter")
    page.wait("document.getElementById('recording-bar').value > 0.2")
    page.screenshot(directory / "live-recording.png")
    page.key("r")
    page.key("Enter")
    page.wait("document.getElementById('saved').textContent.includes('vxmcd convert')")


def main(directory):
    browser = browsers.Browser()
    try:
        for camera, take in (("1", beads), ("0", stars)):
            with tempfile.TemporaryDirectory() as home:
                program = Program(Path(home), CAMERAS, "--camera", camera).start()
                try:
                    page = show(browser, program)
                    page.wait(LIVE)
                    take(page, directory)
                    page.close()
                finally:
                    program.stop()
    finally:
        browser.close()


main(Path(sys.argv[1]))
