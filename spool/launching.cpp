// SPDX-License-Identifier: MIT
// Handing tasks to launchers in turn.
#include "spool/launching.h"

#include "utility/IQuorinTask.h"
#include "utility/TQuorinLibDebugOutput.h"
#include "utility/TQuorinTaskLauncher.h"

#include <algorithm>

using QuorinUtility::IQuorinTask;
using QuorinUtility::TQuorinLibDebugOutput;
using QuorinUtility::TQuorinTaskLauncher;

std::vector<std::unique_ptr<TQuorinTaskLauncher>> MakeLaunchers(int count)
{
  if (count > kMaxLaunchers)
    TQuorinLibDebugOutput::Output(__FILE__, __LINE__, __func__, TQuorinLibDebugOutput::Warning,
                                  "%d spool threads are too many, there will be %d", count, kMaxLaunchers);
  std::vector<std::unique_ptr<TQuorinTaskLauncher>> launchers(
      static_cast<std::size_t>(std::clamp(count, 0, kMaxLaunchers)));
  for (auto& launcher : launchers) launcher = std::make_unique<TQuorinTaskLauncher>();
  return launchers;
}

void LaunchOrExecute(TQuorinTaskLauncher* launcher, IQuorinTask* task, void* argument)
{
  // A launcher without a thread would never run the first task, and block the caller at the second.
  if (launcher && launcher->IsAlive())
    launcher->Launch(task, argument);
  else
    task->Execute(argument);
}

void LaunchInTurn(std::span<const std::unique_ptr<TQuorinTaskLauncher>> launchers, int& next, IQuorinTask* task,
                  void* argument)
{
  LaunchOrExecute(launchers.empty() ? nullptr : launchers[static_cast<std::size_t>(next)].get(), task, argument);
  next = NextInTurn(next, static_cast<int>(launchers.size()));
}
