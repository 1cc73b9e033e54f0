#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Takes images with two cameras at the same time, and prints the brightness of both, image by image."""
import argparse
import sys

import vxmcd


def main():
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("--cameras", type=int, nargs=2, default=[0, 1], metavar="N", help="numbers of the cameras")
    parser.add_argument("--exposure", type=float, default=0.01, metavar="S", help="exposure time in s")
    parser.add_argument("--images", type=int, default=10, metavar="N")
    options = parser.parse_args()
    first, second = options.cameras
    try:
        with vxmcd.Camera(first) as left, vxmcd.Camera(second) as right:
            left.exposure = right.exposure = options.exposure
            left.frame_rate = right.frame_rate = 0.9 * min(left.frame_rate, right.frame_rate)
            with vxmcd.start_together([left, right], options.images, timeout=60) as together:
                spread = together.spread(timeout=60)
                print(f"started {1e3 * spread.seconds:.3f} ms apart, +-{1e3 * spread.uncertainty:.3f} ms")
                for frame, other in zip(*together.streams):
                    print(f"image {frame.number}: mean {frame.image.mean():.1f} and {other.image.mean():.1f}")
    except (vxmcd.VxmcdError, vxmcd.CameraStateError, vxmcd.FramesLostError, vxmcd.NoImageError, ValueError) as error:
        sys.exit(f"two_cameras: {error}")


if __name__ == "__main__":
    main()
