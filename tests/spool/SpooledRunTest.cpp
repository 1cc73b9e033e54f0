// SPDX-License-Identifier: MIT
// What becomes of a frame, and of a run, between acquisition and disk.
#include "acquisition/TCircularBuffer.h"
#include "acquisition/TDispatchQueue_Spool.h"
#include "acquisition/TVxmcdAcquisitionManager.h"
#include "spool/TSpoolLayout.h"
#include "tests/spool/TDiskFaults.h"
#include "tests/support/TScratchDirectory.h"
#include "tests/support/TSpoolDirectory.h"
#include "tests/utility/SystemCalls.h"
#include "utility/TQuorinCriticalSection.h"
#include "vxcore_simulator.h"

#include <gtest/gtest.h>

#include <array>
#include <chrono>
#include <cstring>
#include <future>
#include <optional>

namespace {

class SpooledRun : public ::testing::Test
{
protected:
  static constexpr std::size_t kBytes = 4096;

  /// A run of one dark frame that ends with @p end.
  template <class End>
  void WriteOneFrame(int camera, const End& end)
  {
    TCircularBuffer ring;
    ASSERT_EQ(ring.Allocate(kBytes, 2), 0);
    ring.Reset();
    TDispatchQueue_Spool queue(&ring, camera);
    queue.SetRun({run_.Path(), TSpoolLayout::kImagesTogether}, 1);
    queue.Initialise(kBytes);
    queue.Begin();
    unsigned char* const frame = ring.GetBuffer(1);
    std::memset(frame, 0, kBytes);
    std::memcpy(frame + kBytes - sizeof end, &end, sizeof end);
    EXPECT_EQ(queue.Dispatch(frame, kBytes), 0);
    queue.Finalise();
    EXPECT_EQ(run_.Text("run", "State"), "complete");
  }

  TScratchDirectory scratch_;
  TSpoolDirectory run_{scratch_.Directory() + "/run"};
};

// Dark pixels may look like the end of a timestamp.
TEST_F(SpooledRun, PixelsAreNotTakenForATimestamp)
{
  WriteOneFrame(kNoCoreHandle, std::array<unsigned short, 4>{1, 0, 12, 0}); // identifier and length
  EXPECT_EQ(run_.Text("run", "FirstFrameTick"), "");
}

class SpooledRunOfACamera : public SpooledRun
{
protected:
  void SetUp() override
  {
    ASSERT_EQ(VXSIM_Configure("[Simulator]\nCameras=1\n[Camera0]\nModel=RQ512_LX\nClock=free\n"
                              "[Camera0.AOIWidth]\nValue=512\n[Camera0.AOIHeight]\nValue=512\n"),
              VX_SUCCESS);
    ASSERT_EQ(VX_InitialiseLibrary(), VX_SUCCESS);
    ASSERT_EQ(VX_Open(0, &camera_), VX_SUCCESS);
    PublishCoreHandle(kFirstCameraHandle, camera_);
    manager_.emplace(&cameraLock_, camera_, 20);
  }

  void TearDown() override
  {
    manager_.reset();
    VX_Close(camera_);
    PublishCoreHandle(kFirstCameraHandle, kNoCoreHandle);
    VX_FinaliseLibrary();
    VXSIM_Configure(nullptr);
  }

  int camera_ = VX_HANDLE_NONE;
  QuorinUtility::TQuorinCriticalSection cameraLock_;
  TDiskFaults disk_;
  std::optional<TVxmcdAcquisitionManager> manager_;
};

TEST_F(SpooledRunOfACamera, KeepsAllBitsOfTheFirstTick)
{
  struct TTimestamp
  {
    std::int64_t tick = 0x123456789ABCDE;
    std::array<std::uint32_t, 2> identifierAndLength{1, 12};
  } timestamp;
  ASSERT_EQ(VX_SetBool(camera_, L"MetadataEnable", 1), VX_SUCCESS);
  WriteOneFrame(camera_, timestamp);
  EXPECT_EQ(run_.Number("run", "FirstFrameTick"), timestamp.tick);
}

TEST_F(SpooledRunOfACamera, ReportsItsDiskAlsoAfterAStartThatWasRefused)
{
  disk_.writeDelayMs = 1000;
  disk_.writesUntilError = 0;
  manager_->SetRunMode(TVxmcdAcquisitionManager::kSeries);
  manager_->SetImageCount(5);
  manager_->SetSpool(true, TSpoolLayout::kImagesTogether, run_.Path().c_str());
  ASSERT_EQ(manager_->Start(), TVxmcdAcquisitionManager::kDone);
  ASSERT_TRUE(
      system_calls::Eventually([this] { return manager_->GetDispatchQueue()->GetMaximumImageAvailable() > 0; }));
  EXPECT_EQ(manager_->Start(), TVxmcdAcquisitionManager::kStartFailed) << "the first run waits for its disk";
  ASSERT_TRUE(system_calls::Eventually([this] { return !manager_->IsRunning(); }));
  EXPECT_TRUE(manager_->IsSpoolIssues());

  disk_.writeDelayMs = 0;
  manager_->SetSpool(false, TSpoolLayout::kImagesTogether, nullptr);
  ASSERT_EQ(manager_->Start(), TVxmcdAcquisitionManager::kDone);
  ASSERT_TRUE(system_calls::Eventually([this] { return !manager_->IsRunning(); }));
  EXPECT_FALSE(manager_->IsSpoolIssues());
}

TEST_F(SpooledRunOfACamera, TakesLongerThanTheLimitToFinishIfTheDiskMakesProgress)
{
  constexpr int kImages = 40;
  manager_.emplace(&cameraLock_, camera_, 1000);
  ASSERT_EQ(VX_SetInt(camera_, L"FrameCount", kImages), VX_SUCCESS);
  disk_.writeDelayMs = 100;
  manager_->SetRunMode(TVxmcdAcquisitionManager::kSeries);
  manager_->SetImageCount(kImages);
  manager_->SetSpool(true, TSpoolLayout::kImagePerFile, run_.Path().c_str());
  ASSERT_EQ(manager_->Start(), TVxmcdAcquisitionManager::kDone);
  ASSERT_TRUE(system_calls::Eventually(
      [this] { return manager_->GetDispatchQueue()->GetMaximumImageAvailable() == kImages; }));

  manager_->SetSpool(false, TSpoolLayout::kImagePerFile, nullptr);
  auto start = std::async(std::launch::async, [this] { return manager_->Start(); });
  EXPECT_TRUE(system_calls::Eventually([&] {
    EXPECT_EQ(manager_->Stop(), TVxmcdAcquisitionManager::kNotAcquiring);
    return start.wait_for(std::chrono::seconds(0)) == std::future_status::ready;
  }));
  EXPECT_EQ(start.get(), TVxmcdAcquisitionManager::kStartFailed) << "an abort ends its wait";
  EXPECT_TRUE(manager_->IsRunning()) << "nobody has waited for the disk";
  EXPECT_EQ(manager_->Start(), TVxmcdAcquisitionManager::kDone);
  EXPECT_EQ(run_.Text("run", "State"), "complete");
  EXPECT_EQ(run_.Number("run", "ImagesWritten"), kImages);
}

} // namespace
