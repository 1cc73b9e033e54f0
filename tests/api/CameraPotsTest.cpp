// SPDX-License-Identifier: MIT
// Potentiometers through the interface, on the buses of the simulated cameras.
#include "tests/support/SimulatedCameraTest.h"
#include "tests/support/TScratchWorkingDirectory.h"

#include <gtest/gtest.h>

#include <atomic>
#include <functional>
#include <latch>
#include <thread>

namespace {

constexpr const char* kCamera = "[Simulator]\nCameras=1\n[Camera0]\nModel=TRELLIS CMOS\nSource=manual\n";
constexpr const char* kExampleFile = VXMCD_TEST_EXAMPLES "/potentiometers.ini";

class CameraPotsApi : public SimulatedCameraTest
{
protected:
  CameraPotsApi() : SimulatedCameraTest(kCamera) {}

  void OpenWithFile()
  {
    ASSERT_EQ(Initialize(nullptr), RC_SUCCESS);
    ASSERT_EQ(vxsys_CameraPotsLoadFile(kExampleFile), RC_SUCCESS);
  }

  /// Calls @p notified for every change from now on.
  void Observe(std::function<void()> notified)
  {
    notified_ = std::move(notified);
    ASSERT_EQ(vxsys_CameraPotsRegisterObserver(Notified, this), RC_SUCCESS);
  }

  static int Value(int group, int pot)
  {
    int value = -1;
    EXPECT_EQ(vxsys_CameraPotsGetPotValue(group, pot, &value), 0u);
    return value;
  }
  static int Rail(int group, int pot)
  {
    int value = -1;
    EXPECT_EQ(vxsys_CameraPotsGetRailValue(group, pot, &value), 0u);
    return value;
  }

private:
  static unsigned int Notified(void* context)
  {
    static_cast<CameraPotsApi*>(context)->notified_();
    return 0;
  }

