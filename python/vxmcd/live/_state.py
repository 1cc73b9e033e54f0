# SPDX-License-Identifier: MIT
"""What all viewers see, and who of them may change it."""
from __future__ import annotations

from typing import Dict, Optional

_ANSWER_SECONDS = 10.0  # without an answer of the controller this is a yes


class State:
    """The state as JSON, with the version of settings and control, which every change increases. For one thread."""

    def __init__(self):
        self.version = 1
        self._values: Dict[str, object] = {}
        self._changes: Dict[object, int] = {}  # version of the last change, by who made it

    def update(self, values: Dict[str, object]) -> None:
        """Replaces these values. The version stays: it is increased by changed()."""
        self._values.update(values)

    def changed(self, by: object) -> None:
        """Somebody has changed a setting or the control."""
        self.version += 1
        self._changes[by] = self.version

    def is_outdated(self, version: int, by: object) -> bool:
        """Whether somebody else has made a change that one who knows this version does not know."""
        return any(change > version for other, change in self._changes.items() if other != by)

    def forget(self, by: object) -> None:
        """A viewer has left. Its changes stay unknown to those who have not seen them."""
        self._changes[None] = max(self._changes.get(None, 0), self._changes.pop(by, 0))

    def json(self) -> Dict[str, object]:
        return {"version": self.version, **self._values}


class Control:
    """Which viewer controls the camera: the first one, until it leaves or gives the control to another. A viewer that wants
    it asks; no answer is a yes. Viewers are their numbers. For one thread; the caller passes the time in s."""

    def __init__(self, is_read_only: bool = False):
        self.is_read_only = is_read_only
        self.controller: Optional[int] = None
        self.asking: Optional[int] = None
        self._deadline = 0.0

    def join(self, viewer: int) -> None:
        if self.controller is None and not self.is_read_only:
            self.controller = viewer

    def leave(self, viewer: int, next_viewer: Optional[int]) -> None:
        """next_viewer: who has watched for the longest time of those that stay."""
        if self.asking == viewer:
            self.asking = None
        if self.controller == viewer:
            self._pass(self.asking if self.asking is not None else next_viewer)

    def take(self, viewer: int, now: float) -> bool:
        """A viewer asks for the control. Returns whether it has it at once."""
        if self.is_read_only:
            raise ValueError("nobody controls the camera: the program was started with --read-only")
        if self.controller in (None, viewer):
            self._pass(viewer)
            return True
        if self.asking not in (None, viewer):
            raise ValueError("another viewer is asking already")
        if self.asking is None:
            self.asking, self._deadline = viewer, now + _ANSWER_SECONDS
        return False

    def give(self, viewer: int) -> None:
        """The controller says yes, or gives up the control without being asked."""
        self._check(viewer)
        self._pass(self.asking)

    def keep(self, viewer: int) -> None:
        """The controller says no."""
        self._check(viewer)
        self.asking = None

    def pass_time(self, now: float) -> bool:
        """Whether the control has changed because there was no answer."""
        if self.asking is None or now < self._deadline:
            return False
        self._pass(self.asking)
        return True

    def json(self, now: float) -> Dict[str, object]:
        left = None if self.asking is None else round(max(self._deadline - now, 0.0), 1)
        return {"controller": self.controller, "asking": self.asking, "seconds_to_answer": left,
                "read_only": self.is_read_only}

    def _check(self, viewer):
        if self.controller != viewer:
            raise ValueError("another viewer controls the camera")

    def _pass(self, viewer):
        self.controller, self.asking = viewer, None
