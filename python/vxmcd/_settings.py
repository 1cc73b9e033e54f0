# SPDX-License-Identifier: MIT
"""All settings of a camera at once, and files of them, which `vxmcd acquire` reads and writes, too."""
from __future__ import annotations

import codecs
import ctypes
import difflib
import numbers
import os
import re
import warnings
from collections.abc import Mapping
from typing import Callable, Dict, List, NamedTuple, Optional, Tuple, Union

import numpy as np

from . import _checks, _features
from ._area import Area
from ._signatures import LIBRARY_VERSION
from ._timing import TriggerMode
from .errors import VxmcdError

Path = Union[str, "os.PathLike[str]"]

_FILE_BYTES = 1 << 20  # more is no file of settings
_STEADY = (TriggerMode.INTERNAL, TriggerMode.EXTERNAL_START)
_CAMERA_KEYS = ("model", "serial", "firmware")
_DICTIONARIES = ("features", "camera")
_METADATA = "MetadataEnable"
_EIGHT_BITS = "Mono8"


def _numbers(pattern, form):
    """A reader of whole numbers in a text of this form."""
    def read(text):
        match = re.fullmatch(pattern, text)
        if not match:
            raise ValueError(f"{form} is")
        return tuple(map(int, match.groups()))
    return read


def _word(*accepted):
    def read(text):
        if text not in accepted:
            raise ValueError(f"{', '.join(accepted[:-1])} or {accepted[-1]} is")
        return text
    return read


def _switch(text):
    return _word("on", "off")(text) == "on"


def _number(text):
    try:
        return float(text)
    except ValueError:
        raise ValueError("a number is") from None


def _integer(text):
    try:
        return int(text)
    except ValueError:
        raise ValueError("a whole number is") from None


def _tracks(text):
    pairs = [re.fullmatch(r"(\d+)-(\d+)", part) for part in text.split(",")]
    if not all(pairs):
        raise ValueError("FIRST-LAST,... is")
    return [tuple(map(int, pair.groups())) for pair in pairs]


def _single(value):
    """The fewest digits from which single precision, the library's, gives the same number again."""
    return str(np.float32(value))


def _on_off(on):
    return "on" if on else "off"


class _Row(NamedTuple):
    """A setting: its key in a file, its attribute of Camera, and its value as text."""

    key: str
    name: str
    read: Callable
    write: Callable = str


def _area_of(area):
    return Area(*_checks.integers("area", area, 4))


def _binning_of(binning):
    return _checks.integers("binning", (binning, binning) if isinstance(binning, numbers.Integral) else binning, 2)


def _trigger_text(mode):
    return TriggerMode.of(mode).name.lower().replace("_", "-")


_OF_RUN = ("mode", "frames", "interval")  # arguments of a run in Python

_ROWS = (
    _Row("mode", "mode", _word("single", "accumulate", "series", "continuous")),
    _Row("frames", "frames", _integer),
    _Row("interval", "interval", _number),
    _Row("accumulations", "accumulations", _integer),
    _Row("trigger", "trigger_mode", _word(*map(_trigger_text, TriggerMode)), _trigger_text),
    _Row("exposure", "exposure", _number, _single),
    _Row("cycle", "cycle_time", _number, _single),
    _Row("accumulation-cycle", "accumulation_cycle_time", _number, _single),
    _Row("overlap", "overlap", _switch, _on_off),
    _Row("bits", "bits", _integer),
    _Row("encoding", "encoding", str),
    _Row("area", "area", lambda text: Area(*_numbers(r"(\d+),(\d+),(\d+)x(\d+)", "LEFT,TOP,WIDTHxHEIGHT")(text)),
         lambda area: "{},{},{}x{}".format(*_area_of(area))),
    _Row("binning", "binning", _numbers(r"(\d+)x(\d+)", "HxV"), lambda binning: "{}x{}".format(*_binning_of(binning))),
    _Row("tracks", "tracks", _tracks, lambda tracks: ",".join(f"{first}-{last}" for first, last in tracks)),
    _Row("channel", "ad_channel", _integer),
    _Row("amplifier", "amplifier", _integer),
    _Row("speed", "readout_speed", _integer),
    _Row("gain", "gain", _integer),
    _Row("baseline-clamp", "baseline_clamp", _switch, _on_off),
    _Row("temperature", "target_temperature", _integer),
    _Row("fan", "fan", _word("full", "low", "off")),
)
KEYS = tuple(row.key for row in _ROWS if row.name not in _OF_RUN)
_BY_KEY = {row.key: row for row in _ROWS}
_BY_NAME = {row.name: row for row in _ROWS}


