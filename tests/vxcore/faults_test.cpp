// SPDX-License-Identifier: MIT
// The fault plan and the call log of the simulator.
#include "tests/vxcore/SimulatedCameraTest.h"

#include <algorithm>
#include <cmath>

namespace {

using vxsim::TCounterPattern;

constexpr const char* kFree = "[Camera0]\nClock = free\nScene = stamp\n";

/// A free-running camera with four queued buffers, acquiring.
class SimulatorFaults : public SimulatedCameraTest
{
protected:
  void StartCamera(bool metadata = false)
  {
    Configure(kFree);
    camera = std::make_unique<OpenCamera>();
    camera->SetArea(32, 1);
    camera->Set(L"CycleMode", L"Continuous");
    camera->Set(L"MetadataEnable", metadata);
    camera->QueueBuffers(4);
    camera->Start();
  }
  static void AddFault(const char* rule) { ASSERT_EQ(VXSIM_AddFault(rule), VX_SUCCESS) << VXSIM_GetLastError(); }
  uint32_t TailWord(size_t bytesFromEnd) const
  {
    uint32_t word = 0;
    std::memcpy(&word, camera->buffers[0]->data() + camera->buffers[0]->size() - bytesFromEnd, 4);
    return word;
  }
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

TEST_F(SimulatorFaults, CallsCanFailAroundOpeningDelayAndLeaveTextsOpen)
{
  Configure(kFree);
  AddFault("call VX_Open at 1 out -1");
  AddFault("call VX_InitialiseLibrary at 1 rc 53");
  int handle = 5;
  EXPECT_EQ(VX_InitialiseLibrary(), 53);
  EXPECT_EQ(VX_Open(0, &handle), VX_SUCCESS);
  EXPECT_EQ(handle, -1);
  EXPECT_EQ(VXSIM_GetOpenCount(), 0);

  StartCamera();
  AddFault("call VX_WaitBuffer at 1 delay 80ms");
  const auto start = std::chrono::steady_clock::now();
  EXPECT_EQ(camera->Wait(), VX_SUCCESS);
  EXPECT_GE(std::chrono::steady_clock::now() - start, std::chrono::milliseconds(80));
  AddFault("call VX_WaitBuffer from 1 rc 0");
  auto* buffer = reinterpret_cast<unsigned char*>(8);
  int size = 5;
  EXPECT_EQ(VX_WaitBuffer(camera->handle, &buffer, &size, 0), VX_SUCCESS);
  EXPECT_EQ(buffer, nullptr);
  EXPECT_EQ(size, 0);
  AddFault("call VX_GetEnumeratedString feature TriggerMode at 1 unterminated");
  wchar_t text[8] = {};
  EXPECT_EQ(VX_GetEnumeratedString(camera->handle, L"TriggerMode", 0, text, 8), VX_SUCCESS);
  EXPECT_EQ(std::wstring(text, 8), std::wstring(8, L'X'));
}

TEST_F(SimulatorFaults, ValueRulesReplaceWhatIsRead)
{
  StartCamera();
  AddFault("value FrameRate set nan");
  AddFault("value ImageSizeBytes set 9223372036854775807");
  AddFault("value CameraModel set AN OTHER at 2");
  EXPECT_TRUE(std::isnan(camera->Float(L"FrameRate")));
  EXPECT_EQ(camera->Int(L"ImageSizeBytes"), INT64_MAX);
  EXPECT_EQ(camera->String(L"CameraModel"), L"TRELLIS CMOS");
  EXPECT_EQ(camera->String(L"CameraModel"), L"AN OTHER");
  EXPECT_EQ(camera->String(L"CameraModel"), L"TRELLIS CMOS");
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

TEST_F(SimulatorFaults, WaitEndsInTimeWhenEveryFrameIsDroppedAndLetsOthersIn)
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
}

TEST_F(SimulatorFaults, LateFramesAndStallsHoldUpTheRun)
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

TEST_F(SimulatorFaults, FlushLeavesNoFrameToRepeat)
{
  StartCamera();
  EXPECT_EQ(camera->Wait(), VX_SUCCESS);
  EXPECT_EQ(VX_Flush(camera->handle), VX_SUCCESS);
  camera->QueueBuffers(1);
  AddFault("frame 1 repeat");
  EXPECT_EQ(camera->Wait(), VX_SUCCESS);
  EXPECT_EQ(camera->frame.data(), nullptr);
}

TEST_F(SimulatorFaults, MetadataIsDamagedAsPlanned)
{
  StartCamera(true);
  AddFault("chunk at 1 len 0xFFFFFFFC");
  ASSERT_EQ(camera->Wait(), VX_SUCCESS);
  EXPECT_EQ(TailWord(4), 0xFFFFFFFCU);
  EXPECT_EQ(TailWord(8), 1U);
  VXSIM_ClearFaults();
  camera->Requeue();
  AddFault("chunk 1 cid 7");
  AddFault("chunk 2 truncated");
  AddFault("chunk 3 random 5");
  AddFault("chunk 4 cid 0");
  ASSERT_EQ(camera->Wait(), VX_SUCCESS);
  const size_t whole = camera->frame.size();
  uint32_t word = 0;
  std::memcpy(&word, camera->frame.data() + whole - 8, 4);
  EXPECT_EQ(word, 7U);
  ASSERT_EQ(camera->Wait(), VX_SUCCESS);
  EXPECT_EQ(camera->frame.size(), whole - 6);
  ASSERT_EQ(camera->Wait(), VX_SUCCESS);
  std::memcpy(&word, camera->frame.data() + whole - 4, 4);
  EXPECT_NE(word, 12U);
  EXPECT_TRUE(
      TCounterPattern::VerifyAny(camera->frame.first(64), TCounterPattern::EBody::Any)); // pixels untouched
}

TEST_F(SimulatorFaults, UnpluggedCameraAnswersNothingUntilItIsBack)
{
  StartCamera();
  AddFault("camera at 3 unplug");
  EXPECT_EQ(camera->Wait(), VX_SUCCESS);
  EXPECT_EQ(camera->Wait(), VX_SUCCESS);
  EXPECT_EQ(camera->Wait(1000), VX_ERR_COMMUNICATION);
  long long value = 0;
  int flag = 0;
  EXPECT_EQ(VX_GetInt(camera->handle, L"AOIWidth", &value), VX_ERR_COMMUNICATION);
  EXPECT_EQ(VX_IsImplemented(camera->handle, L"AOIWidth", &flag), VX_ERR_COMMUNICATION);
  EXPECT_EQ(VX_Flush(camera->handle), VX_ERR_COMMUNICATION);
  EXPECT_EQ(camera->Statistics().buffersHeld, 0U);
  EXPECT_EQ(VXSIM_SetPlugged(0, 1), VX_SUCCESS);
  EXPECT_FALSE(camera->Bool(L"CameraAcquiring"));
  EXPECT_EQ(VXSIM_SetPlugged(0, 0), VX_SUCCESS);
  EXPECT_EQ(VX_Close(camera->handle), VX_ERR_COMMUNICATION);
  EXPECT_EQ(VXSIM_GetOpenCount(), 0);
  int handle = -1;
  EXPECT_EQ(VX_Open(0, &handle), VX_ERR_COMMUNICATION);
  EXPECT_EQ(VXSIM_SetPlugged(0, 1), VX_SUCCESS);
  EXPECT_EQ(VX_Open(0, &handle), VX_SUCCESS);
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

TEST_F(SimulatorFaults, RulesOfOneDeviceLeaveTheOthersAlone)
{
  ASSERT_EQ(VXSIM_Configure(nullptr), VX_SUCCESS);
  ASSERT_EQ(VX_InitialiseLibrary(), VX_SUCCESS);
  const OpenCamera first(0);
  const OpenCamera second(1);
  AddFault("call VX_GetInt device 1 from 1 rc 53");
  long long value = 0;
  EXPECT_EQ(VX_GetInt(first.handle, L"AOIWidth", &value), VX_SUCCESS);
  EXPECT_EQ(VX_GetInt(second.handle, L"AOIWidth", &value), 53);
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

std::vector<std::string> CallLog()
{
  std::vector<std::string> lines(VXSIM_GetCallCount());
  for (size_t i = 0; i < lines.size(); ++i) {
    char line[128];
    EXPECT_EQ(VXSIM_GetCall(i, line, sizeof line), VX_SUCCESS);
    lines[i] = line;
  }
  return lines;
}

TEST_F(SimulatorFaults, CallLogHoldsTheExactSequence)
{
  Configure(kFree);
  AddFault("call VX_Command feature AcquisitionStart at 1 rc 37");
  VXSIM_StartCallLog(0);
  {
    OpenCamera logged;
    logged.TrySet(L"ExposureTime", 0.01);
    logged.TrySet(L"AOIWidth", 5000LL);
    logged.TrySet(L"TriggerMode", L"Software");
    VX_SetEnumerated(logged.handle, L"CycleMode", 1);
    logged.Bool(L"CameraAcquiring");
    logged.QueueBuffers(1);
    logged.Command(L"AcquisitionStart");
    logged.Wait();
  }
  VX_FinaliseLibrary();
  VXSIM_StopCallLog();
  VX_InitialiseLibrary();
  const std::vector<std::string> expected = {
      "VX_Open 0 -> 0",
      "VX_SetFloat ExposureTime 0.01 -> 0",
      "VX_SetInt AOIWidth 5000 -> 6",
      "VX_SetEnumString TriggerMode Software -> 0",
      "VX_SetEnumerated CycleMode 1 -> 0",
      "VX_GetBool CameraAcquiring -> 0",
      "VX_GetInt ImageSizeBytes -> 0",
      "VX_QueueBuffer 8388608 -> 0",
      "VX_Command AcquisitionStart -> 37",
      "VX_Close -> 0",
      "VX_FinaliseLibrary -> 0",
  };
  EXPECT_EQ(CallLog(), expected);
  char cut[8];
  EXPECT_EQ(VXSIM_GetCall(0, cut, sizeof cut), VX_SUCCESS);
  EXPECT_STREQ(cut, "VX_Open");
  EXPECT_EQ(VXSIM_GetCall(11, cut, sizeof cut), VX_ERR_OUT_OF_RANGE);

  VXSIM_StartCallLog(1);
  OpenCamera().Wait(0);
  EXPECT_EQ(CallLog()[1], "VX_WaitBuffer 0 -> 50");
}

} // namespace
