# SPDX-License-Identifier: MIT
"""Times, triggers and metadata of a camera."""
from __future__ import annotations

import ctypes
import enum
import math
from typing import Optional, Union

import numpy as np

from . import _checks, raw


class TriggerMode(enum.Enum):
    """What starts an exposure. Settings also take names like "external-start"."""

    INTERNAL = 0
    EXTERNAL = 1
    EXTERNAL_START = 6
    EXTERNAL_EXPOSURE = 7
    SOFTWARE = 10

    @classmethod
    def of(cls, mode: Union["TriggerMode", str]) -> "TriggerMode":
        if isinstance(mode, cls):
            return mode
        if not isinstance(mode, str):
            raise TypeError(f"a trigger mode is a TriggerMode or its name, not {mode!r}")
        names = {member.name.lower().replace("_", "-"): member for member in cls}
        if mode not in names:
            raise ValueError(f"trigger mode {mode!r} is none of {', '.join(names)}")
        return names[mode]


def _positive(what, value):
    value = _checks.number(what, value)
    if not (math.isfinite(value) and value > 0):
        raise ValueError(f"{what} is {value}, it must be above 0")
    return value


class TimingSettings:
    """The part of Camera that is about time. Uses its session; see Camera."""

    def _set_up_timing(self):
        self._session.change("SetTriggerMode", TriggerMode.INTERNAL.value, also=(raw.RC_INVALID_TRIGGER_MODE,))
        self._session.change("SetNumberAccumulations", 1, also=(raw.RC_NOT_SUPPORTED,))
        self._trigger_mode = TriggerMode.INTERNAL
        self._accumulations = 1
        self._has_metadata = True  # Initialize switches it on
        self._overlaps = None

    def _timings(self):
        return self._session.read("GetAcquisitionTimings", ctypes.c_float, ctypes.c_float, ctypes.c_float)

    @property
    def exposure(self) -> float:
        """Exposure time in s, as it is in force: the camera rounds it to its steps."""
        return self._timings()[0]

    @exposure.setter
    def exposure(self, seconds: float) -> None:
        asked = _positive("exposure", seconds)
        seconds = ctypes.c_float(asked).value
        maximum = self._session.read("GetMaximumExposure", ctypes.c_float, also=(raw.RC_P1_INVALID,))
        if seconds == ctypes.c_float(maximum).value:
            # Rounded to single precision, the maximum may be above the camera's, which refuses it.
            seconds = float(np.nextafter(np.float32(seconds), np.float32(0)))
        self._session.call("SetExposureTime", seconds)
        self._frame_period_changes()
        _checks.warn_if_clipped("exposure", asked, self.exposure, "s")

    @property
    def maximum_exposure(self) -> float:
        """The longest exposure in s."""
        return self._session.read("GetMaximumExposure", ctypes.c_float)

    @property
    def readout_time(self) -> float:
        """Time in s that the read-out of the sensor takes."""
        return self._session.read("GetReadOutTime", ctypes.c_float)

    @property
    def cycle_time(self) -> float:
        """Time in s from one image of a series to the next, as it is in force."""
        return self._timings()[2]

    @cycle_time.setter
    def cycle_time(self, seconds: float) -> None:
        seconds = _positive("cycle_time", seconds)
        self._set_cycle_time(seconds)
        _checks.warn_if_clipped("cycle_time", seconds, self.cycle_time, "s")

    @property
    def frame_rate(self) -> float:
        """Images of a series in a second (Hz): 1 / cycle_time. The exposure limits it, so set that first."""
        return 1.0 / self.cycle_time

    @frame_rate.setter
    def frame_rate(self, hertz: float) -> None:
        hertz = _positive("frame_rate", hertz)
        self._set_cycle_time(_positive("1 / frame_rate", 1.0 / hertz))
        _checks.warn_if_clipped("frame_rate", hertz, self.frame_rate, "Hz")

    @property
    def accumulation_cycle_time(self) -> float:
        """Time in s from one exposure of an accumulated image to the next, as it is in force."""
        return self._timings()[1]

    @accumulation_cycle_time.setter
    def accumulation_cycle_time(self, seconds: float) -> None:
        seconds = _positive("accumulation_cycle_time", seconds)
        self._session.call("SetAccumulationCycleTime", seconds)
        _checks.warn_if_clipped("accumulation_cycle_time", seconds, self.accumulation_cycle_time, "s")

    @property
    def accumulations(self) -> int:
        """Exposures that are added up to one image by snap(), grab() and record(). The value that was set here."""
        return self._accumulations

    @accumulations.setter
    def accumulations(self, count: int) -> None:
        count = _checks.integer("accumulations", count)
        self._session.change("SetNumberAccumulations", count)
        self._accumulations = count

    @property
    def trigger_mode(self) -> TriggerMode:
        """What starts an exposure: a TriggerMode. You can also set its name in small letters ("external-start")."""
        return self._trigger_mode

    @trigger_mode.setter
    def trigger_mode(self, mode: Union[TriggerMode, str]) -> None:
        mode = TriggerMode.of(mode)
        self._session.change("SetTriggerMode", mode.value)
        self._trigger_mode = mode

    @property
    def overlap(self) -> Optional[bool]:
        """Whether the next exposure overlaps the read-out of the one before. The value that was set here, None before."""
        return self._overlaps

    @overlap.setter
    def overlap(self, on: bool) -> None:
        on = _checks.switch("overlap", on)
        self._session.change("SetOverlapMode", int(on))
        self._overlaps = on

    @property
    def metadata(self) -> bool:
        """Whether frames have the camera's clock value, from the next run on. On at first."""
        return self._has_metadata

    @metadata.setter
    def metadata(self, on: bool) -> None:
        on = _checks.switch("metadata", on)
        self._session.change("SetMetaData", int(on))
        self._has_metadata = on

    def _set_cycle_time(self, seconds):
        self._session.call("SetKineticCycleTime", seconds)
        self._frame_period_changes()
