# SPDX-License-Identifier: MIT
"""Runs that are larger than memory: lazy arrays, and work by several processes."""
import os
import pickle
import re
import signal
import subprocess
import sys
from pathlib import Path

import numpy as np
import pytest

import vxmcd
from spool_writer import FIRST_TIME, SpoolWriter
from vxmcd.spool import DamagedImageError, MissingImageError, SpoolError, SpoolFormatError, SpoolRun, reduce_images
from vxmcd.spool import checksum, xxh3
from vxmcd.spool.statistics import mean_variance, photon_transfer

LIMIT = 300_000_000  # bytes of memory that a worker may have
ROOT = Path(__file__).parents[2]
EXAMPLE = ROOT / "examples" / "photon_transfer.py"
PAGE = ROOT / "docs" / "large-runs.md"


@pytest.fixture(scope="module")
def client():
    distributed = pytest.importorskip("dask.distributed")
    from dask import config
    # A worker that has too much is killed; it never waits for better times.
    memory = {f"distributed.worker.memory.{what}": False for what in ("target", "spill", "pause")}
    with config.set(memory), distributed.LocalCluster(n_workers=2, threads_per_worker=1, memory_limit=LIMIT,
                                                      host="127.0.0.1", dashboard_address=None) as cluster:
        with distributed.Client(cluster) as client:
            yield client


@pytest.fixture
def dask():
    module = pytest.importorskip("dask")
    with module.config.set(scheduler="synchronous"):
        yield module


def gappy(directory, order=(1, 0, 5, 3), **keywords):
    """A run without images 2 and 4."""
    writer = SpoolWriter(directory, images=6, state="aborted", expected=8, **keywords)
    writer.order = list(order)
    writer.keys["run/ImagesWritten"] = len(order)
    return writer


@pytest.mark.parametrize("encoding, width, padding, metadata, images_per_file", [
    ("Mono16", 7, 0, True, 4), ("Mono16", 7, 0, False, 16), ("Mono8", 64, 5, True, 1), ("Mono32", 1, 0, True, 3),
    ("Mono12Packed", 7, 0, True, 4), ("Mono12Packed", 8, 3, False, 4)])
def test_pixels_are_those_of_the_run(tmp_path, dask, encoding, width, padding, metadata, images_per_file):
    writer = SpoolWriter(tmp_path, 11, width, 5, encoding, padding, images_per_file, metadata)
    run = SpoolRun(writer.write())
    pixels = writer.array()
    for images, verify in ((None, False), (1, True), (3, False), (4, True), (20, False)):
        lazy = run.to_dask(images, verify=verify)
        assert lazy.dtype == pixels.dtype and lazy.shape == pixels.shape
        assert max(lazy.chunks[0]) == min(images or 11, 11)
        np.testing.assert_array_equal(lazy, pixels)
        np.testing.assert_array_equal(lazy[[9, 2, 2]][:, 1:4, ::-1], pixels[[9, 2, 2]][:, 1:4, ::-1])
    assert run.to_dask().name == SpoolRun(tmp_path).to_dask().name != run.to_dask(2).name
    for checksums in (None, run.checksums()[2:9]):
        rows = run.positioned_reader().of_rows(range(1, 4))
        rows.read(range(2, 9), part := rows.new_array(7), checksums)
        np.testing.assert_array_equal(part, pixels[2:9, 1:4])
    for array in (np.asarray(run), np.array(run), np.asarray(run, float)):
        np.testing.assert_array_equal(array, pixels)


