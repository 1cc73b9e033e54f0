// SPDX-License-Identifier: MIT
// Result codes in words.
#include "vxmcd.h"

#include <gtest/gtest.h>

#include <cstring>

namespace {

TEST(ResultCodes, EveryCodeHasAName)
{
  EXPECT_STREQ(vxmcd_GetResultName(20002), "RC_SUCCESS");
  EXPECT_STREQ(vxmcd_GetResultName(RC_NOT_AVAILABLE), "RC_NOT_AVAILABLE");
  unsigned int previous = 0;
#define CHECK_ROW(name, code, meaning, advice)                                                                    \
  EXPECT_STREQ(vxmcd_GetResultName(code), #name);                                                                 \
  EXPECT_GT(std::strlen(vxmcd_GetResultMeaning(code)), 5u) << #name;                                              \
  EXPECT_STREQ(vxmcd_GetResultAdvice(code), advice);                                                              \
  EXPECT_GT(static_cast<unsigned int>(code), previous) << #name << " is out of order, or a number twice";         \
  previous = code;
  VXMCD_RESULT_CODES(CHECK_ROW)
#undef CHECK_ROW
}

TEST(ResultCodes, OtherNumbersHaveNone)
{
  for (const unsigned int code : {0u, 20001u, 20993u, 0xFFFFFFFFu}) {
    EXPECT_STREQ(vxmcd_GetResultName(code), "unknown result code");
    EXPECT_STREQ(vxmcd_GetResultMeaning(code), "");
  }
}

} // namespace
