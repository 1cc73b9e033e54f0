# SPDX-License-Identifier: MIT
"""Opens a TIFF file with tifffile, prints the number of its images, and writes the pixels of these (from 1; without any
number all of them) to a file, little-endian. Arguments: FILE PIXELS [NUMBER...]"""
import sys

import tifffile

path, output, *numbers = sys.argv[1:]
images = tifffile.memmap(path, mode="r")
images = images.reshape(-1, *images.shape[-2:])  # a single image has no axis of images
print(len(images))
with open(output, "wb") as file:
    for number in map(int, numbers or range(1, len(images) + 1)):
        file.write(images[number - 1].tobytes())
