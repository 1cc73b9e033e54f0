# SPDX-License-Identifier: MIT
"""A camera."""
from __future__ import annotations

import ctypes
import difflib
import os
import shutil
import tempfile
import warnings
import weakref
from typing import List, Optional, Tuple, Union

import numpy as np

from . import _checks, _run, raw
from ._area import AreaSettings
from ._capabilities import Capabilities
from ._cooling import CoolingSettings
from ._readout import ReadoutSettings
from ._run import Run
from ._session import Session, camera_count, open_by_serial
from ._settings import StoredSettings
from ._stream import Stream
from ._timing import TimingSettings, TriggerMode
from .errors import DiskSpaceWarning, VxmcdError
from .spool import SpoolRun

_MODEL_BYTES = 4096  # what GetHeadModel may write
_SPOOL_METHODS = (1, 3)
_SPOOL_THREADS = 2  # the library's default


def cameras() -> List[int]:
    """The numbers of the attached cameras, for Camera(number)."""
    return list(range(camera_count()))


def close_cameras() -> None:
    """Closes every camera that this program has open, also one that no variable refers to any more. Ends a run."""
    Session.close_all()


def _check_run(images, timeout):
    if images is not None and _checks.integer("images", images) < 1:
        raise ValueError(f"{images} images: 1 or more")
    if timeout is not None:
        _checks.number("timeout", timeout)


def _why_not_written(path):
    """What hinders the recording to a directory, as far as it can be seen afterwards."""
    try:
        os.makedirs(path, exist_ok=True)
        with tempfile.TemporaryFile(dir=path):
            return f"{os.fspath(path)!r} has {shutil.disk_usage(path).free / 1e6:.0f} MB of free space"
    except OSError as error:
        problem = "it is a file" if os.path.isfile(path) else error.strerror
        return f"{os.fspath(path)!r} cannot be written to: {problem}; choose another directory"


def _no_setting(kind, name):
    if hasattr(kind, name):
        return f"{name}() is a method of a camera, not a setting"
    members = {known: getattr(kind, known) for known in dir(kind)}
    settings = [known for known, member in members.items() if isinstance(member, property) and member.fset]
    near = difflib.get_close_matches(name, settings, 1)
    return f"a camera has no setting {name!r}" + (f"; did you mean {near[0]!r}?" if near else "")


