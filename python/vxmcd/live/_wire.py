# SPDX-License-Identifier: MIT
"""The binary message of a frame: a header, then rows of pixels without padding, then the saturation map if a flag says so.

One table describes the header. Python's struct is made from it, and so is the module `wire.js` with which the page reads
it.
"""
from __future__ import annotations

import json
import struct
from typing import NamedTuple

PROTOCOL = 1
MAGIC = b"VXL1"


class _Field(NamedTuple):
    name: str
    kind: str  # of struct
    meaning: str


_FIELDS = (
    _Field("magic", "4s", "VXL1"),
    _Field("number", "I", "number of the image in its run, from 1; acknowledged with this"),
    _Field("ticks", "q", "the camera's clock at the start of the exposure, -1 when it is not known"),
    _Field("time", "d", "when the image was fetched, s since 1970"),
    _Field("width", "H", "pixels sent in a row"),
    _Field("height", "H", "rows sent"),
    _Field("x", "H", "column of the image where the first sent pixel begins, from 0"),
    _Field("y", "H", "its row"),
    _Field("step", "H", "a sent pixel is the mean of a block of this many columns and rows, smaller at the right and lower "
                        "edge of the image"),
    _Field("bytes", "B", "of a sent pixel: 2, or 1 for pixels that are stretched from low..high to 0..255"),
    _Field("flags", "B", "bits, see FLAGS"),
    _Field("low", "H", "value of the image that is 0 in a pixel of one byte"),
    _Field("high", "H", "value of the image that is 255 in a pixel of one byte"),
    _Field("value", "i", "of the image under the cursor, -1 when there is none"),
    _Field("since", "I", "frames of the run since the last one that this viewer was sent"),
    _Field("saturated", "I", "saturated pixels of the image"),
    _Field("pixels", "I", "pixels of the image"),
    _Field("imageWidth", "H", "columns of the image"),
    _Field("imageHeight", "H", "rows of the image"),
    _Field("saturation", "H", "value from which a pixel of the image counts as saturated"),
    _Field("reserved", "2s", "0"),
)

SATURATION_MAP = 1
RECORDING = 2
AREA_CHANGED = 4
FLAGS = {"saturationMap": SATURATION_MAP, "recording": RECORDING, "areaChanged": AREA_CHANGED}

HEADER = struct.Struct("<" + "".join(field.kind for field in _FIELDS))
HEADER_BYTES = HEADER.size
assert HEADER_BYTES == 64

_READERS = {"I": "getUint32", "i": "getInt32", "q": "getBigInt64", "d": "getFloat64", "H": "getUint16", "B": "getUint8"}


def offsets() -> dict:
    """Where each field begins, in bytes."""
    return {field.name: struct.calcsize("<" + "".join(before.kind for before in _FIELDS[:index]))
            for index, field in enumerate(_FIELDS)}


def pack(**values) -> bytes:
    """A header. Fields that are not given are 0."""
    unknown = values.keys() - {field.name for field in _FIELDS}
    if unknown:
        raise ValueError(f"a header has no {sorted(unknown)[0]}")
    given = {"magic": MAGIC, "reserved": b"", **values}
    return HEADER.pack(*(given.get(field.name, 0) for field in _FIELDS))


def unpack(data) -> dict:
    """The fields of a message that begins with a header."""
    values = dict(zip((field.name for field in _FIELDS), HEADER.unpack_from(data)))
    if values.pop("magic") != MAGIC:
        raise ValueError("this is no frame")
    del values["reserved"]
    return values


def javascript() -> str:
    """The module `wire.js`: readHeader(ArrayBuffer) returns the fields, ticks as a BigInt, or null for anything else."""
    places = offsets()
    lines = [f"    {field.name}: view.{_READERS[field.kind]}({places[field.name]}, true),  // {field.meaning}"
             for field in _FIELDS if field.kind in _READERS]
    magic = int.from_bytes(MAGIC, "big")
    return "\n".join([
        "// Made by vxmcd/live/_wire.py.",
        f"export const PROTOCOL = {PROTOCOL};",
        f"export const HEADER_BYTES = {HEADER_BYTES};",
        f"export const FLAGS = {json.dumps(FLAGS)};",
        "",
        "export function readHeader(buffer) {",
        "  const view = new DataView(buffer);",
        f"  if (view.byteLength < HEADER_BYTES || view.getUint32(0, false) !== {magic:#x}) return null;",
        "  return {", *lines, "  };",
        "}", ""])
