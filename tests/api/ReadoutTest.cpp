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

  /// Whether a gain is available: for each amplifier of each channel.
  static std::string Availability(int gain)
  {
    int channels = 0;
    GetNumberADChannels(&channels);
    std::string availability;
    for (int channel = 0; channel < channels; ++channel) {
      for (const int amplifier : {0, 1}) {
        int status = 77;
        EXPECT_EQ(IsPreAmpGainAvailable(channel, amplifier, 3, gain, &status), RC_SUCCESS);
        availability += std::to_string(status);
      }
    }
    return availability;
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

TEST_F(Readout, IndicesThatDoNotExistHaveTheirCodes)
{
  OpenCamera(101);
  int value = 77;
  float number = 77.0F;
  char text[16] = {};
  for (const int wrong : {2, -1}) {
    EXPECT_EQ(SetADChannel(wrong), RC_P1_INVALID);
    EXPECT_EQ(GetBitDepth(wrong, nullptr), RC_P2_INVALID);
    EXPECT_EQ(GetBitDepth(wrong, &value), RC_P1_INVALID);
    EXPECT_EQ(SetOutputAmplifier(wrong), RC_P1_INVALID);
    EXPECT_EQ(IsAmplifierAvailable(wrong), RC_INVALID_AMPLIFIER);
    EXPECT_EQ(GetAmpDesc(wrong, text, sizeof text), RC_P1_INVALID);
    EXPECT_EQ(GetAmpMaxSpeed(wrong, &number), RC_P1_INVALID);
    EXPECT_EQ(SetHSSpeed(wrong, 9), RC_P1_INVALID);
  }
  for (const int wrong : {9, -1}) EXPECT_EQ(SetHSSpeed(0, wrong), RC_P2_INVALID);
  EXPECT_EQ(value, 77);
  EXPECT_EQ(number, 77.0F);
  EXPECT_EQ(GetNumberHSSpeeds(2, 2, &value), RC_P1_INVALID);
  EXPECT_EQ(GetNumberHSSpeeds(0, 2, &value), RC_P2_INVALID);
  EXPECT_EQ(value, 0);
  EXPECT_EQ(GetHSSpeed(2, 2, 9, &number), RC_P1_INVALID);
  EXPECT_EQ(GetHSSpeed(0, 2, 9, &number), RC_P2_INVALID);
  EXPECT_EQ(GetHSSpeed(0, 0, 9, &number), RC_P3_INVALID);
  EXPECT_EQ(number, 1.0F);
  EXPECT_EQ(SetPreAmpGain(9), RC_SUCCESS) << "this camera's gains are not checked";
  EXPECT_EQ(GetPreAmpGain(9, &number), RC_P1_INVALID);
  EXPECT_EQ(number, 0.0F);

  OpenCamera(102);
  EXPECT_EQ(SetADChannel(1), RC_P1_INVALID) << "this camera cannot read both";
  EXPECT_EQ(SetPreAmpGain(4), RC_P1_INVALID);
  value = 77;
  EXPECT_EQ(IsPreAmpGainAvailable(1, 2, 4, 4, &value), RC_P1_INVALID);
  EXPECT_EQ(IsPreAmpGainAvailable(0, 2, 4, 4, &value), RC_P2_INVALID);
  EXPECT_EQ(IsPreAmpGainAvailable(0, 0, 4, 4, &value), RC_P4_INVALID);
  EXPECT_EQ(IsPreAmpGainAvailable(0, 0, 4, 0, &value), RC_P3_INVALID);
  EXPECT_EQ(value, 77);
}

TEST_F(Readout, IndicesThatExistAreSetAndReported)
{
  OpenCamera(101);
  int value = 0;
  float number = 0.0F;
  char text[16] = {};
  EXPECT_EQ(GetNumberADChannels(&value), RC_SUCCESS);
  EXPECT_EQ(value, 2);
  EXPECT_EQ(SetADChannel(1), RC_SUCCESS);
  EXPECT_EQ(GetAmpDesc(0, text, sizeof text), RC_SUCCESS);
  EXPECT_STREQ(text, "Dual Gain");
  EXPECT_EQ(GetBitDepth(1, &value), RC_SUCCESS);
  EXPECT_EQ(value, 16);
  EXPECT_EQ(SetADChannel(0), RC_SUCCESS);
  EXPECT_EQ(SetHSSpeed(1, 0), RC_SUCCESS);
  EXPECT_EQ(GetText(L"PixelReadoutRate"), L"100 MHz");
  EXPECT_EQ(GetText(L"PreAmpGainChannel"), L"High");
  EXPECT_EQ(SetOutputAmplifier(0), RC_SUCCESS);
  EXPECT_EQ(GetText(L"PreAmpGainChannel"), L"Low");
  EXPECT_EQ(IsAmplifierAvailable(1), RC_SUCCESS);
  EXPECT_EQ(GetAmpMaxSpeed(1, &number), RC_SUCCESS);
  EXPECT_EQ(number, 280.0F);
  EXPECT_EQ(GetNumberHSSpeeds(0, 1, &value), RC_SUCCESS);
  EXPECT_EQ(value, 3);
  EXPECT_EQ(GetHSSpeed(0, 0, 1, &number), RC_SUCCESS);
  EXPECT_EQ(number, 200.0F);
  EXPECT_EQ(GetNumberPreAmpGains(&value), RC_SUCCESS);
  EXPECT_EQ(value, 3);
  for (int gain = 0; gain < 3; ++gain)
    EXPECT_EQ(Availability(gain), gain == 0 ? "1000" : gain == 1 ? "0100" : "0011") << gain;

  OpenCamera(102);
  EXPECT_EQ(GetPreAmpGain(0, &number), RC_SUCCESS);
  EXPECT_EQ(number, 1.5F);
  const wchar_t* const texts[] = {L"1.5 low", L"2", L"10 (high)", L"30"};
  for (int gain = 0; gain < 4; ++gain) {
    EXPECT_EQ(SetPreAmpGain(gain), RC_SUCCESS);
    EXPECT_EQ(GetText(L"PreAmpGain"), texts[gain]);
    EXPECT_EQ(GetText(L"PreAmpGainSelector"), gain < 2 ? L"Low" : L"High");
    EXPECT_EQ(Availability(gain), gain < 2 ? "10" : "01") << gain;
  }
}

TEST_F(Readout, RefusedWritesCountAsDoneAndUnreadableTextsAsZero)
{
  OpenCamera(101);
  ASSERT_EQ(SetADChannel(0), RC_SUCCESS);
  ASSERT_EQ(SetOutputAmplifier(1), RC_SUCCESS);
  VXSIM_AddFault("call VX_SetEnumString any rc 5");
  EXPECT_EQ(SetOutputAmplifier(0), RC_SUCCESS);
  EXPECT_EQ(GetText(L"PreAmpGainChannel"), L"High");
  float number = 77.0F;
  VXSIM_AddFault("call VX_GetEnumStringByIndex any rc 53");
  EXPECT_EQ(GetHSSpeed(0, 0, 1, &number), RC_SUCCESS);
  EXPECT_EQ(number, 0.0F);
  char text[16] = {};
  EXPECT_EQ(GetPreAmpGainText(0, text, sizeof text), RC_P1_INVALID);
  VXSIM_AddFault("call VX_GetEnumCount any rc 53");
  EXPECT_EQ(SetHSSpeed(1, 0), RC_P2_INVALID) << "nothing is valid when the count cannot be read";
  EXPECT_EQ(GetAmpMaxSpeed(0, &number), RC_SUCCESS);
  EXPECT_EQ(number, 0.0F);
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

TEST_F(Readout, BaselineClampReportsWhatTheCameraAnswers)
{
  OpenCamera(101);
  int state = 77;
  EXPECT_EQ(SetBaselineClamp(1), RC_SUCCESS);
  EXPECT_EQ(GetBaselineClamp(&state), RC_SUCCESS);
  EXPECT_EQ(state, 1);
  EXPECT_EQ(GetBaselineClamp(nullptr), RC_SUCCESS);
  for (const int wrong : {2, -1}) EXPECT_EQ(SetBaselineClamp(wrong), RC_P1_INVALID);
  const std::pair<int, unsigned int> answers[] = {{2, RC_NOT_SUPPORTED}, {3, RC_NOT_AVAILABLE},
                                                  {4, RC_NOT_AVAILABLE}, {5, RC_NOT_AVAILABLE},
                                                  {6, RC_P1_INVALID},    {53, RC_P1_INVALID}};
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
