# SPDX-License-Identifier: MIT
"""The simulated cameras, configured by each test."""
import ctypes
import os
import struct
from pathlib import Path

import pytest

# A camera of 16 x 8 pixels whose frames contain their numbers, and for some tests a second one.
COUNTER = """[Simulator]
Cameras = {cameras}
[Camera0]
Model = RQ512_LX
{timing}
Scene = counter
Noise = off
[Camera0.SensorWidth]
Value = 16
[Camera0.SensorHeight]
Value = 8
"""
SECOND = "[Camera1]\nModel = TARN 1M\nClock = free\nScene = stamp\n"
MANUAL = COUNTER.format(cameras=1, timing="Source = manual")
FREE = COUNTER.format(cameras=2, timing="Clock = free") + SECOND
REAL = COUNTER.format(cameras=2, timing="Clock = real") + SECOND


# The built-in cameras with pictures that take no time to paint, for separate programs.
QUICK = """[Simulator]
Cameras = 2
[Camera0]
Model = TRELLIS CMOS
Scene = stamp
[Camera1]
Model = RQ512_LX
Scene = stamp
"""


def environment_for_programs(directory):
    """The environment of a program with the quick cameras, whose configuration is put into a directory."""
    configuration = directory / "cameras.ini"
    configuration.write_text(QUICK)
    return dict(os.environ, VXCORE_CONFIG=str(configuration))


class Simulator:
    """Control of the simulated cameras; the library of the same directory as the camera library."""

    def __init__(self):
        self._library = ctypes.CDLL(str(Path(os.environ["VXMCD_LIBRARY"]).parent / "libvxcore.so.3"))
        self._library.VXSIM_GetLastError.restype = ctypes.c_char_p
        self._library.VXSIM_AdvanceTime.argtypes = (ctypes.c_int, ctypes.c_double)

    def configure(self, text):
        self._check(self._library.VXSIM_Configure(text.encode()))

    def fault(self, rule):
        self._check(self._library.VXSIM_AddFault(rule.encode()))

    def push(self, count, device=0):
        self._check(self._library.VXSIM_PushFrames(device, count))

    def advance(self, seconds, device=0):
        self._check(self._library.VXSIM_AdvanceTime(device, seconds))

    def unplug(self, device=0, plugged=False):
        self._check(self._library.VXSIM_SetPlugged(device, int(plugged)))

    def open_cameras(self):
        return self._library.VXSIM_GetOpenCount()

    def initialisations(self):
        return self._library.VXSIM_GetInitialiseCount()

    def reset(self):
        self._library.VXSIM_ClearFaults()
        self._check(self._library.VXSIM_Reset())

    def _check(self, code):
        assert code == 0, self._library.VXSIM_GetLastError().decode()


def frame_number(image):
    """The number of a counter frame, from 1; its head and tail must be of one frame."""
    data = image.astype("<u2").tobytes()
    head, tail = struct.unpack_from("<IIQ", data), struct.unpack_from("<IIQ", data, len(data) - 32)
    assert head[0] == 0x4D465856 and head == tail
    return head[2]


@pytest.fixture
def simulator():
    simulator = Simulator()
    yield simulator
    left_open = simulator.open_cameras(), simulator.initialisations()
    simulator.reset()
    assert left_open == (0, 0)
