# SPDX-License-Identifier: MIT
"""Finding and loading the camera library."""
from __future__ import annotations

import ctypes
import functools
import os
import platform
import sys
import sysconfig
import warnings
from pathlib import Path
from typing import Iterator, List, Optional

from ._signatures import FUNCTIONS, LIBRARY_VERSION
from .errors import LibraryError

NAME = "libvxmcd.so.3"
VARIABLE = "VXMCD_LIBRARY"
_LOCAL = Path("/usr/local")  # below it, the loader finds a library only after ldconfig


class _Library(ctypes.CDLL):
    """A library whose functions print with their types, once raw has set them."""

    def __init__(self, file: str):
        super().__init__(file)
        self._FuncPtr.__repr__ = lambda function: (
            f"<function {function.__name__}({', '.join(kind.__name__ for kind in function.argtypes or ())})>")


def _below(prefix: Path) -> Iterator[Path]:
    triplet = sysconfig.get_config_var("MULTIARCH") or f"{platform.machine()}-linux-gnu"
    return (prefix / directory / NAME for directory in (f"lib/{triplet}", "lib64", "lib"))


def _in_builds(sources: Path) -> List[Path]:
    """The libraries in the build directories of a source tree, the newest first."""
    if not (sources / "include" / "vxmcd.h").exists():
        return []
    files = [file for pattern in ("build*/lib", "build*/*/lib") for file in sources.glob(f"{pattern}/{NAME}")]
    return sorted(files, key=lambda file: -file.stat().st_mtime)


def _places() -> Iterator[Path]:
    """Where the library may be, the nearest first: below the prefix of this package, in the source tree that this package is
    part of, below the prefix of the interpreter."""
    package = Path(__file__).resolve().parent
    yield from (file for parent in package.parents if parent.name in ("lib", "lib64") for file in _below(parent.parent))
    yield from _in_builds(package.parents[1])
    yield from _below(Path(sys.prefix))


def candidates() -> List[str]:
    """The files to try: only the one that VXMCD_LIBRARY names, if it is set; otherwise those that exist near this package,
    then what the dynamic loader finds, then those below /usr/local."""
    named = os.environ.get(VARIABLE)
    if named:
        return [named]
    return [*dict.fromkeys(str(file) for file in _places() if file.exists()), NAME,
            *(str(file) for file in _below(_LOCAL) if file.exists())]


def _not_found(problems: List[str]) -> str:
    named = os.environ.get(VARIABLE)
    if named:
        return f"the camera library cannot be loaded from the file that {VARIABLE} names: {problems[0]}"
    prefix = _LOCAL if sys.prefix == "/usr" else sys.prefix
    directories = dict.fromkeys(str(file.parent) for file in (*_places(), *_below(_LOCAL)))
    return "\n  ".join([
        f"the camera library {NAME} cannot be loaded. Tried:", *problems,
        f"There is none in {', '.join(directories)}.",
        "To get it, install the Debian package libvxmcd3; or, in the source tree of vxmcd, run",
        "  cmake --preset release && cmake --build --preset release && "
        f"cmake --install build/release --prefix {prefix}",
        f"or name the library's file in the environment variable {VARIABLE}."])


def _version(library: ctypes.CDLL) -> Optional[str]:
    """Major, minor and build number of a library; None when it does not say."""
    numbers = [ctypes.c_uint() for _ in range(4)]
    try:
        library["getSDKVersion"](*map(ctypes.byref, numbers))
    except AttributeError:
        return None
    return ".".join(str(number.value) for number in numbers[:3])


def _has(library: ctypes.CDLL, function: str) -> bool:
    try:
        library[function]
    except AttributeError:
        return False
    return True


def _check(library: ctypes.CDLL, file: str) -> None:
    """Whether this package can use the library. A function that is missing would only be noticed when it is called."""
    version = _version(library)
    versions = f"it has the version {version or 'unknown'}, and the Python package {LIBRARY_VERSION}"
    missing = [name for name in FUNCTIONS if not _has(library, name)]
    if missing:
        more = f" and {len(missing) - 3} others" if len(missing) > 3 else ""
        raise LibraryError(f"the camera library {file} has no {', '.join(missing[:3])}{more}: {versions}. Install both from "
                           f"the same release, or name another library in the environment variable {VARIABLE}")
    if version != LIBRARY_VERSION:
        warnings.warn(f"the camera library {file} may not do what the documentation of the package says: {versions}",
                      RuntimeWarning, stacklevel=2)


@functools.lru_cache(maxsize=None)
def load() -> ctypes.CDLL:
    """The library, loaded at the first call. Raises LibraryError, which says where it was looked for or what does not fit."""
    problems = []
    for candidate in candidates():
        try:
            library = _Library(candidate)
        except OSError as error:
            problems.append(str(error))
            continue
        _check(library, candidate)
        return library
    raise LibraryError(_not_found(problems))
