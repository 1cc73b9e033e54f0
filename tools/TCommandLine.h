// SPDX-License-Identifier: MIT
// Reads the command line.
#pragma once

#include "tools/Options.h"

#include <cstddef>
#include <optional>

namespace vxtool {

/// Parses and checks a command line. Help, version and usage errors are printed by Parse() itself.
class TCommandLine final
{
public:
  /// The options of the first camera, with those of the others; nothing when there is no command to carry out, and ExitStatus() is then what the process
  /// returns.
  std::optional<TOptions> Parse(int argc, const char* const* argv);
  int ExitStatus() const { return exitStatus_; }

private:
  std::optional<TOptions> ParseFor(std::size_t camera, int argc, const char* const* argv,
                                   std::size_t& cameraCount);

  int exitStatus_ = 0;
};

} // namespace vxtool
