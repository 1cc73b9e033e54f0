// SPDX-License-Identifier: MIT
// The loop that watches a recorded run, with a camera that follows a script: the ways in which a run ends.
#include "tests/tools/ScriptedCamera.h"
#include "tools/TSpoolLoop.h"

namespace vxtool {
namespace {

class SpoolLoop : public ::testing::Test
{
protected:
  RunEnd Run(long wanted, int turnsUntilInterrupt = 1 << 30)
  {
    settings_.shape = kScriptedShape;
    settings_.wantedImages = wanted;
    int turns = 0;
    TSpoolLoop loop(
        camera_, settings_, [&] { return ++turns > turnsUntilInterrupt; },
        [this](const TProgress& progress) { delivered_ = progress.delivered; });
    const RunEnd end = loop.Run();
    message_ = loop.Message();
    loop.Finish(delivered_);
    EXPECT_TRUE(loop.Account().AddsUp());
    totals_ = loop.Account().Totals();
    return end;
  }

  ScriptedCamera camera_;
  TLoopSettings settings_;
  long delivered_ = 0; // by the last report
  std::string message_;
  TRunTotals totals_;
};

struct TEndCase
{
  const char* name;
  int images;        // that the camera sends until its run ends
  long frameDropped; // image before which it loses two frames
  unsigned int status;
  RunEnd end;
  const char* message; // a part of it; "" for none at all
};

void PrintTo(const TEndCase& value, std::ostream* stream)
{
  *stream << value.name;
}

class SpoolLoopEnds : public SpoolLoop, public ::testing::WithParamInterface<TEndCase>
{
};

TEST_P(SpoolLoopEnds, StatusAndCountTogetherTellHowTheRunEnded)
{
  const TEndCase& c = GetParam();
  camera_.imagesPerWait = 3;
  camera_.imagesInRun = c.images;
  camera_.frameDropped = c.frameDropped;
  camera_.endStatus = static_cast<int>(c.status);
  EXPECT_EQ(Run(10), c.end);
  EXPECT_NE(message_.find(c.message), std::string::npos) << message_;
  EXPECT_EQ(message_.empty(), c.end == RunEnd::Complete) << message_;
  EXPECT_EQ(totals_.delivered, c.images);
  EXPECT_EQ(totals_.lostInCamera, c.frameDropped > 0 ? 2 : 0);
  EXPECT_FALSE(camera_.IsAborted()) << "it has ended by itself";
}

INSTANTIATE_TEST_SUITE_P(
    Statuses, SpoolLoopEnds,
    ::testing::Values(
        TEndCase{"AllThere", 10, 0, RC_IDLE, RunEnd::Complete, ""},
        TEndCase{"TooFew", 7, 0, RC_IDLE, RunEnd::CameraFailed, "after 7 images, before all were there"},
        TEndCase{"ExplainedByLoss", 8, 4, RC_STATUS_TIMED_OUT, RunEnd::Complete, ""},
        TEndCase{"LossDoesNotExplain", 7, 4, RC_STATUS_TIMED_OUT, RunEnd::CameraFailed, "RC_STATUS_TIMED_OUT"},
        TEndCase{"Overflow", 5, 0, RC_STATUS_HARDWARE_OVERFLOW, RunEnd::CameraFailed, "20019"},
        TEndCase{"DiskFull", 5, 0, RC_STATUS_SPOOL_ISSUE, RunEnd::OutputFailed, "20026 RC_STATUS_SPOOL_ISSUE"}),
    [](const ::testing::TestParamInfo<TEndCase>& tested) { return std::string(tested.param.name); });

TEST_F(SpoolLoop, RunThatCannotStartIsSaid)
{
  camera_.startCode = RC_FRAME_UNAVAILABLE;
  EXPECT_EQ(Run(10), RunEnd::CameraFailed);
  EXPECT_NE(message_.find("StartAcquisition: 20010"), std::string::npos) << message_;
}

TEST_F(SpoolLoop, InterruptStopsTheCamera)
{
  EXPECT_EQ(Run(1000, 20), RunEnd::Interrupted);
  EXPECT_TRUE(camera_.IsAborted());
  EXPECT_EQ(totals_.delivered, 20);
  EXPECT_EQ(message_, "");
}

TEST_F(SpoolLoop, TimeLimitIsForImagesNotForTheDisk)
{
  camera_.isTriggered = true; // by hand: 5 images, and then no more while the run goes on
  camera_.triggers = 5;
  settings_.noImageSeconds = 0.02;
  EXPECT_EQ(Run(6), RunEnd::CameraFailed);
  EXPECT_NE(message_.find("--timeout"), std::string::npos) << message_;
  EXPECT_TRUE(camera_.IsAborted());

  camera_ = ScriptedCamera();
  camera_.isTriggered = true;
  camera_.triggers = 5;
  EXPECT_EQ(Run(5, 100), RunEnd::Interrupted) << "all images are there: " << message_;
}

} // namespace
} // namespace vxtool
