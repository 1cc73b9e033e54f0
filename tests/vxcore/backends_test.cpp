// SPDX-License-Identifier: MIT
// Several backends in one library: numbering, switching on and off, and the fault plan round devices that know
// none. The program brings its own table with a backend beside the simulated one.
#include "tests/vxcore/SimulatedCameraTest.h"
#include "vxcore/backend/TBackendTable.h"
#include "vxcore/simulated/TSimulatedBackend.h"

#include <deque>
#include <functional>
#include <latch>

namespace {

using namespace vxcore;

constexpr int kFrameBytes = 64;

class TStopCommand final : public IFeature
{
public:
  explicit TStopCommand(bool& running) : running_(running) {}
  bool IsReadable() const override { return false; }
  bool IsWritable() const override { return true; }
  int Execute(TDeviceLock&) override
  {
    running_ = false;
    return VX_SUCCESS;
  }

private:
  bool& running_;
};

/// A reading that is always on.
class TOnFlag final : public IFeature
{
public:
  bool IsReadable() const override { return true; }
  bool IsWritable() const override { return false; }
  int GetBool(bool& value) const override
  {
    value = true;
    return VX_SUCCESS;
  }
};

/// Fills queued buffers in their order with the number of the frame.
class TPlainDevice final : public IDevice
{
public:
  inline static std::function<void()> onEnd; ///< called when a device is destroyed

  ~TPlainDevice() override
  {
    if (onEnd) onEnd();
  }
  int CheckPresent() override { return VX_SUCCESS; }
  IFeature* Find(std::wstring_view name) override
  {
    if (name == L"AcquisitionStop") return &stop_;
    return name == L"MetadataEnable" ? &metadata_ : nullptr;
  }
  int QueueBuffer(TDeviceLock&, unsigned char* buffer, int) override
  {
    queued_.push_back(buffer);
    return VX_SUCCESS;
  }
  int WaitBuffer(TDeviceLock&, unsigned char** buffer, int* sizeBytes, unsigned int) override
  {
    if (!running_ || queued_.empty()) return VX_ERR_TIMED_OUT;
    *buffer = queued_.front();
    *sizeBytes = kFrameBytes;
    queued_.pop_front();
    std::memset(*buffer, ++frames_, kFrameBytes);
    return VX_SUCCESS;
  }
  void Flush(TDeviceLock&) override { queued_.clear(); }
  void Close(TDeviceLock&) override { queued_.clear(); }

private:
  bool running_ = true;
  int frames_ = 0;
  std::deque<unsigned char*> queued_;
  TStopCommand stop_{running_};
  TOnFlag metadata_;
};

/// As many devices as [Plain] has entries; none without a configuration.
class TPlainBackend final : public IDeviceBackend
{
public:
  inline static std::function<void(int index)> onOpen; ///< called in the middle of an opening

  explicit TPlainBackend(int count) : count_(count) {}
  int Enumerate() override { return count_; }
  int Open(int index, const TDeviceContext&, std::unique_ptr<IDevice>& device) override
  {
    if (onOpen) onOpen(index);
    device = std::make_unique<TPlainDevice>();
    return VX_SUCCESS;
  }
  static std::unique_ptr<IDeviceBackend> Make(const TBackendEntries* entries, std::string& error)
  {
    if (entries && !entries->empty() && entries->front().key != "Device") {
      error = entries->front().Where() + ": unknown key";
      return nullptr;
    }
    return std::make_unique<TPlainBackend>(entries ? static_cast<int>(entries->size()) : 0);
  }

private:
  const int count_;
};

constexpr TBackendRow kRows[] = {
    {"Simulator", vxsim::TSimulatedBackend::OwnsSection, vxsim::TSimulatedBackend::Make},
    {"Plain", [](std::string_view section) { return section == "Plain"; }, TPlainBackend::Make},
};

class Backends : public SimulatedCameraTest
{
protected:
  static long long DeviceCount()
  {
    long long count = -1;
    EXPECT_EQ(VX_GetInt(VX_HANDLE_SYSTEM, L"DeviceCount", &count), VX_SUCCESS);
    return count;
  }
};

} // namespace

