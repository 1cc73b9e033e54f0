#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Measures how fast a recorded run becomes OME-Zarr and HDF5: `vxmcd convert` against zarr-python and h5py, which write the same
chunks with the same codec, in turns. Both read the run from the page cache when there is room; the tool compares each image
with its checksum, and so does Python in the rows "checked". With --ratios it says by how much the codecs shorten images of the
simulated scenes instead.

Without RUN it records one with a simulated camera (1.3 GB, in a directory that is removed). Each row is the median of the
rounds. Ratios are those within a round: machines change their speed. What was written is compared pixel by pixel once."""
import argparse
import contextlib
import os
import platform
import shutil
import statistics
import subprocess
import sys
import tempfile
import time
from pathlib import Path

import numpy as np

from large_runs import recorded
from vxmcd.spool import SpoolRun

CHUNK_BYTES = 8 << 20


def images_in_chunk(run):
    return min(-(-CHUNK_BYTES // (run.shape[0] * run.shape[1] * run.dtype.itemsize)), len(run))


def by_zarr(run, output, codec, checks):
    import numcodecs
    import zarr
    chunk = images_in_chunk(run)
    shuffle = numcodecs.Blosc.NOSHUFFLE if run.dtype.itemsize == 1 else {
        "zstd": numcodecs.Blosc.SHUFFLE, "lz4": numcodecs.Blosc.BITSHUFFLE}.get(codec)
    array = zarr.open(output, "w", shape=(len(run), *run.shape), chunks=(chunk, *run.shape), dtype=run.dtype, fill_value=None,
                      dimension_separator="/", compressor=codec != "none" and numcodecs.Blosc(codec, 1, shuffle) or None)
    for first in range(0, len(run), chunk):
        array[first:first + chunk] = images_of(run, first, chunk, checks)


def by_h5py(run, output, codec, checks):
    import h5py
    options = {"shuffle": True, "compression": "gzip", "compression_opts": 1} if codec == "gzip" else {}
    with h5py.File(output, "w") as file:
        array = file.create_dataset("data", (len(run), *run.shape), run.dtype, chunks=(1, *run.shape), **options)
        for number in range(len(run)):
            array[number] = images_of(run, number, 1, checks)[0]


def images_of(run, first, count, checks):
    numbers = range(first, min(first + count, len(run)))
    if checks and not all(map(run.verify, numbers)):
        raise SystemExit("the run is damaged")
    return run[first][None] if len(numbers) == 1 else run[numbers.start:numbers.stop]


def measured(command, **keywords):
    """Elapsed and processor time of a process in s."""
    begin = time.perf_counter()
    process = subprocess.Popen(list(map(str, command)), **keywords)
    _, status, usage = os.wait4(process.pid, 0)
    if status != 0:
        raise SystemExit(f"{command} has failed")
    return time.perf_counter() - begin, usage.ru_utime + usage.ru_stime


def written_by_python(library, path, output, codec, checks):
    """The same in a process of Python: without the time that it takes to start and to load its modules."""
    result = subprocess.run([sys.executable, __file__, "--write", library, path, output, codec, str(int(checks))], check=True,
                            capture_output=True, text=True)
    return tuple(map(float, result.stdout.split()))


def write(library, path, output, codec, checks):
    run = SpoolRun(path)
    function = {"zarr": by_zarr, "h5py": by_h5py}[library]
    __import__(library)
    begin, processor = time.perf_counter(), time.process_time()
    function(run, output, codec, checks == "1")
    print(time.perf_counter() - begin, time.process_time() - processor)


def pixels_in(output):
    if output.suffix == ".zarr":
        import zarr
        return zarr.open(str(output), "r")["0"]
    import h5py
    return h5py.File(output, "r")["entry/data/data"]


def shortened(tool, directory, scene, images):
    """Bytes of pixels by bytes of the chunks, or of the file, for each codec."""
    config = directory / "camera.ini"
    config.write_text(f"[Simulator]\nCameras = 1\n[Camera0]\nModel = TRELLIS CMOS\nScene = {scene}\n")
    path = directory / scene.replace(" ", "-")
    subprocess.run([tool, "acquire", "--frames", str(images), "--exposure", "0.01", "--spool", path, "-q"], check=True,
                   env={**os.environ, "VXCORE_CONFIG": str(config)})
    pixels = images * SpoolRun(path)[0].nbytes
    for suffix, codec in (("zarr", "zstd"), ("zarr", "zstd:3"), ("zarr", "lz4"), ("h5", "gzip")):
        output = directory / f"{path.name}.{suffix}"
        subprocess.run([tool, "convert", path, "-o", output, "-q", "--compression", codec], check=True)
        files = (output / "0").rglob("*") if output.is_dir() else [output]
        yield codec, pixels / sum(file.stat().st_size for file in files if file.is_file() and not file.name.startswith("."))
        remove(output)


def remove(path):
    shutil.rmtree(path) if path.is_dir() else path.unlink(missing_ok=True)


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("run", nargs="?", help="directory of a recorded run")
    parser.add_argument("--images", type=int, default=160, metavar="N", help="length of the run that is recorded")
    parser.add_argument("--rounds", type=int, default=5, metavar="N")
    parser.add_argument("--directory", help="where to write; the default is that for temporary files")
    parser.add_argument("--tool", default="vxmcd", help="the program")
    parser.add_argument("--ratios", action="store_true", help="what compression saves, instead of times")
    parser.add_argument("--write", nargs=5, help=argparse.SUPPRESS)
    options = parser.parse_args()
    if options.write:
        return write(*options.write)
    with contextlib.ExitStack() as stack:
        directory = Path(stack.enter_context(tempfile.TemporaryDirectory(dir=options.directory)))
        if options.ratios:
            for scene in ("star field", "dark", "beads", "flat"):
                print(f"{scene:10}", *(f"{codec} {ratio:.2f} " for codec, ratio in shortened(options.tool, directory, scene, 8)))
            return None
        run = SpoolRun(options.run) if options.run else recorded(directory, options.images)
        size = run.numbers.size * run.shape[0] * run.shape[1] * run.dtype.itemsize / 1e6
        print(f"{platform.machine()}, {os.cpu_count()} processors, load {os.getloadavg()[0]:.1f}; Python "
              f"{platform.python_version()}, NumPy {np.__version__}; {run}, {size / 1e3:.2f} GB of pixels")
        for library, codecs in (("zarr", {"zstd": "zstd", "lz4": "lz4", "none": "none"}), ("h5py", {"none": "none", "gzip": "gzip"})):
            output = directory / f"run.{'zarr' if library == 'zarr' else 'h5'}"
            for codec in codecs:
                command = [options.tool, "convert", run.path, "-o", output, "-q", "--compression", codec]
                ways = {"the tool": lambda: measured(command),
                        library: lambda: written_by_python(library, run.path, output, codec, False),
                        f"{library}, checked": lambda: written_by_python(library, run.path, output, codec, True)}
                times = {name: [] for name in ways}
                for turn in range(options.rounds):
                    for name, way in ways.items():
                        times[name].append(way())
                        if name == "the tool" and turn == 0:
                            array = pixels_in(output)
                            for number in range(len(run)):
                                np.testing.assert_array_equal(array[number], run[number])
                            getattr(getattr(array, "file", None), "close", lambda: None)()
                        remove(output)
                for name, rounds in times.items():
                    elapsed, processor = (statistics.median(column) for column in zip(*rounds))
                    ratios = [statistics.median(own[column] / tool[column] for own, tool in zip(rounds, times["the tool"]))
                              for column in (0, 1)]
                    print(f"{output.suffix[1:]:5} {codec:5} {name:14} {size / elapsed:6.0f} MB/s elapsed ({ratios[0]:.2f} times the "
                          f"time), {size / processor:6.0f} MB/s of a processor ({ratios[1]:.2f} times)", flush=True)
        print(f"load {os.getloadavg()[0]:.1f}")


if __name__ == "__main__":
    main()
