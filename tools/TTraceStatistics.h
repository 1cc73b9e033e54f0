// SPDX-License-Identifier: MIT
// What a trace says as a whole.
#pragma once

#include "trace/TTraceFile.h"

#include <cstdint>
#include <map>
#include <string>
#include <vector>

namespace vxtool {

/// Counts and times of the calls of a trace: by function, and by run of the camera. Borrows the trace.
class TTraceStatistics final
{
public:
  struct TFunction
  {
    const TTraceFunction* function = nullptr;
    std::uint64_t calls = 0;
    std::map<std::uint32_t, std::uint64_t> failures; ///< by code
    std::vector<double> seconds;                     ///< of each call that returned, in ascending order

    double Total() const;
    /// The time that the part @p quantile of the calls did not exceed; 0 without one that returned.
    double Quantile(double quantile) const;
  };
  struct TRun
  {
    double beginSeconds = 0.0;
    double endSeconds = 0.0;      ///< of the last frame, or of the start
    std::uint64_t frames = 0;     ///< that the feature library delivered
    std::uint64_t framesLost = 0; ///< times that the camera said it had lost some
    std::uint64_t imagesCopied = 0;

    double FramesPerSecond() const;
  };

  explicit TTraceStatistics(const TTraceFile& file);

  const TTraceFile& File() const { return file_; }
  /// By the time that they took altogether, the longest first.
  const std::vector<TFunction>& Functions() const { return functions_; }
  const std::vector<TRun>& Runs() const { return runs_; }
  /// From the first call to the end of the last one.
  double Seconds() const { return seconds_; }

private:
  void CountFunctions();
  void CountRuns();

  const TTraceFile& file_;
  std::vector<TFunction> functions_;
  std::vector<TRun> runs_;
  double seconds_ = 0.0;
};

/// What stands out in a trace, in words: what a user of the library would be told who asks why the program does not work.
std::vector<std::string> TraceRemarks(const TTraceStatistics& statistics);

} // namespace vxtool
