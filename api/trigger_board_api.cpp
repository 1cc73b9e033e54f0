// SPDX-License-Identifier: MIT
// The trigger board. These functions return the status of the trigger-board library; before the first Initialize() they
// do nothing.
#include "api/entry_points.h"
#include "api/trigger_board_library.h"
#include "vxmcd.h"

namespace EntryPoint {

unsigned int TriggerBoard_Initialize(void)
{
  const TTriggerBoardUse board;
  if (!board) return RC_SUCCESS;
  return static_cast<unsigned int>(board->CallTriggerBoard_Initialize());
}

unsigned int TriggerBoard_ShutDown(void)
{
  const TTriggerBoardUse board;
  if (!board) return RC_SUCCESS;
  return static_cast<unsigned int>(board->CallTriggerBoard_ShutDown());
}

unsigned int TriggerBoard_GetAvailableTriggers(int* count)
{
  const TTriggerBoardUse board;
  if (!board) return RC_SUCCESS;
  return static_cast<unsigned int>(board->CallTriggerBoard_GetAvailableTriggers(count));
}

unsigned int TriggerBoard_GetTriggerHandle(int index, int* handle)
{
  const TTriggerBoardUse board;
  if (!board) return RC_SUCCESS;
  return static_cast<unsigned int>(board->CallTriggerBoard_GetTriggerHandle(index, handle));
}

unsigned int TriggerBoard_SetCurrentTrigger(int index)
{
  const TTriggerBoardUse board;
  if (!board) return RC_SUCCESS;
  return static_cast<unsigned int>(board->CallTriggerBoard_SetCurrentTrigger(index));
}

unsigned int TriggerBoard_I2CWrite(int first, int second, int third)
{
  const TTriggerBoardUse board;
  if (!board) return RC_SUCCESS;
  board->CallTriggerBoard_I2CWrite(static_cast<unsigned char>(first), static_cast<unsigned char>(second),
                                   static_cast<unsigned char>(third));
  return RC_SUCCESS;
}

} // namespace EntryPoint
