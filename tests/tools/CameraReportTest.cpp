// SPDX-License-Identifier: MIT
// Arguments with several numbers, the description of a camera as text and JSON, and what JSON cannot express.
#include "tools/ArgumentForms.h"
#include "tools/Json.h"

#include <cmath>
#include <gtest/gtest.h>
#include <limits>

namespace vxtool {
namespace {

TEST(ArgumentForms, ReadTheirNumbersAndNothingElse)
{
  TImageAreaOptions area;
  ASSERT_TRUE(ParseArea("101,201,640x480", area));
  EXPECT_EQ(area.left, 101);
  EXPECT_EQ(area.top, 201);
  EXPECT_EQ(area.width, 640);
  EXPECT_EQ(area.height, 480);
  for (const char* wrong : {"", "1,2", "1,2,3", "1,2,3x", "1,2,3x4x", " 1,2,3x4", "1,2,3x0", "-1,2,3x4", "1;2,3x4",
                            "1,2,3x99999999999"})
    EXPECT_FALSE(ParseArea(wrong, area)) << wrong;
  ASSERT_TRUE(ParseBinning("4x2", area));
  EXPECT_EQ(area.horizontalBinning, 4);
  EXPECT_EQ(area.verticalBinning, 2);
  for (const char* wrong : {"", "2", "x2", "2x", "0x1", "2x2 "}) EXPECT_FALSE(ParseBinning(wrong, area)) << wrong;
  ASSERT_TRUE(ParseTracks("1-10,20-20", area.tracks));
  EXPECT_EQ(TracksText(area.tracks), "1-10,20-20");
  for (const char* wrong : {"", "1", "1-", "2-1", "1-2,", ",1-2", "1-2;3-4", "0-4"})
    EXPECT_FALSE(ParseTracks(wrong, area.tracks)) << wrong;
  EXPECT_EQ(area.tracks.size(), 2u) << "wrong texts change nothing";
  double seconds = 0.0;
  EXPECT_TRUE(ParseSeconds("2.5e1", seconds));
  EXPECT_EQ(seconds, 25.0);
  for (const char* wrong : {"", "0", "-1", "nan", "inf", "1s", "1e7"}) EXPECT_FALSE(ParseSeconds(wrong, seconds));
}

TEST(JsonText, TakesAnyValue)
{
  EXPECT_EQ(JsonNumber(0.1F), 0.1);
  EXPECT_TRUE(JsonNumber(std::nanf("")).is_null());
  EXPECT_TRUE(JsonNumber(-std::numeric_limits<float>::infinity()).is_null());
  const std::string line = JsonLine({{"file", "a\xff\n.tif"}});
  EXPECT_EQ(Json::parse(line)["file"], "a\xEF\xBF\xBD\n.tif");
  EXPECT_EQ(line.find('\n'), line.size() - 1);
}

} // namespace
} // namespace vxtool
