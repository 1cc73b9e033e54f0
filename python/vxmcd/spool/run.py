# SPDX-License-Identifier: MIT
"""A spooled run as a sequence of images."""
from __future__ import annotations

import operator
import os
from pathlib import Path
from typing import Iterator, List, Optional, Tuple, Union

import numpy as np

from . import chunks, pixels
from ._format import INDEX_NAME
from .checksum import checksum_function
from .description import RunDescription
from .errors import DamagedImageError, MissingImageError, SpoolError, SpoolFormatError
from .files import SpoolFiles
from .index import NO_INDEX, read_index
from .number_gaps import NumberGaps
from .positioned import PositionedReader
from .stamp import RunStamp

_SCAN_BYTES = 2**22  # searched at a time when it is not known which images are there


class SpoolRun:
    """The images of a spooled run, by their number from 0. Nothing is read before it is asked for, except the index.

    A run that has been written to its end (complete, aborted or failed), with an index in order, opens as it is.
    `salvage=True` takes what can be had of others: of a run that was killed or is still going on, with a damaged index or
    damaged images. It leaves out images whose checksum does not fit, and lists in `unrecorded` those that are not all zeros
    and have no record: they may be torn, or whole behind an index that a power failure has cut short. `keep_unrecorded=True`
    takes them too; when the index is lost or has no record at all they are taken anyway. It is not known whether they are
    whole, and `is_checked` is then False. `vxmcd convert --salvage` does the same.

    verify: compare every image with its checksum when opening, which reads all of them. Damaged images raise
    DamagedImageError, with salvage they are left out and listed in `damaged`. Without a value it is what `salvage` is.

    Errors are SpoolError and its kinds. For one thread at a time.
    """

    def __init__(self, path: Union[str, "os.PathLike[str]"], salvage: bool = False, verify: Optional[bool] = None,
                 keep_unrecorded: bool = False):
        if keep_unrecorded and not salvage:
            raise ValueError("keep_unrecorded needs salvage=True")
        self._open(Path(path), salvage)
        recorded = self.numbers
        if salvage if verify is None else verify:
            self._leave_out_damaged(salvage)
        if salvage:
            found = np.setdiff1d(self._nonzero_images(), recorded)
            if keep_unrecorded or not recorded.size:
                self.numbers = np.union1d(self.numbers, found)
            else:
                self.unrecorded = found

    def _open(self, path, salvage):
        """Reads description and index, and no image."""
        self.path = path
        self._directory = Path(os.path.abspath(path))  # also after the program has changed to another one
        self._salvage = salvage
        self._stamp = RunStamp.of(path)  # first, so that a run that is replaced meanwhile has another one
        self.description = RunDescription.read(path)
        self._files = SpoolFiles(self._directory, self.description.images_per_file, self.description.image_size)
        self.damaged: List[int] = []
        self.unrecorded = np.empty(0, np.int64)
        if self.state == "recording" and not salvage:
            raise SpoolError(f"{path}: the run was killed or is still going on; salvage=True gives what is there")
        if salvage and not (path / INDEX_NAME).is_file():
            index = NO_INDEX
        else:
            index = read_index(path, self.description.images_expected)
        self._records = index.records
        self.numbers = index.records["number"].astype(np.int64)
        if not salvage:
            self._check_index(index)

    def __reduce__(self):
        """By its path: the run is opened again, in another process too, and has to be the same one. Images are not checked
        again; what salvage found goes with it."""
        found = (self.numbers, self.damaged, self.unrecorded) if self._salvage else None
        return _open_again, (str(self._directory), self._stamp, found)

    @property
    def is_checked(self) -> bool:
        """Whether every image of `numbers` has a record with its checksum."""
        return self._records.size == self.numbers.size

    @property
    def state(self) -> str:
        """"recording" (also of a killed run), "complete", "aborted" or "failed"."""
        return self.description.state

    @property
    def missing(self) -> NumberGaps:
        """The numbers of the series that are not there, as a sequence; `missing.gaps()` has them as ranges."""
        return NumberGaps(range(self.description.images_expected), self.numbers)

    @property
    def shape(self) -> Tuple[int, int]:
        """Rows and columns of an image."""
        return self.description.height, self.description.width

    @property
    def dtype(self) -> np.dtype:
        """The type of a pixel."""
        return pixels.pixel_type(self.description.pixel_encoding)

    def __len__(self) -> int:
        """One more than the highest number that is there. Below it, numbers may be missing."""
        return int(self.numbers[-1]) + 1 if self.numbers.size else 0

    def __contains__(self, number: int) -> bool:
        place = np.searchsorted(self.numbers, number)
        return bool(place < self.numbers.size and self.numbers[place] == number)

    def __getitem__(self, number: Union[int, slice]) -> np.ndarray:
        """An image as a separate array; of a slice all its images, (images, rows, columns)."""
        if isinstance(number, slice):
            return self._stack(range(*number.indices(len(self))))
        number = self._number(number)
        return self._stack(range(number, number + 1))[0]

    def __iter__(self) -> Iterator[np.ndarray]:
        """The images 0 to len - 1; a missing one raises MissingImageError (`numbers` has those that are there)."""
        return (self[number] for number in range(len(self)))

    def array(self) -> np.ndarray:
        """All images 0 to len - 1, (images, rows, columns). A read-only view of the file, without a copy, when there is
        one file and its pixels are whole bytes, else a copy."""
        count = len(self)
        if count and self._files.file_of(count - 1) == 0 and self.description.pixel_encoding != pixels.PACKED:
            self._check_present(range(count))
            return pixels.view(self._files.frames(0, count), self.description)
        return self._stack(range(count))

    def __array__(self, dtype=None, copy=None) -> np.ndarray:
        """What array() returns: numpy.asarray(run)."""
        images = self.array()
        return np.array(images, dtype) if copy else np.asarray(images, dtype)

    def to_dask(self, images_per_chunk: Optional[int] = None, *, verify: bool = False, missing: Union[str, int] = "raise"):
        """A lazy array of the images 0 to len - 1 (dask.array, with the package dask): nothing is read until it is computed,
        and then by whoever computes it, so that workers on other machines need the run below the same path.

        images_per_chunk: whole images that are read at a time; without it as many as have 64 MiB, or one.
        verify: compare each image with its checksum when it is read; DamagedImageError names those of a chunk that are
        damaged.
        missing: what to do about images that are not there: "raise" MissingImageError at once; "skip" them, so that image k
        of the array is that of `numbers[k]`; or a number to fill them with."""
        from .lazy import LazyRun
        return LazyRun(self, images_per_chunk, verify=verify, missing=missing).images()

    def to_xarray(self, images_per_chunk: Optional[int] = None, *, verify: bool = False, missing: Union[str, int] = "raise"):
        """As to_dask(), as an xarray.DataArray (with the package xarray) with the dimensions t, y and x. Along t there are
        `number`, `host_time` (UTC) and, with metadata, `tick`, which is lazy and -1 where there is none; `attrs` has the
        description."""
        from .lazy import LazyRun
        return LazyRun(self, images_per_chunk, verify=verify, missing=missing).data_array()

    def positioned_reader(self) -> PositionedReader:
        """Reads images in another process."""
        return PositionedReader(self._directory, self.description, self._stamp)

    def frame_bytes(self, number: int) -> np.ndarray:
        """The frame as the camera delivered it, with padding and metadata: a read-only view of the file."""
        return self._frame(self._number(number))

    def tick(self, number: int) -> Optional[int]:
        """The camera's clock at an image, in ticks (`description.timestamp_frequency` a second); None without."""
        number = self._number(number)
        return chunks.timestamp(self._frame(number)) if self.description.metadata else None

    def ticks(self) -> np.ndarray:
        """The camera's clock at each image of `numbers`, -1 for one without."""
        found = (self.tick(number) for number in self.numbers)
        return np.array([-1 if tick is None else tick for tick in found], np.int64)

    def host_times(self) -> np.ndarray:
        """When each image of `numbers` was accepted for writing (UTC, ns), by the host's clock; not-a-time for
        one without a record."""
        times = np.full(self.numbers.size, "NaT", "datetime64[ns]")
        times[np.searchsorted(self.numbers, self._records["number"].astype(np.int64))] = self._records["host_time"]
        return times

    def checksums(self) -> np.ndarray:
        """The recorded checksum of each image of `numbers`; SpoolError when one has no record."""
        if not self.is_checked:
            number = np.setdiff1d(self.numbers, self._records["number"].astype(np.int64))[0]
            raise SpoolError(f"{self.path}: image {number} has no record in the index, and so no checksum")
        return self._records["checksum"]

    def verify(self, number: int) -> bool:
        """Whether the bytes of an image fit its checksum; SpoolError without a record."""
        number = self._number(number)
        frame = self._frame(number)
        place = np.searchsorted(self._records["number"], np.uint64(number))
        if place == self._records.size or self._records["number"][place] != number:
            raise SpoolError(f"{self.path}: image {number} has no record in the index, and so no checksum")
        return checksum_function()(frame) == int(self._records["checksum"][place])

    def close(self) -> None:
        """Closes the files; they are opened again when needed. Arrays that were returned stay valid."""
        self._files.close()

    def __enter__(self) -> "SpoolRun":
        return self

    def __exit__(self, *_) -> None:
        self.close()

    def __repr__(self) -> str:
        rows, columns = self.shape
        return (f"<SpoolRun {str(self.path)!r}: {self.numbers.size} of {self.description.images_expected} images, "
                f"{columns}x{rows} {self.description.pixel_encoding}, {self.state}>")

    def _number(self, number):
        number = operator.index(number)
        count = len(self)
        if not -count <= number < count:
            raise IndexError(f"{self.path}: image {number} of {count}")
        return number + count if number < 0 else number

    def check_complete(self) -> None:
        """MissingImageError when an image between 0 and len - 1 is missing."""
        self._check_present(range(len(self)))

    def _check_present(self, numbers):
        lacking = NumberGaps(numbers, self.numbers)
        if lacking:
            raise MissingImageError(lacking, self.path)

    def _frame(self, number):
        if number not in self:
            raise MissingImageError([number], self.path)
        return self._files.frame(number)

    def _stack(self, numbers):
        self._check_present(numbers)
        for number in numbers[:1]:
            self._files.frame(number)  # a file that is too short says so before memory is asked for
        stack = np.empty((len(numbers), *self.shape), self.dtype)
        for place, number in enumerate(numbers):
            pixels.decode(self._files.frame(number), self.description, stack[place])
        return stack

    def _check_index(self, index):
        """A run that was ended in order has an index without flaws."""
        path = self.path / INDEX_NAME
        hint = "; salvage=True gives the images that are there"
        if index.rest:
            raise SpoolFormatError(path, f"ends with a torn record of {index.rest} bytes" + hint)
        if index.rejected:
            raise SpoolFormatError(path, f"has {index.rejected} records that are damaged or repeated" + hint)
        if self.numbers.size != self.description.images_written:
            raise SpoolFormatError(path, f"has {self.numbers.size} images, the run wrote "
                                         f"{self.description.images_written}" + hint)
        if self.state == "complete" and self.numbers.size != len(self):
            raise SpoolFormatError(path, "lacks images of a complete run" + hint)

    def _leave_out_damaged(self, salvage):
        self.damaged = [int(number) for number in self.numbers if not self._is_whole(number, salvage)]
        if not self.damaged:
            return
        if not salvage:
            raise DamagedImageError(self.damaged, self.path)
        is_whole = ~np.isin(self.numbers, self.damaged)
        self._records, self.numbers = self._records[is_whole], self.numbers[is_whole]

    def _is_whole(self, number, salvage):
        try:
            return self.verify(number)
        except SpoolFormatError:
            if salvage:
                return False
            raise

    def _nonzero_images(self):
        found = [np.empty(0, np.int64)]
        step = max(_SCAN_BYTES // self.description.image_size, 1)
        for file in self._files.numbers_on_disk():
            first = file * self.description.images_per_file
            try:
                end = min(first + self._files.images_in(file), self.description.images_expected)
            except SpoolFormatError:
                continue
            for number in range(first, end, step):
                try:
                    frames = self._files.read(number, min(step, end - number))
                except SpoolFormatError:
                    continue
                if frames.any():
                    found.append(number + np.flatnonzero(frames.reshape(-1, self.description.image_size).any(axis=1)))
        return np.concatenate(found)


def _open_again(path, stamp, found):
    path = Path(path)
    stamp.check(path)
    run = SpoolRun.__new__(SpoolRun)
    run._open(path, found is not None)
    run._stamp = stamp
    if found is not None:
        run.numbers, run.damaged, run.unrecorded = found
        run._records = run._records[np.isin(run._records["number"].astype(np.int64), run.numbers)]
    return run
