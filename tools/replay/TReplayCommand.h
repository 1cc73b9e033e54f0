// SPDX-License-Identifier: MIT
// The command that makes the calls of a trace again.
#pragma once

#include "tools/Messages.h"
#include "tools/replay/TReplayReport.h"
#include "tools/TraceOptions.h"
#include "trace/TTraceFile.h"

#include <string>

namespace vxtool {

/// Replays a trace and prints the report. Recorded, it runs itself as the program that is recorded. Borrows the options. For
/// one use, by one thread; the process must have no other ones.
class TReplayCommand final
{
public:
  explicit TReplayCommand(const TTraceOptions& options) : options_(options) {}
  ExitCode Run();

private:
  ExitCode RunRecorded() const;
  void RemarkOnTrace(const TTraceFile& file, TReplayReport& report) const;
  bool PrintReport(const TReplayReport& report) const;

  const TTraceOptions& options_;
};

} // namespace vxtool
