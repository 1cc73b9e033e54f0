// SPDX-License-Identifier: MIT
// What the tests of real cameras share: test cameras in a network of their own, and the library that drives them.
#pragma once

#include "tests/genicam/test_pattern.h"

#include "vxcore.h"
#include "vxcore_simulator.h"
#include "vxmcd.h"

#include <chrono>
#include <cstdint>
#include <functional>
#include <gtest/gtest.h>
#include <map>
#include <string>
#include <thread>
#include <vector>

/// Why no test of this program can run, "" when they can: they need a network namespace, so that no packet leaves the
/// machine.
const std::string& WhyNoNetwork();

/// What the backend has logged since the last call.
std::string TakeLog();

class GenICamTest : public testing::Test
{
protected:
  void SetUp() override
  {
    if (!WhyNoNetwork().empty()) GTEST_SKIP() << WhyNoNetwork();
  }
  void TearDown() override;

  /// Starts a test camera at an address of 127.0.0.0/8; `arguments` as the program has them.
  void Serve(const std::string& address, const std::vector<std::string>& arguments = {},
             const char* program = VXMCD_TEST_CAMERA);
  void Kill(const std::string& address);
  /// Configures the library with these devices and the lines of its section.
  static void Attach(const std::string& devices, const std::string& more = "");
  /// Serves one camera and opens it through the flat interface.
  void Open(const std::vector<std::string>& arguments = {}, const std::string& more = "");

private:
  std::map<std::string, int> cameras_; ///< process by address
};

/// The core handle of the current camera.
inline int Handle()
{
  int handle = -1;
  EXPECT_EQ(GetSDK3Handle(&handle), RC_SUCCESS);
  return handle;
}

inline long long Int(const wchar_t* feature)
{
  long long value = -1;
  EXPECT_EQ(VX_GetInt(Handle(), feature, &value), VX_SUCCESS);
  return value;
}

inline double Float(const wchar_t* feature)
{
  double value = -1.0;
  EXPECT_EQ(VX_GetFloat(Handle(), feature, &value), VX_SUCCESS);
  return value;
}

inline bool IsImplemented(const wchar_t* feature)
{
  int flag = -1;
  EXPECT_EQ(VX_IsImplemented(Handle(), feature, &flag), VX_SUCCESS);
  return flag == 1;
}

/// Sets the pixels that images are made of.
inline void SetEncoding(const wchar_t* encoding)
{
  ASSERT_EQ(VX_SetEnumString(Handle(), L"PixelEncoding", encoding), VX_SUCCESS);
}

inline double SecondsOf(const std::function<void()>& body)
{
  const auto start = std::chrono::steady_clock::now();
  body();
  return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

/// The part of the sensor that an image shows, from 0.
struct TArea
{
  int left = 0;
  int top = 0;
  int width = 0;
  int height = 0;
};

/// Runs, and images of them.
class GenICamRun : public GenICamTest
{
protected:
  static void SetArea(const TArea& area)
  {
    ASSERT_EQ(SetImage(1, 1, area.left + 1, area.left + area.width, area.top + 1, area.top + area.height),
              RC_SUCCESS);
  }
  static void SetRate(double hertz)
  {
    ASSERT_EQ(SetExposureTime(0.0005F), RC_SUCCESS);
    ASSERT_EQ(SetKineticCycleTime(static_cast<float>(1.0 / hertz)), RC_SUCCESS);
  }
  static void SetSeries(int frames)
  {
    ASSERT_EQ(SetAcquisitionMode(3), RC_SUCCESS);
    ASSERT_EQ(SetNumberAccumulations(1), RC_SUCCESS);
    ASSERT_EQ(SetNumberKinetics(frames), RC_SUCCESS);
  }
  static std::vector<unsigned short> Image(long number, const TArea& area)
  {
    std::vector<unsigned short> pixels(static_cast<std::size_t>(area.width * area.height));
    long first = 0;
    long last = 0;
    EXPECT_EQ(GetImages16(number, number, pixels.data(), pixels.size(), &first, &last), RC_SUCCESS) << number;
    return pixels;
  }
  static int Status()
  {
    int status = 0;
    EXPECT_EQ(GetStatus(&status), RC_SUCCESS);
    return status;
  }
  static bool WaitUntilIdle(double seconds)
  {
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::duration<double>(seconds);
    while (Status() == RC_ACQUIRING && std::chrono::steady_clock::now() < deadline) WaitForAcquisitionTimeOut(50);
    return Status() != RC_ACQUIRING;
  }
};

/// Frame numbers have 16 bits and leave out 0.
constexpr std::uint64_t FrameAfter(std::uint64_t frame)
{
  return frame == 0xFFFF ? 1 : frame + 1;
}

/// Finds the frame that an image is of, and compares every pixel. 0, with a failure, when it is of none.
std::uint64_t FrameOf(const std::vector<unsigned short>& pixels, const TArea& area, int bits);
