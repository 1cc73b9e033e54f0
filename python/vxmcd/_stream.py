# SPDX-License-Identifier: MIT
"""Images one by one during a run."""
from __future__ import annotations

import warnings
from typing import NamedTuple, Optional

import numpy as np

from ._run import Run
from ._session import after_turn
from ._tick_gaps import TickGaps
from .errors import FramesLostError, FramesLostWarning, NoImageError, VxmcdError

_SKIP_PART = 8  # after falling behind, continue this part of the ring ahead of the camera


class Frame(NamedTuple):
    """An image of a stream."""

    image: np.ndarray  # rows x columns, a copy
    number: int  # from 1 over the whole run
    ticks: Optional[int]  # the camera's clock at the start of the exposure; None when it is not known
    lost_before: int  # images directly before this one that were overwritten before they were fetched

    def __repr__(self) -> str:
        rows, columns = self.image.shape
        return (f"<Frame {self.number}: {columns}x{rows} {self.image.dtype}, ticks {self.ticks}, "
                f"{self.lost_before} lost before>")


class Stream:
    """An iterator of Frame over a run. The run ends when `images` frames are fetched, with close(), or at the end of the
    stream's `with` block. Made by Camera.stream().

    The library keeps the newest images in a ring. When images are overwritten before they are fetched, the stream ends with
    FramesLostError; with allow_loss it continues and counts them. delivered, fetched, overwritten and lost_in_camera say
    where every frame went; if the camera lost frames, there is a FramesLostWarning at the end.

    When no image comes within the time limit, NoImageError is raised and the stream continues; every other error ends it.
    Use a stream from one thread only.
    """

    def __init__(self, run: Run, camera, images: Optional[int], timeout: Optional[float], allow_loss: bool,
                 has_even_period: bool):
        self._run = run
        self._camera = camera
        self._images = images
        self._timeout = timeout
        self._allow_loss = allow_loss
        self._shape, self._dtype = camera.shape, camera.dtype
        self._gaps = TickGaps() if has_even_period else None
        self._has_ticks = False
        self._counted_lost = None  # at the end, by a camera that counts them
        self._last = 0  # number of the last image that was fetched or skipped
        self._given = 0  # number of the last image that was returned
        self._is_closed = False
        self.delivered = 0  # images that the library has received
        self.fetched = 0  # images that the stream has returned
        self.overwritten = 0  # images that were overwritten before they were fetched

    @property
    def lost_in_camera(self) -> Optional[int]:
        """Frames that the camera made and never delivered; None when that is not known: without timestamps, or when
        triggers set the rate."""
        if self._gaps and self._counted_lost is not None:  # the clock also has a gap where a frame was late
            return self._counted_lost
        return self._gaps.missing if self._gaps and self._has_ticks else None

    def __iter__(self) -> "Stream":
        return self

    def __next__(self) -> Frame:
        if self._is_closed:
            raise StopIteration
        try:
            if self._images is None or self.fetched < self._images:
                return self._next_frame()
        except NoImageError:  # there may be one later
            raise
        except BaseException:
            try:
                self.close()
            except VxmcdError:  # follows from the first
                pass
            raise
        self.close()
        raise StopIteration

    def __enter__(self) -> "Stream":
        return self

    def __exit__(self, *_) -> None:
        self.close()

    def __repr__(self) -> str:
        of = "" if self._images is None else f" of {self._images}"
        return (f"<Stream: {self.fetched}{of} fetched, {self.overwritten} overwritten, "
                f"{'closed' if self._is_closed else 'running'}>")

    def __del__(self):
        if not getattr(self, "_is_closed", True):
            after_turn(self.close)

    def close(self) -> None:
        """Ends the run, without waiting for frames that were not fetched."""
        if self._is_closed:
            return
        self._is_closed = True
        with self._run.turn():  # another thread may close the camera
            self._run.stop()
            if self._camera.is_open:
                self.delivered = self._run.total()
                self._counted_lost = self._camera.count_lost_frames()
        if self.lost_in_camera:
            warnings.warn(f"the camera lost {self.lost_in_camera} frames", FramesLostWarning, stacklevel=3)

    def frame_period_changes(self) -> None:
        """The camera has got another frame period."""
        if self._gaps:
            self._gaps.restart()

    def _next_frame(self):
        image = np.empty(self._shape, self._dtype)
        while True:
            number = self._last + 1
            if number > self.delivered:
                self._run.wait_for(number, self._timeout)
                _, self.delivered = self._run.available()
            is_there, ticks = self._run.fetch(number, image)
            if is_there:
                break
            self._skip_overwritten()
        lost_before = number - self._given - 1
        self._last = self._given = number
        self.fetched += 1
        if ticks is not None and self._gaps:
            self._has_ticks = True
            self._gaps.add(number, ticks)
        return Frame(image, number, ticks, lost_before)

    def _skip_overwritten(self):
        first, last = self._run.available()
        arrived, self.delivered = last - self.delivered, last
        if self._last + 1 > first:  # it was overwritten, or may have been, during the copy
            return self._skip(1)
        # The camera writes to the memory of the oldest image now, and would soon overtake a copy of the one after it.
        ahead = (last + 1 - first) // _SKIP_PART + 2 * arrived if self._allow_loss else 0
        self._skip(min(first + ahead, last) - self._last)

    def _skip(self, count):
        self.overwritten += count
        self._last += count
        if not self._allow_loss:
            raise FramesLostError(count, self._last + 1)
