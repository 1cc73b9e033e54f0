// SPDX-License-Identifier: MIT
// The functions that do nothing but answer, as programs find them: by symbol, before any camera was opened.
#include "vxmcd.h"

#include <gtest/gtest.h>

#include <array>
#include <dlfcn.h>
#include <fstream>
#include <ostream>
#include <set>
#include <string>

namespace {

struct TSymbol
{
  std::string name;
  unsigned int code;
  bool hasOutput = false;
};

// Every symbol of the table, plain and decorated.
const TSymbol kSymbols[] = {
#define FIXED_RESULT(name, code, reason) {#name, code},
#define FIXED_RESULT_TYPED(name, arguments, symbol, code, reason) {#name, code}, {#symbol, code},
#define FIXED_RESULT_TYPED_ONLY(name, arguments, symbol, code, reason) {#symbol, code},
#define FIXED_VALUE(name, parameters, outputs, type, value, code, reason) {#name, code, true},
#include "api/fixed_results.def"
};

// The functions of the table that write nothing, by their code.
std::multiset<unsigned int> CodesOfFunctions()
{
  return {
#define FIXED_RESULT(name, code, reason) code,
#define FIXED_RESULT_TYPED(name, arguments, symbol, code, reason) code,
#define FIXED_RESULT_TYPED_ONLY(name, arguments, symbol, code, reason) code,
#include "api/fixed_results.def"
  };
}

using TFunction = unsigned int (*)(...);

TFunction Find(const std::string& symbol)
{
  static void* const library = dlopen("libvxmcd.so.3", RTLD_LAZY | RTLD_NOLOAD);
  return library ? reinterpret_cast<TFunction>(dlsym(library, symbol.c_str())) : nullptr;
}

/// Room for two outputs of 64 bits, seen as words of 32.
struct TOutputs
{
  std::array<unsigned int, 4> words{};

