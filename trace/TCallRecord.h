// SPDX-License-Identifier: MIT
// The records of one call.
#pragma once

#include "trace/record_contents.h"
#include "trace/trace_format.h"
#include "trace/trace_switch.h"

#include <cstdint>
#include <type_traits>

class TTraceThread;

/// Records that a call begins, with its inputs, and then that it ends, with its result and outputs; without End(), that an
/// exception has left it. What is recorded of each argument is in the table of functions. Lives on the stack of the call.
/// Never throws.
class TCallRecord final
{
public:
  /// @param values  of the arguments, as TraceValue() makes them; borrowed until the end of the call
  TCallRecord(std::uint16_t function, const std::uint64_t* values) noexcept;
  ~TCallRecord();
  TCallRecord(const TCallRecord&) = delete;
  TCallRecord& operator=(const TCallRecord&) = delete;

  void End(std::uint64_t result) noexcept;

  /// Records a call that is over, which began at @p ticks.
  static void Past(std::uint16_t function, const std::uint64_t* values, std::uint64_t ticks,
                   std::uint64_t result) noexcept;

private:
  TCallRecord(std::uint16_t function, const std::uint64_t* values, std::uint64_t ticks) noexcept;

  const std::uint16_t function_;
  bool isEnded_ = false;
  const std::uint64_t* const values_;
  TTraceThread& thread_;
  const std::uint16_t call_;
  TraceFormat::TPixels* const outerPixels_;
  TraceFormat::TPixels pixels_ = {};
};

/// Calls the function and records the call.
template <class Result, class... Parameters, class... Arguments>
Result CallRecorded(std::uint16_t number, Result (*function)(Parameters...), Arguments&... arguments)
{
  const std::uint64_t values[sizeof...(Parameters) + 1] = {TraceValue(arguments)...};
  TCallRecord record(number, values);
  if constexpr (std::is_void_v<Result>) {
    function(arguments...);
    record.End(0);
  } else {
    const Result result = function(arguments...);
    record.End(TraceValue(result));
    return result;
  }
}
