# SPDX-License-Identifier: MIT
"""Finding and loading the camera library."""
from __future__ import annotations

import ctypes
import functools
import os
import platform
import sysconfig
from pathlib import Path
from typing import List

NAME = "libvxmcd.so.3"
VARIABLE = "VXMCD_LIBRARY"


def candidates() -> List[str]:
    """The files to try: only the one that VXMCD_LIBRARY names, if it is set; otherwise those in the library directories of
    the prefix that this package is installed below, then what the dynamic loader finds."""
    named = os.environ.get(VARIABLE)
    if named:
        return [named]
    triplet = sysconfig.get_config_var("MULTIARCH") or f"{platform.machine()}-linux-gnu"
    directories = [parent for parent in Path(__file__).resolve().parents if parent.name in ("lib", "lib64")]
    files = [directory.parent / below / NAME
             for directory in directories[:1] for below in (f"lib/{triplet}", "lib64", "lib")]
    return [str(file) for file in files if file.exists()] + [NAME]


@functools.lru_cache(maxsize=None)
def load() -> ctypes.CDLL:
    """The library, loaded at the first call. Raises OSError with the files that were tried."""
    problems = []
    for candidate in candidates():
        try:
            return ctypes.CDLL(candidate)
        except OSError as error:
            problems.append(f"{candidate}: {error}")
    raise OSError(f"the camera library cannot be loaded; {VARIABLE} can name it. Tried " + "; ".join(problems))
