// SPDX-License-Identifier: MIT
// Runs of the simulated cameras: ends, times, triggers, memory, buffers, threads, and what lies in a frame.
#include "tests/vxcore/SimulatedCameraTest.h"
#include "vxcore/simulated/imaging/TFrameSettings.h"

#include <algorithm>
#include <atomic>
#include <deque>
#include <functional>

namespace {

using vxsim::TCounterPattern;

constexpr const char* kFree = "[Camera0]\nClock = free\nScene = stamp\n";
constexpr const char* kManual = "[Camera0]\nSource = manual\nScene = stamp\nMemoryFrames = 3\n";
constexpr const char* kReal = "[Camera0]\nModel = RQ512_LX\nScene = stamp\n";

using SimulatorAcquisition = SimulatedCameraTest;

/// Ticks of the timestamps of a run's frames.
std::vector<int64_t> CollectTicks(OpenCamera& camera, int count, long long exposuresPerFrame = 1)
{
  camera.Set(L"MetadataEnable", true);
  camera.Set(L"FrameCount", count * exposuresPerFrame);
  camera.QueueBuffers(count);
  EXPECT_EQ(camera.Command(L"TimestampClockReset"), VX_SUCCESS);
  camera.Start();
  std::vector<int64_t> ticks;
  while (camera.Wait() == VX_SUCCESS) ticks.push_back(camera.Ticks());
  EXPECT_EQ(ticks.size(), static_cast<size_t>(count));
  EXPECT_FALSE(camera.Bool(L"CameraAcquiring"));
  return ticks;
}

TEST_F(SimulatorAcquisition, FixedCycleEndsWhenItsLastFrameIsInABuffer)
{
  Configure(kFree);
  OpenCamera camera;
  camera.SetArea(32, 1);
  camera.Set(L"FrameCount", 3LL);
  camera.QueueBuffers(5);
  for (int run = 1; run <= 2; ++run) {
    camera.Start();
    for (uint64_t number = 1; number <= 3; ++number) {
      EXPECT_TRUE(camera.Bool(L"CameraAcquiring"));
      ASSERT_EQ(camera.Wait(), VX_SUCCESS);
      EXPECT_EQ(camera.FrameNumber(), number);
      EXPECT_TRUE(TCounterPattern::VerifyAny(camera.frame, TCounterPattern::EBody::Any));
      camera.Requeue();
    }
    EXPECT_FALSE(camera.Bool(L"CameraAcquiring"));
    EXPECT_EQ(camera.Wait(), VX_ERR_TIMED_OUT);
  }
  const VXSIM_Statistics statistics = camera.Statistics();
  EXPECT_EQ(statistics.framesProduced, 6U);
  EXPECT_EQ(statistics.framesDelivered, 6U);
  EXPECT_EQ(statistics.buffersQueued, 11U);
  EXPECT_EQ(statistics.buffersHeld, 5U);
  EXPECT_EQ(statistics.runsStarted, 2U);
}

TEST_F(SimulatorAcquisition, BuffersAreFilledInTheOrderInWhichTheyWereQueued)
{
  Configure(kFree);
  OpenCamera camera;
  camera.SetArea(32, 1);
  camera.Set(L"CycleMode", L"Continuous");
  std::deque<const unsigned char*> expected;
  const auto queue = [&](int count) {
    camera.QueueBuffers(count);
    for (auto buffer = camera.buffers.end() - count; buffer != camera.buffers.end(); ++buffer)
      expected.push_back((*buffer)->data());
  };
  queue(12);
  camera.Start();
  for (size_t i = 0; i < 200; ++i) {
    ASSERT_EQ(camera.Wait(), VX_SUCCESS);
    ASSERT_EQ(camera.frame.data(), expected.front());
    camera.Requeue();
    expected.push_back(expected.front());
    expected.pop_front();
    if (i == 5) queue(28); // more than there ever were, and not from the beginning
  }
  EXPECT_TRUE(camera.Bool(L"CameraAcquiring"));
}

TEST_F(SimulatorAcquisition, TimestampsFollowFrameRateAndBurstRate)
{
  Configure(kFree);
  OpenCamera camera;
  camera.Set(L"AOIHeight", 256LL);
  camera.Set(L"ExposureTime", 0.001);
  camera.Set(L"FrameRate", 50.0);
  std::vector<int64_t> ticks = CollectTicks(camera, 4);
  for (size_t i = 1; i < ticks.size(); ++i) EXPECT_NEAR(ticks[i] - ticks[i - 1], 100e6 / 50.0, 1.0);

  EXPECT_EQ(VX_Flush(camera.handle), VX_SUCCESS);
  camera.Set(L"AccumulateCount", 8LL); // eight exposures at 100 Hz take longer than 1/50 s
  camera.Set(L"BurstRate", 100.0);
  ticks = CollectTicks(camera, 3, 8);
  for (size_t i = 1; i < ticks.size(); ++i) EXPECT_NEAR(ticks[i] - ticks[i - 1], 100e6 * 8 / 100.0, 1.0);
  EXPECT_GE(camera.Int(L"TimestampClock"), ticks.back());
}

TEST_F(SimulatorAcquisition, TimestampsAreExactAfterAThousandSecondsAndMore)
{
  Configure(kFree);
  OpenCamera camera;
  EXPECT_EQ(camera.Command(L"TimestampClockReset"), VX_SUCCESS);
  long long expected = 0;
  for (const double seconds : {0.25, 1000.0, 1e6}) {
    EXPECT_EQ(VXSIM_AdvanceTime(0, seconds), VX_SUCCESS);
    expected += static_cast<long long>(seconds * 100e6);
    EXPECT_EQ(camera.Int(L"TimestampClock"), expected);
  }
}

TEST_F(SimulatorAcquisition, ExternalPulsesStartFramesAndTheOnesTooEarlyAreIgnored)
{
  Configure(std::string(kFree) + "TriggerPeriod = 0.1\nTriggerWidth = 0.02\nTriggerDelay = 0.005\n");
  OpenCamera camera;
  camera.Set(L"TriggerMode", L"External");
  camera.Set(L"ExposureTime", 0.15); // busy at every second pulse
  const std::vector<int64_t> ticks = CollectTicks(camera, 3);
  ASSERT_EQ(ticks.size(), 3U);
  EXPECT_NEAR(ticks[0], 0.005 * 100e6, 1.0);
  EXPECT_NEAR(ticks[1] - ticks[0], 0.2 * 100e6, 1.0);
  EXPECT_NEAR(ticks[2] - ticks[1], 0.2 * 100e6, 1.0);
  EXPECT_EQ(camera.Statistics().triggersIgnored, 2U);
}

TEST_F(SimulatorAcquisition, ExternalStartWaitsForOnePulseAndExternalExposureTakesItsWidth)
{
  Configure(std::string(kFree) + "TriggerWidth = 0.02\n");
  OpenCamera camera;
  camera.Set(L"TriggerMode", L"External Exposure");
  EXPECT_DOUBLE_EQ(camera.Float(L"ExposureTime"), 0.02);
  camera.Set(L"TriggerMode", L"External Start");
  camera.Set(L"FrameCount", 2LL);
  camera.QueueBuffers(2);
  camera.Start();
  EXPECT_EQ(camera.Wait(), VX_ERR_TIMED_OUT);
  EXPECT_EQ(VXSIM_FireTrigger(0), VX_SUCCESS);
  EXPECT_EQ(camera.Wait(), VX_SUCCESS);
  EXPECT_EQ(camera.Wait(), VX_SUCCESS);
  EXPECT_FALSE(camera.Bool(L"CameraAcquiring"));
}

TEST_F(SimulatorAcquisition, LevelTransitionsTriggerOnTheConfiguredEdges)
{
  Configure("[Camera0]\nModel = TARN 1M\nClock = free\nScene = stamp\nTriggerPeriod = 1\nTriggerWidth = 0.25\n");
  OpenCamera camera;
  camera.Set(L"TriggerMode", L"External Level Transition");
  camera.Set(L"TriggerConfiguration", L"Both");
  std::vector<int64_t> ticks = CollectTicks(camera, 4);
  EXPECT_EQ(ticks, (std::vector<int64_t>{0, 250000, 1000000, 1250000}));
  camera.Set(L"TriggerConfiguration", L"Falling");
  ticks = CollectTicks(camera, 2);
  ASSERT_EQ(ticks.size(), 2U);
  EXPECT_EQ(ticks[1] - ticks[0], 1000000);
}

TEST_F(SimulatorAcquisition, RealClockIgnoresTriggersWhileTheSensorIsBusy)
{
  Configure(kReal);
  OpenCamera camera;
  camera.SetArea(32, 1);
  camera.Set(L"CycleMode", L"Continuous");
  camera.Set(L"TriggerMode", L"Software");
  camera.Set(L"ExposureTime", 0.2);
  camera.QueueBuffers(4);
  camera.Start();
  EXPECT_EQ(camera.Command(L"SoftwareTrigger"), VX_SUCCESS);
  EXPECT_EQ(camera.Command(L"SoftwareTrigger"), VX_SUCCESS);
  EXPECT_EQ(camera.Statistics().triggersIgnored, 1U);
  EXPECT_EQ(camera.Wait(10000), VX_SUCCESS);
  EXPECT_EQ(camera.Wait(0), VX_ERR_TIMED_OUT);
}

TEST_F(SimulatorAcquisition, FullMemoryLosesFramesAndTheNextWaitSaysSoOnce)
{
  Configure(kManual);
  OpenCamera camera;
  camera.SetArea(32, 1);
  camera.Set(L"CycleMode", L"Continuous");
  camera.Start();
  EXPECT_EQ(VXSIM_PushFrames(0, 3), VX_SUCCESS);
  EXPECT_EQ(VXSIM_PushFrames(0, 2), VX_ERR_HARDWARE_OVERFLOW);
  EXPECT_EQ(camera.Statistics().framesOverflowed, 2U);
  camera.QueueBuffers(4);
  EXPECT_EQ(VXSIM_PushFrame(0, nullptr, 0), VX_SUCCESS);
  EXPECT_EQ(camera.Wait(), VX_ERR_HARDWARE_OVERFLOW);
  for (const uint64_t number : {1U, 2U, 3U, 6U}) {
    ASSERT_EQ(camera.Wait(), VX_SUCCESS);
    EXPECT_EQ(camera.FrameNumber(), number);
  }
  EXPECT_EQ(camera.Wait(), VX_ERR_TIMED_OUT);
  EXPECT_EQ(camera.Statistics().framesProduced, 6U);

  // A flush and a new run forget it.
  EXPECT_EQ(VXSIM_PushFrames(0, 4), VX_ERR_HARDWARE_OVERFLOW);
  EXPECT_EQ(VX_Flush(camera.handle), VX_SUCCESS);
  EXPECT_EQ(camera.Wait(), VX_ERR_TIMED_OUT);
  EXPECT_EQ(VXSIM_PushFrames(0, 1), VX_ERR_HARDWARE_OVERFLOW);
  camera.Stop();
  camera.Start();
  EXPECT_EQ(camera.Wait(), VX_ERR_TIMED_OUT);
}

TEST_F(SimulatorAcquisition, QueueingABufferWakesWhoeverCanMakeTheFrame)
{
  Configure(kFree);
  OpenCamera camera;
  camera.SetArea(32, 1);
  camera.Start();
  std::atomic<bool> ended{false};
  std::thread waiter([&] {
    EXPECT_EQ(camera.Wait(VX_INFINITE), VX_SUCCESS);
    ended = true;
  });
  EXPECT_TRUE(Eventually([&] { return camera.Statistics().waitsBlocked == 1; }));
  camera.QueueBuffers(1);
  EXPECT_TRUE(Eventually([&] { return ended.load(); }));
  if (!ended) VX_Close(camera.handle); // for the join
  waiter.join();
}

TEST_F(SimulatorAcquisition, FramesInMemoryAfterTheLastExposureGoIntoBuffersThatAreQueuedLater)
{
  Configure(kReal);
  OpenCamera camera;
  camera.SetArea(32, 1);
  camera.Set(L"ExposureTime", 0.0001);
  camera.Set(L"FrameCount", 3LL);
  camera.Start();
  ASSERT_TRUE(Eventually([&] { return camera.Statistics().framesProduced == 3; }));
  for (uint64_t number = 1; number <= 3; ++number) {
    EXPECT_EQ(camera.Wait(10), VX_ERR_TIMED_OUT); // the camera has nothing to do but to wait for a buffer
    camera.QueueBuffers(1);
    ASSERT_EQ(camera.Wait(10000), VX_SUCCESS);
    EXPECT_EQ(camera.FrameNumber(), number);
  }
}

TEST_F(SimulatorAcquisition, BuffersAndStartsThatCannotWorkAreRefused)
{
  Configure(kFree);
  OpenCamera camera;
  camera.SetArea(32, 1);
  alignas(16) unsigned char buffer[256];
  EXPECT_EQ(VX_QueueBuffer(camera.handle, nullptr, 64), VX_ERR_NULL_ARGUMENT);
  EXPECT_EQ(VX_QueueBuffer(camera.handle, buffer + 4, 64), VX_ERR_BUFFER_MISALIGNED);
  EXPECT_EQ(VX_QueueBuffer(camera.handle, buffer, 63), VX_ERR_BUFFER_TOO_SMALL);
  EXPECT_EQ(VX_QueueBuffer(camera.handle, buffer, -1), VX_ERR_BUFFER_TOO_SMALL);
  EXPECT_EQ(VX_QueueBuffer(camera.handle, buffer, 64), VX_SUCCESS);
  camera.Set(L"MetadataEnable", true); // the frame grows, the buffer does not
  EXPECT_EQ(camera.Command(L"AcquisitionStart"), VX_ERR_START_REFUSED);
  EXPECT_EQ(VX_Flush(camera.handle), VX_SUCCESS);
  EXPECT_EQ(camera.Command(L"AcquisitionStart"), VX_SUCCESS);
  EXPECT_EQ(VX_WaitBuffer(camera.handle, nullptr, nullptr, 0), VX_ERR_NULL_ARGUMENT);
}

TEST_F(SimulatorAcquisition, NoBufferIsTouchedAfterFlushOrClose)
{
  const struct
  {
    std::string configuration;
    bool isFree;
    long long height;
    int rounds;
  } rows[] = {{"[Camera0]\nModel = RQ512_LX\nScene = counter\n", false, 128, 20}, {kFree, true, 1, 500}};
  for (const auto& row : rows) {
    Configure(row.configuration);
    auto camera = std::make_unique<OpenCamera>();
    camera->SetArea(512, row.height);
    camera->Set(L"ExposureTime", 0.0001);
    camera->Set(L"CycleMode", L"Continuous");
    camera->Start();
    std::atomic<bool> ends{!row.isFree};
    std::thread taker([&ends, handle = camera->handle] { // makes the frames where the camera has no thread
      unsigned char* buffer = nullptr;
      int size = 0;
      while (!ends) VX_WaitBuffer(handle, &buffer, &size, 1);
    });
    const auto produced = [&camera] { return camera->Statistics().framesProduced; };
    for (int round = 0; round < row.rounds; ++round) {
      const uint64_t before = produced();
      camera->QueueBuffers(row.isFree ? 12 : 3);
      ASSERT_TRUE(Eventually([&] { return produced() > before + 1; }));
      ASSERT_EQ(VX_Flush(camera->handle), VX_SUCCESS); // likely in the middle of a frame
      for (const auto& buffer : camera->buffers) std::ranges::fill(*buffer, static_cast<unsigned char>(0xA5));
      const uint64_t after = produced();
      ASSERT_TRUE(row.isFree || Eventually([&] { return produced() > after + 3; }));
      for (const auto& buffer : camera->buffers) {
        ASSERT_TRUE(std::ranges::all_of(*buffer, [](unsigned char byte) { return byte == 0xA5; }));
      }
      EXPECT_EQ(camera->Statistics().buffersHeld, 0U);
      camera->buffers.clear(); // a late write is an error under the sanitizers
    }
    camera->QueueBuffers(3);
    ASSERT_EQ(VX_Close(camera->handle), VX_SUCCESS);
    camera->buffers.clear();
    EXPECT_EQ(camera->Statistics().buffersHeld, 0U);
    ends = true;
    taker.join();
  }
}

TEST_F(SimulatorAcquisition, BlockedWaitsEndWithTheirRunOrTheCamera)
{
  const auto stop = [](int handle) { VX_Command(handle, L"AcquisitionStop"); };
  const auto restart = [stop](int handle) {
    stop(handle);
    EXPECT_EQ(VX_Command(handle, L"AcquisitionStart"), VX_SUCCESS);
  };
  const auto loseTheLastFrame = [](int handle) {
    EXPECT_EQ(VXSIM_AddFault("frame any drop"), VX_SUCCESS);
    VX_Command(handle, L"SoftwareTrigger");
  };
  const auto unplug = [](int) { VXSIM_SetPlugged(0, 0); };
  const struct
  {
    const char* configuration;
    std::function<void(int)> end;
    int code;
  } rows[] = {{kReal, stop, VX_ERR_TIMED_OUT},       {kReal, restart, VX_ERR_TIMED_OUT},
              {kManual, stop, VX_ERR_TIMED_OUT},     {kReal, loseTheLastFrame, VX_ERR_TIMED_OUT},
              {kReal, unplug, VX_ERR_COMMUNICATION}, {kReal, VX_Close, VX_ERR_INVALID_HANDLE}};
  for (const auto& row : rows) {
    SCOPED_TRACE(&row - rows);
    Configure(row.configuration);
    OpenCamera camera;
    camera.SetArea(32, 1);
    camera.Set(L"TriggerMode", L"Software");
    camera.Set(L"ExposureTime", 0.0001);
    camera.QueueBuffers(1);
    camera.Start();
    std::vector<std::thread> waiters;
    std::atomic<int> ended{0};
    for (int i = 0; i < 2; ++i) {
      waiters.emplace_back([&] {
        unsigned char* buffer = nullptr;
        int size = 0;
        EXPECT_EQ(VX_WaitBuffer(camera.handle, &buffer, &size, VX_INFINITE), row.code);
        ++ended;
      });
    }
    ASSERT_TRUE(Eventually([&] { return camera.Statistics().waitsBlocked == 2; }));
    row.end(camera.handle);
    EXPECT_TRUE(Eventually([&] { return ended == 2; }));
    if (ended < 2) VX_Close(camera.handle); // for the join
    for (std::thread& waiter : waiters) waiter.join();
    EXPECT_EQ(camera.Statistics().waitsBlocked, 0U);
  }
}

TEST_F(SimulatorAcquisition, StopKeepsFilledBuffersAndForgetsTheCamerasMemory)
{
  Configure(kManual);
  OpenCamera camera;
  camera.SetArea(32, 1);
  camera.Set(L"CycleMode", L"Continuous");
  camera.QueueBuffers(1);
  camera.Start();
  EXPECT_EQ(VXSIM_PushFrames(0, 3), VX_SUCCESS);
  camera.Stop();
  EXPECT_EQ(camera.Wait(), VX_SUCCESS);
  EXPECT_EQ(camera.FrameNumber(), 1U);
  camera.Requeue();
  EXPECT_EQ(camera.Wait(), VX_ERR_TIMED_OUT);
  EXPECT_EQ(camera.Statistics().framesDiscarded, 2U);

  Configure("[Camera0]\nScene = beads\n[Camera0.ExposureTime]\nValue = 0.0001\n"); // it takes a while to paint
  OpenCamera painting;
  painting.QueueBuffers(1);
  painting.Start();
  ASSERT_TRUE(Eventually([&] { return painting.Statistics().framesProduced == 1; }));
  painting.Stop();
  EXPECT_EQ(painting.Wait(), VX_SUCCESS); // what was being painted is delivered
}

TEST_F(SimulatorAcquisition, EveryEncodingAndPaddingArrivesWithItsMetadata)
{
  for (const char* model : {"TRELLIS CMOS", "RQ512_LX", "TARN 1M"}) {
    for (const int padding : {0, 6}) {
      Configure("[Camera0]\nModel = " + std::string(model) +
                "\nClock = free\nScene = counter\nSeed = 9\nStridePadding = " + std::to_string(padding) + "\n");
      OpenCamera camera;
      camera.TrySet(L"PreAmpGainChannel", L"Low");
      camera.Set(L"MetadataEnable", true);
      camera.SetArea(33, 7);
      int count = 0;
      ASSERT_EQ(VX_GetEnumCount(camera.handle, L"PixelEncoding", &count), VX_SUCCESS);
      for (int index = 0; index < count; ++index) {
        ASSERT_EQ(VX_SetEnumIndex(camera.handle, L"PixelEncoding", index), VX_SUCCESS);
        SCOPED_TRACE(testing::Message() << model << " encoding " << index << " padding " << padding);
        vxsim::EPixelEncoding encoding{};
        const std::wstring name = camera.Enum(L"PixelEncoding");
        ASSERT_TRUE(vxsim::EncodingFromName(std::string(name.begin(), name.end()), encoding));
        const auto stride = static_cast<size_t>(camera.Int(L"AOIStride"));
        EXPECT_EQ(stride, vxsim::RowBytes(encoding, 33) + static_cast<size_t>(padding));

        camera.QueueBuffers(1);
        camera.Start();
        ASSERT_EQ(camera.Wait(), VX_SUCCESS);
        TCounterPattern::TKey key;
        key.seed = 9;
        key.runNumber = static_cast<uint32_t>(index) + 1;
        key.frameNumber = 1;
        EXPECT_TRUE(TCounterPattern::Verify(camera.frame.first(stride * 7), key));
        uint32_t tail[2]; // identifier and length of the last chunk: the timestamp
        std::memcpy(tail, camera.frame.data() + camera.frame.size() - 8, 8);
        EXPECT_EQ(tail[0], 1U);
        EXPECT_EQ(tail[1], 12U);
        uint32_t info[4]; // the chunk before it
        std::memcpy(info, camera.frame.data() + camera.frame.size() - 16 - 24, 16);
        EXPECT_EQ(info[0], 33U);
        EXPECT_EQ(info[1], 7U);
        EXPECT_EQ(info[2], stride);
        EXPECT_EQ(info[3], static_cast<uint32_t>(encoding));
      }
    }
  }
}

/// Everything at once on one device: nothing may crash, hang or race.
TEST_F(SimulatorAcquisition, ThreadsMayCallInAnyOrder)
{
  for (const std::string& configuration :
       {std::string("[Camera0]\nModel=RQ512_LX\nScene=counter\nMemoryFrames=4\n"),
        std::string("[Camera0]\nModel=RQ512_LX\nClock=free\nScene=counter\n"), std::string(kManual)}) {
    Configure(configuration);
    auto camera = std::make_unique<OpenCamera>();
    camera->SetArea(64, 16);
    camera->Set(L"ExposureTime", 0.00005);
    camera->Set(L"CycleMode", L"Continuous");
    camera->QueueBuffers(16);
    camera->Start();
    std::atomic<int> turns{0};
    std::vector<std::thread> threads;
    const auto repeat = [&](const std::function<void(int)>& body) {
      threads.emplace_back([&turns, body] {
        for (int i = 0; i < 400; ++i, ++turns) body(i);
      });
    };
    const int handle = camera->handle;
    const auto takeAndGive = [handle](int) {
      unsigned char* buffer = nullptr;
      int size = 0;
      if (VX_WaitBuffer(handle, &buffer, &size, 1) == VX_SUCCESS) VX_QueueBuffer(handle, buffer, size);
    };
    repeat(takeAndGive);
    repeat(takeAndGive);
    repeat([handle](int i) {
      if (i % 50 == 0) VX_Command(handle, L"AcquisitionStop");
      VX_Command(handle, L"AcquisitionStart");
      VX_SetFloat(handle, L"ExposureTime", 0.00005 + i * 1e-7);
    });
    repeat([](int i) {
      VXSIM_PushFrame(0, nullptr, 0);
      VXSIM_Statistics statistics;
      VXSIM_GetStatistics(0, &statistics);
      if (i == 200) VXSIM_SetPlugged(0, 0);
      if (i == 210) VXSIM_SetPlugged(0, 1);
    });
    repeat([handle](int i) {
      if (i % 100 == 99) VX_Flush(handle);
      long long count = 0;
      VX_InitialiseLibrary();
      VX_GetInt(VX_HANDLE_SYSTEM, L"DeviceCount", &count);
      VX_FinaliseLibrary();
    });
    ASSERT_TRUE(Eventually([&] { return turns > 500; }));
    VX_Close(handle); // in the middle
    for (std::thread& thread : threads) thread.join();
    EXPECT_EQ(camera->Statistics().buffersHeld, 0U);
    EXPECT_EQ(VXSIM_GetOpenCount(), 0);
  }
}

} // namespace
