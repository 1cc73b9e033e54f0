# SPDX-License-Identifier: MIT
"""Streams: every frame in order, and counts of those that are not there."""
import gc
import warnings

import numpy as np
import pytest

import vxmcd
from conftest import MANUAL, REAL, frame_number
from vxmcd import FramesLostError, FramesLostWarning, NoImageError, VxmcdError
from vxmcd._tick_gaps import TickGaps

# Frames are reported so large that the ring has five slots.
FIVE_SLOTS = "value ImageSizeBytes set 60000000"


def open_small_ring(simulator):
    simulator.configure(MANUAL)
    simulator.fault(FIVE_SLOTS)
    return vxmcd.Camera()


def arrive(simulator, stream, count, total):
    simulator.push(count)
    stream._run.wait_for(total, timeout=10)


def test_frames_come_in_order_with_their_ticks(simulator):
    simulator.configure(MANUAL)
    with vxmcd.Camera() as camera:
        stream = camera.stream(300)
        simulator.push(310)
        frames = list(stream)
        assert [frame.number for frame in frames] == list(range(1, 301))
        assert [frame_number(frame.image) for frame in frames] == list(range(1, 301))
        assert all(frame.image.flags.owndata and frame.lost_before == 0 for frame in frames)
        intervals = np.diff([frame.ticks for frame in frames])
        assert (intervals == intervals[0]).all() and intervals[0] > 0
        assert stream.fetched == 300 and stream.overwritten == 0 and stream.lost_in_camera == 0
        assert 300 <= stream.delivered <= 310
        with pytest.raises(StopIteration):
            next(stream)


def test_a_stream_that_is_dropped_ends_its_run(simulator):
    simulator.configure(REAL)
    with vxmcd.Camera() as camera:
        for frame in camera.stream():
            if frame.number == 3:
                break
        gc.collect()
        assert camera.snap().shape == (8, 16)
        with camera.stream() as stream:
            next(stream)
        with pytest.raises(StopIteration):
            next(stream)
        camera.accumulations = 2
        with pytest.raises(ValueError, match="single exposures"):
            camera.stream()


def test_overwritten_images_end_a_stream(simulator):
    with open_small_ring(simulator) as camera:
        camera.metadata = False  # no clock values vouch for image 1 where frames are shorter than their slots
        stream = camera.stream()
        arrive(simulator, stream, 2, 2)
        assert [frame_number(next(stream).image) for _ in range(2)] == [1, 2]
        arrive(simulator, stream, 9, 11)  # 7 to 11 are there, and 7 lies where the camera puts the next one
        with pytest.raises(FramesLostError) as caught:
            next(stream)
        assert caught.value.count == 5 and caught.value.number == 8
        assert (stream.delivered, stream.fetched, stream.overwritten) == (11, 2, 5)
        assert camera.shape == (8, 16) and next(iter(stream), None) is None


@pytest.mark.parametrize("bursts", [[3, 20, 4, 2], [4, 6, 7, 1], [1] * 12 + [40, 1, 3]])
def test_a_stream_with_losses_accounts_for_every_frame(simulator, bursts):
    with open_small_ring(simulator) as camera:
        stream = camera.stream(timeout=0.1, allow_loss=True)
        frames = []
        for count, total in zip(bursts, np.cumsum(bursts)):
            arrive(simulator, stream, count, total)
            with pytest.raises(NoImageError):
                while True:
                    frames.append(next(stream))
            assert stream.delivered == total


@pytest.mark.parametrize("has_metadata", [True, False])
def test_images_that_the_camera_overwrites_before_its_frames_are_counted_are_not_given(simulator, has_metadata):
    with open_small_ring(simulator) as camera:
        camera.metadata = has_metadata
        stream = camera.stream(timeout=2, allow_loss=True)
        arrive(simulator, stream, 3, 3)
        simulator.fault("call VX_WaitBuffer at 1 delay 1s")
        arrive(simulator, stream, 1, 4)
        simulator.push(3)  # over images 1 and 2, while the acquisition thread is late
        frames = [next(stream)]
        while frames[-1].number < 7:
            frames.append(next(stream))
        assert [frame_number(frame.image) for frame in frames] == [frame.number for frame in frames]
        assert stream.overwritten == stream.delivered - len(frames)


