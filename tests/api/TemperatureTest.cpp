// SPDX-License-Identifier: MIT
// Cooling and temperature, and what each answer of the camera becomes.
#include "tests/support/SimulatedCameraTest.h"

#include <climits>

namespace {

using TCalls = std::vector<std::string>;

constexpr const char* kCamera = "[Simulator]\nCameras=1\n[Camera0]\nModel=RQ512_LX\nSource=manual\n"
                                "[Camera0.TargetSensorTemperature]\nMin=-99.9\nMax=20.5\n";

class Temperature : public SimulatedCameraTest
{
protected:
  Temperature() : SimulatedCameraTest(kCamera) {}

  void SetUp() override
  {
    SimulatedCameraTest::SetUp();
    Open();
  }

  static void AddFault(const std::string& rule)
  {
    ASSERT_EQ(VXSIM_AddFault(rule.c_str()), VX_SUCCESS) << VXSIM_GetLastError();
  }

  /// The code of `call` while the camera answers `code` to calls that begin with `step`.
  template <class Call>
  static unsigned int CodeFor(const std::string& step, int code, Call call)
  {
    VXSIM_ClearFaults();
    AddFault("call " + step + " rc " + std::to_string(code));
    const unsigned int result = call();
    VXSIM_ClearFaults();
    return result;
  }
};

TEST_F(Temperature, StateOfTheCoolingIsTheCode)
{
  const std::pair<int, unsigned int> states[] = {
      {0, RC_TEMP_OFF},         {1, RC_TEMP_STABILIZED},     {2, RC_TEMP_NOT_REACHED},
      {3, RC_TEMP_DRIFT},       {4, RC_TEMP_NOT_STABILIZED}, {5, RC_TEMP_NOT_REACHED},
      {-1, RC_TEMP_NOT_REACHED}};
  for (const auto& [index, code] : states) {
    VXSIM_ClearFaults();
    AddFault("value SensorTemperature set -69.7");
    AddFault("call VX_GetEnumerated feature TemperatureStatus out " + std::to_string(index));
    float degrees = 0.0F;
    int whole = 0;
    EXPECT_EQ(GetTemperatureF(&degrees), code) << index;
    EXPECT_FLOAT_EQ(degrees, -69.7F);
    EXPECT_EQ(GetTemperature(&whole), code) << index;
    EXPECT_EQ(whole, -69) << "the fraction is dropped";
  }
}

TEST_F(Temperature, WhatIsNotKnownHasItsCode)
{
  float degrees = 5.0F;
  int whole = 5;
  const auto get = [&] { return GetTemperatureF(&degrees); };
  EXPECT_EQ(CodeFor("VX_IsImplemented feature SensorTemperature", 53, get), RC_NOT_SUPPORTED);
  EXPECT_EQ(CodeFor("VX_GetFloat", 4, get), RC_FEATURE_ERROR);
  EXPECT_EQ(degrees, 5.0F);
  EXPECT_EQ(CodeFor("VX_GetFloat", 4, [&] { return GetTemperature(&whole); }), RC_FEATURE_ERROR);
  EXPECT_EQ(whole, -999);
  EXPECT_EQ(CodeFor("VX_GetEnumerated", 4, get), RC_SUCCESS);
  EXPECT_NE(degrees, 5.0F);
  for (const auto& [value, expected] : {std::pair{"nan", 0}, {"1e300", INT_MAX}, {"-1e300", INT_MIN}}) {
    VXSIM_ClearFaults();
    AddFault(std::string("value SensorTemperature set ") + value);
    GetTemperature(&whole);
    EXPECT_EQ(whole, expected);
  }
}

TEST_F(Temperature, OutputsAreWrittenBeforeTheCameraIsLookedFor)
{
  ASSERT_EQ(ShutDown(), RC_SUCCESS);
  int whole[3] = {5, 5, 5};
  float a = 5.0F;
  float b = 5.0F;
  EXPECT_EQ(GetTemperatureF(nullptr), RC_P1_INVALID);
  EXPECT_EQ(GetTemperature(&whole[0]), RC_NOT_INITIALIZED);
  EXPECT_EQ(GetTemperatureRange(&whole[1], &whole[2]), RC_NOT_INITIALIZED);
  EXPECT_EQ(std::vector<int>(whole, whole + 3), (std::vector<int>{-999, 0, 0}));
  EXPECT_EQ(GetTemperatureStatus(&a, &b, nullptr, nullptr), RC_NOT_INITIALIZED);
  EXPECT_EQ(a + b, 0.0F);
}

TEST_F(Temperature, TargetIsWrittenAsADecimal)
{
  EXPECT_EQ(SetTemperature(-4), RC_SUCCESS);
  double target = 0.0;
  EXPECT_EQ(VX_GetFloat(CoreHandle(), L"TargetSensorTemperature", &target), VX_SUCCESS);
  EXPECT_EQ(target, -4.0);
  const auto set = [] { return SetTemperature(-5); };
  EXPECT_EQ(CodeFor("VX_IsImplemented", 53, set), RC_NOT_SUPPORTED);
  EXPECT_EQ(CodeFor("VX_SetFloat", 3, set), RC_NOT_AVAILABLE);
  for (const int code : {2, 4, 5, 6, 53}) EXPECT_EQ(CodeFor("VX_SetFloat", code, set), RC_P1_INVALID) << code;
}

TEST_F(Temperature, RangeLosesItsFractions)
{
  int minimum = 1;
  int maximum = 1;
  EXPECT_EQ(GetTemperatureRange(&minimum, &maximum), RC_SUCCESS);
  EXPECT_EQ(minimum, -99);
  EXPECT_EQ(maximum, 20);
  EXPECT_EQ(GetTemperatureRange(nullptr, &maximum), RC_SUCCESS);
  EXPECT_EQ(CodeFor("VX_GetFloatMin", 4, [&] { return GetTemperatureRange(&minimum, nullptr); }), RC_SUCCESS);
  EXPECT_EQ(minimum, 0);
  EXPECT_EQ(CodeFor("VX_IsImplemented", 53, [&] { return GetTemperatureRange(&minimum, &maximum); }),
            RC_NOT_SUPPORTED);
  EXPECT_EQ(maximum, 0) << "written first";
}

TEST_F(Temperature, StatusReportsWhatThereIs)
{
  float values[4] = {5.0F, 5.0F, 5.0F, 5.0F};
  const auto get = [&] { return GetTemperatureStatus(&values[0], &values[1], &values[2], &values[3]); };
  AddFault("value SensorTemperature set -69.7");
  AddFault("value TargetSensorTemperature set -70");
  EXPECT_EQ(get(), RC_SUCCESS);
  EXPECT_EQ(std::vector<float>(values, values + 4), (std::vector<float>{-69.7F, -70.0F, 0.0F, 0.0F}));
  EXPECT_EQ(CodeFor("VX_GetFloat feature SensorTemperature", 4, get), RC_SUCCESS);
  EXPECT_EQ(values[0], 0.0F);
  EXPECT_NE(values[1], 0.0F);
  EXPECT_EQ(CodeFor("VX_IsImplemented feature TargetSensorTemperature", 4, get), RC_SUCCESS);
  EXPECT_EQ(values[1], 0.0F);
  EXPECT_EQ(GetTemperatureStatus(nullptr, nullptr, nullptr, nullptr), RC_SUCCESS);
}

TEST_F(Temperature, CoolerIsSwitchedWithoutAskingBack)
{
  VXSIM_StartCallLog(1);
  EXPECT_EQ(CodeFor("VX_SetBool", 5, CoolerON), RC_SUCCESS);
  EXPECT_EQ(CoolerOFF(), RC_SUCCESS);
  EXPECT_EQ(LoggedCalls(), (TCalls{"VX_SetBool SensorCooling 1 -> 5", "VX_SetBool SensorCooling 0 -> 0"}));

  int on = 7;
  EXPECT_EQ(IsCoolerOn(&on), RC_SUCCESS);
  EXPECT_EQ(on, 0);
  EXPECT_EQ(CoolerON(), RC_SUCCESS);
  EXPECT_EQ(IsCoolerOn(&on), RC_SUCCESS);
  EXPECT_EQ(on, 1);
  on = 7;
  EXPECT_EQ(CodeFor("VX_GetBool", 4, [&] { return IsCoolerOn(&on); }), RC_SUCCESS);
  EXPECT_EQ(on, 7);
  EXPECT_EQ(IsCoolerOn(nullptr), RC_P1_INVALID);
  EXPECT_EQ(CodeFor("VX_IsImplemented", 53, [] { return IsCoolerOn(nullptr); }), RC_NOT_SUPPORTED);
}

TEST_F(Temperature, FanModesHaveTheirTexts)
{
  for (const auto& [mode, text] : {std::pair{0, "On"}, {1, "Low"}, {2, "Off"}}) {
    VXSIM_StartCallLog(1);
    EXPECT_EQ(SetFanMode(mode), RC_SUCCESS);
    EXPECT_EQ(LoggedCalls(), (TCalls{"VX_IsImplemented FanSpeed -> 0", "VX_GetEnumeratedCount FanSpeed -> 0",
                                     std::string("VX_SetEnumeratedString FanSpeed ") + text + " -> 0"}));
  }
  VXSIM_StartCallLog(1);
  for (const int wrong : {3, -1, INT_MIN}) EXPECT_EQ(SetFanMode(wrong), RC_P1_INVALID);
  EXPECT_EQ(LoggedCalls().size(), 6u) << "nothing written";
  EXPECT_EQ(CodeFor("VX_SetEnumeratedString", 48, [] { return SetFanMode(1); }), RC_P1_INVALID);
  EXPECT_EQ(CodeFor("VX_IsImplemented", 53, [] { return SetFanMode(9); }), RC_NOT_SUPPORTED);
}

} // namespace
