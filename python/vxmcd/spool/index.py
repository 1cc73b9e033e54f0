# SPDX-License-Identifier: MIT
"""Which images are on disk: spool_index.dat."""
from __future__ import annotations

from pathlib import Path
from typing import NamedTuple

import numpy as np

from .regular_file import open_regular
from .xxh3 import xxh3_64_of_triples

FILE_NAME = "spool_index.dat"
RECORD = np.dtype([("number", "<u8"), ("checksum", "<u8"), ("time", "<i8"), ("check", "<u8")])
_BLOCK = 2**15  # records that are read at once
_SPARE = 2**15  # records that a run may have above those that it expects; what lies behind them is not read


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
    with open_regular(directory / FILE_NAME) as file:
        for _ in range((images_expected + _SPARE) // _BLOCK + 1):
            data = file.read(_BLOCK * RECORD.itemsize)
            records = np.frombuffer(data, RECORD, len(data) // RECORD.itemsize)
            whole.append(_whole_records(records, images_expected))
            count += len(records)
            rest = len(data) % RECORD.itemsize
            if len(records) < _BLOCK:
                break
    good = np.concatenate(whole)
    _, firsts = np.unique(good["number"], return_index=True)
    return SpoolIndex(good[firsts], count - len(firsts), rest)


def _whole_records(records, images_expected):
    words = records.view("<u8").reshape(-1, 4)
    if not words.any():  # of a file that is mostly a hole
        return np.empty(0, RECORD)
    return records[(xxh3_64_of_triples(words[:, :3]) == records["check"]) & (records["number"] < images_expected)]
