# SPDX-License-Identifier: MIT
"""The package and the tool read the same from a spooled run."""
import json
import os
import random
import subprocess

import numpy as np
import pytest

from spool_writer import SpoolWriter
from vxmcd.spool import SpoolRun

ENCODINGS = ["Mono8", "Mono12", "Mono12Packed", "Mono16", "Mono32"]


def converted(directory, output, *options):
    """What the tool makes of a run: image numbers from 0, pixels, ticks, host times; and its report."""
    command = [os.environ["VXMCD_TOOL"], "convert", directory, "--json", "--output", output, *options]
    result = subprocess.run(list(map(str, command)), capture_output=True, text=True, timeout=60)
    assert result.returncode in (0, 5), result.stderr
    report = json.loads(result.stdout)
    if not output.exists():
        return [], None, [], [], report
    label = json.loads((output.parent / (output.name + ".json")).read_text())
    pixels = np.fromfile(output, np.dtype(label["pixel_type"]).newbyteorder("<"))
    frames = [frame for frame in label["frames"] if frame["check"] != "wrong"]  # the package never gives these
    pixels = pixels.reshape(label["images"], label["image_height"], label["image_width"])
    pixels = pixels[[frame["check"] != "wrong" for frame in label["frames"]]]
    return ([frame["image"] - 1 for frame in frames],
            pixels,
            [-1 if frame["ticks"] is None else frame["ticks"] for frame in frames],
            [frame.get("host_ns") for frame in frames], report)


def assert_same(run, tool):
    numbers, pixels, ticks, times, report = tool
    assert run.numbers.tolist() == numbers
    assert (len(run.damaged), len(run.unrecorded)) == (report["wrong"], report["unrecorded_data"])
    assert run.state == report["state"] and run.is_checked == (report["unchecked"] == 0)
    assert sorted([*run.missing, *run.numbers]) == list(range(run.description.images_expected))
    if not numbers:
        return
    assert run.dtype == pixels.dtype
    for place, number in enumerate(numbers):
        np.testing.assert_array_equal(run[number], pixels[place])
    assert run.ticks().tolist() == ticks
    if run.is_checked:
        assert run.host_times().astype(np.int64).tolist() == times


@pytest.mark.parametrize("seed", range(24))
def test_runs_with_damage(tmp_path, seed):
    """Killed runs with records in any order, a torn index or none, and bytes that changed on the way; with and without
    what has no record."""
    chance = random.Random(seed)
    run = tmp_path / "run"
    run.mkdir()
    writer = SpoolWriter(run, images=12, images_per_file=chance.choice([1, 4, 16]), state="recording", expected=15,
                         encoding=chance.choice(ENCODINGS), seed=seed)
    chance.shuffle(writer.order)
    del writer.order[chance.randrange(8, 13):]
    writer.write()
    for path in sorted(run.glob("spool_*.dat")):
        data = bytearray(path.read_bytes())
        for _ in range(chance.choice([0, 0, 1, 2])):
            data[chance.randrange(len(data))] ^= 0x40
        path.write_bytes(data)
    index = run / "spool_index.dat"
    if seed % 4 == 3:
        index.unlink()
    else:
        os.truncate(index, index.stat().st_size - chance.choice([0, 5, 32, 50]))
    keeps = ["--keep-damaged"] if seed % 3 == 2 else []
    assert_same(SpoolRun(run, salvage=True, keep_unrecorded=bool(keeps)),
                converted(run, tmp_path / "run.raw", "--salvage", "--verify", *keeps))
