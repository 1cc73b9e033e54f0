# SPDX-License-Identifier: MIT
"""An open camera in the library. Calls of the library act on its current camera: a session makes its camera the current one for
each call, under a lock that all sessions share. Runs are independent of it: each camera's run addresses its own camera."""
from __future__ import annotations

import ctypes
import threading

import numpy as np

from . import _checks, raw
from .errors import CameraStateError, NoCameraError, VxmcdError

FIRST_HANDLE = 101

_lock = threading.RLock()
_is_calling = False  # the thread with the lock has chosen its camera for a call: the current camera must stay


def undisturbed():
    """For a `with` block during which no other thread makes a call through a session, except for waits."""
    return _lock


def camera_count() -> int:
    """The number of attached cameras."""
    count = ctypes.c_long()
    with _lock:
        code = raw.GetAvailableCameras(ctypes.byref(count))
    if code != raw.RC_SUCCESS:
        raise VxmcdError("GetAvailableCameras", code)
    return count.value


def _which_are_attached(count):
    if count == 0:
        return "none is attached; connect one and switch it on"
    return f"attached are {', '.join(map(str, range(count)))}, as vxmcd.cameras() says"


def value_of(output):
    """The value of an output. A number of single precision becomes the one with the fewest digits: 0.1, not 0.10000000149."""
    return float(str(np.float32(output.value))) if isinstance(output, ctypes.c_float) else output.value


