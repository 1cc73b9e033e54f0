// SPDX-License-Identifier: MIT
// The exit codes of the command-line tool: one number for each way a command can end.
#pragma once

namespace vxtool {

/// What the tool's process returns. When several apply, an output error comes before a camera error, that before
/// an interruption, and that before lost frames.
enum class ExitCode : int
{
  Success = 0,
  Usage = 1,
  NoCamera = 2,
  CameraError = 3,
  OutputError = 4,
  FramesLost = 5,
  InputError = 6,
  Interrupted = 130,
};

} // namespace vxtool
