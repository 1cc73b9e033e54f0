# SPDX-License-Identifier: MIT
"""Which part of a camera's sensor becomes the image."""
from __future__ import annotations

import ctypes
import numbers
from typing import NamedTuple, Optional, Tuple

import numpy as np

from . import _checks, raw

_READ_MODE_IMAGE = 4
_PIXEL_TYPES = {8: np.uint8, 16: np.uint16, 32: np.int32}


class Area(NamedTuple):
    """A part of the sensor, in sensor pixels, with any binning. The first column and row are 1."""

    left: int
    top: int
    width: int
    height: int


class AreaSettings:
    """The settings of Camera for the size of its images. Uses its session; see Camera."""

    def _set_up_area(self):
        self._session.change("SetReadMode", _READ_MODE_IMAGE)
        self._bits = None
        self._binning = (1, 1)
        self._area = Area(1, 1, *self.sensor_size)
        self._session.change("SetImage", *self._image_arguments(self._area, self._binning))

    @property
    def sensor_size(self) -> Tuple[int, int]:
        """Width and height of the sensor in pixels."""
        return self._session.read("GetDetector", ctypes.c_int, ctypes.c_int)

    @property
    def area(self) -> Area:
        """The part of the sensor that is read out. None sets the whole sensor."""
        return self._area

    @area.setter
    def area(self, area: Optional[Area]) -> None:
        sensor = (1, 1, *self.sensor_size)
        self._set_image(Area(*(sensor if area is None else _checks.integers("area", area, 4))), self._binning)

    @property
    def binning(self) -> Tuple[int, int]:
        """Columns and rows of the sensor that are added up to one pixel. Columns and rows that do not fill a pixel are left
        out. One number sets both."""
        return self._binning

    @binning.setter
    def binning(self, binning) -> None:
        both = (binning, binning) if isinstance(binning, numbers.Integral) else binning
        self._set_image(self._area, _checks.integers("binning", both, 2))

    @property
    def shape(self) -> Tuple[int, int]:
        """Rows and columns of an image."""
        return self._area.height // self._binning[1], self._area.width // self._binning[0]

    @property
    def bits(self) -> int:
        """Bits of an image's pixels: 8 (with the encoding "Mono8"), 16, or 32, which are signed. None chooses 32 with
        accumulations, whose sums may exceed 65535, and otherwise 16. With 16, larger values lose their upper bits."""
        return self._bits or (32 if self.accumulations > 1 else 16)

    @bits.setter
    def bits(self, bits: Optional[int]) -> None:
        bits = None if bits is None else _checks.integer("bits", bits)
        if bits is not None and bits not in _PIXEL_TYPES:
            raise ValueError(f"{bits} bits: 8, 16 or 32")
        self._bits = bits

    @property
    def dtype(self) -> np.dtype:
        """The type of a pixel."""
        return np.dtype(_PIXEL_TYPES[self.bits])

    @staticmethod
    def _image_arguments(area, binning):
        return (*binning, area.left, area.left + area.width - 1, area.top, area.top + area.height - 1)

    def _set_image(self, area, binning):
        self._session.check_idle()
        width, height = self.sensor_size
        if min(area) < 1 or area.left + area.width - 1 > width or area.top + area.height - 1 > height:
            raise ValueError(f"{area} is not on the sensor of {width}x{height} pixels")
        if min(binning) < 1 or area.width < binning[0] or area.height < binning[1]:
            raise ValueError(f"a binning of {binning[0]}x{binning[1]} does not fit into {area.width}x{area.height} pixels")
        try:
            if binning != self._binning and binning != (1, 1) and not self._is_binning_in_force(width, height, binning):
                raise ValueError(f"the camera does not bin by {binning[0]}x{binning[1]}")
            self._session.change("SetImage", *self._image_arguments(area, binning))
        except BaseException:  # parts of a refused area may be in the camera
            self._session.change("SetImage", *self._image_arguments(self._area, self._binning))
            raise
        self._area, self._binning = area, binning

    def _is_binning_in_force(self, width, height, binning):
        """The library does not report a binning that the camera refuses, nor the binning in force. This finds it out: the
        whole sensor is accepted, and an area that is one binned pixel larger is not."""
        def answer(more_columns, more_rows):
            area = Area(1, 1, width + more_columns, height + more_rows)
            return self._session.change("SetImage", *self._image_arguments(area, binning),
                                      also=(raw.RC_P3_INVALID, raw.RC_P4_INVALID, raw.RC_P5_INVALID, raw.RC_P6_INVALID))
        return (answer(binning[0], 0), answer(0, binning[1]), answer(0, 0)) == (
            raw.RC_P4_INVALID, raw.RC_P5_INVALID, raw.RC_SUCCESS)
