// SPDX-License-Identifier: MIT
// Channels and amplifiers by index, over features that no camera has.
#include "features/TPseudoADChannel.h"
#include "features/TPseudoAmplifier.h"
#include "features/value_texts.h"
#include "tests/support/TFakeEnum.h"

#include <gtest/gtest.h>

#include <climits>
#include <locale>

namespace {

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
  TPseudoAmplifier amplifier_{&channelEnum_, &rates_};
  TPseudoADChannel channel_{&channelEnum_, &amplifier_, &depths_};
};

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
  channelEnum_.unreadable = {0, 1};
  channel_.Count(count);
  EXPECT_EQ(count, 2) << "what cannot be read before it does not hide it";
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
