#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Measures gain and read noise of a camera from recorded runs of evenly lit images, one run for each exposure time."""
import argparse
import contextlib
import re
import sys

from vxmcd.spool import SpoolError, SpoolRun
from vxmcd.spool.statistics import photon_transfer


def window(text):
    """LEFT,TOP,WIDTHxHEIGHT of the image, from 1, as rows and columns."""
    numbers = re.fullmatch(r"(\d+),(\d+),(\d+)x(\d+)", text)
    if not numbers or "0" in numbers.groups():
        raise argparse.ArgumentTypeError(f"'{text}' is not LEFT,TOP,WIDTHxHEIGHT with numbers from 1")
    left, top, width, height = map(int, numbers.groups())
    return slice(top - 1, top - 1 + height), slice(left - 1, left - 1 + width)


@contextlib.contextmanager
def workers(options):
    """A Dask client, or None to work in this process."""
    if options.scheduler is None and options.local is None:
        yield None
        return
    from dask.distributed import Client, LocalCluster
    with contextlib.ExitStack() as stack:
        where = options.scheduler
        if where is None:
            where = stack.enter_context(LocalCluster(n_workers=options.local, threads_per_worker=1, host="127.0.0.1",
                                                     dashboard_address=None))
        yield stack.enter_context(Client(where))


def main():
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("runs", nargs="+", metavar="RUN", help="directory of a recorded run")
    parser.add_argument("--window", type=window, metavar="LEFT,TOP,WIDTHxHEIGHT", help="part of the image to look at")
    parser.add_argument("--offset", type=float, metavar="COUNTS", help="counts without light, if they are known")
    parser.add_argument("--verify", action="store_true", help="compare images with their checksums")
    where = parser.add_mutually_exclusive_group()
    where.add_argument("--scheduler", metavar="ADDRESS", help="of Dask, whose workers do the work, such as tcp://host:8786")
    where.add_argument("--local", type=int, metavar="N", help="N processes on this machine do the work")
    options = parser.parse_args()
    if options.local is not None and options.local < 1:
        parser.error("--local: at least one process is needed")
    try:
        with workers(options) as client:
            result = photon_transfer(map(SpoolRun, options.runs), options.window, options.offset, client,
                                     verify=options.verify)
    except (SpoolError, ImportError, OSError, ValueError) as error:
        sys.exit(f"photon_transfer: {error}")
    for run, exposure, mean, variance in zip(options.runs, result.exposures, result.means, result.variances):
        print(f"{run}: {exposure:.6g} s, mean {mean:.6g}, variance {variance:.6g}")
    print(f"gain {result.electrons_per_count:.6g} electrons per count, read noise {result.read_noise:.6g} electrons, "
          f"offset {result.offset:.6g} counts")


if __name__ == "__main__":
    main()
