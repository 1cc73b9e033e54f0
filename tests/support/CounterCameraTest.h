// SPDX-License-Identifier: MIT
// Tests with a camera whose frames contain their numbers.
#pragma once

#include "tests/support/SimulatedCameraTest.h"

#include <array>
#include <cstdint>

/// A camera of 16 x 8 pixels of 16 bits; the test pushes its frames, and every frame is a counter pattern. It exposes
/// for so long that no run ends for want of a frame because the test was delayed.
inline constexpr const char* kCounterCamera =
    "[Simulator]\nCameras=1\n[Camera0]\nModel=RQ512_LX\nSource=manual\nScene=counter\nNoise=off\nStridePadding=0\n"
    "[Camera0.ExposureTime]\nMax=30\nValue=20\n"
    "[Camera0.AOIWidth]\nValue=16\n[Camera0.AOIHeight]\nValue=8\n";
/// The same, making its frames as fast as they are fetched.
inline constexpr const char* kFreeCounterCamera =
    "[Simulator]\nCameras=1\n[Camera0]\nModel=RQ512_LX\nClock=free\nScene=counter\nNoise=off\nStridePadding=0\n"
    "[Camera0.AOIWidth]\nValue=16\n[Camera0.AOIHeight]\nValue=8\n";
inline constexpr unsigned long kCounterPixels = 16 * 8;
using TCounterImage = std::array<unsigned short, kCounterPixels>;

/// Has the camera report frames so large that a ring has 5 slots. They are never touched beyond the real frame, so
/// they cost addresses and no memory.
inline constexpr const char* kFiveSlots = "value ImageSizeBytes set 60000000";
inline constexpr int kFiveSlotsCount = 5;

/// The number of the frame in @p image, counted by the camera from the start of the run; 0 when any byte of it is
/// not what the camera made.
std::uint64_t FrameNumberOf(const TCounterImage& image);

/// The acquisition modes.
enum
{
  kModeSingle = 1,
  kModeSeries = 3,
  kModeUntilAborted = 5
};

class CounterCameraTest : public SimulatedCameraTest
{
protected:
  explicit CounterCameraTest(const char* configuration = kCounterCamera) : SimulatedCameraTest(configuration) {}

  /// Starts a run until abort on the open camera, or a series of @p images.
  static void StartUntilAborted();
  static void StartSeries(int images);
  static void AddFault(const char* rule);

  /// Pushes @p count frames; does not wait for them.
  static void Push(int count);
  /// Waits until the run has brought @p count images; false when it has more or does not get there.
  static bool HasImages(long count);
  static long ImageCount();
  /// The number of the camera's frame in image @p number; 0 when it is not there or not whole.
  static std::uint64_t FrameOfImage(long number);
  /// Checks that every image that is there is the frame that @p frames says, image 1 first.
  static void ExpectImages(const std::vector<std::uint64_t>& frames);
  /// A new run on the open camera: nothing that happened before may show in it.
  static void ExpectCleanRun();
  static VXSIM_Statistics Statistics();
};
