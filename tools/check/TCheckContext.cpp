// SPDX-License-Identifier: MIT
// Expectations, and the list of the last calls.
#include "tools/check/TCheckContext.h"

#include "tools/TInterrupt.h"
#include "utility/utf8.h"

#include <cmath>
#include <cstdio>
#include <utility>

namespace vxtool {

namespace {

constexpr std::size_t kMaxCalls = 12; ///< that are shown
constexpr int kMaxWord = 256;

struct TCodeName
{
  int code;
  const char* name;
};

constexpr TCodeName kCodes[] = {
#define VX_CODE(name, meaning) {name, #name},
#include "vxcore/result_codes.def"
};

} // namespace

const char* VerdictName(Verdict verdict)
{
  switch (verdict) {
  case Verdict::Failed:
    return "FAIL";
  case Verdict::Skipped:
    return "skip";
  case Verdict::Warned:
    return "warn";
  case Verdict::Unstable:
    return "unstable";
  default:
    return "ok";
  }
}

void TCheckContext::Fail(const std::string& what, const std::string& expected, const std::string& actual)
{
  TCheckResult result;
  result.verdict = Verdict::Failed;
  result.reason = what;
  result.expected = expected;
  result.actual = actual;
  throw TEnd{result};
}

void TCheckContext::ExpectCode(const std::string& what, unsigned int expected, unsigned int actual)
{
  if (expected != actual) Fail(what, CodeText(expected), CodeText(actual));
}

void TCheckContext::ExpectFeatureCode(const std::string& what, int expected, int actual)
{
  Expect(expected == actual, what, CodeText(expected), CodeText(actual));
}

void TCheckContext::ExpectWithin(const std::string& what, double expected, double tolerance, double actual)
{
  Expect(std::abs(expected - actual) <= tolerance, what, Shown(expected) + " within " + Shown(tolerance),
         Shown(actual));
}

void TCheckContext::Skip(const std::string& reason)
{
  TCheckResult result;
  result.verdict = Verdict::Skipped;
  result.reason = reason;
  throw TEnd{result};
}

void TCheckContext::Need(const std::string& what, bool holds) const
{
  if (holds) return;
  TCheckResult result;
  result.verdict = Verdict::Warned;
  result.reason = "not carried out: " + what;
  throw TEnd{result};
}

void TCheckContext::Need(const std::string& function, unsigned int code) const
{
  if (code != RC_SUCCESS) Need(function + " answered " + CodeText(code), false);
}

int TCheckContext::FeatureHandle()
{
  int handle = VX_HANDLE_NONE;
  StopIfInterrupted();
  GetSDK3Handle(&handle); // not noted: it would fill the list
  return handle;
}

bool TCheckContext::HasFeature(const wchar_t* feature)
{
  int flag = 0;
  return CHECK_CALL(*this, VX_IsImplemented, FeatureHandle(), feature, &flag) == VX_SUCCESS && flag == 1;
}

std::optional<long long> TCheckContext::Int(const wchar_t* feature)
{
  long long value = 0;
  return CHECK_CALL(*this, VX_GetInt, FeatureHandle(), feature, &value) == VX_SUCCESS ? std::optional(value)
                                                                                      : std::nullopt;
}

std::optional<double> TCheckContext::Float(const wchar_t* feature)
{
  double value = 0.0;
  return CHECK_CALL(*this, VX_GetFloat, FeatureHandle(), feature, &value) == VX_SUCCESS ? std::optional(value)
                                                                                        : std::nullopt;
}

std::optional<std::string> TCheckContext::Word(const wchar_t* feature)
{
  const int handle = FeatureHandle();
  int index = 0;
  wchar_t text[kMaxWord + 1] = L""; // has an end whatever the camera writes
  if (CHECK_CALL(*this, VX_GetEnumerated, handle, feature, &index) != VX_SUCCESS ||
      CHECK_CALL(*this, VX_GetEnumeratedString, handle, feature, index, text, kMaxWord) != VX_SUCCESS)
    return std::nullopt;
  return ToUtf8(text);
}

std::vector<std::string> TCheckContext::Calls() const
{
  const std::lock_guard lock(mutex_);
  std::vector<std::string> calls;
  for (const TNoted& noted : calls_) {
    const std::string code = std::visit([](auto value) { return CodeText(value); }, noted.code);
    calls.push_back(noted.call + " = " + code +
                    (noted.count == 1 ? "" : "  (" + std::to_string(noted.count) + " times)"));
  }
  return calls;
}

// The names of codes are found when they are shown: they are calls of the library, too, and would fill its trace.
void TCheckContext::Note(TNoted call)
{
  const std::lock_guard lock(mutex_);
  if (!calls_.empty() && calls_.back().call == call.call && calls_.back().code == call.code) {
    ++calls_.back().count;
    return;
  }
  calls_.push_back(std::move(call));
  if (calls_.size() > kMaxCalls) calls_.pop_front();
}

void TCheckContext::StopIfInterrupted()
{
  if (TInterrupt::Happened()) throw TInterrupted{};
}

std::string TCheckContext::Shown(double value)
{
  char text[32];
  std::snprintf(text, sizeof text, "%.9g", value);
  return text;
}

std::string TCheckContext::Shown(const wchar_t* text)
{
  return text ? Shown(ToUtf8(text)) : "null";
}

std::string TCheckContext::CodeText(unsigned int code)
{
  return std::to_string(code) + " " + vxmcd_GetResultName(code);
}

std::string TCheckContext::CodeText(int code)
{
  std::string text = std::to_string(code);
  for (const TCodeName& known : kCodes)
    if (known.code == code) return text + " " + known.name;
  return text;
}

} // namespace vxtool
