# SPDX-License-Identifier: MIT
"""Several cameras that acquire at the same time. They differ in what their frames contain, not in their sizes, so that a frame of
another camera would go unnoticed by everything else."""
import ctypes
import os
import signal
import struct
import threading
from concurrent.futures import ThreadPoolExecutor
from types import SimpleNamespace

import pytest

import vxmcd
from conftest import frame_number
from vxmcd import CameraStateError, _together, raw

CAMERA = """[Camera{0}]
Model = RQ512_LX
Scene = counter
Seed = {0}7
{1}
[Camera{0}.SensorWidth]
Value = 16
[Camera{0}.SensorHeight]
Value = 8
"""


@pytest.fixture(autouse=True)
def close(simulator):
    yield
    vxmcd.close_cameras()


def cameras_of(simulator, count, timing=""):
    simulator.configure(f"[Simulator]\nCameras = {count}\n" + "".join(CAMERA.format(n, timing) for n in range(count)))
    return [vxmcd.Camera(number) for number in range(count)]


def origin(image):
    """A number that the frames of a camera have in common, by its seed."""
    return struct.unpack_from("<I", image.astype("<u2").tobytes(), 24)[0]


def assert_frames(images, of):
    assert [(frame_number(image), origin(image)) for image in images] == [(n + 1, of) for n in range(len(images))]


def test_four_cameras_stream_in_one_thread(simulator):
    cameras = cameras_of(simulator, 4)
    origins = [origin(camera.snap()) for camera in cameras]
    assert len(set(origins)) == 4
    for camera in cameras:
        camera.exposure, camera.frame_rate = 0.001, 400
    with vxmcd.start_together(cameras, 100) as together:
        assert together.spread().clock == "camera"
        images = list(zip(*([frame.image for frame in stream] for stream in together.streams)))
    for camera_images, of in zip(zip(*images), origins):
        assert len(camera_images) == 100
        assert_frames(camera_images, of)
    with cameras[1].stream() as busy, pytest.raises(CameraStateError, match="camera 1 is acquiring"):
        vxmcd.start_together(cameras)
    assert cameras[0].snap().shape == (8, 16) and busy.fetched == 0


def test_threads_record_stream_and_wait_at_the_same_time(simulator, tmp_path):
    cameras = cameras_of(simulator, 4)
    origins = [origin(camera.snap()) for camera in cameras]
    for camera in cameras:
        camera.exposure, camera.frame_rate = 0.001, 400
    cameras[3].trigger_mode = "software"
    is_waiting = threading.Event()

    def stream(camera, images):
        with camera.stream(images, timeout=60) as frames:
            is_waiting.set()
            return [frame.image for frame in frames]

    with ThreadPoolExecutor() as threads:
        waiting = threads.submit(stream, cameras[3], 1)
        assert is_waiting.wait(60)
        runs = [threads.submit(cameras[n].record, tmp_path / str(n), 150) for n in (0, 1)]
        streamed = threads.submit(stream, cameras[2], 150)
        for run, of in zip(runs, origins):
            assert_frames(run.result().array(), of)
        assert_frames(streamed.result(), origins[2])
        assert not waiting.done() and cameras[0].grab(3).shape == (3, 8, 16)
        cameras[3].trigger()
        assert_frames(waiting.result(), origins[3])


def test_the_spread_is_that_of_the_first_exposures(simulator, monkeypatch):
    cameras = cameras_of(simulator, 2, "Source = manual")
    calls = iter([10.0, 10.25, 10.25, 10.3125])  # of the host, before and after each start
    monkeypatch.setattr(_together, "time", SimpleNamespace(monotonic=lambda: next(calls)))
    with vxmcd.start_together(cameras) as together:
        for number, seconds in enumerate((0.5, 1.0)):
            simulator.advance(seconds, number)
            simulator.push(1, number)
        spread = together.spread(60)
    assert spread.clock == "camera" and spread.uncertainty == pytest.approx((0.25 + 0.0625) / 2)
    assert spread.seconds == pytest.approx((10.28125 + 1.0) - (10.125 + 0.5))
    for camera in cameras:
        camera.metadata = False
    monkeypatch.undo()
    with vxmcd.start_together(cameras) as together:
        for number in range(2):
            simulator.push(1, number)
        assert together.spread(60).clock == "host"


def test_other_code_keeps_its_current_camera_and_its_run(simulator):
    for camera in cameras_of(simulator, 2):
        camera.close()
    for function, *arguments in (("SetCurrentCamera", 101), ("Initialize", None), ("SetAcquisitionMode", 5), ("StartAcquisition",)):
        assert getattr(raw, function)(*arguments) == raw.RC_SUCCESS
    with vxmcd.Camera(1) as camera:
        assert_frames(camera.grab(20), origin(camera.snap()))
    handle, images = ctypes.c_long(), ctypes.c_long()
    assert raw.GetCurrentCamera(ctypes.byref(handle)) == raw.RC_SUCCESS and handle.value == 101
    assert raw.GetTotalNumberImagesAcquired(ctypes.byref(images)) == raw.RC_SUCCESS
    assert raw.WaitForAcquisitionTimeOut(60000) == raw.RC_SUCCESS, f"the run goes on after {images.value} images"
    assert raw.ShutDown() == raw.RC_SUCCESS


