# SPDX-License-Identifier: MIT
"""The newest image, and the pictures that viewers are sent of it."""
from __future__ import annotations

import threading
from typing import Dict, List, NamedTuple, Optional, Tuple

import numpy as np

from . import _wire

_MAX_PICTURES = 4  # different ones that are made of an image; further viewers get one of these, or the whole image
_MAX_SIDE = 8192  # of a canvas
_BINS = 256
_DARK, _BRIGHT = 0.005, 0.995  # parts of the pixels that the automatic stretch leaves below and above
_SMOOTHING = 0.5
_WHOLE_SIDE = 1024  # of the picture for viewers beyond the limit


class View(NamedTuple):
    """What a viewer sees: the part of the image, the size of the canvas, and how pixels are sent."""

    x: int = 0
    y: int = 0
    width: int = 0  # 0: the whole image
    height: int = 0
    canvas_width: int = 1024
    canvas_height: int = 1024
    has_one_byte: bool = False
    stretch: Optional[Tuple[int, int]] = None  # None: automatic

    @classmethod
    def of(cls, message) -> "View":
        """Of a message {x, y, w, h, cw, ch, bytes, stretch}; the last two may be missing. Raises ValueError."""
        if not isinstance(message, dict) or set(message) - {"x", "y", "w", "h", "cw", "ch", "bytes", "stretch"}:
            raise ValueError("a view has x, y, w, h, cw, ch, and bytes and stretch if need be")
        numbers = [message.get(name) for name in ("x", "y", "w", "h", "cw", "ch")]
        stretch = message.get("stretch")
        for number in [*numbers, *(stretch if isinstance(stretch, list) else ())]:
            if isinstance(number, bool) or not isinstance(number, (int, float)) or not -1e9 < number < 1e9:
                raise ValueError(f"a view has numbers, not {number!r}")
        if stretch is not None and not (isinstance(stretch, list) and len(stretch) == 2):
            raise ValueError("a stretch is [low, high] or null")
        if message.get("bytes", 2) not in (1, 2):
            raise ValueError("a pixel has 1 or 2 bytes")
        x, y, width, height, canvas_width, canvas_height = (int(number) for number in numbers)
        low_high = None
        if stretch is not None:
            low = min(max(int(stretch[0]), 0), 65534)
            low_high = (low, min(max(int(stretch[1]), low + 1), 65535))
        return cls(x, y, max(width, 0), max(height, 0), min(max(canvas_width, 16), _MAX_SIDE),
                   min(max(canvas_height, 16), _MAX_SIDE), message.get("bytes", 2) == 1, low_high)

    def region(self, shape: Tuple[int, int], coarser: int = 1) -> "_Region":
        """The part of an image of this shape, in whole blocks. coarser: factor for the size of the blocks."""
        rows, columns = shape
        width, height = self.width or columns, self.height or rows
        step = max(-(-width // self.canvas_width), -(-height // self.canvas_height)) * coarser
        step = min(max(step, 1), 0xFFFF)
        left, right = _in_blocks(self.x, width, step, columns)
        top, bottom = _in_blocks(self.y, height, step, rows)
        return _Region(left, top, right, bottom, step)


def _in_blocks(first, length, step, limit):
    first = min(max(first, 0), limit - 1) // step * step
    last = min(max(first + length + step, first + 1), limit)
    return first, min(-(-last // step) * step, limit)


class _Region(NamedTuple):
    left: int
    top: int
    right: int
    bottom: int
    step: int

    def has(self, other: "_Region") -> bool:
        return (self.left <= other.left and self.top <= other.top and self.right >= other.right and
                self.bottom >= other.bottom)

    def size(self) -> int:
        return (self.right - self.left) * (self.bottom - self.top)


def _rows(pixels, step, operation, kind):
    """Combines each `step` rows, and those that are left at the end. Whole rows are fast to read."""
    whole = len(pixels) // step * step
    result = np.empty((-(-len(pixels) // step), pixels.shape[1]), kind)
    full = result[:whole // step]
    full[:] = pixels[0:whole:step]
    for offset in range(1, step):
        operation(full, pixels[offset:whole:step], out=full)
    if whole < len(pixels):
        result[-1] = operation.reduce(pixels[whole:], axis=0, dtype=kind)
    return result


def _columns(pixels, step, operation):
    whole = pixels.shape[1] // step * step
    result = np.empty((len(pixels), -(-pixels.shape[1] // step)), pixels.dtype)
    full = result[:, :whole // step]
    full[:] = pixels[:, 0:whole:step]
    for offset in range(1, step):
        operation(full, pixels[:, offset:whole:step], out=full)
    if whole < pixels.shape[1]:
        result[:, -1] = operation.reduce(pixels[:, whole:], axis=1)
    return result


def _blocks(pixels, step, operation, kind):
    return _columns(_rows(pixels, step, operation, kind), step, operation)


def _lengths(count, step):
    whole, part = divmod(count, step)
    return np.array([step] * whole + [part] * (part > 0), np.uint32)


def block_means(pixels: np.ndarray, step: int) -> np.ndarray:
    """The rounded mean of each block of step x step pixels, and of what is left of a block at the edges."""
    if step == 1:
        return pixels
    # uint32 has room for 65536 pixels of 16 bits; larger blocks are averaged in double precision
    kind = np.uint32 if step <= 256 else np.float64
    sums = _blocks(pixels, step, np.add, kind)
    rows, columns = pixels.shape
    counts = step * step if rows % step == columns % step == 0 else np.outer(_lengths(rows, step), _lengths(columns, step))
    return ((sums + counts // 2) // counts).astype(pixels.dtype) if kind is np.uint32 else (
        np.rint(sums / counts).astype(pixels.dtype))


def saturation_map(pixels: np.ndarray, step: int, level: int) -> bytes:
    """A bit for each block, from the lowest bit of the first byte on: whether a pixel of it is saturated."""
    highest = pixels if step == 1 else _blocks(pixels, step, np.maximum, pixels.dtype)
    return np.packbits(highest >= level, bitorder="little").tobytes()


def stretched(pixels: np.ndarray, low: int, high: int) -> np.ndarray:
    """Values from low to high as 0 to 255."""
    values = (np.arange(65536, dtype=np.float32) - low) * (255.0 / max(high - low, 1))
    table = np.clip(np.rint(values), 0, 255).astype(np.uint8)
    return table[pixels]


class Histogram(NamedTuple):
    """Of all pixels of an image."""

    number: int
    counts: List[int]  # of bins of the same width
    first: int  # values of the first and the last bin
    last: int
    minimum: int
    maximum: int
    mean: float
    low: int  # of the automatic stretch, not smoothed
    high: int
    detail: Dict[str, object]  # counts, first and last once more, for the values around low and high

    @classmethod
    def of(cls, image: "Image") -> "Histogram":
        counts = np.bincount(image.pixels.reshape(-1), minlength=65536)
        there = np.flatnonzero(counts)
        below = np.cumsum(counts)
        low, high = (int(np.searchsorted(below, part * image.pixels.size)) for part in (_DARK, _BRIGHT))
        width = (max(image.saturation, int(there[-1])) + _BINS) // _BINS
        bins = counts[:_BINS * width]
        bins = np.pad(bins, (0, _BINS * width - len(bins))).reshape(_BINS, width).sum(axis=1)
        mean = float(np.dot(counts, np.arange(len(counts)))) / image.pixels.size
        high = max(high, low + 1)
        return cls(image.number, bins.tolist(), 0, _BINS * width - 1, int(there[0]), int(there[-1]), mean, low, high,
                   cls._detail(counts, low, high))

    @staticmethod
    def _detail(counts, low, high):
        """Its ends are round numbers, so that they stay the same from image to image."""
        length = 64
        while length < 3 * (high - low):
            length *= 2
        first = max(low - length // 8, 0) // (length // 8) * (length // 8)
        part = counts[first:first + length]
        bins = np.pad(part, (0, length - len(part))).reshape(min(length, _BINS), -1).sum(axis=1)
        return {"counts": bins.tolist(), "first": first, "last": first + length - 1}


class Image:
    """An image of a run. Nobody changes its pixels. Thread-safe."""

    def __init__(self, pixels: np.ndarray, number: int, ticks: Optional[int], time: float, run: int, saturation: int,
                 is_recording: bool = False, camera: Optional[dict] = None,
                 celsius: Optional[float] = None):
        self.pixels = pixels  # uint8 or uint16
        self.number = number
        self.ticks = ticks
        self.time = time
        self.run = run  # of this program
        self.saturation = saturation
        self.is_recording = is_recording
        self.camera = camera or {}  # description and settings at that time
        self.celsius = celsius
        self._lock = threading.Lock()
        self._saturated: Optional[int] = None
        self._histogram: Optional[Histogram] = None
        self._pictures: Dict[tuple, Picture] = {}

    @property
    def saturated(self) -> int:
        """The number of saturated pixels."""
        with self._lock:
            if self._saturated is None:
                is_any = int(self.pixels.max()) >= self.saturation
                self._saturated = int(np.count_nonzero(self.pixels >= self.saturation)) if is_any else 0
            return self._saturated

    @property
    def histogram(self) -> Histogram:
        with self._lock:
            if self._histogram is None:
                self._histogram = Histogram.of(self)
            return self._histogram

    def value(self, cursor: Optional[Tuple[int, int]]) -> int:
        """The pixel in this column and row; -1 outside."""
        rows, columns = self.pixels.shape
        if cursor is None or not (0 <= cursor[0] < columns and 0 <= cursor[1] < rows):
            return -1
        return int(self.pixels[cursor[1], cursor[0]])

    def along(self, line: Tuple[float, float, float, float]) -> List[int]:
        """The values of the pixels along a line between two points, ends included."""
        x0, y0, x1, y1 = line
        rows, columns = self.pixels.shape
        points = min(int(max(abs(x1 - x0), abs(y1 - y0))) + 1, 4096)
        x = np.clip(np.floor(np.linspace(x0, x1, points)).astype(int), 0, columns - 1)
        y = np.clip(np.floor(np.linspace(y0, y1, points)).astype(int), 0, rows - 1)
        return self.pixels[y, x].tolist()

    def picture(self, view: View, stretch: Tuple[int, int], coarser: int = 1) -> "Picture":
        """What a viewer is sent. stretch: the automatic one. coarser: factor for the size of the blocks."""
        region = view.region(self.pixels.shape, coarser)
        low_high = (view.stretch or stretch) if view.has_one_byte else None
        if self.pixels.dtype == np.uint8:
            low_high = (0, 255)
        saturated = self.saturated
        with self._lock:
            key = (region, low_high)
            if key not in self._pictures and len(self._pictures) >= _MAX_PICTURES:
                key = self._replacement(region) or (self._whole(), None if self.pixels.dtype == np.uint16 else (0, 255))
            if key not in self._pictures:
                self._pictures[key] = Picture(self, *key, saturated)
            return self._pictures[key]

    def _replacement(self, region):
        fitting = [key for key in self._pictures if key[0].has(region)]
        return min(fitting, key=lambda key: (key[0].size(), key[0].step)) if fitting else None

    def _whole(self):
        return View(canvas_width=_WHOLE_SIDE, canvas_height=_WHOLE_SIDE).region(self.pixels.shape)


class Picture:
    """A part of an image, reduced, as it is sent. low_high: the stretch of pixels of one byte, None for two bytes."""

    def __init__(self, image: Image, region: _Region, low_high: Optional[Tuple[int, int]], saturated: int):
        part = image.pixels[region.top:region.bottom, region.left:region.right]
        pixels = block_means(part, region.step)
        if low_high and pixels.dtype != np.uint8:
            pixels = stretched(pixels, *low_high)
        saturation = saturation_map(part, region.step, image.saturation) if saturated else b""
        low, high = low_high or (0, 65535)
        rows, columns = image.pixels.shape
        self._fields = {
            "number": image.number, "ticks": -1 if image.ticks is None else image.ticks, "time": image.time,
            "width": pixels.shape[1], "height": pixels.shape[0], "x": region.left, "y": region.top, "step": region.step,
            "bytes": pixels.itemsize, "low": low, "high": high, "saturated": saturated, "pixels": image.pixels.size,
            "imageWidth": columns, "imageHeight": rows, "saturation": min(image.saturation, 65535)}
        self._flags = (_wire.SATURATION_MAP if saturation else 0) | (_wire.RECORDING if image.is_recording else 0)
        self._body = np.ascontiguousarray(pixels).astype(pixels.dtype.newbyteorder("<"), copy=False).tobytes() + saturation

    def message(self, value: int, since: int, has_new_area: bool) -> bytes:
        """The frame for one viewer."""
        flags = self._flags | (_wire.AREA_CHANGED if has_new_area else 0)
        return _wire.pack(**self._fields, flags=flags, value=value, since=since) + self._body


class Frames:
    """The newest image and the automatic stretch. Thread-safe."""

    def __init__(self):
        self._lock = threading.Lock()
        self._newest: Optional[Image] = None
        self._stretch: Optional[Tuple[float, float]] = None
        self._stretched_run = None

    @property
    def newest(self) -> Optional[Image]:
        return self._newest

    def put(self, image: Image) -> None:
        with self._lock:
            self._newest = image

    def clear(self) -> None:
        with self._lock:
            self._newest = self._stretch = None

    @property
    def stretch(self) -> Tuple[int, int]:
        """Low and high of the automatic stretch, smoothed over the histograms that were added."""
        with self._lock:
            low, high = self._stretch or (0, 65535)
            return round(low), max(round(high), round(low) + 1)

    def add_histogram(self, image: Image) -> Histogram:
        """The histogram of an image, which the automatic stretch follows. With another run it starts anew."""
        histogram = image.histogram
        with self._lock:
            old, new = self._stretch, (histogram.low, histogram.high)
            if old is not None and self._stretched_run == image.run:
                new = tuple(before + _SMOOTHING * (now - before) for before, now in zip(old, new))
            self._stretch, self._stretched_run = new, image.run
        return histogram
