# SPDX-License-Identifier: MIT
"""Opening, closing and settings of cameras, and single images and series."""
import _thread
import copy
import gc
import itertools
import pickle
import signal
import subprocess
import sys
import threading
import time
from pathlib import Path

import numpy as np
import pytest

import vxmcd
from conftest import FREE, REAL, environment_for_programs, frame_number
from vxmcd import CameraStateError, FramesLostError, NoImageError, VxmcdError, raw
from vxmcd.spool import DamagedImageError, MissingImageError, SpoolFormatError

CHART = """[Simulator]
Cameras = 1
[Camera0]
Model = {model}
Clock = free
Scene = resolution chart
Noise = off
"""


def test_opens_and_closes(simulator):
    simulator.configure(FREE)
    assert vxmcd.cameras() == [0, 1]
    with vxmcd.Camera(0) as camera:
        assert camera.is_open and simulator.open_cameras() == 1
        assert camera.model == "RQ512_LX" and camera.pixel_size == (16, 16) and camera.serial_number > 0
        assert camera.capabilities.triggerModes & raw.VXMCD_TRIGGER_SOFTWARE
        with pytest.raises(CameraStateError, match=r"open already: close it.*close\(\), or with vxmcd.close_cameras"):
            vxmcd.Camera(0)
    assert simulator.open_cameras() == 0 and not camera.is_open
    camera.close()
    with pytest.raises(CameraStateError, match="camera 0 is closed"):
        camera.exposure = 0.1
    with pytest.raises(CameraStateError, match="closed"):
        camera.snap()


def test_no_such_camera(simulator):
    simulator.configure(FREE)
    for number in (9, -1):
        with pytest.raises(vxmcd.NoCameraError) as caught:
            vxmcd.Camera(number)
        assert (caught.value.function, caught.value.code) == ("vxmcd_SetCurrentCameraOfThread", 20066)
        assert str(caught.value).startswith(f"there is no camera {number}: attached are 0, 1; ")
    with pytest.raises(TypeError, match=r"vxmcd.cameras\(\) lists them.*whole number, not 'RQ'"):
        vxmcd.Camera("RQ")
    simulator.configure("[Simulator]\nCameras = 0\n")
    with pytest.raises(vxmcd.NoCameraError, match="there is no camera 0: none is attached; connect"):
        vxmcd.Camera()


def test_cameras_are_chosen_by_serial_number(simulator):
    simulator.configure(FREE + "[Camera1.SerialNumber]\nValue = VSC-00777\n")
    with vxmcd.Camera(0) as first:
        with vxmcd.Camera(serial=np.int64(777)) as second:
            assert (second.number, second.serial_number) == (1, 777)
        with pytest.raises(CameraStateError, match="camera 0 is open already"):
            vxmcd.Camera(serial=first.serial_number)
        with pytest.raises(vxmcd.NoCameraError, match=r"number 5; there are: \d+ \(camera 0\), 777 \(camera 1\)$"):
            vxmcd.Camera(serial=5)
        with pytest.raises(TypeError, match="a serial number is a whole number, not '777'"):
            vxmcd.Camera(serial="777")
        with pytest.raises(ValueError, match="not both"):
            vxmcd.Camera(1, serial=777)
        assert simulator.open_cameras() == 1 and first.is_open


def test_values_print_readably(simulator):
    simulator.configure(REAL)
    with vxmcd.Camera() as camera:
        assert repr(camera.area) == "Area(left=1, top=1, width=16, height=8)"
        assert repr(camera.gains[1]) == "Gain(text='2x', factor=2)"
        assert "cameraType=VXMCD_CAMERA_RQ512,\n" in repr(camera.capabilities)
        assert "VXMCD_TRIGGER_EXTERNAL | VXMCD_TRIGGER_SOFTWARE" in repr(camera.capabilities)
        assert repr(raw.vxmcd_Capabilities(48)).startswith("vxmcd_Capabilities(size=48, acquisitionModes=0, ")
        assert repr(raw.SetExposureTime) == "<function SetExposureTime(c_float)>"
        with camera.stream(3) as stream:
            frame = next(stream)
            assert repr(frame) == f"<Frame 1: 16x8 uint16, ticks {frame.ticks}, 0 lost before>"
            assert repr(stream) == "<Stream: 1 of 3 fetched, 0 overwritten, running>"


