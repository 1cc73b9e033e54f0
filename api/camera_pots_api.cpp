// SPDX-License-Identifier: MIT
// The potentiometers of the camera. Several of these functions return the facade's own status, 0 or 1; callers
// rely on that.
#include "api/entry_points.h"
#include "api/result_maps.h"
#include "api/TServiceUse.h"
#include "service/TCameraPotsFacade.h"
#include "service/TObserverList.h"
#include "utility/outputs.h"
#include "vxmcd.h"

namespace EntryPoint {

unsigned int vxsys_CameraPotsLoadFile(const char* fileName)
{
  const TServiceUse camera;
  if (!camera) return RC_NOT_INITIALIZED;
  return ToResultCode(camera.Pots().LoadFile(fileName), RC_FILE_LOAD_ERROR);
}

unsigned int vxsys_CameraPotsSaveFile(const char* fileName)
{
  const TServiceUse camera;
  if (!camera) return RC_NOT_INITIALIZED;
  return ToResultCode(camera.Pots().SaveFile(fileName), RC_FILE_SAVE_ERROR);
}

unsigned int vxsys_CameraPotsCommitValuesFromFile(void)
{
  const TServiceUse camera;
  if (!camera) return RC_NOT_INITIALIZED;
  return ToResultCode(camera.Pots().CommitValuesFromFile(), RC_FILE_LOAD_ERROR);
}

unsigned int vxsys_CameraPotsGetNumberGroups(int* count)
{
  const TServiceUse camera;
  if (!camera) return RC_NOT_INITIALIZED;
  return camera.Pots().GetNumberGroups(count);
}

unsigned int vxsys_CameraPotsGetGroupName(int group, char* name)
{
  const TServiceUse camera;
  if (!camera) return RC_NOT_INITIALIZED;
  return camera.Pots().GetGroupName(group, name);
}

unsigned int vxsys_CameraPotsGetNumberPotsInGroup(int group, int* count)
{
  const TServiceUse camera;
  if (!camera) return RC_NOT_INITIALIZED;
  return camera.Pots().GetNumberPotsInGroup(group, count);
}

unsigned int vxsys_CameraPotsGetPotInfo(int group, int pot, int infoType, void* out)
{
  const TServiceUse camera;
  if (!camera) return RC_NOT_INITIALIZED;
  return camera.Pots().GetPotInfo(group, pot, infoType, out);
}

unsigned int vxsys_CameraPotsGetPotValue(int group, int pot, int* value)
{
  const TServiceUse camera;
  if (!camera) return RC_NOT_INITIALIZED;
  return camera.Pots().GetPotValue(group, pot, value);
}

unsigned int vxsys_CameraPotsSetPotValue(int group, int pot, int value)
{
  const TServiceUse camera;
  if (!camera) return RC_NOT_INITIALIZED;
  return camera.Pots().SetPotValue(group, pot, value);
}

unsigned int vxsys_CameraPotsGetRailValue(int group, int pot, int* value)
{
  const TServiceUse camera;
  if (!camera) return RC_NOT_INITIALIZED;
  return camera.Pots().GetRailValue(group, pot, value);
}

unsigned int vxsys_CameraPotsSetPotDefaultEnable(int enable)
{
  const TServiceUse camera;
  if (!camera) return RC_NOT_INITIALIZED;
  return camera.Pots().SetPotDefaultEnable(enable >= 1);
}

unsigned int vxsys_CameraPotsGetPotDefaultEnable(int* enable)
{
  const TServiceUse camera;
  if (!camera) return RC_NOT_INITIALIZED;
  bool isEnabled = false;
  const unsigned int status = camera.Pots().GetPotDefaultEnable(isEnabled);
  WriteOutput(enable, isEnabled ? 1 : 0);
  return status;
}

unsigned int vxsys_CameraPotsRegisterObserver(vxmcd_PotsObserver callback, void* context)
{
  const TServiceUse camera;
  if (!camera) return RC_NOT_INITIALIZED;
  camera.Observers().Register(callback, context);
  return RC_SUCCESS;
}

unsigned int vxsys_CameraPotsUnregisterObserver(void* context)
{
  const TServiceUse camera;
  if (!camera) return RC_NOT_INITIALIZED;
  camera.Observers().Unregister(context);
  return RC_SUCCESS;
}

} // namespace EntryPoint
