# SPDX-License-Identifier: MIT
"""The reader of spooled runs, against directories that an independent writer made."""
import os
import random
import resource
import subprocess
import sys
import time

import numpy as np
import pytest

from spool_writer import FIRST_TIME, SpoolWriter, checksum, chunk
from vxmcd.spool import DamagedImageError, MissingImageError, SpoolError, SpoolFormatError, SpoolRun
from vxmcd.spool import chunks
from vxmcd.spool.index import read_index
from vxmcd.spool.xxh3 import xxh3_64, xxh3_64_of_triples

ENCODINGS = ["Mono8", "Mono12", "Mono12Packed", "Mono16", "Mono32"]


@pytest.mark.parametrize("encoding", ENCODINGS)
@pytest.mark.parametrize("width, height, padding", [(1, 1, 0), (2, 3, 0), (7, 3, 0), (7, 3, 5), (64, 2, 16)])
@pytest.mark.parametrize("images, images_per_file", [(1, 1), (5, 2), (5, 1), (4, 4), (3, 8)])
def test_reads_what_was_written(tmp_path, encoding, width, height, padding, images, images_per_file):
    writer = SpoolWriter(tmp_path, images, width, height, encoding, padding, images_per_file)
    expected = writer.array()
    with SpoolRun(writer.write(), verify=True) as run:
        assert len(run) == images and run.missing.size == 0
        for pixels in (run.array(), run[:], np.stack(list(run))):
            assert pixels.dtype == expected.dtype
            np.testing.assert_array_equal(pixels, expected)
        np.testing.assert_array_equal(run[-1], expected[-1])
        np.testing.assert_array_equal(run[::-2], expected[::-2])
        assert bytes(run.frame_bytes(images - 1)) == writer.frames[-1]
        assert run.ticks().tolist() == [1000 * (n + 1) for n in range(images)]
        assert run.host_times().astype(np.int64).tolist() == [FIRST_TIME + 1000 * n for n in range(images)]


def test_one_file_of_whole_pixels_is_not_copied(tmp_path):
    run = SpoolRun(SpoolWriter(tmp_path, images=4, images_per_file=8, padding=3).write())
    assert np.shares_memory(run.array(), run.frame_bytes(2))
    assert not run.array().flags.writeable
    image = run[2]
    image[:] = 0  # a separate array
    assert run[2].any()


def test_arrays_outlive_the_run(tmp_path):
    writer = SpoolWriter(tmp_path, images=3, images_per_file=3)
    run = SpoolRun(writer.write())
    view = run.array()
    run.close()
    del run
    np.testing.assert_array_equal(view, writer.array())


def test_many_files_are_not_open_at_once(tmp_path):
    run = SpoolRun(SpoolWriter(tmp_path, images=200, images_per_file=1).write())
    soft, hard = resource.getrlimit(resource.RLIMIT_NOFILE)
    resource.setrlimit(resource.RLIMIT_NOFILE, (60, hard))
    try:
        images = list(run)
    finally:
        resource.setrlimit(resource.RLIMIT_NOFILE, (soft, hard))
    assert len(images) == 200 and len(os.listdir("/proc/self/fd")) < 60


def test_description(tmp_path):
    writer = SpoolWriter(tmp_path)
    writer.keys.update({"image/HBin": None, "run/Failure": "disk full; 50 % = bad", "camera/Model": "ТARN=1M"})
    description = SpoolRun(writer.write()).description
    assert (description.width, description.height, description.left, description.hbin) == (7, 3, 3, None)
    assert description.exposure_time == 0.01 and description.completed is True and description.metadata is True
    assert description.start_time == np.datetime64("2026-01-31T12:34:56.789012345")
    assert description.failure == "disk full; 50 % = bad" and description.model == "ТARN=1M"


