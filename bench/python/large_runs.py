#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Measures work on a recorded run in one process and on the workers of Dask on this machine, in turns: sums and squares of
each pixel, and a median and a Fourier transform of each image.

Without RUN it records one with a simulated camera (1.3 GB, in a directory that is removed), which stays in the page cache
when there is room. Each row is the median of the rounds. Ratios are those within a round: machines change their speed."""
import argparse
import contextlib
import os
import platform
import statistics
import tempfile
import time
from pathlib import Path

import numpy as np

from vxmcd.spool import SpoolRun, reduce_images
from vxmcd.spool.statistics import mean_variance


def recorded(directory, images):
    os.environ["VXCORE_CONFIG"] = str(Path(directory) / "camera.ini")
    Path(os.environ["VXCORE_CONFIG"]).write_text("[Simulator]\n[Camera0]\nModel = TRELLIS CMOS\nClock = free\nScene = flat\n")
    import vxmcd
    with vxmcd.Camera() as camera:
        return camera.record(Path(directory) / "run", images)


def plain_loop(run):
    """What one would write without this package: read each image into one array, add it and its square up."""
    description = run.description
    image = np.empty(run.shape, run.dtype)
    square = np.empty(run.shape, np.uint32)
    total, squares = np.zeros(run.shape, np.uint64), np.zeros(run.shape, np.uint64)
    for first in range(0, len(run), description.images_per_file):
        with open(run.path / f"spool_{first // description.images_per_file:010d}.dat", "rb") as file:
            for number in range(min(description.images_per_file, len(run) - first)):
                os.preadv(file.fileno(), [image], number * description.image_size)
                total += image
                np.multiply(image, image, out=square, dtype=np.uint32)
                squares += square
    mean = total / len(run)
    return mean, (squares - total * mean) / (len(run) - 1)


def lazy_mean(run, client):
    lazy = run.to_dask()
    mean, variance = lazy.mean(axis=0), lazy.var(axis=0, ddof=1)
    return client.gather(client.compute([mean, variance]))


def median_and_spectrum(images):
    return sum(float(np.median(image)) + float(np.abs(np.fft.rfft2(image)).max()) for image in images)


def add(one, other):
    return one + other


class FirstImages:
    """The first images of a run, for work that takes long."""

    def __init__(self, run, images):
        self._run = run
        self.numbers = run.numbers[:images]

    def __getattr__(self, name):
        return getattr(self._run, name)


def measured(function, client):
    """Elapsed and processor time in s, of this process and of the workers."""
    def workers():
        return sum(client.run(time.process_time).values())
    there = workers()
    begin, here = time.perf_counter(), time.process_time()
    function()
    elapsed = time.perf_counter() - begin
    return elapsed, time.process_time() - here + workers() - there


def peak_memory():
    lines = Path("/proc/self/status").read_text().splitlines()
    return next(int(line.split()[1]) / 1024 for line in lines if line.startswith("VmHWM"))


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("run", nargs="?", help="directory of a recorded run")
    parser.add_argument("--images", type=int, default=160, metavar="N", help="length of the run that is recorded")
    parser.add_argument("--rounds", type=int, default=5, metavar="N")
    parser.add_argument("--few", type=int, default=48, metavar="N", help="images whose median and Fourier transform are taken")
    parser.add_argument("--workers", type=int, default=2, metavar="N")
    parser.add_argument("--directory", help="where to record; the default is that for temporary files")
    parser.add_argument("--lazy", action="store_true", help="also mean and variance of the lazy array, which take long")
    options = parser.parse_args()
    from dask.distributed import Client, LocalCluster
    with contextlib.ExitStack() as stack:
        if options.run is None:
            directory = stack.enter_context(tempfile.TemporaryDirectory(dir=options.directory))
            run = recorded(directory, options.images)
        else:
            run = SpoolRun(options.run)
        cluster = stack.enter_context(LocalCluster(n_workers=options.workers, threads_per_worker=1, host="127.0.0.1",
                                                   dashboard_address=None))
        client = stack.enter_context(Client(cluster))
        size = run.numbers.size * run.description.image_size / 1e9
        print(f"{platform.machine()}, {os.cpu_count()} processors, {options.workers} workers, load {os.getloadavg()[0]:.1f}; "
              f"Python {platform.python_version()}, NumPy {np.__version__}; {run}, {size:.2f} GB")
        few = FirstImages(run, options.few)
        rows = {
            "plain loop": lambda: plain_loop(run),
            "mean_variance": lambda: mean_variance(run),
            "mean_variance, workers": lambda: mean_variance(run, client),
            f"median and FFT of {len(few.numbers)} images": lambda: reduce_images(few, median_and_spectrum, add),
            "the same, workers": lambda: reduce_images(few, median_and_spectrum, add, client),
        }
        if options.lazy:
            rows["mean and var of to_dask(), workers"] = lambda: lazy_mean(run, client)
        expected = mean_variance(run)
        for found in (mean_variance(run, client), plain_loop(run)):
            np.testing.assert_allclose(found, expected, rtol=1e-6)
        times = {name: [] for name in rows}
        for _ in range(options.rounds):
            for name, function in rows.items():
                times[name].append(measured(function, client))
        for name, rounds in times.items():
            base = times["plain loop" if name.startswith(("plain", "mean")) else list(rows)[3]]
            elapsed, processor = (statistics.median(column) for column in zip(*rounds))
            ratios = [[own[column] / other[column] for own, other in zip(rounds, base)] for column in (0, 1)]
            print(f"{name:36} {elapsed:6.2f} s elapsed ({statistics.median(ratios[0]):.2f} times), "
                  f"{processor:6.2f} s of processors ({statistics.median(ratios[1]):.2f} times)")
        print(f"most memory of a worker: {max(client.run(peak_memory).values()):.0f} MiB; load {os.getloadavg()[0]:.1f}")


if __name__ == "__main__":
    main()
