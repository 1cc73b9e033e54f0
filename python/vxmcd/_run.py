# SPDX-License-Identifier: MIT
"""One acquisition run, from start to stop."""
from __future__ import annotations

import ctypes
import time
from typing import Optional, Tuple

import numpy as np

from . import raw
from ._session import Session
from .errors import CameraStateError, NoImageError, VxmcdError

SINGLE, ACCUMULATE, SERIES, UNTIL_ABORT = 1, 2, 3, 5

_SLICE_MS = 50  # a wait returns to Python after this time, so that signals are handled
_FETCH = {1: ("vxmcd_GetIntactImage8", ctypes.c_ubyte), 2: ("vxmcd_GetIntactImage16", ctypes.c_ushort),
          4: ("vxmcd_GetIntactImage", ctypes.c_int)}


class Run:
    """A run that has been started, or that start() starts. stop() ends it, and so does the end of its `with` block.

    images: the number of images, None for a run until stop(). triggers_every: None, or the time in s after which a trigger
    without an image is sent again; wait_for() sends the triggers then. starts: whether it starts at once.
    """

    def __init__(self, session: Session, mode: int, images: Optional[int], triggers_every: Optional[float] = None,
                 starts: bool = True):
        self._session = session
        self._images = images
        self._triggers_every = triggers_every
        self._triggered_after = -1  # number of images at the last trigger
        self._trigger_again = 0.0
        self._is_stopped = True
        session.begin_run()
        self._is_stopped = False
        try:
            if images is not None:
                session.call("SetNumberKinetics", images)
            session.call("SetAcquisitionMode", mode)
            if starts:
                self.start()
        except BaseException:
            self.stop()
            raise

    def start(self) -> None:
        """Starts a run that was made with starts=False."""
        self._session.call("StartAcquisition")

    def __enter__(self) -> "Run":
        return self

    def __exit__(self, *_) -> None:
        self.stop()

    def stop(self) -> None:
        """Ends the run; images stay until the next start. Does nothing when called again."""
        if self._is_stopped:
            return
        self._is_stopped = True
        try:
            with self._session.turn():  # another thread may close the camera
                if self._session.is_open and self.status() == raw.RC_ACQUIRING:
                    self._session.call("AbortAcquisition", also=(raw.RC_IDLE,))
        finally:
            self._session.end_run()

    def turn(self):
        """For a `with` block during which no other thread makes a call for the camera, except for waits."""
        return self._session.turn()

    def status(self) -> int:
        return self._session.read("GetStatus", ctypes.c_int)

    def total(self) -> int:
        """The number of images so far."""
        return self._session.read("GetTotalNumberImagesAcquired", ctypes.c_long)

    def available(self) -> Tuple[int, int]:
        """The numbers of the first and last available image, (0, 0) for none."""
        return self._session.read("GetNumberAvailableImages", ctypes.c_int, ctypes.c_int, also=(raw.RC_NO_NEW_DATA,))

    def wait_for(self, number: int, timeout: Optional[float] = None) -> None:
        """Waits until image `number` is there. Raises NoImageError when no image came for `timeout` s, VxmcdError when the
        run ended before."""
        self._check_not_stopped()
        newest = self.total()
        deadline = self._deadline(timeout)
        while newest < number:
            self._trigger_when_due(newest)
            # The status is read before the number of images: when the run is over, that number is final.
            status = self.status()
            total = self.total()
            if total > newest:
                newest, deadline = total, self._deadline(timeout)
                continue
            if status != raw.RC_ACQUIRING:
                raise VxmcdError("the run", status, f"it ended after {newest} images")
            if time.monotonic() > deadline:
                raise NoImageError(f"no image for {timeout} s, {newest} came before; check the trigger")
            self._session.wait(_SLICE_MS)

    def wait_for_end(self, timeout: Optional[float] = None) -> None:
        """Waits until all images are there and the run is over. Raises what wait_for() does."""
        self.wait_for(self._images, timeout)
        while True:
            status = self.status()
            if status == raw.RC_IDLE:
                return
            if status != raw.RC_ACQUIRING:
                raise VxmcdError("the run", status)
            time.sleep(0.005)

    def fetch(self, number: int, image: np.ndarray) -> Tuple[bool, Optional[int]]:
        """Copies an image to a contiguous array of its shape. Returns whether the array has the image, which may have been
        overwritten before or during the copy, and its clock value, None when that is not known."""
        name, kind = _FETCH[image.itemsize]
        ticks = ctypes.c_longlong()
        pointer = image.ctypes.data_as(ctypes.POINTER(kind))
        code = self._session.call(name, number, pointer, image.size, ctypes.byref(ticks), also=(raw.RC_NO_NEW_DATA,))
        is_known = ticks.value != 0 or (number == 1 and self.first_ticks() == 0)
        return code == raw.RC_SUCCESS, ticks.value if is_known else None

    def first_ticks(self) -> Optional[int]:
        """The clock value of the first exposure; None when there is none. The 0 of fetch() can be either."""
        count, ticks = ctypes.c_uint(), ctypes.c_longlong(-1)
        unknown = (raw.RC_NOT_SUPPORTED, raw.RC_NOT_AVAILABLE, raw.RC_FEATURE_ERROR)
        code = self._session.call("vxsys_GetRawMetaDataInfo", ctypes.byref(count), ctypes.byref(ticks), 0, also=unknown)
        return ticks.value if code == raw.RC_SUCCESS else None

    def _check_not_stopped(self):
        if self._is_stopped:
            raise CameraStateError("the run has been stopped")

    @staticmethod
    def _deadline(timeout):
        return float("inf") if timeout is None else time.monotonic() + timeout

    def _trigger_when_due(self, newest):
        if self._triggers_every is None:
            return
        now = time.monotonic()
        if newest != self._triggered_after or now >= self._trigger_again:
            self._session.call("SendSoftwareTrigger")
            self._triggered_after = newest
            self._trigger_again = now + self._triggers_every
