# SPDX-License-Identifier: MIT
"""Reads api/fixed_results.def with the C preprocessor (CC, cc by default)."""
import json
import os
import shlex
import subprocess
from dataclasses import dataclass

from interface.public_header import ROOT

_ROWS = """
#define FIXED_REASON(reason, text) ["REASON", #reason, text],
#define FIXED_RESULT(name, code, reason) ["ANY", #name, "", "", "", "", "", #code, #reason],
#define FIXED_RESULT_TYPED(name, arguments, symbol, code, reason) \\
  ["TYPED", #name, #arguments, #symbol, "", "", "", #code, #reason],
#define FIXED_RESULT_TYPED_ONLY(name, arguments, symbol, code, reason) \\
  ["TYPED_ONLY", #name, #arguments, #symbol, "", "", "", #code, #reason],
#define FIXED_VALUE(name, parameters, outputs, type, value, code, reason) \\
  ["VALUE", #name, #parameters, "", #outputs, #type, #value, #code, #reason],
#include "api/fixed_results.def"
"""


@dataclass
class Row:
    kind: str  # ANY, TYPED, TYPED_ONLY or VALUE
    name: str
    arguments: str
    symbol: str
    outputs: str
    type: str
    value: str
    code: str
    reason: str

    def takes_any(self):
        """Whether callers may pass anything: nothing is known, or not of every argument."""
        return self.kind == "ANY" or self.kind == "VALUE" and "void*," in self.arguments

    def writes(self):
        """What a VALUE row writes, in words."""
        bits = 64 if self.type == "long long" else 32
        places = self.outputs.strip("()").replace(", ", " and the ")
        counting = ", floating-point numbers not counted" if self.takes_any() else ""
        return f"{bits}-bit {self.value} through the {places} argument{counting}"


def read():
    """The reasons as {name: text} and the rows, both in the order of the table."""
    compiler = shlex.split(os.environ.get("CC", "cc"))
    text = subprocess.run([*compiler, "-E", "-P", "-x", "c", f"-I{ROOT}", "-"], input=_ROWS, text=True,
                          stdout=subprocess.PIPE, check=True).stdout
    entries = json.loads("[" + text.strip().rstrip(",") + "]")
    reasons = {entry[1]: entry[2] for entry in entries if entry[0] == "REASON"}
    return reasons, [Row(*entry) for entry in entries if entry[0] != "REASON"]
