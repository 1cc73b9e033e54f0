/* SPDX-License-Identifier: MIT */
/* A service technician's session: sets the camera's potentiometers from a file and reads them back, makes a backup of
   its EEPROM, and looks for a trigger board. service_demo [POTENTIOMETER FILE [EEPROM BACKUP]]. Run it in the directory
   of the plug-in libraries, if there are any. */
#include "vxmcd.h"

#include <stdio.h>
#include <stdlib.h>

enum
{
  STATUS_DONE = 0,      /* of the functions that return a status instead of a result code */
  NO_TRIGGER_BOARD = 1, /* of the trigger-board functions */
  INFO_NAME = 0,
  INFO_HAS_RAIL = 11,
  NAME_SIZE = 256
};

/* Prints what failed and returns 0, so that calls can be chained with &&. */
static int Check(const char* function, unsigned int code)
{
  if (code == RC_SUCCESS) return 1;
  fprintf(stderr, "%s: %u %s: %s\n", function, code, vxmcd_GetResultName(code), vxmcd_GetResultMeaning(code));
  return 0;
}

static unsigned int CountChange(void* context)
{
  ++*(int*)context;
  return 0;
}

static int PrintPotentiometer(int group, int pot)
{
  char name[NAME_SIZE] = "";
  int value = 0;
  int hasRail = 0;
  int rail = 0;
  if (vxsys_CameraPotsGetPotInfo(group, pot, INFO_NAME, name) != STATUS_DONE ||
      vxsys_CameraPotsGetPotInfo(group, pot, INFO_HAS_RAIL, &hasRail) != STATUS_DONE ||
      vxsys_CameraPotsGetPotValue(group, pot, &value) != STATUS_DONE)
    return 0;
  if (hasRail && vxsys_CameraPotsGetRailValue(group, pot, &rail) != STATUS_DONE) return 0;
  if (hasRail)
    printf("  %-12s %3d   rail %3d\n", name, value, rail);
  else
    printf("  %-12s %3d\n", name, value);
  return 1;
}

static int PrintPotentiometers(void)
{
  int groups = 0;
  int isDone = vxsys_CameraPotsGetNumberGroups(&groups) == STATUS_DONE;
  for (int group = 0; isDone && group < groups; ++group) {
    char name[NAME_SIZE] = "";
    int pots = 0;
    isDone = vxsys_CameraPotsGetGroupName(group, name) == STATUS_DONE &&
             vxsys_CameraPotsGetNumberPotsInGroup(group, &pots) == STATUS_DONE;
    printf("%s\n", name);
    for (int pot = 0; isDone && pot < pots; ++pot) isDone = PrintPotentiometer(group, pot);
  }
  return isDone;
}

/* Every potentiometer gets its default, which also becomes its power-on value. */
static int SetPotentiometers(const char* fileName)
{
  int changes = 0;
  const int isDone =
      Check("vxsys_CameraPotsRegisterObserver", vxsys_CameraPotsRegisterObserver(CountChange, &changes)) &&
      Check("vxsys_CameraPotsLoadFile", vxsys_CameraPotsLoadFile(fileName)) &&
      Check("vxsys_CameraPotsCommitValuesFromFile", vxsys_CameraPotsCommitValuesFromFile()) &&
      PrintPotentiometers();
  vxsys_CameraPotsUnregisterObserver(&changes);
  printf("the observer was called %d times\n", changes);
  return isDone;
}

/* A camera need not have a configuration library. */
static int BackUpEeprom(const char* fileName)
{
  int unused = 0;
  int version = 0;
  const unsigned int code = vxsys_EEPVR(&unused, &version);
  if (code == RC_NOT_SUPPORTED) {
    printf("no configuration library\n");
    return 1;
  }
  if (!Check("vxsys_EEPVR", code)) return 0;
  printf("EEPROM contents of version %d\n", version);
  if (!fileName) return 1;
  if (!Check("vxsys_EEPSV", vxsys_EEPSV(fileName))) return 0;
  printf("saved to %s\n", fileName);
  return 1;
}

static int LookForTriggerBoard(void)
{
  int triggers = 0;
  if (TriggerBoard_Initialize() == NO_TRIGGER_BOARD) {
    printf("no trigger board\n");
    return 1;
  }
  const int isDone = TriggerBoard_GetAvailableTriggers(&triggers) == STATUS_DONE;
  printf("trigger board with %d triggers\n", triggers);
  return TriggerBoard_ShutDown() == STATUS_DONE && isDone;
}

int main(int argc, char** argv)
{
  if (!Check("Initialize", Initialize(NULL))) return EXIT_FAILURE;
  const int isDone = SetPotentiometers(argc > 1 ? argv[1] : "potentiometers.ini") &&
                     BackUpEeprom(argc > 2 ? argv[2] : NULL) && LookForTriggerBoard();
  return Check("ShutDown", ShutDown()) && isDone ? EXIT_SUCCESS : EXIT_FAILURE;
}
