# SPDX-License-Identifier: MIT
"""Settings of a camera as a whole; the package and the tool repeat each other's."""
import os
import re
import subprocess
import warnings

import numpy as np
import pytest

import vxmcd
from vxmcd import _settings
from conftest import environment_for_programs

CAMERAS = """[Simulator]
Cameras = 2
[Camera0]
Model = TRELLIS CMOS
Scene = stamp
Clock = free
[Camera1]
Model = RQ512_LX
Scene = stamp
Clock = free
"""


@pytest.fixture
def camera(simulator):
    simulator.configure(CAMERAS)
    with vxmcd.Camera(1) as camera:
        yield camera


def acquire(tmp_path, *options):
    command = [os.environ["VXMCD_TOOL"], "acquire", "--camera", "1", "--quiet", "--overwrite", *options]
    return subprocess.run(list(map(str, command)), env=environment_for_programs(tmp_path), capture_output=True, text=True,
                          timeout=60)


def without_comments(path):
    return [line for line in path.read_text().splitlines() if not line.startswith(";")]


def test_what_was_set_here_is_repeated_by_the_tool_and_back(camera, tmp_path):
    mine, its = tmp_path / "mine.ini", tmp_path / "its.ini"
    camera.exposure, camera.frame_rate, camera.gain, camera.encoding = 0.0033, 50, 3, "Mono12"
    camera.area, camera.binning, camera.overlap = (11, 21, 100, 80), 2, False
    camera.target_temperature, camera.cooler = -20, True
    camera.set_fan("low")
    settings = camera.settings()
    assert settings["exposure"] == 0.0033 and settings["cycle_time"] == 0.02
    vxmcd.save_settings(mine, settings)
    assert settings.pop("bits") is None and vxmcd.load_settings(mine) == settings

    result = acquire(tmp_path, "--settings", mine, "--save-settings", its)
    assert result.returncode == 0, result.stderr
    assert without_comments(its) == without_comments(mine)

    result = acquire(tmp_path, "--frames", 4, "--accumulations", 3, "--accumulation-cycle", 0.05, "--trigger", "software",
                     "--encoding", "Mono8", "--set", "BaselineLevel=7", "--set", "MetadataEnable=off", "--area", "1,1,64x32",
                     "--gain", 2, "--speed", 0, "--save-settings", its)
    assert result.returncode == 0, result.stderr
    loaded = vxmcd.load_settings(its)
    camera.apply(loaded)
    assert loaded.pop("mode") == "series" and loaded.pop("frames") == 4 and loaded["features"].pop("BaselineLevel") == "7"
    again = camera.settings()
    for name in ("bits", "overlap", "fan", "target_temperature"):  # from before
        again.pop(name)
    assert again == loaded and camera.trigger_mode is vxmcd.TriggerMode.SOFTWARE and not camera.metadata
    assert camera.shape == (32, 64) and camera.accumulation_cycle_time == pytest.approx(0.05)

    vxmcd.save_settings(mine, {**settings, "interval": 0.1, "frames": 1})  # the interval is its cycle
    result = acquire(tmp_path, "--settings", mine, "--preview", tmp_path / "preview.png")
    assert result.returncode == 0, result.stderr


def test_what_was_set_meanwhile_is_undone(camera):
    usual = camera.settings()
    camera.encoding, camera.bits, camera.metadata, camera.cooler = "Mono8", 8, False, True
    camera.apply(usual)
    assert camera.settings() == usual and not camera.cooler and camera.metadata and camera.snap().dtype == np.uint16


def test_keys_are_those_of_the_tool(tmp_path):
    wrong = tmp_path / "wrong.ini"
    wrong.write_text("[Settings]\nqqqqqqqqqqqqqqqqqqq = 1\n")
    names = re.search("there are (.*)\n", acquire(tmp_path, "--settings", wrong).stderr)[1]
    assert re.split(", | or ", names) == list(_settings._BY_KEY)
    defaults = tmp_path / "accumulate.ini"
    defaults.write_text("[Settings]\nmode = accumulate\naccumulations = 2\ncycle = 0.5\n")
    assert vxmcd.load_settings(defaults)["accumulation_cycle_time"] == 0.5, "as the tool takes it"


def test_encoding_makes_eight_bits_possible(camera):
    camera.bits = 8
    with pytest.raises(ValueError, match="8 bits need the encoding 'Mono8', and the camera is set to 'Mono16'"):
        camera.snap()
    camera.encoding = "Mono8"
    assert camera.encoding == "Mono8" and camera.snap().dtype == np.uint8
    with pytest.raises(ValueError, match="'Mono9' is not accepted; one of Mono8, Mono12"):
        camera.encoding = "Mono9"
    with camera.stream(1), pytest.raises(vxmcd.CameraStateError):
        camera.encoding = "Mono16"


def test_mistakes_are_named(camera, tmp_path):
    path = tmp_path / "bad.ini"
    for text, message in [("[Settings]\n\nexposre = 1\n", r"bad.ini, line 3: there is no setting 'exposre'; .* 'exposure'"),
                          ("[Settings]\nexposure = fast\n", "line 2: exposure: 'fast' is not accepted; a number is"),
                          ("[Settings]\narea = 1,1\n", "line 2: area: '1,1' is not accepted; LEFT,TOP,WIDTHxHEIGHT is"),
                          ("[Settings]\ngain = 1\ngain = 2\n", "line 3: gain stands in line 2, too"),
                          ("gain = 1\n", "line 1: gain stands before the first section"),
                          ("[Setings]\n", r"line 1: there is no section \[Setings\]"),
                          ("[Settings]\nmode = accumulate\ncycle = 1\naccumulation-cycle = 1\n", "leave out one of them"),
                          ("\n\udcff\n", "bad.ini, line 2: is not text"), ("\x1b\n", "bad.ini, line 1: is not text"),
                          ("[Settings]\njunk\n", "line 2: 'junk' is not accepted; KEY = VALUE is")]:
        path.write_text(text, errors="surrogateescape")
        with pytest.raises(ValueError, match=message):
            vxmcd.load_settings(path)
    before = camera.settings()
    for wrong, message in [({"exposure": 0.5, "exposre": 1}, "did you mean 'exposure'"), ({"tracks": [(1, 2)]}, "tracks"),
                           ({"area": (0, 1, 2, 3), "binning": 2}, "not on the sensor"),
                           ({"features": {"BaselineLevel": "x"}}, "a whole number from 0 to 500")]:
        with pytest.raises(ValueError, match=message):
            camera.apply(wrong)
    for wrong in ({"features": {"PixelEncoding": 3}}, {"features": {3: "on"}}, {"camera": "RQ512_LX"}, None):
        with pytest.raises(TypeError, match="dictionary"):
            camera.apply(wrong)
    assert camera.settings() == before
    with pytest.warns(UserWarning, match="the settings are of a TARN 1M, this camera is a RQ512_LX"):
        camera.apply({"camera": {"model": "TARN 1M"}})
    with warnings.catch_warnings():
        warnings.simplefilter("error")
        camera.apply(before)
