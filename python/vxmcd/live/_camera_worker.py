# SPDX-License-Identifier: MIT
"""The thread that owns the camera."""
from __future__ import annotations

import collections
import concurrent.futures
import logging
import os
import queue
import threading
import time
import warnings
from pathlib import Path
from typing import Callable, Dict, Optional

import numpy as np

from .. import _run, raw
from .._run import Run
from .._tick_gaps import TickGaps
from ..camera import Camera
from ..errors import CameraStateError, ClippedWarning, VxmcdError
from . import _description, _settings_change
from ._failure import Failure
from ._frames import Frames, Image
from ._recording import Recording, check_name, images_to_record

_log = logging.getLogger("vxmcd.live")

_WAIT_MS = 50
_IDLE_SECONDS = 0.05  # between looks at the commands while nothing runs
_STATUS_SECONDS = 0.25
_TEMPERATURE_SECONDS = 1.0
_RATE_SECONDS = 2.0  # rates are means over this time
_LONGER_CYCLE_SECONDS = 0.5  # a run continues when the cycle becomes longer by so much
_UNWATCHED_SECONDS = 10.0  # then a live run stops
_REOPEN_SECONDS = 5.0
_MAX_COST = 0.5  # part of a processor that images may take


class _Rate:
    """Images a second over the last seconds."""

    def __init__(self):
        self._counts = collections.deque()

    def add(self, now: float, total: int) -> None:
        self._counts.append((now, total))
        while now - self._counts[0][0] > _RATE_SECONDS and len(self._counts) > 2:
            self._counts.popleft()

    def value(self) -> Optional[float]:
        if len(self._counts) < 2 or self._counts[-1][0] - self._counts[0][0] < _RATE_SECONDS / 4:
            return None
        (first, before), (last, total) = self._counts[0], self._counts[-1]
        return (total - before) / (last - first)


