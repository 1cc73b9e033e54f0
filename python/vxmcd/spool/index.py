# SPDX-License-Identifier: MIT
"""Which images are on disk: spool_index.dat."""
from __future__ import annotations

from pathlib import Path
from typing import NamedTuple

import numpy as np

from .errors import SpoolFormatError
from .xxh3 import xxh3_64_of_triples

FILE_NAME = "spool_index.dat"
RECORD = np.dtype([("number", "<u8"), ("checksum", "<u8"), ("time", "<i8"), ("check", "<u8")])


class SpoolIndex(NamedTuple):
    """The records of an index in ascending order of image number, one for each image."""

    records: np.ndarray  # of RECORD
    rejected: int  # records that are none: torn, repeated, or of an image that cannot be
    rest: int  # bytes behind the last whole record


def read_index(directory: Path, images_expected: int) -> SpoolIndex:
    """Reads the index of a run; SpoolFormatError when there is none."""
    path = directory / FILE_NAME
    try:
        data = path.read_bytes()
    except OSError as error:
        raise SpoolFormatError(path, error.strerror or str(error)) from error
    rest = len(data) % RECORD.itemsize
    records = np.frombuffer(data, RECORD, len(data) // RECORD.itemsize)
    words = records.view("<u8").reshape(-1, 4)
    good = records[(xxh3_64_of_triples(words[:, :3]) == records["check"]) & (records["number"] < images_expected)]
    _, firsts = np.unique(good["number"], return_index=True)
    return SpoolIndex(good[firsts], len(records) - len(firsts), rest)

