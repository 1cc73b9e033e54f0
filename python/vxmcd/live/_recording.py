# SPDX-License-Identifier: MIT
"""A recording of the live view: its name, how many images it has, how far it is, and what came of it."""
from __future__ import annotations

import os
import re
import shutil
import time
from pathlib import Path
from typing import Dict, Optional

from ..spool import SpoolError, SpoolRun

_DESCRIPTION_SECONDS = 5.0  # to wait for the description of a run that has ended
_DISK_RESERVE = 1 << 28  # bytes that a recording without a number of images leaves on the disk, or
_DISK_RESERVE_PART = 16  # this part of what is free
_MAX_IMAGES = 2**31 - 1
_LOOK_SECONDS = 0.05  # between two looks at the description
_NAME = re.compile(r"[A-Za-z0-9_-][A-Za-z0-9._-]{0,63}")


def check_name(name: object, directory: Path, suffix: str = "") -> Path:
    """The path of a new file or directory. Names come from the browser, paths do not."""
    if not isinstance(name, str) or not _NAME.fullmatch(name):
        raise ValueError("a name has 1 to 64 letters, digits and . _ -, and does not begin with a point")
    if not os.access(directory, os.W_OK | os.X_OK):
        raise ValueError(f"{directory} is not there any more, or cannot be written to")
    path = directory / (name + suffix)
    if path.exists() or path.is_symlink():
        raise ValueError(f"there is already a {path.name!r}; choose another name")
    return path


def images_to_record(images: Optional[float], seconds: Optional[float], cycle_seconds: float, directory: Path,
                     image_bytes: int) -> int:
    """How many images to record. Without a number and a time as many as fit on the disk, so that the recording ends in order.
    Raises ValueError."""
    if images is not None:
        count = int(images) if images == int(images) else 0
    elif seconds is not None:
        count = max(round(seconds / cycle_seconds), 1)
    else:
        free = shutil.disk_usage(directory).free
        free -= min(_DISK_RESERVE, free // _DISK_RESERVE_PART)
        count = min(free // (image_bytes + 64), _MAX_IMAGES)
        if count < 1:
            raise ValueError("the disk is full")
    if not 1 <= count <= _MAX_IMAGES:
        raise ValueError(f"a recording has 1 to {_MAX_IMAGES} images")
    return count


class Recording:
    """A series that is written to disk. For the thread of the worker."""

    def __init__(self, path: Path, images: int, is_counted: bool, seconds: Optional[float]):
        self.path = path
        self.images = images  # at most
        self.is_counted = is_counted  # whether it is to have so many
        self.started = time.monotonic()
        self.seconds = seconds  # after which it ends, where triggers set the rate

    def is_over(self) -> bool:
        return self.seconds is not None and time.monotonic() - self.started >= self.seconds

    def json(self, total: int, rate: Optional[float], image_bytes: int) -> Dict[str, object]:
        left = (self.images - total) / rate if self.is_counted and rate else None
        if self.seconds is not None:
            left = max(self.seconds - (time.monotonic() - self.started), 0.0)
        return {"name": self.path.name, "images": total, "asked": self.images if self.is_counted else None,
                "limit": self.images, "bytes": total * image_bytes, "rate": rate, "seconds_left": left,
                "seconds": round(time.monotonic() - self.started, 2)}

    def result(self) -> Dict[str, object]:
        """What is in the directory. Images after the last one are missing only where the run was to have them."""
        try:
            # After a failure the library writes the description a little later than it reports the failure.
            deadline = time.monotonic() + _DESCRIPTION_SECONDS
            run = SpoolRun(self.path, salvage=True)
            while run.state == "recording" and time.monotonic() < deadline:
                time.sleep(_LOOK_SECONDS)
                run = SpoolRun(self.path, salvage=True)
            missing = len(run.missing)
            if run.state != "complete":
                missing = run.numbers[-1] + 1 - len(run) if len(run) else 0
            return {"state": run.state, "images": len(run), "missing": int(missing)}
        except (SpoolError, OSError) as error:
            return {"state": "failed", "images": 0, "missing": None, "text": str(error)}
