// SPDX-License-Identifier: MIT
// The run loop with a camera that follows a script: overtaken copies, triggers, and the ways in which a run ends.
#include "tests/tools/ScriptedCamera.h"
#include "tools/TRunLoop.h"
#include "vxmcd.h"

namespace vxtool {
namespace {

class RunLoop : public ::testing::Test
{
protected:
  RunEnd Run(long wanted, int turnsUntilInterrupt = 1 << 30)
  {
    settings_.shape = kScriptedShape;
    settings_.wantedImages = wanted;
    settings_.isEndless = camera_.isEndless;
    int turns = 0;
    long delivered = 0; // by the last report
    TRunLoop loop(
        camera_, &writer_, settings_, [&] { return ++turns > turnsUntilInterrupt; },
        [&](const TProgress& progress) { delivered = progress.delivered; });
    const RunEnd end = loop.Run();
    if (settings_.isRecorded) loop.FinishRecorded(delivered);
    message_ = loop.Message();
    counts_ = loop.Statistics().Counts();
    EXPECT_TRUE(loop.Statistics().AddsUp());
    EXPECT_EQ(counts_.written, settings_.isRecorded ? delivered : writer_.ImagesWritten());
    for (std::size_t image = 0; image < writer_.images.size(); ++image)
      EXPECT_EQ(writer_.images[image], TestImage(kScriptedShape, writer_.labels[image].number)) << "torn";
    return end;
  }

  ScriptedCamera camera_;
  KeepingWriter writer_;
  TRunSettings settings_;
  std::string message_;
  TFrameCounts counts_;
};

TEST_F(RunLoop, ImagesOvertakenByTheCameraAreCountedAndNeverWritten)
{
  for (const int perFetch : {1, 2, 3, 9}) {
    for (const int slots : {1, 2, 8}) {
      SCOPED_TRACE(::testing::Message() << perFetch << " images per copy, ring of " << slots);
      camera_ = ScriptedCamera();
      writer_ = KeepingWriter();
      camera_.isEndless = true;
      camera_.slots = slots;
      camera_.imagesPerFetch = perFetch;
      camera_.imagesPerWait = 5;
      camera_.imagesInRun = 500;
      Run(400);
      EXPECT_EQ(counts_.lostInCamera, 0);
      if (perFetch > 1 || slots < 5) {
        EXPECT_GT(counts_.overwritten, 0);
      }
      if (slots == 8 && perFetch < 3) {
        EXPECT_GT(counts_.written, 50) << "after skipping ahead some copies must succeed";
      }
    }
  }
}

TEST_F(RunLoop, FramesThatTheCameraCountsAsLostGoBeforeGapsOfItsClock)
{
  camera_.frameDropped = 4; // no more than late, for all that the clock says
  camera_.lostFrames = 0;
  EXPECT_EQ(Run(10), RunEnd::Complete);
  EXPECT_EQ(counts_.lostInCamera, 0);
}

TEST_F(RunLoop, SoftwareTriggerIsSentOncePerImage)
{
  camera_.isTriggered = true;
  camera_.isEndless = true;
  settings_.isSoftwareTriggered = true;
  settings_.imageSeconds = 20.0; // a trigger is repeated after that
  settings_.hasSteadyRate = false;
  ASSERT_EQ(Run(20), RunEnd::Complete);
  EXPECT_EQ(camera_.triggers, 20);
  EXPECT_EQ(counts_.delivered, 20);
  EXPECT_FALSE(counts_.lostInCamera);
}

TEST_F(RunLoop, TimeLimitOfARecordedRunIsForImagesNotForTheDisk)
{
  settings_.isRecorded = true;
  for (const long wanted : {6, 5}) {
    camera_ = ScriptedCamera();
    camera_.isTriggered = true; // by hand: 5 images, and then no more while the run goes on
    camera_.triggers = 5;
    settings_.noImageSeconds = 0.02;
    EXPECT_EQ(Run(wanted, 100), wanted > 5 ? RunEnd::CameraFailed : RunEnd::Interrupted) << message_;
    EXPECT_EQ(message_.find("--timeout") != std::string::npos, wanted > 5) << message_;
    EXPECT_TRUE(camera_.IsAborted());
  }
}

TEST_F(RunLoop, InterruptWhileImagesOfAnEndedRunAreTakenIsNoFailure)
{
  camera_.imagesPerWait = camera_.imagesInRun = 10;
  EXPECT_EQ(Run(10, 3), RunEnd::Interrupted) << message_;
  EXPECT_EQ(counts_.written, 10);
}

struct TEndCase
{
  const char* name;
  bool isRecorded;
  int images;        // of 10 wanted, that the camera sends until its run ends
  long frameDropped; // image before which it loses two frames
  unsigned int status;
  RunEnd end;
  const char* message; // a part of it
};

class RunLoopEnds : public RunLoop, public ::testing::WithParamInterface<TEndCase>
{
};

TEST_P(RunLoopEnds, StatusAndCountTogetherShowHowTheRunEnded)
{
  const TEndCase& c = GetParam();
  settings_.isRecorded = c.isRecorded;
  camera_.imagesPerWait = 3;
  camera_.imagesInRun = c.images;
  camera_.frameDropped = c.frameDropped;
  camera_.endStatus = static_cast<int>(c.status);
  EXPECT_EQ(Run(10), c.end);
  EXPECT_NE(message_.find(c.message), std::string::npos) << message_;
  EXPECT_EQ(counts_.delivered, c.images);
  EXPECT_EQ(counts_.lostInCamera, c.frameDropped > 0 ? 2 : 0);
  EXPECT_FALSE(camera_.IsAborted()) << "it has ended by itself";
}

INSTANTIATE_TEST_SUITE_P(
    Statuses, RunLoopEnds,
    ::testing::Values(
        TEndCase{"FetchedTooFew", false, 7, 0, RC_IDLE, RunEnd::CameraFailed, "after 7 images, before all"},
        TEndCase{"RecordedTooFew", true, 7, 0, RC_IDLE, RunEnd::CameraFailed, "after 7 images, before all"},
        TEndCase{"RecordedExplainedByLoss", true, 8, 4, RC_STATUS_TIMED_OUT, RunEnd::Complete, ""},
        TEndCase{"RecordedUnexplained", true, 7, 4, RC_STATUS_TIMED_OUT, RunEnd::CameraFailed, "TIMED_OUT"},
        TEndCase{"RecordedDiskFull", true, 5, 0, RC_STATUS_SPOOL_ISSUE, RunEnd::OutputFailed, "20026"}),
    [](const ::testing::TestParamInfo<TEndCase>& tested) { return std::string(tested.param.name); });

TEST(TickGapCounter, CountsFramesMissingBetweenJitteryTimestamps)
{
  TTickGapCounter gaps;
  long long ticks = 0;
  for (int frame = 0; frame < 1000; ++frame) {
    ticks += 10'000 + frame % 3 * 400; // up to 8 % late
    if (frame % 100 == 50 || frame % 100 == 51 || frame == 77) continue;
    gaps.Add(ticks);
  }
  EXPECT_EQ(gaps.Missing(), 21);
  TTickGapCounter restarted;
  for (const long long restart : {900'000, 901'000, 0, 1000, 2000, 4000}) restarted.Add(restart);
  EXPECT_EQ(restarted.Missing(), 1);
}

} // namespace
} // namespace vxtool
