# SPDX-License-Identifier: MIT
"""Cameras and their images in Python: Camera and cameras() here, recorded runs in vxmcd.spool, every function of the
library in vxmcd.raw. The library is loaded when a camera is first used."""
from typing import TYPE_CHECKING

from ._signatures import LIBRARY_VERSION as __version__
from .errors import (
    CameraStateError, ClippedWarning, DiskSpaceWarning, FramesLostError, FramesLostWarning, LibraryError, NoCameraError,
    NoImageError, NotStableError, VxmcdError)

# What needs the module `raw` is imported on use, so that reading recorded runs needs no library.
_LAZY = {"Camera": "camera", "cameras": "camera", "close_cameras": "camera",
         "TriggerMode": "_timing", "Area": "_area", "Gain": "_readout", "Frame": "_stream", "Stream": "_stream",
         "start_together": "_together", "Together": "_together", "Spread": "_together",
         "load_settings": "_settings", "save_settings": "_settings"}

__all__ = ["CameraStateError", "ClippedWarning", "DiskSpaceWarning", "FramesLostError", "FramesLostWarning",
           "LibraryError", "NoCameraError", "NoImageError", "NotStableError", "VxmcdError", *_LAZY]

if TYPE_CHECKING:
    from ._area import Area
    from ._readout import Gain
    from ._settings import load_settings, save_settings
    from ._stream import Frame, Stream
    from ._timing import TriggerMode
    from ._together import Spread, Together, start_together
    from .camera import Camera, cameras, close_cameras


def __getattr__(name):
    if name not in _LAZY:
        raise AttributeError(f"module 'vxmcd' has no attribute '{name}'")
    import importlib
    value = globals()[name] = getattr(importlib.import_module(f".{_LAZY[name]}", __name__), name)
    return value


def __dir__():
    return sorted({*globals(), *_LAZY})