def test_all_cameras_can_be_closed_without_their_variables(simulator):
    simulator.configure(REAL)
    first, second = vxmcd.Camera(0), vxmcd.Camera(1)
    with first.stream() as stream:
        next(stream)
        vxmcd.close_cameras()
        assert simulator.open_cameras() == 0 and not first.is_open and not second.is_open
    with vxmcd.Camera(0) as again:
        first.close()
        assert again.snap().shape == (8, 16)


@pytest.mark.parametrize("rule", [
    "call VX_Open at 1 rc 53", "call VX_SetEnumeratedString feature TriggerMode any rc 53",
    "call VX_GetInt feature SensorWidth any rc 53"])
def test_a_camera_that_cannot_be_set_up_is_not_left_open(simulator, rule):
    simulator.configure(FREE)
    simulator.fault(rule)
    try:
        vxmcd.Camera(0).close()
    except VxmcdError:
        pass
    assert simulator.open_cameras() == 0
    simulator.reset()
    simulator.configure(FREE)
    with vxmcd.Camera(0) as camera:
        assert camera.snap().shape == (8, 16)


def test_closes_on_exceptions_and_when_forgotten(simulator):
    simulator.configure(REAL)
    with pytest.raises(KeyError):
        with vxmcd.Camera(0) as camera:
            frames = camera.stream()
            next(frames)
            raise KeyError
    assert simulator.open_cameras() == 0
    camera = vxmcd.Camera(0)
    next(camera.stream())
    del camera, frames
    gc.collect()
    assert simulator.open_cameras() == 0


def test_settings(simulator):
    simulator.configure(FREE + "[Camera0.ExposureTime]\nMax = 0.1\n")
    with vxmcd.Camera(0) as camera:
        camera.exposure = camera.maximum_exposure  # in single precision more than the camera's
        assert camera.exposure == pytest.approx(camera.maximum_exposure) == pytest.approx(0.1)
        camera.exposure = 0.02
        assert camera.exposure == pytest.approx(0.02)
        camera.frame_rate = 20
        assert camera.frame_rate == pytest.approx(20, rel=1e-3) and camera.cycle_time == pytest.approx(0.05, rel=1e-3)
        assert 0 < camera.readout_time < 0.01
        camera.trigger_mode = "external-start"
        assert camera.trigger_mode is vxmcd.TriggerMode.EXTERNAL_START
        camera.overlap, camera.metadata, camera.baseline_clamp = True, False, False
        assert camera.overlap and not camera.metadata and not camera.baseline_clamp
        assert camera.ad_channels == [12] and camera.amplifiers == ["Low Gain", "High Gain"]
        assert [gain.text for gain in camera.gains] == ["1x", "2x", "10x", "30x"]
        camera.gain = 2
        assert (camera.gain, camera.amplifier, camera.ad_channel) == (2, 1, 0)
        camera.readout_speed = camera.readout_speeds.index(200)
        camera.amplifier = 0


@pytest.mark.parametrize("name, value", [
    ("exposure", 0), ("exposure", float("nan")), ("frame_rate", -1), ("cycle_time", float("inf")), ("bits", 12),
    ("trigger_mode", "sometimes"), ("area", (0, 1, 4, 4)), ("area", (10, 1, 8, 4)), ("area", (1, 1, 16, 9)),
    ("area", (1, 1, 0, 1)), ("binning", 0), ("binning", (2, 9)), ("gain", 4), ("gain", -1), ("target_temperature", 60),
    ("target_temperature", -10.5), ("target_temperature", float("inf")), ("target_temperature", float("nan"))])
def test_values_that_cannot_be_are_refused(simulator, name, value):
    simulator.configure(FREE)
    with vxmcd.Camera(0) as camera:
        before = getattr(camera, name)
        with pytest.raises(ValueError):
            setattr(camera, name, value)
        assert getattr(camera, name) == before and camera.snap().shape == (8, 16)


@pytest.mark.parametrize("names, values", [
    (["cooler", "overlap", "metadata", "baseline_clamp"], ["off", 1, None, np.int64(0)]),
    (["exposure", "frame_rate", "cycle_time", "accumulation_cycle_time", "target_temperature"], ["0.1", None, True]),
    (["gain", "amplifier", "ad_channel", "readout_speed", "accumulations", "bits"], ["1", 1.0, True]),
    (["trigger_mode"], [0, None, []]), (["area"], ["1234", 5, (1, 1, 4.0, 4)]), (["binning"], ["12", 2.0, (1, True)])])
