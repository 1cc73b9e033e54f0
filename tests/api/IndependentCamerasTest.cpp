// SPDX-License-Identifier: MIT
// Several cameras that acquire at the same time. Each frame shows which camera made it: the stamp has a hash of the
// camera's seed, and each camera has a seed of its own.
#include "tests/support/CounterCameraTest.h"
#include "tests/support/TScratchDirectory.h"
#include "vxcore/simulated/imaging/TCounterPattern.h"

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstdlib>
#include <mutex>
#include <random>
#include <span>
#include <sstream>
#include <thread>

namespace {

constexpr int kCameras = 8;
constexpr long kFirst = 101;

std::string Configuration()
{
  std::ostringstream text;
  text << "[Simulator]\nCameras=" << kCameras << "\n";
  for (int camera = 0; camera < kCameras; ++camera) {
    const std::string section = "[Camera" + std::to_string(camera);
    // The first two make frames when the test says so, some as fast as they are fetched, the others in real time.
    const char* const source = camera < 2 ? "Source=manual" : camera < 5 ? "Clock=free" : "Clock=real";
    text << section << "]\nModel=RQ512_LX\nScene=counter\nNoise=off\nStridePadding=0\n"
         << source << "\nSeed=" << camera + 1 << "\n"
         << section << ".ExposureTime]\nMax=30\nValue=" << (camera < 2 ? "20" : "0.002") << "\n"
         << section << ".AOIWidth]\nValue=16\n"
         << section << ".AOIHeight]\nValue=8\n";
  }
  return text.str();
}

const std::string configuration = Configuration();

struct TStamp
{
  std::uint32_t camera = 0; ///< the hash of its seed; 0 when the image is not whole
  std::uint32_t run = 0;
  std::uint64_t frame = 0;
};

TStamp StampOf(const TCounterImage& image)
{
  const auto* const bytes = reinterpret_cast<const unsigned char*>(image.data());
  const auto found = vxsim::TCounterPattern::VerifyAny(std::span(bytes, sizeof image));
  return found ? TStamp{found.head.seedHash, found.head.runNumber, found.head.frameNumber} : TStamp{};
}

std::uint32_t SeedHashOf(int camera)
{
  TCounterImage image{};
  const vxsim::TCounterPattern::TKey key{static_cast<std::uint64_t>(camera) + 1, 1, 1, 0};
  vxsim::TCounterPattern::Fill(std::span(reinterpret_cast<unsigned char*>(image.data()), sizeof image), key);
  return StampOf(image).camera;
}

class IndependentCameras : public SimulatedCameraTest
{
protected:
  IndependentCameras() : SimulatedCameraTest(configuration.c_str()) {}

  void TearDown() override
  {
    for (long handle = kFirst; handle < kFirst + kCameras; ++handle)
      if (SetCurrentCamera(handle) == RC_SUCCESS) ShutDown();
    EXPECT_EQ(vxmcd_SetIndependentCameras(0), RC_SUCCESS) << "no run is left";
    SimulatedCameraTest::TearDown();
  }

  void OpenAndStart(long handle, int mode)
  {
    OpenCamera(handle);
    ASSERT_EQ(SetAcquisitionMode(mode), RC_SUCCESS);
    ASSERT_EQ(StartAcquisition(), RC_SUCCESS);
  }

  static long ImagesOf(long handle)
  {
    long images = -1;
    SetCurrentCamera(handle);
    GetTotalNumberImagesAcquired(&images);
    return images;
  }

