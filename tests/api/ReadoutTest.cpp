// SPDX-License-Identifier: MIT
// The readout channel by index: codes, outputs on failure, and what reaches the camera.
#include "tests/support/SimulatedCameraTest.h"

#include <cstring>

namespace {

constexpr const char* kBothGainModels = "[Simulator]\nCameras=2\n[Camera0]\nModel=TRELLIS CMOS\nSource=manual\n"
                                        "[Camera1]\nModel=RQ512_LX\nSource=manual\n"
                                        "[Camera1.PreAmpGain]\nTexts=1.5 low|2|10 (high)|30\n";

class Readout : public SimulatedCameraTest
{
protected:
  Readout() : SimulatedCameraTest(kBothGainModels) {}

  static std::string GainText(int gain)
  {
    char text[32] = {};
    EXPECT_EQ(GetPreAmpGainText(gain, text, sizeof text), RC_SUCCESS);
    return text;
  }
};

TEST_F(Readout, WithoutACameraTheADChannelSucceedsAndSomeOutputsAreWritten)
{
  int value = 77;
  float speed = 77.0F;
  EXPECT_EQ(SetADChannel(9), RC_SUCCESS);
  EXPECT_EQ(GetNumberADChannels(&value), RC_SUCCESS);
  EXPECT_EQ(GetBitDepth(9, &value), RC_SUCCESS);
  EXPECT_EQ(value, 77);
  EXPECT_EQ(GetNumberHSSpeeds(0, 0, &value), RC_NOT_INITIALIZED);
  EXPECT_EQ(value, 0) << "written first";
  EXPECT_EQ(GetHSSpeed(0, 0, 0, &speed), RC_NOT_INITIALIZED);
  EXPECT_EQ(speed, 1.0F);
  EXPECT_EQ(GetPreAmpGain(0, &speed), RC_NOT_INITIALIZED);
  EXPECT_EQ(speed, 0.0F);
}

TEST_F(Readout, ChannelsAndAmplifiersFollowEachOther)
{
  OpenCamera(101);
  int value = 0;
  EXPECT_EQ(GetNumberADChannels(&value), RC_SUCCESS);
  EXPECT_EQ(value, 2);
  EXPECT_EQ(SetADChannel(0), RC_SUCCESS);
  EXPECT_EQ(GetText(L"PreAmpGainChannel"), L"Low");
  EXPECT_EQ(SetOutputAmplifier(1), RC_SUCCESS);
  EXPECT_EQ(GetText(L"PreAmpGainChannel"), L"High");
  EXPECT_EQ(SetADChannel(1), RC_SUCCESS);
  EXPECT_EQ(GetText(L"PreAmpGainChannel"), L"Both");
  char text[16] = {};
  EXPECT_EQ(GetAmpDesc(0, text, sizeof text), RC_SUCCESS);
  EXPECT_STREQ(text, "Dual Gain");
  EXPECT_EQ(SetOutputAmplifier(0), RC_SUCCESS);
  EXPECT_EQ(GetText(L"PreAmpGainChannel"), L"Both");

  EXPECT_EQ(GetBitDepth(1, &value), RC_SUCCESS);
  EXPECT_EQ(value, 16);
  EXPECT_EQ(GetBitDepth(2, nullptr), RC_P2_INVALID);
  EXPECT_EQ(GetBitDepth(2, &value), RC_P1_INVALID);
  EXPECT_EQ(value, 16);
  EXPECT_EQ(GetNumberAmp(&value), RC_SUCCESS);
  EXPECT_EQ(value, 2);
  EXPECT_EQ(IsAmplifierAvailable(1), RC_SUCCESS);
  for (const int wrong : {2, -1}) {
    EXPECT_EQ(IsAmplifierAvailable(wrong), RC_INVALID_AMPLIFIER);
    EXPECT_EQ(SetOutputAmplifier(wrong), RC_P1_INVALID);
    EXPECT_EQ(SetADChannel(wrong), RC_P1_INVALID);
    EXPECT_EQ(GetAmpDesc(wrong, text, sizeof text), RC_P1_INVALID);
  }
  OpenCamera(102);
  EXPECT_EQ(SetADChannel(1), RC_P1_INVALID) << "this camera cannot read both";
}

TEST_F(Readout, TextsStayWithinTheirBuffers)
{
  OpenCamera(101);
  ASSERT_EQ(SetADChannel(0), RC_SUCCESS);
  char text[16];
  std::memset(text, 'x', sizeof text);
  EXPECT_EQ(GetAmpDesc(0, text, 4), RC_SUCCESS);
  EXPECT_EQ(std::string(text, 6), "Lowxxx") << "cut without a terminator";
  EXPECT_EQ(GetAmpDesc(0, text, 12), RC_SUCCESS);
  EXPECT_EQ(std::string(text, 16), std::string("Low Gain\0\0\0xxxxx", 16)) << "filled with zeros";
  std::memset(text, 'x', sizeof text);
  for (const int length : {1, 0, -1, -2147483647 - 1}) {
    EXPECT_EQ(GetAmpDesc(0, text, length), RC_SUCCESS);
    if (length < 1) {
      EXPECT_EQ(GetPreAmpGainText(0, text, length), RC_SUCCESS);
    }
  }
  EXPECT_EQ(std::string(text, 16), std::string(16, 'x'));
  EXPECT_EQ(GetPreAmpGainText(0, text, 5), RC_SUCCESS);
  EXPECT_EQ(std::string(text, 7), std::string("Gain\0xx", 7));
  EXPECT_EQ(GetAmpDesc(0, nullptr, 5), RC_SUCCESS);
  EXPECT_EQ(GetPreAmpGainText(0, nullptr, 5), RC_P2_INVALID);
  EXPECT_EQ(GetPreAmpGainText(3, nullptr, 5), RC_P1_INVALID);
}

TEST_F(Readout, GainTextsLoseTheirBrackets)
{
  OpenCamera(101);
  EXPECT_EQ(GainText(0), "Gain 1");
  EXPECT_EQ(GainText(2), "Gain 1+2");
  OpenCamera(102);
  EXPECT_EQ(GainText(2), "10");
  EXPECT_EQ(GainText(1), "2");
  EXPECT_EQ(GetPreAmpGainText(4, nullptr, 0), RC_P1_INVALID);
  VXSIM_AddFault("call VX_GetEnumStringByIndex feature PreAmpGain any unterminated");
  char text[256] = {};
  EXPECT_EQ(GetPreAmpGainText(0, text, sizeof text), RC_SUCCESS);
  EXPECT_EQ(std::strlen(text), 99u);
}

TEST_F(Readout, SpeedsAreTheRatesInMegahertz)
{
  OpenCamera(101);
  float speed = 0.0F;
  int count = 0;
  EXPECT_EQ(GetAmpMaxSpeed(0, &speed), RC_SUCCESS);
  EXPECT_EQ(speed, 280.0F);
  EXPECT_EQ(GetAmpMaxSpeed(2, &speed), RC_P1_INVALID);
  EXPECT_EQ(GetNumberHSSpeeds(0, 1, &count), RC_SUCCESS);
  EXPECT_EQ(count, 3);
  EXPECT_EQ(GetNumberHSSpeeds(0, 2, &count), RC_P2_INVALID);
  EXPECT_EQ(count, 0);
  EXPECT_EQ(GetNumberHSSpeeds(2, 2, &count), RC_P1_INVALID);
  EXPECT_EQ(GetHSSpeed(0, 0, 1, &speed), RC_SUCCESS);
  EXPECT_EQ(speed, 200.0F);
  EXPECT_EQ(GetHSSpeed(0, 0, 3, &speed), RC_P3_INVALID);
  EXPECT_EQ(speed, 1.0F);
  EXPECT_EQ(GetHSSpeed(2, 2, 3, &speed), RC_P1_INVALID);
  EXPECT_EQ(GetHSSpeed(0, 2, 3, &speed), RC_P2_INVALID);

  EXPECT_EQ(SetHSSpeed(2, 3), RC_P1_INVALID);
  EXPECT_EQ(SetHSSpeed(1, 3), RC_P2_INVALID);
  SetADChannel(0);
  VXSIM_StartCallLog(1);
  EXPECT_EQ(SetHSSpeed(1, 0), RC_SUCCESS);
  std::vector<std::string> writes;
  for (const std::string& call : LoggedCalls())
    if (call.rfind("VX_Set", 0) == 0) writes.push_back(call);
  EXPECT_EQ(writes, (std::vector<std::string>{"VX_SetEnumIndex PixelReadoutRate 0 -> 0",
                                              "VX_SetEnumString PreAmpGainChannel High -> 0"}));
}

TEST_F(Readout, GainModelIsTheCameras)
{
  OpenCamera(101);
  int value = 0;
  float factor = 77.0F;
  EXPECT_EQ(GetNumberPreAmpGains(&value), RC_SUCCESS);
  EXPECT_EQ(value, 3);
  EXPECT_EQ(GetPreAmpGain(1, &factor), RC_SUCCESS);
  EXPECT_EQ(factor, 2.0F);
  EXPECT_EQ(GetPreAmpGain(3, &factor), RC_P1_INVALID);
  EXPECT_EQ(factor, 0.0F);
  EXPECT_EQ(SetPreAmpGain(0), RC_SUCCESS);
  EXPECT_EQ(GetText(L"SimplePreAmpGainControl"), L"Gain 1 (11-bit)");
  EXPECT_EQ(SetPreAmpGain(9), RC_SUCCESS);
  EXPECT_EQ(GetText(L"SimplePreAmpGainControl"), L"Gain 1 (11-bit)");
  EXPECT_EQ(IsPreAmpGainAvailable(0, 1, 0, 1, &value), RC_SUCCESS);
  EXPECT_EQ(value, 1);
  EXPECT_EQ(IsPreAmpGainAvailable(0, 0, 4, 3, &value), RC_P3_INVALID);

  OpenCamera(102);
  EXPECT_EQ(GetPreAmpGain(0, &factor), RC_SUCCESS);
  EXPECT_EQ(factor, 1.5F);
  EXPECT_EQ(SetPreAmpGain(2), RC_SUCCESS);
  EXPECT_EQ(GetText(L"PreAmpGain"), L"10 (high)");
  EXPECT_EQ(GetText(L"PreAmpGainSelector"), L"High");
  EXPECT_EQ(SetPreAmpGain(4), RC_P1_INVALID);
  EXPECT_EQ(IsPreAmpGainAvailable(1, 2, 4, 4, &value), RC_P1_INVALID);
  EXPECT_EQ(IsPreAmpGainAvailable(0, 2, 4, 4, &value), RC_P2_INVALID);
  EXPECT_EQ(IsPreAmpGainAvailable(0, 0, 4, 4, &value), RC_P4_INVALID);
  EXPECT_EQ(value, 1) << "untouched";
  EXPECT_EQ(IsPreAmpGainAvailable(0, 0, 3, 2, &value), RC_SUCCESS);
  EXPECT_EQ(value, 0);
  value = 77;
  VXSIM_AddFault("call VX_GetEnumCount feature PreAmpGain any rc 53");
  EXPECT_EQ(GetNumberPreAmpGains(&value), RC_SUCCESS);
  EXPECT_EQ(value, 77);
}

TEST_F(Readout, GainModelOfACameraThatCannotBeAskedIsTheDirectOne)
{
  VXSIM_AddFault("call VX_IsImplemented feature SimplePreAmpGainControl at 1 rc 53");
  VXSIM_AddFault("call VX_GetEnumIndex feature PreAmpGainChannel at 1 rc 53");
  OpenCamera(101);
  int count = 77;
  EXPECT_EQ(GetNumberPreAmpGains(&count), RC_SUCCESS);
  EXPECT_EQ(count, 77) << "this camera has no gains to be set directly";
  EXPECT_EQ(SetPreAmpGain(0), RC_P1_INVALID);
}

TEST_F(Readout, BaselineClampTellsWhatTheCameraAnswers)
{
  OpenCamera(101);
  int state = 77;
  EXPECT_EQ(SetBaselineClamp(1), RC_SUCCESS);
  EXPECT_EQ(GetBaselineClamp(&state), RC_SUCCESS);
  EXPECT_EQ(state, 1);
  EXPECT_EQ(GetBaselineClamp(nullptr), RC_SUCCESS);
  for (const int wrong : {2, -1}) EXPECT_EQ(SetBaselineClamp(wrong), RC_P1_INVALID);
  const std::pair<int, unsigned int> answers[] = {{2, RC_NOT_SUPPORTED},
                                                  {4, RC_NOT_AVAILABLE},
                                                  {5, RC_NOT_AVAILABLE},
                                                  {6, RC_P1_INVALID},
                                                  {53, RC_P1_INVALID}};
  for (const auto& [answer, code] : answers) {
    VXSIM_ClearFaults();
    for (const char* const function : {"VX_SetBool", "VX_GetBool"}) {
      const std::string rule =
          std::string("call ") + function + " feature BaselineClamp any rc " + std::to_string(answer);
      ASSERT_EQ(VXSIM_AddFault(rule.c_str()), VX_SUCCESS);
    }
    EXPECT_EQ(SetBaselineClamp(0), code) << answer;
    EXPECT_EQ(GetBaselineClamp(&state), code) << answer;
  }
  EXPECT_EQ(state, 1);
}

TEST_F(Readout, MemoryFillNeedsAKnownMemory)
{
  OpenCamera(101);
  int percent = 77;
  EXPECT_EQ(GetFIFOUsage(nullptr), RC_P1_INVALID);
  VXSIM_AddFault("call VX_GetString feature DDR2Type any rc 53");
  EXPECT_EQ(GetFIFOUsage(&percent), RC_NOT_SUPPORTED);
  VXSIM_ClearFaults();
  VXSIM_AddFault("call VX_SetInt feature RegisterAddress any rc 53");
  EXPECT_EQ(GetFIFOUsage(&percent), RC_SUCCESS);
  EXPECT_EQ(percent, 77);
}

} // namespace
