# SPDX-License-Identifier: MIT
"""The table of the functions of the feature library that the library calls, api/core_calls.def."""
import re
import textwrap

from interface.public_header import ROOT
from interface.signatures import signature

PATH = "features/core_calls.def"
HEADER = "include/vxcore.h"
CALLERS = "features"
WIDTH = 115
DECLARATION = re.compile(r"^VXCORE_API int (VX_\w+)\(([^;]*)\);", re.MULTILINE)
COMMENT = """/* SPDX-License-Identifier: MIT */
/* Generated from include/vxcore.h and the calls in features/ by scripts/generate-interface: do not edit. */
/* clang-format off */
/* Every function of the feature library that the library calls: CORE_CALL(name, parameters, arguments, signature). Define
   the macro before including this file; it is undefined at its end. */
"""


def row(match):
    name, parameters = match.groups()
    parameters = re.sub(r"\s+", " ", parameters)
    names = [] if parameters == "void" else [re.search(r"(\w+)$", part)[1] for part in parameters.split(",")]
    line = textwrap.fill(f"CORE_CALL({name}, ({parameters}), ({', '.join(names)}),", WIDTH, subsequent_indent="  ")
    return f'{line}\n  "{signature("status", name, parameters)}")'


def text():
    sources = "".join(file.read_text() for file in sorted((ROOT / CALLERS).glob("*.*")) if file.suffix in (".h", ".cpp"))
    called = set(re.findall(r"\b(VX_\w+)\(", sources))
    rows = [row(match) for match in DECLARATION.finditer((ROOT / HEADER).read_text()) if match[1] in called]
    return "\n".join([COMMENT, *rows, "", "#undef CORE_CALL", ""])
