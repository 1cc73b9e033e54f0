# SPDX-License-Identifier: MIT
"""Cooling of a camera's sensor."""
from __future__ import annotations

import ctypes
import time
from typing import Optional, Tuple

from . import _checks, raw
from ._session import value_of
from .errors import CameraStateError, NotStableError, VxmcdError

_STATES = {raw.RC_TEMP_OFF: "off", raw.RC_TEMP_STABILIZED: "stable", raw.RC_TEMP_NOT_REACHED: "not reached",
           raw.RC_TEMP_DRIFT: "drift", raw.RC_TEMP_NOT_STABILIZED: "not stable", raw.RC_SUCCESS: "unknown"}
_POLL_SECONDS = 0.1
_FAN_MODES = {"full": 0, "low": 1, "off": 2}


class CoolingSettings:
    """The settings of Camera for temperature, in degrees Celsius. Uses its session; see Camera."""

    def _temperature_and_code(self):
        degrees = ctypes.c_float()
        code = self._session.call("GetTemperatureF", ctypes.byref(degrees), also=tuple(_STATES))
        return value_of(degrees), code

    @property
    def temperature(self) -> float:
        """Temperature of the sensor in degrees Celsius."""
        return self._temperature_and_code()[0]

    @property
    def temperature_status(self) -> str:
        """The state of the cooling: "off", "not reached", "not stable" (reached, but not for long enough), "stable", "drift"
        (was stable, and has left the target), or "unknown"."""
        return _STATES[self._temperature_and_code()[1]]

    @property
    def target_temperature(self) -> float:
        """The target of the cooler in degrees Celsius. Setting it takes whole degrees and does not switch the cooler on."""
        outputs = [ctypes.c_float] * 4
        return self._session.read("GetTemperatureStatus", *outputs)[1]

    @target_temperature.setter
    def target_temperature(self, celsius: int) -> None:
        celsius = _checks.number("target_temperature", celsius)
        lowest, highest = self.temperature_range
        if not lowest <= celsius <= highest or celsius != int(celsius):
            raise ValueError(f"a target of {celsius:g} C: this camera takes whole degrees from {lowest} to {highest}")
        self._session.call("SetTemperature", int(celsius))

    @property
    def temperature_range(self) -> Tuple[int, int]:
        """Lowest and highest target in degrees Celsius."""
        return self._session.read("GetTemperatureRange", ctypes.c_int, ctypes.c_int)

    @property
    def cooler(self) -> bool:
        """Whether the cooler is switched on."""
        return bool(self._session.read("IsCoolerOn", ctypes.c_int))

    @cooler.setter
    def cooler(self, on: bool) -> None:
        on = _checks.switch("cooler", on)
        self._session.call("CoolerON" if on else "CoolerOFF")
        if self.cooler != on:  # the call succeeds even if the camera refuses
            raise VxmcdError("CoolerON" if on else "CoolerOFF", raw.RC_NOT_AVAILABLE, "the cooler does not switch")

    def wait_until_stable(self, timeout: Optional[float] = None) -> float:
        """Waits until `temperature_status` is "stable", and returns the temperature. Raises NotStableError after `timeout` s;
        without it the wait has no limit, which a cooler that is too weak never ends. Raises CameraStateError when the cooler is
        off, also when it is switched off meanwhile. Ctrl-C ends the wait; the cooler stays on."""
        seconds = float("inf") if timeout is None else _checks.number("timeout", timeout)
        deadline = time.monotonic() + seconds
        while True:
            temperature, code = self._temperature_and_code()
            status = _STATES[code]
            if status == "stable":
                return temperature
            if not self.cooler:
                raise CameraStateError("the cooler is off, so the temperature does not reach its target: set "
                                       "target_temperature, and cooler = True")
            if status == "unknown":
                raise VxmcdError("GetTemperatureF", raw.RC_NOT_AVAILABLE, "the camera does not report whether it is stable")
            left = deadline - time.monotonic()
            if left <= 0:
                raise NotStableError(temperature, self.target_temperature, status, seconds)
            time.sleep(min(_POLL_SECONDS, left))

    def set_fan(self, mode: str) -> None:
        """Sets the fan: "full", "low" or "off"."""
        if not isinstance(mode, str):
            raise TypeError(f"the fan's mode is a text, not {mode!r}")
        if mode not in _FAN_MODES:
            raise ValueError(f"fan {mode!r} is none of {', '.join(_FAN_MODES)}")
        self._session.call("SetFanMode", _FAN_MODES[mode])
        self._fan = mode
