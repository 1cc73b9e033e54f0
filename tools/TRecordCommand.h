// SPDX-License-Identifier: MIT
// A run that the library records to disk.
#pragma once

#include "tools/ICamera.h"
#include "tools/Options.h"
#include "tools/Run.h"
#include "tools/TProgressLine.h"

#include <functional>
#include <string>

namespace vxtool {

/// Watches the run, says how it ended, and makes the output afterwards of what is on disk. Used by the
/// command that takes images, which owns the camera; prints to standard error; one thread.
class TRecordCommand final
{
public:
  explicit TRecordCommand(const TAcquireOptions& options) : options_(options) {}

  /// Whether no file would have to be replaced that may not be; says which one. Call it before the camera does
  /// anything.
  bool CheckFiles() const;
  /// Warns when the disk has less room than the run needs. @pre  the camera is set up to record
  static void WarnOfFullDisk();
  /// Needs a TInterrupt. @param camera  is set up to record
  /// @param beforeStart  called when only the start is left
  TRunResult Run(ICamera& camera, const TRunSettings& settings, const TRunFacts& facts, TProgressLine& line,
                 const std::function<void()>& beforeStart) const;

private:
  std::optional<long> AskWritten(const std::string& earlierStart, RunEnd end) const;
  void MakeOutput(const TRunFacts& facts, TRunResult& result) const;

  TAcquireOptions options_;
};

} // namespace vxtool
