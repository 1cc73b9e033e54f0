# SPDX-License-Identifier: MIT
# Generated from runs/run_format.h by scripts/generate-interface: do not edit.
"""The format of a recorded run."""
VERSION = 1
DESCRIPTION_NAME = "acquisitionmetadata.ini"
INDEX_NAME = "spool_index.dat"
IMAGE_FILE_NAME = "spool_{:010d}.dat"
IMAGE_FILE_PATTERN = r"spool_(\d{10})\.dat"

# A record of the index: (name, type) of each field, without gaps; the last one is the checksum of those before it.
INDEX_RECORD = [
    ("number", "<u8"),
    ("checksum", "<u8"),
    ("host_time", "<i8"),
    ("record_checksum", "<u8"),
]

STATES = ("recording", "complete", "aborted", "failed")
SWITCHES = {"true": True, "false": False}

# Key of the description: its section.
SECTIONS = {
    "ImagesPerFile": "multiimage",
    "ImageSize": "data",
    "Format": "run",
    "State": "run",
    "Completed": "run",
    "ImagesExpected": "run",
    "ImagesWritten": "run",
    "Method": "run",
    "Library": "run",
    "StartTime": "run",
    "FirstFrameTime": "run",
    "FirstFrameTick": "run",
    "TimestampFrequency": "run",
    "Failure": "run",
    "Width": "image",
    "Height": "image",
    "Stride": "image",
    "PixelEncoding": "image",
    "Metadata": "image",
    "Left": "image",
    "Top": "image",
    "HBin": "image",
    "VBin": "image",
    "Binning": "image",
    "Layout": "image",
    "ExposureTime": "acquisition",
    "FrameRate": "acquisition",
    "AccumulateCount": "acquisition",
    "TriggerMode": "acquisition",
    "ReadoutTime": "acquisition",
    "PixelReadoutRate": "acquisition",
    "PreAmpGain": "acquisition",
    "SensorCooling": "acquisition",
    "SensorTemperature": "acquisition",
    "TargetSensorTemperature": "acquisition",
    "Model": "camera",
    "SerialNumber": "camera",
    "PixelWidth": "camera",
    "PixelHeight": "camera",
}

# Encoding: NumPy's type of its pixels.
PIXEL_TYPES = {
    "Mono8": "u1",
    "Mono12": "<u2",
    "Mono12Packed": "<u2",
    "Mono16": "<u2",
    "Mono32": "<i4",
}
PACKED = "Mono12Packed"

END_CHUNK = 0
TIMESTAMP_CHUNK = 1
CHUNK_FIELD_BYTES = 4