class Session:
    """One camera from Initialize to ShutDown. Thread-safe."""

    _open = {}  # by handle
    _closing = []  # closed, but not yet in the library

    def __init__(self, index: int):
        self.index = _checks.integer("the number of a camera (vxmcd.cameras() lists them)", index)
        self.handle = FIRST_HANDLE + self.index
        self.is_open = False
        self._is_acquiring = False
        with _lock:
            if self.handle in self._open:
                raise CameraStateError(f"camera {index} is open already: close it first with its close(), or with "
                                       "vxmcd.close_cameras() when you have lost it, as in a notebook")
            self._make_independent()
            try:
                self._call_as_current("Initialize", None)
            except VxmcdError as error:
                count = camera_count()
                if 0 <= self.index < count:
                    raise
                detail = f"there is no camera {index}: {_which_are_attached(count)}"
                raise NoCameraError(error.function, error.code, detail) from None
            self.is_open = True
            self._open[self.handle] = self

    def call(self, name: str, *arguments, also=()) -> int:
        """Calls a function with this camera as the current one. Returns its code, which is success or one of `also`."""
        with _lock:
            if not self.is_open:
                raise CameraStateError(f"{name}: camera {self.index} is closed")
            return self._call_as_current(name, *arguments, also=also)

    def change(self, name: str, *arguments, also=()) -> int:
        """As call(), for settings that a camera refuses during a run, often without an error. CameraStateError then."""
        with _lock:
            self.check_idle()
            return self.call(name, *arguments, also=also)

    def read(self, name: str, *kinds, given=(), also=()):
        """Calls a function with the given arguments and pointers to outputs of these kinds. Returns the value of the output,
        or a tuple of them."""
        outputs = [kind() for kind in kinds]
        self.call(name, *given, *map(ctypes.byref, outputs), also=also)
        values = tuple(value_of(output) for output in outputs)
        return values[0] if len(values) == 1 else values

    def text(self, name: str, size: int, *given, has_size: bool = True) -> str:
        """Calls a function that writes a text to a buffer. The buffer has one byte more, so the text is always terminated."""
        buffer = ctypes.create_string_buffer(size + 1)
        self.call(name, *given, buffer, *([size] if has_size else []))
        return buffer.value.decode(errors="replace")

    def wait(self, timeout_ms: int) -> None:
        """Waits for an image of this camera's run, or until the time is over. Does not take the lock, so that other threads
        can use this camera and others meanwhile."""
        code = raw.WaitForAcquisitionByHandleTimeOut(self.handle, timeout_ms)
        self._check("WaitForAcquisitionByHandleTimeOut", code, (raw.RC_NO_NEW_DATA,))

    def begin_run(self) -> None:
        """From now to end_run() the camera is not idle."""
        with _lock:
            if not self.is_open:
                raise CameraStateError(f"camera {self.index} is closed")
            self.check_idle()
            self._make_independent()
            self._is_acquiring = True

    def check_idle(self) -> None:
        """Raises CameraStateError during a run of this camera."""
        if self._is_acquiring:
            raise CameraStateError(f"camera {self.index} is acquiring: close its stream first")

    def end_run(self) -> None:
        self._is_acquiring = False

    def serial_number(self) -> int:
        """The number in the serial number; 0 when there is none."""
        return self.read("GetCameraSerialNumber", ctypes.c_int)

    def close(self) -> None:
        """Closes the camera, which ends its run. The garbage collector may close a forgotten camera in the middle of a call
        for another one: then it is closed in the library at the end of that call."""
        with _lock:
            if not self.is_open:
                return
            self.is_open = False
            self._closing.append(self)
            self._shut_down_closed()

    @classmethod
    def close_all(cls) -> None:
        with _lock:
            for session in list(cls._open.values()):
                session.close()

    @classmethod
    def _shut_down_closed(cls):
        while cls._closing and not _is_calling:
            cls._closing.pop()._shut_down()

    def _shut_down(self):
        del self._open[self.handle]
        try:
            self._call_as_current("ShutDown")
        finally:
            self._is_acquiring = False

    @classmethod
    def _make_independent(cls):
        """Makes each run belong to its camera, however many others run. Nothing changes when it is so already."""
        code = raw.vxmcd_SetIndependentCameras(1)
        if code == raw.RC_ACQUIRING:
            raise CameraStateError("a camera acquires that was not started by this package, and in a way that allows no "
                                   "second one: end its run first, or set VXMCD_INDEPENDENT_CAMERAS=1 for the whole program")
        cls._check("vxmcd_SetIndependentCameras", code)

    def _call_as_current(self, name, *arguments, also=()):
        global _is_calling
        # ctypes accepts only Python integers.
        arguments = [int(argument) if isinstance(argument, np.integer) else argument for argument in arguments]
        is_inner = _is_calling  # in a signal handler, or when the garbage collector closes a stream
        before = self.handle
        try:
            _is_calling = True
            before = self._make_current(self.handle)
            return self._check(name, getattr(raw, name)(*arguments), also)
        finally:
            if is_inner:  # the outer call may have chosen its camera, and not yet been made
                self._make_current(before)
            _is_calling = is_inner
            self._shut_down_closed()

    @classmethod
    def _make_current(cls, handle):
        """Returns the handle of the camera that was the current one."""
        current = ctypes.c_long()
        cls._check("GetCurrentCamera", raw.GetCurrentCamera(ctypes.byref(current)))
        if current.value != handle:
            cls._check("SetCurrentCamera", raw.SetCurrentCamera(handle))
        return current.value

    @staticmethod
    def _check(name, code, also=()):
        if code != raw.RC_SUCCESS and code not in also:
            raise VxmcdError(name, code)
        return code


def open_by_serial(serial: int) -> Session:
    """Opens cameras until one has this number in its serial number. Cameras that are open stay so."""
    serial = _checks.integer("a serial number", serial)
    found = []
    for index in range(camera_count()):
        with _lock:
            there = Session._open.get(FIRST_HANDLE + index)
        try:
            session = there or Session(index)
        except VxmcdError as error:  # another program uses it, for example
            found.append(f"an unknown one (camera {index}: {error.name})")
            continue
        number = None
        try:
            number = session.serial_number()
        finally:
            if there is None and number != serial:
                session.close()
        if number == serial:
            return Session(index) if there else session  # which says that it is open
        found.append(f"{number} (camera {index})")
    raise NoCameraError("GetCameraSerialNumber", raw.RC_P1_INVALID,
                        f"no camera has the serial number {serial}; there are: {', '.join(found) or 'none'}")