def test_places_of_missing_images(tmp_path, dask):
    xarray = pytest.importorskip("xarray")
    writer = gappy(tmp_path)
    run = SpoolRun(writer.write())
    with pytest.raises(MissingImageError, match="image 2, 4"):
        run.to_dask()
    for images in (1, 2, 3, 9):
        for verify in (False, True):
            np.testing.assert_array_equal(run.to_dask(images, verify=verify, missing="skip"), writer.array()[[0, 1, 3, 5]])
            filled = writer.array()
            filled[[2, 4]] = 65535
            np.testing.assert_array_equal(run.to_dask(images, verify=verify, missing=65535), filled)
    for wrong in ("skipp", -1, 65536, 0.5):
        with pytest.raises((ValueError, TypeError), match="missing is|integer"):
            run.to_dask(missing=wrong)
    with pytest.raises(ValueError, match="images_per_chunk is 0"):
        run.to_dask(0, missing="skip")

    array = run.to_xarray(2, missing=0)
    assert isinstance(array, xarray.DataArray) and array.dims == ("t", "y", "x") and array.sizes["t"] == 6
    assert array.number.values.tolist() == [0, 1, 2, 3, 4, 5]
    assert array.tick.values.tolist() == [1000, 2000, -1, 4000, -1, 6000] and array.tick.chunks == ((2, 2, 2),)
    assert np.isnat(array.host_time.values).tolist() == [False, False, True, False, True, False]
    assert array.attrs["exposure_time"] == 0.01 and array.attrs["start_time"].startswith("2026-01-31T12:34:56.789")
    array = run.to_xarray(3, missing="skip")
    assert array.number.values.tolist() == [0, 1, 3, 5] and array.tick.values.tolist() == [1000, 2000, 4000, 6000]
    assert array.host_time.values.astype(np.int64).tolist() == [FIRST_TIME + 1000 * n for n in (0, 1, 3, 5)]


def test_a_run_without_images_is_an_empty_array(tmp_path, dask):
    writer = gappy(tmp_path, order=())
    assert SpoolRun(writer.write()).to_dask().compute().shape == (0, 3, 7)


def test_runs_are_pickled_by_their_path(tmp_path, monkeypatch):
    monkeypatch.chdir(tmp_path)
    Path("run").mkdir()
    writer = SpoolWriter(Path("run"), images=50, images_per_file=100)
    run = SpoolRun(writer.write())
    run.array()
    pickled = pickle.dumps(run)
    monkeypatch.chdir("/")
    run.close()
    np.testing.assert_array_equal(run[49], writer.array()[49])
    assert len(pickled) < 1000
    np.testing.assert_array_equal(pickle.loads(pickled).array(), writer.array())
    monkeypatch.chdir(tmp_path)
    with open("run/spool_0000000000.dat", "r+b") as file:
        file.write(b"\xFF" * 2)
    salvaged = SpoolRun("run", salvage=True)
    with open("run/spool_0000000000.dat", "r+b") as file:
        file.seek(writer.image_size)
        file.write(b"\xFF" * 2)
    again = pickle.loads(pickle.dumps(salvaged))  # what is damaged since then is not looked for again
    assert again.damaged == [0] and again.numbers.tolist() == list(range(1, 50)) and again.is_checked
    assert again.host_times().size == 49


@pytest.mark.parametrize("change", [
    lambda writer: writer.keys.update({"run/StartTime": "2026-01-31T12:34:57.789012345Z"}),
    lambda writer: setattr(writer, "frames", [bytes(len(frame)) for frame in writer.frames])])
def test_another_run_in_the_directory_is_noticed(tmp_path, dask, change):
    writer = SpoolWriter(tmp_path)
    run = SpoolRun(writer.write())
    lazy, pickled = run.to_dask(), pickle.dumps(run)
    change(writer)
    writer.write()
    for use in (lazy.compute, lambda: pickle.loads(pickled), lambda: mean_variance(run)):
        with pytest.raises(SpoolError, match="was replaced or has ended"):
            use()


@pytest.mark.parametrize("has_package", [True, False])
def test_damaged_and_torn_images_are_named(tmp_path, dask, monkeypatch, has_package):
    if has_package:
        pytest.importorskip("xxhash")
    else:
        monkeypatch.setitem(sys.modules, "xxhash", None)
    checksum.checksum_function.cache_clear()
    assert (checksum.checksum_function() is xxh3.xxh3_64) != has_package
    writer = SpoolWriter(tmp_path, images=5, images_per_file=4)
    run = SpoolRun(writer.write(), verify=True)
    with open(tmp_path / "spool_0000000000.dat", "r+b") as file:
        file.seek(3 * writer.image_size - 1)
        file.write(b"\xA5")
    run.to_dask().compute()
    for use in (run.to_dask(verify=True).compute, lambda: mean_variance(run, verify=True)):
        with pytest.raises(DamagedImageError) as caught:
            use()
        assert caught.value.numbers == [2]
    os.truncate(tmp_path / "spool_0000000000.dat", 3 * writer.image_size + 5)
    for verify in (False, True):
        with pytest.raises(SpoolFormatError, match="spool_0000000000.dat: ends before image 3 does"):
            run.to_dask(images_per_chunk=2, verify=verify)[3].compute()
    checksum.checksum_function.cache_clear()


