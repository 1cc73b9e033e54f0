# SPDX-License-Identifier: MIT
"""The table of the feature library's codes, vxcore/result_codes.def, from the comments of include/vxcore.h."""
import re

from interface.public_header import ROOT

PATH = "vxcore/result_codes.def"
HEADER = "vxcore.h"
CODE = re.compile(r"#define (VX_ERR_\w+)[\s\\]+\d+\s*/\*\*<(.*?)\*/", re.DOTALL)
COMMENT = """/* SPDX-License-Identifier: MIT */
/* Generated from include/vxcore.h by scripts/generate-interface: do not edit. */
/* clang-format off */
/* Every code of the feature library but VX_SUCCESS: VX_CODE(name, meaning). Define the macro before including this file; it
   is undefined at its end. */
"""


def row(match):
    meaning = " ".join(match[2].split()).replace("#", "").replace('"', '\\"')
    return f'VX_CODE({match[1]}, "{meaning}")'


def text():
    header = (ROOT / "include" / HEADER).read_text()
    rows = [row(match) for match in CODE.finditer(header)]
    assert len(rows) == header.count("#define VX_ERR_"), f"{HEADER} has a code without a meaning"
    return "\n".join([COMMENT, *rows, "", "#undef VX_CODE", ""])
