# SPDX-License-Identifier: MIT
"""The package and the tool read the same from a spooled run."""
import json
import os
import random
import resource
import subprocess
import time
from pathlib import Path

import numpy as np
import pytest

from spool_writer import FIRST_TIME, SpoolWriter
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
    height, padding = [(3, 0), (1, 1 << 20), (3, 1 << 19)][seed % 3]  # the tool reads images of 1 MiB ahead
    writer = SpoolWriter(run, images=12, images_per_file=chance.choice([1, 4, 16]), state="recording", expected=15,
                         encoding=chance.choice(ENCODINGS), seed=seed, height=height, padding=padding)
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


def told(run, output, code, *options, **keywords):
    """Converts a run; what the tool says."""
    command = [os.environ["VXMCD_TOOL"], "convert", run, "--output", output, *options]
    result = subprocess.run(list(map(str, command)), capture_output=True, text=True, timeout=60, **keywords)
    assert result.returncode == code, result.stderr
    return result.stderr


def zarr_of(run, output, code, *options, **keywords):
    """What zarr reads from the directory that the tool makes of a run, and what the tool says."""
    zarr = pytest.importorskip("zarr")
    said = told(run, output, code, *options, **keywords)
    return zarr.open(str(output), "r") if (output / ".zattrs").exists() else None, said


def halved(images):
    """Means of 2 x 2 pixels, halves rounded up, of what there is at odd edges."""
    sums = np.add.reduceat(np.add.reduceat(images, np.arange(0, images.shape[1], 2), 1), np.arange(0, images.shape[2], 2), 2)
    counts = halved_counts(images.shape[1])[:, None] * halved_counts(images.shape[2])
    return (2 * sums + counts) // (2 * counts)


def halved_counts(length):
    return np.add.reduceat(np.ones(length, np.int64), np.arange(0, length, 2))


@pytest.mark.parametrize("encoding, width, images, options, chunks", [
    ("Mono16", 7, 5, ["--pyramid", "3", "--chunk", "2", "--threads", "1"], 2),
    ("Mono8", 1, 2, ["--pyramid", "1", "--axes", "tczyx"], 2), ("Mono32", 6, 2, ["--pyramid", "2"], 2),
    ("Mono16", 7, 5, [], 5), ("Mono16", 7, 5, ["--chunk", "2"], 2), ("Mono8", 64, 6, ["--chunk", "3"], 3),
    ("Mono12Packed", 7, 5, ["--compression", "lz4:3", "--chunk", "4"], 4), ("Mono32", 1, 1, [], 1),
    ("Mono16", 1, 3, ["--compression", "none", "--chunk", "2"], 2)])
def test_ome_zarr(tmp_path, encoding, width, images, options, chunks):
    directory = tmp_path / "run"
    directory.mkdir()
    writer = SpoolWriter(directory, images, width, 3, encoding, padding=5)
    writer.keys.update({"camera/PixelWidth": 6.5, "camera/PixelHeight": 8, "image/Top": 5, "image/VBin": 2, "image/HBin": 1})
    run = SpoolRun(writer.write())
    group, _ = zarr_of(directory, tmp_path / "run.ome.zarr", 0, *options)
    levels = int(options[1]) if "--pyramid" in options else 0
    ones = (1, 1) if "tczyx" in options else ()
    pixels = run.array().astype(np.int64)
    for level in range(levels + 1):
        array = group[str(level)]
        assert array.dtype == run.dtype and array.chunks == (chunks, *ones, *pixels.shape[1:]) and array.fill_value is None
        assert (array.compressor is None) == ("none" in options)
        assert array.attrs["_ARRAY_DIMENSIONS"] == (list("tczyx") if ones else list("tyx"))
        np.testing.assert_array_equal(array[:], pixels.reshape(images, *ones, *pixels.shape[1:]))
        pixels = halved(pixels)
    assert str(levels + 1) not in group
    columns = group["vxmcd"]
    assert columns["number"][:].tolist() == list(range(1, images + 1)) and columns["ticks"][:].tolist() == run.ticks().tolist()
    assert columns["host_ns"][:].tolist() == run.host_times().astype(np.int64).tolist()
    assert columns["check"][:].tolist() == [1] * images and group.attrs["vxmcd"]["complete"]
    image, = group.attrs["multiscales"]  # by the rules of the format
    extra = ["channel", "space"] if ones else []
    assert image["version"] == "0.4" and [axis["type"] for axis in image["axes"]] == ["time", *extra, "space", "space"]
    assert [axis.get("unit") for axis in image["axes"]] == [None, *[None for _ in ones], "micrometer", "micrometer"]
    for level, dataset in enumerate(image["datasets"]):
        scale, *shift = dataset["coordinateTransformations"]
        assert dataset["path"] == str(level) and scale == {"type": "scale", "scale": [1, *ones, 16 * 2**level, 6.5 * 2**level]}
        middle = (2**level - 1) / 2  # of the pixels that became the first one
        assert shift == ([] if level == 0 else
                         [{"type": "translation", "translation": [0, *[0 for _ in ones], 16 * middle, 6.5 * middle]}])
    assert len(image["datasets"]) == levels + 1
    window = group.attrs["omero"]["channels"][0]["window"]
    assert window["min"] <= window["start"] < window["end"] <= window["max"] + 1
    assert window["start"] == run.array()[::chunks].min() and "--pyramid: images of this size have" in told(
        directory, tmp_path / "more.zarr", 4, "--pyramid", "9")


