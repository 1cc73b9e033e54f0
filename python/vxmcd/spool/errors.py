# SPDX-License-Identifier: MIT
"""What can be wrong with the directory of a spooled run."""
from __future__ import annotations

from pathlib import Path


_MAX_LISTED = 1000


class SpoolError(Exception):
    """A spooled run cannot be read. The base of the other errors here."""


class SpoolFormatError(SpoolError):
    """A file is missing, too short or does not say what it has to. `path` is the file."""

    def __init__(self, path: Path, problem: str):
        super().__init__(f"{path}: {problem}")
        self.path = path
        self._problem = problem

    def __reduce__(self):
        return type(self), (self.path, self._problem)


def _listed(numbers):
    return ", ".join(map(str, numbers[:5])) + (", ..." if len(numbers) > 5 else "")


class MissingImageError(SpoolError, LookupError):
    """Images that were asked for are not there. `numbers` lists the first thousand of them, counted from 0."""

    def __init__(self, numbers, where: Path):
        self.numbers = [int(number) for number in numbers[:_MAX_LISTED]]
        self._where = where
        super().__init__(f"{where}: not there: image {_listed(self.numbers)}")

    def __reduce__(self):
        return type(self), (self.numbers, self._where)


class DamagedImageError(SpoolError):
    """The bytes of images do not fit their checksums. `numbers` lists them, counted from 0."""

    def __init__(self, numbers, where: Path):
        self.numbers = [int(number) for number in numbers]
        self._where = where
        super().__init__(f"{where}: damaged: image {_listed(self.numbers)}; salvage=True leaves them out")

    def __reduce__(self):
        return type(self), (self.numbers, self._where)
