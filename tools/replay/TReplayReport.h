// SPDX-License-Identifier: MIT
// What a replay has found.
#pragma once

#include "tools/Json.h"
#include "tools/replay/TReplayPlan.h"

#include <cstddef>
#include <map>
#include <mutex>
#include <set>
#include <string>
#include <utility>

namespace vxtool {

/// Counts of calls that were made again, and the first one with another answer. Borrows the plan. Thread-safe.
class TReplayReport final
{
public:
  explicit TReplayReport(const TReplayPlan& plan) : plan_(plan) {}

  void NoteSame();
  /// An answer that another time of the call explains.
  void NoteTiming(std::size_t step, const TTraceCall& replayed);
  void NoteDifference(std::size_t step, const TTraceCall& replayed);
  /// The same in words, of a call that did not end, for example.
  void NoteDifference(std::size_t step, const std::string& what);
  void NoteSkipped(std::size_t step, const std::string& why);
  /// What else the user should know, a line each.
  void Remark(const std::string& remark);

  bool HasDifference() const;
  std::string Text() const;
  Json Summary() const;

private:
  struct TSkipped
  {
    std::size_t calls = 0;
    std::set<std::string> functions;
  };

  std::string LinesBefore(std::size_t step) const;
  std::string Answers(std::size_t step, const TTraceCall& replayed) const;
  void Add(std::size_t step, const std::string& lines);

  const TReplayPlan& plan_;
  mutable std::mutex mutex_; // guards all that follow
  std::size_t calls_ = 0;
  std::size_t differences_ = 0;
  std::size_t timing_ = 0;
  std::size_t firstStep_ = TReplayStep::kNone;
  std::string firstLines_;
  std::size_t firstTimingStep_ = TReplayStep::kNone;
  std::string firstTimingLines_;
  std::map<std::string, TSkipped> skipped_; // by reason
  std::string remarks_;
};

} // namespace vxtool
