// SPDX-License-Identifier: MIT
// A call of an entry point that the trace records.
#pragma once

#include "trace/TCallRecord.h"

/// The body of an exported function: calls the function that it is given, and records the call in the trace. Without a trace
/// it costs a relaxed load. Thread-safe.
template <class Result, class... Parameters>
class TTracedCall final
{
public:
  using TFunction = Result (*)(Parameters...);

  constexpr TTracedCall(std::uint16_t number, TFunction function) : number_(number), function_(function) {}

  Result operator()(Parameters... arguments) const
  {
    if (Trace::IsOn(Trace::kApi)) [[unlikely]]
      return CallRecorded(number_, function_, arguments...);
    return function_(arguments...);
  }

private:
  std::uint16_t number_;
  TFunction function_;
};
