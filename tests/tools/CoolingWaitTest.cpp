// SPDX-License-Identifier: MIT
// The wait for a stable temperature, with temperatures that the test scripts.
#include "tools/TCoolingWait.h"

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

} // namespace
} // namespace vxtool