def _nearest(word, known):
    near = difflib.get_close_matches(word, known, 1)
    return f"; did you mean {near[0]!r}?" if near else f"; there are {', '.join(known)}"


def _check(settings):
    """Raises ValueError for a name that is no setting, and TypeError for what is no dictionary of texts."""
    if not isinstance(settings, Mapping):
        raise TypeError(f"settings are a dictionary, not {settings!r}")
    known = [*_BY_NAME, *_DICTIONARIES]
    for name in settings:
        if name not in known:
            raise ValueError(f"there is no setting {name!r}" + _nearest(str(name), known))
    for name in _DICTIONARIES:
        texts = settings.get(name, {})
        if not isinstance(texts, Mapping) or not all(isinstance(text, str) for item in texts.items() for text in item):
            raise TypeError(f"{name!r} is a dictionary of texts, not {texts!r}")


class StoredSettings:
    """The settings of Camera as a whole. Uses its session; see Camera."""

    @property
    def encoding(self) -> str:
        """How the camera encodes pixels: "Mono8", "Mono12", "Mono12Packed", "Mono16" or "Mono32". Some are not
        available with every gain. `bits` can be 8 with "Mono8" only. The camera makes sums of exposures with an
        encoding of its own choice."""
        return _features.text(self._core_handle(), "PixelEncoding")

    @encoding.setter
    def encoding(self, encoding: str) -> None:
        if not isinstance(encoding, str):
            raise TypeError(f"encoding is a text, not {encoding!r}")
        self._session.check_idle()
        _features.set_by_text(self._core_handle(), "PixelEncoding", encoding)

    def settings(self) -> Dict[str, object]:
        """What the camera is set to, under the names of its attributes, for apply() and save_settings(). Times are
        those in force. What the library does not report (gain, amplifier, channel, speed, overlap, fan) is there if it
        was set here. The target temperature is None while the cooler is off, `bits` is None for the default. "camera" has
        model, serial number and firmware; "features" has features of the feature library by their names."""
        steady = self.trigger_mode in _STEADY
        values = {
            "accumulations": self.accumulations,
            "trigger_mode": _trigger_text(self.trigger_mode),
            "exposure": None if self.trigger_mode is TriggerMode.EXTERNAL_EXPOSURE else self.exposure,
            "cycle_time": self.cycle_time if steady else None,
            "accumulation_cycle_time": self.accumulation_cycle_time if self.accumulations > 1 else None,
            "overlap": self.overlap, "encoding": self.encoding or None, "area": self.area, "binning": self.binning,
            "readout_speed": self.readout_speed, **self._gain_settings(),
            "baseline_clamp": self._if_there("baseline_clamp"), "fan": getattr(self, "_fan", None),
        }
        settings = {row.name: values[row.name] for row in _ROWS if values.get(row.name) is not None}
        settings["bits"] = self._bits
        cooler = self._if_there("cooler")
        if cooler is not None:
            settings["target_temperature"] = round(self.target_temperature) if cooler else None
        handle = self._core_handle()
        if _features.has(handle, _METADATA):
            settings["features"] = {_METADATA: _on_off(self.metadata)}
        texts = {key: _features.text(handle, feature) for key, feature in zip(
            _CAMERA_KEYS, ("CameraModel", "SerialNumber", "FirmwareVersion"))}
        return {**settings, "camera": {key: text for key, text in texts.items() if text}}

    def apply(self, settings: Dict[str, object]) -> None:
        """Sets all that is in `settings`, in an order in which no setting undoes another one. A target temperature
        switches the cooler on, None switches it off. "mode", "frames" and "interval" of a file describe a run and have no effect here; nor
        has the cycle time when triggers set it. Raises ValueError for a name that is no setting, before anything is
        set, and what the attributes raise: the settings before that one are then in force. Warns when the settings are
        of another model."""
        _check(settings)
        if "tracks" in settings:
            raise ValueError("tracks: a Camera reads areas only; take them with vxmcd acquire --settings")
        self._session.check_idle()
        self._warn_of_other_model(settings.get("camera", {}))
        values = {name: value for name, value in settings.items() if name not in _OF_RUN}
        if "cycle_time" in values and TriggerMode.of(values.get("trigger_mode", self.trigger_mode)) not in _STEADY:
            del values["cycle_time"]
        if "area" in values or "binning" in values:
            area, binning = values.pop("area", self.area), values.pop("binning", self.binning)
            self._set_image(_area_of(area or (1, 1, *self.sensor_size)), _binning_of(binning))
        for name in ("accumulations", "trigger_mode", "overlap", "amplifier", "ad_channel", "readout_speed", "gain",
                     "baseline_clamp", "encoding", "bits", "exposure", "cycle_time", "accumulation_cycle_time"):
            if name in values:
                setattr(self, name, values[name])
        if "target_temperature" in values:
            self._cool_to(values["target_temperature"])
        if "fan" in values:
            self.set_fan(values["fan"])
        for name, text in values.get("features", {}).items():
            if name == _METADATA:
                self._set_metadata(text)
            else:
                _features.set_by_text(self._core_handle(), name, text)

    def _cool_to(self, celsius):
        if celsius is not None:
            self.target_temperature = celsius
        elif not self.cooler:
            return
        self.cooler = celsius is not None

    def _set_metadata(self, text):
        try:
            on = _switch(text)
        except ValueError as error:
            raise ValueError(f"{_METADATA}: {text!r} is not accepted; {error}") from None
        if on != self.metadata:
            self.metadata = on

    def _check_bits(self):
        """Raises ValueError when the library cannot deliver as few bits as `bits` says."""
        if self.bits != 8:
            return
        if self.accumulations > 1:
            raise ValueError("8 bits are not enough for sums of exposures: set bits to None, 16 or 32")
        encoding = self.encoding
        if encoding not in ("", _EIGHT_BITS):
            raise ValueError(f"8 bits need the encoding {_EIGHT_BITS!r}, and the camera is set to {encoding!r}: set "
                             f"camera.encoding = {_EIGHT_BITS!r} if it has that, or bits to None")

    def count_lost_frames(self) -> Optional[int]:
        """Frames of the last run that the camera made and that never came; None when nobody counts them, as for simulated
        cameras."""
        return _features.integer(self._core_handle(), "FramesLost")

    def clock_frequency(self) -> Optional[int]:
        """Ticks of the camera's clock in a second; None when it does not say."""
        return _features.integer(self._core_handle(), "TimestampClockFrequency")

    def _core_handle(self):
        return self._session.read("GetSDK3Handle", ctypes.c_int)

    def _if_there(self, name):
        try:
            return getattr(self, name)
        except VxmcdError:  # the camera has none
            return None

    def _gain_settings(self):
        """The gain, or the channel and amplifier that have been chosen since."""
        if self.gain is not None and self._place_of(self.gain) == (self.ad_channel, self.amplifier):
            return {"gain": self.gain}
        return {"ad_channel": self.ad_channel, "amplifier": None if self.ad_channel else self.amplifier}

    def _warn_of_other_model(self, camera):
        model = camera.get("model", self.model)
        if model != self.model:
            warnings.warn(f"the settings are of a {model}, this camera is a {self.model}", stacklevel=3)


