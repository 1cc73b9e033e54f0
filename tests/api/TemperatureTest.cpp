// SPDX-License-Identifier: MIT
// Cooling and temperature, with answers that the test sets.
#include "tests/support/TStagedCamera.h"
#include "tests/support/TStagedVx.h"
#include "vxcore.h"
#include "vxmcd.h"

#include <gtest/gtest.h>

#include <climits>
#include <limits>

namespace {

using TCalls = std::vector<std::string>;

class Temperature : public ::testing::Test
{
protected:
  Temperature()
  {
    vx_ = TStagedVx{};
    vx_.floats = {{"SensorTemperature", -69.7},
                  {"TargetSensorTemperature", -70.0},
                  {"TargetSensorTemperature min", -99.9},
                  {"TargetSensorTemperature max", 20.5}};
  }

  /// The code of `call` when the camera answers `code` to calls that begin with `step`.
  template <class Call>
  unsigned int CodeFor(const char* step, int code, Call call)
  {
    vx_.codes = {{step, code}};
    const unsigned int result = call();
    vx_.codes.clear();
    return result;
  }

  TStagedVx& vx_ = TStagedVx::Instance();
  const TStagedCamera camera_;
};

TEST_F(Temperature, StateOfTheCoolingIsTheCode)
{
  const std::pair<int, unsigned int> states[] = {
      {0, RC_TEMP_OFF},         {1, RC_TEMP_STABILIZED},     {2, RC_TEMP_NOT_REACHED},
      {3, RC_TEMP_DRIFT},       {4, RC_TEMP_NOT_STABILIZED}, {5, RC_TEMP_NOT_REACHED},
      {-1, RC_TEMP_NOT_REACHED}};
  for (const auto& [index, code] : states) {
    vx_.integers["TemperatureStatus"] = index;
    float degrees = 0.0F;
    int whole = 0;
    EXPECT_EQ(GetTemperatureF(&degrees), code) << index;
    EXPECT_FLOAT_EQ(degrees, -69.7F);
    EXPECT_EQ(GetTemperature(&whole), code) << index;
    EXPECT_EQ(whole, -69) << "the fraction is dropped";
  }
}

TEST_F(Temperature, WhatCannotBeToldHasItsCode)
{
  float degrees = 5.0F;
  int whole = 5;
  const auto get = [&] { return GetTemperatureF(&degrees); };
  EXPECT_EQ(CodeFor("IsImplemented SensorTemperature", 53, get), RC_NOT_SUPPORTED);
  EXPECT_EQ(CodeFor("GetFloat", 4, get), RC_FEATURE_ERROR);
  EXPECT_EQ(degrees, 5.0F);
  EXPECT_EQ(CodeFor("GetFloat", 4, [&] { return GetTemperature(&whole); }), RC_FEATURE_ERROR);
  EXPECT_EQ(whole, -999);
  EXPECT_EQ(CodeFor("GetEnumerated", 4, get), RC_SUCCESS);
  EXPECT_FLOAT_EQ(degrees, -69.7F);

  for (const auto& [value, expected] :
       {std::pair{std::numeric_limits<double>::quiet_NaN(), 0}, {1e300, INT_MAX}, {-1e300, INT_MIN}}) {
    vx_.floats["SensorTemperature"] = value;
    GetTemperature(&whole);
    EXPECT_EQ(whole, expected);
  }
}

TEST_F(Temperature, ChecksComeInTheirOrderWithoutACamera)
{
  UnregisterCamera(kFirstCameraHandle);
  int whole = 5;
  int other = 5;
  float a = 5.0F;
  float b = 5.0F;
  EXPECT_EQ(GetTemperatureF(nullptr), RC_P1_INVALID);
  EXPECT_EQ(GetTemperature(&whole), RC_NOT_INITIALIZED);
  EXPECT_EQ(whole, -999);
  EXPECT_EQ(GetTemperatureRange(&whole, &other), RC_NOT_INITIALIZED);
  EXPECT_EQ(whole, 0);
  EXPECT_EQ(other, 0);
  EXPECT_EQ(GetTemperatureStatus(&a, &b, nullptr, nullptr), RC_NOT_INITIALIZED);
  EXPECT_EQ(a + b, 0.0F);
  for (const auto& code : {SetTemperature(-10), CoolerON(), CoolerOFF(), IsCoolerOn(nullptr), SetFanMode(9)})
    EXPECT_EQ(code, RC_NOT_INITIALIZED);
  EXPECT_TRUE(vx_.calls.empty());
}

TEST_F(Temperature, TargetIsWrittenAsADecimal)
{
  EXPECT_EQ(SetTemperature(-40), RC_SUCCESS);
  EXPECT_EQ(vx_.floats["TargetSensorTemperature"], -40.0);
  const auto set = [] { return SetTemperature(-50); };
  EXPECT_EQ(CodeFor("IsImplemented", 53, set), RC_NOT_SUPPORTED);
  EXPECT_EQ(CodeFor("SetFloat", 3, set), RC_NOT_AVAILABLE);
  for (const int code : {2, 4, 5, 6, 53}) EXPECT_EQ(CodeFor("SetFloat", code, set), RC_P1_INVALID) << code;
}

TEST_F(Temperature, RangeLosesItsFractions)
{
  int minimum = 1;
  int maximum = 1;
  EXPECT_EQ(GetTemperatureRange(&minimum, &maximum), RC_SUCCESS);
  EXPECT_EQ(minimum, -99);
  EXPECT_EQ(maximum, 20);
  EXPECT_EQ(GetTemperatureRange(nullptr, &maximum), RC_SUCCESS);
  EXPECT_EQ(CodeFor("GetFloatMin", 4, [&] { return GetTemperatureRange(&minimum, nullptr); }), RC_SUCCESS);
  EXPECT_EQ(minimum, 0);
  EXPECT_EQ(CodeFor("IsImplemented", 53, [&] { return GetTemperatureRange(&minimum, &maximum); }),
            RC_NOT_SUPPORTED);
  EXPECT_EQ(maximum, 0) << "written first";
}

TEST_F(Temperature, StatusTellsWhatThereIs)
{
  float values[4] = {5.0F, 5.0F, 5.0F, 5.0F};
  const auto get = [&] { return GetTemperatureStatus(&values[0], &values[1], &values[2], &values[3]); };
  EXPECT_EQ(get(), RC_SUCCESS);
  EXPECT_EQ(std::vector<float>(values, values + 4), (std::vector<float>{-69.7F, -70.0F, 0.0F, 0.0F}));
  EXPECT_EQ(CodeFor("GetFloat SensorTemperature", 4, get), RC_SUCCESS);
  EXPECT_EQ(values[0], 0.0F);
  EXPECT_EQ(values[1], -70.0F);
  EXPECT_EQ(CodeFor("IsImplemented TargetSensorTemperature", 4, get), RC_SUCCESS);
  EXPECT_EQ(values[1], 0.0F);
  EXPECT_EQ(GetTemperatureStatus(nullptr, nullptr, nullptr, nullptr), RC_SUCCESS);
}

TEST_F(Temperature, CoolerIsSwitchedWithoutAskingBack)
{
  EXPECT_EQ(CodeFor("SetBool", 5, [] { return CoolerON(); }), RC_SUCCESS);
  EXPECT_EQ(CoolerOFF(), RC_SUCCESS);
  EXPECT_EQ(vx_.calls, (TCalls{"SetBool SensorCooling 1", "SetBool SensorCooling 0"}));

  int on = 0;
  vx_.integers["SensorCooling"] = 1;
  EXPECT_EQ(IsCoolerOn(&on), RC_SUCCESS);
  EXPECT_EQ(on, 1);
  on = 7;
  EXPECT_EQ(CodeFor("GetBool", 4, [&] { return IsCoolerOn(&on); }), RC_SUCCESS);
  EXPECT_EQ(on, 7);
  EXPECT_EQ(IsCoolerOn(nullptr), RC_P1_INVALID);
  EXPECT_EQ(CodeFor("IsImplemented", 53, [] { return IsCoolerOn(nullptr); }), RC_NOT_SUPPORTED);
}

TEST_F(Temperature, FanModesHaveTheirTexts)
{
  const std::pair<int, const char*> modes[] = {{0, "On"}, {1, "Low"}, {2, "Off"}};
  for (const auto& [mode, text] : modes) {
    vx_.calls.clear();
    EXPECT_EQ(SetFanMode(mode), RC_SUCCESS);
    EXPECT_EQ(vx_.calls, (TCalls{"IsImplemented FanSpeed", "GetEnumeratedCount FanSpeed",
                                 std::string("SetEnumeratedString FanSpeed ") + text}));
  }
  vx_.calls.clear();
  for (const int wrong : {3, -1, INT_MIN}) EXPECT_EQ(SetFanMode(wrong), RC_P1_INVALID);
  EXPECT_EQ(vx_.calls.size(), 6u) << "nothing written";
  EXPECT_EQ(CodeFor("SetEnumeratedString", 48, [] { return SetFanMode(1); }), RC_P1_INVALID);
  EXPECT_EQ(CodeFor("IsImplemented", 53, [] { return SetFanMode(9); }), RC_NOT_SUPPORTED);
}

} // namespace
