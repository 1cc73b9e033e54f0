# SPDX-License-Identifier: MIT
"""The Python package's table of the format of a recorded run, python/vxmcd/spool/_format.py."""
from interface import run_format

PATH = "python/vxmcd/spool/_format.py"


def field_type(field):
    return "<i8" if field.signed else "<u8"


def pixel_type(encoding):
    kind = f"{'i' if encoding.signed else 'u'}{encoding.bits // 8}"
    return kind if encoding.bits == 8 else "<" + kind


def text():
    f = run_format.read()
    assert [field.offset for field in f.fields] == list(range(0, f.record_bytes, 8)), "the table says nothing of gaps"
    packed = [encoding.name for encoding in f.encodings if encoding.bytes == 0]
    lines = [
        "# SPDX-License-Identifier: MIT",
        f"# Generated from {run_format.HEADER} by scripts/generate-interface: do not edit.",
        '"""The format of a recorded run."""',
        f"VERSION = {f.version}",
        f'DESCRIPTION_NAME = "{f.description_name}"',
        f'INDEX_NAME = "{f.index_name}"',
        f'IMAGE_FILE_NAME = "{f.stem}_{{:0{f.digits}d}}{f.extension}"',
        f'IMAGE_FILE_PATTERN = r"{f.stem}_(\\d{{{f.digits}}})\\{f.extension}"',
        "",
        "# A record of the index: (name, type) of each field, without gaps; the last one is the checksum of those before it.",
        "INDEX_RECORD = [",
        *(f'    ("{field.name}", "{field_type(field)}"),' for field in f.fields),
        "]",
        "",
        "STATES = (" + ", ".join(f'"{state.text}"' for state in f.states) + ")",
        f'SWITCHES = {{"{getattr(f, "true")}": True, "{getattr(f, "false")}": False}}',
        "",
        "# Key of the description: its section.",
        "SECTIONS = {",
        *(f'    "{key.name}": "{key.section}",' for key in f.keys),
        "}",
        "",
        "# Encoding: NumPy's type of its pixels.",
        "PIXEL_TYPES = {",
        *(f'    "{encoding.name}": "{pixel_type(encoding)}",' for encoding in f.encodings),
        "}",
        f'PACKED = "{packed[0]}"',
        "",
        f"END_CHUNK = {f.end_chunk}",
        f"TIMESTAMP_CHUNK = {f.timestamp_chunk}",
        f"CHUNK_FIELD_BYTES = {f.chunk_field_bytes}",
    ]
    return "\n".join(lines) + "\n"
