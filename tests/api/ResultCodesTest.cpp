// SPDX-License-Identifier: MIT
// Result codes in words: the header, the library and the tool say the same.
#include "tools/Messages.h"
#include "vxmcd.h"

#include <gtest/gtest.h>

#include <map>
#include <string>

namespace {

// The numbers that programs were built with, in their order.
constexpr const char* kKnownCodes =
    "20002 RC_SUCCESS 20006 RC_FILE_LOAD_ERROR 20010 RC_FRAME_UNAVAILABLE 20013 RC_FEATURE_ERROR "
    "20017 RC_STATUS_TIMED_OUT 20019 RC_STATUS_HARDWARE_OVERFLOW 20024 RC_NO_NEW_DATA "
    "20026 RC_STATUS_SPOOL_ISSUE 20027 RC_START_REFUSED 20029 RC_FILE_SAVE_ERROR 20034 RC_TEMP_OFF "
    "20035 RC_TEMP_NOT_STABILIZED 20036 RC_TEMP_STABILIZED 20037 RC_TEMP_NOT_REACHED 20040 RC_TEMP_DRIFT "
    "20049 RC_BINNING_QUERY_FAILED 20065 RC_COPY_REFUSED 20066 RC_P1_INVALID 20067 RC_P2_INVALID "
    "20068 RC_P3_INVALID 20069 RC_P4_INVALID 20072 RC_ACQUIRING 20073 RC_IDLE 20075 RC_NOT_INITIALIZED "
    "20076 RC_P5_INVALID 20077 RC_P6_INVALID 20080 RC_I2C_ERROR 20095 RC_INVALID_TRIGGER_MODE "
    "20100 RC_INVALID_AMPLIFIER 20990 RC_NO_CAMERA 20991 RC_NOT_SUPPORTED 20992 RC_NOT_AVAILABLE";

TEST(ResultCodes, AreTheKnownOnesInHeaderLibraryAndTool)
{
  std::map<unsigned int, std::string> codes;
#define ADD_ROW(name, code, meaning, advice) codes[code] = #name;
  VXMCD_RESULT_CODES(ADD_ROW)
#undef ADD_ROW
  std::string all;
  for (const auto& [code, name] : codes) {
    all += (all.empty() ? "" : " ") + std::to_string(code) + " " + name;
    const std::string text = vxtool::ResultText("Function", code);
    EXPECT_EQ(text.rfind("Function: " + std::to_string(code) + " " + name + ": ", 0), 0U) << text;
    EXPECT_NE(text.find(vxmcd_GetResultMeaning(code)), std::string::npos) << text;
  }
  EXPECT_EQ(all, kKnownCodes);
  EXPECT_EQ(
      vxtool::ResultText("ShutDown", 20075),
      "ShutDown: 20075 RC_NOT_INITIALIZED: no camera is open under the current handle; call Initialize first");
}

TEST(ResultCodes, OtherNumbersHaveNone)
{
  for (const unsigned int code : {0u, 20001u, 20993u, 0xFFFFFFFFu}) {
    EXPECT_STREQ(vxmcd_GetResultName(code), "unknown result code");
    EXPECT_STREQ(vxmcd_GetResultMeaning(code), "");
  }
}

} // namespace