std::span<const vxcore::TBackendRow> vxcore::KnownBackends()
{
  return kRows;
}

namespace {

TEST_F(Backends, DevicesAreNumberedInTheOrderOfTheTable)
{
  Configure("[Plain]\nDevice = a\nDevice = b\n[Simulator]\nCameras = 2\n");
  EXPECT_EQ(DeviceCount(), 4);
  EXPECT_EQ(OpenCamera(1).String(L"CameraModel"), L"TRELLIS CMOS");
  const OpenCamera plain(3);
  int flag = -1;
  EXPECT_EQ(VX_IsImplemented(plain.handle, L"CameraModel", &flag), VX_SUCCESS);
  EXPECT_EQ(flag, 0);
  int handle = 0;
  EXPECT_EQ(VX_Open(4, &handle), VX_ERR_NO_SUCH_DEVICE);
  EXPECT_EQ(VXSIM_PushFrames(3, 1), VX_ERR_NOT_AVAILABLE); // of the simulated ones only
  EXPECT_EQ(VXSIM_PushFrames(4, 1), VX_ERR_NO_SUCH_DEVICE);
}

TEST_F(Backends, AreSwitchedOffByName)
{
  Configure("[Backends]\nSimulator = off\n[Camera0]\nModel = RQ512_LX\n[Plain]\nDevice = a\n");
  EXPECT_EQ(DeviceCount(), 1);
  EXPECT_EQ(VXSIM_PushFrames(0, 1), VX_ERR_NOT_AVAILABLE);
  Configure("[Backends]\nPlain = off\n[Plain]\nDevice = a\n");
  EXPECT_EQ(DeviceCount(), 1);
  EXPECT_EQ(OpenCamera().String(L"CameraModel"), L"TRELLIS CMOS");

  const std::pair<const char*, const char*> mistakes[] = {
      {"[Backends]\nNobody = on\n", "line 2, [Backends] Nobody"},
      {"[Backends]\nPlain = maybe\n", "'maybe'"},
      {"[Plane]\nDevice = a\n", "unknown section"},
      {"[Plain]\nDevices = a\n", "unknown key"}};
  for (const auto& [text, place] : mistakes) {
    EXPECT_EQ(VXSIM_Configure(text), VX_ERR_OUT_OF_RANGE) << text;
    EXPECT_NE(std::string(VXSIM_GetLastError()).find(place), std::string::npos) << VXSIM_GetLastError();
  }
}

TEST_F(Backends, AnOpeningThatTakesLongDelaysOnlyItsDeviceAndTheEndOfTheLibrary)
{
  Configure("[Plain]\nDevice = a\nDevice = b\n[Backends]\nSimulator = off\n");
  std::latch isInside{1};
  std::latch mayLeave{1};
  TPlainBackend::onOpen = [&](int index) {
    if (index != 0) return;
    isInside.count_down();
    mayLeave.wait();
  };
  int slow = 0;
  int slowCode = -1;
  std::thread opening([&] { slowCode = VX_Open(0, &slow); });
  isInside.wait();
  std::atomic<bool> isDone{false};
  std::thread other([&] {
    EXPECT_EQ(DeviceCount(), 2);
    EXPECT_EQ(VX_InitialiseLibrary(), VX_SUCCESS);
    EXPECT_EQ(VX_FinaliseLibrary(), VX_SUCCESS);
    const OpenCamera plain(1);
    EXPECT_EQ(VX_Flush(plain.handle), VX_SUCCESS);
    isDone = true;
  });
  EXPECT_TRUE(Eventually([&] { return isDone.load(); }));
  std::thread end([] { EXPECT_EQ(VX_FinaliseLibrary(), VX_SUCCESS); });
  mayLeave.count_down();
  for (std::thread* thread : {&opening, &other, &end}) thread->join();
  TPlainBackend::onOpen = nullptr;
  EXPECT_EQ(slowCode, VX_SUCCESS);
  EXPECT_EQ(VXSIM_GetOpenCount(), 0) << "the end of the library closes what was being opened";
}

TEST_F(Backends, AResetWaitsForADeviceThatIsBeingClosed)
{
  Configure("[Plain]\nDevice = a\n[Backends]\nSimulator = off\n");
  int handle = 0;
  ASSERT_EQ(VX_Open(0, &handle), VX_SUCCESS);
  std::atomic<bool> isReset{false};
  std::thread reset;
  TPlainDevice::onEnd = [&] {
    reset = std::thread([&] { VXSIM_Reset(), isReset = true; });
    for (int turn = 0; turn < 20 && !isReset; ++turn) std::this_thread::sleep_for(std::chrono::milliseconds(5));
    EXPECT_FALSE(isReset) << "the device's backend is gone";
  };
  EXPECT_EQ(VX_Close(handle), VX_SUCCESS);
  reset.join();
  TPlainDevice::onEnd = nullptr;
}

TEST_F(Backends, FramesOfAnyDeviceTakeTheFaultsOfThePlan)
{
  Configure("[Backends]\nSimulator = off\n[Plain]\nDevice = a\n");
  OpenCamera camera;
  std::vector<unsigned char> buffer(kFrameBytes); // a frame that is not delivered has to return it
  ASSERT_EQ(VX_QueueBuffer(camera.handle, buffer.data(), kFrameBytes), VX_SUCCESS);
  for (const char* rule : {"frame device 0 2 drop", "frame device 1 2 null", "frame 3 short 16",
                           "frame 4 oversize 8", "frame 5 null", "frame 6 foreign", "frame 8 repeat",
                           "chunk 1 cid 7", "call VX_WaitBuffer at 9 rc 13", "camera 9 replug 20ms"})
    ASSERT_EQ(VXSIM_AddFault(rule), VX_SUCCESS) << VXSIM_GetLastError();
  const auto wait = [&camera] {
    ASSERT_EQ(camera.Wait(), VX_SUCCESS);
    if (camera.frame.size() == kFrameBytes) camera.Requeue();
  };
  wait();
  EXPECT_EQ(camera.frame[kFrameBytes - 8], 7);
  wait(); // the third frame
  EXPECT_EQ(camera.frame.size(), 16U);
  EXPECT_EQ(camera.frame[0], 3);
  ASSERT_EQ(VX_QueueBuffer(camera.handle, camera.frame.data(), kFrameBytes), VX_SUCCESS);
  wait();
  EXPECT_EQ(camera.frame.size(), kFrameBytes + 8U);
  ASSERT_EQ(VX_QueueBuffer(camera.handle, camera.frame.data(), kFrameBytes), VX_SUCCESS);
  wait();
  EXPECT_EQ(camera.frame.data(), nullptr);
  ASSERT_EQ(camera.Wait(), VX_SUCCESS);
  EXPECT_EQ(camera.frame[0], 6);
  EXPECT_NE(camera.frame.data(), buffer.data());
  wait();
  ASSERT_EQ(camera.Wait(), VX_SUCCESS); // the seventh again
  EXPECT_EQ(camera.frame.data(), buffer.data());
  EXPECT_EQ(camera.Wait(), VX_ERR_COMMUNICATION); // unplugged, which ends its run
  EXPECT_EQ(camera.Wait(), 13);                   // rules of calls are the front's own
  EXPECT_TRUE(Eventually([&] { return VX_Flush(camera.handle) == VX_SUCCESS; }));
  ASSERT_EQ(VX_QueueBuffer(camera.handle, buffer.data(), kFrameBytes), VX_SUCCESS);
  EXPECT_EQ(camera.Wait(), VX_ERR_TIMED_OUT);
}

} // namespace
