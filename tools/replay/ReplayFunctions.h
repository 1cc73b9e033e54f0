// SPDX-License-Identifier: MIT
// The functions of the library, to be called by name.
#pragma once

#include "trace/TTraceSignature.h"

#include <cstddef>
#include <cstdint>
#include <string>

namespace vxtool {

/// A function of the library that a trace may have calls of.
struct TReplayFunction
{
  TTraceSignature signature;
  /// Calls it with arguments as TraceValue() makes them, and returns its result as that does; 0 for none.
  std::uint64_t (*call)(const std::uint64_t* values) = nullptr;
  const std::size_t* targetBytes = nullptr; ///< of each argument: the size of what it points to; 0 for a number
  bool writesFixedValue = false;            ///< to what its arguments point to; of one that only returns a code
};

/// Null for a name that the library does not have. Of a function that does nothing but return a code the arguments are its
/// first four integer registers. Thread-safe.
const TReplayFunction* FindReplayFunction(const std::string& name);

} // namespace vxtool
