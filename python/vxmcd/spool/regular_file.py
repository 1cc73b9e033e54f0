# SPDX-License-Identifier: MIT
"""Opening what has to be a plain file."""
from __future__ import annotations

import contextlib
import os
import stat
from pathlib import Path
from typing import BinaryIO, Iterator

from .errors import SpoolFormatError


def _open_at_once(name, flags):
    return os.open(name, flags | os.O_NONBLOCK)


@contextlib.contextmanager
def open_regular(path: Path) -> Iterator[BinaryIO]:
    """A regular file, open for reading in the block; a pipe or a device is refused and not waited for. What fails here
    or in the block becomes a SpoolFormatError."""
    try:
        with open(path, "rb", opener=_open_at_once) as file:
            if not stat.S_ISREG(os.fstat(file.fileno()).st_mode):
                raise SpoolFormatError(path, "is not a regular file")
            yield file
    except OSError as error:
        raise SpoolFormatError(path, error.strerror or str(error)) from error
