# SPDX-License-Identifier: MIT
"""The metadata chunks at the end of a frame."""
from __future__ import annotations

import struct
from typing import Optional

import numpy as np

from ._format import CHUNK_FIELD_BYTES, END_CHUNK, TIMESTAMP_CHUNK

_TRAILER = 2 * CHUNK_FIELD_BYTES


def find_chunk(frame: np.ndarray, identifier: int) -> Optional[bytes]:
    """The data of a chunk, None when the frame does not have it. A chunk is its data, its identifier and its length (of
    data and identifier); chunks are read from the end of the frame backwards, identifier 0 ends them."""
    end = frame.size
    while end >= _TRAILER:
        cid, length = struct.unpack("<II", frame[end - _TRAILER:end].tobytes())
        start = end - CHUNK_FIELD_BYTES - length
        if start < 0:  # other lengths are not checked
            return None
        if cid == identifier:
            return frame[start:end - _TRAILER].tobytes()
        if cid == END_CHUNK:
            return None
        end = start
    return None


def timestamp(frame: np.ndarray) -> Optional[int]:
    """The camera's clock in ticks at the start of the exposure, None without a timestamp."""
    data = find_chunk(frame, TIMESTAMP_CHUNK)
    return struct.unpack("<q", data[:8])[0] if data is not None and len(data) >= 8 else None