def test_frames_lost_in_the_camera(simulator):
    simulator.configure(MANUAL)
    simulator.fault("frame device 0 20 drop")
    simulator.fault("frame device 0 41 drop")
    with vxmcd.Camera() as camera:
        stream = camera.stream(60)
        simulator.push(62)
        with pytest.warns(FramesLostWarning, match="lost 2 frames"):
            frames = list(stream)
        assert [frame.number for frame in frames] == list(range(1, 61))
        assert frame_number(frames[-1].image) == 62 and stream.lost_in_camera == 2


def test_frames_that_the_camera_counts_as_lost(simulator, monkeypatch):
    simulator.configure(MANUAL)
    simulator.fault("frame device 0 20 drop")
    monkeypatch.setattr(vxmcd.Camera, "count_lost_frames", lambda camera: 0)  # its clock has a gap all the same
    with vxmcd.Camera() as camera:
        stream = camera.stream(30)
        simulator.push(31)
        assert len(list(stream)) == 30 and stream.lost_in_camera == 0


def test_an_image_without_ticks(simulator):
    simulator.configure(MANUAL)
    simulator.fault("chunk 3 len 0xFFFFFFFC")
    with vxmcd.Camera() as camera:
        stream = camera.stream(5)
        simulator.push(5)
        ticks = [frame.ticks for frame in stream]
        assert ticks[2] is None and ticks[4] - ticks[3] == ticks[1] - ticks[0] > 0


def test_a_changed_frame_period_is_no_loss(simulator):
    simulator.configure(MANUAL)
    with vxmcd.Camera() as camera, warnings.catch_warnings():
        warnings.simplefilter("error")
        with camera.stream() as stream:
            for exposure in (0.01, 0.05, 0.02):
                camera.exposure = exposure
                simulator.push(20)
                assert len([next(stream) for _ in range(20)]) == 20
            assert stream.lost_in_camera == 0
        camera.metadata = False
        with camera.stream(3) as stream:
            simulator.push(3)
            assert [frame.ticks for frame in stream] == [None] * 3 and stream.lost_in_camera is None


def test_a_run_that_fails_ends_the_stream(simulator):
    simulator.configure(REAL)
    simulator.fault("call VX_WaitBuffer at 10 rc 100")
    with vxmcd.Camera() as camera:
        with pytest.raises(VxmcdError) as caught:
            for frame in camera.stream(timeout=20):
                last = frame
        assert caught.value.name == "RC_STATUS_HARDWARE_OVERFLOW" and last.number >= 1
        assert camera.snap().shape == (8, 16)


def test_the_first_error_is_raised(simulator):
    simulator.configure(MANUAL)
    with vxmcd.Camera() as camera:
        stream = camera.stream()
        arrive(simulator, stream, 2, 2)
        next(stream)
        simulator.unplug()
        with pytest.raises(VxmcdError) as caught:
            next(stream)
        assert caught.value.function != "AbortAcquisition"


def test_a_camera_that_is_unplugged(simulator):
    simulator.configure(REAL)
    with vxmcd.Camera() as camera:
        stream = camera.stream(timeout=20)
        next(stream)
        simulator.unplug()
        with pytest.raises(VxmcdError) as caught:
            while True:
                next(stream)
        # The latter of an image that had come before and cannot be fetched any more.
        assert caught.value.name in ("RC_STATUS_TIMED_OUT", "RC_NOT_SUPPORTED")
        with pytest.raises(VxmcdError):
            camera.snap()
    assert not camera.is_open and simulator.open_cameras() == 0


def test_closing_the_camera_ends_its_stream(simulator):
    simulator.configure(REAL)
    camera = vxmcd.Camera()
    stream = camera.stream()
    next(stream)
    camera.close()
    with pytest.raises(StopIteration):
        next(stream)
    assert simulator.open_cameras() == 0


def test_gaps_in_ticks():
    gaps = TickGaps()
    assert gaps.missing == 0
    number = tick = 0
    for step in [100] * 300 + [300, 100, 201, 100]:  # one gap of two, one of one
        number, tick = number + 1, tick + step
        gaps.add(number, tick)
    assert gaps.missing == 3
    gaps.add(number + 5, tick + 700)  # the reader skipped four, two more are missing
    assert gaps.missing == 5
    gaps.add(number + 6, 0)  # the clock began again
    gaps.restart()
    for step in range(1, 10):
        gaps.add(number + 6 + step, 1000 * step)
    assert gaps.missing == 5
