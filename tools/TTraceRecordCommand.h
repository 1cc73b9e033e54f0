// SPDX-License-Identifier: MIT
// Runs a program and records its calls.
#pragma once

#include "tools/Messages.h"
#include "tools/TraceOptions.h"

#include <string>
#include <vector>

namespace vxtool {

/// Runs a program with VXMCD_TRACE, and says what was recorded. Each of its processes has a file while it runs; at the end
/// the first one gets the name that was asked for. Used once.
class TTraceRecordCommand final
{
public:
  explicit TTraceRecordCommand(const TTraceOptions& options) : options_(options) {}

  /// The program's exit code, or 128 and its signal, as a shell has it.
  ExitCode Run();

private:
  int RunProgram() const;
  std::vector<std::string> Parts() const;
  void Finish(const std::vector<std::string>& parts) const;
  std::string NameOf(std::size_t index) const;

  const TTraceOptions& options_;
  std::string file_; ///< with its whole path: the program may change its directory
};

} // namespace vxtool