  // Every image of the camera's ring is of that camera, and they follow each other from the first on.
  static void ExpectOwnImages(long handle, long count)
  {
    ASSERT_TRUE(Eventually([&] { return ImagesOf(handle) == count; })) << handle << " has " << ImagesOf(handle);
    for (long number = 1; number <= count; ++number) {
      TCounterImage image{};
      long first = 0;
      long last = 0;
      ASSERT_EQ(GetImages16(number, number, image.data(), image.size(), &first, &last), RC_SUCCESS);
      const TStamp stamp = StampOf(image);
      ASSERT_EQ(stamp.camera, SeedHashOf(static_cast<int>(handle - kFirst))) << handle << ", image " << number;
      ASSERT_EQ(stamp.frame, static_cast<std::uint64_t>(number)) << handle;
    }
  }
};

TEST_F(IndependentCameras, FramesEndAndAbortBelongToTheCameraThatStarted)
{
  if (!std::getenv("VXMCD_INDEPENDENT_CAMERAS")) { // which a separate test sets
    ASSERT_EQ(vxmcd_SetIndependentCameras(1), RC_SUCCESS);
  }
  OpenAndStart(102, kModeUntilAborted);
  OpenCamera(101);
  ASSERT_EQ(SetNumberKinetics(3), RC_SUCCESS);
  ASSERT_EQ(SetAcquisitionMode(kModeSeries), RC_SUCCESS);
  ASSERT_EQ(StartAcquisition(), RC_SUCCESS);
  // The series of the one camera ends while the other one is current, which goes on.
  ASSERT_EQ(SetCurrentCamera(102), RC_SUCCESS);
  ASSERT_EQ(VXSIM_PushFrames(0, 3), VX_SUCCESS);
  ASSERT_EQ(VXSIM_PushFrames(1, 20), VX_SUCCESS);
  EXPECT_EQ(WaitForAcquisitionByHandleTimeOut(101, 60000), RC_SUCCESS);
  EXPECT_EQ(WaitForAcquisitionByHandleTimeOut(102, 60000), RC_SUCCESS);
  ExpectOwnImages(101, 3);
  ASSERT_TRUE(Eventually([] { return Status() == RC_IDLE; }));
  ASSERT_EQ(VXSIM_PushFrames(1, 20), VX_SUCCESS);
  ExpectOwnImages(102, 40);
  EXPECT_EQ(Status(), RC_ACQUIRING);
  // Closing the one does not disturb the other, and no camera need be current.
  ASSERT_EQ(SetCurrentCamera(101), RC_SUCCESS);
  ASSERT_EQ(ShutDown(), RC_SUCCESS);
  ASSERT_EQ(VXSIM_PushFrames(1, 20), VX_SUCCESS);
  ExpectOwnImages(102, 60);
  EXPECT_EQ(AbortAcquisition(), RC_SUCCESS);
  ExpectOwnImages(102, 60);
}

// A run of 101 while 102 is current: which of them its thread waits for, and which it stops at its end.
TEST_F(IndependentCameras, WithoutThemARunAddressesTheCurrentCamera)
{
  for (const int independent : {0, 1, 2}) {
    ASSERT_EQ(vxmcd_SetIndependentCameras(independent % 2), RC_SUCCESS);
    if (independent == 2) { // as runs of threads with their own camera are
      SetCurrentCamera(102);
      vxmcd_SetCurrentCameraOfThread(101, nullptr);
    }
    const int device = independent == 0 ? 1 : 0;
    OpenAndStart(101, kModeUntilAborted);
    OpenCamera(102);
    const auto waits = [](int index) {
      VXSIM_Statistics statistics{};
      VXSIM_GetStatistics(index, &statistics);
      return statistics.waitsBlocked;
    };
    EXPECT_TRUE(Eventually([&] { return waits(device) == 1 && waits(1 - device) == 0; })) << independent;
    const std::string rule = "call VX_Command feature AcquisitionStop device " + std::to_string(device) + " rc 53";
    ASSERT_EQ(VXSIM_AddFault(rule.c_str()), VX_SUCCESS);
    ASSERT_EQ(VXSIM_PushWaitCode(device, VX_ERR_HARDWARE_OVERFLOW), VX_SUCCESS);
    EXPECT_TRUE(Eventually([] { return VXSIM_GetFaultsFired() == 1; })) << independent;
    SetCurrentCamera(101);
    EXPECT_TRUE(Eventually([] { return Status() == RC_STATUS_HARDWARE_OVERFLOW; })) << independent;
    VXSIM_ClearFaults();
    ASSERT_EQ(ShutDown(), RC_SUCCESS);
  }
  vxmcd_SetCurrentCameraOfThread(0, nullptr);
}

// The cameras that are opened again get each other's handles of the feature library.
TEST_F(IndependentCameras, CamerasThatAreOpenedAgainAfterAnUnplugKeepApart)
{
  ASSERT_EQ(vxmcd_SetIndependentCameras(1), RC_SUCCESS);
  OpenAndStart(102, kModeUntilAborted);
  OpenCamera(103);
  OpenAndStart(101, kModeUntilAborted);
  ASSERT_EQ(VXSIM_SetPlugged(0, 0), VX_SUCCESS);
  for (const long handle : {101, 103}) {
    ASSERT_EQ(SetCurrentCamera(handle), RC_SUCCESS);
    EXPECT_EQ(ShutDown(), RC_SUCCESS);
  }
  ASSERT_EQ(VXSIM_SetPlugged(0, 1), VX_SUCCESS);
  OpenAndStart(103, kModeSingle);
  OpenAndStart(101, kModeUntilAborted);
  for (const int device : {0, 1}) ASSERT_EQ(VXSIM_PushFrames(device, 4), VX_SUCCESS);
  ExpectOwnImages(101, 4);
  ExpectOwnImages(102, 4);
  ExpectOwnImages(103, 1);
}

TEST_F(IndependentCameras, TheSettingStaysDuringRunsAndStarts)
{
  EXPECT_EQ(vxmcd_SetIndependentCameras(2), RC_P1_INVALID);
  EXPECT_EQ(vxmcd_SetIndependentCameras(-1), RC_P1_INVALID);
  OpenAndStart(101, kModeUntilAborted);
  ASSERT_EQ(SetCurrentCamera(103), RC_SUCCESS);
  EXPECT_EQ(vxmcd_SetIndependentCameras(1), RC_ACQUIRING) << "whichever camera is current";
  EXPECT_EQ(vxmcd_SetIndependentCameras(0), RC_SUCCESS) << "it is so already";
  SetCurrentCamera(101);
  ASSERT_EQ(AbortAcquisition(), RC_SUCCESS);
  EXPECT_EQ(vxmcd_SetIndependentCameras(1), RC_SUCCESS);
  // A start that waits for the camera.
  ASSERT_EQ(VXSIM_AddFault("call VX_Command feature AcquisitionStart at 1 delay 300ms"), VX_SUCCESS);
  std::thread starter([] { EXPECT_EQ(StartAcquisition(), RC_SUCCESS); });
  EXPECT_TRUE(Eventually([] { return VXSIM_GetFaultsFired() > 0; }));
  EXPECT_EQ(vxmcd_SetIndependentCameras(0), RC_ACQUIRING);
  OpenAndStart(102, kModeUntilAborted); // meanwhile
  starter.join();
  for (const int device : {1, 0}) {
    ASSERT_EQ(VXSIM_PushFrames(device, 5), VX_SUCCESS);
    ExpectOwnImages(kFirst + device, 5);
    ASSERT_EQ(AbortAcquisition(), RC_SUCCESS);
  }
  // A start that fails leaves nothing that would keep the setting.
  ASSERT_EQ(VXSIM_AddFault("call VX_Command feature AcquisitionStart any rc 37"), VX_SUCCESS);
  EXPECT_EQ(StartAcquisition(), RC_FRAME_UNAVAILABLE);
  EXPECT_EQ(vxmcd_SetIndependentCameras(0), RC_SUCCESS);
}

// Each thread opens, runs and closes a camera of its own at random, while the others do the same, one waits for any camera
// and one tries the setting. The lock is that of a program which chooses a camera and calls.
class RandomUse : public IndependentCameras
{
protected:
  // Half of the cameras are their thread's own; the other ones take turns at being the current one.
  unsigned int Call(long handle, const std::function<unsigned int()>& call)
  {
    if (handle % 2 == 0) {
      EXPECT_EQ(vxmcd_SetCurrentCameraOfThread(handle, nullptr), RC_SUCCESS);
      return call();
    }
    const std::lock_guard lock(calls_);
    EXPECT_EQ(SetCurrentCamera(handle), RC_SUCCESS);
    return call();
  }