@pytest.mark.parametrize("package, use", [("dask.array", SpoolRun.to_dask), ("xarray", SpoolRun.to_xarray)])
def test_a_package_that_is_missing_is_named(tmp_path, dask, monkeypatch, package, use):
    monkeypatch.setitem(sys.modules, package, None)
    with pytest.raises(ImportError, match=f"on Debian python3-{package.split('.')[0]}"):
        use(SpoolRun(SpoolWriter(tmp_path).write()))


def exact(pixels):
    """Mean and variance with Python's numbers."""
    counts = pixels.astype(object)
    total, squares, images = counts.sum(axis=0), (counts**2).sum(axis=0), len(pixels)
    return (total / images).astype(float), ((images * squares - total**2) / (images * (images - 1))).astype(float)


@pytest.mark.parametrize("encoding", ["Mono8", "Mono12Packed", "Mono16", "Mono32"])
@pytest.mark.parametrize("extreme", [False, True])
def test_mean_and_variance_are_exact(tmp_path, encoding, extreme):
    writer = SpoolWriter(tmp_path, 300, 7, 3, encoding, images_per_file=64)
    pixels = writer.array()
    if extreme:  # nearly all at the largest value, where sums are as large as they get
        pixels[:] = np.iinfo(pixels.dtype).max if encoding != "Mono12Packed" else 4095
        pixels[::7] -= 1
        writer.pixels = pixels.tolist()
        writer.frames = [writer._frame(rows, 0, 1) for rows in writer.pixels]
    run = SpoolRun(writer.write())
    one = mean_variance(run)
    np.testing.assert_allclose(one, exact(pixels), rtol=1e-12)
    for tasks in (2, 7, 300, 1000):
        np.testing.assert_array_equal(mean_variance(run, tasks=tasks), one)


def test_ranges_of_images(tmp_path):
    writer = gappy(tmp_path)
    run = SpoolRun(writer.write())
    for tasks in (None, 1, 3, 10):
        found = reduce_images(run, lambda images: [list(images.numbers)], list.__add__, tasks=tasks)
        assert sum(found, []) == [0, 1, 3, 5] and len(found) == min(tasks or 1, 4)
    found = reduce_images(run, lambda images: [list(images.numbers)], list.__add__, tasks=3, overlap=1)
    assert found == [[0, 1], [1, 3], [3, 5]]
    copies = reduce_images(run, lambda images: [image.copy() for image in images], list.__add__, tasks=2, verify=True)
    np.testing.assert_array_equal(copies, writer.array()[[0, 1, 3, 5]])
    for wrong in ({"tasks": 0}, {"overlap": -1}):
        with pytest.raises(ValueError, match="has to be"):
            reduce_images(run, len, max, **wrong)
    (tmp_path / "none").mkdir()
    empty = SpoolRun(gappy(tmp_path / "none", order=()).write())
    assert reduce_images(empty, len, max, tasks=4) == 0
    with pytest.raises(ValueError, match="without images"):
        mean_variance(empty)


def peak_memory():
    return int(re.search(r"VmHWM:\s+(\d+) kB", Path("/proc/self/status").read_text())[1]) * 1024


def test_workers_with_little_memory(tmp_path, client):
    """Mapped files, sums of whole images, or results that pile up would be more than the limit: workers would be killed."""
    images, side = 32, 2896
    writer = SpoolWriter(tmp_path, images=1, width=1, height=1, metadata=False)
    size = 2 * side**2
    writer.keys.update({"data/ImageSize": size, "image/Width": side, "image/Height": side, "image/Stride": 2 * side,
                        "multiimage/ImagesPerFile": images, "run/ImagesExpected": images, "run/ImagesWritten": images})
    writer.write()
    (tmp_path / "spool_index.dat").write_bytes(b"".join(writer.record(number, b"") for number in range(images)))
    with open(tmp_path / "spool_0000000000.dat", "wb") as file:  # of holes, and so quick
        for image in range(images):
            file.seek(size * (image + 1) - 2)
            file.write(image.to_bytes(2, "little"))
    run = SpoolRun(tmp_path)
    assert images * size > 1.5 * LIMIT
    workers = client.run(os.getpid)
    assert int(run.to_dask().sum().compute()) == sum(range(images))
    mean, variance = mean_variance(run, client, tasks=2)
    assert mean[-1, -1] == mean.sum() == (images - 1) / 2 and mean.shape == run.shape
    assert variance[-1, -1] == variance.sum() == pytest.approx(np.var(range(images), ddof=1))
    assert client.run(os.getpid) == workers
    assert max(client.run(peak_memory).values()) < LIMIT


