# SPDX-License-Identifier: MIT
"""The format of a recorded run, runs/run_format.h."""
from functools import cache

from interface import compiled_header

HEADER = "runs/run_format.h"

_PRINT_TABLES = """
  using namespace RunFormat;
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
"""


@cache
def read():
    """The header's names and tables, as attributes and lists of such."""
    return compiled_header.read(HEADER, _PRINT_TABLES)
