// SPDX-License-Identifier: MIT
// A call of an entry point that the log explains.
#pragma once

#include "api/call_log.h"
#include "utility/TQuorinLibDebugOutput.h"

/// The body of an exported function: calls the entry point of the same name, and explains in the log, at level debug, why
/// the call did not succeed. While the log is off or at another level, it costs one relaxed load. Borrows the name for
/// good. Thread-safe.
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
