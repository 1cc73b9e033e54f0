// SPDX-License-Identifier: MIT
// The wait for a stable temperature and the ramp of the target, with temperatures that the test scripts.
#include "tools/TTemperatureRamp.h"

#include <deque>
#include <gtest/gtest.h>

namespace vxtool {
namespace {

// Gives the states one after the other; the last one stays.
struct ScriptedSensor
{
  std::deque<unsigned int> states;
  int asked = 0;

  TAnswer<TTemperature> operator()()
  {
    ++asked;
    const unsigned int state = states.front();
    if (states.size() > 1) states.pop_front();
    if (state == RC_FEATURE_ERROR) return {"GetTemperatureF", state, std::nullopt};
    return {"GetTemperatureF", RC_SUCCESS, TTemperature{-19.5F, state}};
  }
};

CoolingEnd Wait(TCoolingWait& wait, ScriptedSensor& sensor, int interruptAfter = 1000)
{
  return wait.Run([&] { return sensor(); }, [&] { return sensor.asked >= interruptAfter; },
                  [](const TCoolingProgress&) {});
}

TEST(CoolingWait, EndsWithTheReasonWhenItCannotBecomeStable)
{
  const std::pair<unsigned int, const char*> cases[] = {
      {RC_TEMP_NOT_REACHED, "within the time limit"},
      {RC_SUCCESS, "does not report"},
      {RC_TEMP_OFF, "20034 RC_TEMP_OFF"},
      {RC_FEATURE_ERROR, "GetTemperatureF: 20013 RC_FEATURE_ERROR"},
  };
  for (const auto& [state, reason] : cases) {
    ScriptedSensor sensor{{RC_TEMP_NOT_REACHED, state}};
    TCoolingWait wait(-20, 0.15);
    EXPECT_EQ(Wait(wait, sensor), CoolingEnd::Failed) << reason;
    EXPECT_NE(wait.Message().find(reason), std::string::npos) << wait.Message();
  }
}

TEST(CoolingWait, InterruptEndsAWaitWithoutLimit)
{
  ScriptedSensor sensor{{RC_TEMP_NOT_REACHED}};
  TCoolingWait wait(-20, 0.0);
  EXPECT_EQ(Wait(wait, sensor, 3), CoolingEnd::Interrupted);
  EXPECT_EQ(sensor.asked, 3);
}

TEST(TemperatureRamp, SetsEachWholeDegreeOnceAndWaitsForTheSensor)
{
  EXPECT_EQ(TTemperatureRamp(20, -20, 5.0).TargetAt(59.0), 16);
  EXPECT_EQ(TTemperatureRamp(20, -20, 5.0).TargetAt(3600.0), -20);
  std::vector<int> targets;
  double sensor = 3.0;
  const TRampPorts ports = {
      .ask = [&]() -> TAnswer<TTemperature> {
        if (targets.back() == 5) sensor += 0.5; // it follows when the last target is set
        return {"GetTemperatureF", RC_SUCCESS, TTemperature{static_cast<float>(sensor), RC_SUCCESS}};
      },
      .setTarget = [&](int celsius) -> unsigned int {
        targets.push_back(celsius);
        return celsius == 100 ? RC_P1_INVALID : RC_SUCCESS;
      },
      .isInterrupted = [] { return false; },
      .onProgress = [](const TCoolingProgress&) {}};
  TTemperatureRamp ramp(2, 5, 600.0);
  EXPECT_EQ(ramp.Run(ports, true), CoolingEnd::Done);
  EXPECT_EQ(targets, (std::vector<int>{2, 3, 4, 5}));
  EXPECT_EQ(sensor, 4.0) << "within a degree";
  TTemperatureRamp refused(100, 90, 600.0);
  EXPECT_EQ(refused.Run(ports, false), CoolingEnd::Failed);
  EXPECT_NE(refused.Message().find("SetTemperature: 20066"), std::string::npos) << refused.Message();
}

} // namespace
} // namespace vxtool
