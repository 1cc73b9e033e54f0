/* SPDX-License-Identifier: MIT */
/* Part of a trigger-board library that closes its board when it is loaded and unloaded. The call by name, from a source
   of its own, reaches the camera library's function of that name. Its count of triggers is what the first call
   answered. */
#include "vxmcd_plugins.h"

#undef TriggerBoard_GetAvailableTriggers /* the example's own has another name here */

int TriggerBoard_ShutDown(void);
__attribute__((visibility("default"))) int TriggerBoard_GetAvailableTriggers(int* count);

static int answer;

__attribute__((constructor)) static void Begin(void)
{
  answer = TriggerBoard_ShutDown();
}

__attribute__((destructor)) static void End(void)
{
  TriggerBoard_ShutDown();
}

int TriggerBoard_GetAvailableTriggers(int* count)
{
  *count = answer;
  return 0;
}
