# SPDX-License-Identifier: MIT
"""Numbers that are missing from a run."""
from __future__ import annotations

import itertools
import operator
from collections.abc import Sequence
from typing import Iterator, List

import numpy as np

_MAX_SHOWN = 5


class NumberGaps(Sequence):
    """The numbers of a range that an ascending array does not have, as a sequence in ascending order. It keeps where gaps
    begin and end, so that it is small however many numbers are missing; tolist() and numpy.array() make all of them."""

    def __init__(self, whole: range, there: np.ndarray):
        self._whole = whole if whole.step > 0 else whole[::-1]
        offsets = there[slice(*np.searchsorted(there, (self._whole.start, self._whole.stop)))] - self._whole.start
        places = offsets[offsets % self._whole.step == 0] // self._whole.step
        starts, stops = np.append(0, places + 1), np.append(places, len(self._whole))
        self._starts, self._stops = starts[starts < stops], stops[starts < stops]
        self._ends = np.cumsum(self._stops - self._starts)  # how many numbers there are up to the end of each gap

    @property
    def size(self) -> int:
        """How many numbers are missing."""
        return int(self._ends[-1]) if self._ends.size else 0

    def gaps(self) -> List[range]:
        """The missing numbers as ranges."""
        return list(self._gaps())

    def tolist(self) -> List[int]:
        return list(self)

    def __len__(self) -> int:
        return self.size

    def __getitem__(self, place):
        places = range(self.size)[place]
        return [self._number(one) for one in places] if isinstance(places, range) else self._number(places)

    def __iter__(self) -> Iterator[int]:
        return itertools.chain.from_iterable(self._gaps())

    def __contains__(self, number) -> bool:
        try:
            place = self._whole.index(operator.index(number))  # at once for integers of Python, else one by one
        except (TypeError, ValueError):
            return False
        gap = np.searchsorted(self._starts, place, "right") - 1
        return bool(gap >= 0 and place < self._stops[gap])

    def __array__(self, dtype=None, copy=None) -> np.ndarray:
        return np.fromiter(self, np.int64 if dtype is None else dtype, self.size)

    def __repr__(self) -> str:
        texts = [str(gap[0]) if len(gap) == 1 else f"{gap[0]}-{gap[-1]}"
                 for gap in itertools.islice(self._gaps(), _MAX_SHOWN)]
        texts += ["..."] if self._starts.size > _MAX_SHOWN else []
        return f"<{self.size} missing{': ' if texts else ''}{', '.join(texts)}>"

    def _gaps(self):
        return (self._whole[int(start):int(stop)] for start, stop in zip(self._starts, self._stops))

    def _number(self, place):
        gap = np.searchsorted(self._ends, place, "right")
        return self._whole[int(self._stops[gap] - (self._ends[gap] - place))]
