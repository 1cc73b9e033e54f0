// SPDX-License-Identifier: MIT
// Choosing a camera.
#include "acquisition/TRunCamera.h"
#include "api/call_log.h"
#include "api/camera_registry.h"
#include "api/entry_points.h"
#include "features/current_core_handle.h"
#include "features/device_access.h"
#include "features/TLibraryUse.h"
#include "utility/outputs.h"

namespace EntryPoint {

namespace {

bool IsHandleInRange(long handle, long count)
{
  return handle >= kFirstCameraHandle && handle - kFirstCameraHandle < count;
}

unsigned int CheckAttached(long handle)
{
  long count = 0;
  if (const unsigned int code = GetAvailableCameras(&count); code != RC_SUCCESS) return code;
  if (!IsHandleInRange(handle, count))
    return Refuse(RC_P1_INVALID, "there are %ld cameras, from handle %ld", count, kFirstCameraHandle);
  return RC_SUCCESS;
}

} // namespace

unsigned int GetAvailableCameras(long* count)
{
  if (IsForkedChild()) return RC_NOT_SUPPORTED; // the parent's threads may have locked the feature library
  const TLibraryUse library;
  long long deviceCount = 0;
  if (ReadDeviceCount(deviceCount) != VX_SUCCESS) return RC_NOT_SUPPORTED;
  WriteOutput(count, deviceCount);
  return RC_SUCCESS;
}

unsigned int GetCameraHandle(long cameraIndex, long* handle)
{
  long count = 0;
  if (const unsigned int code = GetAvailableCameras(&count); code != RC_SUCCESS) return code;
  if (cameraIndex < 0 || cameraIndex >= count) return Refuse(RC_P1_INVALID, "there are %ld cameras", count);
  WriteOutput(handle, kFirstCameraHandle + cameraIndex);
  return RC_SUCCESS;
}

unsigned int SetCurrentCamera(long handle)
{
  if (const unsigned int code = CheckAttached(handle); code != RC_SUCCESS) return code;
  SelectCamera(handle);
  return RC_SUCCESS;
}

unsigned int vxmcd_SetCurrentCameraOfThread(long handle, long* earlier)
{
  // An open camera needs no question to the feature library: programs make this call before many others.
  if (handle != kNoCameraOfThread && !IsCameraOpen(handle)) {
    if (const unsigned int code = CheckAttached(handle); code != RC_SUCCESS) return code;
  }
  WriteOutput(earlier, CameraOfThread());
  SetCameraOfThread(handle);
  return RC_SUCCESS;
}

unsigned int GetCurrentCamera(long* handle)
{
  WriteOutput(handle, CurrentCameraHandle());
  return RC_SUCCESS;
}

unsigned int GetSDK3Handle(int* handle)
{
  if (!handle) return RC_P1_INVALID;
  *handle = CurrentCoreHandle();
  return RC_SUCCESS;
}

unsigned int vxmcd_SetIndependentCameras(int enable)
{
  if (enable != 0 && enable != 1) return RC_P1_INVALID;
  if (IsForkedChild()) return RC_NOT_SUPPORTED;
  if (!TRunCamera::SetIndependent(enable == 1))
    return Refuse(RC_ACQUIRING, "a camera acquires or is being started");
  return RC_SUCCESS;
}

} // namespace EntryPoint
