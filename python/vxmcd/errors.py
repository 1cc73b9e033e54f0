# SPDX-License-Identifier: MIT
"""Errors of cameras."""
from __future__ import annotations

from ._signatures import RESULT_CODES

_UNKNOWN = ("unknown result code", "", "")


class VxmcdError(RuntimeError):
    """A function of the camera library, or a run, did not succeed.

    function: the function that reported it. code, name, meaning, advice: the result code, and the library's texts for it.
    detail: what else is known. Texts may be empty.
    """

    def __init__(self, function: str, code: int, detail: str = ""):
        self.function = function
        self.code = code
        self.detail = detail
        self.name, self.meaning, self.advice = RESULT_CODES.get(code, _UNKNOWN)
        parts = [f"{function}: {code} {self.name}", self.meaning, detail]
        text = ": ".join(part for part in parts if part)
        super().__init__(f"{text} ({self.advice})" if self.advice else text)

    def __reduce__(self):
        return type(self), (self.function, self.code, self.detail)


class NoCameraError(VxmcdError):
    """There is no such camera. The message says which there are."""

    def __str__(self) -> str:
        return self.detail


class LibraryError(OSError):
    """The camera library cannot be loaded, or does not fit this package. The message says what to do."""


class CameraStateError(RuntimeError):
    """A call that is not possible now: the camera is closed, or a run is under way."""


class NoImageError(TimeoutError):
    """No image came within the time limit."""


class NotStableError(TimeoutError):
    """The temperature was not stable within the time limit. temperature, target: degrees Celsius; status: as
    Camera.temperature_status."""

    def __init__(self, temperature: float, target: float, status: str, seconds: float):
        self.temperature = temperature
        self.target = target
        self.status = status
        self.seconds = seconds
        super().__init__(f"the temperature is not stable after {seconds:g} s: {temperature:.1f} C, the target is {target:g} C "
                         f"({status})")

    def __reduce__(self):
        return type(self), (self.temperature, self.target, self.status, self.seconds)


class FramesLostError(RuntimeError):
    """`count` images of a stream, before image number `number`, were overwritten before they were fetched."""

    def __init__(self, count: int, number: int):
        self.count = count
        self.number = number
        super().__init__(f"{count} images before image {number} were overwritten before they were fetched; fetch faster, "
                         "lower the frame rate or the area, record to disk, or allow losses with allow_loss=True")

    def __reduce__(self):
        return type(self), (self.count, self.number)


class ClippedWarning(UserWarning):
    """The camera took another value than the one that was set. setting: the attribute. asked, actual: the value that
    was set and the one in force, in `unit`."""

    def __init__(self, setting: str, asked: float, actual: float, unit: str):
        self.setting = setting
        self.asked = asked
        self.actual = actual
        self.unit = unit
        super().__init__(f"{setting}: {asked:g} {unit} was set, the camera uses {actual:g} {unit}")

    def __reduce__(self):
        return type(self), (self.setting, self.asked, self.actual, self.unit)


class FramesLostWarning(UserWarning):
    """The camera's clock shows that the camera itself lost frames of a stream."""


class DiskSpaceWarning(UserWarning):
    """A run that is about to be recorded needs more room than the disk has. path: its directory. needed, free: bytes."""

    def __init__(self, path, needed: int, free: int):
        self.path = path
        self.needed = needed
        self.free = free
        super().__init__(f"the run needs {needed} bytes ({needed / 1e6:.1f} MB) on the disk, and {free} bytes "
                         f"({free / 1e6:.1f} MB) are free in {path!r}; it will end when the disk is full")

    def __reduce__(self):
        return type(self), (self.path, self.needed, self.free)