class Camera(TimingSettings, AreaSettings, ReadoutSettings, CoolingSettings, StoredSettings):
    """An open camera. In a `with` statement it closes at the end of the block, also after an exception.

    It opens with the whole sensor, without binning or accumulation, internally triggered, with metadata. Times are seconds,
    rates Hz, temperatures degrees Celsius. When the library refuses a call, VxmcdError has its result code; impossible
    values raise ValueError, values of a wrong type TypeError, settings that do not exist AttributeError. When the
    camera's time or rate differs from the one that was set by more than 1 %, there is a ClippedWarning. Subclasses keep
    attributes of their own under names that begin with an underscore.

    Several cameras can be open and acquire at the same time, and several threads may use them: calls for one camera take
    turns, waits and calls for different cameras do not. During a run of a camera a second one of the same camera raises
    CameraStateError. Waits return to Python every 0.05 s, so that Ctrl-C ends them.
    """

    def __init__(self, number: Optional[int] = None, *, serial: Optional[int] = None):
        """Opens the camera of a number, 0 without one, or the one with this `serial_number`. To find that, cameras are
        opened one after the other."""
        if number is not None and serial is not None:
            raise ValueError("give the number of a camera or its serial number, not both")
        self._stream = lambda: None  # the stream under way
        self._session = Session(0 if number is None else number) if serial is None else open_by_serial(serial)
        self._finalizer = weakref.finalize(self, self._session.close)
        try:
            self._model = self.model  # for repr(), which must not fail
            self._set_up_readout()
            self._set_up_timing()
            self._set_up_area()
        except BaseException:
            self.close()
            raise

    def __enter__(self) -> "Camera":
        return self

    def __exit__(self, *_) -> None:
        self.close()

    def __setattr__(self, name: str, value) -> None:
        if not name.startswith("_") and not isinstance(getattr(type(self), name, None), property):
            raise AttributeError(_no_setting(type(self), name))  # otherwise a misspelt one would become an attribute
        super().__setattr__(name, value)

    def __reduce__(self):  # for pickle and copy
        raise TypeError(f"camera {self.number} cannot be pickled or copied: open it in the process that uses it")

    def __repr__(self) -> str:
        return f"<Camera {self.number}: {self._model if self.is_open else 'closed'}>"

    def close(self) -> None:
        """Closes the camera and ends its run. Every later call raises CameraStateError."""
        stream = self._stream()
        try:
            if stream is not None:
                stream.close()
        finally:
            self._finalizer()

    @property
    def is_open(self) -> bool:
        return self._session.is_open

    @property
    def number(self) -> int:
        """The camera's index in the list of attached cameras."""
        return self._session.index

    @property
    def model(self) -> str:
        return self._session.text("GetHeadModel", _MODEL_BYTES, has_size=False)

    @property
    def serial_number(self) -> int:
        """The number in the serial number; 0 when there is none."""
        return self._session.serial_number()

    @property
    def pixel_size(self) -> Tuple[float, float]:
        """Width and height of a pixel of the sensor in micrometres."""
        return self._session.read("GetPixelSize", ctypes.c_float, ctypes.c_float)

    @property
    def capabilities(self) -> Capabilities:
        """What the camera can do: the record vxmcd_Capabilities. raw.VXMCD_... has names for its bits."""
        record = Capabilities()
        record.size = ctypes.sizeof(record)
        self._session.call("GetCapabilities", ctypes.byref(record))
        return record

    def snap(self, timeout: Optional[float] = None) -> np.ndarray:
        """Takes one image, rows x columns. In the software trigger mode it also sends the trigger. Raises NoImageError when
        there is no image after `timeout` s."""
        _check_run(None, timeout)
        mode = _run.ACCUMULATE if self.accumulations > 1 else _run.SINGLE
        image = np.empty(self.shape, self.dtype)
        self._take(mode, image[np.newaxis], timeout)
        return image

    def grab(self, images: int, timeout: Optional[float] = None) -> np.ndarray:
        """Takes a series, (images, rows, columns). The library has all of it in memory, in addition to the array; for longer
        series see stream() and record(). Raises NoImageError when no image came for `timeout` s, and VxmcdError when the
        run ends before all images are there."""
        _check_run(images, timeout)
        stack = np.empty((images, *self.shape), self.dtype)
        self._take(_run.SERIES, stack, timeout)
        return stack

    def stream(self, images: Optional[int] = None, timeout: Optional[float] = None, allow_loss: bool = False) -> Stream:
        """Starts a run and returns a Stream, which delivers its frames one by one: `images` of them, or without end. See
        Stream for losses. A stream takes single exposures, so `accumulations` must be 1. In the software trigger mode, call
        trigger() for each frame."""
        stream, run = self.prepare_stream(images, timeout, allow_loss)
        try:
            run.start()
        except BaseException:
            stream.close()
            raise
        return stream

    def prepare_stream(self, images: Optional[int], timeout: Optional[float], allow_loss: bool) -> Tuple[Stream, Run]:
        """For start_together(): what stream() does before it starts the run."""
        _check_run(images, timeout)
        if self.accumulations != 1:
            raise ValueError("a stream takes single exposures: set accumulations to 1")
        self._check_bits()
        has_even_period = self.trigger_mode in (TriggerMode.INTERNAL, TriggerMode.EXTERNAL_START)
        run = Run(self._session, _run.UNTIL_ABORT, None, starts=False)
        stream = Stream(run, self, images, timeout, allow_loss, has_even_period)
        self._stream = weakref.ref(stream)
        return stream, run

    def trigger(self) -> None:
        """Triggers one exposure, in the software trigger mode."""
        self._session.call("SendSoftwareTrigger")

    def record(self, path: Union[str, "os.PathLike[str]"], images: int, method: int = 3, threads: Optional[int] = None,
               timeout: Optional[float] = None) -> SpoolRun:
        """Records a series to disk, into a directory that is made if need be; an earlier run in it is replaced. Method 1
        writes a file for each image, 3 many images into each file. `threads` is the number of threads that write, 2 by
        default. Returns the recorded run. When the disk has less room than the run needs, there is a DiskSpaceWarning, and
        the images that fit are recorded. Raises NoImageError when no image came for `timeout` s, and VxmcdError when the
        run fails. In both cases, and after Ctrl-C, the directory has what was written until then."""
        _check_run(images, timeout)
        name = os.fsencode(path)
        if not name or b"\0" in name:
            raise ValueError(f"{path!r} is not the name of a directory")
        if b"\\" in name:
            raise ValueError(f"{path!r}: the library reads a backslash as a slash; separate directories by slashes")
        if method not in _SPOOL_METHODS:
            raise ValueError(f"method {method} is none of {_SPOOL_METHODS}")
        try:
            # Only within a run of its own: the directory is that of the camera's next start, whoever makes it.
            with self._make_run(_run.SERIES, images, starts=False) as run:
                try:
                    self._session.call("SetSpool", 1, method, name)
                    self._session.call("SetSpoolThreadCount", _SPOOL_THREADS if threads is None else threads)
                    self._warn_of_full_disk(path)
                    run.start()
                finally:
                    self._session.call("SetSpool", 0, method, None)
                run.wait_for_end(timeout)
        except VxmcdError as error:
            if error.code != raw.RC_STATUS_SPOOL_ISSUE:
                raise
            details = [text for text in (error.detail, _why_not_written(path)) if text]
            raise VxmcdError(error.function, error.code, "; ".join(details)) from None
        return SpoolRun(path)

    def _warn_of_full_disk(self, path):
        needed, free = self._session.read("vxmcd_GetSpoolSpace", ctypes.c_ulonglong, ctypes.c_ulonglong,
                                          also=(raw.RC_NOT_AVAILABLE,))
        if needed > free:
            warnings.warn(DiskSpaceWarning(os.fspath(path), needed, free), stacklevel=3)  # behind record()

    def _make_run(self, mode, images, starts=True):
        triggers_every = None
        if self.trigger_mode is TriggerMode.SOFTWARE:
            # A busy sensor ignores a trigger, so it is sent again after this time.
            triggers_every = 1.5 * max(self.cycle_time, self.exposure + self.accumulation_cycle_time) + 0.2
        return Run(self._session, mode, images, triggers_every, starts)

    def _take(self, mode, stack, timeout):
        self._check_bits()
        with self._make_run(mode, len(stack)) as run:
            for number, image in enumerate(stack, 1):
                run.wait_for(number, timeout)
                is_there, _ = run.fetch(number, image)
                if not is_there:
                    raise VxmcdError("vxmcd_GetIntactImage", raw.RC_NO_NEW_DATA, f"image {number} is gone")

    def _frame_period_changes(self):
        stream = self._stream()
        if stream is not None:
            stream.frame_period_changes()
