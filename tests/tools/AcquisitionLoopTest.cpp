// SPDX-License-Identifier: MIT
// The acquisition loop with a camera that follows a script: overtaken copies, failures, interruption.
#include "tests/tools/ScriptedCamera.h"
#include "tools/TAcquisitionLoop.h"
#include "vxmcd.h"

#include <algorithm>
#include <memory>

namespace vxtool {
namespace {

class AcquisitionLoop : public ::testing::Test
{
protected:
  AcquisitionLoop() { settings_.shape = kScriptedShape; }

  RunEnd Run(long wanted)
  {
    settings_.wantedImages = wanted;
    settings_.isEndless = camera_.isEndless;
    loop_ = std::make_unique<TAcquisitionLoop>(
        camera_, &writer_, settings_,
        [this] { return interruptAfter_ > 0 && writer_.ImagesWritten() >= interruptAfter_; },
        [](const TProgress&) {});
    const RunEnd end = loop_->Run();
    EXPECT_TRUE(loop_->Account().AddsUp());
    EXPECT_EQ(loop_->Account().Written(), writer_.ImagesWritten());
    for (std::size_t image = 0; image < writer_.images.size(); ++image)
      EXPECT_EQ(writer_.images[image], TestImage(kScriptedShape, writer_.labels[image].number)) << "torn";
    return end;
  }
  const TRunTotals& Totals() const { return loop_->Account().Totals(); }

  ScriptedCamera camera_;
  KeepingWriter writer_;
  TLoopSettings settings_;
  long interruptAfter_ = 0;
  std::unique_ptr<TAcquisitionLoop> loop_;
};

TEST_F(AcquisitionLoop, SeriesIsFetchedWholeWithItsTimestamps)
{
  camera_.imagesInRun = 50;
  camera_.imagesPerWait = 7;
  camera_.frameDropped = 20;
  ASSERT_EQ(Run(50), RunEnd::Complete);
  EXPECT_EQ(Totals().written, 50);
  EXPECT_EQ(Totals().delivered, 50);
  EXPECT_EQ(Totals().lostInCamera, 2);
  EXPECT_EQ(writer_.labels.back().number, 50);
  EXPECT_EQ(writer_.labels[0].ticks, 0) << "the clock of the first image";
  EXPECT_EQ(writer_.labels[18].ticks, 18'000);
  EXPECT_EQ(writer_.labels[19].ticks, 21'000);
}

TEST_F(AcquisitionLoop, EndlessRunStopsAfterTheImagesWanted)
{
  camera_.isEndless = true;
  camera_.imagesPerWait = 3;
  ASSERT_EQ(Run(100), RunEnd::Complete);
  EXPECT_EQ(Totals().written, 100);
  EXPECT_EQ(Totals().overwritten, 0);
  EXPECT_EQ(Totals().delivered, 102);
  EXPECT_EQ(Totals().notFetched, 2);
}

TEST_F(AcquisitionLoop, ImagesOvertakenByTheCameraAreCountedAndNeverWritten)
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
      EXPECT_EQ(Totals().delivered, Totals().fetched + Totals().overwritten + Totals().notFetched);
      if (perFetch > 1 || slots < 5) {
        EXPECT_GT(Totals().overwritten, 0);
      }
      EXPECT_EQ(Totals().lostInCamera, 0);
      if (slots == 8 && perFetch < 3) {
        EXPECT_GT(Totals().written, 50) << "skipping ahead must let some copies succeed";
      }
    }
  }
}

TEST_F(AcquisitionLoop, DamagedMetadataLeavesOneImageUnlabelled)
{
  camera_.imagesInRun = 30;
  camera_.imageWithoutTicks = 11;
  ASSERT_EQ(Run(30), RunEnd::Complete);
  EXPECT_EQ(Totals().withoutTimestamp, 1);
  EXPECT_EQ(Totals().lostInCamera, 0);
  EXPECT_EQ(writer_.labels[9].ticks, 9'000);
  EXPECT_FALSE(writer_.labels[10].ticks);
  EXPECT_EQ(writer_.labels[11].ticks, 11'000);
}

TEST_F(AcquisitionLoop, FailuresEndTheRunWithTheirReasonAndKeepWhatIsThere)
{
  camera_.imagesInRun = 12;
  camera_.endStatus = static_cast<int>(RC_STATUS_HARDWARE_OVERFLOW);
  EXPECT_EQ(Run(50), RunEnd::CameraFailed);
  EXPECT_EQ(Totals().written, 12);
  EXPECT_NE(loop_->Message().find("20019 RC_STATUS_HARDWARE_OVERFLOW"), std::string::npos) << loop_->Message();

  camera_ = ScriptedCamera();
  writer_ = KeepingWriter();
  camera_.imagesInRun = 3;
  EXPECT_EQ(Run(5), RunEnd::CameraFailed);
  EXPECT_NE(loop_->Message().find("after 3 images"), std::string::npos) << loop_->Message();

  camera_ = ScriptedCamera();
  writer_ = KeepingWriter();
  camera_.startCode = RC_FRAME_UNAVAILABLE;
  EXPECT_EQ(Run(5), RunEnd::CameraFailed);
  EXPECT_NE(loop_->Message().find("StartAcquisition: 20010"), std::string::npos) << loop_->Message();

  camera_ = ScriptedCamera();
  camera_.fetchCode = RC_P3_INVALID;
  EXPECT_EQ(Run(5), RunEnd::CameraFailed);
  EXPECT_NE(loop_->Message().find("20068"), std::string::npos) << loop_->Message();
  EXPECT_GT(Totals().notFetched, 0);
}

TEST_F(AcquisitionLoop, FullDiskAndInterruptionKeepTheBooks)
{
  camera_.isEndless = true;
  writer_.room = 10;
  EXPECT_EQ(Run(50), RunEnd::OutputFailed);
  EXPECT_EQ(Totals().written, 10);
  EXPECT_EQ(Totals().notWritten, 1);
  EXPECT_EQ(loop_->Message(), "disk full");

  camera_ = ScriptedCamera();
  writer_ = KeepingWriter();
  camera_.isEndless = true;
  camera_.imagesPerWait = 3;
  interruptAfter_ = 20;
  EXPECT_EQ(Run(0), RunEnd::Interrupted);
  EXPECT_GE(Totals().written, 20);
  EXPECT_EQ(Totals().overwritten, 0);
}

TEST_F(AcquisitionLoop, GivesUpWithoutAnImageOnlyWhenAskedTo)
{
  camera_.imagesPerWait = 0;
  settings_.noImageSeconds = 0.05;
  EXPECT_EQ(Run(1), RunEnd::CameraFailed);
  EXPECT_NE(loop_->Message().find("--timeout"), std::string::npos) << loop_->Message();
}

TEST_F(AcquisitionLoop, SoftwareTriggerIsSentOncePerImage)
{
  camera_.isTriggered = true;
  camera_.isEndless = true;
  settings_.isSoftwareTriggered = true;
  settings_.imageSeconds = 20.0; // a trigger is repeated after that
  settings_.isPaced = false;
  ASSERT_EQ(Run(20), RunEnd::Complete);
  EXPECT_EQ(camera_.triggers, 20);
  EXPECT_EQ(Totals().delivered, 20);
  EXPECT_FALSE(Totals().lostInCamera);
}

} // namespace
} // namespace vxtool
