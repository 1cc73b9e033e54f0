# SPDX-License-Identifier: MIT
"""A file of one image. The program `vxmcd` writes all files of images of the project: here its raw pixels are written, with
their description, and `vxmcd convert` makes the file."""
from __future__ import annotations

import datetime
import json
import os
import shutil
import subprocess
import sys
import tempfile
from pathlib import Path
from typing import Dict

import numpy as np

from .._signatures import LIBRARY_VERSION
from ._frames import Image

_SUFFIXES = {"fits": ".fits", "tiff": ".tif"}  # the page makes pictures itself, as they are seen
_VARIABLE = "VXMCD_TOOL"
_SECONDS = 60  # for a conversion


def _tool() -> str:
    """The program `vxmcd`: the one that was started, the one of the same prefix, or the one in PATH."""
    found = os.environ.get(_VARIABLE) or shutil.which("vxmcd", path=os.pathsep.join(
        [os.path.join(sys.prefix, "bin"), *os.environ.get("PATH", os.defpath).split(os.pathsep)]))
    if not found:
        raise FileNotFoundError(f"the program vxmcd, which writes the file, is not found; name it in {_VARIABLE}")
    return found


def _utc(seconds: float) -> str:
    return datetime.datetime.fromtimestamp(seconds, datetime.timezone.utc).strftime("%Y-%m-%dT%H:%M:%S.%f")[:-3]


def _index_text(texts, index, key):
    return texts[index][key] if index is not None and index < len(texts) else None


def description(image: Image, pixels: np.ndarray, name: str) -> Dict[str, object]:
    """What stands beside the raw pixels, under the keys of `vxmcd convert`."""
    camera, settings = image.camera.get("camera", {}), image.camera.get("settings", {})
    area, binning = settings.get("area"), settings.get("binning")
    speed = settings.get("readout_speed")
    is_pulsed = settings.get("trigger_mode") != "internal"
    return {
        "software": f"vxmcd live {LIBRARY_VERSION}", "file": name, "complete": True, "images": 1,
        "image_bytes": pixels.nbytes, "pixel_type": str(pixels.dtype), "byte_order": "little",
        "model": camera.get("model"), "serial": camera.get("serial"), "start_utc": _utc(image.time),
        "image_width": pixels.shape[1], "image_height": pixels.shape[0], "image_bits": 8 * pixels.itemsize,
        "area": area and {"left": area[0], "top": area[1], "width": area[2], "height": area[3],
                          "horizontal_binning": binning[0], "vertical_binning": binning[1]},
        "gain": _index_text(camera.get("gains", []), settings.get("gain"), "text"),
        "amplifier": _index_text(camera.get("amplifiers", []), settings.get("amplifier"), "description"),
        "speed_mhz": camera["speeds_mhz"][speed] if speed is not None and speed < len(camera["speeds_mhz"]) else None,
        "image_type": None, "trigger": settings.get("trigger_mode"), "accumulations": 1,
        "exposure_s": None if settings.get("trigger_mode") == "external-exposure" else settings.get("exposure"),
        "cycle_s": None if is_pulsed else settings.get("cycle_time"),
        "celsius_start": image.celsius, "celsius_target": settings.get("target_temperature") if settings.get("cooler") else None,
        "delivered": 1, "overwritten": 0, "lost_in_camera": None,
        "frames": [{"image": image.number, "ticks": image.ticks, "host_ns": int(image.time * 1e9)}]}


def write(image: Image, path: Path) -> None:
    """Writes a new file of an image. Raises OSError or RuntimeError."""
    pixels = image.pixels.astype(image.pixels.dtype.newbyteorder("<"), copy=False)
    # In the same directory, so that the finished file only changes its name.
    with tempfile.TemporaryDirectory(prefix=".vxmcd-live-", dir=path.parent) as work:
        raw, made = os.path.join(work, "image.raw"), os.path.join(work, path.name)
        with open(raw, "wb") as file:  # tofile() does not say that the disk is full
            file.write(pixels.data)
        with open(raw + ".json", "w", encoding="utf-8") as file:
            json.dump(description(image, pixels, "image.raw"), file)
        done = subprocess.run([_tool(), "convert", raw, "--output", made, "--quiet"], capture_output=True, text=True,
                              timeout=_SECONDS, stdin=subprocess.DEVNULL)
        if done.returncode != 0:
            raise RuntimeError(done.stderr.strip() or f"vxmcd convert ended with {done.returncode}")
        # Nothing that exists is replaced. Disks without hard links are common, FAT for example.
        with open(path, "xb"):
            pass
        os.replace(made, path)


def suffix(kind: object) -> str:
    """Of the name of a file of this format."""
    if not isinstance(kind, str) or kind not in _SUFFIXES:
        raise ValueError(f"a snapshot is {' or '.join(_SUFFIXES)}, not {kind!r}")
    return _SUFFIXES[kind]