class DieOnce:
    """Kills the process of the first worker that comes to an image."""

    def __init__(self, mark, number):
        self._mark = mark
        self._number = number

    def __call__(self, images):
        if self._number in images.numbers:
            try:
                os.close(os.open(self._mark, os.O_CREAT | os.O_EXCL))
            except FileExistsError:
                pass
            else:
                os.kill(os.getpid(), signal.SIGKILL)
        return [image.astype(float) / 3 for image in images]


def test_a_worker_that_is_killed_changes_nothing(tmp_path, client):
    writer = SpoolWriter(tmp_path, images=40)
    run = SpoolRun(writer.write())
    mark = tmp_path / "killed"
    there = reduce_images(run, DieOnce(mark, 17), list.__add__, client, tasks=8)
    assert mark.exists()
    np.testing.assert_array_equal(there, writer.array() / 3)


def test_a_worker_says_why_it_cannot_read(tmp_path, client):
    writer = SpoolWriter(tmp_path)
    run = SpoolRun(writer.write())
    with open(tmp_path / "spool_0000000001.dat", "r+b") as file:
        file.write(b"\xA5\x5A")
    with pytest.raises(DamagedImageError, match="image 2"):
        mean_variance(run, client, verify=True)
    (tmp_path / "acquisitionmetadata.ini").unlink()
    with pytest.raises(SpoolError, match=re.escape(f"No such file or directory (on {os.uname().nodename})")):
        mean_variance(run, client)


def test_the_code_of_the_page_runs(tmp_path, client, monkeypatch):
    pytest.importorskip("xarray")
    monkeypatch.chdir(tmp_path)
    Path("run1").mkdir()
    SpoolWriter(Path("run1")).write()
    pieces = re.findall(r"^```python\n(.*?)^```$", PAGE.read_text(), re.M | re.S)
    assert len(pieces) >= 4
    exec("\n".join(pieces), {"client": client})


def test_photon_transfer(tmp_path, simulator, client):
    simulator.configure("[Simulator]\n[Camera0]\nModel = RQ512_LX\nClock = free\nScene = flat\nGain = 3\nReadNoise = 7\n"
                        "[Camera0.SensorWidth]\nValue = 128\n[Camera0.SensorHeight]\nValue = 128\n")
    names = []
    with vxmcd.Camera(0) as camera:
        for exposure in (0.0002, 0.005, 0.02, 0.06):
            camera.exposure = exposure
            names.append(str(tmp_path / f"{exposure}"))
            camera.record(names[-1], 16)
    found = photon_transfer(map(SpoolRun, names))
    assert found.electrons_per_count == pytest.approx(3, rel=0.03)
    assert found.read_noise == pytest.approx(7, rel=0.05)
    assert found.offset == pytest.approx(100, abs=0.5)
    here, there = (subprocess.run([sys.executable, EXAMPLE, *options, *names], capture_output=True, text=True, timeout=60)
                   for options in ([], ["--scheduler", client.scheduler.address]))
    assert f"gain {found.electrons_per_count:.6g} electrons per count, read noise {found.read_noise:.6g}" in here.stdout
    assert there.stdout == here.stdout, there.stderr
    for runs, problem in ((["--window", "120,1,10x10", *names], "beyond the image"), (names[:1], "two levels"),
                          (names[:1] * 2, "two levels"), ([tmp_path], "acquisitionmetadata.ini")):
        result = subprocess.run([sys.executable, EXAMPLE, *runs], capture_output=True, text=True, timeout=60)
        assert result.returncode == 1 and problem in result.stderr and "Traceback" not in result.stderr
