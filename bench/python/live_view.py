#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Measures the live view: images a second that viewers get, processor time of the program, and frames lost by a recording,
without viewers and with some. The camera is a simulated one of 2048 x 2048 pixels whose frames take no time to paint; viewers are
programs on this machine that acknowledge at once and show the whole image in 1024 x 1024 pixels, of 16 bits."""
import argparse
import asyncio
import json
import os
import platform
import subprocess
import sys
import tempfile
import time
from pathlib import Path

import aiohttp

sys.path.insert(0, str(Path(__file__).resolve().parents[2] / "python"))
from vxmcd.live import _wire  # noqa: E402

CAMERA = "[Simulator]\n[Camera0]\nModel = TRELLIS CMOS\nClock = real\nScene = stamp\n"


class Viewer:
    def __init__(self, session, socket):
        self.session, self.socket = session, socket
        self.frames, self.bytes, self.delays, self.state = 0, 0, [], {}

    @classmethod
    async def open(cls, url):
        session = aiohttp.ClientSession()
        return cls(session, await session.ws_connect(url + "ws", max_msg_size=0))

    async def send(self, message):
        await self.socket.send_str(json.dumps(message))

    async def watch(self, is_over):
        while not is_over():
            message = await self.socket.receive()
            if message.type == aiohttp.WSMsgType.BINARY:
                header = _wire.unpack(message.data)
                self.frames, self.bytes = self.frames + 1, self.bytes + len(message.data)
                self.delays.append(time.time() - header["time"])
                await self.send({"ack": header["number"]})
            elif message.type == aiohttp.WSMsgType.TEXT:
                content = json.loads(message.data)
                self.state.update(content.get("hello", content.get("state", {})))
            else:
                raise ConnectionError(message)

    def restart(self):
        self.frames, self.bytes, self.delays = 0, 0, []


def processor_seconds(process):
    fields = Path(f"/proc/{process.pid}/stat").read_text().rpartition(")")[2].split()
    return (int(fields[11]) + int(fields[12])) / os.sysconf("SC_CLK_TCK")


async def measure(process, url, count, images, seconds):
    controller = await Viewer.open(url)  # shows nothing when there are no viewers to be measured
    viewers = ([controller] if count else []) + [await Viewer.open(url) for _ in range(count - 1)]
    for viewer in viewers:
        await viewer.send({"view": {"x": 0, "y": 0, "w": 0, "h": 0, "cw": 1024, "ch": 1024}})
    others = [asyncio.ensure_future(viewer.watch(lambda: False)) for viewer in viewers if viewer is not controller]
    await controller.watch(lambda: (controller.state.get("rate") or 0) > 0)
    for viewer in viewers:
        viewer.restart()
    began, used = time.perf_counter(), processor_seconds(process)
    await controller.watch(lambda: time.perf_counter() - began > seconds)
    elapsed, used = time.perf_counter() - began, processor_seconds(process) - used
    delays = sorted(delay for viewer in viewers for delay in viewer.delays)
    shown = sum(viewer.frames for viewer in viewers) / max(count, 1) / elapsed
    middle = f"{1e3 * delays[len(delays) // 2]:.0f} ms" if delays else "-"
    late = f"{1e3 * delays[len(delays) * 99 // 100]:.0f} ms" if delays else "-"
    line = (f"{count} viewers: camera {controller.state['rate']:.1f}/s, shown {shown:.1f}/s each, "
            f"{used / elapsed:.2f} processors, delay {middle}, p99 {late}")
    await controller.send({"do": "record", "name": f"run{count}", "images": images, "id": 1})
    await controller.watch(lambda: (controller.state.get("last_recording") or {}).get("name") == f"run{count}")
    run = controller.state["last_recording"]
    print(f"{line}; recording of {run['images']} images: {run['state']}, lost {run['lost']}, missing {run['missing']}",
          flush=True)
    for task in others:
        task.cancel()
    for viewer in {controller, *viewers}:
        await viewer.session.close()


def main():
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("program", help="vxmcd, of the build to be measured")
    parser.add_argument("--viewers", type=int, nargs="+", default=[0, 1, 3], metavar="N")
    parser.add_argument("--seconds", type=float, default=10)
    parser.add_argument("--images", type=int, default=300, help="of each recording, 8.4 MB each")
    parser.add_argument("--directory", help="where to record; the default is that for temporary files")
    parser.add_argument("--quick", action="store_true", help="20 s: 0 and 3 viewers, 3 s, recordings of 100 images")
    options = parser.parse_args()
    if options.quick:
        options.viewers, options.seconds, options.images = [0, 3], 3, 100
    print(f"{platform.machine()}, {os.cpu_count()} processors, load {os.getloadavg()[0]:.1f}; "
          f"Python {platform.python_version()}, aiohttp {aiohttp.__version__}")
    for count in options.viewers:
        with tempfile.TemporaryDirectory(dir=options.directory) as directory:
            configuration = Path(directory) / "cameras.ini"
            configuration.write_text(CAMERA)
            process = subprocess.Popen(
                [options.program, "live", "--no-token", "--directory", directory, "--exposure", "0.005"], text=True,
                stdout=subprocess.PIPE, env=dict(os.environ, VXCORE_CONFIG=str(configuration)))
            try:
                asyncio.run(measure(process, process.stdout.readline().strip(), count, options.images, options.seconds))
            finally:
                process.terminate()
                process.wait()
    print(f"load {os.getloadavg()[0]:.1f}")


if __name__ == "__main__":
    main()
