# SPDX-License-Identifier: MIT
"""Pixels of a camera's frame as arrays."""
from __future__ import annotations

import numpy as np

from ._format import PACKED, PIXEL_TYPES


def pixel_type(encoding: str) -> np.dtype:
    """What a pixel of this encoding becomes."""
    return np.dtype(PIXEL_TYPES[encoding])


def row_bytes(encoding: str, width: int) -> int:
    """Bytes from the first to the last pixel of a row; ValueError for an unknown encoding."""
    if encoding == PACKED:  # two pixels in three bytes
        return width // 2 * 3 + width % 2 * 2
    if encoding not in PIXEL_TYPES:
        raise ValueError(f"'{encoding}' is not known: none of {', '.join(PIXEL_TYPES)}")
    return width * pixel_type(encoding).itemsize


def view(frames: np.ndarray, description) -> np.ndarray:
    """Whole-pixel frames, given as bytes one `image_size` behind the other, without a copy: (frames, rows, columns)."""
    kind = pixel_type(description.pixel_encoding)
    count = frames.size // description.image_size
    return np.ndarray((count, description.height, description.width), kind, frames,
                      strides=(description.image_size, description.stride, kind.itemsize))


def _packed_row_groups(frame, description):
    rows = np.ndarray((description.height, row_bytes(PACKED, description.width)), np.uint8, frame,
                      strides=(description.stride, 1))
    return rows[:, 0::3].astype(np.uint16), rows[:, 1::3].astype(np.uint16), rows[:, 2::3].astype(np.uint16)


def decode(frame: np.ndarray, description, out: np.ndarray) -> None:
    """Writes the pixels of one frame, given as bytes, to an array of rows."""
    if description.pixel_encoding != PACKED:
        out[...] = view(frame, description)[0]
        return
    first, shared, second = _packed_row_groups(frame, description)
    out[:, 0::2] = first << 4 | (shared & 15)
    out[:, 1::2] = second << 4 | shared[:, :second.shape[1]] >> 4