def test_values_of_a_wrong_type_are_refused(simulator, names, values):
    simulator.configure(FREE)
    with vxmcd.Camera() as camera:
        for name, value in itertools.product(names, values):
            before = getattr(camera, name)
            with pytest.raises(TypeError, match="mode is|is a whole number|is a number|is True or False|whole numbers"):
                setattr(camera, name, value)
            assert getattr(camera, name) == before


def test_numbers_of_numpy_are_taken_and_ints_are_not_cut(simulator):
    simulator.configure(FREE)
    with vxmcd.Camera() as camera:
        camera.exposure, camera.gain, camera.bits = np.float32(0.02), np.int64(1), np.uint8(32)
        camera.cooler, camera.overlap, camera.accumulations = np.True_, np.False_, np.array(2)
        assert camera.exposure == 0.02 and camera.cooler and camera.overlap is False
        assert (camera.gain, camera.dtype, camera.accumulations) == (1, np.int32, 2)
        with pytest.raises(ValueError):
            camera.accumulations = 2**32 + 1  # 1 in an int of C
        assert camera.accumulations == 2


def test_settings_that_do_not_exist_are_refused(simulator):
    simulator.configure(FREE)
    with vxmcd.Camera() as camera:
        for name, hint in {"exposre": "mean 'exposure'", "framerate": "mean 'frame_rate'", "snap": "is a method",
                           "model": "", "wavelength": "no setting 'wavelength'$"}.items():
            with pytest.raises(AttributeError, match=hint):
                setattr(camera, name, 1)


def test_a_clipped_value_is_a_warning_at_the_line_that_sets_it(simulator):
    simulator.configure(FREE)
    with vxmcd.Camera() as camera:
        for name, value, unit in (("frame_rate", 1e6, "Hz"), ("cycle_time", 1e-6, "s"), ("cycle_time", 1e6, "s"),
                                  ("exposure", 1e-9, "s")):
            with pytest.warns(vxmcd.ClippedWarning) as caught:
                setattr(camera, name, value)
            warning, actual = caught[0].message, getattr(camera, name)
            assert len(caught) == 1 and caught[0].filename == __file__
            assert (warning.setting, warning.asked, warning.actual) == (name, value, actual)
            assert str(warning) == f"{name}: {value:g} {unit} was set, the camera uses {actual:g} {unit}"


def test_what_the_library_refuses_is_an_error_with_its_code(simulator):
    simulator.configure(FREE + "Remove = SoftwareTrigger, BaselineClamp, SensorTemperature\n")
    with vxmcd.Camera(1) as camera:
        for function, ask in {"SendSoftwareTrigger": camera.trigger, "GetBaselineClamp": lambda: camera.baseline_clamp,
                              "GetTemperatureF": lambda: camera.temperature}.items():
            with pytest.raises(VxmcdError) as caught:
                ask()
            assert (caught.value.function, caught.value.name) == (function, "RC_NOT_SUPPORTED")


def test_areas_and_binning(simulator):
    simulator.configure(CHART.format(model="RQ512_LX"))
    with vxmcd.Camera() as camera:
        whole = camera.snap()
        assert whole.shape == (512, 512) and whole.dtype == np.uint16 and whole.std() > 0
        camera.area = vxmcd.Area(101, 51, 200, 99)
        assert camera.shape == (99, 200)
        np.testing.assert_array_equal(camera.snap(), whole[50:149, 100:300])
        camera.binning = 2, 4
        assert camera.shape == (24, 100) and camera.snap().shape == (24, 100)
        with pytest.raises(ValueError, match="does not bin by 3x17"):
            camera.binning = 3, 17
        assert camera.binning == (2, 4) and camera.snap().shape == (24, 100)
        camera.binning = np.int64(2)
        camera.area = np.array([1, 1, 400, 200], np.int16)
        assert camera.binning == (2, 2) and camera.snap().shape == (100, 200)
        camera.binning = 1
        camera.area = None
        np.testing.assert_array_equal(camera.snap(), whole)


def test_a_camera_that_bins_in_squares_only(simulator):
    simulator.configure(CHART.format(model="TARN 1M"))
    with vxmcd.Camera() as camera:
        camera.binning = 2
        for binning in ((2, 1), (4, 2), (5, 5)):
            with pytest.raises(ValueError, match="does not bin"):
                camera.binning = binning
        assert camera.snap().shape == camera.shape == (512, 640)


