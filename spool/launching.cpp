// SPDX-License-Identifier: MIT
// Handing tasks to launchers in turn.
#include "spool/launching.h"

#include "utility/IQuorinTask.h"
#include "utility/TQuorinTaskLauncher.h"

void LaunchOrExecute(QuorinUtility::TQuorinTaskLauncher* launcher, QuorinUtility::IQuorinTask* task,
                     void* argument)
{
  // A launcher without a thread would keep the first task for ever, and the caller at the second.
  if (launcher && launcher->IsAlive())
    launcher->Launch(task, argument);
  else
    task->Execute(argument);
}
