# SPDX-License-Identifier: MIT
"""Runs that the library writes to disk, read back."""
import ctypes
import os
import signal
import subprocess
import sys
import time
import warnings
from types import SimpleNamespace

import numpy as np
import pytest

import vxmcd
from conftest import MANUAL, REAL, environment_for_programs, frame_number
from test_convert import assert_same, converted
from vxmcd import NoImageError, VxmcdError, _run, raw
from vxmcd.spool import SpoolRun


@pytest.mark.parametrize("method", [1, 3])
@pytest.mark.parametrize("threads", [None, 3])
def test_a_recorded_run_holds_every_frame(simulator, tmp_path, method, threads):
    simulator.configure(REAL)
    with vxmcd.Camera() as camera:
        camera.exposure = 0.001
        camera.frame_rate = 400
        run = camera.record(tmp_path / "run", 60, method, threads)
        assert run.state == "complete" and len(run) == 60 and run.missing.size == 0
        assert [frame_number(image) for image in run] == list(range(1, 61))
        assert all(run.verify(number) for number in range(60))
        intervals = np.diff(run.ticks())
        assert intervals.min() > 0 and run.ticks()[0] == run.description.first_frame_tick
        assert (abs(intervals / run.description.timestamp_frequency - camera.cycle_time) < 1e-5).all()
        assert abs(run.host_times() - np.datetime64(time.time_ns(), "ns")).max() < np.timedelta64(60, "s")
        assert run.description.exposure_time == pytest.approx(camera.exposure)
        assert (run.description.model, run.description.method) == (camera.model, method)
        assert "state=complete,\n" in repr(run.description) and "None" not in repr(run.description)
        assert_same(run, converted(run.path, tmp_path / "run.raw", "--verify"))
        files = sorted(os.listdir(run.path))
        assert len([name for name in files if name.endswith(".dat")]) == (61 if method == 1 else 2)
        assert camera.grab(3).shape == (3, 8, 16)  # not spooled any more
        assert sorted(os.listdir(run.path)) == files and len(SpoolRun(run.path, verify=True)) == 60


def test_a_number_of_threads_is_for_one_run(simulator, tmp_path, monkeypatch):
    simulator.configure(REAL)
    counts = []
    call = raw.SetSpoolThreadCount
    monkeypatch.setattr(raw, "SetSpoolThreadCount", lambda count: counts.append(count) or call(count))
    with vxmcd.Camera() as camera:
        for threads in (8, None):
            assert len(camera.record(tmp_path, 3, threads=threads)) == 3
    assert counts == [8, 2]


def test_software_triggers_are_sent(simulator, tmp_path):
    simulator.configure(REAL)
    with vxmcd.Camera() as camera:
        camera.trigger_mode = "software"
        assert [frame_number(image) for image in camera.record(tmp_path, 3)] == [1, 2, 3]


def test_a_run_without_images_ends_in_time_and_order(simulator, tmp_path):
    simulator.configure(REAL)
    with vxmcd.Camera() as camera:
        camera.trigger_mode = "external"
        with pytest.raises(NoImageError):
            camera.record(tmp_path, 3, timeout=0.3)
        run = SpoolRun(tmp_path)
        assert run.state == "aborted" and len(run) == 0 and run.missing.tolist() == [0, 1, 2]
        camera.trigger_mode = "internal"
        assert camera.record(tmp_path, 3).state == "complete"


def test_the_time_limit_counts_from_the_newest_image(simulator, tmp_path, monkeypatch):
    simulator.configure(MANUAL)
    with vxmcd.Camera() as camera:
        clock = SimpleNamespace(now=0.0, pushed=0, monotonic=lambda: clock.now, sleep=time.sleep)
        monkeypatch.setattr(_run, "time", clock)

        def wait(_):
            clock.now += 0.9
            clock.pushed += 1
            simulator.push(1)
            while camera._session.read("GetTotalNumberImagesAcquired", ctypes.c_long) < clock.pushed:
                time.sleep(0.001)

        monkeypatch.setattr(camera._session, "wait", wait)
        assert len(camera.record(tmp_path, 3, timeout=1)) == 3  # after 2.7 s


