// SPDX-License-Identifier: MIT
// Handing tasks to launchers in turn.
#pragma once

#include <memory>
#include <span>
#include <vector>

namespace QuorinUtility {
class IQuorinTask;
class TQuorinTaskLauncher;
} // namespace QuorinUtility

/// Hands @p task to the launcher, waiting until it is idle; without one, or one that has no thread, runs it on the
/// calling thread.
void LaunchOrExecute(QuorinUtility::TQuorinTaskLauncher* launcher, QuorinUtility::IQuorinTask* task,
                     void* argument);

/// The most launchers that spooling uses: a number out of a program's configuration must not use up the process's
/// threads.
inline constexpr int kMaxLaunchers = 256;

/// As many launchers as asked for, between none and kMaxLaunchers. Throws only when memory is short.
std::vector<std::unique_ptr<QuorinUtility::TQuorinTaskLauncher>> MakeLaunchers(int count);

/// As LaunchOrExecute(), with the launcher whose turn it is: number @p next, which becomes that of the one after it.
void LaunchInTurn(std::span<const std::unique_ptr<QuorinUtility::TQuorinTaskLauncher>> launchers, int& next,
                  QuorinUtility::IQuorinTask* task, void* argument);

/// The launcher whose turn it is after @p launcher, of @p count.
constexpr int NextInTurn(int launcher, int count)
{
  return launcher + 1 < count ? launcher + 1 : 0;
}
