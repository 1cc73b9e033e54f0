# SPDX-License-Identifier: MIT
"""Checks of the values that settings are given. Another type raises TypeError."""
from __future__ import annotations

import numbers
import warnings
from collections.abc import Sequence
from typing import Tuple

import numpy as np

from .errors import ClippedWarning

_INT_LIMIT = 2**31
_ROUNDING = 0.01  # cameras round times to steps of their own; a smaller part than this is not reported


def number(what: str, value) -> float:
    """A number of Python or NumPy. A bool is none."""
    value = _scalar(value)
    if not isinstance(value, numbers.Real) or isinstance(value, bool):
        raise TypeError(f"{what} is a number, not {value!r}")
    return float(value)


def integer(what: str, value) -> int:
    """A whole number of Python or NumPy that fits into an int of C, which ctypes would cut silently."""
    value = _scalar(value)
    if not isinstance(value, numbers.Integral) or isinstance(value, bool):
        raise TypeError(f"{what} is a whole number, not {value!r}")
    value = int(value)
    if not -_INT_LIMIT <= value < _INT_LIMIT:
        raise ValueError(f"{what} cannot be {value}")
    return value


def integers(what: str, values, count: int) -> Tuple[int, ...]:
    """As many whole numbers, in a sequence or an array."""
    if not isinstance(values, (Sequence, np.ndarray)) or isinstance(values, (str, bytes)):
        raise TypeError(f"{what} is {count} whole numbers, not {values!r}")
    if len(values) != count:
        raise ValueError(f"{what} is {count} whole numbers, not {len(values)}")
    return tuple(integer(what, value) for value in values)


def switch(what: str, value) -> bool:
    """True or False, also NumPy's."""
    value = _scalar(value)
    if not isinstance(value, (bool, np.bool_)):
        raise TypeError(f"{what} is True or False, not {value!r}")
    return bool(value)


def warn_if_clipped(setting: str, asked: float, actual: float, unit: str) -> None:
    """To be called by a setter of Camera: the warning names the line that sets the attribute."""
    if abs(actual - asked) > _ROUNDING * asked:
        warnings.warn(ClippedWarning(setting, asked, actual, unit), stacklevel=4)  # behind the setter and __setattr__()


def _scalar(value):
    return value[()] if isinstance(value, np.ndarray) and value.ndim == 0 else value
