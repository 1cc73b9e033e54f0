# SPDX-License-Identifier: MIT
"""The table of entry points, api/entry_points.def: every function of the public header but those of fixed_results.def."""
import re
import textwrap

from interface.public_header import HEADER, ROOT
from interface.signatures import RESULTS, signature

PATH = "api/entry_points.def"
WIDTH = 115
DECLARATION = re.compile(r"^VXMCD_(API|DECORATED)\s+((?:const |struct )?[\w ]+?\*?)\s*(\w+)\(([^;]*)\);", re.MULTILINE)
OUTSIDE_ONLY = re.compile(r"(?s)#ifndef VXMCD_BUILDING\n.*?#endif\n")
NO_CODES = re.compile(r"(?s)@defgroup profiles.*?@}")  # they do not return result codes
AT_LOAD = ("MyInitialise", "MyFinalise", "my_init", "my_fini")  # called by the system's loader
COMMENT = """/* SPDX-License-Identifier: MIT */
/* Generated from include/vxmcd.h by scripts/generate-interface: do not edit. */
/* clang-format off */
/* Every function of the header, but those of fixed_results.def and those that run when the library is loaded:

   ENTRY_POINT(name, parameters, arguments, signature)
     Returns a result code.
   ENTRY_FUNCTION(result, name, parameters, arguments, signature)
     Returns something else.
   ENTRY_POINT_DECORATED, ENTRY_FUNCTION_DECORATED
     The same, where the library exports it under a name that encodes its argument types and under the plain name.
   OUTSIDE_FUNCTION(name, signature)
     Declared with other arguments inside the library, and defined by hand.

   The signature says what the call trace records. Define the macros that you need before including this file; all are
   undefined at its end. */
"""
MACROS = ("ENTRY_POINT", "ENTRY_POINT_DECORATED", "ENTRY_FUNCTION", "ENTRY_FUNCTION_DECORATED", "OUTSIDE_FUNCTION")


def row(match, has_code, is_outside):
    kind, result, name, parameters = match.groups()
    parameters = re.sub(r"\s+", " ", parameters)
    names = [] if parameters == "void" else [re.search(r"(\w+)$", part)[1] for part in parameters.split(",")]
    traced = f'"{signature("code" if has_code else RESULTS[result], name, parameters)}"'
    if is_outside:
        fields = [name, traced]
        macro = "OUTSIDE_FUNCTION"
    else:
        fields = [name, f"({parameters})", f"({', '.join(names)})", traced]
        if not has_code:
            fields.insert(0, result)
        decorated = kind == "DECORATED" or "std::" in parameters  # what only C++ can declare has C++ linkage
        macro = ("ENTRY_POINT" if has_code else "ENTRY_FUNCTION") + ("_DECORATED" if decorated else "")
    # A text of C++ is not broken.
    line = textwrap.fill(f"{macro}({', '.join(fields[:-1])},", WIDTH, subsequent_indent="  ")
    return f"{line}\n  {traced})"


def text():
    header = (ROOT / "include" / HEADER).read_text()
    without_codes = "".join(NO_CODES.findall(header))
    outside = "".join(OUTSIDE_ONLY.findall(header))
    rows = [row(match, match[2] == "unsigned int" and match[0] not in without_codes, match[0] in outside)
            for match in DECLARATION.finditer(header) if match[3] not in AT_LOAD]
    defaults = "".join(f"#ifndef {macro}\n#define {macro}(...)\n#endif\n" for macro in MACROS)
    return "\n".join([COMMENT, defaults, *rows, "", *(f"#undef {macro}" for macro in MACROS), ""])
