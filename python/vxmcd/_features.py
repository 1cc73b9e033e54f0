# SPDX-License-Identifier: MIT
"""Features of a camera by their names in the feature library."""
from __future__ import annotations

import ctypes
from typing import List, Optional, Tuple

from . import _library

_SUCCESS = 0  # VX_SUCCESS
_TEXT_LENGTH = 256
_SWITCHES = {"on": 1, "true": 1, "1": 1, "off": 0, "false": 0, "0": 0}


def _call(function, handle, name, *arguments):
    # The camera library is linked to the feature library, so that the loader finds its functions through it.
    return _library.load()[function](ctypes.c_int(handle), ctypes.c_wchar_p(name), *arguments)


def has(handle: int, name: str) -> bool:
    """Whether the camera has the feature."""
    flag = ctypes.c_int()
    return _call("VX_IsImplemented", handle, name, ctypes.byref(flag)) == _SUCCESS and flag.value == 1


def _reads(function, handle, name, kind):
    """The value in a list, which is empty when the feature is of another kind or cannot be read."""
    value = kind()
    return [value.value] if _call(function, handle, name, ctypes.byref(value)) == _SUCCESS else []


def _word(handle, name, index):
    buffer = ctypes.create_unicode_buffer(_TEXT_LENGTH)
    code = _call("VX_GetEnumeratedString", handle, name, ctypes.c_int(index), buffer, ctypes.c_int(_TEXT_LENGTH))
    return buffer.value if code == _SUCCESS else ""


def words(handle: int, name: str) -> List[str]:
    """The values of an enumerated feature that are available under the present settings; none for other features."""
    found = []
    for index in range(sum(_reads("VX_GetEnumeratedCount", handle, name, ctypes.c_int))):
        flag = ctypes.c_int()
        _call("VX_IsEnumeratedIndexAvailable", handle, name, ctypes.c_int(index), ctypes.byref(flag))
        if flag.value:
            found.append(_word(handle, name, index))
    return found


def integer(handle: int, name: str) -> Optional[int]:
    """The value of an integer feature; None when the camera has no such feature."""
    return next(iter(_reads("VX_GetInt", handle, name, ctypes.c_longlong)), None)


def limits(handle: int, name: str) -> Tuple[Optional[float], Optional[float]]:
    """The lowest and the highest value of a feature that is a number; None where it is not known."""
    return tuple(next(iter(_reads("VX_GetFloat" + end, handle, name, ctypes.c_double)), None) for end in ("Min", "Max"))


def text(handle: int, name: str) -> str:
    """The value of a text or an enumerated feature; "" when there is none."""
    for index in _reads("VX_GetEnumerated", handle, name, ctypes.c_int):
        return _word(handle, name, index)
    for length in _reads("VX_GetStringMaxLength", handle, name, ctypes.c_int):
        buffer = ctypes.create_unicode_buffer(max(length, 1))
        if _call("VX_GetString", handle, name, buffer, ctypes.c_int(len(buffer))) == _SUCCESS:
            return buffer.value
    return ""


def set_by_text(handle: int, name: str, value: str) -> None:
    """Sets a feature by the text of its value. Raises ValueError with what would be accepted."""
    if not has(handle, name):
        raise ValueError(f"this camera has no feature {name!r}; vxmcd get lists its features")
    code = None
    accepted = "a text"
    if _reads("VX_GetEnumeratedCount", handle, name, ctypes.c_int):
        accepted = "one of " + ", ".join(words(handle, name))
        code = _call("VX_SetEnumeratedString", handle, name, ctypes.c_wchar_p(value))
    elif _reads("VX_GetInt", handle, name, ctypes.c_longlong):
        accepted = _limits("VX_GetInt", handle, name, ctypes.c_longlong, "a whole number")
        code = _write_number("VX_SetInt", handle, name, ctypes.c_longlong, int, value)
    elif _reads("VX_GetFloat", handle, name, ctypes.c_double):
        accepted = _limits("VX_GetFloat", handle, name, ctypes.c_double, "a number")
        code = _write_number("VX_SetFloat", handle, name, ctypes.c_double, float, value)
    elif _reads("VX_GetBool", handle, name, ctypes.c_int):
        accepted = "on or off"
        if value in _SWITCHES:
            code = _call("VX_SetBool", handle, name, ctypes.c_int(_SWITCHES[value]))
    else:
        code = _call("VX_SetString", handle, name, ctypes.c_wchar_p(value))
    if code != _SUCCESS:
        refusal = "" if code is None else f" (the feature library answers {code})"
        raise ValueError(f"{name}: {value!r} is not accepted; {accepted} is, under the present settings{refusal}")


def _limits(function, handle, name, kind, what):
    limits = [f"{_format(value)}" for end in ("Min", "Max") for value in _reads(function + end, handle, name, kind)]
    return f"{what} from {limits[0]} to {limits[1]}" if len(limits) == 2 else what


def _format(value):
    return f"{value:g}" if isinstance(value, float) else str(value)


def _write_number(function, handle, name, kind, read, value):
    try:
        number = kind(read(value))
    except (ValueError, OverflowError):
        return None
    return _call(function, handle, name, number)
