# SPDX-License-Identifier: MIT
"""Gain, amplifier and speed of a camera."""
from __future__ import annotations

import ctypes
from typing import List, NamedTuple, Optional

from . import _checks, raw

_TEXT_BYTES = 256
_ONE_AMPLIFIER = 0  # the AD channel that reads one amplifier


class Gain(NamedTuple):
    """A pre-amplifier gain."""

    text: str
    factor: float

    def __repr__(self) -> str:
        return f"Gain(text={self.text!r}, factor={self.factor:g})"


class ReadoutSettings:
    """The settings of Camera for the read-out of the sensor. Uses its session; see Camera.

    Settings are indices into the lists here. The library does not report which one is in force, so reading a setting returns
    the value that was set here, None before. It does not report either that the camera refuses a choice.
    """

    def _set_up_readout(self):
        self._gain = self._amplifier = self._readout_speed = self._ad_channel = None

    @property
    def ad_channels(self) -> List[int]:
        """Bits of a pixel, for each AD channel. Channel 0 reads one amplifier, 1 both combined."""
        count = self._session.read("GetNumberADChannels", ctypes.c_int)
        return [self._session.read("GetBitDepth", ctypes.c_int, given=(channel,)) for channel in range(count)]

    @property
    def ad_channel(self) -> Optional[int]:
        """The AD channel."""
        return self._ad_channel

    @ad_channel.setter
    def ad_channel(self, channel: int) -> None:
        channel = _checks.integer("ad_channel", channel)
        self._session.change("SetADChannel", channel)
        self._ad_channel = channel

    @property
    def amplifiers(self) -> List[str]:
        """The descriptions of the amplifiers."""
        count = self._session.read("GetNumberAmp", ctypes.c_int)
        return [self._session.text("GetAmpDesc", _TEXT_BYTES, amplifier) for amplifier in range(count)]

    @property
    def amplifier(self) -> Optional[int]:
        """The amplifier; setting it chooses AD channel 0, which reads one."""
        return self._amplifier

    @amplifier.setter
    def amplifier(self, amplifier: int) -> None:
        amplifier = _checks.integer("amplifier", amplifier)
        self._session.change("SetOutputAmplifier", amplifier)
        self._amplifier = amplifier
        self.ad_channel = _ONE_AMPLIFIER

    @property
    def readout_speeds(self) -> List[float]:
        """The horizontal shift speeds in MHz."""
        count = self._session.read("GetNumberHSSpeeds", ctypes.c_int, given=(0, 0))
        return [self._session.read("GetHSSpeed", ctypes.c_float, given=(0, 0, speed)) for speed in range(count)]

    @property
    def readout_speed(self) -> Optional[int]:
        """The horizontal shift speed."""
        return self._readout_speed

    @readout_speed.setter
    def readout_speed(self, speed: int) -> None:
        speed = _checks.integer("readout_speed", speed)
        self._session.change("SetHSSpeed", self._amplifier or 0, speed)
        self._readout_speed = speed

    @property
    def gains(self) -> List[Gain]:
        """The pre-amplifier gains."""
        count = self._session.read("GetNumberPreAmpGains", ctypes.c_int)
        return [Gain(self._session.text("GetPreAmpGainText", _TEXT_BYTES, gain),
                     self._session.read("GetPreAmpGain", ctypes.c_float, given=(gain,))) for gain in range(count)]

    @property
    def gain(self) -> Optional[int]:
        """The pre-amplifier gain; setting it chooses the AD channel and amplifier that it needs."""
        return self._gain

    @gain.setter
    def gain(self, gain: int) -> None:
        gain = _checks.integer("gain", gain)
        count = self._session.read("GetNumberPreAmpGains", ctypes.c_int)
        if not 0 <= gain < count:
            raise ValueError(f"gain {gain} is not one of 0 to {count - 1}")
        channel, amplifier = self._place_of(gain)
        self._session.change("SetOutputAmplifier", amplifier)
        self._session.change("SetADChannel", channel)
        self._session.change("SetPreAmpGain", gain)
        self._gain, self._ad_channel, self._amplifier = gain, channel, amplifier

    @property
    def baseline_clamp(self) -> bool:
        """Whether the camera keeps the level of dark pixels constant."""
        return bool(self._session.read("GetBaselineClamp", ctypes.c_int))

    @baseline_clamp.setter
    def baseline_clamp(self, on: bool) -> None:
        self._session.change("SetBaselineClamp", int(_checks.switch("baseline_clamp", on)))

    def _place_of(self, gain):
        for channel in range(self._session.read("GetNumberADChannels", ctypes.c_int)):
            for amplifier in range(self._session.read("GetNumberAmp", ctypes.c_int)):
                place = (channel, amplifier, self._readout_speed or 0, gain)
                if self._session.read("IsPreAmpGainAvailable", ctypes.c_int, given=place,
                                      also=(raw.RC_P1_INVALID, raw.RC_P2_INVALID)) == 1:
                    return channel, amplifier
        raise ValueError(f"gain {gain} cannot be had at this readout speed")