  TOutputs() { words.fill(kUntouched); }
  void* First() { return &words[0]; }
  void* Second() { return &words[2]; }
  static constexpr unsigned int kUntouched = 0xA5A5A5A5;
};

constexpr unsigned int kUntouched = TOutputs::kUntouched;

TEST(FixedResults, NoneWasLost)
{
  const std::multiset<unsigned int> codes = CodesOfFunctions();
  EXPECT_EQ(codes.count(RC_SUCCESS), 359U);
  EXPECT_EQ(codes.count(RC_NOT_SUPPORTED), 54U);
  EXPECT_EQ(codes.size(), 359U + 54U + 2U);
  std::set<std::string> names;
  for (const TSymbol& symbol : kSymbols) EXPECT_TRUE(names.insert(symbol.name).second) << symbol.name << " twice";
}

TEST(FixedResults, AnswerUnderEverySymbolWithoutACamera)
{
  for (const TSymbol& symbol : kSymbols) {
    SCOPED_TRACE(symbol.name);
    const TFunction function = Find(symbol.name);
    ASSERT_NE(function, nullptr);
    EXPECT_EQ(function(nullptr, nullptr, nullptr, nullptr, nullptr), symbol.code);
    std::array<long long, 5> outputs = {11, 12, 13, 14, 15};
    const auto untouched = outputs;
    EXPECT_EQ(function(&outputs[0], &outputs[1], &outputs[2], &outputs[3], &outputs[4], 1.0), symbol.code);
    EXPECT_EQ(outputs != untouched, symbol.hasOutput);
  }
}

TEST(FixedResults, AreOnTheListOfExportedNames)
{
  std::ifstream file(EXPORTED_NAMES);
  std::set<std::string> listed;
  for (std::string line; std::getline(file, line);) listed.insert(line);
  for (const TSymbol& symbol : kSymbols) EXPECT_EQ(listed.count(symbol.name), 1U) << symbol.name;
}

// Functions of one output in first place.
struct TSingleOutput
{
  const char* name;
  unsigned int code;
  std::size_t words;
  unsigned int value;
};

void PrintTo(const TSingleOutput& row, std::ostream* out)
{
  *out << row.name;
}

class FixedValue : public ::testing::TestWithParam<TSingleOutput>
{
};

TEST_P(FixedValue, IsWrittenInItsWidthAndNowhereElse)
{
  const TSingleOutput& row = GetParam();
  const TFunction function = Find(row.name);
  ASSERT_NE(function, nullptr);
  TOutputs out;
  EXPECT_EQ(function(out.First()), row.code);
  std::array<unsigned int, 4> expected = {row.value, row.words == 2 ? 0 : kUntouched, kUntouched, kUntouched};
  EXPECT_EQ(out.words, expected);
  EXPECT_EQ(function(nullptr), row.code);
}

INSTANTIATE_TEST_SUITE_P(
    FirstArgument, FixedValue,
    ::testing::Values(
        TSingleOutput{"GetMinimumNumberInSeries", 20002, 1, 1}, TSingleOutput{"GetPhosphorStatus", 20002, 1, 1},
        TSingleOutput{"GetNumberFKVShiftSpeeds", 20002, 1, 0}, TSingleOutput{"GetNumberIO", 20002, 1, 0},
        TSingleOutput{"GetNumberVSAmplitudes", 20002, 1, 0}, TSingleOutput{"GetNumberVSSpeeds", 20002, 1, 0},
        TSingleOutput{"GetNumberPhotonCountingDivisions", 20002, 1, 0},
        TSingleOutput{"IsInternalMechanicalShutter", 20002, 1, 0},
        TSingleOutput{"GetDDGIOCNumberRequested", 20991, 1, 0}, TSingleOutput{"GetDDGIOCPulses", 20991, 1, 0},
        TSingleOutput{"GetNumberDDGExternalOutputs", 20991, 1, 0}, TSingleOutput{"GetDDGIOCTrigger", 20991, 1, 0},
        TSingleOutput{"GetDDGOpticalWidthEnabled", 20991, 1, 0}, TSingleOutput{"GetDDGIOCPeriod", 20991, 2, 0}),
    [](const auto& row) { return std::string(row.param.name); });

TEST(FixedValues, ReachOutputsInLaterPlaces)
{
  using TWords = std::array<unsigned int, 4>;
  const TWords kOneWord = {0, kUntouched, kUntouched, kUntouched};
  const TWords kTwoWords = {0, 0, kUntouched, kUntouched};
  TOutputs shutter;
  EXPECT_EQ(GetShutterMinTimes(shutter.First(), shutter.Second()), 20002U);
  EXPECT_EQ(shutter.words, (TWords{0, kUntouched, 0, kUntouched}));
  TOutputs gate;
  EXPECT_EQ(GetDDGGateTime(gate.First(), gate.Second()), 20991U);
  EXPECT_EQ(gate.words, (TWords{0, 0, 0, 0}));
  TOutputs efficiency;
  char text[] = "text";
  EXPECT_EQ(GetQE(text, 1, efficiency.First()), 20002U);
  EXPECT_EQ(efficiency.words, kOneWord);
  TOutputs sensitivity;
  EXPECT_EQ(GetSensitivity(0, 0, 0, 0, sensitivity.First()), 20002U);
  EXPECT_EQ(sensitivity.words, kOneWord);
  TOutputs step;
  EXPECT_EQ(GetDDGExternalOutputStepEnabled(0, step.First()), 20002U);
  EXPECT_EQ(step.words, kOneWord);
  TOutputs width;
  EXPECT_EQ(GetDDGTTLGateWidth(1LL, width.First()), 20991U);
  EXPECT_EQ(width.words, kTwoWords);

  EXPECT_EQ(GetShutterMinTimes(nullptr, nullptr), 20002U);
  EXPECT_EQ(GetDDGGateTime(nullptr, gate.First()), 20991U);
  EXPECT_EQ(GetDDGTTLGateWidth(1LL, nullptr), 20991U);
}

TEST(FixedResults, ThreeNamesHaveTwoFunctions)
{
  EXPECT_EQ(vxsys_SetChosenFilter(1), 20991U);
  EXPECT_EQ(vxsys_SetChosenFilterDecorated(1), 20002U);
  EXPECT_EQ(vxsys_SetFrameCount(1), 20991U);
  EXPECT_EQ(vxsys_SetFrameCountDecorated(1), 20002U);
  EXPECT_EQ(vxsys_SetNoiseThreshold(1.0F), 20991U);
  EXPECT_EQ(vxsys_SetNoiseThresholdDecorated(1.0F), 20002U);
}

TEST(FixedResults, SomeCodesOfTheirOwn)
{
  EXPECT_EQ(GetStartUpTime(), 20992U);
  EXPECT_EQ(vxsys_EEPWR(1, 2), 20066U);
  EXPECT_EQ(SetShutter(1, 0, 10, 10), 20002U);
}

} // namespace
