// SPDX-License-Identifier: MIT
// The temperatures of the simulated cameras: cooler, fan, status, and the dark current that follows.
#include "tests/vxcore/SimulatedCameraTest.h"

#include <cmath>

namespace {

constexpr const char* kTrellis = "[Camera0]\nModel = TRELLIS CMOS\nClock = free\nScene = stamp\n";
constexpr const char* kSmallSensor = "[Camera0.SensorWidth]\nValue = 128\n[Camera0.SensorHeight]\nValue = 128\n";

enum Status
{
  kOff,
  kStabilised,
  kNotReached,
  kDrift,
  kNotStabilised
};

class SimulatorThermal : public SimulatedCameraTest
{
protected:
  static int StatusOf(const OpenCamera& camera)
  {
    int index = -1;
    EXPECT_EQ(VX_GetEnumIndex(camera.handle, L"TemperatureStatus", &index), VX_SUCCESS);
    return index;
  }
  static void Advance(double seconds) { ASSERT_EQ(VXSIM_AdvanceTime(0, seconds), VX_SUCCESS); }
  /// Advances the time until the status changes; gives the seconds, -1 when it stays for ten minutes.
  static double SecondsUntilStatusLeaves(const OpenCamera& camera, int status)
  {
    for (double seconds = 0.0; seconds < 600.0; seconds += 0.5) {
      if (StatusOf(camera) != status) return seconds;
      Advance(0.5);
    }
    return -1.0;
  }
};

TEST_F(SimulatorThermal, CoolingGoesThroughItsStatesToTheTarget)
{
  Configure(kTrellis);
  const OpenCamera camera;
  EXPECT_EQ(StatusOf(camera), kOff);
  EXPECT_DOUBLE_EQ(camera.Float(L"SensorTemperature"), 25.0); // 22 degrees in the room, and the fan's 3
  Advance(1000.0);
  EXPECT_DOUBLE_EQ(camera.Float(L"SensorTemperature"), 25.0);

  camera.Set(L"TargetSensorTemperature", -10.0);
  camera.Set(L"SensorCooling", true);
  EXPECT_EQ(StatusOf(camera), kNotReached);
  // At full power the sensor goes towards 25 - 52 degrees within 30 s.
  Advance(15.0);
  EXPECT_NEAR(camera.Float(L"SensorTemperature"), 25.0 - 52.0 * (1.0 - std::exp(-0.5)), 0.3);
  EXPECT_GT(SecondsUntilStatusLeaves(camera, kNotReached), 5.0);
  EXPECT_EQ(StatusOf(camera), kNotStabilised);
  EXPECT_GE(SecondsUntilStatusLeaves(camera, kNotStabilised), 9.5); // ten seconds within half a degree
  EXPECT_EQ(StatusOf(camera), kStabilised);
  EXPECT_NEAR(camera.Float(L"SensorTemperature"), -10.0, 0.5);
  Advance(100000.0);
  EXPECT_EQ(StatusOf(camera), kStabilised);
  EXPECT_DOUBLE_EQ(camera.Float(L"SensorTemperature"), -10.0);

  camera.Set(L"SensorCooling", false);
  EXPECT_EQ(StatusOf(camera), kOff);
  Advance(600.0);
  EXPECT_DOUBLE_EQ(camera.Float(L"SensorTemperature"), 25.0);
}

TEST_F(SimulatorThermal, WithoutTheFanAStableSensorDriftsAndComesBack)
{
  Configure(std::string(kTrellis) +
            "[Camera0.SensorCooling]\nValue = on\n[Camera0.TargetSensorTemperature]\nValue "
            "= -5\n");
  const OpenCamera camera;
  Advance(300.0);
  ASSERT_EQ(StatusOf(camera), kStabilised);
  camera.Set(L"FanSpeed", L"Low");
  Advance(300.0);
  EXPECT_EQ(StatusOf(camera), kStabilised); // 27 degrees less 80 % of 52 is still cold enough
  camera.Set(L"FanSpeed", L"Off");
  EXPECT_GT(SecondsUntilStatusLeaves(camera, kStabilised), 0.0);
  EXPECT_EQ(StatusOf(camera), kDrift);
  Advance(1000.0);
  EXPECT_EQ(StatusOf(camera), kDrift);
  EXPECT_NEAR(camera.Float(L"SensorTemperature"), 32.0 - 0.4 * 52.0, 0.1);
  camera.Set(L"FanSpeed", L"On");
  Advance(300.0);
  EXPECT_EQ(StatusOf(camera), kStabilised);

  camera.Set(L"TargetSensorTemperature", -30.0); // out of reach: 25 - 52 is warmer
  Advance(1000.0);
  EXPECT_EQ(StatusOf(camera), kNotReached);
  EXPECT_NEAR(camera.Float(L"SensorTemperature"), -27.0, 0.1);
  EXPECT_EQ(camera.TrySet(L"TargetSensorTemperature", -31.0), VX_ERR_OUT_OF_RANGE);
  EXPECT_EQ(camera.TrySet(L"TargetSensorTemperature", std::nan("")), VX_ERR_OUT_OF_RANGE);
  EXPECT_EQ(VX_SetEnumIndex(camera.handle, L"TemperatureStatus", 1), VX_ERR_NOT_WRITABLE);
}

TEST_F(SimulatorThermal, AnAdvanceDelaysARunAndLosesNothing)
{
  Configure(std::string(kTrellis) + kSmallSensor);
  OpenCamera camera;
  EXPECT_EQ(VXSIM_AdvanceTime(0, 1e6), VX_SUCCESS);
  camera.Set(L"MetadataEnable", true);
  camera.Set(L"FrameCount", 3LL);
  camera.QueueBuffers(3);
  camera.Start();
  int64_t before = 0;
  for (uint64_t frame = 1; frame <= 3; ++frame) {
    ASSERT_EQ(camera.Wait(), VX_SUCCESS);
    EXPECT_EQ(camera.FrameNumber(), frame);
    if (frame > 1) {
      EXPECT_GE(camera.Ticks() - before, 5LL * 100'000'000);
    }
    before = camera.Ticks();
    Advance(5.0);
  }
  EXPECT_FALSE(camera.Bool(L"CameraAcquiring"));
}

} // namespace
