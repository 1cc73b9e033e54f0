# SPDX-License-Identifier: MIT
"""Statistics over the images of runs, in one process or on the workers of a Dask client.

Sums are whole numbers, so results do not depend on how many processes took part."""
from __future__ import annotations

import collections
import dataclasses
import functools
import math
from typing import Deque, Iterable, NamedTuple, Optional, Tuple

import numpy as np

from .ranges import ImageRange, Reduction, default_tasks, reduce_images, result_of

_BAND = 2**16  # pixels whose sums are worked on at once, so that they stay in the processor's cache
_TASK_PIXELS = 2**20  # rows that a task has of each image are not more, so that its sums do not need much memory
_MIN_ROW = 2**10
_HALF = np.uint64(32)
_LOW = np.uint64(2**32 - 1)
_QUANTISATION = 1 / 12  # variance of rounding to whole counts


class MeanVariance(NamedTuple):
    """Of each pixel over the images of a run, in counts and counts squared: (rows, columns), 64-bit floating point."""

    mean: np.ndarray
    variance: np.ndarray


def mean_variance(run, client=None, tasks: Optional[int] = None, *, verify: bool = False) -> MeanVariance:
    """Mean and variance (with n - 1) of each pixel over the images that are there; the variance of one image is not a
    number. The arguments are those of reduce_images()."""
    if not run.numbers.size:
        raise ValueError(f"{run.path}: a run without images has no mean")
    parts = _parts(run.shape) if client is not None else [None]
    wanted = default_tasks(client)
    if tasks is None:
        tasks = -(-wanted // len(parts))
    reduction = Reduction(run, client, tasks, verify=verify)
    started: Deque = collections.deque()
    results = []
    for place, rows in enumerate(parts):
        if len(started) * tasks >= 2 * wanted:  # results that nobody takes would fill the workers' memory
            results.append(result_of(started.popleft(), client).mean_variance())
        started.append(reduction.start(_Sums.of, _Sums.together, rows, place == 0))
    results += [result_of(sums, client).mean_variance() for sums in started]
    return MeanVariance(*(np.concatenate(arrays) for arrays in zip(*results)))


def _parts(shape):
    """The rows of an image in parts of about the same size."""
    height, width = shape
    parts = min(-(-height * width // _TASK_PIXELS), height)
    return [range(height * part // parts, height * (part + 1) // parts) for part in range(parts)]


class _Sums:
    """Of each pixel over images: the sum and the sum of squares, in the smallest types that they fit into. The squares of
    32-bit pixels are summed up in upper and lower halves, since three of them may be too large for one word.

    It is not changed once it is made: a worker may need it again when another one dies."""

    def __init__(self, shape, count, total, squares, upper=None):
        self._shape = shape
        self._count = count
        self._total = total
        self._squares = squares
        self._upper = upper

    @classmethod
    def of(cls, images: ImageRange) -> "_Sums":
        size = images.shape[0] * images.shape[1]
        is_wide = images.dtype.itemsize > 2
        largest = 2**(8 * images.dtype.itemsize) - 1
        total = np.zeros(size, np.int64 if is_wide else _type_for(len(images) * largest))
        squares = np.zeros(size, np.uint64 if is_wide else _type_for(len(images) * largest**2))
        upper = np.zeros(size, np.uint64) if is_wide else None
        workspace = None  # workers return memory to the system when it is freed, and to get it again takes long
        for block in images.blocks():
            block = block.reshape(len(block), size)
            if workspace is None:
                step = max(_BAND // len(block), _MIN_ROW)
                workspace = np.empty((len(block), step), np.int64 if is_wide else _type_for(largest**2))
            for start in range(0, size, step):
                band = slice(start, start + step)
                pixels = block[:, band]
                square = workspace[:len(block), :pixels.shape[1]]
                np.square(pixels, out=square, dtype=square.dtype)
                total[band] += pixels.sum(axis=0, dtype=total.dtype)
                if is_wide:
                    square = square.view(np.uint64)
                    upper[band] += (square >> _HALF).sum(axis=0)
                    square &= _LOW
                squares[band] += square.sum(axis=0, dtype=squares.dtype)
        return cls(images.shape, len(images), total, squares, upper)

    def together(self, other: "_Sums") -> "_Sums":
        upper = None if self._upper is None else self._upper + other._upper
        return _Sums(self._shape, self._count + other._count, _sum(self._total, other._total),
                     _sum(self._squares, other._squares), upper)

    def mean_variance(self) -> MeanVariance:
        mean, variance = np.empty(self._total.size), np.full(self._total.size, np.nan)
        for start in range(0, self._total.size, _BAND):
            band = slice(start, start + _BAND)
            total = self._total[band].astype(np.int64)
            mean[band] = total / self._count
            if self._count > 1:
                whole, rest = np.divmod(total, self._count)
                around = self._squares_around(band, whole, total + rest)
                variance[band] = (around - rest * (rest / self._count)) / (self._count - 1)
        return MeanVariance(mean.reshape(self._shape), variance.reshape(self._shape))

    def _squares_around(self, band, whole, both):
        """The sum of (pixel - whole)^2, which is squares - whole * both. The product wraps around, and the difference wraps
        back to the exact number; where that needs more than 64 bits, floating point is precise enough."""
        squares, product = self._squares[band], (whole * both).view(np.uint64)
        if self._upper is None:
            return (squares - product).astype(float)
        exact = (self._upper[band] << _HALF) + squares - product
        near = self._upper[band] * 2.0**32 + squares - whole.astype(float) * both
        return np.where(near < 2.0**63, exact.astype(float), near)


def _type_for(largest):
    return np.min_scalar_type(largest)


def _sum(one, other):
    """In a type that takes any sum of the two types."""
    if one.dtype.kind == "i":
        return one + other
    largest = int(np.iinfo(one.dtype).max) + int(np.iinfo(other.dtype).max)
    return np.add(one, other, dtype=_type_for(min(largest, 2**64 - 1)))


@dataclasses.dataclass(frozen=True)
class PhotonTransfer:
    """Gain and noise of a camera, and the points that they were fitted to, one for each run."""

    electrons_per_count: float
    read_noise: float  # electrons RMS, of one read-out; not a number when it is lost in the photons' noise
    offset: float  # counts without light
    exposures: Tuple[Optional[float], ...]  # s
    means: Tuple[float, ...]  # counts
    variances: Tuple[float, ...]  # counts squared, of a pixel over time


def photon_transfer(runs: Iterable, window: Optional[Tuple[slice, slice]] = None, offset: Optional[float] = None,
                    client=None, tasks: Optional[int] = None, *, verify: bool = False) -> PhotonTransfer:
    """Gain and read noise from runs of evenly lit images, one run for each exposure time, in the same light.

    The variance is that of the differences between neighbouring images, so it has no fixed pattern; it grows with the signal
    by one count for each `electrons_per_count`, and begins with that of the read-out. One run should have little light.

    window: rows and columns to look at, such as numpy.s_[100:400, 100:400]; without it the whole image.
    offset: counts without light; without it, it is found from the means, which have to grow evenly with the exposure times.
    The other arguments are those of reduce_images()."""
    runs = list(runs)
    window = (slice(None), slice(None)) if window is None else tuple(window)
    points = [_point(run, window, client, tasks, verify) for run in runs]
    exposures = tuple(run.description.exposure_time for run in runs)
    means = np.array([point.mean for point in points])
    variances = np.array([point.variance for point in points])
    weights = np.array([math.sqrt(point.degrees) for point in points])
    if len(points) < 2 or np.ptp(means) == 0:
        raise ValueError("runs with at least two levels of light are needed")
    if not variances.all():
        raise ValueError(f"{runs[int(variances.argmin())].path}: all images are the same; there is no noise to measure")
    if offset is None:
        if None in exposures or np.ptp(exposures) == 0:
            raise ValueError("runs do not have different exposure times: the offset has to be given")
        offset = np.polyfit(exposures, means, 1, w=weights / np.sqrt(variances))[1]
    slope, intercept = np.polyfit(means - offset, variances, 1, w=weights / variances)
    read_variance = intercept - _QUANTISATION
    read_noise = math.sqrt(read_variance) / slope if read_variance >= 0 else math.nan
    return PhotonTransfer(float(1 / slope), float(read_noise), float(offset), exposures, tuple(means.tolist()),
                          tuple(variances.tolist()))


def _point(run, window, client, tasks, verify):
    shape = np.empty(run.shape, bool)[window].shape
    if len(shape) != 2 or shape[0] * shape[1] < 2:
        raise ValueError(f"{run.path}: the window has less than two of the image's {run.shape[0]} x {run.shape[1]} pixels")
    if any((part.stop or 0) > size for part, size in zip(window, run.shape)):
        raise ValueError(f"{run.path}: the window reaches beyond the image's {run.shape[0]} rows or {run.shape[1]} columns")
    if run.numbers.size < 2:
        raise ValueError(f"{run.path}: {run.numbers.size} images; differences need two")
    return reduce_images(run, functools.partial(_Differences.of, window), _Differences.together, client, tasks, overlap=1,
                         verify=verify)


@dataclasses.dataclass(frozen=True)
class _Differences:
    """Of neighbouring images, in a window; whole numbers of any size."""

    pixels: int  # of the window
    pairs: int
    total: int  # of all pixels of both images of all pairs
    spread: int  # sum over pairs of pixels * sum of squares - square of sum

    @classmethod
    def of(cls, window, images: ImageRange) -> "_Differences":
        pixels = pairs = total = spread = 0
        earlier = None
        for image in images:
            image = image[window]
            if earlier is None:
                pixels = image.size
                earlier = image.copy()
                continue
            both = difference = squares = 0
            step = max(_BAND // image.shape[1], 1)
            for start in range(0, len(image), step):
                one, other = (array[start:start + step].astype(np.int64) for array in (earlier, image))
                both += int((one + other).sum())
                difference += int((other - one).sum())
                squares += _sum_of_squares(other - one)
            pairs += 1
            total += both
            spread += pixels * squares - difference**2
            earlier[...] = image
        return cls(pixels, pairs, total, spread)

    def together(self, other: "_Differences") -> "_Differences":
        return _Differences(self.pixels, self.pairs + other.pairs, self.total + other.total, self.spread + other.spread)

    @property
    def degrees(self) -> int:
        """How many values the variance is from."""
        return self.pairs * (self.pixels - 1)

    @property
    def mean(self) -> float:
        return self.total / (2 * self.pairs * self.pixels)

    @property
    def variance(self) -> float:
        """Of a pixel; that of a difference is twice as large."""
        return self.spread / (2 * self.pixels * self.degrees)


def _sum_of_squares(numbers):
    squares = np.square(np.abs(numbers).view(np.uint64))  # of differences of 32 bits: less than 2^64
    return (int((squares >> _HALF).sum()) << 32) + int((squares & _LOW).sum())
