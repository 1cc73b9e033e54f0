// SPDX-License-Identifier: MIT
// Channels, amplifiers, speeds and gains by index, and what becomes of them in the camera.
#include "features/feature_interfaces.h"
#include "features/TDirectPreAmpGain.h"
#include "features/TPseudoADChannel.h"
#include "features/TPseudoAmplifier.h"
#include "features/TPseudoBaselineClamp.h"
#include "features/TPseudoHSSpeed.h"
#include "features/TPseudoPreAmpGain.h"
#include "features/value_texts.h"
#include "tests/support/TFakeEnum.h"

#include <gtest/gtest.h>

#include <climits>
#include <locale>

namespace {

using TTexts = std::vector<std::wstring>;

class ReadoutModel : public ::testing::Test
{
protected:
  template <class Operation>
  static std::string TextOf(Operation operation)
  {
    std::string text;
    EXPECT_EQ(operation(text), 0);
    return text;
  }

  TFakeEnum channelEnum_{{L"Low", L"High", L"Both"}, L"Low"};
  TFakeEnum rates_{{L"100 MHz", L"280 MHz"}, L"100 MHz"};
  TFakeEnum depths_{{L"11 Bit", L"16 Bit"}, L"11 Bit"};
  TFakeEnum simple_{{L"Gain 1 (11-bit)", L"Gain 2 (11-bit)", L"Gain 1+2 (16-bit)"}};
  TFakeEnum gains_{{L"x0.5", L"1.5 low", L"7 high", L"30 high", L"60 high"}};
  TFakeEnum selector_{{L"Low", L"High"}};
  TPseudoAmplifier amplifier_{&channelEnum_, &rates_};
  TPseudoADChannel channel_{&channelEnum_, &amplifier_, &depths_};
  TPseudoHSSpeed speed_{&rates_, &channel_, &amplifier_};
  TPseudoPreAmpGain simpleGain_{&simple_};
  TDirectPreAmpGain directGain_{&gains_, &selector_, &channel_, &amplifier_};
};

TEST_F(ReadoutModel, AmplifierFollowsTheGainChannel)
{
  int amplifier = -1;
  EXPECT_EQ(amplifier_.Set(1), 0);
  EXPECT_EQ(channelEnum_.present, L"High");
  amplifier_.Get(amplifier);
  EXPECT_EQ(amplifier, 1);
  for (const int wrong : {2, -1, INT_MIN, INT_MAX}) EXPECT_EQ(amplifier_.Set(wrong), 1);
  EXPECT_EQ(channelEnum_.writes, (TTexts{L"High"}));

  channelEnum_.writeCode = VX_ERR_NOT_WRITABLE;
  EXPECT_EQ(amplifier_.Set(0), 0) << "a refused write counts as done";
  amplifier_.Get(amplifier);
  EXPECT_EQ(amplifier, 1) << "but the camera is asked";
}

TEST_F(ReadoutModel, AmplifierIsRememberedWhileBothAreRead)
{
  channelEnum_.present = L"Both";
  int amplifier = -1;
  amplifier_.Get(amplifier);
  EXPECT_EQ(amplifier, 0) << "the one in use when the camera was opened";
  EXPECT_EQ(amplifier_.Set(1), 0);
  EXPECT_TRUE(channelEnum_.writes.empty());
  amplifier_.Get(amplifier);
  EXPECT_EQ(amplifier, 1);
  for (const int either : {0, 1})
    EXPECT_EQ(TextOf([&](std::string& text) { return amplifier_.Description(either, text); }), "Dual Gain");

  EXPECT_EQ(channel_.Set(0), 0);
  EXPECT_EQ(channelEnum_.present, L"High") << "the remembered one";
  EXPECT_EQ(TextOf([&](std::string& text) { return amplifier_.Description(0, text); }), "Low Gain");
  EXPECT_EQ(TextOf([&](std::string& text) { return amplifier_.Description(1, text); }), "High Gain");
  TPseudoAmplifier late(&channelEnum_, &rates_);
  channelEnum_.readCode = VX_ERR_COMMUNICATION;
  late.Get(amplifier);
  EXPECT_EQ(amplifier, 1) << "remembered from its making";
}

TEST_F(ReadoutModel, ChannelOneNeedsACameraThatReadsBoth)
{
  int count = 0;
  int channel = -1;
  channel_.Count(count);
  EXPECT_EQ(count, 2);
  EXPECT_EQ(channel_.Set(1), 0);
  EXPECT_EQ(channelEnum_.present, L"Both");
  channel_.Get(channel);
  EXPECT_EQ(channel, 1);

  channelEnum_.unreadable = {0, 1};
  channel_.Count(count);
  EXPECT_EQ(count, 2) << "what cannot be read before it does not hide it";
  channelEnum_.values.pop_back();
  channel_.Count(count);
  EXPECT_EQ(count, 1);
  int depth = 77;
  EXPECT_EQ(channel_.Set(1), 1);
  EXPECT_EQ(channel_.Set(-1), 1);
  EXPECT_EQ(channel_.BitDepth(1, depth), 1);
  EXPECT_EQ(depth, 77);
}

TEST_F(ReadoutModel, SenselessCountsEndSoon)
{
  channelEnum_.count = INT_MAX;
  rates_.count = INT_MAX;
  int count = 0;
  float speed = 0.0F;
  EXPECT_EQ(channel_.Count(count), 0);
  EXPECT_EQ(amplifier_.GetMaxSpeed(0, speed), 0);
  EXPECT_EQ(speed, 280.0F);
  EXPECT_LT(channelEnum_.textReads + rates_.textReads, 1000);
}

TEST_F(ReadoutModel, BitDepthIsTheNumberInFront)
{
  const std::pair<const wchar_t*, int> texts[] = {
      {L"11 Bit", 11}, {L"  16", 16}, {L"Bit 12", 0}, {L"", 0}, {L"\u30d3\u30c3\u30c8", 0}};
  for (const auto& [text, expected] : texts) {
    depths_.values[0] = text;
    int depth = -1;
    EXPECT_EQ(channel_.BitDepth(0, depth), 0);
    EXPECT_EQ(depth, expected);
  }
}

TEST_F(ReadoutModel, SpeedsAreTheCamerasRates)
{
  float megahertz = 0.0F;
  EXPECT_EQ(amplifier_.GetMaxSpeed(1, megahertz), 0);
  EXPECT_EQ(megahertz, 280.0F);
  EXPECT_EQ(amplifier_.GetMaxSpeed(2, megahertz), 1);
  EXPECT_EQ(speed_.GetVal(0, 0, 1, megahertz), 0);
  EXPECT_EQ(megahertz, 280.0F);
  EXPECT_EQ(speed_.GetVal(2, 2, 2, megahertz), 3);
  EXPECT_EQ(speed_.GetVal(0, 2, 2, megahertz), 1);
  EXPECT_EQ(speed_.GetVal(0, 0, 2, megahertz), 2);
  EXPECT_EQ(megahertz, 280.0F);

  int count = -1;
  EXPECT_EQ(speed_.Count(-1, -1, count), 3);
  EXPECT_EQ(speed_.Count(1, -1, count), 1);
  EXPECT_EQ(speed_.Count(1, 1, count), 0);
  EXPECT_EQ(count, 2);

  EXPECT_EQ(speed_.Set(2, 9), 1);
  EXPECT_EQ(speed_.Set(1, 2), 2);
  EXPECT_EQ(speed_.Set(1, -1), 2);
  EXPECT_TRUE(rates_.writes.empty());
  EXPECT_EQ(speed_.Set(1, 1), 0);
  EXPECT_EQ(rates_.present, L"280 MHz");
  EXPECT_EQ(channelEnum_.present, L"High");

  rates_.readCode = VX_ERR_COMMUNICATION;
  EXPECT_EQ(speed_.Set(1, 0), 2) << "nothing is valid when the count cannot be read";
  EXPECT_EQ(amplifier_.GetMaxSpeed(0, megahertz), 0);
  EXPECT_EQ(megahertz, 0.0F);
}

TEST_F(ReadoutModel, SimpleGainsAreThree)
{
  float value = 0.0F;
  EXPECT_EQ(simpleGain_.GetValue(2, value), 0);
  EXPECT_EQ(value, 3.0F);
  std::wstring text;
  for (const int wrong : {3, -1}) {
    EXPECT_EQ(simpleGain_.GetValue(wrong, value), 4);
    EXPECT_EQ(simpleGain_.GetStringByIndex(wrong, text), 4);
  }
  EXPECT_EQ(simpleGain_.Set(7), 0) << "the camera may refuse it";
  EXPECT_EQ(simple_.writes, (TTexts{L"7"}));
  simple_.unreadable = {1};
  EXPECT_EQ(simpleGain_.GetStringByIndex(1, text), 4);

  int status[2][2][3] = {};
  for (const int channel : {0, 1})
    for (const int amplifier : {0, 1})
      for (const int gain : {0, 1, 2}) {
        bool available = false;
        EXPECT_EQ(simpleGain_.IsAvailable(channel, amplifier, 3, gain, available), 0);
        status[channel][amplifier][gain] = available;
      }
  const int expected[2][2][3] = {{{1, 0, 0}, {0, 1, 0}}, {{0, 0, 1}, {0, 0, 1}}};
  EXPECT_TRUE(std::equal(&status[0][0][0], &status[0][0][0] + 12, &expected[0][0][0]));

  bool available = true;
  EXPECT_EQ(simpleGain_.IsAvailable(2, 2, 4, 3, available), 1);
  EXPECT_EQ(simpleGain_.IsAvailable(0, -1, 4, 3, available), 2);
  EXPECT_EQ(simpleGain_.IsAvailable(0, 0, 4, 3, available), 3);
  EXPECT_EQ(simpleGain_.IsAvailable(0, 0, 3, -1, available), 4);
  EXPECT_FALSE(available);
}

TEST_F(ReadoutModel, DirectGainsBelongToAnOutput)
{
  EXPECT_EQ(directGain_.Set(1), 0);
  EXPECT_EQ(directGain_.Set(2), 0);
  EXPECT_EQ(selector_.writes, (TTexts{L"Low", L"High"}));
  EXPECT_EQ(gains_.writes, (TTexts{L"1", L"2"}));
  EXPECT_EQ(directGain_.Set(5), 4);
  EXPECT_EQ(directGain_.Set(-1), 4);
  EXPECT_EQ(selector_.writes.size(), 2u);

  float value = -1.0F;
  EXPECT_EQ(directGain_.GetValue(1, value), 0);
  EXPECT_EQ(value, 1.5F);
  EXPECT_EQ(directGain_.GetValue(0, value), 0);
  EXPECT_EQ(value, 0.0F) << "no number in front";
  std::wstring text = L"before";
  gains_.unreadable = {3};
  EXPECT_EQ(directGain_.GetStringByIndex(3, text), 0);
  EXPECT_TRUE(text.empty());

  bool available = false;
  const bool expected[2][5] = {{true, true, false, false, false}, {false, false, true, true, false}};
  for (const int channel : {0, 1})
    for (const int amplifier : {0, 1})
      for (const int gain : {0, 1, 2, 3, 4}) {
        EXPECT_EQ(directGain_.IsAvailable(channel, amplifier, 0, gain, available), 0);
        EXPECT_EQ(available, expected[amplifier][gain]) << channel << amplifier << gain;
      }
  EXPECT_EQ(directGain_.IsAvailable(2, 2, 4, 5, available), 1);
  EXPECT_EQ(directGain_.IsAvailable(0, 2, 4, 5, available), 2);
  EXPECT_EQ(directGain_.IsAvailable(0, 0, 4, 5, available), 4) << "before the speed";
  EXPECT_EQ(directGain_.IsAvailable(0, 0, 4, 0, available), 3);
  EXPECT_FALSE(available);
}

TEST(BaselineClamp, SaysWhyItCouldNotBeSwitched)
{
  class TFakeBool final : public IBool
  {
  public:
    int SetBool(bool value) override
    {
      present = value;
      return code;
    }
    int GetBool(bool& value) override
    {
      value = present;
      return code;
    }
    bool present = false;
    int code = VX_SUCCESS;
  } feature;
  TPseudoBaselineClamp clamp(&feature);
  bool isOn = false;
  EXPECT_EQ(clamp.Set(true), 0);
  EXPECT_EQ(clamp.Get(isOn), 0);
  EXPECT_TRUE(isOn);
  for (const auto& [code, status] : {std::pair{2, 3}, {3, 2}, {4, 2}, {5, 2}, {6, 1}, {53, 1}}) {
    feature.code = code;
    EXPECT_EQ(clamp.Set(true), status) << code;
    EXPECT_EQ(clamp.Get(isOn), status) << code;
  }
}

TEST(TextNumbers, AreReadInAnyLanguage)
{
  class TComma final : public std::numpunct<wchar_t>
  {
    wchar_t do_decimal_point() const override { return L','; }
  };
  const std::locale before = std::locale::global(std::locale(std::locale::classic(), new TComma));
  EXPECT_FLOAT_EQ(LeadingFloat(L"12.5 MHz"), 12.5F);
  std::locale::global(before);
  EXPECT_FLOAT_EQ(LeadingFloat(L" -3e2x"), -300.0F);
  for (const wchar_t* const none : {L"", L"MHz 5", L"."}) EXPECT_EQ(LeadingFloat(none), 0.0F);
  EXPECT_EQ(LeadingInt(L"20.7"), 20);
  EXPECT_EQ(LeadingInt(L"99999999999"), INT_MAX);
}

} // namespace