  // Such a camera would write over images while they are read.
  static bool IsFree(long handle) { return handle >= kFirst + 2 && handle < kFirst + 5; }

  static VXSIM_Statistics StatisticsOf(long handle)
  {
    VXSIM_Statistics statistics{};
    EXPECT_EQ(VXSIM_GetStatistics(static_cast<int>(handle - kFirst), &statistics), VX_SUCCESS);
    return statistics;
  }

  /// Takes images of a run while it goes on: each is of this camera and newer than the one before.
  void Drain(long handle, std::uint64_t& last)
  {
    TCounterImage image{};
    for (int turn = 0; turn < 200; ++turn) {
      if (Call(handle, [&] { return GetOldestImage16(image.data(), image.size()); }) != RC_SUCCESS) return;
      const TStamp stamp = StampOf(image);
      ASSERT_EQ(stamp.camera, SeedHashOf(static_cast<int>(handle - kFirst))) << handle;
      ASSERT_GT(stamp.frame, last) << handle;
      last = stamp.frame;
    }
  }

  /// After a run: image n is frame n of this camera, and no frame is missing that the camera has delivered, except for
  /// one that came with the abort.
  void ExpectAllFrames(long handle, std::uint64_t deliveredBefore, bool isAborted)
  {
    long last = -1;
    ASSERT_EQ(Call(handle, [&] { return GetTotalNumberImagesAcquired(&last); }), RC_SUCCESS);
    const std::uint64_t delivered = StatisticsOf(handle).framesDelivered - deliveredBefore;
    EXPECT_GE(delivered, static_cast<std::uint64_t>(last)) << handle;
    EXPECT_LE(delivered, static_cast<std::uint64_t>(last) + (isAborted ? 1 : 0)) << handle;
    EXPECT_EQ(StatisticsOf(handle).framesOverflowed, 0u) << handle;
    for (long number = last; number > std::max(0L, last - 50); number -= 7) {
      TCounterImage image{};
      long from = 0;
      long to = 0;
      ASSERT_EQ(Call(handle, [&] { return GetImages16(number, number, image.data(), image.size(), &from, &to); }),
                RC_SUCCESS);
      const TStamp stamp = StampOf(image);
      ASSERT_EQ(stamp.camera, SeedHashOf(static_cast<int>(handle - kFirst))) << handle;
      ASSERT_EQ(stamp.frame, static_cast<std::uint64_t>(number)) << handle;
    }
  }