def test_series_and_sums(simulator):
    simulator.configure(FREE)
    with vxmcd.Camera() as camera:
        assert camera.snap().flags.owndata
        images = camera.grab(np.int64(5))
        assert [frame_number(image) for image in images] == [1, 2, 3, 4, 5]
        assert images.flags.owndata and images.flags.writeable
        for ask, count in itertools.product((camera.grab, camera.stream), (0, -1)):
            with pytest.raises(ValueError):
                ask(count)
    simulator.configure("[Camera0]\nModel = RQ512_LX\nClock = free\nScene = flat\nNoise = off\nPhotonsPerSecond = 1e6\n")
    with vxmcd.Camera() as camera:
        camera.exposure = 0.05
        single = camera.snap().astype(int)
        camera.accumulations = 40
        summed = camera.snap()
        assert summed.dtype == np.int32 and summed.max() > 65535
        assert np.median(summed) == pytest.approx(40 * np.median(single), rel=0.01)
        assert camera.grab(2).shape == (2, 512, 512)
        camera.bits = 16
        assert camera.snap().dtype == np.uint16


def test_software_triggers_are_sent(simulator):
    simulator.configure(REAL)
    with vxmcd.Camera() as camera:
        camera.trigger_mode = "software"
        assert [frame_number(image) for image in camera.grab(4)] == [1, 2, 3, 4]
        with camera.stream(2, timeout=5) as stream:
            for number in (1, 2):
                camera.trigger()
                assert next(stream).number == number


def test_time_limit_and_failures_of_a_run(simulator):
    simulator.configure(REAL)
    with vxmcd.Camera() as camera:
        camera.trigger_mode = "external"
        begin = time.monotonic()
        with pytest.raises(NoImageError, match="0 came before"):
            camera.grab(3, timeout=0.3)
        assert 0.3 <= time.monotonic() - begin < 2
        camera.trigger_mode = "internal"
        assert camera.snap().shape == (8, 16)
        simulator.fault("call VX_GetInt feature ImageSizeBytes at 1 rc 53")
        with pytest.raises(VxmcdError, match="StartAcquisition: 20010"):
            camera.snap()
        simulator.fault("call VX_WaitBuffer from 3 rc 100")
        with pytest.raises(VxmcdError, match="the run: 20019 RC_STATUS_HARDWARE_OVERFLOW.*ended after"):
            camera.grab(100)


def test_cooling(simulator):
    simulator.configure(FREE)
    with vxmcd.Camera() as camera:
        assert camera.temperature_status == "off" and not camera.cooler and camera.temperature > 20
        camera.target_temperature = -20
        assert camera.target_temperature == -20 and camera.temperature_range == (-80, 20)
        camera.cooler = True
        camera.set_fan("full")
        assert camera.cooler and camera.temperature_status == "not reached"
        with pytest.raises(vxmcd.NotStableError, match="not stable after 0.1 s: .* C, the target is -20 C") as late:
            camera.wait_until_stable(timeout=0.1)
        assert late.value.temperature > 20 and pickle.loads(pickle.dumps(late.value)).status == "not reached"
        threading.Timer(0.2, _thread.interrupt_main).start()
        with pytest.raises(KeyboardInterrupt):
            camera.wait_until_stable()
        threading.Timer(0.2, simulator.advance, [2000]).start()
        assert camera.wait_until_stable(60) == pytest.approx(-20, abs=0.5)
        assert camera.temperature == pytest.approx(-20, abs=0.5) and camera.temperature_status == "stable"
        camera.cooler = False
        with pytest.raises(CameraStateError, match="the cooler is off.*cooler = True"):
            camera.wait_until_stable()
        with pytest.raises(ValueError):
            camera.set_fan("gale")


def test_several_cameras_keep_their_settings(simulator):
    simulator.configure(FREE)
    with vxmcd.Camera(0) as first, vxmcd.Camera(1) as second:
        first.exposure, second.exposure = 0.01, 0.02
        second.area = 1, 1, 40, 30
        assert first.exposure == pytest.approx(0.01) and second.exposure == pytest.approx(0.02)
        assert first.snap().shape == (8, 16) and second.snap().shape == (30, 40)
        assert first.model == "RQ512_LX" and second.model == "TARN 1M"


def test_a_camera_has_one_run_at_a_time(simulator):
    simulator.configure(REAL)
    with vxmcd.Camera(0) as first, vxmcd.Camera(1) as second:
        with first.stream() as stream:
            next(stream)
            for name, value in {"area": (1, 1, 4, 4), "trigger_mode": "software", "metadata": False, "gain": 1,
                                "accumulations": 2}.items():
                with pytest.raises(CameraStateError, match="close its stream first"):
                    setattr(first, name, value)
            with pytest.raises(CameraStateError, match="close its stream first"):
                first.snap()
            assert first.temperature > 0 and next(stream).image.shape == (8, 16)
            second.area = 1, 1, 40, 30
            assert second.snap().shape == (30, 40) and next(stream).image.shape == (8, 16)
            second.close()
            assert simulator.open_cameras() == 1 and next(stream).image.shape == (8, 16)
        assert first.snap().shape == (8, 16)


