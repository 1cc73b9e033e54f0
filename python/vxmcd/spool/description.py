# SPDX-License-Identifier: MIT
"""What a spooled run says about itself: acquisitionmetadata.ini."""
from __future__ import annotations

import configparser
import dataclasses
import io
from pathlib import Path
from typing import Optional

import numpy as np

from .errors import SpoolFormatError
from .pixels import row_bytes
from .regular_file import open_regular

FILE_NAME = "acquisitionmetadata.ini"
FORMAT = 1
STATES = ("recording", "complete", "aborted", "failed")
MOST_IMAGES = 2**31 - 1
_MOST_BYTES = 2**20


def _switch(text):
    return {"true": True, "false": False}[text]


def _time(text):
    return np.datetime64(text[:-1] if text.endswith("Z") else text, "ns")


def _positive(text):
    value = int(text)
    if value < 1:
        raise ValueError("must be 1 or more")
    return value


def _count(text):
    value = int(text)
    if not 0 <= value <= MOST_IMAGES:
        raise ValueError(f"must be 0 to {MOST_IMAGES}")
    return value


def _state(text):
    if text not in STATES:
        raise ValueError(f"must be one of {', '.join(STATES)}")
    return text


def _key(section, key, convert=str):
    """A field that must be there."""
    return dataclasses.field(metadata={"key": (section, key, convert)})


def _maybe(section, key, convert=str):
    """A field that is None when the file does not have it."""
    return dataclasses.field(default=None, metadata={"key": (section, key, convert)})


@dataclasses.dataclass(frozen=True)
class RunDescription:
    """How a run was taken. Times are seconds, rates Hz, `image_size` and `stride` bytes; columns and rows of the sensor
    count from 1. What the camera could not tell is None."""

    images_per_file: int = _key("multiimage", "ImagesPerFile", _positive)
    image_size: int = _key("data", "ImageSize", _positive)
    format: int = _key("run", "Format", int)
    state: str = _key("run", "State", _state)
    images_expected: int = _key("run", "ImagesExpected", _count)
    images_written: int = _key("run", "ImagesWritten", _count)
    width: int = _key("image", "Width", _positive)
    height: int = _key("image", "Height", _positive)
    stride: int = _key("image", "Stride", _positive)
    pixel_encoding: str = _key("image", "PixelEncoding")
    completed: Optional[bool] = _maybe("run", "Completed", _switch)
    method: Optional[int] = _maybe("run", "Method", int)
    library: Optional[str] = _maybe("run", "Library")
    start_time: Optional[np.datetime64] = _maybe("run", "StartTime", _time)
    first_frame_time: Optional[np.datetime64] = _maybe("run", "FirstFrameTime", _time)
    first_frame_tick: Optional[int] = _maybe("run", "FirstFrameTick", int)
    timestamp_frequency: Optional[int] = _maybe("run", "TimestampFrequency", int)
    failure: Optional[str] = _maybe("run", "Failure")
    metadata: Optional[bool] = _maybe("image", "Metadata", _switch)
    left: Optional[int] = _maybe("image", "Left", int)
    top: Optional[int] = _maybe("image", "Top", int)
    hbin: Optional[int] = _maybe("image", "HBin", int)
    vbin: Optional[int] = _maybe("image", "VBin", int)
    exposure_time: Optional[float] = _maybe("acquisition", "ExposureTime", float)
    frame_rate: Optional[float] = _maybe("acquisition", "FrameRate", float)
    accumulate_count: Optional[int] = _maybe("acquisition", "AccumulateCount", int)
    trigger_mode: Optional[str] = _maybe("acquisition", "TriggerMode")
    model: Optional[str] = _maybe("camera", "Model")
    serial_number: Optional[str] = _maybe("camera", "SerialNumber")

    @classmethod
    def read(cls, directory: Path) -> "RunDescription":
        """Reads the description of the run in a directory; SpoolFormatError names what is missing or wrong."""
        path = directory / FILE_NAME
        parser = configparser.ConfigParser(interpolation=None, strict=False, delimiters=("=",))
        try:
            parser.read_file(_text(path))
        except configparser.Error as error:
            raise SpoolFormatError(path, f"is no INI file: {error.message}") from error
        description = cls(**{field.name: _value(path, parser, field) for field in dataclasses.fields(cls)})
        description._check(path)
        return description

    def _check(self, path):
        if self.format != FORMAT:
            raise SpoolFormatError(path, f"[run] Format is {self.format}, this package reads {FORMAT}")
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
        data = file.read(_MOST_BYTES + 1)
    if len(data) > _MOST_BYTES:
        raise SpoolFormatError(path, f"has more than {_MOST_BYTES} bytes")
    return io.TextIOWrapper(io.BytesIO(data), "utf-8-sig", errors="replace")


def _value(path, parser, field):
    section, key, convert = field.metadata["key"]
    text = parser.get(section, key, fallback=None)
    if text is None:
        if field.default is dataclasses.MISSING:
            raise SpoolFormatError(path, f"has no [{section}] {key}")
        return None
    try:
        return convert(text)
    except (ValueError, KeyError) as error:
        raise SpoolFormatError(path, f"[{section}] {key}: '{text}' is not understood: {error}") from error
