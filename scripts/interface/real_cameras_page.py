# SPDX-License-Identifier: MIT
"""The table of docs/real-cameras.md that says which features of a camera are behind the library's. The rest of the page is
written by hand."""
import re
from functools import cache

from interface.compiled_header import read
from interface.public_header import ROOT

PATH = "docs/real-cameras.md"
HEADER = "vxcore/genicam/map_rows.h"
BEGIN = f"<!-- Generated from {HEADER} by scripts/generate-interface. Do not edit. -->"
END = "<!-- End of what is generated. -->"

_PRINT_ROWS = """
  PutRows("rows", vxgenicam::kMapRows, [](const vxgenicam::TMapRow& row) {
    std::string nodes;
    for (const char* node : row.nodes)
      if (node) nodes += (nodes.empty() ? "" : " ") + std::string(node);
    Put("name", row.name), Put("origin", NameOf(row.origin)), Put("nodes", nodes), Put("scale", row.scale);
  });
"""


def line(row):
    nodes = ", ".join(f"`{node}`" for node in row.nodes.split())
    factor = "" if row.scale == 1 else f"{row.scale:g}"
    return f"| `{row.name}` | {row.origin} | {nodes} | {factor} |"


@cache
def table():
    return ["| Feature | Origin | Feature of the camera | Factor |", "|---|---|---|---|",
            *(line(row) for row in read(HEADER, _PRINT_ROWS).rows)]


def text():
    page = (ROOT / PATH).read_text()
    part = re.compile(re.escape(BEGIN) + ".*?" + re.escape(END), re.DOTALL)
    new = "\n".join([BEGIN, *table(), END])
    page, count = part.subn(lambda _: new, page)
    assert count == 1, f"{PATH} has {count} parts for the table"
    return page
