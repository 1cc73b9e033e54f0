# SPDX-License-Identifier: MIT
"""What has failed, and when a run is started again."""
from __future__ import annotations

from typing import Dict, Optional

from .. import raw
from ..errors import VxmcdError
from ._description import problem

_TRANSIENT = (raw.RC_STATUS_TIMED_OUT, raw.RC_STATUS_HARDWARE_OVERFLOW)  # after these ends of a run another one may go well
_FIRST_SECONDS, _MAX_SECONDS = 1.0, 16.0  # until the restart; twice as long after each run that fails without an image
_NOTICE_SECONDS = 10.0  # for which the pages say that a run was started again


class Failure:
    """The failure of a camera, a call or a run, until a run has an image again. For one thread; the caller passes the time
    in s."""

    def __init__(self):
        self.error: Optional[Dict[str, object]] = None  # as the page shows it
        self._restart_at: Optional[float] = None
        self._seconds = _FIRST_SECONDS
        self._last: Optional[Dict[str, object]] = None  # that was recovered from
        self._recovered_at = 0.0

    @property
    def is_unresolved(self) -> bool:
        """Whether no run has had an image since."""
        return self.error is not None

    @property
    def will_restart(self) -> bool:
        """Whether a run is started again without being asked for."""
        return self._restart_at is not None

    def note(self, error: BaseException, now: float, may_restart: bool) -> None:
        """Replaces an earlier failure."""
        self.error, self._restart_at = problem(error), None
        if may_restart and isinstance(error, VxmcdError) and error.code in _TRANSIENT:
            self._restart_at = now + self._seconds
            self._seconds = min(2 * self._seconds, _MAX_SECONDS)

    def clear(self) -> None:
        """Runs may start at once."""
        self.error = self._restart_at = None

    def recover(self, now: float) -> None:
        """A run has an image."""
        if self.is_unresolved:
            self._last, self._recovered_at = self.error, now
            self._seconds = _FIRST_SECONDS
            self.clear()

    def may_run(self, now: float) -> bool:
        return not self.is_unresolved or (self._restart_at is not None and now >= self._restart_at)

    def notice(self, now: float) -> Optional[str]:
        """What the pages say for a while after a restart."""
        if self._last is None or now - self._recovered_at >= _NOTICE_SECONDS:
            return None
        return "the run failed ({code} {name}) and was started again".format(**self._last)