@pytest.mark.parametrize("key, value, problem", [
    ("image/Width", None, r"has no \[image\] Width"),
    ("multiimage/ImagesPerFile", None, r"has no \[multiimage\] ImagesPerFile"),
    ("multiimage/ImagesPerFile", 0, "ImagesPerFile: '0'"),
    ("data/ImageSize", "many", "ImageSize: 'many'"),
    ("data/ImageSize", 20, "too little for 3 rows"),
    ("image/Stride", 13, "a row has 14 bytes"),
    ("image/Height", -3, "Height: '-3'"),
    ("image/PixelEncoding", "Mono12Coded", r"PixelEncoding: 'Mono12Coded' is not known"),
    ("run/State", "asleep", "State: 'asleep'"),
    ("run/Format", 2, "Format is 2"),
    ("run/ImagesExpected", 10 ** 18, "ImagesExpected"),
    ("run/StartTime", "yesterday", "StartTime: 'yesterday'"),
])
def test_a_wrong_description_is_named(tmp_path, key, value, problem):
    writer = SpoolWriter(tmp_path)
    writer.keys[key] = value
    with pytest.raises(SpoolFormatError, match=problem) as caught:
        SpoolRun(writer.write())
    assert caught.value.path == tmp_path / "acquisitionmetadata.ini"


@pytest.mark.parametrize("content", [b"no section = 1\n", b"\xff\xfe\x00\x01", b"", b"[run\n"])
def test_a_description_that_is_none(tmp_path, content):
    SpoolWriter(tmp_path).write()
    (tmp_path / "acquisitionmetadata.ini").write_bytes(content)
    with pytest.raises(SpoolFormatError):
        SpoolRun(tmp_path)


@pytest.mark.parametrize("name", ["acquisitionmetadata.ini", "spool_index.dat", "spool_0000000001.dat"])
def test_a_missing_file_is_named(tmp_path, name):
    SpoolWriter(tmp_path).write()
    (tmp_path / name).unlink()
    with pytest.raises(SpoolFormatError, match=name):
        SpoolRun(tmp_path)[3]


@pytest.mark.parametrize("size", [0, 1, 200])
def test_a_short_file_gives_the_images_before_its_end(tmp_path, size):
    writer = SpoolWriter(tmp_path, images=4, images_per_file=4)
    writer.write()
    os.truncate(tmp_path / "spool_0000000000.dat", size)
    run = SpoolRun(tmp_path)
    with pytest.raises(SpoolFormatError, match=f"has {size} bytes"):
        run[3]
    whole = size // writer.image_size
    assert SpoolRun(tmp_path, salvage=True).numbers.tolist() == list(range(whole))


@pytest.mark.parametrize("name", ["acquisitionmetadata.ini", "spool_index.dat", "spool_0000000000.dat"])
@pytest.mark.parametrize("make", [os.mkfifo, lambda path: path.symlink_to("/dev/zero"), os.mkdir])
def test_what_is_no_plain_file_is_refused_at_once(tmp_path, name, make):
    SpoolWriter(tmp_path).write()
    (tmp_path / name).unlink()
    make(tmp_path / name)
    with pytest.raises(SpoolFormatError, match=f"{name}: (is not a regular file|Is a directory)"):
        SpoolRun(tmp_path)[0]
    if name == "spool_index.dat":  # as if there were none
        run = SpoolRun(tmp_path, salvage=True)
        assert not run.is_checked and run.numbers.tolist() == [0, 1, 2, 3, 4]


def test_files_of_any_length_are_read_as_far_as_they_can_be_right(tmp_path):
    SpoolWriter(tmp_path).write()
    os.truncate(tmp_path / "spool_index.dat", 10 ** 12)
    with pytest.raises(SpoolFormatError, match="records that are damaged or repeated"):
        SpoolRun(tmp_path)
    assert SpoolRun(tmp_path, salvage=True).numbers.tolist() == [0, 1, 2, 3, 4]
    assert read_index(tmp_path, 2 ** 31 - 1).rejected > 2 ** 31, "holes are passed over: this would take a minute"
    os.truncate(tmp_path / "acquisitionmetadata.ini", 10 ** 12)
    with pytest.raises(SpoolFormatError, match="acquisitionmetadata.ini: has more than 1048576 bytes"):
        SpoolRun(tmp_path)


def test_an_image_that_is_larger_than_its_file_and_all_memory(tmp_path):
    writer = SpoolWriter(tmp_path)
    writer.keys.update({"data/ImageSize": 2 ** 60, "image/Stride": 2 ** 40, "image/Width": 2 ** 39, "image/Height": 2 ** 19})
    with pytest.raises(SpoolFormatError, match="spool_0000000000.dat: has"):
        SpoolRun(writer.write())[0]


