// SPDX-License-Identifier: MIT
// Lines of the log about calls of the library.
#pragma once

#include "utility/TCallNotes.h"
#include "utility/TQuorinLibDebugOutput.h"

#include <span>
#include <type_traits>

/// An argument as the log shows it: a number, or whether a pointer is null.
class TCallArgument final
{
public:
  template <class T>
  requires std::is_integral_v<T> TCallArgument(T number) : kind_(kWhole), whole_(static_cast<long long>(number)) {}
  template <class T>
  requires std::is_floating_point_v<T> TCallArgument(T number) : kind_(kReal), real_(static_cast<double>(number))
  {
  }
  template <class T>
  TCallArgument(T* pointer) : kind_(pointer ? kPointer : kNull)
  {
  }
  template <class T>
  requires std::is_class_v<T> TCallArgument(const T& /*object*/) : kind_(kPointer) {}

  bool IsNull() const { return kind_ == kNull; }
  template <class TText>
  void AppendTo(TText& text) const
  {
    if (kind_ == kWhole)
      text.Append("%lld", whole_);
    else if (kind_ == kReal)
      text.Append("%.7g", real_);
    else
      text.Append("%s", IsNull() ? "null" : "not null");
  }

private:
  enum
  {
    kWhole,
    kReal,
    kPointer,
    kNull
  } kind_;
  long long whole_ = 0;
  double real_ = 0.0;
};

/// Logs a call that did not succeed, or that succeeded although something was refused.
void LogCall(const char* function, std::span<const TCallArgument> arguments, unsigned int code,
             const TCallNotes& notes) noexcept;

/// The body of an exported function: calls the entry point of the same name, and explains in the log, at level debug, why the call did not succeed. While the log is off or less detailed, it costs one relaxed load.
template <class... Parameters>
class TExplainedCall final
{
public:
  using TFunction = unsigned int (*)(Parameters...);

  constexpr TExplainedCall(const char* name, TFunction function) : name_(name), function_(function) {}

  unsigned int operator()(Parameters... arguments) const
  {
    using QuorinUtility::TQuorinLibDebugOutput;
    if (TQuorinLibDebugOutput::IsEnabled(TQuorinLibDebugOutput::Debug)) [[unlikely]]
      return CallAndExplain(name_, function_, arguments...);
    return function_(arguments...);
  }

private:
  // Takes the members by value, so that no object is made for a call that is not logged.
  [[gnu::noinline, gnu::cold]] static unsigned int CallAndExplain(const char* name, TFunction function,
                                                                  Parameters... arguments)
  {
    const TCallNotes notes;
    const unsigned int code = function(arguments...);
    if constexpr (sizeof...(Parameters) == 0) {
      LogCall(name, {}, code, notes);
    } else {
      const TCallArgument texts[] = {arguments...};
      LogCall(name, texts, code, notes);
    }
    return code;
  }

  const char* name_;
  TFunction function_;
};

/// Notes for the log why a call is refused, and returns its result code.
[[gnu::format(printf, 2, 3)]] unsigned int Refuse(unsigned int code, const char* format, ...) noexcept;
