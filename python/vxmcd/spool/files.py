# SPDX-License-Identifier: MIT
"""The files with the images."""
from __future__ import annotations

import os
import re
from collections import OrderedDict
from pathlib import Path
from typing import List

import numpy as np

from . import _format
from .errors import SpoolFormatError
from .regular_file import open_regular

_MAX_OPEN = 8
_NAME = re.compile(_format.IMAGE_FILE_PATTERN)


class SpoolFiles:
    """Maps the files of a run into memory when they are asked for and keeps the few used last. For one thread."""

    def __init__(self, directory: Path, images_per_file: int, image_size: int):
        self._directory = directory
        self._images_per_file = images_per_file
        self._image_size = image_size
        self._open: "OrderedDict[int, np.ndarray]" = OrderedDict()

    def file_of(self, number: int) -> int:
        return number // self._images_per_file

    def numbers_on_disk(self) -> List[int]:
        """The files that are there."""
        names = (_NAME.fullmatch(path.name) for path in self._directory.iterdir())
        return sorted(int(name.group(1)) for name in names if name)

    def images_in(self, file: int) -> int:
        """How many images the length of a file has room for."""
        return min(self._map(file).size // self._image_size, self._images_per_file)

    def frame(self, number: int) -> np.ndarray:
        """The bytes of an image, read-only, mapped as long as there are references to them."""
        return self.frames(number, 1)

    def frames(self, first: int, count: int) -> np.ndarray:
        """The bytes of images that follow each other in one file."""
        file = self.file_of(first)
        start = (first % self._images_per_file) * self._image_size
        data = self._map(file)
        if data.size < start + count * self._image_size:
            raise SpoolFormatError(self._path(file), f"has {data.size} bytes, image {first + count - 1} ends at "
                                                     f"{start + count * self._image_size}")
        return data[start:start + count * self._image_size]

    def read(self, first: int, count: int) -> np.ndarray:
        """As frames(), but a copy, for places that may be holes: on a full disk in memory (tmpfs), to look at a hole that is
        mapped ends the program."""
        path = self._path(self.file_of(first))
        data = np.empty(count * self._image_size, np.uint8)
        with open_regular(path) as opened:
            opened.seek((first % self._images_per_file) * self._image_size)
            if opened.readinto(data) < data.size:
                raise SpoolFormatError(path, f"ends before image {first + count - 1} does")
        return data

    def close(self) -> None:
        """Drops its references to all files. Arrays that were returned keep theirs."""
        self._open.clear()

    def _path(self, file):
        return self._directory / _format.IMAGE_FILE_NAME.format(file)

    def _map(self, file):
        if file in self._open:
            self._open.move_to_end(file)
            return self._open[file]
        path = self._path(file)
        with open_regular(path) as opened:
            is_empty = os.fstat(opened.fileno()).st_size == 0
            data = np.zeros(0, np.uint8) if is_empty else np.asarray(np.memmap(opened, np.uint8, "r"))
        while len(self._open) >= _MAX_OPEN:
            self._open.popitem(last=False)
        self._open[file] = data
        return data
