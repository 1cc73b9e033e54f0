// SPDX-License-Identifier: MIT
// Calls in every state of a camera's life, and that nothing is left of it afterwards.
#include "tests/support/CounterCameraTest.h"
#include "tests/support/ProcessFigures.h"
#include "tests/support/Sanitizers.h"

#include <sys/wait.h>
#include <unistd.h>

namespace {

class Lifecycle : public CounterCameraTest
{
protected:
  /// Calls that must be refused without a camera, each with whatever arguments.
  static void ExpectEverythingIsRefused()
  {
    int i = 0;
    long l = 0;
    float f = 0.0F;
    long long ticks = 0;
    unsigned int u = 0;
    unsigned short pixel = 0;
    const std::pair<const char*, unsigned int> codes[] = {
        {"SetExposureTime", SetExposureTime(1)},
        {"SetAccumulationCycleTime", SetAccumulationCycleTime(1)},
        {"SetKineticCycleTime", SetKineticCycleTime(1)},
        {"SetAcquisitionMode", SetAcquisitionMode(1)},
        {"SetNumberAccumulations", SetNumberAccumulations(1)},
        {"SetNumberKinetics", SetNumberKinetics(1)},
        {"SetReadMode", SetReadMode(4)},
        {"SetTriggerMode", SetTriggerMode(0)},
        {"SendSoftwareTrigger", SendSoftwareTrigger()},
        {"SetOverlapMode", SetOverlapMode(1)},
        {"SetFrameTransferMode", SetFrameTransferMode(1)},
        {"GetAcquisitionTimings", GetAcquisitionTimings(&f, &f, &f)},
        {"GetReadOutTime", GetReadOutTime(&f)},
        {"GetMaximumExposure", GetMaximumExposure(&f)},
        {"GetDetector", GetDetector(&i, &i)},
        {"StartAcquisition", StartAcquisition()},
        {"AbortAcquisition", AbortAcquisition()},
        {"WaitForAcquisition", WaitForAcquisition()},
        {"WaitForAcquisitionTimeOut", WaitForAcquisitionTimeOut(-1)},
        {"CancelWait", CancelWait()},
        {"GetStatus", GetStatus(&i)},
        {"GetAcquisitionProgress", GetAcquisitionProgress(&l, &l)},
        {"GetSizeOfCircularBuffer", GetSizeOfCircularBuffer(&l)},
        {"SetMetaData", SetMetaData(1)},
        {"vxsys_GetRawMetaDataInfo", vxsys_GetRawMetaDataInfo(&u, &ticks, 0)},
        {"GetMostRecentImage16", GetMostRecentImage16(&pixel, 1)},
        {"GetTotalNumberImagesAcquired", GetTotalNumberImagesAcquired(&l)},
        {"ShutDown", ShutDown()}};
    for (const auto& [name, code] : codes) EXPECT_EQ(code, RC_NOT_INITIALIZED) << name;
    EXPECT_EQ(FreeInternalMemory(), RC_SUCCESS);
    EXPECT_EQ(createAcquisitionEvents(), RC_SUCCESS);
    MyInitialise();
    MyFinalise();
  }
};

TEST_F(Lifecycle, WithoutACameraEverythingIsRefused)
{
  ExpectEverythingIsRefused();
  Open();
  ASSERT_EQ(ShutDown(), RC_SUCCESS);
  ExpectEverythingIsRefused();
}

TEST_F(Lifecycle, NoCameraIsAttached)
{
  ASSERT_EQ(VXSIM_Configure("[Simulator]\nCameras=0\n"), VX_SUCCESS);
  for (int attempt = 0; attempt < 3; ++attempt) EXPECT_EQ(Initialize(nullptr), RC_NO_CAMERA);
  ExpectEverythingIsRefused();
}

TEST_F(Lifecycle, ClosesInTheMiddleOfARun)
{
  for (int round = 0; round < 20; ++round) {
    Open();
    StartUntilAborted();
    Push(round);
    ASSERT_EQ(ShutDown(), RC_SUCCESS);
  }
}

TEST_F(Lifecycle, ClosesWhileTheLastFramesAreStillBeingDispatched)
{
  for (int round = 0; round < 20; ++round) {
    Open();
    StartSeries(2000);
    Push(2000); // the camera has stopped by itself, the thread is not through yet
    ASSERT_EQ(ShutDown(), RC_SUCCESS);
  }
}

TEST_F(Lifecycle, UnpluggedCameraEndsTheRunAndCanBeClosed)
{
  Open();
  ExposeBriefly();
  StartUntilAborted();
  Push(5);
  ASSERT_TRUE(HasImages(5));
  const double before = ProcessorSeconds();
  ASSERT_EQ(VXSIM_SetPlugged(0, 0), VX_SUCCESS);
  EXPECT_TRUE(Eventually([] { return Status() == RC_STATUS_TIMED_OUT; }));
  if (!kHasSanitizer) { // which have costs of their own
    EXPECT_LT(ProcessorSeconds() - before, 0.5) << "the thread asks in a busy loop";
  }
  EXPECT_EQ(StartAcquisition(), RC_FRAME_UNAVAILABLE);
  EXPECT_EQ(AbortAcquisition(), RC_FEATURE_ERROR);
  EXPECT_EQ(ShutDown(), RC_SUCCESS);

  ASSERT_EQ(VXSIM_SetPlugged(0, 1), VX_SUCCESS);
  Open();
  ExpectCleanRun();
}

TEST_F(Lifecycle, NothingGrowsOverManyLives)
{
  const auto live = [this] {
    Open();
    StartSeries(3);
    Push(3);
    ASSERT_TRUE(HasImages(3));
    ASSERT_EQ(ShutDown(), RC_SUCCESS);
  };
  for (int warmUp = 0; warmUp < 20; ++warmUp) live();
  const int threads = ThreadCount();
  const int descriptors = DescriptorCount();
  const long bytes = ResidentBytes();
  for (int life = 0; life < 200; ++life) live();
  EXPECT_EQ(ThreadCount(), threads);
  EXPECT_EQ(DescriptorCount(), descriptors);
  if (!kHasSanitizer) { // which keep freed memory for a while
    EXPECT_LT(ResidentBytes() - bytes, 2000000);
  }
}

TEST_F(Lifecycle, ChildOfAForkHasNoCamera)
{
  Open();
  StartUntilAborted();
  const pid_t child = fork();
  ASSERT_GE(child, 0);
  if (child == 0) {
    int status = 0;
    long count = 0;
    const bool isRight = GetAvailableCameras(&count) == RC_NOT_SUPPORTED &&
                         GetStatus(&status) == RC_NOT_INITIALIZED && StartAcquisition() == RC_NOT_INITIALIZED &&
                         Initialize(nullptr) == RC_NO_CAMERA && ShutDown() == RC_NOT_INITIALIZED;
    _exit(isRight ? 0 : 1);
  }
  int status = -1;
  ASSERT_EQ(waitpid(child, &status, 0), child);
  EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0) << status;
  Push(3);
  EXPECT_TRUE(HasImages(3)) << "the parent's run goes on";
}

} // namespace
