# SPDX-License-Identifier: MIT
"""Reading images without mapping their files."""
from __future__ import annotations

import contextlib
import dataclasses
import itertools
import os
from pathlib import Path
from typing import Iterator, List, NamedTuple, Optional, Sequence, Tuple

import numpy as np

from . import _format, chunks, pixels
from .checksum import checksum_function
from .description import RunDescription
from .errors import DamagedImageError, SpoolFormatError
from .regular_file import open_regular
from .stamp import RunStamp

_MAX_IMAGES = 512  # read by one call: each is two of at most 1024 buffers
_MAX_GAP = 2**12  # bytes between images that are read with them rather than passed over by another call


class _Stretch(NamedTuple):
    """Images that follow each other in one file."""

    file: int
    first: int
    place: int  # of the first one among the images that were asked for
    count: int


class PositionedReader:
    """Reads images of a run, or the same rows of each, into arrays with positioned reads. It is small when pickled and goes
    with each task: processes that work on long runs have limits for their memory, to which pages of mapped files would count.

    It has no open files between calls. For several threads."""

    def __init__(self, directory: Path, description: RunDescription, stamp: RunStamp, rows: Optional[range] = None):
        self.directory = directory
        self._description = description
        self._stamp = stamp
        self._begin = rows.start * description.stride if rows else 0
        height = len(rows) if rows else description.height
        self._row = pixels.row_bytes(description.pixel_encoding, description.width)
        size = (height - 1) * description.stride + self._row
        self._piece = dataclasses.replace(description, height=height, image_size=size)  # what is read of a frame

    def of_rows(self, rows: range) -> "PositionedReader":
        """Reads these rows of each image."""
        return PositionedReader(self.directory, self._description, self._stamp, rows)

    def __dask_tokenize__(self):
        return str(self.directory), tuple(self._stamp), self._begin, self._piece.height

    @property
    def shape(self) -> Tuple[int, int]:
        """Rows and columns of an image."""
        return self._piece.height, self._piece.width

    @property
    def dtype(self) -> np.dtype:
        """The type of a pixel."""
        return pixels.pixel_type(self._piece.pixel_encoding)

    @property
    def image_bytes(self) -> int:
        """Bytes of an image, as an array."""
        return self._piece.height * self._piece.width * self.dtype.itemsize

    def new_array(self, images: int) -> np.ndarray:
        return np.empty((images, *self.shape), self.dtype)

    @contextlib.contextmanager
    def unchanged(self) -> Iterator[None]:
        """Reading in the block is of the run that was opened, else SpoolError. It looks at the end, too: a run that is replaced
        is removed first, so that what was read until then is of the run that is still there."""
        self._stamp.check(self.directory)
        yield
        self._stamp.check(self.directory)

    def read(self, numbers: Sequence[int], out: np.ndarray, checksums: Optional[np.ndarray] = None,
             first: Optional[int] = None) -> None:
        """Writes the images of ascending numbers to `out` (images, rows, columns, contiguous): one behind the other or, with
        `first`, image n to the place n - first. checksums: of the frames, which are compared; DamagedImageError."""
        damaged: List[int] = []
        for file, stretch in self._opened(numbers):
            place = stretch.place if first is None else stretch.first - first
            images = out[place:place + stretch.count]
            if checksums is not None:
                expected = checksums[stretch.place:stretch.place + stretch.count]
                damaged += self._read_checked(file, stretch, images, expected)
            elif self._piece.stride == self._row and self._piece.pixel_encoding != pixels.PACKED:
                self._read_directly(file, stretch, images)
            else:
                self._read_decoded(file, stretch, images)
        if damaged:
            raise DamagedImageError(damaged, self.directory)

    def ticks(self, numbers: Sequence[int]) -> np.ndarray:
        """The camera's clock at each image, -1 for one without."""
        end = self._begin + self._piece.image_size
        metadata = np.empty(self._description.image_size - end, np.uint8)
        ticks = []
        for file, stretch in self._opened(numbers):
            for number in range(stretch.first, stretch.first + stretch.count):
                self._fill(file, [metadata], number, end)
                tick = chunks.timestamp(metadata)
                ticks.append(-1 if tick is None else tick)
        return np.array(ticks, np.int64)

    def _opened(self, numbers) -> Iterator[Tuple[int, _Stretch]]:
        for number, stretches in itertools.groupby(self._stretches(numbers), key=lambda stretch: stretch.file):
            with open_regular(self._path(number)) as file:
                yield from ((file.fileno(), stretch) for stretch in stretches)

    def _stretches(self, numbers) -> Iterator[_Stretch]:
        numbers = np.asarray(numbers, np.int64)
        files = numbers // self._description.images_per_file
        breaks = np.flatnonzero((np.diff(numbers) != 1) | (np.diff(files) != 0)) + 1
        for start, stop in zip([0, *breaks], [*breaks, numbers.size]):
            if start < stop:
                yield _Stretch(int(files[start]), int(numbers[start]), int(start), int(stop - start))

    def _path(self, file):
        return self.directory / _format.IMAGE_FILE_NAME.format(file)

    def _read_directly(self, file, stretch, images):
        """To where the pixels belong; what is between them goes to a place of its own."""
        gap = np.empty(self._description.image_size - self._piece.image_size, np.uint8)
        step = _MAX_IMAGES if gap.size <= _MAX_GAP else 1
        for start in range(0, stretch.count, step):
            buffers = []
            for image in images[start:start + step]:
                buffers += [_bytes(image), gap]
            self._fill(file, buffers[:-1], stretch.first + start, self._begin)

    def _read_decoded(self, file, stretch, images):
        piece = np.empty(self._piece.image_size, np.uint8)
        for place, image in enumerate(images):
            self._fill(file, [piece], stretch.first + place, self._begin)
            pixels.decode(piece, self._piece, image)

    def _read_checked(self, file, stretch, images, checksums):
        """By way of whole frames; the numbers of those that are damaged."""
        damaged = []
        frame = np.empty(self._description.image_size, np.uint8)
        for place, image in enumerate(images):
            self._fill(file, [frame], stretch.first + place, 0)
            if checksum_function()(frame) != int(checksums[place]):
                damaged.append(stretch.first + place)
            pixels.decode(frame[self._begin:self._begin + self._piece.image_size], self._piece, image)
        return damaged

    def _fill(self, file, buffers, number, byte):
        """Fills arrays of bytes, one after the other, with what begins at a byte of an image."""
        begin = number % self._description.images_per_file * self._description.image_size
        offset = begin + byte
        buffers = [buffer for buffer in buffers if buffer.size]
        while buffers:
            got = os.preadv(file, buffers, offset)
            if got == 0:
                number += (offset - begin) // self._description.image_size
                raise SpoolFormatError(self._path(number // self._description.images_per_file),
                                       f"ends before image {number} does")
            offset += got
            while buffers and got >= buffers[0].size:
                got -= buffers.pop(0).size
            if got:
                buffers[0] = buffers[0][got:]


def _bytes(image):
    return image.reshape(-1).view(np.uint8)
