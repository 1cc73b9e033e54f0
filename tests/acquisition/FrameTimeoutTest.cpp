// SPDX-License-Identifier: MIT
// How long one frame may take, for everything a camera may say.
#include "acquisition/frame_timeout.h"

#include <gtest/gtest.h>

#include <limits>

namespace {

TEST(FrameTimeout, IsThreePeriodsAndASecond)
{
  EXPECT_EQ(FrameTimeoutMs(10.0, 2), 1600);
  EXPECT_EQ(FrameTimeoutMs(30.0, 1), 33 * 3 + 1000) << "the period is cut to whole ms before it is tripled";
  EXPECT_EQ(FrameTimeoutMs(100000.0, 1), 1000);
}

TEST(FrameTimeout, StaysInRangeWhateverTheCameraSays)
{
  const double nan = std::numeric_limits<double>::quiet_NaN();
  EXPECT_EQ(FrameTimeoutMs(0.0, 1), kNoFrameTimeoutMs);
  EXPECT_EQ(FrameTimeoutMs(nan, 1), kNoFrameTimeoutMs);
  EXPECT_EQ(FrameTimeoutMs(1e-300, 1), kNoFrameTimeoutMs);
  EXPECT_EQ(FrameTimeoutMs(1.0, 1LL << 40), kNoFrameTimeoutMs);
  EXPECT_EQ(FrameTimeoutMs(0.0, 0), kNoFrameTimeoutMs);
  EXPECT_EQ(FrameTimeoutMs(-1.0, 1), 1000);
  EXPECT_EQ(FrameTimeoutMs(10.0, -5), 1000);
  EXPECT_EQ(FrameTimeoutMs(std::numeric_limits<double>::infinity(), 1), 1000);
}

} // namespace
