// SPDX-License-Identifier: MIT
// The result codes in words.
#include "api/entry_points.h"

namespace {

struct TResultRow
{
  unsigned int code;
  const char* name;
  const char* meaning;
  const char* advice;
};

constexpr TResultRow kRows[] = {
#define VXMCD_ROW(name, code, meaning, advice) {code, #name, meaning, advice},
    VXMCD_RESULT_CODES(VXMCD_ROW)
#undef VXMCD_ROW
};

constexpr TResultRow kUnknown{0, "unknown result code", "", ""};

const TResultRow& FindRow(unsigned int code)
{
  for (const TResultRow& row : kRows)
    if (row.code == code) return row;
  return kUnknown;
}

} // namespace

namespace EntryPoint {

const char* vxmcd_GetResultName(unsigned int code)
{
  return FindRow(code).name;
}

const char* vxmcd_GetResultMeaning(unsigned int code)
{
  return FindRow(code).meaning;
}

const char* vxmcd_GetResultAdvice(unsigned int code)
{
  return FindRow(code).advice;
}

} // namespace EntryPoint
