// SPDX-License-Identifier: MIT
// A call of an entry point that the log explains.
#pragma once

#include "api/call_log.h"
#include "api/TTracedCall.h"
#include "utility/TQuorinLibDebugOutput.h"

/// The body of an exported function: calls the entry point of the same name, explains in the log, at level debug, why
/// the call did not succeed, and records it in the trace. While the log is off or at another level and there is no trace, it
/// costs two relaxed loads. Borrows the name for good. Thread-safe.
template <class... Parameters>
class TExplainedCall final
{
public:
  using TFunction = unsigned int (*)(Parameters...);

  constexpr TExplainedCall(const char* name, std::uint16_t number, TFunction function)
      : name_(name), number_(number), function_(function)
  {
  }

  unsigned int operator()(Parameters... arguments) const
  {
    if (IsExplained() || Trace::IsOn(Trace::kApi)) [[unlikely]]
      return CallAndExplain(name_, number_, function_, arguments...);
    return function_(arguments...);
  }

private:
  static bool IsExplained()
  {
    using QuorinUtility::TQuorinLibDebugOutput;
    return TQuorinLibDebugOutput::IsEnabled(TQuorinLibDebugOutput::Debug);
  }

  // Takes the members by value, so that no object is made for a call that is not logged.
  [[gnu::noinline, gnu::cold]] static unsigned int CallAndExplain(const char* name, std::uint16_t number,
                                                                  TFunction function, Parameters... arguments)
  {
    if (!IsExplained()) return CallRecorded(number, function, arguments...);
    const TCallNotes notes;
    const unsigned int code = TTracedCall(number, function)(arguments...);
    if constexpr (sizeof...(Parameters) == 0) {
      LogCall(name, {}, code, notes);
    } else {
      const TCallArgument texts[] = {arguments...};
      LogCall(name, texts, code, notes);
    }
    return code;
  }

  const char* name_;
  std::uint16_t number_;
  TFunction function_;
};