def test_ome_zarr_of_what_is_left(tmp_path):
    """A damaged image leaves a gap in the numbers; a disk that takes no more, the whole chunks before."""
    directory, output = tmp_path / "run", tmp_path / "run.zarr"
    directory.mkdir()
    writer = SpoolWriter(directory, 6, 100, 100, images_per_file=8)
    for number in (0, 1):  # compress well
        writer.frames[number] = bytes(len(writer.frames[number]))
    writer.write()
    with open(directory / "spool_0000000000.dat", "r+b") as file:
        file.seek(4 * writer.image_size)
        file.write(bytes(9))
    group, _ = zarr_of(directory, output, 5, "--chunk", "2")
    assert group["vxmcd/number"][:].tolist() == [1, 2, 3, 4, 6] and group["0"].shape == (5, 100, 100)
    np.testing.assert_array_equal(group["0"][:], SpoolRun(directory)[:][[0, 1, 2, 3, 5]])

    _, said = zarr_of(directory, output, 4)
    assert "give --overwrite" in said
    limit = {"restore_signals": False,  # Python ignores the signal of the limit
             "preexec_fn": lambda: resource.setrlimit(resource.RLIMIT_FSIZE, (20000, 20000))}
    group, said = zarr_of(directory, output, 4, "--chunk", "2", "--overwrite", **limit)
    assert group["0"].shape == (2, 100, 100) and not group["0"][:].any() and "0/1/0/0: cannot be written" in said
    assert group["vxmcd/number"][:].tolist() == [1, 2]
    group, _ = zarr_of(directory, output, 4, "--images", "3-4", "--overwrite", **limit)
    assert group is None, "no directory without an image"
    (tmp_path / "mine").mkdir()
    (tmp_path / "mine" / ".zgroup").touch()  # all that a killed tool has left
    (tmp_path / "link.zarr").symlink_to("mine")
    told(directory, f"{tmp_path}/link.zarr/", 5, "--overwrite")
    assert (tmp_path / "mine" / ".zattrs").exists() and (tmp_path / "link.zarr").is_symlink()
    (tmp_path / "mine" / ".zattrs").rename(tmp_path / "mine" / "precious")
    for other in (tmp_path / "mine", directory):
        _, said = zarr_of(directory, other, 4, "--overwrite", "--format", "omezarr")
        assert "is not replaced" in said and list(other.iterdir())

    limit["preexec_fn"] = lambda: resource.setrlimit(resource.RLIMIT_FSIZE, (2500, 2500))
    SpoolWriter(directory, 400, 1, 1).write()  # whose numbers do not fit: images go until they do
    group, _ = zarr_of(directory, output, 4, "--chunk", "10", **limit)
    assert group["0"].shape[0] == group["vxmcd/check"].size == 310 and group.attrs["vxmcd"]["images"] == 310
    np.testing.assert_array_equal(group["0"][:], SpoolRun(directory)[:310])


@pytest.mark.parametrize("encoding, width, images, options", [
    ("Mono16", 7, 6, []), ("Mono8", 64, 6, ["--compression", "gzip:2"]), ("Mono32", 1, 2, ["--compression", "gzip"]),
    ("Mono12Packed", 7, 600, ["--compression", "blosc-zstd"])])
