// SPDX-License-Identifier: MIT
// Calls in every state of a camera's life, and that nothing is left of it afterwards.
#include "tests/support/CounterCameraTest.h"
#include "tests/support/ProcessFigures.h"
#include "tests/support/Sanitizers.h"

#include <sys/wait.h>
#include <unistd.h>

namespace {

using Lifecycle = CounterCameraTest;

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
                         vxmcd_SetIndependentCameras(0) == RC_NOT_SUPPORTED &&
                         vxmcd_SetCurrentCameraOfThread(101, nullptr) == RC_NOT_SUPPORTED &&
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
