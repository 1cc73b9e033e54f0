# SPDX-License-Identifier: MIT
"""Several cameras that start together."""
from __future__ import annotations

import time
from contextlib import suppress
from typing import List, NamedTuple, Optional, Sequence, Tuple

import numpy as np

from ._run import Run
from ._stream import Stream
from .camera import Camera


class Spread(NamedTuple):
    """How far apart cameras have started. See Together.spread()."""

    seconds: float  # from the first camera to the last one
    uncertainty: float  # s: the true value is within `seconds` plus or minus this
    clock: str  # "camera": of the first exposures; "host": of the calls that start a run


class Together:
    """Streams that have been started together; the end of its `with` block closes them. Made by start_together(). Use each
    stream from one thread, which may be another one for each."""

    def __init__(self, cameras: Sequence[Camera], streams: Sequence[Stream], runs: Sequence[Run]):
        self._cameras = cameras
        self._runs = runs
        self.streams = tuple(streams)  # in the order of the cameras
        self._calls: List[Tuple[float, float]] = []  # host's clock, before and after each start

    def __enter__(self) -> "Together":
        return self

    def __exit__(self, *_) -> None:
        self.close()

    def close(self) -> None:
        """Ends all runs."""
        problem = None
        for stream in self.streams:
            try:
                stream.close()
            except Exception as error:  # the others end all the same
                problem = problem or error
        if problem is not None:
            raise problem

    def spread(self, timeout: Optional[float] = None) -> Spread:
        """Waits for the first image of each camera, and says how far apart their first exposures began. NoImageError after
        `timeout` s without one.

        With `metadata`, starting a run sets the camera's clock to 0, and the first image has this clock's value at the start
        of its exposure. So the exposure is placed on the host's clock (time.monotonic()) by the times directly before and
        after the call that starts the run, between which the camera's clock was set: `uncertainty` comes from these
        calls. It cannot tell how a camera's clock deviates from the host's until the first image, which matters when that
        comes minutes later, nor how far the light on the sensor begins from the time that a camera reports. When a camera
        has no clock values, `clock` is "host": then `seconds` is the time between the calls, and when the exposures began
        is not known."""
        for run in self._runs:
            if run.total() == 0:
                run.wait_for(1, timeout)
        delays = [self._delay(camera, run) for camera, run in zip(self._cameras, self._runs)]
        clock = "host" if None in delays else "camera"
        if clock == "host":
            delays = [0.0] * len(delays)
        starts = [(before + after) / 2 + delay for (before, after), delay in zip(self._calls, delays)]
        widths = sorted(after - before for before, after in self._calls)
        return Spread(max(starts) - min(starts), sum(widths[-2:]) / 2 if len(widths) > 1 else 0.0, clock)

    @staticmethod
    def _delay(camera, run):
        """From when the start of the run set the camera's clock to the first exposure, in s; None when it is not known."""
        ticks = run.first_ticks()
        if ticks is None:  # some cameras have clock values with images only
            _, ticks = run.fetch(1, np.empty(camera.shape, camera.dtype))
        frequency = camera.clock_frequency()
        return None if ticks is None or not frequency else ticks / frequency

    def start(self) -> None:
        for run in self._runs:
            before = time.monotonic()
            run.start()
            self._calls.append((before, time.monotonic()))


def start_together(cameras: Sequence[Camera], images: Optional[int] = None, timeout: Optional[float] = None,
                   allow_loss: bool = False) -> Together:
    """Starts a stream of each camera, as close together as this interface allows: everything is prepared before, then the
    starting calls follow each other, each taking as long as its camera takes to answer. The arguments are those of
    Camera.stream(). Returns the streams, and measures how far apart they have started: see Together. When one cannot be
    started, none runs, and its error is raised.

    To expose at the same time to less than that, connect the cameras to one trigger line: set trigger_mode to "external"
    or "external-start", start them together, and send the pulse."""
    cameras = list(cameras)
    if not cameras or not all(isinstance(camera, Camera) for camera in cameras):
        raise TypeError(f"start_together() takes cameras, not {cameras!r}")
    if len(set(map(id, cameras))) < len(cameras):
        raise ValueError("a camera is there twice")
    streams: List[Stream] = []
    runs: List[Run] = []
    try:
        for camera in cameras:
            stream, run = camera.prepare_stream(images, timeout, allow_loss)
            streams.append(stream)
            runs.append(run)
        together = Together(cameras, streams, runs)
        together.start()
        return together
    except BaseException:
        for stream in streams:
            with suppress(Exception):  # follows from the first
                stream.close()
        raise
