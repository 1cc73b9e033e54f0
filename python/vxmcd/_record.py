# SPDX-License-Identifier: MIT
"""Records of the camera library."""
from ctypes import Structure


class Record(Structure):
    """A record that prints its fields."""

    def __repr__(self) -> str:
        fields = (f"{name}={getattr(self, name)!r}" for name, _ in self._fields_)
        return f"{type(self).__name__}({', '.join(fields)})"
