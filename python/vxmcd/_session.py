# SPDX-License-Identifier: MIT
"""An open camera in the library. For each call a session makes its camera that of the calling thread, so that calls for
different cameras are made at the same time, and other code of the program keeps the current camera that it has chosen.
Calls for one camera take turns. A run that is started in this way belongs to its camera."""
from __future__ import annotations

import ctypes
import os
import sys
import threading
from contextlib import contextmanager, suppress
from typing import Callable, Iterator

import numpy as np

from . import _checks, raw
from .errors import CameraStateError, NoCameraError, VxmcdError

FIRST_HANDLE = 101
_UNCHANGED = -1  # no handle


class _Thread(threading.local):
    """What each thread has for itself."""

    is_in_turn = False  # of any camera

    def __init__(self):
        self.at_end = []  # what to do at the end of the outermost turn


_thread = _Thread()


def after_turn(action: Callable[[], None]) -> None:
    """Does something that takes the turn of a camera: at once or, in the middle of a turn, at its end. There a signal
    handler or the garbage collector is running, and a thread that has the turn of the one camera may wait for that of the
    other. An error at the end goes to standard error: the call that has been made may be for another camera."""
    if _thread.is_in_turn:
        _thread.at_end.append(action)
    else:
        action()


def camera_count() -> int:
    """The number of attached cameras."""
    count = ctypes.c_long()
    code = raw.GetAvailableCameras(ctypes.byref(count))
    if code != raw.RC_SUCCESS:
        raise VxmcdError("GetAvailableCameras", code)
    return count.value


def _which_are_attached(count):
    if count == 0:
        return "none is attached; connect one and switch it on"
    return f"attached are {', '.join(map(str, range(count)))}; vxmcd.cameras() and vxmcd list describe them"


def value_of(output):
    """The value of an output. A number of single precision becomes the one with the fewest digits: 0.1, not 0.10000000149."""
    return float(str(np.float32(output.value))) if isinstance(output, ctypes.c_float) else output.value


class Session:
    """One camera from Initialize to ShutDown. Thread-safe."""

    _open = {}  # by handle, from before Initialize to after ShutDown

    def __init__(self, index: int):
        self.index = _checks.integer("the number of a camera (vxmcd.cameras() lists them)", index)
        self.handle = FIRST_HANDLE + self.index
        self.is_open = False
        self._is_in_library = False
        self._is_acquiring = False
        self._lock = threading.RLock()
        with self.turn():
            self._register()
            try:
                self._call("Initialize", None)
                self._is_in_library = self.is_open = True
            except VxmcdError as error:
                del self._open[self.handle]
                count = camera_count()
                if 0 <= self.index < count:
                    raise
                detail = f"there is no camera {index}: {_which_are_attached(count)}"
                raise NoCameraError(error.function, error.code, detail) from None
            except BaseException:  # such as Ctrl-C, which is noticed when the camera has been opened
                self._is_in_library = True
                with suppress(VxmcdError):
                    self._shut_down()
                raise

    def _register(self):
        while True:
            other = self._open.setdefault(self.handle, self)
            if other is self:
                return
            with other.turn():  # another thread may be opening or closing it
                if other.is_open:
                    raise CameraStateError(f"camera {self.index} is open already: close it first with its close(), or with "
                                           "vxmcd.close_cameras() when you have lost it, as in a notebook")
                other._shut_down()
                if self._open.get(self.handle) is other:
                    raise CameraStateError(f"camera {self.index} is being opened or closed in the call that this one "
                                           "interrupts")

    @contextmanager
    def turn(self) -> Iterator[None]:
        """For a `with` block during which no other thread makes a call for this camera, except for waits."""
        is_inner = _thread.is_in_turn
        try:
            _thread.is_in_turn = True
            with self._lock:
                yield
        finally:
            _thread.is_in_turn = is_inner
            while _thread.at_end and not is_inner:
                try:
                    _thread.at_end.pop(0)()
                except Exception:
                    sys.excepthook(*sys.exc_info())

    def call(self, name: str, *arguments, also=()) -> int:
        """Calls a function for this camera. Returns its code, which is success or one of `also`."""
        with self.turn():
            if not self.is_open:
                raise CameraStateError(f"{name}: camera {self.index} is closed")
            return self._call(name, *arguments, also=also)

    def change(self, name: str, *arguments, also=()) -> int:
        """As call(), for settings that a camera refuses during a run, often without an error. CameraStateError then."""
        with self.turn():
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
        """Waits for an image of this camera's run, or until the time is over. Other threads can use this camera
        meanwhile."""
        code = raw.WaitForAcquisitionByHandleTimeOut(self.handle, timeout_ms)
        self._check("WaitForAcquisitionByHandleTimeOut", code, (raw.RC_NO_NEW_DATA,))

    def begin_run(self) -> None:
        """From now to end_run() the camera is not idle."""
        with self.turn():
            if not self.is_open:
                raise CameraStateError(f"camera {self.index} is closed")
            self.check_idle()
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
        """Closes the camera, which ends its run. A signal handler or the garbage collector may close a camera in the
        middle of a call: then it is closed in the library at the end of that call."""
        if _thread.is_in_turn:
            self.is_open = False
        after_turn(self._shut_down)

    @classmethod
    def close_all(cls) -> None:
        for session in list(cls._open.values()):
            session.close()

    @classmethod
    def forget_all(cls) -> None:
        """In a forked child the library has no camera, and a thread that does not exist there may have had the turn."""
        for session in cls._open.values():
            session.is_open = session._is_in_library = False
            session._lock = threading.RLock()
        cls._open.clear()

    def _shut_down(self):
        with self.turn():
            if not self._is_in_library:
                return
            try:
                self.is_open = self._is_in_library = False
                self._call("ShutDown")
            finally:
                self._is_acquiring = False
                del self._open[self.handle]

    def _call(self, name, *arguments, also=()):
        # ctypes accepts only Python integers.
        arguments = [int(argument) if isinstance(argument, np.integer) else argument for argument in arguments]
        # Calls may be within others: in a signal handler, or when the garbage collector runs.
        earlier = ctypes.c_long(_UNCHANGED)
        try:
            code = raw.vxmcd_SetCurrentCameraOfThread(self.handle, ctypes.byref(earlier))
            self._check("vxmcd_SetCurrentCameraOfThread", code)
            return self._check(name, getattr(raw, name)(*arguments), also)
        finally:
            if earlier.value != _UNCHANGED:
                raw.vxmcd_SetCurrentCameraOfThread(earlier, None)

    @staticmethod
    def _check(name, code, also=()):
        if code != raw.RC_SUCCESS and code not in also:
            raise VxmcdError(name, code)
        return code


os.register_at_fork(after_in_child=Session.forget_all)


def open_by_serial(serial: int) -> Session:
    """Opens cameras until one has this number in its serial number. Cameras that are open stay so."""
    serial = _checks.integer("a serial number", serial)
    found = []
    for index in range(camera_count()):
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
