# SPDX-License-Identifier: MIT
"""Settings as pages send them, by the names of the attributes of Camera."""
from __future__ import annotations

from .._area import Area
from ..errors import VxmcdError

_NAMES = ("exposure", "cycle_time", "frame_rate", "trigger_mode", "overlap", "area", "binning", "bits", "encoding", "gain",
          "amplifier", "ad_channel", "readout_speed", "baseline_clamp", "target_temperature", "cooler", "fan")
DURING_RUN = ("exposure", "cycle_time", "frame_rate", "target_temperature", "cooler", "fan")  # others stop it first
DURING_RECORDING = ("target_temperature", "cooler", "fan")


def check(name: str, value) -> None:
    """Raises ValueError for what no camera takes here."""
    if name not in _NAMES:
        raise ValueError(f"there is no setting {name!r}")
    if name == "bits" and value not in (None, 8, 16):
        raise ValueError("the live view takes 8 or 16 bits")


def apply(camera, name: str, value) -> None:
    """Sets a checked setting to a value of JSON. Raises what the attribute of Camera does, and ValueError."""
    if name == "fan":
        camera.set_fan(value)
    elif name == "area":
        _set_area(camera, value)
    elif name in ("bits", "encoding"):
        _set_depth(camera, name, value)
    else:
        setattr(camera, name, tuple(value) if name == "binning" and isinstance(value, list) else value)


def _set_depth(camera, name, value):
    """Bits and encoding have to go together, which the camera says at the start of a run only."""
    before = camera._bits if name == "bits" else camera.encoding
    setattr(camera, name, value)
    try:
        camera._check_bits()
    except ValueError:
        setattr(camera, name, before)
        raise


def _set_area(camera, value):
    """Sets the area that was drawn, or the next smaller one that the camera takes."""
    if value is None:
        camera.area = None
        return
    width, height = camera.sensor_size
    if not isinstance(value, list) or len(value) != 4 or not all(type(number) is int for number in value):
        raise ValueError("an area is [left, top, width, height] in sensor pixels, the first being 1, or null")
    left, top = min(max(value[0], 1), width), min(max(value[1], 1), height)
    right, bottom = min(value[0] + value[2], width + 1), min(value[1] + value[3], height + 1)
    refusal = None
    for unit in (1, 2, 4, 8, 16, 32, 64):
        units = [unit * binning for binning in camera.binning]
        sides = [max((end - first) // step, 1) * step
                 for first, end, step in zip((left, top), (right, bottom), units)]
        first = [(at - 1) // unit * unit + 1 for at in (left, top)]
        try:
            camera.area = Area(*first, *sides)
            return
        except (VxmcdError, ValueError) as error:
            refusal = refusal or error
    raise refusal
