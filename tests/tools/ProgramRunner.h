// SPDX-License-Identifier: MIT
// Runs the tool as a user would, for the tests.
#pragma once

#include "tests/tools/ImageFixtures.h"

#include <string>
#include <sys/resource.h>
#include <sys/types.h>
#include <vector>

namespace vxtool {

inline constexpr const char* kSmallCamera =
    "[Simulator]\nCameras = 1\n[Camera0]\nModel = RQ512_LX\nScene = beads\n";

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
  std::string Config() const { return directory_.File("cameras.ini"); }

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

  TemporaryDirectory directory_;
};

} // namespace vxtool
