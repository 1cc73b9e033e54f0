// SPDX-License-Identifier: MIT
// Result codes in words: the header, the library, the tool and the reference page say the same.
#include "tools/ResultText.h"
#include "vxmcd.h"

#include <gtest/gtest.h>

#include <cstring>
#include <fstream>
#include <map>
#include <string>
#include <vector>

namespace {

// The numbers that programs were built with.
const std::map<unsigned int, std::string> kKnownCodes = {
    {20002, "RC_SUCCESS"},
    {20006, "RC_FILE_LOAD_ERROR"},
    {20010, "RC_FRAME_UNAVAILABLE"},
    {20013, "RC_FEATURE_ERROR"},
    {20017, "RC_STATUS_TIMED_OUT"},
    {20019, "RC_STATUS_HARDWARE_OVERFLOW"},
    {20024, "RC_NO_NEW_DATA"},
    {20026, "RC_STATUS_SPOOL_ISSUE"},
    {20027, "RC_START_REFUSED"},
    {20029, "RC_FILE_SAVE_ERROR"},
    {20034, "RC_TEMP_OFF"},
    {20035, "RC_TEMP_NOT_STABILIZED"},
    {20036, "RC_TEMP_STABILIZED"},
    {20037, "RC_TEMP_NOT_REACHED"},
    {20040, "RC_TEMP_DRIFT"},
    {20049, "RC_BINNING_QUERY_FAILED"},
    {20065, "RC_COPY_REFUSED"},
    {20066, "RC_P1_INVALID"},
    {20067, "RC_P2_INVALID"},
    {20068, "RC_P3_INVALID"},
    {20069, "RC_P4_INVALID"},
    {20072, "RC_ACQUIRING"},
    {20073, "RC_IDLE"},
    {20075, "RC_NOT_INITIALIZED"},
    {20076, "RC_P5_INVALID"},
    {20077, "RC_P6_INVALID"},
    {20080, "RC_I2C_ERROR"},
    {20095, "RC_INVALID_TRIGGER_MODE"},
    {20100, "RC_INVALID_AMPLIFIER"},
    {20990, "RC_NO_CAMERA"},
    {20991, "RC_NOT_SUPPORTED"},
    {20992, "RC_NOT_AVAILABLE"},
};

/// The rows "| 20002 | `RC_SUCCESS` | ... | ... |" of the reference page, by code, without spaces around the
/// cells.
std::map<unsigned int, std::vector<std::string>> RowsOfThePage()
{
  std::map<unsigned int, std::vector<std::string>> rows;
  std::ifstream page(API_REFERENCE);
  for (std::string line; std::getline(page, line);) {
    if (line.rfind("| 20", 0) != 0) continue;
    std::vector<std::string> cells;
    for (std::size_t begin = 2; begin < line.size();) {
      const std::size_t end = line.find(" |", begin);
      cells.push_back(line.substr(begin, end - begin));
      begin = end + 3;
    }
    rows[static_cast<unsigned int>(std::stoul(cells[0]))] = cells;
  }
  return rows;
}

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

TEST(ResultCodes, AreTheKnownOnes)
{
  std::map<unsigned int, std::string> codes;
#define ADD_ROW(name, code, meaning, advice) codes[code] = #name;
  VXMCD_RESULT_CODES(ADD_ROW)
#undef ADD_ROW
  EXPECT_EQ(codes, kKnownCodes);
}

TEST(ResultCodes, PageSaysTheSame)
{
  const auto rows = RowsOfThePage();
  EXPECT_EQ(rows.size(), kKnownCodes.size());
  for (const auto& [code, cells] : rows) {
    const std::vector<std::string> expected = {std::to_string(code),
                                               "`" + std::string(vxmcd_GetResultName(code)) + "`",
                                               vxmcd_GetResultMeaning(code), vxmcd_GetResultAdvice(code)};
    EXPECT_EQ(cells, expected);
  }
}

TEST(ResultCodes, ToolSaysTheSame)
{
  EXPECT_EQ(
      vxtool::ResultText("ShutDown", 20075),
      "ShutDown: 20075 RC_NOT_INITIALIZED: no camera is open under the current handle; call Initialize first");
  for (const auto& [code, name] : kKnownCodes) {
    const std::string text = vxtool::ResultText("Function", code);
    EXPECT_EQ(text.rfind("Function: " + std::to_string(code) + " " + name + ": ", 0), 0U) << text;
    EXPECT_NE(text.find(vxmcd_GetResultMeaning(code)), std::string::npos) << text;
  }
}

TEST(ResultCodes, OtherNumbersHaveNone)
{
  for (const unsigned int code : {0u, 20001u, 20993u, 0xFFFFFFFFu}) {
    EXPECT_STREQ(vxmcd_GetResultName(code), "unknown result code");
    EXPECT_STREQ(vxmcd_GetResultMeaning(code), "");
  }
}

} // namespace
