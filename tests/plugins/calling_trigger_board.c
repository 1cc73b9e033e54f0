/* SPDX-License-Identifier: MIT */
/* A trigger-board library that closes its board when it is loaded and unloaded. It calls by name, and so reaches the
   camera library's function of that name. Its count of triggers is what the first call answered. */
#define TriggerBoard_GetAvailableTriggers Other_GetAvailableTriggers
#include "examples/plugins/trigger_board.c"
#undef TriggerBoard_GetAvailableTriggers

EXPORTED int TriggerBoard_GetAvailableTriggers(int* count);

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
  return DONE;
}
