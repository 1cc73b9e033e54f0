# SPDX-License-Identifier: MIT
"""The names that the library exports, api/exported_names.txt: every function under its plain name and, where old programs
link to one, its decorated name; and the objects and classes of api/exported_objects.txt, which no header declares."""
from interface import public_header as header

PATH = "api/exported_names.txt"


def text():
    objects = (header.ROOT / "api" / "exported_objects.txt").read_text().split("\n")
    names = header.symbols() | {line for line in objects if line and not line.startswith("#")}
    return "\n".join(sorted(names)) + "\n"
