# SPDX-License-Identifier: MIT
"""Which images are on disk: the index of a run."""
from __future__ import annotations

import errno
import os
from pathlib import Path
from typing import NamedTuple

import numpy as np

from . import _format
from .regular_file import open_regular
from .xxh3 import xxh3_64_of_triples

RECORD = np.dtype(_format.INDEX_RECORD)
_BLOCK = 2**15  # records that are read at once
_SPARE = 2**15  # records that a run may have beyond those that it expects; what follows them is not read


class SpoolIndex(NamedTuple):
    """The records of an index in ascending order of image number, one for each image."""

    records: np.ndarray  # of RECORD
    rejected: int  # records that are none: torn, repeated, or of an image that cannot be
    rest: int  # bytes behind the last whole record


NO_INDEX = SpoolIndex(np.empty(0, RECORD), 0, 0)


def read_index(directory: Path, images_expected: int) -> SpoolIndex:
    """Reads the index of a run; SpoolFormatError when there is none."""
    whole = [np.empty(0, RECORD)]
    count = rest = 0
    block_bytes = _BLOCK * RECORD.itemsize
    with open_regular(directory / _format.INDEX_NAME) as file:
        blocks_left = (images_expected + _SPARE) // _BLOCK + 1
        position = 0
        while blocks_left > 0:
            hole = min((_next_data(file.fileno(), position) - position) // block_bytes, blocks_left)
            if hole > 0:  # zeros are no records
                count += hole * _BLOCK
                blocks_left -= hole
                position += hole * block_bytes
                continue
            data = os.pread(file.fileno(), block_bytes, position)
            records = np.frombuffer(data, RECORD, len(data) // RECORD.itemsize)
            whole.append(_whole_records(records, images_expected))
            count += len(records)
            rest = len(data) % RECORD.itemsize
            if len(records) < _BLOCK:
                break
            blocks_left -= 1
            position += block_bytes
    good = np.concatenate(whole)
    _, firsts = np.unique(good["number"], return_index=True)
    return SpoolIndex(good[firsts], count - len(firsts), rest)


def _next_data(file, position):
    """Where the hole of a file that begins at a position ends; the position where there is none."""
    try:
        return os.lseek(file, position, os.SEEK_DATA)
    except OSError as error:  # behind the last data, or a file system that does not know its holes
        return max(position, os.fstat(file).st_size) if error.errno == errno.ENXIO else position


def _whole_records(records, images_expected):
    words = records.view("<u8").reshape(-1, 4)
    if not words.any():  # of a file that is mostly a hole
        return np.empty(0, RECORD)
    return records[(xxh3_64_of_triples(words[:, :3]) == records["record_checksum"]) & (records["number"] < images_expected)]
