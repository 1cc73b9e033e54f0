# SPDX-License-Identifier: MIT
"""Work on all images of a run, in one process or in many: each task has a range of images, and results are combined."""
from __future__ import annotations

import operator
from typing import Any, Callable, Iterator, Optional, Sequence, Tuple

import numpy as np

from .positioned import PositionedReader

_FEW = 8  # images at a time let sums of pixels stay in the processor's cache
_BLOCK_BYTES = 2**25
_SMALL_BLOCK_BYTES = 2**22


class ImageRange:
    """Images of a run in ascending order, read one after the other: what a task works on."""

    def __init__(self, reader: PositionedReader, numbers: Sequence[int], checksums: Optional[np.ndarray] = None):
        self.numbers = numbers
        self._reader = reader
        self._checksums = checksums

    @property
    def shape(self) -> Tuple[int, int]:
        """Rows and columns of an image."""
        return self._reader.shape

    @property
    def dtype(self) -> np.dtype:
        """The type of a pixel."""
        return self._reader.dtype

    def __len__(self) -> int:
        return len(self.numbers)

    def __iter__(self) -> Iterator[np.ndarray]:
        """The images. Their memory is used again: copy what you keep."""
        for block in self.blocks():
            yield from block

    def blocks(self, images: Optional[int] = None) -> Iterator[np.ndarray]:
        """The images as arrays (images, rows, columns) of so many, the last one of fewer; without a number, of up to 32 MiB
        or of one image. The memory of an array is used again for the next one."""
        size = self._reader.image_bytes
        if images is None:
            images = max(min(_FEW, _BLOCK_BYTES // size), _SMALL_BLOCK_BYTES // size, 1)
        images = min(at_least_one(images, "images"), max(len(self), 1))
        memory = self._reader.new_array(images)
        for start in range(0, len(self), images):
            numbers = self.numbers[start:start + images]
            checksums = None if self._checksums is None else self._checksums[start:start + images]
            self._reader.read(numbers, memory, checksums)
            yield memory[:len(numbers)]


def reduce_images(run, partial: Callable[[ImageRange], Any], combine: Callable[[Any, Any], Any], client=None,
                  tasks: Optional[int] = None, *, overlap: int = 0, verify: bool = False) -> Any:
    """What `combine` makes of the results of `partial` for ranges of a run's images.

    `partial` gets an ImageRange and returns a result, for instance sums. `combine` gets the results of two neighbouring
    ranges and returns that of both together, without changing them. Nothing else may depend on the calls: the range of a
    worker that dies is worked on again.

    client: a dask.distributed.Client, whose workers need this package, NumPy and the run below the same path. Without one
    all is done here, without dask.
    tasks: number of ranges; without it 2 for each thread of the workers, or 1 without a client. With the same number the
    result is the same bit for bit, with a client and without; that of whole numbers is with any.
    overlap: so many images at the end of a range are also the first of the next one, for work on neighbouring images.
    verify: compare each image with its checksum when it is read; DamagedImageError names damaged ones.

    Images that are missing are left out. Ranges have about as many images each, in the order of their numbers. A run without
    images is one range without images."""
    if operator.index(overlap) < 0:
        raise ValueError(f"overlap is {overlap}, it has to be 0 or more")
    return result_of(Reduction(run, client, tasks, overlap, verify).start(partial, combine), client)


def default_tasks(client) -> int:
    return 1 if client is None else 2 * max(sum(client.nthreads().values()), 1)


def result_of(started, client):
    return started if client is None else started.result()


class Reduction:
    """The ranges of a run, and who works on them."""

    def __init__(self, run, client=None, tasks: Optional[int] = None, overlap: int = 0, verify: bool = False):
        tasks = default_tasks(client) if tasks is None else at_least_one(tasks, "tasks")
        images = max(run.numbers.size - overlap, 0)
        tasks = min(tasks, max(images, 1))
        self._client = client
        self._reader = run.positioned_reader()
        self._numbers = run.numbers
        self._checksums = run.checksums() if verify else None
        self._ranges = [slice(images * task // tasks, images * (task + 1) // tasks + overlap) for task in range(tasks)]

    def start(self, partial, combine, rows: Optional[range] = None, verify: bool = True):
        """The result, with a client as a future. rows: of each image, else all; verify=False: another one verifies them."""
        reader = self._reader if rows is None else self._reader.of_rows(rows)
        return self._combined(reader, self._checksums if verify else None, partial, combine, self._ranges)

    def _combined(self, reader, checksums, partial, combine, ranges):
        """Halves first: results do not pile up, and their order does not depend on when they are ready."""
        if len(ranges) == 1:
            images = ranges[0]
            return self._call(_work, partial, reader, compact(self._numbers[images]),
                              None if checksums is None else checksums[images])
        middle = len(ranges) // 2
        return self._call(combine, self._combined(reader, checksums, partial, combine, ranges[:middle]),
                          self._combined(reader, checksums, partial, combine, ranges[middle:]))

    def _call(self, function, *given):
        if self._client is None:
            return function(*given)
        # Never an earlier result of the same name: the directory may have had another run then.
        return self._client.submit(function, *given, pure=False)


def _work(partial, reader, numbers, checksums):
    with reader.unchanged():
        return partial(ImageRange(reader, numbers, checksums))


def compact(numbers: np.ndarray) -> Sequence[int]:
    """Ascending numbers, as a range when none is missing between them."""
    if numbers.size and numbers[-1] - numbers[0] == numbers.size - 1:
        return range(int(numbers[0]), int(numbers[-1]) + 1)
    return numbers


def at_least_one(number: int, name: str) -> int:
    number = operator.index(number)
    if number < 1:
        raise ValueError(f"{name} is {number}, it has to be 1 or more")
    return number
