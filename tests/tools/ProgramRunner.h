// SPDX-License-Identifier: MIT
// Runs the tool as a user would, for the tests.
#pragma once

#include "tests/support/TScratchDirectory.h"
#include "tests/tools/ImageFixtures.h"

#include <cstdint>
#include <functional>
#include <string>
#include <sys/resource.h>
#include <sys/types.h>
#include <vector>

namespace vxtool {

/// Its frames come when the program is ready for them.
inline constexpr const char* kSmallCamera =
    "[Simulator]\nCameras = 1\n[Camera0]\nModel = RQ512_LX\nScene = beads\nClock = free\n";
/// Its frames come at their time, for tests of what happens meanwhile, and take little to make.
inline constexpr const char* kSteadyCamera =
    "[Simulator]\nCameras = 1\n[Camera0]\nModel = RQ512_LX\nScene = counter\n";

struct TOutcome
{
  int exitCode = -1;
  std::string output;
  std::string errors;
};

/// Whether the file is there and at least so long.
bool HasGrownTo(const std::string& path, std::uintmax_t bytes);

/// Has the simulated cameras that Configure() says, and a directory for files.
class ToolProgram : public ::testing::Test
{
protected:
  void Configure(const std::string& text);

  /// Starts the program in that directory, with its output going to files.
  pid_t Launch(std::vector<std::string> arguments, rlim_t fileLimit = RLIM_INFINITY);
  TOutcome Finish(pid_t child);
  TOutcome Run(std::vector<std::string> arguments, rlim_t fileLimit = RLIM_INFINITY)
  {
    return Finish(Launch(std::move(arguments), fileLimit));
  }

  /// Starts the program and waits, for up to 20 s, until the condition is true; the program goes on.
  pid_t LaunchUntil(std::vector<std::string> arguments, const std::function<bool()>& condition);
  /// Does what Ctrl-C does, and expects that the program then ends soon and says so by its exit code.
  TOutcome Interrupt(pid_t child);

  /// A number out of the JSON line.
  static long Count(const TOutcome& outcome, const std::string& key);
  static void ExpectCountsAddUp(const TOutcome& outcome);

  TScratchDirectory directory_;
  int errorTerminal_ = -1; ///< takes what goes to standard error, in place of a file

private:
  std::string config_; ///< the file that describes the cameras
};

} // namespace vxtool
