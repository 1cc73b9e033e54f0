# SPDX-License-Identifier: MIT
"""Every function of the camera library by its name, with the argument and result types of the header; also its constants
(VXMCD_...), result codes (RC_...), records and callback types. The library is loaded when the first function is used.

Functions return result codes and raise no exceptions: raw.GetDetector(byref(width), byref(height)). docs/api.md describes
them. Arguments are those of ctypes, which cuts numbers that do not fit into the argument's type.
"""
from __future__ import annotations

from . import _library, _signatures

_CODES = {name: code for code, (name, _, _) in _signatures.RESULT_CODES.items()}


def _function(name):
    function = _library.load()[name]
    function.restype, arguments = _signatures.FUNCTIONS[name]
    if arguments is not None:
        function.argtypes = arguments
    return function


def _value(name):
    if name in _signatures.FUNCTIONS:
        return _function(name)
    for table in (_signatures.CONSTANTS, _CODES):
        if name in table:
            return table[name]
    if name.startswith("vxmcd_") and hasattr(_signatures, name):
        return getattr(_signatures, name)
    raise AttributeError(f"the camera library has no '{name}'")


def __getattr__(name):
    value = globals()[name] = _value(name)
    return value


def __dir__():
    return sorted({*globals(), *_signatures.FUNCTIONS, *_signatures.CONSTANTS, *_CODES})
