// SPDX-License-Identifier: MIT
// What a check has of a camera: calls that are noted, and what it expects of them.
#pragma once

#include "tools/check/TCheckResult.h"
#include "vxcore.h"
#include "vxmcd.h"

#include <cstddef>
#include <deque>
#include <mutex>
#include <optional>
#include <string>
#include <variant>

namespace vxtool {

/// Calls a function of one of the libraries and notes name, arguments and result: CHECK_CALL(check, GetStatus, &status).
#define CHECK_CALL(check, function, ...) (check).Call(#function, function __VA_OPT__(, ) __VA_ARGS__)

/// One run of a check on the camera with a number in the list. Expectations that do not hold, and Skip() and Need(), end
/// the check with an exception that RunCheck() turns into the result; so does an interruption, at the next call. Call()
/// is for any thread, everything else for that of the check.
class TCheckContext final
{
public:
  /// Ends a check early.
  struct TEnd
  {
    TCheckResult result;
  };
  /// Ends a check and all that follow.
  struct TInterrupted
  {
  };

  TCheckContext(int camera, bool isHarsh) : camera_(camera), isHarsh_(isHarsh) {}

  int Camera() const { return camera_; }
  long Handle() const { return 101 + camera_; }
  /// Whether checks may take minutes and change temperatures.
  bool IsHarsh() const { return isHarsh_; }

  template <typename Code, typename... Parameters, typename... Arguments>
  Code Call(const char* name, Code (*function)(Parameters...), Arguments... arguments)
  {
    StopIfInterrupted();
    const Code code = function(static_cast<Parameters>(arguments)...);
    std::string shown;
    ((shown += (shown.empty() ? "" : ", ") + Shown(arguments)), ...);
    Note({std::string(name) + "(" + shown + ")", code});
    return code;
  }

  /// A failure: what was compared, what it should be and what it is.
  [[noreturn]] static void Fail(const std::string& what, const std::string& expected, const std::string& actual);
  static void Expect(bool holds, const std::string& what, const std::string& expected, const std::string& actual)
  {
    if (!holds) Fail(what, expected, actual);
  }
  template <typename Value>
  static void ExpectEqual(const std::string& what, const Value& expected, const Value& actual)
  {
    if (expected != actual) Fail(what, Shown(expected), Shown(actual));
  }
  static void ExpectCode(const std::string& what, unsigned int expected, unsigned int actual);
  static void ExpectFeatureCode(const std::string& what, int expected, int actual);
  static void ExpectWithin(const std::string& what, double expected, double tolerance, double actual);

  /// The camera has nothing that could be checked.
  [[noreturn]] static void Skip(const std::string& reason);
  /// What has to succeed before anything can be checked, and has checks of its own.
  void Need(const std::string& what, bool holds) const;
  void Need(const std::string& function, unsigned int code) const;

  /// Features of the open camera; nothing when it does not have them or they cannot be read.
  int FeatureHandle();
  bool HasFeature(const wchar_t* feature);
  std::optional<long long> Int(const wchar_t* feature);
  std::optional<double> Float(const wchar_t* feature);
  std::optional<std::string> Word(const wchar_t* feature);

  /// For loops that make calls which are not noted.
  static void StopIfInterrupted();

  /// The last calls, the oldest first.
  std::vector<std::string> Calls() const;

  static std::string Shown(double value);
  static std::string Shown(float value) { return Shown(static_cast<double>(value)); }
  static std::string Shown(int value) { return std::to_string(value); }
  static std::string Shown(unsigned int value) { return std::to_string(value); }
  static std::string Shown(long value) { return std::to_string(value); }
  static std::string Shown(unsigned long value) { return std::to_string(value); }
  static std::string Shown(long long value) { return std::to_string(value); }
  static std::string Shown(std::nullptr_t) { return "null"; }
  static std::string Shown(const std::string& text) { return "\"" + text + "\""; }
  static std::string Shown(const char* text) { return text ? Shown(std::string(text)) : "null"; }
  static std::string Shown(const wchar_t* text);
  /// Outputs are shown as they are after the call.
  template <typename Value>
  static std::string Shown(Value* output)
  {
    if constexpr (requires { Shown(*output); })
      return output ? Shown(*output) : "null";
    else
      return output ? "set" : "null";
  }
  static std::string Shown(char* text) { return Shown(static_cast<const char*>(text)); }
  static std::string Shown(wchar_t* text) { return Shown(static_cast<const wchar_t*>(text)); }
  static std::string Shown(const unsigned short* pixels) { return pixels ? "array" : "null"; }
  static std::string Shown(unsigned short* pixels) { return pixels ? "array" : "null"; }
  static std::string Shown(unsigned char* bytes) { return bytes ? "array" : "null"; }
  static std::string CodeText(unsigned int code);
  static std::string CodeText(int code);

private:
  const int camera_;
  const bool isHarsh_;
  mutable std::mutex mutex_;
  struct TNoted
  {
    std::string call;
    std::variant<unsigned int, int> code; ///< of one or the other library
    long count = 1;                       ///< how often it was made in succession
  };
  void Note(TNoted call);
  std::deque<TNoted> calls_; ///< guarded by mutex_
};

} // namespace vxtool
