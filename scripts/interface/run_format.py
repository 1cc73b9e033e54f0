# SPDX-License-Identifier: MIT
"""The format of a recorded run, runs/run_format.h, as the C++ compiler (CXX, c++ by default) reads it."""
import json
import os
import shlex
import subprocess
import tempfile
from functools import cache
from types import SimpleNamespace

from interface.public_header import ROOT

HEADER = "runs/run_format.h"

_PROGRAM = """
#include "runs/run_format.h"
#include <iomanip>
#include <iostream>

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
  for (std::size_t index = 0; index < rows.size(); ++index) {
    std::cout << (index > 0 ? ", " : "") << "{\\"row\\": " << index;
    putRow(rows[index]);
    std::cout << "}";
  }
  std::cout << "]";
}

int main()
{
  using namespace RunFormat;
  std::cout << "{\\"file\\": 0";
  Put("version", kVersion);
  Put("description_name", kDescriptionName);
  Put("index_name", kIndexName);
  Put("stem", kImageFileStem);
  Put("extension", kImageFileExtension);
  Put("digits", kImageFileDigits);
  Put("record_bytes", sizeof(TIndexRecord));
  Put("checked_record_bytes", kCheckedRecordBytes);
  PutRows("fields", kIndexRecordFields, [](const TRecordField& field) {
    Put("name", field.name), Put("offset", field.offset), Put("signed", field.isSigned), Put("meaning", field.meaning);
  });
  PutRows("states", kStateTexts, [](const char* text) { Put("text", text); });
  Put("true", kTrueText);
  Put("false", kFalseText);
  PutRows("keys", kKeys, [](const TKey& key) {
    Put("section", key.section), Put("name", key.name), Put("meaning", key.meaning);
  });
  PutRows("encodings", kEncodings, [](const TEncoding& encoding) {
    Put("name", encoding.name), Put("bytes", encoding.bytesPerPixel), Put("bits", encoding.bits);
    Put("signed", encoding.isSigned), Put("meaning", encoding.meaning);
  });
  Put("end_chunk", kEndChunk);
  Put("timestamp_chunk", kTimestampChunk);
  Put("chunk_field_bytes", kChunkFieldBytes);
  std::cout << "}\\n";
}
"""


@cache
def read():
    """The header's names and tables, as attributes and lists of such."""
    compiler = shlex.split(os.environ.get("CXX", "c++"))
    with tempfile.TemporaryDirectory() as directory:
        program = f"{directory}/print"
        subprocess.run([*compiler, "-x", "c++", "-std=c++20", f"-I{ROOT}", "-o", program, "-"], input=_PROGRAM, text=True,
                       check=True)
        text = subprocess.run([program], stdout=subprocess.PIPE, text=True, check=True).stdout
    return json.loads(text, object_hook=lambda fields: SimpleNamespace(**fields))
