# SPDX-License-Identifier: MIT
"""The Python package's table of the interface, python/vxmcd/_signatures.py: argument and result types of every function,
records, constants, result codes."""
import re
import sys
import textwrap

from interface import fixed_results, public_header as header

PATH = "python/vxmcd/_signatures.py"
WIDTH = 115

WHOLE = {
    "char": "c_char", "signed char": "c_byte", "unsigned char": "c_ubyte",
    "short": "c_short", "unsigned short": "c_ushort", "int": "c_int", "unsigned int": "c_uint",
    "long": "c_long", "unsigned long": "c_ulong", "long long": "c_longlong", "unsigned long long": "c_ulonglong",
    "int8_t": "c_int8", "uint8_t": "c_uint8", "int16_t": "c_int16", "uint16_t": "c_uint16",
    "int32_t": "c_int32", "uint32_t": "c_uint32", "int64_t": "c_int64", "uint64_t": "c_uint64", "size_t": "c_size_t",
    "float": "c_float", "double": "c_double", "wchar_t": "c_wchar",
}
TEXTS = {"char": "c_char_p", "wchar_t": "c_wchar_p"}  # what a pointer to one of these is
FUNCTION_POINTER = re.compile(r"(.+?)\(\s*\*\s*\w*\)\s*\((.*)\)$")


class Types:
    """C types as ctypes expressions. Keeps the callback types and the ctypes names that were used."""

    def __init__(self, records, callbacks):
        self.records = records
        self.callbacks = callbacks
        self.used = set()

    def expression(self, text):
        """The ctypes expression for a C type; None for void."""
        text = re.sub(r"\b(const|struct|enum)\b", "", text)
        text = re.sub(r"\s+", " ", text).strip()
        function = FUNCTION_POINTER.match(text)
        if function:
            return self.callback(*function.groups())
        if text.endswith(("*", "]")):
            return self.pointer(re.sub(r"(\*|\[\w*\])$", "", text).strip())
        if text == "void":
            return None
        if text in self.callbacks or text in self.records:
            return text
        if text not in WHOLE:
            sys.exit(f"the type '{text}' is not known here")
        return self.use(WHOLE[text])

    def pointer(self, target):
        if target in TEXTS:
            return self.use(TEXTS[target])
        if target == "void" or re.fullmatch(r"T[A-Z]\w*", target):  # opaque records of the library
            return self.use("c_void_p")
        return f"{self.use('POINTER')}({self.expression(target)})"

    def callback(self, result, arguments):
        kinds = [self.expression(re.sub(r"(?<=[\w*])\s*\b(?!int|char|long|short|void)\w+$", "", argument.strip()))
                 for argument in arguments.split(",") if argument.strip() not in ("", "void")]
        return f"{self.use('CFUNCTYPE')}({', '.join([str(self.expression(result)), *kinds])})"

    def use(self, name):
        self.used.add(name)
        return name


def kind_of(element):
    return "".join(element.find("type").itertext())


def arguments(member, types):
    """The argument types of a function; None when it takes any."""
    kinds = [kind_of(param) + param.findtext("array", "") for param in member.findall("param")]
    if kinds == ["..."]:
        return None
    return [types.expression(kind) for kind in kinds if kind != "void"]


def tuple_text(items):
    return "(" + ", ".join(items) + ("," if len(items) == 1 else "") + ")"


def wrapped(text):
    return textwrap.fill(text, WIDTH, initial_indent="    ", subsequent_indent="        ", break_long_words=False)


def function_line(member, types):
    kinds = arguments(member, types)
    signature = f"({types.expression(kind_of(member))}, {'None' if kinds is None else tuple_text(kinds)})"
    return wrapped(f'"{member.findtext("name")}": {signature},')


def fixed_result_line(row, types):
    """A function that does nothing, of api/fixed_results.def."""
    kinds = [re.sub(r"(?<=\*)\s*\w+$", "", kind.strip()) for kind in row.arguments.strip("()").split(",")]
    taken = None if row.takes_any() else tuple_text([types.expression(kind) for kind in kinds if kind != "void"])
    return wrapped(f'"{row.name}": ({types.use("c_uint")}, {taken}),')


def record_lines(compound, types):
    fields = [f'        ("{member.findtext("name")}", {types.expression(kind_of(member))}),'
              for member in compound.iter("memberdef")]
    return [f"class {compound.findtext('compoundname')}(Record):", "    _fields_ = [", *fields, "    ]", "", ""]


def constant_lines(groups):
    for compound in groups:
        for member in compound.iter("memberdef"):
            value = re.fullmatch(r"(0[xX][0-9a-fA-F]+|\d+)[uUlL]*", member.findtext("initializer", ""))
            if member.get("kind") == "define" and value:
                yield f'    "{member.findtext("name")}": {value.group(1)},'


def quoted(text):
    return '"' + text.replace("\\", "\\\\").replace('"', '\\"') + '"'


def text():
    documents, groups = header.read()
    compounds = [documents[inner.get("refid")] for group in groups for inner in group.findall("innerclass")]
    callbacks = {member.findtext("name"): kind_of(member) + member.findtext("argsstring")
                 for group in groups for member in group.iter("memberdef")
                 if member.get("kind") == "typedef" and "(*" in kind_of(member)}
    types = Types({compound.findtext("compoundname") for compound in compounds}, callbacks)
    records = [line for compound in compounds for line in record_lines(compound, types)]
    callback_lines = [f"{name} = {types.expression(text)}" for name, text in callbacks.items()]
    functions = [function_line(member, types) for member in header.all_functions()]
    functions += [fixed_result_line(row, types) for row in fixed_results.read()[1] if row.kind != "TYPED_ONLY"]
    codes = [f"    {code}: ({quoted(name)},\n            {quoted(meaning)},\n            {quoted(advice)}),"
             for code, name, meaning, advice in header.result_codes()]
    imports = textwrap.fill(", ".join(sorted(types.used)), WIDTH, initial_indent="    ", subsequent_indent="    ")
    return "\n".join([
        "# SPDX-License-Identifier: MIT",
        "# Generated from include/vxmcd.h by scripts/generate-interface: do not edit.",
        '"""Types, constants and result codes of the camera library."""',
        "from ctypes import (", imports + ")", "", "from ._record import Record", "", "", *records, *callback_lines, *([""] if callback_lines else []),
        f'LIBRARY_VERSION = "{header.library_version()}"', "",
        "# name: (type of the result, types of the arguments); None for arguments: takes any", "FUNCTIONS = {", *functions,
        "}", "", "CONSTANTS = {", *constant_lines(groups), "}", "",
        "# code: (name, meaning, what to try)", "RESULT_CODES = {", *codes, "}"]) + "\n"
