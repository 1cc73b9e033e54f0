// SPDX-License-Identifier: MIT
// Compares the answers of a replay with those of the trace.
#pragma once

#include "tools/replay/TReplayObjects.h"
#include "tools/replay/TReplayPlan.h"

#include <cstddef>
#include <map>
#include <mutex>

namespace vxtool {

/// Says of each call that is made again whether its code and what it wrote are those of the trace, and which of the images that
/// it may take were taken before. Borrows plan and objects. Thread-safe.
class TReplayComparison final
{
public:
  enum class Verdict
  {
    Same,
    Timing, ///< another time of the call explains the answer
    Different
  };

  TReplayComparison(const TReplayPlan& plan, TReplayObjects& objects) : plan_(plan), objects_(objects) {}

  /// Whether the camera has not come so far as it had in the trace: later, the answer may be the same.
  bool IsEarly(std::size_t step, const TTraceCall& replayed) const;
  /// Once for each call, of its last answer. A call without an end in the trace is the same whatever it answers.
  Verdict Compare(std::size_t step, const TTraceCall& replayed);

private:
  bool HasSameOutputs(const TTraceCall& recorded, const TTraceCall& replayed);
  bool IsTiming(const TReplayStep& step, const TTraceCall& replayed) const;
  void NoteEarlyImage(const TReplayStep& step, const TTraceCall& replayed);
  bool HadItsImageBefore(const TReplayStep& step, const TTraceCall& replayed) const;

  const TReplayPlan& plan_;
  TReplayObjects& objects_;
  mutable std::mutex mutex_;
  /// By the series: how many images the replay took that the program took later. Guarded by mutex_.
  std::map<std::size_t, std::size_t> earlyImages_;
};

} // namespace vxtool
