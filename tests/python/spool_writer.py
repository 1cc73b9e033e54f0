# SPDX-License-Identifier: MIT
"""Writes directories of spooled runs, byte by byte and independently of the reader: checksums come from libxxhash, pixels
are packed by plain loops."""
import ctypes
import ctypes.util
import struct

import numpy as np

_xxhash = ctypes.CDLL(ctypes.util.find_library("xxhash") or "libxxhash.so.0")
_xxhash.XXH3_64bits.restype = ctypes.c_uint64
_xxhash.XXH3_64bits.argtypes = (ctypes.c_char_p, ctypes.c_size_t)

PIXEL_FORMATS = {"Mono8": "B", "Mono12": "H", "Mono16": "H", "Mono32": "i"}
PIXEL_RANGES = {"Mono8": (1, 2 ** 8), "Mono12": (1, 2 ** 12), "Mono12Packed": (1, 2 ** 12), "Mono16": (1, 2 ** 16),
                "Mono32": (-2 ** 31, 2 ** 31)}
FIRST_TIME = 1_769_862_896_000_000_000


def checksum(data):
    return _xxhash.XXH3_64bits(bytes(data), len(data))


def packed_row(row):
    data = bytearray()
    for i in range(0, len(row) - 1, 2):
        data += bytes([row[i] >> 4, (row[i + 1] & 15) << 4 | (row[i] & 15), row[i + 1] >> 4])
    if len(row) % 2:
        data += bytes([row[-1] >> 4, row[-1] & 15])
    return bytes(data)


def row_data(row, encoding):
    if encoding == "Mono12Packed":
        return packed_row(row)
    return struct.pack(f"<{len(row)}{PIXEL_FORMATS[encoding]}", *row)


def chunk(identifier, data):
    return data + struct.pack("<II", identifier, len(data) + 4)


class SpoolWriter:
    """One run. Change `keys` (text for "section/key", None leaves one out) and the files before or after write()."""

    def __init__(self, directory, images=5, width=7, height=3, encoding="Mono16", padding=0, images_per_file=2,
                 metadata=True, expected=None, state="complete", seed=1):
        self.directory = directory
        self.encoding = encoding
        random = np.random.default_rng(seed)
        self.pixels = random.integers(*PIXEL_RANGES[encoding], (images, height, width)).tolist()
        self.images_per_file = images_per_file
        self.frames = [self._frame(rows, padding, 1000 * (n + 1) if metadata else None)
                       for n, rows in enumerate(self.pixels)]
        stride = len(row_data(self.pixels[0][0], encoding)) + padding
        self.image_size = len(self.frames[0])
        self.order = list(range(images))
        self.keys = {
            "multiimage/ImagesPerFile": images_per_file, "data/ImageSize": self.image_size, "run/Format": 1,
            "run/State": state, "run/Completed": "true" if state == "complete" else "false",
            "run/ImagesExpected": images if expected is None else expected,
            "run/ImagesWritten": 0 if state == "recording" else images, "run/Method": 3,
            "run/Library": "2.94.32007.0", "run/StartTime": "2026-01-31T12:34:56.789012345Z",
            "run/TimestampFrequency": 100000000, "image/Width": width, "image/Height": height, "image/Stride": stride,
            "image/PixelEncoding": encoding, "image/Metadata": "true" if metadata else "false", "image/Left": 3,
            "acquisition/ExposureTime": "0.010000000000000000", "acquisition/TriggerMode": "External Start",
            "camera/Model": "TRELLIS CMOS", "camera/SerialNumber": "VSC-00101"}

    def _frame(self, rows, padding, ticks):
        pixels = b"".join(row_data(row, self.encoding) + b"\xEE" * padding for row in rows)
        if ticks is None:
            return pixels
        return pixels + b"\xDD" * 5 + chunk(0, b"") + chunk(7, struct.pack("<IIII", 1, 2, 3, 4)) + chunk(
            1, struct.pack("<q", ticks))

    def array(self):
        kind = {"Mono8": "u1", "Mono32": "<i4"}.get(self.encoding, "<u2")
        return np.array(self.pixels, kind)

    def record(self, number, frame=None):
        data = struct.pack("<QQq", number, checksum(self.frames[number] if frame is None else frame),
                           FIRST_TIME + 1000 * number)
        return data + struct.pack("<Q", checksum(data))

    def write(self):
        self.write_description()
        (self.directory / "spool_index.dat").write_bytes(b"".join(self.record(number) for number in self.order))
        for file in range((len(self.frames) - 1) // self.images_per_file + 1):
            data = bytearray(self.images_per_file * self.image_size)
            for place in range(self.images_per_file):
                number = file * self.images_per_file + place
                if number in self.order:
                    data[place * self.image_size:(place + 1) * self.image_size] = self.frames[number]
            (self.directory / f"spool_{file:010d}.dat").write_bytes(data)
        return self.directory

    def write_description(self):
        sections = {}
        for name, value in self.keys.items():
            section, key = name.split("/")
            if value is not None:
                sections.setdefault(section, []).append(f"{key} = {value}\n")
        text = "".join(f"[{section}]\n{''.join(lines)}\n" for section, lines in sections.items())
        (self.directory / "acquisitionmetadata.ini").write_text(text, "utf-8-sig")
