// SPDX-License-Identifier: MIT
// A unit of work for a task launcher.
#pragma once

namespace QuorinUtility {

/// A unit of work that a TQuorinTaskLauncher runs. Borrowed by the launcher from Launch() until Execute() has
/// returned.
class IQuorinTask
{
public:
  virtual ~IQuorinTask() = default;
  /// Runs on the launcher's thread with the argument given to Launch(). What it throws is logged; the launcher
  /// goes on.
  virtual void Execute(void* argument) = 0;
};

} // namespace QuorinUtility
