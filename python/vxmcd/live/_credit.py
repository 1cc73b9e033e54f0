# SPDX-License-Identifier: MIT
"""How many frames may be under way to a viewer, and how much they are reduced for a slow connection."""
from __future__ import annotations

from collections import deque
from typing import Deque, Optional, Tuple

_FRAMES = 2  # under way at once
_SLOW_SECONDS = 0.2  # an acknowledgement that takes longer leaves one
_SILENT_SECONDS = 20.0

_LOW_RATE, _LOW_SECONDS = 8.0, 2.0  # below this rate for this time: reduce
_HIGH_RATE, _HIGH_SECONDS = 20.0, 5.0  # above it: send more again
_MAX_HIGH_SECONDS = 80.0  # the time doubles with each return that did not last
_KEPT_PART = 0.9  # of the frames that there were: then the connection is not what limits the rate

_LEVELS = (None, "8 bits", "8 bits, half size", "8 bits, quarter size")


class Reduction:
    """Chooses a level: 0 as asked for, 1 with one byte a pixel, 2 and 3 also with blocks of twice and four times the size.
    For one thread; the caller passes the time in s."""

    def __init__(self):
        self.level = 0
        self._patience = _HIGH_SECONDS
        self._raised = float("-inf")  # when more was sent again
        self._restart(None)

    @property
    def text(self) -> Optional[str]:
        """How pictures are reduced; None when they are not."""
        return _LEVELS[self.level]

    @property
    def has_one_byte(self) -> bool:
        return self.level > 0

    @property
    def coarser(self) -> int:
        return 2 ** max(self.level - 1, 0)

    def frame(self, now: float, is_sent: bool) -> None:
        """There is a new image, and it was sent, or skipped because earlier ones are under way."""
        if self._since is None:
            self._restart(now)
        self._offered += 1
        self._sent += is_sent
        seconds = now - self._since
        rate, is_kept = self._sent / max(seconds, 1e-9), self._sent >= _KEPT_PART * self._offered
        if seconds >= _LOW_SECONDS and rate < _LOW_RATE and not is_kept and self.level + 1 < len(_LEVELS):
            if now - self._raised < 2 * _HIGH_SECONDS:
                self._patience = min(2 * self._patience, _MAX_HIGH_SECONDS)
            self._change(now, +1)
        elif self.level > 0 and seconds >= self._patience and (rate > _HIGH_RATE or is_kept):
            self._raised = now
            self._change(now, -1)
        elif seconds >= max(self._patience, _LOW_SECONDS):
            self._restart(now)

    def _change(self, now, by):
        self.level += by
        self._restart(now)

    def _restart(self, now):
        self._since, self._offered, self._sent = now, 0, 0


class Credit:
    """The frames that were sent and not yet acknowledged. For one thread; the caller passes the time in s."""

    def __init__(self):
        self._under_way: Deque[Tuple[int, float]] = deque()
        self._limit = _FRAMES

    def may_send(self) -> bool:
        return len(self._under_way) < self._limit

    def send(self, number: int, now: float) -> None:
        self._under_way.append((number, now))

    def acknowledge(self, number: int, now: float) -> bool:
        """Whether the frame was under way. It and those before it no longer are."""
        if number not in (sent for sent, _ in self._under_way):
            return False
        while True:
            sent, since = self._under_way.popleft()
            if sent == number:
                self._limit = 1 if now - since > _SLOW_SECONDS else _FRAMES
                return True

    def is_silent(self, now: float) -> bool:
        """Whether an acknowledgement is missing for so long that nobody draws any more."""
        return bool(self._under_way) and now - self._under_way[0][1] > _SILENT_SECONDS