def test_what_cannot_be_written_is_an_error(simulator, tmp_path):
    simulator.configure(REAL)
    (tmp_path / "file").write_text("in the way")
    with vxmcd.Camera() as camera:
        for path, problem in {tmp_path / "a\\b": "backslash", "": "not the name", "a\0b": "not the name"}.items():
            with pytest.raises(ValueError, match=problem):
                camera.record(path, 3)
        for path, problem in {"file": "it is a file", "file/run": "Not a directory", "n" * 300: "File name"}.items():
            with pytest.raises(VxmcdError, match=f"{path}' cannot be written to: {problem}.*; choose") as caught:
                camera.record(tmp_path / path, 3)
            assert caught.value.name == "RC_STATUS_SPOOL_ISSUE"
        for arguments in ((0,), (3, 2)):
            with pytest.raises(ValueError):
                camera.record(tmp_path / "run", *arguments)
        with pytest.raises(VxmcdError, match="SetSpoolThreadCount: 20066"):
            camera.record(tmp_path / "run", 3, threads=0)
        with warnings.catch_warnings():
            warnings.simplefilter("error")
            with pytest.raises(vxmcd.DiskSpaceWarning, match=r"needs \d+ bytes .*B\) are free in '.*/run'") as caught:
                camera.record(tmp_path / "run", 2**31 - 1)  # 600 GB
            assert caught.value.needed > caught.value.free > 0
        assert camera.snap().shape == (8, 16) and os.listdir(tmp_path) == ["file"]


FILLS = """
import sys, warnings, vxmcd
from vxmcd.spool import SpoolRun
warnings.simplefilter("ignore", vxmcd.DiskSpaceWarning)
with vxmcd.Camera(1) as camera:
    camera.exposure = 0.001
    try:
        camera.record(sys.argv[1], 100)
    except vxmcd.VxmcdError as error:
        print(error.code)
run = SpoolRun(sys.argv[1], salvage=True)
print(run.state, run.numbers.tolist(), run.damaged, run.unrecorded.tolist())
"""


def test_a_run_that_filled_the_disk_can_be_salvaged_there(tmp_path):
    in_small_disk = ["unshare", "-m", "sh", "-c", 'mount -t tmpfs -o size=3m none "$0" && exec "$@"', tmp_path / "disk"]
    (tmp_path / "disk").mkdir()
    if subprocess.run([*in_small_disk, "true"], capture_output=True).returncode != 0:
        pytest.skip("no right to mount a small file system here")
    program = subprocess.run([*in_small_disk, sys.executable, "-c", FILLS, tmp_path / "disk" / "run"], capture_output=True,
                             env=environment_for_programs(tmp_path), text=True)
    assert program.stdout == "20026\nfailed [0, 1, 2, 3, 4] [] []\n", program.stderr


RECORDS = """
import sys, vxmcd
with vxmcd.Camera(1) as camera:
    camera.exposure, camera.frame_rate = 0.001, 200
    print("ready", flush=True)
    camera.record(sys.argv[1], 100000, 1)
"""


@pytest.mark.parametrize("number, state", [(signal.SIGKILL, "recording"), (signal.SIGINT, "aborted")])
def test_a_run_that_is_cut_off(tmp_path, number, state):
    process = subprocess.Popen([sys.executable, "-c", RECORDS, tmp_path / "run"], env=environment_for_programs(tmp_path),
                               stdout=subprocess.PIPE, stderr=subprocess.PIPE, text=True)
    try:
        index = tmp_path / "run" / "spool_index.dat"
        deadline = time.monotonic() + 20
        while not (index.exists() and index.stat().st_size >= 20 * 32):
            assert process.poll() is None and time.monotonic() < deadline
            time.sleep(0.02)
        process.send_signal(number)
        process.communicate(timeout=20)
    finally:
        process.kill()
    run = SpoolRun(tmp_path / "run", salvage=state == "recording")
    assert run.state == state and run.numbers.size >= 20 and run.damaged == []
    assert all(run.verify(index) for index in run.numbers)
    assert (np.diff(run.ticks()) > 0).all()
