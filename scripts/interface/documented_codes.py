# SPDX-License-Identifier: MIT
"""The functions that the public header declares, each with the result codes that its comment names, for the tests."""
import re

from interface.public_header import HEADER, ROOT

COMMENT = r"/\*\*((?:(?!\*/).)*)\*/\s*"
DECLARATION = r"(?:VXMCD_API|VXMCD_DECORATED)\s[\w\s*]*?(\w+)\(([^;]*)\);"
COMMON = "Codes common to all:"  # in the comment of a group
NO_CAMERA = re.compile(r"Needs no open camera|No function here needs an open camera")
CAMERA = "Needs an open camera"  # an exception in such a group


def codes_of(comment, known):
    """The codes that a comment names, by itself or by pointing to a function above it."""
    text = comment.split("@return")[-1]
    codes = set(re.findall(r"#(RC_\w+)", text))
    for first, last in re.findall(r"#RC_P(\d)_INVALID to #RC_P(\d)_INVALID", text):
        codes |= {f"RC_P{number}_INVALID" for number in range(int(first), int(last))}
    for name in re.findall(r"(?:@copydoc|As|same as|code of) (\w+)", text):
        codes |= known.get(name, set()) - {"RC_NOT_INITIALIZED"}
    return codes


def text():
    """Rows `VXMCD_FUNCTION(name, codes...)`, in the order of the header."""
    known = {}
    common = ""
    header = (ROOT / "include" / HEADER).read_text()
    for item in re.finditer(f"(?s)(?:{COMMENT})?(?:#ifndef \\w+\\s*)?{DECLARATION}|{COMMENT}", header):
        comment, name, _, other = (re.sub(r"\s*\n\s*\*\s*", " ", part or "") for part in item.groups())
        if name:
            needs_camera = CAMERA in comment or not NO_CAMERA.search(comment + common)
            known[name] = (codes_of(comment, known) | codes_of(common.partition(COMMON)[2], known)
                           | ({"RC_NOT_INITIALIZED"} if needs_camera else set()))
        elif "@defgroup" in other or "@}" in other:
            common = other
    declared = len(re.findall(r"^(?:VXMCD_API|VXMCD_DECORATED) ", header, re.MULTILINE))
    if len(known) != declared:
        raise ValueError(f"{declared} declarations in the header, of which {len(known)} are listed")
    return "".join(f"VXMCD_FUNCTION({', '.join([name, *sorted(codes)])})\n" for name, codes in known.items())
