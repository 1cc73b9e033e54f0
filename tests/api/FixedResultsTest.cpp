// SPDX-License-Identifier: MIT
// The functions that do nothing but answer, as programs find them: by symbol, before any camera was opened.
#include "vxmcd.h"

#include <gtest/gtest.h>

#include <array>
#include <dlfcn.h>
#include <set>
#include <string>
#include <type_traits>
#include <utility>

namespace {

using TOutputs = std::array<long long, 5>;

template <class T>
T Argument(TOutputs* outputs, std::size_t index)
{
  if constexpr (std::is_pointer_v<T>)
    return outputs ? static_cast<T>(static_cast<void*>(&(*outputs)[index % outputs->size()])) : nullptr;
  else
    return T();
}

template <class... Arguments, std::size_t... Index>
unsigned int CallAt(unsigned int (*function)(Arguments...), [[maybe_unused]] TOutputs* outputs,
                    std::index_sequence<Index...> /*of each*/)
{
  return function(Argument<Arguments>(outputs, Index)...);
}

/// Calls with a place of @p outputs, or null, for each pointer.
template <class... Arguments>
unsigned int Call(unsigned int (*function)(Arguments...), TOutputs* outputs)
{
  return CallAt(function, outputs, std::index_sequence_for<Arguments...>());
}

unsigned int Call(unsigned int (*function)(...), TOutputs* outputs)
{
  if (!outputs) return function(nullptr, nullptr, nullptr, nullptr, nullptr);
  return function(&(*outputs)[0], &(*outputs)[1], &(*outputs)[2], &(*outputs)[3], &(*outputs)[4], 1.0);
}

struct TSymbol
{
  std::string name;
  unsigned int code;
  bool hasOutput;
  unsigned int (*call)(void* function, TOutputs* outputs);
};

template <class Function>
unsigned int CallAs(void* function, TOutputs* outputs)
{
  return Call(reinterpret_cast<Function>(function), outputs);
}

// Every symbol of the table, plain and decorated.
const TSymbol kSymbols[] = {
#define FIXED_RESULT(name, code, reason) {#name, code, false, CallAs<unsigned int (*)(...)>},
#define FIXED_RESULT_TYPED(name, arguments, symbol, code, reason)                                                 \
  {#name, code, false, CallAs<unsigned int(*) arguments>},                                                        \
      {#symbol, code, false, CallAs<unsigned int(*) arguments>},
#define FIXED_RESULT_TYPED_ONLY(name, arguments, symbol, code, reason)                                            \
  {#symbol, code, false, CallAs<unsigned int(*) arguments>},
#define FIXED_VALUE(name, parameters, outputs, type, value, code, reason)                                         \
  {#name, code, true, CallAs<unsigned int(*) parameters>},
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

void* Find(const std::string& symbol)
{
  static void* const library = dlopen("libvxmcd.so.3", RTLD_LAZY | RTLD_NOLOAD);
  return library ? dlsym(library, symbol.c_str()) : nullptr;
}

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
    void* const function = Find(symbol.name);
    ASSERT_NE(function, nullptr);
    EXPECT_EQ(symbol.call(function, nullptr), symbol.code);
    TOutputs outputs = {11, 12, 13, 14, 15};
    const TOutputs untouched = outputs;
    EXPECT_EQ(symbol.call(function, &outputs), symbol.code);
    EXPECT_EQ(outputs != untouched, symbol.hasOutput);
  }
}

constexpr unsigned int kUntouched = 0xA5A5A5A5;

/// Room for two outputs of 64 bits, seen as words of 32.
struct TWords
{
  std::array<unsigned int, 4> words{kUntouched, kUntouched, kUntouched, kUntouched};
  void* First() { return &words[0]; }
  void* Second() { return &words[2]; }
};

TEST(FixedValues, AreWrittenInTheirWidthAndNowhereElse)
{
  const struct
  {
    unsigned int (*function)(void*);
    unsigned int code;
    std::size_t words;
    unsigned int value;
  } rows[] = {{GetMinimumNumberInSeries, 20002, 1, 1},
              {GetPhosphorStatus, 20002, 1, 1},
              {GetNumberFKVShiftSpeeds, 20002, 1, 0},
              {GetNumberIO, 20002, 1, 0},
              {GetNumberVSAmplitudes, 20002, 1, 0},
              {GetNumberVSSpeeds, 20002, 1, 0},
              {GetNumberPhotonCountingDivisions, 20002, 1, 0},
              {IsInternalMechanicalShutter, 20002, 1, 0},
              {GetDDGIOCNumberRequested, 20991, 1, 0},
              {GetDDGIOCPulses, 20991, 1, 0},
              {GetNumberDDGExternalOutputs, 20991, 1, 0},
              {GetDDGIOCTrigger, 20991, 1, 0},
              {GetDDGOpticalWidthEnabled, 20991, 1, 0},
              {GetDDGIOCPeriod, 20991, 2, 0}};
  for (const auto& row : rows) {
    SCOPED_TRACE(&row - rows);
    TWords out;
    EXPECT_EQ(row.function(out.First()), row.code);
    std::array<unsigned int, 4> expected = {row.value, row.words == 2 ? 0 : kUntouched, kUntouched, kUntouched};
    EXPECT_EQ(out.words, expected);
    EXPECT_EQ(row.function(nullptr), row.code);
  }
}

TEST(FixedValues, ReachOutputsInLaterPlaces)
{
  const std::array<unsigned int, 4> kOneWord = {0, kUntouched, kUntouched, kUntouched};
  const std::array<unsigned int, 4> kTwoWords = {0, 0, kUntouched, kUntouched};
  TWords shutter;
  EXPECT_EQ(GetShutterMinTimes(shutter.First(), shutter.Second()), 20002U);
  EXPECT_EQ(shutter.words, (std::array<unsigned int, 4>{0, kUntouched, 0, kUntouched}));
  TWords gate;
  EXPECT_EQ(GetDDGGateTime(gate.First(), gate.Second()), 20991U);
  EXPECT_EQ(gate.words, (std::array<unsigned int, 4>{0, 0, 0, 0}));
  TWords efficiency;
  char text[] = "text";
  EXPECT_EQ(GetQE(text, 1, efficiency.First()), 20002U);
  EXPECT_EQ(efficiency.words, kOneWord);
  TWords inFourthPlace; // where a floating-point argument in front does not count
  EXPECT_EQ(GetQE(text, 500.0F, 1, inFourthPlace.First()), 20002U);
  EXPECT_EQ(inFourthPlace.words, kOneWord);
  TWords sensitivity;
  EXPECT_EQ(GetSensitivity(0, 0, 0, 0, sensitivity.First()), 20002U);
  EXPECT_EQ(sensitivity.words, kOneWord);
  TWords step;
  EXPECT_EQ(GetDDGExternalOutputStepEnabled(0, step.First()), 20002U);
  EXPECT_EQ(step.words, kOneWord);
  TWords width;
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