def test_indices_beyond_the_run(tmp_path):
    run = SpoolRun(SpoolWriter(tmp_path, images=3).write())
    for number in (3, -4):
        with pytest.raises(IndexError):
            run[number]
    with pytest.raises(TypeError):
        run[1.5]
    assert run[5:].shape == (0, 3, 7) and 2 in run and 3 not in run


def test_a_run_without_images(tmp_path):
    writer = SpoolWriter(tmp_path, state="aborted", expected=5)
    writer.order = []
    writer.keys["run/ImagesWritten"] = 0
    run = SpoolRun(writer.write())
    assert len(run) == 0 and run.missing.tolist() == [0, 1, 2, 3, 4]
    assert run.array().shape == (0, 3, 7) and run.ticks().size == 0


def test_an_aborted_run_with_a_gap_never_shifts_images(tmp_path):
    writer = SpoolWriter(tmp_path, images=6, state="aborted", expected=8)
    writer.order = [1, 0, 5, 3]
    writer.keys["run/ImagesWritten"] = 4
    run = SpoolRun(writer.write())
    assert run.numbers.tolist() == [0, 1, 3, 5] and run.missing.tolist() == [2, 4, 6, 7] and len(run) == 6
    np.testing.assert_array_equal(run[5], writer.array()[5])
    assert run.ticks().tolist() == [1000, 2000, 4000, 6000]
    for ask in (lambda: run[2], lambda: run[1:4], run.array, lambda: run.tick(4), lambda: list(run)):
        with pytest.raises(MissingImageError, match="not there: image [24]"):
            ask()


def test_what_is_missing_takes_no_memory(tmp_path):
    writer = SpoolWriter(tmp_path, state="aborted", expected=2 ** 31 - 1)
    run = SpoolRun(writer.write())
    assert len(run.missing) == 2 ** 31 - 6 and repr(run.missing) == "<2147483642 missing: 5-2147483646>"
    assert (run.missing[0], run.missing[-1]) == (5, 2 ** 31 - 2) and 4 not in run.missing
    assert np.int64(2 ** 30) in run.missing and None not in run.missing
    last = 2 ** 31 - 2
    (tmp_path / "spool_index.dat").write_bytes(b"".join(map(writer.record, range(4))) + writer.record(last, b""))
    run = SpoolRun(tmp_path)
    assert len(run) == 2 ** 31 - 1 and run.missing.gaps() == [range(4, last)]
    for ask in (run.array, lambda: run[:], lambda: run[::-3]):
        with pytest.raises(MissingImageError) as caught:
            ask()
        assert set(caught.value.numbers) < {4, *range(5, 10000)} and len(caught.value.numbers) == 1000


@pytest.mark.parametrize("change, problem", [
    (lambda data: data[:-1], "torn record of 31 bytes"),
    (lambda data: data + data[:32], "1 records that are damaged or repeated"),
    (lambda data: data[:40] + b"\x55" + data[41:], "1 records that are damaged or repeated"),
    (lambda data: data[:-32], "has 4 images, the run wrote 5"),
])
def test_an_index_with_flaws_needs_salvage(tmp_path, change, problem):
    writer = SpoolWriter(tmp_path)
    writer.write()
    index = tmp_path / "spool_index.dat"
    index.write_bytes(change(index.read_bytes()))
    with pytest.raises(SpoolFormatError, match=problem):
        SpoolRun(tmp_path)
    salvaged = SpoolRun(tmp_path, salvage=True)
    assert len(salvaged.numbers) >= 4
    for number in salvaged.numbers:
        np.testing.assert_array_equal(salvaged[number], writer.array()[number])


def test_a_complete_run_with_a_gap_needs_salvage(tmp_path):
    writer = SpoolWriter(tmp_path)
    writer.order = [0, 1, 3]
    writer.keys["run/ImagesWritten"] = 3
    with pytest.raises(SpoolFormatError, match="lacks images of a complete run"):
        SpoolRun(writer.write())
    assert SpoolRun(tmp_path, salvage=True).missing.tolist() == [2, 4]


