// SPDX-License-Identifier: MIT
// Several threads on one camera, and two cameras: nothing may crash, hang or race, whoever comes first.
#include "tests/support/CounterCameraTest.h"

#include <atomic>
#include <functional>
#include <thread>

namespace {

/// Runs each action again and again in a thread of its own, until every one had its turns.
void InParallel(const std::vector<std::function<void(int)>>& actions, int turns)
{
  std::vector<std::thread> threads;
  for (const auto& action : actions)
    threads.emplace_back([&action, turns] {
      for (int turn = 0; turn < turns; ++turn) action(turn);
    });
  for (std::thread& thread : threads) thread.join();
}

class Concurrency : public CounterCameraTest
{
};

TEST_F(Concurrency, ClosingSendsEveryWaiterHome)
{
  for (int round = 0; round < 10; ++round) {
    Open();
    StartUntilAborted();
    std::atomic<int> inside{0};
    std::vector<std::thread> waiters;
    for (int waiter = 0; waiter < 4; ++waiter)
      waiters.emplace_back([&] {
        ++inside;
        const unsigned int code = WaitForAcquisition();
        EXPECT_TRUE(code == RC_NO_NEW_DATA || code == RC_NOT_INITIALIZED) << code;
      });
    ASSERT_TRUE(Eventually([&] { return inside == 4; }));
    EXPECT_EQ(ShutDown(), RC_SUCCESS);
    for (std::thread& waiter : waiters) waiter.join();
  }
}

TEST_F(Concurrency, OneOfTwoThreadsClosesACamera)
{
  Open();
  ASSERT_EQ(VXSIM_AddFault("call VX_SetBool feature MetadataEnable any delay 100ms"), VX_SUCCESS);
  std::atomic<int> closed{0};
  const auto close = [&](int) { closed += ShutDown() == RC_SUCCESS ? 1 : 0; };
  InParallel({close, close}, 1);
  EXPECT_EQ(closed, 1);
  EXPECT_EQ(VXSIM_GetOpenCount(), 0);
}

TEST_F(Concurrency, StartsAbortsAndReleasesFromManyThreads)
{
  Open();
  SetAcquisitionMode(kModeUntilAborted);
  const auto isOneOf = [](unsigned int code, std::initializer_list<unsigned int> codes) {
    EXPECT_TRUE(std::find(codes.begin(), codes.end(), code) != codes.end()) << code;
  };
  TCounterImage image{};
  InParallel({[&](int) { isOneOf(StartAcquisition(), {RC_SUCCESS}); },
              [&](int) {
                isOneOf(AbortAcquisition(), {RC_SUCCESS, RC_IDLE});
              },
              [&](int) { isOneOf(FreeInternalMemory(), {RC_SUCCESS}); },
              [&](int) {
                isOneOf(WaitForAcquisitionTimeOut(5), {RC_SUCCESS, RC_NO_NEW_DATA});
                isOneOf(CancelWait(), {RC_SUCCESS});
              },
              [&](int) {
                VXSIM_PushFrames(0, 3);
                isOneOf(GetMostRecentImage16(image.data(), image.size()),
                        {RC_SUCCESS, RC_NO_NEW_DATA, RC_FRAME_UNAVAILABLE});
                isOneOf(GetOldestImage16(image.data(), image.size()), {RC_SUCCESS, RC_NO_NEW_DATA});
                const int status = Status();
                isOneOf(static_cast<unsigned int>(status), {RC_ACQUIRING, RC_IDLE});
              }},
             15);
  AbortAcquisition();
  ExpectCleanRun();
}

TEST_F(Concurrency, ImagesStayWholeWhileAnotherThreadStartsAnew)
{
  Open();
  SetAcquisitionMode(kModeUntilAborted);
  std::atomic<bool> isOver{false};
  std::thread reader([&] {
    TCounterImage image{};
    while (!isOver) {
      image.fill(0);
      if (GetMostRecentImage16(image.data(), image.size()) != RC_SUCCESS || image[0] == 0) continue;
      ASSERT_NE(FrameNumberOf(image), 0u);
    }
  });
  for (int round = 0; round < 30; ++round) {
    ASSERT_EQ(StartAcquisition(), RC_SUCCESS);
    Push(20);
    ASSERT_TRUE(HasImages(20));
    if (round % 3 == 0) FreeInternalMemory();
  }
  isOver = true;
  reader.join();
}

class TwoCameras : public SimulatedCameraTest
{
protected:
  TwoCameras() : SimulatedCameraTest(kTwoManualCameras) {}
};

TEST_F(TwoCameras, AnotherCameraIsOpenedAndClosedWhileOneRuns)
{
  Open();
  SetAcquisitionMode(kModeUntilAborted);
  ASSERT_EQ(StartAcquisition(), RC_SUCCESS);
  for (int round = 0; round < 20; ++round) {
    ASSERT_EQ(VXSIM_PushFrames(0, 5), VX_SUCCESS);
    ASSERT_EQ(SetCurrentCamera(102), RC_SUCCESS);
    ASSERT_EQ(Initialize(nullptr), RC_SUCCESS);
    ASSERT_EQ(ShutDown(), RC_SUCCESS);
    ASSERT_EQ(SetCurrentCamera(101), RC_SUCCESS);
  }
  EXPECT_EQ(ShutDown(), RC_SUCCESS);
}

TEST_F(TwoCameras, FramesOfTheOtherCameraDoNotEnterTheRing)
{
  Open();
  SetAcquisitionMode(kModeUntilAborted);
  ASSERT_EQ(StartAcquisition(), RC_SUCCESS);
  ASSERT_EQ(SetCurrentCamera(102), RC_SUCCESS);
  Open();
  SetAcquisitionMode(kModeUntilAborted);
  ASSERT_EQ(StartAcquisition(), RC_SUCCESS);
  // Both threads wait for the frames of 102 now; those that the wrong one gets are not counted anywhere.
  ASSERT_EQ(VXSIM_PushFrames(1, 50), VX_SUCCESS);
  EXPECT_EQ(FreeInternalMemory(), RC_SUCCESS);
  EXPECT_EQ(ShutDown(), RC_SUCCESS);
  ASSERT_EQ(SetCurrentCamera(101), RC_SUCCESS);
  long images = -1;
  EXPECT_EQ(GetTotalNumberImagesAcquired(&images), RC_SUCCESS);
  EXPECT_EQ(images, 0);
  EXPECT_EQ(ShutDown(), RC_SUCCESS);
}

} // namespace