  void Run(long handle, int rounds)
  {
    std::mt19937 random(static_cast<unsigned int>(handle));
    const auto oneIn = [&](unsigned int n) { return random() % n == 0; };
    bool isRunLeft = false;
    for (int round = 0; round < rounds && !HasFatalFailure(); ++round) {
      ASSERT_EQ(Call(handle, [] { return Initialize(nullptr); }), RC_SUCCESS);
      const std::uint64_t delivered = StatisticsOf(handle).framesDelivered;
      const bool isSeries = IsFree(handle) || oneIn(2);
      const int images = isSeries ? 1 + static_cast<int>(random() % 300) : 50;
      std::string path = scratch_.Directory() + "/" + std::to_string(handle);
      ASSERT_EQ(Call(handle, [&] { return SetSpool(isSeries && oneIn(4) ? 1 : 0, 1, path.data()); }), RC_SUCCESS);
      Call(handle, [&] { return SetNumberKinetics(images); });
      Call(handle, [&] { return SetAcquisitionMode(isSeries ? kModeSeries : kModeUntilAborted); });
      ASSERT_EQ(Call(handle, [] { return StartAcquisition(); }), RC_SUCCESS) << handle;

      const std::uint64_t wanted = oneIn(3) ? random() % 50 : static_cast<std::uint64_t>(images);
      int status = RC_ACQUIRING;
      std::uint64_t last = 0;
      while (status == RC_ACQUIRING && last < wanted && !HasFatalFailure()) {
        WaitForAcquisitionByHandleTimeOut(handle, 20);
        Drain(handle, last);
        ASSERT_EQ(Call(handle, [&] { return GetStatus(&status); }), RC_SUCCESS);
      }
      ASSERT_TRUE(status == RC_ACQUIRING || (isSeries && status == RC_IDLE)) << handle << ": " << status;
      if (!oneIn(4)) {
        const bool isAborted = Call(handle, [] { return AbortAcquisition(); }) == RC_SUCCESS;
        ASSERT_TRUE(Eventually([&] {
          Call(handle, [&] { return GetStatus(&status); });
          return status == RC_IDLE;
        }));
        if (!isRunLeft) ExpectAllFrames(handle, delivered, isAborted);
        isRunLeft = false;
      } else {
        isRunLeft = true; // the next start ends it, which delivers more
      }
      if (oneIn(2)) {
        ASSERT_EQ(Call(handle, [] { return ShutDown(); }), RC_SUCCESS);
        isRunLeft = false;
      }
    }
  }

private:
  TScratchDirectory scratch_;
  std::mutex calls_;
};

TEST_F(RandomUse, KeepsCamerasApart)
{
  const char* const soak = std::getenv("VXMCD_TEST_SOAK_ROUNDS");
  const int rounds = soak ? std::atoi(soak) : 4;
  ASSERT_EQ(vxmcd_SetIndependentCameras(1), RC_SUCCESS);
  OpenAndStart(kFirst, kModeUntilAborted); // goes on to the end
  std::atomic<bool> isOver{false};
  std::vector<std::thread> others;
  others.emplace_back([&] {
    while (!isOver) {
      EXPECT_EQ(vxmcd_SetIndependentCameras(0), RC_ACQUIRING);
      EXPECT_EQ(vxmcd_SetIndependentCameras(1), RC_SUCCESS);
      for (const int device : {0, 1}) VXSIM_PushFrames(device, 1);
      std::this_thread::sleep_for(std::chrono::milliseconds(1)); // slower than the images are read
    }
  });
  others.emplace_back([&] {
    for (long turn = 0; !isOver; ++turn) WaitForAcquisitionByHandleTimeOut(kFirst + turn % kCameras, 1);
  });
  std::vector<std::thread> threads;
  for (long handle = kFirst + 1; handle < kFirst + kCameras; ++handle)
    threads.emplace_back([this, handle, rounds] { Run(handle, rounds); });
  for (std::thread& thread : threads) thread.join();
  isOver = true;
  for (std::thread& thread : others) thread.join();
  ASSERT_EQ(SetCurrentCamera(kFirst), RC_SUCCESS);
  ASSERT_EQ(AbortAcquisition(), RC_SUCCESS);
  ExpectAllFrames(kFirst, 0, true);
}

} // namespace
