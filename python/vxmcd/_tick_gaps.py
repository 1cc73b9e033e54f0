# SPDX-License-Identifier: MIT
"""Frames that a camera lost itself, found by its clock."""
from __future__ import annotations

from typing import List, Optional

_LEARNING_INTERVALS = 256


class TickGaps:
    """Counts the frames that are missing in gaps between the ticks of neighbouring images. The frame period is learned from
    the stream: a quarter of the intervals is shorter."""

    def __init__(self):
        self._missing = 0
        self._forget_period()

    def restart(self) -> None:
        """The frame period of the camera changes; the frames counted so far stay counted."""
        self._missing = self.missing
        self._forget_period()

    def _forget_period(self):
        self._period: Optional[float] = None
        self._intervals: List[tuple] = []  # (ticks, images) while the period is being learned
        self._last: Optional[tuple] = None

    def add(self, number: int, ticks: int) -> None:
        last, self._last = self._last, (number, ticks)
        if last is None or ticks <= last[1]:  # a clock that went back begins anew
            return
        interval = (ticks - last[1], number - last[0])
        if self._period is not None:
            self._missing += self._missing_in(interval, self._period)
            return
        self._intervals.append(interval)
        if len(self._intervals) == _LEARNING_INTERVALS:
            self._missing, self._period = self.missing, self._learned_period()
            self._intervals = []

    @property
    def missing(self) -> int:
        if not self._intervals:  # none yet, or the period is known
            return self._missing
        period = self._learned_period()
        return self._missing + sum(self._missing_in(interval, period) for interval in self._intervals)

    def _learned_period(self):
        periods = sorted(ticks / images for ticks, images in self._intervals)
        return periods[len(periods) // 4]

    @staticmethod
    def _missing_in(interval, period):
        ticks, images = interval
        return max(0, round(ticks / period) - images)
