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


# The row of the canvas with the most beads, and where the first begins and the last ends.
BEADS = """(canvas => {
  const box = canvas.getBoundingClientRect(), { width, height } = canvas;
  const { data } = canvas.getContext('2d').getImageData(0, 0, width, height);
  let best = [0];
  for (let y = 60; y < height - 60; y++) {
    const edges = [];
    for (let x = 1; x < width; x++)
      if ((data[4 * (y * width + x)] > 200) !== (data[4 * (y * width + x - 1)] > 200)) edges.push(x);
    if (edges.length > best[0]) best = [edges.length, box.top + y, box.left + edges[0], box.left + edges.at(-1)];
  }
  return best;
})(document.getElementById('picture'))"""


def settle(page, images):
    """Some images later."""
    image = int(page.text("#frame").split()[1])
    page.wait(f"document.getElementById('frame').textContent.split(' ')[1] > {image + images}")


def beads(page, directory):
    page.click("#set-cooler")
    choose(page, "#set-exposure", "20 ms")
    page.key("Escape")
    page.wait("document.getElementById('temperature').textContent.includes(', stable')")
    page.key("p")  # the profile takes its place, and the picture is smaller
    settle(page, 100)
    page.wait(LIVE)
    _, row, first, last = page.evaluate(BEADS)
    page.drag((first - 20, row), (last + 20, row), shift=True)
    settle(page, 5)
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
