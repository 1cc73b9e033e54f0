// SPDX-License-Identifier: MIT
// What tests of the interface have in common: simulated cameras, and the state they must leave behind.
#pragma once

#include "vxcore_simulator.h"
#include "vxmcd.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

/// A camera whose frames the test pushes, without noise, small. It exposes for so long that no run ends for want of a
/// frame because the test was delayed.
inline constexpr const char* kManualCamera =
    "[Simulator]\nCameras=1\n[Camera0]\nModel=RQ512_LX\nSource=manual\n"
    "Scene=counter\nNoise=off\n[Camera0.ExposureTime]\nMax=30\nValue=20\n";

/// A camera that makes stamped frames as fast as buffers come.
inline constexpr const char* kFreeCamera = "[Simulator]\nCameras=1\n[Camera0]\nModel=RQ512_LX\nClock=free\n"
                                           "Scene=stamp\nNoise=off\n";

/// Two cameras whose frames the test pushes.
inline constexpr const char* kTwoManualCameras =
    "[Simulator]\nCameras=2\n[Camera0]\nModel=TRELLIS CMOS\nSource=manual\nScene=counter\n"
    "[Camera1]\nModel=RQ512_LX\nSource=manual\nScene=counter\n";

/// Begins every test with a freshly configured simulator and checks at its end that everything is closed: library,
/// devices, buffers.
class SimulatedCameraTest : public ::testing::Test
{
protected:
  explicit SimulatedCameraTest(const char* configuration = kManualCamera) : configuration_(configuration) {}

  void SetUp() override;
  void TearDown() override;

  /// Opens the current camera and makes its image small: width x height pixels.
  void Open(int width = 16, int height = 8);
  /// Opens the camera with this handle, as it is.
  void OpenCamera(long handle);
  void SetArea(int width, int height);
  int CoreHandle() const;
  long long GetInt(const wchar_t* feature) const;
  std::wstring GetText(const wchar_t* feature) const;

  /// Pushes one frame whose pixel bytes all have the value @p value.
  void PushFrame(unsigned char value);
  /// Pushes frames with the values first, first + 1, ... and waits until the application can see them.
  void PushFrames(int count, unsigned char first = 1);
  static int Status();
  /// From the next run on a frame that is missing for a little over 1 s ends the run.
  static void ExposeBriefly();

private:
  const char* configuration_;
};

/// Waits until @p condition is true, for a minute at most, which is enough on a busy machine.
bool Eventually(const std::function<bool()>& condition);

/// The lines of the call log, without those of VX_QueueBuffer.
std::vector<std::string> LoggedCalls();
