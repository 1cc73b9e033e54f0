# SPDX-License-Identifier: MIT
"""The table of entry points, api/entry_points.def: every function of the public header that returns a result code, but those
that are declared with other arguments inside the library."""
import re
import textwrap

from interface.public_header import HEADER, ROOT

PATH = "api/entry_points.def"
WIDTH = 115
DECLARATION = re.compile(r"^VXMCD_(API|DECORATED)\s+unsigned int\s+(\w+)\(([^;]*)\);", re.MULTILINE)
OUTSIDE_ONLY = re.compile(r"(?s)#ifndef VXMCD_BUILDING\n.*?#endif\n")
NO_CODES = re.compile(r"(?s)@defgroup profiles.*?@}")  # they do not return result codes
COMMENT = """/* SPDX-License-Identifier: MIT */
/* Generated from include/vxmcd.h by scripts/generate-interface: do not edit. */
/* clang-format off */
/* Every function that returns a result code, but those of fixed_results.def: ENTRY_POINT(name, parameters, arguments), and
   ENTRY_POINT_DECORATED where the library exports it under a name that encodes its argument types and under the plain
   name. Define the macros before including this file; they are undefined at its end. */
"""


def row(match):
    kind, name, parameters = match.groups()
    parameters = re.sub(r"\s+", " ", parameters)
    names = [] if parameters == "void" else [re.search(r"(\w+)$", part)[1] for part in parameters.split(",")]
    decorated = kind == "DECORATED" or "std::" in parameters  # what only C++ can declare has C++ linkage
    macro = "ENTRY_POINT_DECORATED" if decorated else "ENTRY_POINT"
    return textwrap.fill(f"{macro}({name}, ({parameters}), ({', '.join(names)}))", WIDTH, subsequent_indent="  ")


def text():
    header = NO_CODES.sub("", OUTSIDE_ONLY.sub("", (ROOT / "include" / HEADER).read_text()))
    rows = [row(match) for match in DECLARATION.finditer(header)]
    return "\n".join([COMMENT, *rows, "", "#undef ENTRY_POINT", "#undef ENTRY_POINT_DECORATED", ""])
