// SPDX-License-Identifier: MIT
// The fault plan of the simulator.
#include "tests/vxcore/SimulatedCameraTest.h"

#include <algorithm>

namespace {

constexpr const char* kFree = "[Camera0]\nClock = free\nScene = stamp\n";

/// A free-running camera with four queued buffers, acquiring.
class SimulatorFaults : public SimulatedCameraTest
{
protected:
  void StartCamera()
  {
    Configure(kFree);
    camera = std::make_unique<OpenCamera>();
    camera->SetArea(32, 1);
    camera->Set(L"CycleMode", L"Continuous");
    camera->QueueBuffers(4);
    camera->Start();
  }
  static void AddFault(const char* rule) { ASSERT_EQ(VXSIM_AddFault(rule), VX_SUCCESS) << VXSIM_GetLastError(); }
  void TearDown() override
  {
    camera.reset();
    SimulatedCameraTest::TearDown();
  }

  std::unique_ptr<OpenCamera> camera;
};

TEST_F(SimulatorFaults, CallRulesAnswerACodeAtTheirTurn)
{
  StartCamera();
  AddFault("call VX_GetInt feature AOIWidth at 2 rc 12");
  AddFault("call VX_GetFloat every 3 rc 13");
  AddFault("call VX_IsImplemented feature CameraModel from 2 out 2");
  long long value = -7;
  EXPECT_EQ(VX_GetInt(camera->handle, L"AOIHeight", &value), VX_SUCCESS);
  EXPECT_EQ(VX_GetInt(camera->handle, L"AOIWidth", &value), VX_SUCCESS);
  value = -7;
  EXPECT_EQ(VX_GetInt(camera->handle, L"AOIWidth", &value), 12);
  EXPECT_EQ(value, -7);
  EXPECT_EQ(VX_GetInt(camera->handle, L"AOIWidth", &value), VX_SUCCESS);
  double real = 0.0;
  int failures = 0;
  for (int i = 0; i < 9; ++i) failures += VX_GetFloat(camera->handle, L"FrameRate", &real) == 13;
  EXPECT_EQ(failures, 3);
  int flag = -1;
  for (const int expected : {1, 2, 2}) {
    EXPECT_EQ(VX_IsImplemented(camera->handle, L"CameraModel", &flag), VX_SUCCESS);
    EXPECT_EQ(flag, expected);
  }
  EXPECT_EQ(VXSIM_GetFaultsFired(), 6U);
  VXSIM_ClearFaults();
  EXPECT_EQ(VX_GetFloat(camera->handle, L"FrameRate", &real), VX_SUCCESS);
  EXPECT_EQ(VXSIM_GetFaultsFired(), 0U);
}

TEST_F(SimulatorFaults, FramesAreDroppedShortenedAndLengthened)
{
  StartCamera();
  AddFault("frame 2 drop");
  AddFault("frame 3 short 16");
  AddFault("frame 4 oversize 64");
  std::vector<std::pair<uint64_t, size_t>> seen;
  for (int i = 0; i < 4; ++i) {
    ASSERT_EQ(camera->Wait(10000), VX_SUCCESS);
    vxsim::TFrameStamp stamp;
    std::memcpy(&stamp, camera->frame.data(), sizeof stamp);
    seen.emplace_back(stamp.frameNumber, camera->frame.size());
  }
  EXPECT_EQ(seen, (std::vector<std::pair<uint64_t, size_t>>{{1, 64}, {3, 16}, {4, 128}, {5, 64}}));
  EXPECT_EQ(camera->Statistics().framesDropped, 1U);
  EXPECT_EQ(VXSIM_GetFaultsFired(), 3U);
}

TEST_F(SimulatorFaults, WaitEndsInTimeWhenEveryFrameIsDroppedAndReleasesTheLock)
{
  StartCamera();
  AddFault("frame any drop");
  EXPECT_EQ(camera->Wait(), VX_ERR_TIMED_OUT);
  EXPECT_EQ(camera->Statistics().framesDropped, 1U);
  const auto start = std::chrono::steady_clock::now();
  EXPECT_EQ(camera->Wait(30), VX_ERR_TIMED_OUT);
  EXPECT_GE(std::chrono::steady_clock::now() - start, std::chrono::milliseconds(30));

  const uint64_t before = camera->Statistics().framesDropped;
  std::thread waiter([this] { EXPECT_EQ(camera->Wait(VX_INFINITE), VX_SUCCESS); });
  EXPECT_TRUE(Eventually([&] { return camera->Statistics().framesDropped > before + 100; }));
  VXSIM_ClearFaults();
  waiter.join();
}

TEST_F(SimulatorFaults, BuffersAreSwappedNullForeignAndRepeated)
{
  StartCamera();
  AddFault("frame 1 swap 3");
  AddFault("frame 2 null");
  AddFault("frame 3 foreign");
  AddFault("frame 5 repeat");
  const auto buffer = [this](size_t i) { return camera->buffers[i]->data(); };
  ASSERT_EQ(camera->Wait(), VX_SUCCESS);
  EXPECT_EQ(camera->frame.data(), buffer(2));
  ASSERT_EQ(camera->Wait(), VX_SUCCESS);
  EXPECT_EQ(camera->frame.data(), nullptr);
  ASSERT_EQ(camera->Wait(), VX_SUCCESS);
  for (size_t i = 0; i < 4; ++i) EXPECT_NE(camera->frame.data(), buffer(i));
  EXPECT_EQ(camera->FrameNumber(), 3U);
  ASSERT_EQ(camera->Wait(), VX_SUCCESS);
  EXPECT_EQ(camera->frame.data(), buffer(1));
  ASSERT_EQ(camera->Wait(), VX_SUCCESS);
  EXPECT_EQ(camera->frame.data(), buffer(1));
  ASSERT_EQ(camera->Wait(), VX_SUCCESS);
  EXPECT_EQ(camera->frame.data(), buffer(0));
  EXPECT_EQ(camera->FrameNumber(), 6U);
  EXPECT_EQ(camera->Statistics().buffersHeld, 1U);

  EXPECT_EQ(VX_Flush(camera->handle), VX_SUCCESS);
  camera->QueueBuffers(1);
  AddFault("frame 1 repeat");
  EXPECT_EQ(camera->Wait(), VX_SUCCESS);
  EXPECT_EQ(camera->frame.data(), nullptr); // a flush leaves nothing to repeat
}

TEST_F(SimulatorFaults, LateFramesAndStallsDelayTheRun)
{
  StartCamera();
  AddFault("frame 1 late 60ms");
  AddFault("camera at 2 stall 60ms");
  for (uint64_t number = 1; number <= 2; ++number) {
    const auto start = std::chrono::steady_clock::now();
    EXPECT_EQ(camera->Wait(0), VX_ERR_TIMED_OUT);
    ASSERT_EQ(camera->Wait(10000), VX_SUCCESS);
    EXPECT_GE(std::chrono::steady_clock::now() - start, std::chrono::milliseconds(55));
    EXPECT_EQ(camera->FrameNumber(), number);
  }
  EXPECT_EQ(camera->Wait(0), VX_SUCCESS);

  AddFault("camera any stall 1000s");
  EXPECT_EQ(camera->Wait(0), VX_ERR_TIMED_OUT);
  VXSIM_ClearFaults();
  camera->Stop();
  camera->QueueBuffers(1);
  camera->Start(); // not in the next run
  EXPECT_EQ(camera->Wait(0), VX_SUCCESS);
}

TEST_F(SimulatorFaults, ReplugBringsTheCameraBackByItself)
{
  StartCamera();
  AddFault("camera at 1 replug 30ms");
  EXPECT_EQ(camera->Wait(), VX_ERR_COMMUNICATION);
  long long value = 0;
  EXPECT_TRUE(Eventually([&] { return VX_GetInt(camera->handle, L"AOIWidth", &value) == VX_SUCCESS; }));

  // Not when it is unplugged by hand meanwhile.
  camera->Start();
  VXSIM_ClearFaults();
  AddFault("camera at 1 replug 1ms");
  EXPECT_EQ(camera->Wait(), VX_ERR_COMMUNICATION);
  EXPECT_EQ(VXSIM_SetPlugged(0, 0), VX_SUCCESS);
  const auto later = std::chrono::steady_clock::now() + std::chrono::milliseconds(5);
  EXPECT_TRUE(Eventually([&] { return std::chrono::steady_clock::now() > later; }));
  EXPECT_EQ(VX_GetInt(camera->handle, L"AOIWidth", &value), VX_ERR_COMMUNICATION);
}

TEST_F(SimulatorFaults, SeededPlansActAtRandomButAlwaysAlike)
{
  const auto run = [this](const char* seed) {
    StartCamera();
    AddFault(seed);
    for (int i = 0; i < 8; ++i) AddFault(("call VX_GetInt from 1 rc " + std::to_string(20 + i)).c_str());
    std::vector<int> codes;
    long long value = 0;
    for (int i = 0; i < 100; ++i) codes.push_back(VX_GetInt(camera->handle, L"AOIWidth", &value));
    camera.reset();
    return codes;
  };
  std::vector<std::vector<int>> runs;
  for (const char* seed : {"seed 1", "seed 2", "seed 3", "seed 4"}) runs.push_back(run(seed));
  EXPECT_EQ(runs[0], run("seed 1"));
  bool differ = false;
  size_t fired = 0;
  for (const auto& codes : runs) {
    differ = differ || codes != runs[0];
    fired += static_cast<size_t>(std::ranges::count_if(codes, [](int code) { return code != VX_SUCCESS; }));
  }
  EXPECT_TRUE(differ);
  EXPECT_GT(fired, 0U);
  EXPECT_LT(fired, 400U);

  StartCamera();
  AddFault("seed 1");
  VXSIM_ClearFaults(); // the seed, too
  AddFault("call VX_GetInt from 1 rc 53");
  long long value = 0;
  for (int i = 0; i < 20; ++i) EXPECT_EQ(VX_GetInt(camera->handle, L"AOIWidth", &value), 53);
}

TEST_F(SimulatorFaults, RulesThatMakeNoSenseAreRefusedWithAReason)
{
  for (const char* rule :
       {"", "nonsense", "call", "call GetInt at 1 rc 5", "call VX_GetInt at 0 rc 5", "call VX_GetInt at x rc 5",
        "call VX_GetInt at 1", "call VX_GetInt at 1 rc", "call VX_GetInt at 1 rc 5 more", "value FrameRate set",
        "frame drop", "frame 1 explode", "frame 1 short", "chunk any len", "camera at 5 replug 300",
        "camera at 5 stall -1s", "seed", "call VX_GetInt device x at 1 rc 5"}) {
    EXPECT_EQ(VXSIM_AddFault(rule), VX_ERR_OUT_OF_RANGE) << rule;
    EXPECT_NE(std::string(VXSIM_GetLastError()), "") << rule;
  }
  EXPECT_EQ(VXSIM_AddFault(nullptr), VX_ERR_NULL_ARGUMENT);
  EXPECT_EQ(VXSIM_AddFault("frame 1 drop # with a comment"), VX_SUCCESS);
}

} // namespace
