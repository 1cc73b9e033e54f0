# SPDX-License-Identifier: MIT
"""What a camera is and is set to, for the page. The keys of a description are those of `vxmcd info --json`."""
from __future__ import annotations

import ctypes
import json
import math
from typing import Dict, Optional

from .. import _features, raw
from .._signatures import LIBRARY_VERSION
from .._timing import TriggerMode
from ..errors import VxmcdError

_IMAGE_MODE = 4
_TRIGGER_BITS = {"internal": "VXMCD_TRIGGER_INTERNAL", "external": "VXMCD_TRIGGER_EXTERNAL",
                 "external-start": "VXMCD_TRIGGER_EXTERNAL_START", "software": "VXMCD_TRIGGER_SOFTWARE",
                 "external-exposure": "VXMCD_TRIGGER_EXTERNAL_EXPOSURE"}


def problem(error: BaseException) -> Dict[str, object]:
    """An error as the page shows it: the parts of a VxmcdError; of others the message."""
    if isinstance(error, VxmcdError):
        return {"function": error.function, "code": error.code, "name": error.name,
                "meaning": error.meaning, "detail": error.detail or "", "advice": error.advice, "text": str(error)}
    text = (error.strerror if isinstance(error, OSError) else None) or str(error) or type(error).__name__
    return {"function": None, "code": None, "name": type(error).__name__, "meaning": text, "detail": "",
            "advice": "", "text": text}


def as_json(value) -> str:
    """JSON, which has no infinity and nothing that is no number: null in place of these."""
    try:
        return json.dumps(value, allow_nan=False)
    except ValueError:
        return json.dumps(_finite(value))


def _finite(value):
    if isinstance(value, dict):
        return {key: _finite(item) for key, item in value.items()}
    if isinstance(value, (list, tuple)):
        return [_finite(item) for item in value]
    return None if isinstance(value, float) and not math.isfinite(value) else value


def _or_none(read):
    try:
        return read()
    except VxmcdError:
        return None


def _pair(names, values):
    return None if values is None else dict(zip(names, values))


def _binning_limit(session, direction):
    return _or_none(lambda: session.read("GetMaximumBinning", ctypes.c_int, given=(_IMAGE_MODE, direction), also=(0,)))


def answers(camera) -> bool:
    """Whether the camera is still there."""
    return camera.is_open and _features.integer(camera._core_handle(), "SensorWidth") is not None


def describe(camera) -> Dict[str, object]:
    """What does not change while the camera is open. None where it does not say."""
    handle = camera._core_handle()
    triggers = _or_none(lambda: camera.capabilities.triggerModes)
    speeds = _or_none(lambda: camera.readout_speeds)
    gains = _or_none(lambda: camera.gains) or []
    return {
        "camera": camera.number, "model": _or_none(lambda: camera.model),
        "serial": _or_none(lambda: camera.serial_number), "source": _features.text(handle, "DeviceSource") or None,
        "library_version": LIBRARY_VERSION,
        "sensor_pixels": _pair(("width", "height"), camera.sensor_size),
        "pixel_um": _pair(("width", "height"), _or_none(lambda: camera.pixel_size)),
        "capabilities": {"trigger_modes": [word for word, bit in _TRIGGER_BITS.items()
                                           if triggers is None or triggers & getattr(raw, bit)]},
        "maximum_binning": {"horizontal": _binning_limit(camera._session, 0),
                            "vertical": _binning_limit(camera._session, 1)},
        "amplifiers": [{"description": text} for text in _or_none(lambda: camera.amplifiers) or []],
        "channels": [{"bits": bits} for bits in _or_none(lambda: camera.ad_channels) or []],
        "speeds_mhz": speeds or [],
        "gains": [{"text": gain.text, "factor": gain.factor} for gain in gains],
        "encodings": _features.words(handle, "PixelEncoding"),
        "has_cooler": _or_none(lambda: camera.cooler) is not None,
        "fan_speeds": _fan_modes(_features.words(handle, "FanSpeed")),
        "target_range_celsius": _pair(("minimum", "maximum"), _or_none(lambda: camera.temperature_range)),
        "readout_s": _or_none(lambda: camera.readout_time),
    }


def _fan_modes(words):
    known = {"On": "full", "Low": "low", "Off": "off"}
    return [known[word] for word in words if word in known]


def settings_of(camera) -> Dict[str, object]:
    """The settings in force, under the names of the attributes of Camera; None where the camera does not say."""
    settings = camera.settings()
    area, binning, cycle = camera.area, camera.binning, camera.cycle_time
    return {
        "exposure": camera.exposure, "cycle_time": cycle, "frame_rate": 1.0 / cycle if cycle > 0 else None,
        "trigger_mode": settings["trigger_mode"], "overlap": camera.overlap, "area": list(area), "binning": list(binning),
        "bits": camera.bits, "encoding": settings.get("encoding"), "gain": camera.gain, "ad_channel": camera.ad_channel,
        "amplifier": camera.amplifier, "readout_speed": camera.readout_speed,
        "baseline_clamp": settings.get("baseline_clamp"), "fan": settings.get("fan"),
        "cooler": camera._if_there("cooler"), "target_temperature": camera._if_there("target_temperature"),
    }


def limits_of(camera) -> Dict[str, object]:
    """What the settings in force leave possible: {"exposure": [lowest, highest], ...}, None where it is not known."""
    handle = camera._core_handle()
    lowest, highest = _features.limits(handle, "ExposureTime")
    slowest, fastest = _features.limits(handle, "FrameRate")
    return {"exposure": [lowest, _or_none(lambda: camera.maximum_exposure) or highest],
            "frame_rate": [slowest, fastest],
            "target_temperature": list(_or_none(lambda: camera.temperature_range) or (None, None))}


def saturation_of(camera) -> int:
    """The value from which a pixel counts as saturated: the largest one that the camera's converter has. Binned pixels are
    sums of values above the baseline."""
    handle = camera._core_handle()
    digits = "".join(character for character in _features.text(handle, "BitDepth") if character.isdigit())
    encoded = {"Mono8": 8, "Mono12": 12, "Mono12Packed": 12}.get(_features.text(handle, "PixelEncoding"), 16)
    converter = 2 ** min(int(digits or 16), 16) - 1
    baseline = _or_none(lambda: camera._session.read("vxsys_GetBaselineLevel", ctypes.c_int)) or 0
    pixels = camera.binning[0] * camera.binning[1]
    level = (converter - baseline) * pixels + baseline if pixels > 1 else converter
    return max(min(level, 2 ** min(encoded, camera.bits) - 1), 1)


def has_even_period(camera) -> bool:
    """Whether the camera sets the time between frames itself, so that its clock shows those that are missing."""
    return camera.trigger_mode in (TriggerMode.INTERNAL, TriggerMode.EXTERNAL_START)


def memory_percent(camera) -> Optional[int]:
    """How full the camera's own memory is."""
    percent = ctypes.c_int(-1)
    try:
        camera._session.call("GetFIFOUsage", ctypes.byref(percent))
    except VxmcdError:
        return None
    return percent.value if percent.value >= 0 else None
