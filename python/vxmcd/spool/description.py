# SPDX-License-Identifier: MIT
"""What a spooled run says about itself: acquisitionmetadata.ini."""
from __future__ import annotations

import configparser
import dataclasses
import io
from pathlib import Path
from typing import Optional

import numpy as np

from . import _format
from .errors import SpoolFormatError
from .pixels import row_bytes
from .regular_file import open_regular

MAX_IMAGES = 2**31 - 1
_MAX_BYTES = 2**20


def _switch(text):
    return _format.SWITCHES[text]


def _time(text):
    return np.datetime64(text[:-1] if text.endswith("Z") else text, "ns")


def _positive(text):
    value = int(text)
    if value < 1:
        raise ValueError("must be 1 or more")
    return value


def _count(text):
    value = int(text)
    if not 0 <= value <= MAX_IMAGES:
        raise ValueError(f"must be 0 to {MAX_IMAGES}")
    return value


def _state(text):
    if text not in _format.STATES:
        raise ValueError(f"must be one of {', '.join(_format.STATES)}")
    return text


def _key(key, convert=str):
    """A field that must be there."""
    return dataclasses.field(metadata={"key": (key, convert)})


def _maybe(key, convert=str):
    """A field that is None when the file does not have it."""
    return dataclasses.field(default=None, metadata={"key": (key, convert)})


@dataclasses.dataclass(frozen=True, repr=False)
class RunDescription:
    """How a run was taken. Times are seconds, rates Hz, `image_size` and `stride` bytes, temperatures degrees Celsius, sizes of
    pixels um; columns and rows of the sensor count from 1. What the camera did not report is None."""

    images_per_file: int = _key("ImagesPerFile", _positive)
    image_size: int = _key("ImageSize", _positive)
    format: int = _key("Format", int)
    state: str = _key("State", _state)
    images_expected: int = _key("ImagesExpected", _count)
    images_written: int = _key("ImagesWritten", _count)
    width: int = _key("Width", _positive)
    height: int = _key("Height", _positive)
    stride: int = _key("Stride", _positive)
    pixel_encoding: str = _key("PixelEncoding")
    completed: Optional[bool] = _maybe("Completed", _switch)
    method: Optional[int] = _maybe("Method", int)
    library: Optional[str] = _maybe("Library")
    start_time: Optional[np.datetime64] = _maybe("StartTime", _time)
    first_frame_time: Optional[np.datetime64] = _maybe("FirstFrameTime", _time)
    first_frame_tick: Optional[int] = _maybe("FirstFrameTick", int)
    timestamp_frequency: Optional[int] = _maybe("TimestampFrequency", int)
    failure: Optional[str] = _maybe("Failure")
    metadata: Optional[bool] = _maybe("Metadata", _switch)
    left: Optional[int] = _maybe("Left", int)
    top: Optional[int] = _maybe("Top", int)
    hbin: Optional[int] = _maybe("HBin", int)
    vbin: Optional[int] = _maybe("VBin", int)
    exposure_time: Optional[float] = _maybe("ExposureTime", float)
    frame_rate: Optional[float] = _maybe("FrameRate", float)
    accumulate_count: Optional[int] = _maybe("AccumulateCount", int)
    trigger_mode: Optional[str] = _maybe("TriggerMode")
    readout_time: Optional[float] = _maybe("ReadoutTime", float)
    pixel_readout_rate: Optional[str] = _maybe("PixelReadoutRate")
    pre_amp_gain: Optional[str] = _maybe("PreAmpGain")
    sensor_cooling: Optional[bool] = _maybe("SensorCooling", _switch)
    sensor_temperature: Optional[float] = _maybe("SensorTemperature", float)
    target_sensor_temperature: Optional[float] = _maybe("TargetSensorTemperature", float)
    model: Optional[str] = _maybe("Model")
    serial_number: Optional[str] = _maybe("SerialNumber")
    pixel_width: Optional[float] = _maybe("PixelWidth", float)
    pixel_height: Optional[float] = _maybe("PixelHeight", float)

    def __repr__(self) -> str:
        values = {field.name: getattr(self, field.name) for field in dataclasses.fields(self)}
        known = [f"{name}={value}" for name, value in values.items() if value is not None]
        return "RunDescription(" + ",\n               ".join(known) + ")"

    @classmethod
    def read(cls, directory: Path) -> "RunDescription":
        """Reads the description of the run in a directory; SpoolFormatError names what is missing or wrong."""
        path = directory / _format.DESCRIPTION_NAME
        parser = configparser.ConfigParser(interpolation=None, strict=False, delimiters=("=",))
        try:
            parser.read_file(_text(path))
        except configparser.Error as error:
            raise SpoolFormatError(path, f"is no INI file: {error.message}") from error
        description = cls(**{field.name: _value(path, parser, field) for field in dataclasses.fields(cls)})
        description._check(path)
        return description

    def _check(self, path):
        if self.format != _format.VERSION:
            raise SpoolFormatError(path, f"[run] Format is {self.format}, this package reads {_format.VERSION}")
        try:
            row = row_bytes(self.pixel_encoding, self.width)
        except ValueError as error:
            raise SpoolFormatError(path, f"[image] PixelEncoding: {error}") from error
        if self.stride < row:
            raise SpoolFormatError(path, f"[image] Stride is {self.stride}, but a row has {row} bytes")
        if (self.height - 1) * self.stride + row > self.image_size:
            raise SpoolFormatError(path, f"[data] ImageSize is {self.image_size}, too little for {self.height} rows")


def _text(path):
    with open_regular(path) as file:
        data = file.read(_MAX_BYTES + 1)
    if len(data) > _MAX_BYTES:
        raise SpoolFormatError(path, f"has more than {_MAX_BYTES} bytes")
    return io.TextIOWrapper(io.BytesIO(data), "utf-8-sig", errors="replace")


def _value(path, parser, field):
    key, convert = field.metadata["key"]
    section = _format.SECTIONS[key]
    text = parser.get(section, key, fallback=None)
    if text is None:
        if field.default is dataclasses.MISSING:
            raise SpoolFormatError(path, f"has no [{section}] {key}")
        return None
    try:
        return convert(text)
    except (ValueError, KeyError) as error:
        raise SpoolFormatError(path, f"[{section}] {key}: '{text}' is not understood: {error}") from error
