// SPDX-License-Identifier: MIT
// Compares two traces.
#pragma once

#include "tools/Messages.h"
#include "tools/TraceOptions.h"
#include "trace/TTraceFile.h"

#include <cstddef>
#include <string>
#include <vector>

namespace vxtool {

/// A step from one list of calls to another.
struct TDiffStep
{
  enum class Kind
  {
    Both,
    FirstOnly,
    SecondOnly
  };
  Kind kind;
  std::size_t first;  ///< the place in the first list, unless SecondOnly
  std::size_t second; ///< the place in the second list, unless FirstOnly
};

/// The fewest steps from one list to the other, by Myers' algorithm; equal texts are common to both. With more than
/// @p maxChanges steps that are not common, none.
std::vector<TDiffStep> ShortestDiff(const std::vector<std::string>& first, const std::vector<std::string>& second,
                                    std::size_t maxChanges);

ExitCode CompareTraces(const TTraceOptions& options);

} // namespace vxtool
