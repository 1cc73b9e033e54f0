// SPDX-License-Identifier: MIT
// Settings: which features are asked and written, and what each answer of the camera becomes.
#include "tests/support/SimulatedCameraTest.h"

#include <limits>
#include <string>

namespace {

constexpr const char* kThreeCameras =
    "[Simulator]\nCameras=3\n"
    "[Camera0]\nModel=TRELLIS CMOS\nSource=manual\n"
    "[Camera1]\nModel=RQ512_LX\nSource=manual\n"
    "[Camera2]\nModel=RQ512_LX\nSource=manual\nRemove=ExposureTime,FrameRate,BurstRate,"
    "AccumulateCount,ReadoutTime,SoftwareTrigger,Overlap\n";

class Settings : public SimulatedCameraTest
{
protected:
  Settings() : SimulatedCameraTest(kThreeCameras) {}

  double GetFloat(const wchar_t* feature) const
  {
    double value = -1.0;
    EXPECT_EQ(VX_GetFloat(CoreHandle(), feature, &value), VX_SUCCESS);
    return value;
  }

  /// The code of `call` when the camera answers `code` to the function named.
  template <class Call>
  static unsigned int CodeFor(const std::string& function, int code, Call call)
  {
    VXSIM_ClearFaults();
    const std::string rule = "call " + function + " any rc " + std::to_string(code);
    EXPECT_EQ(VXSIM_AddFault(rule.c_str()), VX_SUCCESS) << VXSIM_GetLastError();
    const unsigned int result = call();
    VXSIM_ClearFaults();
    return result;
  }
};

TEST_F(Settings, ExposureIsRaisedToTheMinimumButNotLowered)
{
  OpenCamera(101);
  double minimum = 0.0;
  double maximum = 0.0;
  VX_GetFloatMin(CoreHandle(), L"ExposureTime", &minimum);
  VX_GetFloatMax(CoreHandle(), L"ExposureTime", &maximum);
  EXPECT_EQ(SetExposureTime(0.0F), RC_SUCCESS);
  EXPECT_DOUBLE_EQ(GetFloat(L"ExposureTime"), minimum);
  EXPECT_EQ(SetExposureTime(0.25F), RC_SUCCESS);
  EXPECT_NEAR(GetFloat(L"ExposureTime"), 0.25, 0.001);
  EXPECT_EQ(SetExposureTime(static_cast<float>(maximum * 2)), RC_P1_INVALID);
  EXPECT_EQ(SetExposureTime(std::numeric_limits<float>::quiet_NaN()), RC_P1_INVALID);
  EXPECT_NEAR(GetFloat(L"ExposureTime"), 0.25, 0.001);

  float longest = 0.0F;
  EXPECT_EQ(GetMaximumExposure(&longest), RC_SUCCESS);
  EXPECT_FLOAT_EQ(longest, static_cast<float>(maximum));
  EXPECT_EQ(CodeFor("VX_GetFloatMax", 3, [&] { return GetMaximumExposure(&longest); }), RC_P1_INVALID);
  EXPECT_EQ(longest, 0.0F) << "written even so";
}

TEST_F(Settings, ExposureThatIsNotWritableDependsOnTheRun)
{
  OpenCamera(102);
  const auto setExposure = [] { return SetExposureTime(0.01F); };
  EXPECT_EQ(CodeFor("VX_SetFloat", 5, setExposure), RC_NOT_AVAILABLE);
  EXPECT_EQ(CodeFor("VX_SetFloat", 4, setExposure), RC_P1_INVALID);
  SetAcquisitionMode(5);
  ASSERT_EQ(StartAcquisition(), RC_SUCCESS);
  EXPECT_EQ(CodeFor("VX_SetFloat", 5, setExposure), RC_ACQUIRING);
}

TEST_F(Settings, KineticCycleBecomesARateWithinTheLimits)
{
  OpenCamera(101);
  EXPECT_EQ(SetExposureTime(0.001F), RC_SUCCESS);
  double minimum = 0.0;
  double maximum = 0.0;
  VX_GetFloatMin(CoreHandle(), L"FrameRate", &minimum);
  VX_GetFloatMax(CoreHandle(), L"FrameRate", &maximum);
  EXPECT_EQ(SetKineticCycleTime(0.5F), RC_SUCCESS);
  EXPECT_NEAR(GetFloat(L"FrameRate"), 2.0, 0.01);
  EXPECT_EQ(SetKineticCycleTime(1e9F), RC_SUCCESS);
  EXPECT_NEAR(GetFloat(L"FrameRate"), minimum, minimum * 1e-3);
  EXPECT_EQ(SetKineticCycleTime(0.0F), RC_SUCCESS);
  EXPECT_NEAR(GetFloat(L"FrameRate"), maximum, maximum * 1e-3);
  EXPECT_EQ(CodeFor("VX_SetFloat", 6, [] { return SetKineticCycleTime(0.5F); }), RC_P1_INVALID);

  // A limit that cannot be read is none.
  for (const char* read : {"VX_GetFloatMin", "VX_GetFloatMax"}) {
    SetKineticCycleTime(0.5F);
    EXPECT_EQ(CodeFor(read, 3, [] { return SetKineticCycleTime(0.25F); }), RC_SUCCESS) << read;
    EXPECT_NEAR(GetFloat(L"FrameRate"), 4.0, 0.01) << read;
  }
}

TEST_F(Settings, AccumulationCycleNeedsAccumulations)
{
  OpenCamera(101);
  VXSIM_StartCallLog(1);
  EXPECT_EQ(SetAccumulationCycleTime(0.1F), RC_NOT_SUPPORTED);
  EXPECT_EQ(LoggedCalls(), (std::vector<std::string>{"VX_IsImplemented AccumulateCount -> 0"}));
  VXSIM_StopCallLog();

  ASSERT_EQ(SetNumberAccumulations(2), RC_SUCCESS);
  EXPECT_EQ(SetAccumulationCycleTime(0.1F), RC_SUCCESS);
  EXPECT_NEAR(GetFloat(L"BurstRate"), 10.0, 0.01);
  double maximum = 0.0;
  VX_GetFloatMax(CoreHandle(), L"BurstRate", &maximum);
  EXPECT_EQ(SetAccumulationCycleTime(0.0F), RC_SUCCESS);
  EXPECT_NEAR(GetFloat(L"BurstRate"), maximum, maximum * 1e-3);
  EXPECT_EQ(CodeFor("VX_GetFloatMax", 3, [] { return SetAccumulationCycleTime(0.1F); }), RC_SUCCESS);
  EXPECT_NEAR(GetFloat(L"BurstRate"), 10.0, 0.01) << "the limit is not known";
}

TEST_F(Settings, FeaturesThatTheCameraLacksAreNotSupported)
{
  OpenCamera(103);
  float a = 7.0F;
  float b = 7.0F;
  float c = 7.0F;
  EXPECT_EQ(SetExposureTime(0.1F), RC_NOT_SUPPORTED);
  EXPECT_EQ(SetKineticCycleTime(0.1F), RC_NOT_SUPPORTED);
  EXPECT_EQ(SetAccumulationCycleTime(0.1F), RC_NOT_SUPPORTED);
  EXPECT_EQ(SetNumberAccumulations(2), RC_NOT_SUPPORTED);
  EXPECT_EQ(SetNumberAccumulations(1), RC_SUCCESS);
  EXPECT_EQ(SendSoftwareTrigger(), RC_NOT_SUPPORTED);
  EXPECT_EQ(SetOverlapMode(1), RC_NOT_SUPPORTED);
  EXPECT_EQ(GetReadOutTime(&a), RC_NOT_SUPPORTED);
  EXPECT_EQ(a, 0.0F);
  EXPECT_EQ(GetAcquisitionTimings(&a, &b, &c), RC_SUCCESS);
  EXPECT_FLOAT_EQ(a, 0.01F);
  EXPECT_FLOAT_EQ(b, 0.03F) << "as the kinetic cycle, without a burst rate";
  EXPECT_FLOAT_EQ(c, 0.03F);
}

TEST_F(Settings, TimingsAreWhatTheCameraSays)
{
  OpenCamera(101);
  SetExposureTime(0.02F);
  SetKineticCycleTime(0.25F);
  float exposure = 0.0F;
  float accumulate = 0.0F;
  float kinetic = 0.0F;
  EXPECT_EQ(GetAcquisitionTimings(&exposure, &accumulate, &kinetic), RC_SUCCESS);
  EXPECT_NEAR(exposure, 0.02F, 0.001F);
  EXPECT_NEAR(kinetic, 0.25F, 0.001F);
  EXPECT_NEAR(accumulate, 1.0 / GetFloat(L"BurstRate"), 1e-4);
  EXPECT_EQ(GetAcquisitionTimings(nullptr, nullptr, nullptr), RC_SUCCESS);

  VXSIM_AddFault("call VX_GetFloat feature BurstRate any rc 4");
  GetAcquisitionTimings(&exposure, &accumulate, &kinetic);
  EXPECT_FLOAT_EQ(accumulate, 0.03F);
  VXSIM_ClearFaults();

  float readout = -1.0F;
  EXPECT_EQ(GetReadOutTime(&readout), RC_SUCCESS);
  EXPECT_GT(readout, 0.0F);
  EXPECT_EQ(GetReadOutTime(nullptr), RC_P1_INVALID);
  EXPECT_EQ(CodeFor("VX_GetFloat", 4, [&] { return GetReadOutTime(&readout); }), RC_NOT_AVAILABLE);
  EXPECT_EQ(CodeFor("VX_GetFloat", 3, [&] { return GetReadOutTime(&readout); }), RC_P1_INVALID);
  EXPECT_EQ(readout, 0.0F);
}

TEST_F(Settings, TriggerModesHaveTheirTexts)
{
  OpenCamera(101);
  const std::pair<int, const wchar_t*> modes[] = {
      {7, L"External Exposure"}, {6, L"External Start"}, {10, L"Software"}, {0, L"Internal"}};
  for (const auto& [mode, text] : modes) {
    EXPECT_EQ(SetTriggerMode(mode), RC_SUCCESS) << mode;
    EXPECT_EQ(GetText(L"TriggerMode"), text);
  }
  VXSIM_StartCallLog(1);
  EXPECT_EQ(SetTriggerMode(2), RC_P1_INVALID);
  EXPECT_EQ(LoggedCalls(), (std::vector<std::string>{"VX_IsImplemented TriggerConfiguration -> 0"}));
  VXSIM_StopCallLog();

  EXPECT_EQ(CodeFor("VX_IsImplemented", 53, [] { return SetTriggerMode(0); }), RC_FEATURE_ERROR);
  EXPECT_EQ(CodeFor("VX_IsEnumeratedIndexAvailable", 53, [] { return SetTriggerMode(6); }),
            RC_INVALID_TRIGGER_MODE);
  EXPECT_EQ(CodeFor("VX_SetEnumeratedString", 5, [] { return SetTriggerMode(6); }), RC_SUCCESS)
      << "the answer to the write does not count";
}

TEST_F(Settings, ExternalTriggerHasTheNameTheCameraGivesIt)
{
  for (const long handle : {101L, 102L}) {
    OpenCamera(handle);
    int hasConfiguration = 0;
    VX_IsImplemented(CoreHandle(), L"TriggerConfiguration", &hasConfiguration);
    const std::wstring expected = hasConfiguration ? L"External Level Transition" : L"External";
    std::wstring text;
    EXPECT_EQ(TriggerModeFeatureFinder(text), RC_SUCCESS);
    EXPECT_EQ(text, expected);
    EXPECT_EQ(SetTriggerMode(1), RC_SUCCESS);
    EXPECT_EQ(GetText(L"TriggerMode"), expected);
  }
}

TEST_F(Settings, ReadModeAndOverlapIgnoreWhatTheyMay)
{
  OpenCamera(101);
  EXPECT_EQ(SetReadMode(2), RC_SUCCESS);
  EXPECT_EQ(GetText(L"AOILayout"), L"Track");
  EXPECT_EQ(SetReadMode(4), RC_SUCCESS);
  EXPECT_EQ(GetText(L"AOILayout"), L"Image");
  EXPECT_EQ(SetReadMode(0), RC_P1_INVALID);
  EXPECT_EQ(CodeFor("VX_SetEnumeratedString", 5, [] { return SetReadMode(2); }), RC_SUCCESS);

  const std::pair<int, unsigned int> answers[] = {{0, RC_SUCCESS},       {2, RC_NOT_SUPPORTED},
                                                  {3, RC_NOT_AVAILABLE}, {5, RC_NOT_AVAILABLE},
                                                  {6, RC_P1_INVALID},    {53, RC_SUCCESS}};
  for (const auto& [code, result] : answers) {
    if (code == 0) continue;
    EXPECT_EQ(CodeFor("VX_SetBool", code, [] { return SetOverlapMode(1); }), result) << code;
    EXPECT_EQ(CodeFor("VX_SetBool", code, [] { return SetFrameTransferMode(1); }), result) << code;
    EXPECT_EQ(CodeFor("VX_SetBool", code, [] { return SetMetaData(1); }), result) << code;
  }
  EXPECT_EQ(SetOverlapMode(1), RC_SUCCESS);
}

TEST_F(Settings, CountsAreAnsweredAsTheModeTakesThem)
{
  OpenCamera(102);
  EXPECT_EQ(SetAcquisitionMode(4), RC_P1_INVALID);
  EXPECT_EQ(SetAcquisitionMode(3), RC_SUCCESS);
  EXPECT_EQ(SetNumberKinetics(0), RC_P1_INVALID);
  EXPECT_EQ(SetNumberKinetics(12), RC_SUCCESS);
  EXPECT_EQ(GetInt(L"FrameCount"), 12);
  EXPECT_EQ(CodeFor("VX_SetInt", 5, [] { return SetNumberAccumulations(3); }), RC_NOT_AVAILABLE);
  EXPECT_EQ(CodeFor("VX_SetInt", 5, [] { return SetNumberKinetics(9); }), RC_SUCCESS);
  EXPECT_EQ(GetInt(L"FrameCount"), 12);
  ASSERT_EQ(StartAcquisition(), RC_SUCCESS);
  EXPECT_EQ(GetInt(L"FrameCount"), 27) << "what could not be written was written before the start";
}

// Neither order of the three calls begins a run with another count than was asked for.
TEST_F(Settings, CountThatTheCameraRefusesIsRefusedByTheModeOrTheStart)
{
  OpenCamera(102);
  ASSERT_EQ(SetNumberKinetics(12), RC_SUCCESS);
  EXPECT_EQ(CodeFor("VX_SetInt", 6, [] { return SetAcquisitionMode(3); }), RC_P1_INVALID);
  ASSERT_EQ(StartAcquisition(), RC_SUCCESS) << "with the mode before";
  EXPECT_EQ(SetAcquisitionMode(3), RC_SUCCESS) << "written before the next start";
  EXPECT_EQ(CodeFor("VX_SetInt", 6, [] { return StartAcquisition(); }), RC_START_REFUSED);
  EXPECT_EQ(CodeFor("VX_SetInt", 5, [] { return StartAcquisition(); }), RC_START_REFUSED);
  EXPECT_EQ(Status(), RC_IDLE);
  ASSERT_EQ(StartAcquisition(), RC_SUCCESS);
  EXPECT_EQ(GetInt(L"FrameCount"), 12);
}

TEST_F(Settings, BurstsOnTheControllerBusHaveTheirCodes)
{
  OpenCamera(101);
  unsigned char data[] = {0, 0};
  constexpr unsigned char kThermometer = 0x4B;
  EXPECT_EQ(I2CBurstWrite(kThermometer, 1, data), RC_SUCCESS);
  EXPECT_EQ(I2CBurstRead(kThermometer, 2, data), RC_SUCCESS);
  EXPECT_EQ(I2CBurstRead(kThermometer, 1, nullptr), RC_I2C_ERROR);
  EXPECT_EQ(I2CBurstRead(kThermometer, -1, data), RC_P2_INVALID) << "the count has 32 bits in the camera";
  const std::pair<const char*, unsigned int> steps[] = {
      {"VX_IsImplemented", RC_NOT_SUPPORTED},
      {"VX_SetInt feature ControllerI2CAddress", RC_P1_INVALID},
      {"VX_SetInt feature ControllerI2CByteCount", RC_P2_INVALID},
      {"VX_SetInt feature ControllerI2CByteSelector", RC_I2C_ERROR},
      {"VX_Command", RC_I2C_ERROR}};
  for (const auto& [step, code] : steps) {
    EXPECT_EQ(CodeFor(step, 6, [&] { return I2CBurstWrite(kThermometer, 1, data); }), code) << step;
    EXPECT_EQ(CodeFor(step, 6, [&] { return I2CBurstRead(kThermometer, 1, data); }), code) << step;
  }
}

} // namespace
