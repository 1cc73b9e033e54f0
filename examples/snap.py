#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Takes images with a camera and saves them as a NumPy file."""
import argparse
import sys

import numpy as np

import vxmcd


def main():
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("output", help="the file, *.npy")
    parser.add_argument("--camera", type=int, default=0, metavar="N", help="number of the camera")
    parser.add_argument("--exposure", type=float, metavar="S", help="exposure time in s")
    parser.add_argument("--images", type=int, default=1, metavar="N")
    options = parser.parse_args()
    try:
        with vxmcd.Camera(options.camera) as camera:
            if options.exposure is not None:
                camera.exposure = options.exposure
            images = camera.grab(options.images, timeout=60)
            print(f"{camera.model}, {camera.exposure:g} s, {camera.temperature:.1f} C")
    except (vxmcd.VxmcdError, vxmcd.NoImageError, ValueError) as error:
        sys.exit(f"snap: {error}")
    np.save(options.output, images)
    for number, image in enumerate(images, 1):
        print(f"image {number}: {image.shape[1]}x{image.shape[0]}, mean {image.mean():.1f}, maximum {image.max()}")


if __name__ == "__main__":
    main()
