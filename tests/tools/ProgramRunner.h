// SPDX-License-Identifier: MIT
// Runs the tool as a user would, for the tests.
#pragma once

#include "tests/support/TScratchDirectory.h"
#include "tests/tools/ImageFixtures.h"

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
/// How soon an interrupted program has ended, in seconds. A busy machine is allowed for; a run or a wait is not.
inline constexpr double kPrompt = 5.0;

struct TOutcome
{
  int exitCode = -1;
  std::string output;
  std::string errors;
};

/// Has the simulated cameras that Configure() says, and a directory for files.
class ToolProgram : public ::testing::Test
{
protected:
  void Configure(const std::string& text);

  /// Starts the program with its output going to files.
  pid_t Launch(std::vector<std::string> arguments, rlim_t fileLimit = RLIM_INFINITY);
  TOutcome Finish(pid_t child);
  TOutcome Run(std::vector<std::string> arguments, rlim_t fileLimit = RLIM_INFINITY)
  {
    return Finish(Launch(std::move(arguments), fileLimit));
  }

  /// A number out of the JSON line.
  static long Count(const TOutcome& outcome, const std::string& key);
  static void ExpectCountsAddUp(const TOutcome& outcome);

  TScratchDirectory directory_;

private:
  std::string config_; ///< the file that describes the cameras
};

} // namespace vxtool
