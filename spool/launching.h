// SPDX-License-Identifier: MIT
// Handing tasks to launchers in turn.
#pragma once

namespace QuorinUtility {
class IQuorinTask;
class TQuorinTaskLauncher;
} // namespace QuorinUtility

/// Hands @p task to the launcher, waiting until it is idle; without one, or one that has no thread, runs it on the
/// calling thread.
void LaunchOrExecute(QuorinUtility::TQuorinTaskLauncher* launcher, QuorinUtility::IQuorinTask* task,
                     void* argument);

/// The launcher whose turn it is after @p launcher, of @p count.
constexpr int NextInTurn(int launcher, int count)
{
  return launcher + 1 < count ? launcher + 1 : 0;
}
