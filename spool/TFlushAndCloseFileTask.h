// SPDX-License-Identifier: MIT
// Unlocks and closes an image on another thread.
#pragma once

#include "utility/IQuorinTask.h"

class ISpooler;

/// Unlocks and closes the image that it is launched with. Borrows the spooler, which must be thread-safe. Holds no
/// state, so that one task may run on several launchers at once.
class TFlushAndCloseFileTask final : public QuorinUtility::IQuorinTask
{
public:
  explicit TFlushAndCloseFileTask(ISpooler* spooler) : spooler_(spooler) {}

  /// @p image points to an IImage, open and locked. Failures are logged.
  void Execute(void* image) override;

private:
  ISpooler* spooler_;
};
