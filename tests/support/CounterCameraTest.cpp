// SPDX-License-Identifier: MIT
// Tests with a camera whose frames contain their numbers.
#include "tests/support/CounterCameraTest.h"

#include "vxcore/simulated/imaging/TCounterPattern.h"

#include <numeric>
#include <span>

std::uint64_t FrameNumberOf(const TCounterImage& image)
{
  const auto* bytes = reinterpret_cast<const unsigned char*>(image.data());
  const auto result = vxsim::TCounterPattern::VerifyAny(std::span(bytes, sizeof image));
  return result ? result.head.frameNumber : 0;
}

void CounterCameraTest::StartUntilAborted()
{
  ASSERT_EQ(SetAcquisitionMode(kModeUntilAborted), RC_SUCCESS);
  ASSERT_EQ(StartAcquisition(), RC_SUCCESS);
}

void CounterCameraTest::StartSeries(int images)
{
  ASSERT_EQ(SetAcquisitionMode(kModeSeries), RC_SUCCESS);
  ASSERT_EQ(SetNumberKinetics(images), RC_SUCCESS);
  ASSERT_EQ(StartAcquisition(), RC_SUCCESS);
}

void CounterCameraTest::AddFault(const char* rule)
{
  ASSERT_EQ(VXSIM_AddFault(rule), VX_SUCCESS) << VXSIM_GetLastError();
}

void CounterCameraTest::Push(int count)
{
  ASSERT_EQ(VXSIM_PushFrames(0, count), VX_SUCCESS);
}

long CounterCameraTest::ImageCount()
{
  long count = -1;
  EXPECT_EQ(GetTotalNumberImagesAcquired(&count), RC_SUCCESS);
  return count;
}

bool CounterCameraTest::HasImages(long count)
{
  return Eventually([count] { return ImageCount() >= count; }) && ImageCount() == count;
}

std::uint64_t CounterCameraTest::FrameOfImage(long number)
{
  TCounterImage image{};
  long first = 0;
  long last = 0;
  if (GetImages16(number, number, image.data(), image.size(), &first, &last) != RC_SUCCESS) return 0;
  return FrameNumberOf(image);
}

void CounterCameraTest::ExpectImages(const std::vector<std::uint64_t>& frames)
{
  int first = 0;
  int last = 0;
  ASSERT_EQ(GetNumberAvailableImages(&first, &last), RC_SUCCESS);
  ASSERT_EQ(static_cast<std::size_t>(last), frames.size());
  ASSERT_GE(first, 1);
  for (int image = first; image <= last; ++image)
    ASSERT_EQ(FrameOfImage(image), frames[static_cast<std::size_t>(image) - 1]) << "image " << image;
}

void CounterCameraTest::ExpectCleanRun()
{
  constexpr int kImages = 20;
  VXSIM_ClearFaults();
  StartSeries(kImages);
  Push(kImages);
  ASSERT_TRUE(HasImages(kImages));
  std::vector<std::uint64_t> frames(kImages);
  std::iota(frames.begin(), frames.end(), std::uint64_t{1});
  ExpectImages(frames);
  EXPECT_TRUE(Eventually([] { return Status() == RC_IDLE; }));
}

VXSIM_Statistics CounterCameraTest::Statistics()
{
  VXSIM_Statistics statistics{};
  EXPECT_EQ(VXSIM_GetStatistics(0, &statistics), VX_SUCCESS);
  return statistics;
}