def test_a_killed_run_needs_salvage(tmp_path):
    writer = SpoolWriter(tmp_path, images=9, images_per_file=4, state="recording", expected=20)
    random.Random(3).shuffle(writer.order)
    writer.write()
    with pytest.raises(SpoolError, match="salvage=True"):
        SpoolRun(tmp_path)
    os.truncate(tmp_path / "spool_index.dat", 64)
    assert SpoolRun(tmp_path, salvage=True).unrecorded.tolist() == sorted(writer.order[2:])
    run = SpoolRun(tmp_path, salvage=True, keep_unrecorded=True)
    assert np.flatnonzero(~np.isnat(run.host_times())).tolist() == sorted(writer.order[:2])
    assert run.verify(writer.order[1])
    with pytest.raises(SpoolError, match="no record"):
        run.verify(writer.order[2])


def test_impossible_numbers_are_no_records(tmp_path):
    writer = SpoolWriter(tmp_path, state="recording", expected=4)
    writer.write()
    assert SpoolRun(tmp_path, salvage=True).numbers.tolist() == [0, 1, 2, 3]


def test_damaged_images(tmp_path):
    writer = SpoolWriter(tmp_path)
    writer.write()
    with open(tmp_path / "spool_0000000001.dat", "r+b") as file:
        file.seek(writer.image_size + 3)
        file.write(b"\xA5\x5A")
    assert [SpoolRun(tmp_path).verify(number) for number in range(5)] == [True, True, True, False, True]
    with pytest.raises(DamagedImageError, match="image 3") as caught:
        SpoolRun(tmp_path, verify=True)
    assert caught.value.numbers == [3]
    run = SpoolRun(tmp_path, salvage=True)
    assert run.damaged == run.missing.tolist() == [3] and run.unrecorded.size == 0 and run.numbers.tolist() == [0, 1, 2, 4]
    assert run.host_times().astype(np.int64).tolist() == [FIRST_TIME + 1000 * n for n in (0, 1, 2, 4)]
    assert run.verify(4)


def test_salvage_without_an_index_looks_at_many_small_images_at_once(tmp_path):
    images = 2 ** 24
    writer = SpoolWriter(tmp_path, 3, 1, 1, "Mono8", images_per_file=images, metadata=False, state="recording",
                         expected=images)
    writer.write()
    (tmp_path / "spool_index.dat").unlink()
    with open(tmp_path / "spool_0000000000.dat", "r+b") as file:
        file.seek(images - 5)
        file.write(b"\x01\x00\x01")
    begin = time.monotonic()
    assert SpoolRun(tmp_path, salvage=True).numbers.tolist() == [0, 1, 2, images - 5, images - 3]
    assert time.monotonic() - begin < 10  # one by one they take half a minute and more


@pytest.mark.parametrize("tail", [
    b"", b"\x00" * 8, b"\xff" * 40, b"\x01\x00\x00\x00\xfc\xff\xff\xff", b"\x01\x00\x00\x00\x03\x00\x00\x00",
    b"\x07\x00\x00\x00\x04\x00\x00\x00\x01\x00",
    chunk(1, b"12345678") + chunk(0, b"") + chunk(7, b"")])
def test_frames_without_a_timestamp(tmp_path, tail):
    writer = SpoolWriter(tmp_path, images=1, images_per_file=1, metadata=False)
    writer.keys["image/Metadata"] = "true"
    writer.frames = [frame + tail for frame in writer.frames]
    writer.image_size += len(tail)
    writer.keys["data/ImageSize"] = writer.image_size
    run = SpoolRun(writer.write())
    assert run.tick(0) is None and run.ticks().tolist() == [-1]


def test_an_empty_chunk_does_not_hide_the_timestamp():
    assert chunks.timestamp(np.frombuffer(chunk(1, b"\x05" + bytes(7)) + bytes(4), np.uint8)) == 5


def test_checksums_of_every_length():
    data = random.Random(5).randbytes(270_000)
    for size in [*range(0, 1200), 2047, 2048, 2049, 262_144, 262_145, 269_999]:
        assert xxh3_64(data[:size]) == checksum(data[:size]), size
    words = np.frombuffer(data[:24 * 1000], "<u8").reshape(-1, 3)
    assert xxh3_64_of_triples(words).tolist() == [checksum(row.tobytes()) for row in words]


def test_needs_no_camera_library():
    code = "import vxmcd.spool, sys; sys.exit('vxmcd.raw' in sys.modules or 'pytest' in sys.modules)"
    environment = dict(os.environ, VXMCD_LIBRARY=os.devnull)
    assert subprocess.run([sys.executable, "-c", code], env=environment).returncode == 0
