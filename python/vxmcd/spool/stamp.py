# SPDX-License-Identifier: MIT
"""Which run a directory has: two processes that look at it may see different ones."""
from __future__ import annotations

import socket
from pathlib import Path
from typing import NamedTuple, Optional

from . import _format
from .checksum import checksum_function
from .errors import SpoolError, SpoolFormatError
from .regular_file import open_regular

_MAX_BYTES = 2**20  # a description is not longer
_INDEX_BYTES = 4096  # a hundred checksums identify the images


class RunStamp(NamedTuple):
    """The content of a run's description and the first records of its index. Sizes and times of files would tell apart
    copies of one run, which workers may have on their own disks."""

    description: int
    index_bytes: int
    index: int

    @classmethod
    def of(cls, directory: Path, index_bytes: Optional[int] = None) -> "RunStamp":
        """Looks at a directory; SpoolFormatError without a description. index_bytes: of an earlier stamp to compare with, since
        the index of a run that is going on grows."""
        limit = _INDEX_BYTES if index_bytes is None else index_bytes
        index = directory / _format.INDEX_NAME
        description = _start(directory / _format.DESCRIPTION_NAME, _MAX_BYTES)
        records = _start(index, limit) if limit and index.is_file() else b""
        return cls(checksum_function()(description), len(records), checksum_function()(records))

    def check(self, directory: Path) -> None:
        """SpoolError when a directory does not have this run."""
        try:
            stamp = RunStamp.of(directory, self.index_bytes)
        except SpoolFormatError as error:
            raise SpoolError(f"{error} (on {socket.gethostname()})") from error
        if stamp != self:
            raise SpoolError(f"{directory}: the run was replaced or has ended since it was opened; open it again "
                             f"(on {socket.gethostname()})")


def _start(path, size):
    with open_regular(path) as file:
        return file.read(size)
