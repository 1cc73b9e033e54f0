# SPDX-License-Identifier: MIT
"""Reading of spooled runs: the directories that a run with spooling writes. Needs NumPy, but not the camera library."""
from .description import RunDescription
from .errors import DamagedImageError, MissingImageError, SpoolError, SpoolFormatError
from .ranges import ImageRange, reduce_images
from .run import SpoolRun

__all__ = ["DamagedImageError", "ImageRange", "MissingImageError", "RunDescription", "SpoolError", "SpoolFormatError",
           "SpoolRun", "reduce_images"]
