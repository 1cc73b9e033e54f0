// SPDX-License-Identifier: MIT
// What a run that is over has come to.
#pragma once

#include "tools/RunProgress.h"
#include "tools/TRunAccount.h"

namespace vxtool {

/// How a run and its files have ended, for the report and the exit code.
struct TRunResult
{
  RunEnd end = RunEnd::Complete;
  TRunAccount account;
  double seconds = 0.0;
  bool hasOutput = false; ///< there is a file of images
  bool isOutputFailed = false;
  bool isWrittenKnown = true; ///< whether the account's number of images on disk is true
};

} // namespace vxtool