class _Entry(NamedTuple):
    section: str
    key: str
    value: str
    place: str  # "run.ini, line 3", for messages


def _entries(path: Path) -> List[_Entry]:
    with open(path, "rb") as file:
        data = file.read(_FILE_BYTES + 1)
    if len(data) > _FILE_BYTES:
        raise ValueError(f"{os.fspath(path)} is too large for a file of settings")
    entries, section, seen = [], "", {}
    for number, line in enumerate(data.removeprefix(codecs.BOM_UTF8).split(b"\n"), 1):
        place = f"{os.fspath(path)}, line {number}"
        line = _text_of(line, place)
        if not line or line[0] in ";#":
            continue
        if line[0] == "[" and line[-1] == "]":
            section = line[1:-1]
            if section not in ("Camera", "Settings", "Features"):
                raise ValueError(f"{place}: there is no section {line}; there are [Camera], [Settings] and [Features]")
            continue
        key, sign, value = (part.strip() for part in line.partition("="))
        if not sign or not key:
            raise ValueError(f"{place}: {line!r} is not accepted; KEY = VALUE is")
        if not section:
            raise ValueError(f"{place}: {key} stands before the first section, [Settings]")
        if (section, key) in seen:
            raise ValueError(f"{place}: {key} stands in line {seen[section, key]}, too")
        seen[section, key] = number
        entries.append(_Entry(section, key, value, place))
    return entries