  std::function<void()> notified_;
};

TEST_F(CameraPotsApi, CodesAreMixedAsCallersKnowThem)
{
  const TScratchWorkingDirectory here;
  ASSERT_EQ(Initialize(nullptr), RC_SUCCESS);
  EXPECT_EQ(vxsys_CameraPotsLoadFile("missing.ini"), RC_FILE_LOAD_ERROR);
  EXPECT_EQ(vxsys_CameraPotsLoadFile(nullptr), RC_FILE_LOAD_ERROR);
  here.WriteFile("one.ini", "[Bias]\nNoPots=1\n");
  EXPECT_EQ(vxsys_CameraPotsLoadFile("one.ini"), RC_FILE_LOAD_ERROR);
  EXPECT_EQ(vxsys_CameraPotsCommitValuesFromFile(), RC_SUCCESS);
  int value = 4711;
  EXPECT_EQ(vxsys_CameraPotsSetPotValue(0, 0, 9), 1u);

  ASSERT_EQ(vxsys_CameraPotsLoadFile(kExampleFile), RC_SUCCESS);
  EXPECT_EQ(vxsys_CameraPotsGetNumberGroups(&value), 0u);
  EXPECT_EQ(value, 2);
  EXPECT_EQ(vxsys_CameraPotsGetNumberPotsInGroup(0, &value), 0u);
  EXPECT_EQ(value, 3);
  char name[256] = "";
  EXPECT_EQ(vxsys_CameraPotsGetGroupName(1, name), 0u);
  EXPECT_STREQ(name, "Gain");
  EXPECT_EQ(vxsys_CameraPotsGetPotInfo(0, 1, 0, name), 0u);
  EXPECT_STREQ(name, "VRST_Low");

  for (const auto& [set, expected] : {std::pair{0, 0}, {1, 1}, {-1, 0}, {2, 1}}) {
    EXPECT_EQ(vxsys_CameraPotsSetPotDefaultEnable(set), 0u);
    EXPECT_EQ(vxsys_CameraPotsGetPotDefaultEnable(&value), 0u);
    EXPECT_EQ(value, expected) << set;
  }
  EXPECT_EQ(vxsys_CameraPotsSaveFile("saved.ini"), RC_SUCCESS);
  EXPECT_EQ(here.ReadFile("saved.ini"), "[Bias]\n\n\n[Gain]\n");
  EXPECT_EQ(vxsys_CameraPotsSaveFile("no/such/directory/saved.ini"), RC_SUCCESS);
}

TEST_F(CameraPotsApi, ValuesReachTheDevicesAndTheirPowerOnRegisters)
{
  OpenWithFile();
  EXPECT_EQ(Value(0, 0), 0x80);
  ASSERT_EQ(VXSIM_StartCallLog(0), VX_SUCCESS);
  EXPECT_EQ(vxsys_CameraPotsSetPotValue(0, 0, 200), 0u);
  const auto calls = LoggedCalls();
  VXSIM_StopCallLog();
  EXPECT_EQ(calls.size(), 2u * 8) << "two transfers of two bytes";

  EXPECT_EQ(Value(0, 0), 200);
  EXPECT_EQ(Rail(0, 0), 64 + 200 / 2);
  EXPECT_EQ(Rail(0, 2), 0) << "has no monitor";
  EXPECT_EQ(vxsys_CameraPotsSetPotDefaultEnable(0), 0u);
  EXPECT_EQ(vxsys_CameraPotsSetPotValue(0, 1, 11), 0u);
  EXPECT_EQ(Value(0, 1), 11);
  EXPECT_EQ(vxsys_CameraPotsSetPotValue(1, 0, 22), 0u);

  ASSERT_EQ(ShutDown(), RC_SUCCESS);
  OpenWithFile();
  EXPECT_EQ(Value(0, 0), 200) << "became the power-on value";
  EXPECT_EQ(Value(0, 1), 0x80) << "did not";
  EXPECT_EQ(Value(1, 0), 0x80);

  // What is known now becomes the power-on value when that is switched on again.
  EXPECT_EQ(vxsys_CameraPotsSetPotDefaultEnable(0), 0u);
  EXPECT_EQ(vxsys_CameraPotsSetPotValue(1, 0, 22), 0u);
  EXPECT_EQ(vxsys_CameraPotsSetPotValue(1, 1, 33), 0u);
  EXPECT_EQ(Value(1, 0), 22);
  EXPECT_EQ(vxsys_CameraPotsSetPotDefaultEnable(1), 0u);
  ASSERT_EQ(ShutDown(), RC_SUCCESS);
  OpenWithFile();
  EXPECT_EQ(Value(1, 0), 22);
  EXPECT_EQ(Value(1, 1), 0x80) << "was never read";

  EXPECT_EQ(vxsys_CameraPotsCommitValuesFromFile(), RC_SUCCESS);
  EXPECT_EQ((std::vector{Value(0, 0), Value(0, 1), Value(0, 2), Value(1, 0), Value(1, 1)}),
            (std::vector{150, 64, 128, 200, 40}));
}

TEST_F(CameraPotsApi, ClosingTheCameraForgetsFileAndObservers)
{
  OpenWithFile();
  int notified = 0;
  Observe([&notified] { ++notified; });
  ASSERT_EQ(ShutDown(), RC_SUCCESS);
  ASSERT_EQ(Initialize(nullptr), RC_SUCCESS);
  int groups = -1;
  EXPECT_EQ(vxsys_CameraPotsGetNumberGroups(&groups), 0u);
  EXPECT_EQ(groups, 0);
  EXPECT_EQ(vxsys_CameraPotsLoadFile(kExampleFile), RC_SUCCESS);
  EXPECT_EQ(notified, 0);
}

// One thread a camera is what the interface asks for; more of them must still do no harm.
TEST_F(CameraPotsApi, ThreadsWaitForOneAnother)
{
  OpenWithFile();
  std::atomic<int> notified{0};
  Observe([&notified] { ++notified; });
  std::vector<std::thread> threads;
  threads.emplace_back([] {
    for (int round = 0; round < 200; ++round)
      vxsys_CameraPotsLoadFile(round % 20 == 10 ? "missing.ini" : kExampleFile);
  });
  threads.emplace_back([] {
    for (int round = 0; round < 5; ++round) vxsys_CameraPotsSetPotValue(0, 0, 100 + round);
  });
  threads.emplace_back([] {
    for (int round = 0; round < 300; ++round) {
      int value = -1;
      if (vxsys_CameraPotsGetPotValue(0, 0, &value) == 0) {
        EXPECT_TRUE(value == 0x80 || (value >= 100 && value < 105)) << value;
      }
    }
  });
  threads.emplace_back([] {
    for (int round = 0; round < 300; ++round) {
      int context = 0;
      vxsys_CameraPotsRegisterObserver([](void* count) -> unsigned int { return ++*static_cast<int*>(count) > 0; },
                                       &context);
      vxsys_CameraPotsUnregisterObserver(&context);
    }
  });
  for (std::thread& thread : threads) thread.join();
  EXPECT_GE(notified, 200);
}

// An observer keeps the first camera in a call, and so its ShutDown() too.
TEST_F(CameraPotsApi, AThreadWithItsOwnCameraDoesNotWaitForTheShutDownOfAnother)
{
  ASSERT_EQ(VXSIM_Configure(kTwoManualCameras), VX_SUCCESS);
  OpenWithFile();
  std::latch isInside{1};
  std::latch mayLeave{1};
  Observe([&] {
    isInside.count_down();
    mayLeave.wait();
  });
  std::thread inside([] { EXPECT_EQ(vxsys_CameraPotsSetPotValue(0, 0, 9), 0u); });
  isInside.wait();
  std::thread closing([] { EXPECT_EQ(ShutDown(), RC_SUCCESS); });
  int status = 0;
  EXPECT_TRUE(Eventually([&] { return GetStatus(&status) == RC_NOT_INITIALIZED; }));
  std::thread again([] {
    EXPECT_EQ(vxmcd_SetCurrentCameraOfThread(101, nullptr), RC_SUCCESS);
    EXPECT_EQ(ShutDown(), RC_NOT_INITIALIZED) << "one closes it at a time";
  });
  std::atomic<bool> isDone{false};
  std::thread other([&] {
    int percent = 0;
    EXPECT_EQ(vxmcd_SetCurrentCameraOfThread(102, nullptr), RC_SUCCESS);
    for (const unsigned int code :
         {Initialize(nullptr), GetFIFOUsage(&percent), StartAcquisition(), AbortAcquisition(), ShutDown()})
      EXPECT_EQ(code, RC_SUCCESS);
    isDone = true;
  });
  EXPECT_TRUE(Eventually([&] { return isDone.load(); }));
  mayLeave.count_down();
  for (std::thread* thread : {&inside, &closing, &again, &other}) thread->join();
  EXPECT_EQ(VXSIM_GetOpenCount(), 0);
}

} // namespace
