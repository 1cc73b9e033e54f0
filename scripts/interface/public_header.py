# SPDX-License-Identifier: MIT
"""The public header as doxygen and the compilers (CC and CXX, cc and c++ by default) read it."""
import os
import re
import shlex
import subprocess
import sys
import tempfile
import xml.etree.ElementTree as ET
from functools import cache
from pathlib import Path

ROOT = Path(__file__).resolve().parent.parent.parent
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


@cache
def read():
    """Runs doxygen on the header. Returns its XML documents by name, and the groups in the order of the header."""
    with tempfile.TemporaryDirectory() as name:
        directory = Path(name)
        doxyfile = DOXYFILE.format(include=ROOT / "include", header=HEADER, output=directory)
        subprocess.run(["doxygen", "-"], input=doxyfile, text=True, check=True)
        # Result codes come from a macro, which doxygen does not follow.
        warnings = [line for line in (directory / "warnings").read_text().splitlines()
                    if "link request to 'RC_" not in line]
        if warnings:
            sys.exit("\n".join(warnings))
        documents = {file.stem: ET.parse(file).getroot().find("compounddef") for file in (directory / "xml").glob("*.xml")}
    groups = [compound for name, compound in documents.items() if name.startswith("group__")]
    groups.sort(key=lambda compound: min(line_of(member) for member in compound.iter("memberdef")))
    return documents, groups


def all_functions():
    """The documented functions in the order of the header."""
    return [member for group in read()[1] for member in functions(group)]


def functions(compound):
    """The functions of a group in the order of the header."""
    return sorted((m for m in compound.iter("memberdef") if m.get("kind") == "function"), key=line_of)


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


def library_version():
    """Major, minor and build number of the library, with dots between."""
    source = (ROOT / "utility" / "library_version.h").read_text()
    return re.search(r'kText = "(\d+\.\d+\.\d+)', source)[1]


def symbols():
    """The symbols of the header's functions in the library, those without effect included, as the C++ compiler makes them
    from the declarations: the plain names and the decorated ones."""
    compiler = shlex.split(os.environ.get("CXX", "c++"))
    building = [*compiler, "-x", "c++", "-std=c++20", "-DVXMCD_BUILDING", f"-I{ROOT}/include"]
    include = f'#include "{HEADER}"\n'
    text = subprocess.run([*building, "-E", "-"], input=include, text=True, stdout=subprocess.PIPE, check=True).stdout
    ours, is_ours = [], False
    for line in text.splitlines():
        marker = re.match(r'# \d+ "([^"]*)"', line)
        if marker:
            is_ours = marker[1].startswith(str(ROOT / "include"))
        elif is_ours and not line.startswith("#"):
            ours.append(line)
    source = re.sub(r"__attribute__\(\(.*?\)\)\)", "", " ".join(ours))
    declared = re.findall(r'(\w+)\s*\([^(){};]*\)\s*(__asm__\s*\(\s*"\w+"\s*\))?\s*;', source)
    uses = include + "".join(f"extern auto* const use{i} = &{name};\n" for i, (name, _) in enumerate(declared))
    with tempfile.NamedTemporaryFile(suffix=".o") as file:
        subprocess.run([*building, "-c", "-o", file.name, "-"], input=uses, text=True, check=True)
        table = subprocess.run([os.environ.get("NM", "nm"), "-u", file.name], text=True, stdout=subprocess.PIPE,
                               check=True).stdout
    linked = {line.split()[-1] for line in table.splitlines()}
    return linked | {name for name, label in declared if not label}
