# SPDX-License-Identifier: MIT
"""Frames that a camera lost itself, told from its clock."""
from __future__ import annotations

from typing import List, Optional

_LEARNING_INTERVALS = 256


class TickGaps:
    """Counts the frames that gaps between the ticks of neighbouring images leave out. The time of a frame is learned from
    the stream: a quarter of the intervals is shorter."""

    def __init__(self):
        self._missing = 0
        self._forget_pace()

    def restart(self) -> None:
        """The camera's pace changes; what was counted stays counted."""
        self._missing = self.missing
        self._forget_pace()

    def _forget_pace(self):
        self._pace: Optional[float] = None
        self._intervals: List[tuple] = []  # (ticks, images) while the pace is being learned
        self._last: Optional[tuple] = None

    def add(self, number: int, ticks: int) -> None:
        last, self._last = self._last, (number, ticks)
        if last is None or ticks <= last[1]:  # a clock that went back starts a new stretch
            return
        interval = (ticks - last[1], number - last[0])
        if self._pace is not None:
            self._missing += self._missing_in(interval, self._pace)
            return
        self._intervals.append(interval)
        if len(self._intervals) == _LEARNING_INTERVALS:
            self._missing, self._pace = self.missing, self._learned_pace()
            self._intervals = []

    @property
    def missing(self) -> int:
        if not self._intervals:  # none yet, or the pace is known
            return self._missing
        pace = self._learned_pace()
        return self._missing + sum(self._missing_in(interval, pace) for interval in self._intervals)

    def _learned_pace(self):
        paces = sorted(ticks / images for ticks, images in self._intervals)
        return paces[len(paces) // 4]

    @staticmethod
    def _missing_in(interval, pace):
        ticks, images = interval
        return max(0, round(ticks / pace) - images)
