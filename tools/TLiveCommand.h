// SPDX-License-Identifier: MIT
// The command that shows a camera in the browser.
#pragma once

#include "tools/Messages.h"

#include <filesystem>
#include <string>
#include <vector>

namespace vxtool {

/// Runs the live view, a program of the Python package that was installed or built with this tool, in place of this
/// process. It uses the library that this tool uses. For one use; one thread.
class TLiveCommand final
{
public:
  /// @param arguments  options of the live view, but for the camera
  TLiveCommand(int camera, std::vector<std::string> arguments) : camera_(camera), arguments_(std::move(arguments))
  {
  }

  /// Returns only when the program cannot be run, after a message.
  ExitCode Run();

private:
  /// The directory with the Python package; "" when it is where Python itself searches, if it is anywhere.
  std::filesystem::path PackageDirectory() const;
  /// The first Python that has the modules that are needed; "" for none.
  std::string Python() const;

  int camera_;
  std::vector<std::string> arguments_;
};

} // namespace vxtool