def test_a_camera_that_is_collected_during_a_call_for_another_one_waits_for_its_end(simulator, monkeypatch):
    simulator.configure(FREE)
    call = raw.GetDetector

    def collect_and_call(*arguments):  # between choosing the camera and asking it
        gc.collect()
        return call(*arguments)

    with vxmcd.Camera(0) as first:
        forgotten = [vxmcd.Camera(1)]
        forgotten.append(forgotten)
        monkeypatch.setattr(raw, "GetDetector", collect_and_call)
        gc.disable()
        try:
            del forgotten
            assert simulator.open_cameras() == 2
            assert first.sensor_size == (16, 8) and simulator.open_cameras() == 1
        finally:
            gc.enable()
        with vxmcd.Camera(1) as second:
            assert second.sensor_size == (1280, 1024)


@pytest.mark.parametrize("error", [
    VxmcdError("SetImage", 20066, "for a reason"), vxmcd.NoCameraError("SetCurrentCamera", 20066, "there is none"),
    vxmcd.ClippedWarning("exposure", 9, 5, "s"), vxmcd.DiskSpaceWarning("run", 9, 5), FramesLostError(3, 17),
    SpoolFormatError(Path("a"), "is none"), MissingImageError([2, 4], Path("a")), DamagedImageError([1], Path("a"))])
def test_errors_can_be_sent_to_other_processes(error):
    arrived = pickle.loads(pickle.dumps(error))
    assert type(arrived) is type(error) and str(arrived) == str(error) and vars(arrived) == vars(error)


@pytest.mark.parametrize("way", [pickle.dumps, copy.copy])
def test_cameras_are_not_sent_to_other_processes(simulator, way):
    simulator.configure(FREE)
    with vxmcd.Camera() as camera, pytest.raises(TypeError, match="camera 0 cannot be pickled or copied"):
        way(camera)


def test_threads_share_cameras(simulator, monkeypatch):
    simulator.configure(FREE)
    call = raw.GetDetector

    def slow_call(*arguments):
        time.sleep(0.0005)  # between choosing the camera and asking it
        return call(*arguments)

    monkeypatch.setattr(raw, "GetDetector", slow_call)
    problems = []

    def ask(camera, expected):
        try:
            for _ in range(100):
                assert camera.sensor_size == expected
        except BaseException as problem:
            problems.append(problem)

    with vxmcd.Camera(0) as first, vxmcd.Camera(1) as second:
        threads = [threading.Thread(target=ask, args=arguments)
                   for arguments in [(first, (16, 8)), (second, (1280, 1024))] * 2]
        for thread in threads:
            thread.start()
        for thread in threads:
            thread.join()
    assert not problems


WAITS_FOR_EVER = """
import time, vxmcd
try:
    with vxmcd.Camera() as camera:
        camera.trigger_mode = "external"
        print("ready", flush=True)
        try:
            {wait}
        except KeyboardInterrupt:
            print(time.monotonic(), flush=True)
            raise
finally:
    print(camera.is_open, flush=True)
"""


def seconds_to_notice_ctrl_c(wait, environment):
    process = subprocess.Popen([sys.executable, "-c", WAITS_FOR_EVER.format(wait=wait)], env=environment,
                               stdout=subprocess.PIPE, stderr=subprocess.PIPE, text=True)
    try:
        assert process.stdout.readline() == "ready\n"
        time.sleep(0.5)  # into the wait
        begin = time.monotonic()
        process.send_signal(signal.SIGINT)
        noticed = float(process.stdout.readline())
        output, errors = process.stdout.read(), process.stderr.read()
    finally:
        process.kill()
    assert output == "False\n" and "KeyboardInterrupt" in errors
    return noticed - begin


@pytest.mark.parametrize("wait", ["camera.snap()", "camera.grab(5)", "next(camera.stream())"])
def test_ctrl_c_ends_a_wait(wait, tmp_path):
    # A machine that is busy with other things may be late once.
    assert any(seconds_to_notice_ctrl_c(wait, environment_for_programs(tmp_path)) < 0.25 for _ in range(3))