def test_a_call_within_a_call_leaves_the_outer_one_its_camera(simulator, monkeypatch, capsys):
    camera, other, lost = cameras_of(simulator, 3)
    camera.exposure, other.exposure = 0.25, 0.5
    choose = raw.vxmcd_SetCurrentCameraOfThread
    forgotten = [lost.stream()]

    def choose_and_use_other(handle, earlier):  # as a signal handler may, and the garbage collector when it closes a stream
        monkeypatch.undo()
        code = choose(handle, earlier)
        assert other.exposure == 0.5
        simulator.fault("call VX_Command feature AcquisitionStop device 2 any rc 13")
        forgotten.clear()
        other.close()
        assert not other.is_open and simulator.open_cameras() == 3
        return code

    monkeypatch.setattr(raw, "vxmcd_SetCurrentCameraOfThread", choose_and_use_other)
    assert camera.exposure == 0.25
    assert "AbortAcquisition: 20013" in capsys.readouterr().err, "an error of the lost camera"
    assert simulator.open_cameras() == 2
    earlier = ctypes.c_long(77)
    assert choose(0, ctypes.byref(earlier)) == raw.RC_SUCCESS and earlier.value == 0


def test_calls_for_other_cameras_do_not_wait_for_a_long_one(simulator, monkeypatch):
    camera, other = cameras_of(simulator, 2)
    other.close()
    initialize, is_inside, may_leave = raw.Initialize, threading.Event(), threading.Event()

    def initialize_slowly(directory):
        with pytest.raises(CameraStateError, match="in the call that this one interrupts"):
            vxmcd.Camera(1)
        is_inside.set()
        assert may_leave.wait(60)
        return initialize(directory)

    monkeypatch.setattr(raw, "Initialize", initialize_slowly)
    with ThreadPoolExecutor() as threads:
        opening = threads.submit(vxmcd.Camera, 1)
        assert is_inside.wait(60)
        again = threads.submit(vxmcd.Camera, 1)
        assert len([camera.exposure for _ in range(100)]) == 100 and camera.snap().shape == (8, 16)
        camera.close()
        assert not opening.done() and not again.done()
        may_leave.set()
        assert opening.result().snap().shape == (8, 16)
        with pytest.raises(CameraStateError, match="open already"):
            again.result()


def test_an_opening_that_ctrl_c_ends_leaves_no_open_camera(simulator, monkeypatch):
    initialize = raw.Initialize

    def initialize_and_interrupt(directory):
        assert initialize(directory) == raw.RC_SUCCESS and simulator.open_cameras() == 1
        raise KeyboardInterrupt

    monkeypatch.setattr(raw, "Initialize", initialize_and_interrupt)
    with pytest.raises(KeyboardInterrupt):
        vxmcd.Camera(0)
    assert simulator.open_cameras() == 0
    monkeypatch.undo()
    assert vxmcd.Camera(0).is_open


def test_a_forked_child_has_no_camera_and_does_not_wait_for_a_thread_of_its_parent(simulator):
    camera, = cameras_of(simulator, 1)
    with ThreadPoolExecutor(1) as thread:
        thread.submit(camera._session._lock.acquire).result()
        child = os.fork()
        if child == 0:
            signal.alarm(20)
            try:
                with pytest.raises(CameraStateError):
                    camera.snap()
                camera.close()
                os._exit(7)
            finally:
                os._exit(1)
        thread.submit(camera._session._lock.release).result()
    assert os.waitstatus_to_exitcode(os.waitpid(child, 0)[1]) == 7
    assert camera.snap().shape == (8, 16)


def test_recordings_of_one_camera_in_two_threads_leave_each_other_alone(simulator, tmp_path, monkeypatch):
    camera, = cameras_of(simulator, 1)
    set_threads = raw.SetSpoolThreadCount

    def set_threads_and_record(count):  # as if another thread were that fast
        monkeypatch.undo()
        with pytest.raises(CameraStateError):
            camera.record(tmp_path / "second", 1)
        return set_threads(count)

    monkeypatch.setattr(raw, "SetSpoolThreadCount", set_threads_and_record)
    assert len(camera.record(tmp_path / "first", 3)) == 3
    assert not (tmp_path / "second").exists()


def test_a_stream_ends_while_another_thread_closes_its_camera(simulator):
    both = threading.Barrier(2)

    def close_stream(stream):
        both.wait()
        stream.close()

    with ThreadPoolExecutor() as threads:
        for _ in range(40):
            camera, = cameras_of(simulator, 1)
            closing = threads.submit(close_stream, camera.stream())
            both.wait()
            vxmcd.close_cameras()
            closing.result()
