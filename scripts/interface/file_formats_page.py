# SPDX-License-Identifier: MIT
"""The tables of docs/file-formats.md that say what a recorded run looks like. The rest of the page is written by hand."""
import re

from interface import run_format
from interface.public_header import ROOT

PATH = "docs/file-formats.md"
BEGIN = f"<!-- Generated from {run_format.HEADER} by scripts/generate-interface: {{}}. Do not edit. -->"
END = "<!-- End of what is generated. -->"


def encodings(f):
    return ["| `PixelEncoding` | a pixel |", "|---|---|",
            *(f"| `{encoding.name}` | {encoding.meaning} |" for encoding in f.encodings)]


def index_record(f):
    return ["| byte | type | |", "|---|---|---|",
            *(f"| {field.offset} | {'signed' if field.signed else 'unsigned'}, 64 bits | {field.meaning} |"
              for field in f.fields)]


def keys(f):
    rows, section = [], None
    for key in f.keys:
        rows.append(f"| {f'`[{key.section}]` ' if key.section != section else ''}`{key.name}` | {key.meaning} |")
        section = key.section
    return ["| section and key | value |", "|---|---|", *rows]


def text():
    f = run_format.read()
    page = (ROOT / PATH).read_text()
    for name, table in (("encodings", encodings), ("index record", index_record), ("keys", keys)):
        begin = BEGIN.format(name)
        part = re.compile(re.escape(begin) + ".*?" + re.escape(END), re.DOTALL)
        new = "\n".join([begin, *table(f), END])
        page, count = part.subn(lambda _: new, page)
        assert count == 1, f"{PATH} has {count} parts for {name}"
    return page
