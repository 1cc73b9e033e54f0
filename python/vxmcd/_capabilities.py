# SPDX-License-Identifier: MIT
"""What a camera can do, with the names of its bits."""
from __future__ import annotations

from ._signatures import CONSTANTS, vxmcd_Capabilities

_BITS = {"acquisitionModes": "VXMCD_ACQUISITION_", "readModes": "VXMCD_READ_", "triggerModes": "VXMCD_TRIGGER_",
         "settableFunctions": "VXMCD_SET_", "readableFunctions": "VXMCD_GET_", "features": "VXMCD_FEATURE"}
_TYPE = "VXMCD_CAMERA_"


def _constants(prefix):
    return {name: value for name, value in CONSTANTS.items() if name.startswith(prefix)}


def _bit_names(prefix, bits):
    names = []
    for name, value in _constants(prefix).items():
        if bits & value == value:
            names.append(name)
            bits &= ~value
    return " | ".join(names + ([hex(bits)] if bits or not names else []))


class Capabilities(vxmcd_Capabilities):
    """The record vxmcd_Capabilities. repr() shows the names of the bits that are set: constants of vxmcd.raw."""

    def __repr__(self) -> str:
        kinds = [name for name, value in _constants(_TYPE).items() if value == self.cameraType]
        lines = [f"cameraType={kinds[0] if kinds else self.cameraType}", f"pixelMode={self.pixelMode:#x}"]
        lines += [f"{field}={_bit_names(prefix, getattr(self, field))}" for field, prefix in _BITS.items()]
        return "Capabilities(" + ",\n             ".join(lines) + ")"
