// SPDX-License-Identifier: MIT
// What the tests of the simulated cameras share: an open camera with buffers, driven through the exported
// functions.
#pragma once

#include "vxcore/simulated/imaging/TCounterPattern.h"
#include "vxcore/simulated/imaging/TMetadataWriter.h"

#include "vxcore_simulator.h"

#include <chrono>
#include <cstdint>
#include <cstring>
#include <gtest/gtest.h>
#include <memory>
#include <span>
#include <string>
#include <thread>
#include <vector>

/// Configures the library afresh for each test and leaves nothing open.
class SimulatedCameraTest : public testing::Test
{
protected:
  void TearDown() override { VXSIM_Configure(nullptr); }

  /// Takes a configuration and initialises.
  static void Configure(const std::string& text)
  {
    ASSERT_EQ(VXSIM_Configure(text.c_str()), VX_SUCCESS) << VXSIM_GetLastError();
    ASSERT_EQ(VX_InitialiseLibrary(), VX_SUCCESS);
  }

  /// Waits until a condition is true; false when it takes too long.
  template <typename Condition>
  static bool Eventually(Condition&& condition)
  {
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(20);
    while (!condition()) {
      if (std::chrono::steady_clock::now() > deadline) return false;
      std::this_thread::yield();
    }
    return true;
  }
};

/// An open device. Reads and writes fail the test when they do not succeed; the `Try` forms give the code.
class OpenCamera final
{
public:
  explicit OpenCamera(int deviceIndex = 0) : device(deviceIndex)
  {
    EXPECT_EQ(VX_Open(deviceIndex, &handle), VX_SUCCESS);
  }
  ~OpenCamera() { VX_Close(handle); }
  OpenCamera(const OpenCamera&) = delete;
  OpenCamera& operator=(const OpenCamera&) = delete;

  long long Int(const wchar_t* feature) const { return Read(VX_GetInt, feature); }
  long long IntMax(const wchar_t* feature) const { return Read(VX_GetIntMax, feature); }
  double Float(const wchar_t* feature) const { return Read(VX_GetFloat, feature); }
  double FloatMax(const wchar_t* feature) const { return Read(VX_GetFloatMax, feature); }
  bool Bool(const wchar_t* feature) const { return Read(VX_GetBool, feature) == 1; }
  bool IsWritable(const wchar_t* feature) const { return Read(VX_IsWritable, feature) == 1; }
  template <typename Value>
  Value Read(int (*read)(int, const wchar_t*, Value*), const wchar_t* feature) const
  {
    Value value = -1;
    EXPECT_EQ(read(handle, feature, &value), VX_SUCCESS);
    return value;
  }
  std::wstring Enum(const wchar_t* feature) const
  {
    int index = -1;
    wchar_t text[64] = L"";
    EXPECT_EQ(VX_GetEnumerated(handle, feature, &index), VX_SUCCESS);
    EXPECT_EQ(VX_GetEnumeratedString(handle, feature, index, text, 64), VX_SUCCESS);
    return text;
  }
  std::wstring String(const wchar_t* feature) const
  {
    int length = 0;
    EXPECT_EQ(VX_GetStringMaxLength(handle, feature, &length), VX_SUCCESS);
    std::vector<wchar_t> text(static_cast<size_t>(length));
    EXPECT_EQ(VX_GetString(handle, feature, text.data(), length), VX_SUCCESS);
    return text.data();
  }
  int TrySet(const wchar_t* feature, long long value) const { return VX_SetInt(handle, feature, value); }
  int TrySet(const wchar_t* feature, double value) const { return VX_SetFloat(handle, feature, value); }
  int TrySet(const wchar_t* feature, bool value) const { return VX_SetBool(handle, feature, value ? 1 : 0); }
  int TrySet(const wchar_t* feature, const wchar_t* text) const { return VX_SetEnumString(handle, feature, text); }
  template <typename Value>
  void Set(const wchar_t* feature, Value value) const
  {
    EXPECT_EQ(TrySet(feature, value), VX_SUCCESS);
  }
  void SetArea(long long width, long long height) const
  {
    Set(L"AOIWidth", width);
    Set(L"AOIHeight", height);
  }
  int Command(const wchar_t* feature) const { return VX_Command(handle, feature); }

  /// Queues @p count buffers of the present frame size; they live as long as this object.
  void QueueBuffers(int count)
  {
    const auto size = static_cast<size_t>(Int(L"ImageSizeBytes"));
    for (int i = 0; i < count; ++i) {
      buffers.push_back(std::make_unique<std::vector<unsigned char>>(size));
      EXPECT_EQ(VX_QueueBuffer(handle, buffers.back()->data(), static_cast<int>(size)), VX_SUCCESS);
    }
  }
  void Start() const { EXPECT_EQ(Command(L"AcquisitionStart"), VX_SUCCESS); }
  void Stop() const { EXPECT_EQ(Command(L"AcquisitionStop"), VX_SUCCESS); }

  /// Waits for a frame. On success `frame` is the delivered one.
  int Wait(unsigned int timeoutMs = 0)
  {
    unsigned char* buffer = nullptr;
    int size = 0;
    const int code = VX_WaitBuffer(handle, &buffer, &size, timeoutMs);
    if (code == VX_SUCCESS) frame = {buffer, static_cast<size_t>(size)};
    return code;
  }
  void Requeue() const
  {
    EXPECT_EQ(VX_QueueBuffer(handle, frame.data(), static_cast<int>(frame.size())), VX_SUCCESS);
  }
  /// Number of the counter or stamp frame delivered last; 0 when it is none.
  uint64_t FrameNumber() const
  {
    vxsim::TFrameStamp stamp;
    if (frame.size() < sizeof stamp) return 0;
    std::memcpy(&stamp, frame.data(), sizeof stamp);
    return stamp.magic == vxsim::TCounterPattern::kMagic ? stamp.frameNumber : 0;
  }
  /// Timestamp in the tail of the frame delivered last.
  int64_t Ticks() const
  {
    int64_t ticks = 0;
    std::memcpy(&ticks, frame.data() + frame.size() - 16, sizeof ticks);
    return ticks;
  }
  VXSIM_Statistics Statistics() const
  {
    VXSIM_Statistics statistics{};
    EXPECT_EQ(VXSIM_GetStatistics(device, &statistics), VX_SUCCESS);
    return statistics;
  }

  const int device;
  int handle = VX_HANDLE_NONE;
  std::span<unsigned char> frame;
  std::vector<std::unique_ptr<std::vector<unsigned char>>> buffers;
};