def _text_of(line: bytes, place: str) -> str:
    try:
        text = line.decode().strip()
    except UnicodeDecodeError:
        text = "\0"
    if any(character < " " and character != "\t" for character in text):
        raise ValueError(f"{place}: is not text")
    return text


def load_settings(path: Path) -> Dict[str, object]:
    """Reads a file of settings, of save_settings() or of `vxmcd acquire --save-settings`, for Camera.apply(). Raises
    OSError when it cannot be read, and ValueError, with the line, when it is wrong."""
    settings, features, camera = {}, {}, {}
    for section, key, value, place in _entries(path):
        if section == "Features":
            features[key] = value
        elif section == "Camera":
            if key not in _CAMERA_KEYS:
                raise ValueError(f"{place}: there is no key {key!r}" + _nearest(key, _CAMERA_KEYS))
            camera[key] = value
        elif key not in _BY_KEY:
            raise ValueError(f"{place}: there is no setting {key!r}" + _nearest(key, list(_BY_KEY)))
        else:
            try:
                settings[_BY_KEY[key].name] = _BY_KEY[key].read(value)
            except ValueError as error:
                raise ValueError(f"{place}: {key}: {value!r} is not accepted; {error}") from None
    if settings.get("mode") == "accumulate" and "cycle_time" in settings:  # of the command line: between exposures
        if "accumulation_cycle_time" in settings:
            raise ValueError(f"{os.fspath(path)}: cycle is the same as accumulation-cycle in mode accumulate; leave out one "
                             "of them")
        settings["accumulation_cycle_time"] = settings.pop("cycle_time")
    return {**settings, **({"features": features} if features else {}), **({"camera": camera} if camera else {})}


def save_settings(path: Path, settings: Dict[str, object]) -> None:
    """Writes settings of Camera.settings() to a file, which load_settings() and `vxmcd acquire --settings` read. What is
    None is left out, and so is the cycle time where "interval" or "mode" of a run give it. An existing file is
    replaced."""
    _check(settings)
    if settings.get("interval") is not None or settings.get("mode") == "accumulate":
        settings = {name: value for name, value in settings.items() if name != "cycle_time"}
    lines = ["; Settings of a run, for vxmcd acquire --settings and for vxmcd.load_settings() in Python.",
             f"; Written by the Python package vxmcd {LIBRARY_VERSION}", "", "[Camera]"]
    lines += _lines(settings.get("camera", {}).items())
    lines += ["", "[Settings]"]
    lines += _lines((row.key, row.write(settings[row.name])) for row in _ROWS if settings.get(row.name) is not None)
    if settings.get("features"):
        lines += ["", "[Features]", *_lines(settings["features"].items())]
    with open(path, "w", encoding="utf-8") as file:
        file.write("\n".join(lines) + "\n")


def _lines(items) -> List[str]:
    items: List[Tuple[str, str]] = list(items)
    for key, value in items:
        if "\n" in f"{key}{value}" or str(value) != str(value).strip():
            raise ValueError(f"{key}: {value!r} cannot be stored in a line")
    return [f"{key} = {value}" for key, value in items]
