// SPDX-License-Identifier: MIT
// What the commands for call traces are asked for.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace CLI {
class App;
}

namespace vxtool {

enum class TraceCommand
{
  Record,
  Print,
  Stats,
  Diff,
  Redact,
  Config,
  Replay,
  Images,
};

struct TTraceOptions
{
  TraceCommand command = TraceCommand::Print;
  bool isJson = false;
  std::string file;
  std::string other;  ///< of diff and redact: the second trace; of images: the directory
  std::string output; ///< of record; "": the name of the program. Of replay: "": none is recorded

  std::vector<std::string> program; ///< of record: with its arguments
  std::string recorderOptions;      ///< of record: as VXMCD_TRACE takes them, each behind a comma

  bool isApiOnly = false; ///< of print and diff: calls of the program
  bool isCoreOnly = false;
  std::string function;     ///< of print: a pattern as a shell's; "": all
  std::uint32_t thread = 0; ///< of print; 0: all
  bool isErrorsOnly = false;
  bool isOpenOnly = false;
  std::optional<double> fromSeconds;
  std::optional<double> toSeconds;
  std::size_t tail = 0; ///< of print: the last ones; 0: all

  bool isResultsOnly = false; ///< of diff: codes and outputs are compared

  std::string config; ///< of replay: describes simulated cameras; "": those that there are
  bool isLikeRecorded = false;
  bool isAtRecordedSpeed = false;
  bool hasSamePaths = false; ///< files are written where the program wrote them
  double timeoutSeconds = 30.0;
};

/// Adds the command trace with its own commands to the parser, which outlives the call as @p options do. They are complete
/// when the command line has been parsed.
CLI::App* AddTraceCommand(CLI::App& app, TTraceOptions& options);

} // namespace vxtool
