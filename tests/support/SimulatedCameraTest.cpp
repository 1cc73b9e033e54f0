// SPDX-License-Identifier: MIT
// What tests of the interface have in common.
#include "tests/support/SimulatedCameraTest.h"

#include <chrono>
#include <thread>

void SimulatedCameraTest::SetUp()
{
  ASSERT_EQ(VXSIM_Configure(configuration_), VX_SUCCESS) << VXSIM_GetLastError();
  ASSERT_EQ(SetCurrentCamera(101), RC_SUCCESS);
}

void SimulatedCameraTest::TearDown()
{
  VXSIM_ClearFaults();
  VXSIM_StopCallLog();
  for (const long handle : {103L, 102L, 101L})
    if (SetCurrentCamera(handle) == RC_SUCCESS) ShutDown();
  EXPECT_EQ(VXSIM_GetOpenCount(), 0);
  EXPECT_EQ(VXSIM_GetInitialiseCount(), 0);
}

void SimulatedCameraTest::Open(int width, int height)
{
  ASSERT_EQ(Initialize(nullptr), RC_SUCCESS);
  SetArea(width, height);
}

void SimulatedCameraTest::OpenCamera(long handle)
{
  ASSERT_EQ(SetCurrentCamera(handle), RC_SUCCESS);
  ASSERT_EQ(Initialize(nullptr), RC_SUCCESS);
}

void SimulatedCameraTest::SetArea(int width, int height)
{
  ASSERT_EQ(VX_SetInt(CoreHandle(), L"AOIWidth", width), VX_SUCCESS);
  ASSERT_EQ(VX_SetInt(CoreHandle(), L"AOIHeight", height), VX_SUCCESS);
}

int SimulatedCameraTest::CoreHandle() const
{
  int handle = -1;
  GetSDK3Handle(&handle);
  return handle;
}

long long SimulatedCameraTest::GetInt(const wchar_t* feature) const
{
  long long value = -1;
  EXPECT_EQ(VX_GetInt(CoreHandle(), feature, &value), VX_SUCCESS);
  return value;
}

std::wstring SimulatedCameraTest::GetText(const wchar_t* feature) const
{
  int index = 0;
  wchar_t text[64] = {};
  EXPECT_EQ(VX_GetEnumerated(CoreHandle(), feature, &index), VX_SUCCESS);
  EXPECT_EQ(VX_GetEnumeratedString(CoreHandle(), feature, index, text, 64), VX_SUCCESS);
  return text;
}

void SimulatedCameraTest::PushFrame(unsigned char value)
{
  const std::vector<unsigned char> frame(static_cast<std::size_t>(GetInt(L"ImageSizeBytes")), value);
  ASSERT_EQ(VXSIM_PushFrame(0, frame.data(), static_cast<int>(frame.size())), VX_SUCCESS);
}

void SimulatedCameraTest::PushFrames(int count, unsigned char first)
{
  long before = 0;
  GetTotalNumberImagesAcquired(&before);
  for (int frame = 0; frame < count; ++frame) PushFrame(static_cast<unsigned char>(first + frame));
  ASSERT_TRUE(Eventually([&] {
    long now = 0;
    GetTotalNumberImagesAcquired(&now);
    return now == before + count;
  }));
}

int SimulatedCameraTest::Status()
{
  int status = 0;
  EXPECT_EQ(GetStatus(&status), RC_SUCCESS);
  return status;
}

void SimulatedCameraTest::ExposeBriefly()
{
  EXPECT_EQ(SetExposureTime(0.001F), RC_SUCCESS);
}

bool Eventually(const std::function<bool()>& condition)
{
  const auto deadline = std::chrono::steady_clock::now() + std::chrono::minutes(1);
  while (!condition()) {
    if (std::chrono::steady_clock::now() > deadline) return false;
    std::this_thread::sleep_for(std::chrono::microseconds(200)); // only paces the polling
  }
  return true;
}

std::vector<std::string> LoggedCalls()
{
  std::vector<std::string> calls;
  for (std::size_t index = 0; index < VXSIM_GetCallCount(); ++index) {
    char line[256] = {};
    VXSIM_GetCall(index, line, sizeof line);
    if (std::string(line).rfind("VX_QueueBuffer", 0) != 0) calls.emplace_back(line);
  }
  return calls;
}