class CameraWorker:
    """Opens a camera, runs it while somebody watches, and puts the newest image into Frames. Other threads use submit(),
    watched(), cost, start() and stop() only.

    States: closed (no camera: the worker tries to open it every 5 s), idle, live, recording, failed (until `start`; a live
    run that lost images or waited too long for one is started again, and is failed until the next image).
    on_frame() and on_status(values) are called on the worker's thread and must return at once.
    """

    def __init__(self, number: int, frames: Frames, directory: Path, settings: Dict[str, object], fps: float,
                 on_frame: Callable[[], None], on_status: Callable[[Dict[str, object]], None]):
        self.number = number
        self.cost = 0.0  # s of processor time that an image takes after it was fetched; set by the server
        self._frames = frames
        self._directory = directory
        self._settings = settings  # to apply when a camera is opened
        self._shortest = 1.0 / fps
        self._on_frame, self._on_status = on_frame, on_status
        self._commands: "queue.SimpleQueue" = queue.SimpleQueue()
        self._thread = threading.Thread(target=self._work, name="camera")
        self._is_ending = False
        self._viewers = 0
        self._unwatched_since = time.monotonic()
        self._camera: Optional[Camera] = None
        self._run: Optional[Run] = None
        self._recording: Optional[Recording] = None
        self._last_recording: Optional[Dict[str, object]] = None
        self._failure = Failure()
        self._next_open = self._next_status = self._next_temperature = self._next_image = 0.0
        self._camera_status: Dict[str, object] = {}
        self._temperature: Dict[str, object] = {}
        self._saturation = 0
        # Of the present run, or the last one:
        self._run_number = 0
        self._cycle = 0.0
        self._has_even_period = False
        self._total = self._last = 0
        self._last_arrival = 0.0
        self._rate = _Rate()
        self._gaps = TickGaps()
        self._lost: Optional[int] = None

    def open_first(self) -> None:
        """Opens the camera before the thread starts. Raises what Camera does."""
        self._open()

    def start(self) -> None:
        self._thread.start()

    def stop(self) -> None:
        """Ends a recording in order, closes the camera and ends the thread."""
        self._is_ending = True
        if self._thread.is_alive():
            self._thread.join()
        else:
            self._close()

    def watched(self, viewers: int) -> None:
        """How many viewers there are."""
        self._viewers = viewers

    def submit(self, command: str, *arguments) -> "concurrent.futures.Future":
        """Asks for set, trigger, start, record or stop. The future has the answer or the error."""
        future: "concurrent.futures.Future" = concurrent.futures.Future()
        self._commands.put((getattr(self, f"_do_{command}"), arguments, future))
        return future

    @property
    def state(self) -> str:
        if self._camera is None:
            return "closed"
        if self._recording is not None:
            return "recording"
        if self._failure.is_unresolved:
            return "failed"
        return "live" if self._run is not None else "idle"

    def _work(self):
        while not self._is_ending:
            try:
                self._step()
            except Exception as error:  # the page shows it; the thread must go on
                self._fail(error)
        try:
            self._end_recording(is_stopped=True)
        except Exception as error:
            _log.error("%s", error)
        self._close()
        self._refuse_commands(RuntimeError("the program ends"))

    def _step(self):
        now = time.monotonic()
        if self._viewers:
            self._unwatched_since = now
        self._handle_commands()
        if self._camera is None:
            if now >= self._next_open:
                self._reopen()
        elif self._run is not None:
            self._follow_run()
        elif self._failure.may_run(now) and self._is_watched():
            self._start_run()
        now = time.monotonic()
        if self._camera is not None and now >= self._next_temperature:
            self._next_temperature = now + _TEMPERATURE_SECONDS
            self._read_temperature()
        if now >= self._next_status:
            self._next_status = now + _STATUS_SECONDS
            self._publish()
        if self._run is None:
            time.sleep(_IDLE_SECONDS)

    def _is_watched(self):
        return self._viewers > 0 or time.monotonic() - self._unwatched_since < _UNWATCHED_SECONDS

    # Commands

    def _handle_commands(self):
        while not self._commands.empty():
            act, arguments, future = self._commands.get()
            if not future.set_running_or_notify_cancel():  # nobody waits any more: the program ends
                continue
            try:
                answer = act(*arguments)
            except Exception as error:
                future.set_exception(error)
                if self._is_gone():
                    self._fail(error)
            else:
                self._publish()
                future.set_result(answer)

    def _refuse_commands(self, error):
        while not self._commands.empty():
            future = self._commands.get()[2]
            if future.set_running_or_notify_cancel():
                future.set_exception(error)

    def _need_camera(self):
        if self._camera is None:
            raise CameraStateError("no camera is open")
        return self._camera

    def _do_set(self, name, value):
        """Sets an attribute of the camera. Returns the value in force and, when it differs, a note."""
        camera = self._need_camera()
        _settings_change.check(name, value)
        if self._recording and name not in _settings_change.DURING_RECORDING:
            raise CameraStateError("a recording is under way: stop it first")
        with warnings.catch_warnings(record=True) as notes:
            warnings.simplefilter("always", ClippedWarning)
            try:
                self._set_now_or_between_runs(camera, name, value)
            except VxmcdError as error:
                raise self._with_limits(error, name) from None
        # A run waits for an image as long as its first settings need.
        if self._run is not None and not self._recording and camera.cycle_time > self._cycle + _LONGER_CYCLE_SECONDS:
            self._stop_run()
        self._read_settings()
        clipped = [note.message for note in notes if isinstance(note.message, ClippedWarning)]
        answer = {"value": self._camera_status["settings"].get(name)}
        if clipped:
            answer["note"] = str(clipped[-1])
        return answer

    def _set_now_or_between_runs(self, camera, name, value):
        if self._run is None or name in _settings_change.DURING_RUN:
            try:
                self._set(camera, name, value)
                return
            except (VxmcdError, CameraStateError):
                if self._run is None or self._recording:
                    raise
        self._set_between_runs(camera, name, value)

    def _with_limits(self, error, name):
        limits = self._camera_status["limits"].get(name)
        if error.code != raw.RC_P1_INVALID or not limits or None in limits:
            return error
        return VxmcdError(error.function, error.code, "from {:g} to {:g} is accepted".format(*limits))

    def _set_between_runs(self, camera, name, value):
        self._stop_run()
        self._set(camera, name, value)  # the run starts again by itself

    def _set(self, camera, name, value):
        _settings_change.apply(camera, name, value)
        if name in ("exposure", "cycle_time", "frame_rate"):
            self._gaps.restart()

    def _do_trigger(self):
        camera = self._need_camera()
        if self._run is None:
            raise CameraStateError("no run is under way")
        camera.trigger()

    def _do_start(self):
        """Runs again after a failure."""
        self._failure.clear()
        self._next_open = 0.0

    def _do_record(self, name, images, seconds):
        camera = self._need_camera()
        if self._recording:
            raise CameraStateError("a recording is under way")
        path = check_name(name, self._directory)
        for given in (images, seconds):
            if given is not None and (isinstance(given, bool) or not isinstance(given, (int, float)) or not 0 < given < 1e18):
                raise ValueError(f"a recording takes a number of images, or of seconds, above 0, not {given!r}")
        if images is not None and seconds is not None:
            raise ValueError("give a number of images or a time, not both")
        is_even = _description.has_even_period(camera)
        count = images_to_record(images, seconds if is_even else None, camera.cycle_time, self._directory, self._image_bytes())
        self._stop_run()
        self._do_start()
        camera._session.call("SetSpool", 1, 3, os.fsencode(path))
        try:
            camera._session.call("SetSpoolThreadCount", 2)
            self._begin(_run.SERIES, count)
        except BaseException:
            camera._session.call("SetSpool", 0, 3, None)
            raise
        is_counted = images is not None or (seconds is not None and is_even)
        self._recording = Recording(path, count, is_counted, None if is_even else seconds)
        self._last_recording = None
        return {"name": path.name, "images": count}

    def _do_stop(self):
        """Ends a recording."""
        if self._recording is None:
            raise CameraStateError("no recording is under way")
        self._end_recording(is_stopped=True)
        return self._last_recording

    # Camera

    def _open(self):
        camera = Camera(self.number)
        try:
            with warnings.catch_warnings(record=True) as notes:
                warnings.simplefilter("always")
                if self._settings:
                    camera.apply({name: value for name, value in self._settings.items() if name != "accumulations"})
            for note in notes:
                _log.warning("%s", note.message)
            self._camera = camera
            self._gaps = TickGaps()
            self._camera_status = {"camera": _description.describe(camera)}
            self._read_settings()
            self._read_temperature()
        except BaseException:
            self._camera = None
            camera.close()
            raise
        self._failure.clear()
        self._on_status({"opened": self._camera_status["camera"]})

    def _reopen(self):
        self._next_open = time.monotonic() + _REOPEN_SECONDS
        try:
            self._open()
        except Exception as error:
            self._failure.note(error, time.monotonic(), may_restart=False)

    def _close(self):
        camera, self._camera = self._camera, None
        run, self._run, self._recording = self._run, None, None
        self._frames.clear()
        for end in ([run.stop] if run else []) + ([camera.close] if camera else []):
            try:
                end()
            except (VxmcdError, CameraStateError) as error:  # it is gone
                _log.info("%s", error)

    def _fail(self, error):
        """A run or a call has failed. A camera that does not answer any more is closed, and opened again later."""
        _log.error("%s", error, exc_info=not isinstance(error, (VxmcdError, CameraStateError, ValueError)))
        self._failure.note(error, time.monotonic(), may_restart=not self._recording)
        for end in (self._end_recording, self._stop_run):
            try:
                end()
            except Exception as further:
                _log.info("%s", further)
        if self._is_gone():
            self._close()
            self._next_open = time.monotonic() + _REOPEN_SECONDS

    def _is_gone(self):
        return self._camera is not None and not _description.answers(self._camera)

    def _read_settings(self):
        camera = self._camera
        rows, columns = camera.shape
        self._saturation = _description.saturation_of(camera)
        self._settings = camera.settings()
        # A new dictionary: images keep the one that they were taken with.
        self._camera_status = {
            **self._camera_status, "settings": _description.settings_of(camera), "limits": _description.limits_of(camera),
            "image": {"width": columns, "height": rows, "saturation": self._saturation}}

    def _read_temperature(self):
        camera = self._camera
        celsius, status = None, "unknown"
        try:
            celsius, status = camera.temperature, camera.temperature_status
        except VxmcdError:
            if self._is_gone():
                raise
        self._temperature = {"celsius": celsius, "status": status, "time": time.time(),
                             "target": self._camera_status["settings"]["target_temperature"]}

    # Runs

    def _image_bytes(self):
        camera = self._camera
        rows, columns = camera.shape
        return rows * columns * camera.dtype.itemsize

    def _start_run(self):
        self._begin(_run.UNTIL_ABORT, None)

    def _begin(self, mode, images):
        camera = self._camera
        camera._check_bits()
        self._has_even_period = _description.has_even_period(camera)
        self._cycle = camera.cycle_time
        self._gaps, self._lost = TickGaps(), None
        self._total = self._last = 0
        self._rate = _Rate()
        self._last_arrival = time.monotonic()
        self._run_number += 1
        self._run = Run(camera._session, mode, images)

    def _stop_run(self):
        run, self._run = self._run, None
        if run is not None:
            run.stop()

    def _follow_run(self):
        run = self._run
        self._camera._session.wait(_WAIT_MS)
        status = run.status()  # before the number of images: when the run is over, that number is final
        first, last = run.available()
        total = run.total()
        now = time.monotonic()
        if total != self._total:
            self._last_arrival = now
        self._total = total
        self._rate.add(now, total)
        if total > 0:
            self._failure.recover(now)
        if last > self._last and now >= self._next_image:
            self._fetch(run, last, now)
        if status == raw.RC_IDLE and self._recording:
            self._end_recording()
        elif status != raw.RC_ACQUIRING:
            raise VxmcdError("the run", status, f"the run ended after {total} images")
        elif self._recording:
            if self._recording.is_over():
                self._end_recording()
        elif not self._is_watched():
            self._stop_run()

    def _fetch(self, run, number, now):
        camera = self._camera
        pixels = np.empty(camera.shape, camera.dtype)
        began = time.thread_time()
        is_there, ticks = run.fetch(number, pixels)
        cost = time.thread_time() - began + self.cost
        self._next_image = max(self._next_image + self._shortest, now - self._shortest, now + cost / _MAX_COST)
        if not is_there:
            return
        self._last = number
        if ticks is not None and self._has_even_period:
            self._gaps.add(number, ticks)
            self._lost = self._gaps.missing
        self._frames.put(Image(pixels, number, ticks, time.time(), self._run_number, self._saturation,
                               self._recording is not None, self._camera_status, self._temperature.get("celsius")))
        self._on_frame()

    def _end_recording(self, is_stopped=False):
        recording, self._recording = self._recording, None
        if recording is None:
            return
        try:
            self._stop_run()
        finally:
            lost = self._lost
            try:
                self._camera._session.call("SetSpool", 0, 3, None)
                counted = self._camera.count_lost_frames()
                lost = lost if counted is None else counted
            except (VxmcdError, CameraStateError) as error:  # the camera is gone; what was recorded stays
                _log.info("%s", error)
            self._last_recording = {"name": recording.path.name, "stopped": is_stopped and recording.images > self._total,
                                    **recording.result(), "lost": lost}

    # State

    def _notice(self):
        if self._run is None:
            return None
        settings = self._camera_status["settings"]
        now = time.monotonic()
        if self._failure.notice(now):
            return self._failure.notice(now)
        quiet = now - self._last_arrival
        cycle = max(settings["cycle_time"] or 0.0, settings["exposure"] or 0.0)
        if quiet <= 3 * cycle + 2:
            return None
        return "no image: waiting for a trigger?" if settings["trigger_mode"] != "internal" else "no image"

    def _publish(self):
        """Sends the server the present values."""
        is_open, is_running = self._camera is not None, self._run is not None
        values = {
            "state": self.state, "number": self.number, "run": self._run_number, "error": self._failure.error,
            "restarts": self._failure.will_restart,
            "settings": self._camera_status.get("settings") if is_open else None,
            "limits": self._camera_status.get("limits") if is_open else None,
            "image": self._camera_status.get("image") if is_open else None,
            "temperature": self._temperature if is_open else None,
            "rate": self._rate.value() if is_running else None, "frames": self._total if is_running else None,
            "lost": self._lost if is_running else None, "notice": self._notice(),
            "memory_percent": _description.memory_percent(self._camera) if is_open else None,
            "recording": self._recording.json(self._total, self._rate.value(), self._image_bytes())
            if self._recording else None,
            "last_recording": self._last_recording,
        }
        self._on_status({"values": values})