def test_hdf5(tmp_path, encoding, width, images, options, monkeypatch):
    """Images, what is known of each, attributes, and the gap that a damaged image leaves."""
    if options[1:] == ["blosc-zstd"]:  # before the library of the filters is initialised
        plugins = next(iter(Path("/usr/lib").glob("*/hdf5/serial/plugins/libH5Zblosc.so")), None)
        if plugins is None:
            pytest.skip("the filter is missing")
        monkeypatch.setenv("HDF5_PLUGIN_PATH", str(plugins.parent))
    h5py = pytest.importorskip("h5py")
    directory, output = tmp_path / "run", tmp_path / "run.h5"
    directory.mkdir()
    writer = SpoolWriter(directory, images, width, 3, encoding, padding=5)
    writer.keys.update({"camera/PixelWidth": 6.5, "camera/PixelHeight": 8, "image/Top": 5, "image/VBin": 2, "image/HBin": 1})
    writer.write()
    with open(directory / "spool_0000000000.dat", "r+b") as file:
        file.seek(writer.image_size)
        file.write(b"\xAA" * 40)
    told(directory, output, 5, *options)
    left = [number for number in range(images) if number != 1]
    with h5py.File(output) as file:
        group = file[file.attrs["default"]]
        data = group[group.attrs["default"]]
        array = data[data.attrs["signal"]]
        assert array.chunks == (1, 3, width) and array.dtype == writer.array().dtype
        np.testing.assert_array_equal(array[:], writer.array()[left])
        assert data["number"][:].tolist() == [number + 1 for number in left] and set(data["check"][:]) == {1}
        assert data["ticks"][:].tolist() == [1000 * (number + 1) for number in left]
        assert data["host_ns"][:].tolist() == [FIRST_TIME + 1000 * number for number in left]
        assert (array.attrs["pixel_width_um"], array.attrs["pixel_height_um"]) == (6.5, 16)
        facts = group.attrs
        assert (facts["complete"], facts["images"], facts["model"]) == (1, images - 1, "TRELLIS CMOS")
        assert (facts["exposure_s"], facts["area_top"], "gain" in facts) == (0.01, 5, False)
        filters = array.id.get_create_plist()
        assert [filters.get_filter(k)[0] for k in range(filters.get_nfilters())] == (
            [] if not options else [32001] if options[1] == "blosc-zstd" else [2, 1])
    before = output.read_bytes()
    assert "give --overwrite" in told(directory, output, 4) and output.read_bytes() == before
    assert "gzip, blosc-zstd or none" in told(directory, output, 1, "--compression", "lz4")


def test_hdf5_of_several_programs(tmp_path):
    """One of them writes the file."""
    h5py = pytest.importorskip("h5py")
    run, output = SpoolWriter(tmp_path).write(), tmp_path / "run.h5"
    command = [os.environ["VXMCD_TOOL"], "convert", run, "--output", output, "--overwrite"]
    environment = dict(os.environ, HDF5_USE_FILE_LOCKING="TRUE")
    for _ in range(4):
        output.unlink(missing_ok=True)
        programs = [subprocess.Popen(command, stdout=subprocess.DEVNULL, env=environment) for _ in range(4)]
        assert 0 in [program.wait(60) for program in programs]
        with h5py.File(output) as file:
            assert file["entry/data/number"].size == 5


@pytest.mark.parametrize("end, code, written, said", [
    ("complete", 0, 6, ""), ("failed", 5, 6, "not complete: failed"), ("replaced", 6, 4, "another run")])
def test_follow(tmp_path, end, code, written, said):
    """Images of a run that is being recorded are taken when they have a record; then the run ends in one way or another."""
    directory, output = tmp_path / "run", tmp_path / "run.raw"
    writer = SpoolWriter(directory, 6, state="recording", images_per_file=4)
    follower = subprocess.Popen(
        [os.environ["VXMCD_TOOL"], "convert", directory, "-o", output, "--follow", "--timeout", "50"],
        stdout=subprocess.PIPE, stderr=subprocess.PIPE, text=True)
    try:
        time.sleep(0.05)  # the run may begin later
        directory.mkdir()
        writer.order = [1, 0]
        writer.write()
        os.truncate(directory / "spool_0000000000.dat", 2 * writer.image_size)  # will grow
        index = directory / "spool_index.dat"
        with open(index, "ab") as file:
            file.write(writer.record(3)[:20])
        wait_for(lambda: output.exists() and output.stat().st_size == writer.array()[:2].nbytes or follower.poll() is not None)
        writer.order = [1, 0, 3, 2]
        data = b"".join(map(writer.record, writer.order))
        with open(directory / "spool_0000000000.dat", "ab") as file:
            file.write(b"".join(writer.frames[2:4]))
        with open(index, "ab") as file:
            file.write(data[32 * 2 + 20:])
        wait_for(lambda: output.stat().st_size >= writer.array()[:4].nbytes or follower.poll() is not None)
        if end == "replaced":
            writer.keys["run/StartTime"] = "2026-01-31T13:00:00.000000000Z"
        else:
            (directory / "spool_0000000001.dat").write_bytes(b"".join(writer.frames[4:]))
            with open(index, "ab") as file:
                file.write(writer.record(5) + writer.record(4))
            writer.keys.update({"run/State": end, "run/ImagesWritten": 6})
        writer.write_description()
        _, errors = follower.communicate(timeout=50)
    finally:
        follower.kill()
    assert follower.returncode == code and said in errors, errors
    np.testing.assert_array_equal(np.fromfile(output, "<u2").reshape(-1, 3, 7), writer.array()[:written])
    assert json.loads((tmp_path / "run.raw.json").read_text())["complete"]


def test_follow_what_does_not_grow(tmp_path):
    """The program that records it was killed."""
    writer = SpoolWriter(tmp_path, 6, state="recording")
    del writer.order[4:]
    said = told(writer.write(), tmp_path / "run.raw", 5, "--follow", "--timeout", "0.2")
    assert "nothing was added to the run for 0.2 s" in said and (tmp_path / "run.raw").stat().st_size == writer.array()[:4].nbytes


def wait_for(condition):
    end = time.monotonic() + 30
    while not condition():
        assert time.monotonic() < end
        time.sleep(0.01)
