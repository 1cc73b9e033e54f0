# SPDX-License-Identifier: MIT
"""A run as lazy arrays: each chunk is some whole images, which are read when they are needed."""
from __future__ import annotations

import dataclasses
import importlib
import operator
from typing import Optional, Sequence, Union

import numpy as np

from .positioned import PositionedReader
from .ranges import at_least_one, compact

_CHUNK_BYTES = 2**26
_NO_TICK = -1


@dataclasses.dataclass(frozen=True)
class _Chunk:
    """What one task reads."""

    count: int
    numbers: Sequence[int]
    first: Optional[int]  # image n is at the place n - first; without it, images are one behind the other
    checksums: Optional[np.ndarray]


def _read_images(chunk, reader: PositionedReader, fill):
    images = reader.new_array(chunk.count)
    if len(chunk.numbers) < chunk.count:
        images[...] = fill
    with reader.unchanged():
        reader.read(chunk.numbers, images, chunk.checksums, chunk.first)
    return images


def _read_ticks(chunk, reader: PositionedReader):
    ticks = np.full(chunk.count, _NO_TICK, np.int64)
    places = slice(None) if chunk.first is None else np.asarray(chunk.numbers, np.int64) - chunk.first
    with reader.unchanged():
        ticks[places] = reader.ticks(chunk.numbers)
    return ticks


class LazyRun:
    """Lazy arrays of a run, in which every image has a place; missing ones have one unless they are skipped. For a task, only
    numbers are in the graph: a worker opens the files, and closes them when it has read a chunk."""

    def __init__(self, run, images_per_chunk: Optional[int] = None, *, verify: bool = False,
                 missing: Union[str, int] = "raise"):
        self._dask = _imported("dask.array", "python3-dask")
        self._run = run
        self._reader = run.positioned_reader()
        self._skips = missing == "skip"
        self._fill = None
        if missing == "raise":
            run.check_complete()
        elif not self._skips:
            self._fill = _fill_value(missing, run.dtype)
        if images_per_chunk is None:
            images_per_chunk = max(_CHUNK_BYTES // self._reader.image_bytes, 1)
        images_per_chunk = at_least_one(images_per_chunk, "images_per_chunk")
        self._places = run.numbers.size if self._skips else len(run)
        checksums = run.checksums() if verify else None
        starts = range(0, self._places, images_per_chunk)
        self._chunks = [self._chunk(start, min(start + images_per_chunk, self._places), checksums) for start in starts]
        self._token = importlib.import_module("dask.base").tokenize(
            self._reader, images_per_chunk, verify, self._skips, self._fill, compact(run.numbers))

    def images(self):
        """Of the pixels: (images, rows, columns)."""
        return self._mapped("images", self._run.dtype, self._run.shape, _read_images, fill=self._fill)

    def data_array(self):
        """The images in xarray, with their numbers and times."""
        xarray = _imported("xarray", "python3-xarray")
        description = self._run.description
        coordinates = {"number": ("t", self._numbers()), "host_time": ("t", self._host_times())}
        if description.metadata:
            coordinates["tick"] = ("t", self._mapped("ticks", np.dtype(np.int64), (), _read_ticks))
        return xarray.DataArray(self.images(), coordinates, ("t", "y", "x"), self._run.path.name, _attributes(description))

    def _chunk(self, start, stop, checksums):
        if self._skips:
            places, first = slice(start, stop), None
        else:
            places, first = slice(*np.searchsorted(self._run.numbers, (start, stop))), start
        return _Chunk(stop - start, compact(self._run.numbers[places]), first,
                      None if checksums is None else checksums[places])

    def _mapped(self, what, dtype, shape, function, **arguments):
        """An array whose blocks a function makes of the chunks."""
        if not self._chunks:
            return self._dask.zeros((0, *shape), dtype=dtype)
        name = f"vxmcd-{what}-{self._token}"
        blocks = {(f"{name}-chunks", place): chunk for place, chunk in enumerate(self._chunks)}
        chunks = self._dask.Array(blocks, f"{name}-chunks", ((1,) * len(blocks),), object)
        sizes = tuple(chunk.count for chunk in self._chunks), *((size,) for size in shape)
        return self._dask.map_blocks(function, chunks, name=name, chunks=sizes, new_axis=list(range(1, len(sizes))),
                                     dtype=dtype, meta=np.empty((0,) * len(sizes), dtype), reader=self._reader, **arguments)

    def _numbers(self):
        return self._run.numbers if self._skips else np.arange(self._places)

    def _host_times(self):
        if self._skips:
            return self._run.host_times()
        times = np.full(self._places, "NaT", "datetime64[ns]")
        times[self._run.numbers] = self._run.host_times()
        return times


def _imported(module, package):
    try:
        return importlib.import_module(module)
    except ImportError as error:
        raise ImportError(f"{error}: this needs the Python package {module.split('.')[0]}, on Debian {package}",
                          name=error.name) from error


def _fill_value(value, dtype):
    if isinstance(value, str):
        raise ValueError(f"missing is 'raise', 'skip' or a number to fill with, not {value!r}")
    value = operator.index(value)
    if not np.iinfo(dtype).min <= value <= np.iinfo(dtype).max:
        raise ValueError(f"missing is {value}, which a pixel of type {dtype} cannot be")
    return value


def _attributes(description):
    """The description in types that files of arrays (netCDF, Zarr) have, too."""
    known = {name: value for name, value in dataclasses.asdict(description).items() if value is not None}
    return {name: int(value) if isinstance(value, bool) else str(value) if isinstance(value, np.datetime64) else value
            for name, value in known.items()}
