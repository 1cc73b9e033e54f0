// SPDX-License-Identifier: MIT
// The calls of a trace that a replay makes.
#pragma once

#include "trace/TTraceFile.h"

#include <cstddef>
#include <cstdint>
#include <limits>
#include <vector>

namespace vxtool {

/// A call of the program.
struct TReplayStep
{
  static constexpr std::size_t kNone = std::numeric_limits<std::size_t>::max();

  const TTraceCall* call = nullptr;
  std::vector<std::size_t> inner; ///< calls that a callback of the program made during it
  std::size_t endedBefore = 0;    ///< how many calls had ended when it began
  std::size_t endRank = kNone;    ///< which one it was to end; none when it did not
  std::size_t run = kNone;        ///< the start of the run, when its answer depends on how far that is; else none
  std::size_t series = kNone; ///< the last start of a run, also when that is over: of its images are those left
  std::size_t event = kNone;  ///< then: that start, or the last image that its thread had waited for
};

/// Which calls of a trace a replay makes, in which thread and after which others. Borrows the trace. Constant after
/// construction, so reentrant.
class TReplayPlan final
{
public:
  explicit TReplayPlan(const TTraceFile& file);

  /// By the time when they began; those that are inside of others stand behind them.
  const std::vector<TReplayStep>& Steps() const { return steps_; }
  /// The calls of each thread that made one, but for the inner ones; threads by the time of their first call.
  const std::vector<std::vector<std::size_t>>& Threads() const { return threads_; }

private:
  void RankEnds();
  void FindRuns();

  std::vector<TReplayStep> steps_;
  std::vector<std::vector<std::size_t>> threads_;
};

/// Whether the name is one of a list of patterns as a shell's.
bool IsOneOf(const std::string& name, std::initializer_list<const char*> patterns);
/// Functions whose answers depend on how far a run is.
bool DependsOnRun(const std::string& function);
/// Functions that wait for an image.
bool IsWait(const std::string& function);

} // namespace vxtool
