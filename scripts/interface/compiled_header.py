# SPDX-License-Identifier: MIT
"""Tables of a header, as the C++ compiler (CXX, c++ by default) reads them."""
import json
import os
import shlex
import subprocess
import tempfile
from types import SimpleNamespace

from interface.public_header import ROOT

_BEGIN = """
#include <iomanip>
#include <iostream>
#include <string>

template <typename Value>
void Put(const char* name, const Value& value)
{
  std::cout << ", \\"" << name << "\\": ";
  if constexpr (std::is_convertible_v<Value, std::string>) std::cout << std::quoted(std::string(value));
  else std::cout << std::boolalpha << value;
}

template <typename Rows, typename PutRow>
void PutRows(const char* name, const Rows& rows, PutRow putRow)
{
  std::cout << ", \\"" << name << "\\": [";
  for (std::size_t index = 0; index < std::size(rows); ++index) {
    std::cout << (index > 0 ? ", " : "") << "{\\"row\\": " << index;
    putRow(rows[index]);
    std::cout << "}";
  }
  std::cout << "]";
}

int main()
{
  std::cout << "{\\"file\\": 0";
"""
_END = """
  std::cout << "}\\n";
}
"""


def read(header, prints):
    """What the statements print with Put() and PutRows(), as attributes and lists of such."""
    compiler = shlex.split(os.environ.get("CXX", "c++"))
    program = f'#include "{header}"\n{_BEGIN}{prints}{_END}'
    with tempfile.TemporaryDirectory() as directory:
        path = f"{directory}/print"
        subprocess.run([*compiler, "-x", "c++", "-std=c++20", f"-I{ROOT}", "-o", path, "-"], input=program, text=True,
                       check=True)
        text = subprocess.run([path], stdout=subprocess.PIPE, text=True, check=True).stdout
    return json.loads(text, object_hook=lambda fields: SimpleNamespace(**fields))
