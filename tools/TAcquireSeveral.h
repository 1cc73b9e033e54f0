// SPDX-License-Identifier: MIT
// The command that takes images, for several cameras at a time.
#pragma once

#include "tools/Messages.h"
#include "tools/Options.h"
#include "tools/TAcquireCommand.h"
#include "tools/TProgressRows.h"

#include <functional>
#include <memory>
#include <vector>

namespace vxtool {

/// A TAcquireCommand for each camera. They are opened at the same time and set up one after the other; when one cannot be,
/// none takes images. Otherwise each has a thread: these start their runs together when all are cool and have their files
/// open, and then neither waits for the other nor ends because the other fails. Run() is for one use.
class TAcquireSeveral final
{
public:
  /// @param options  one for each camera
  explicit TAcquireSeveral(const std::vector<TOptions>& options);
  /// The code that comes first of those of all cameras.
  ExitCode Run();

private:
  /// Sets up one camera after the other, until one cannot be.
  ExitCode SetUp();
  ExitCode TakeImages();
  ExitCode WarmUp();
  /// Calls the function for each camera, each in a thread; the code that comes first.
  /// @param onNoThread  called for a camera in place of it when no thread can be made
  ExitCode InThreads(const std::function<ExitCode(TAcquireCommand&)>& function,
                     const std::function<void()>& onNoThread);

  std::vector<std::unique_ptr<TAcquireCommand>> cameras_;
  TProgressRows rows_;
};

} // namespace vxtool
