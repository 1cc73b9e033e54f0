# SPDX-License-Identifier: MIT
"""The public header as doxygen and the C compiler (CC, cc by default) read it, for the scripts that make pages and tables of
it."""
import difflib
import os
import shlex
import subprocess
import sys
import tempfile
import xml.etree.ElementTree as ET
from pathlib import Path

ROOT = Path(__file__).resolve().parent.parent
HEADER = "vxmcd.h"
CODES_HEADER = "vxmcd_result_codes.h"

DOXYFILE = """
INPUT = {include}/{header}
OUTPUT_DIRECTORY = {output}
GENERATE_HTML = NO
GENERATE_LATEX = NO
GENERATE_XML = YES
XML_PROGRAMLISTING = NO
EXTRACT_ALL = YES
OPTIMIZE_OUTPUT_FOR_C = YES
MACRO_EXPANSION = YES
EXPAND_ONLY_PREDEF = YES
PREDEFINED = VXMCD_API= VXMCD_DECORATED= VXMCD_ANY_ARGUMENTS=...
QUIET = YES
WARN_IF_UNDOCUMENTED = YES
WARN_LOGFILE = {output}/warnings
"""


def line_of(member):
    return int(member.find("location").get("line"))


def read(directory):
    """Has doxygen read the header; the directory of its XML, and the groups in the order of the header."""
    doxyfile = DOXYFILE.format(include=ROOT / "include", header=HEADER, output=directory)
    subprocess.run(["doxygen", "-"], input=doxyfile, text=True, check=True)
    # Result codes come from a macro, which doxygen does not follow.
    warnings = [line for line in (directory / "warnings").read_text().splitlines() if "link request to 'RC_" not in line]
    if warnings:
        sys.exit("\n".join(warnings))

    xml = directory / "xml"
    groups = [ET.parse(file).getroot().find("compounddef") for file in xml.glob("group__*.xml")]
    groups.sort(key=lambda compound: min(line_of(member) for member in compound.iter("memberdef")))
    return xml, groups


def functions(compound):
    """The functions of a group in the order of the header."""
    return sorted((m for m in compound.iter("memberdef") if m.get("kind") == "function"), key=line_of)


def record(xml, refid):
    """A struct of the header."""
    return ET.parse(xml / f"{refid}.xml").getroot().find("compounddef")


def result_codes():
    """Code, name, meaning and advice of each result code, as texts."""
    compiler = shlex.split(os.environ.get("CC", "cc"))
    source = f'#include "{CODES_HEADER}"\n#define ROW(...) @ __VA_ARGS__\nVXMCD_RESULT_CODES(ROW)\n'
    expanded = subprocess.run([*compiler, "-E", "-P", "-x", "c", f"-I{ROOT}/include", "-"], input=source, text=True,
                              stdout=subprocess.PIPE, check=True).stdout
    rows = []
    for row in expanded.split("@")[1:]:
        fields = shlex.shlex(row, posix=True, punctuation_chars=",")
        fields.whitespace_split = True
        name, code, meaning, advice = [token for token in fields if token != ","]
        rows.append((code, name, meaning, advice))
    return rows


def write_or_check(script, path, make_text, count_entries, source="the header"):
    """The command line that such scripts have in common; returns the exit code. `make_text` makes the text of the file at
    `path` in a scratch directory."""
    usage = f"scripts/{script} [--check]"
    if sys.argv[1:] not in ([], ["--check"]):
        sys.exit(usage)
    with tempfile.TemporaryDirectory() as directory:
        text = make_text(Path(directory))
    if not sys.argv[1:]:
        path.write_text(text)
        return 0
    shown = path.relative_to(ROOT)
    old = path.read_text() if path.exists() else ""
    difference = list(difflib.unified_diff(old.splitlines(), text.splitlines(), str(shown), source, lineterm=""))
    if difference:
        print("\n".join(difference))
        print(f"{shown} is not what {source} says: run scripts/{script}")
        return 1
    print(f"{shown} is what {source} says: {count_entries(text)} entries")
    return 0
