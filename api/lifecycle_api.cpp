// SPDX-License-Identifier: MIT
// Opening and closing a camera, loading and unloading the library.
#include "acquisition/TVxmcdAcquisitionManager.h"
#include "api/camera_assembly.h"
#include "api/camera_registry.h"
#include "api/entry_points.h"
#include "api/TCameraUse.h"
#include "api/TClosingTurn.h"
#include "api/trigger_board_library.h"
#include "features/device_access.h"
#include "features/feature_access.h"
#include "features/feature_names.h"
#include "features/TLibraryUse.h"
#include "utility/TQuorinLibDebugOutput.h"

#include <atomic>
#include <limits>

namespace EntryPoint {

namespace {

// Calls of Initialize() that asked for a camera, minus calls of ShutDown(). A failed Initialize() keeps its
// increment.
std::atomic<int> gblInitialiseCounter{0};

/// Whether it was 0 before.
bool RaiseInitialiseCounter()
{
  // A program that polls for a camera increments it without limit.
  int counter = gblInitialiseCounter;
  while (counter < std::numeric_limits<int>::max() &&
         !gblInitialiseCounter.compare_exchange_weak(counter, counter + 1)) {
  }
  return counter == 0;
}

/// Whether it is 0 now and was not before.
bool LowerInitialiseCounter()
{
  int counter = gblInitialiseCounter;
  while (counter > 0 && !gblInitialiseCounter.compare_exchange_weak(counter, counter - 1)) {
  }
  return counter == 1;
}

// Opens the device of a camera; VX_HANDLE_NONE when there is none or it is not a camera.
int OpenCameraDevice(long handle)
{
  int coreHandle = VX_HANDLE_NONE;
  // The feature library numbers devices with an int: of a greater number it would see the lower half, and open another
  // camera.
  const bool isDevice =
      handle >= kFirstCameraHandle && handle - kFirstCameraHandle <= std::numeric_limits<int>::max();
  const int code =
      isDevice ? OpenDevice(static_cast<int>(handle - kFirstCameraHandle), coreHandle) : VX_ERR_OUT_OF_RANGE;
  if (code != VX_SUCCESS || coreHandle == VX_HANDLE_NONE) {
    QuorinUtility::TQuorinLibDebugOutput::Output(__FILE__, __LINE__, __func__,
                                                 "camera %ld cannot be opened: code %d", handle, code);
    return VX_HANDLE_NONE;
  }
  if (isImplemented(coreHandle, Feature::kCameraModel)) return coreHandle;
  QuorinUtility::TQuorinLibDebugOutput::Output(__FILE__, __LINE__, __func__, "camera %ld has no CameraModel",
                                               handle);
  CloseDevice(coreHandle);
  return VX_HANDLE_NONE;
}

// As AbortAcquisition() of that camera, but a run whose frames have all been delivered is finished.
void EndAcquisition(long handle)
{
  const TCameraUse camera(handle);
  if (!camera) return;
  camera.Manager().FinishDeliveredRun();
  camera.Manager().Stop();
}

} // namespace

unsigned int Initialize(char* /*directory*/)
{
  if (IsForkedChild()) return RC_NO_CAMERA;
  // Read once, here and in ShutDown(): another thread may select another camera meanwhile.
  const long handle = CurrentCameraHandle();
  if (IsCameraOpen(handle)) return RC_SUCCESS;

  TLibraryUse library;
  if (RaiseInitialiseCounter()) LoadTriggerBoardLibrary(gblInitialiseCounter);
  const int coreHandle = OpenCameraDevice(handle);
  if (coreHandle == VX_HANDLE_NONE) return RC_NO_CAMERA;

  // What has been made stays when a configuration library throws: the camera is open, and closing the library would
  // close it.
  const bool usesLibrary = library.Release();
  TCamera camera = AssembleCamera(coreHandle);
  camera.usesLibrary = usesLibrary;
  RegisterCamera(handle, camera);
  WriteBool(coreHandle, Feature::kMetadataEnable, 1);
  return RC_SUCCESS;
}

unsigned int ShutDown(void)
{
  const long handle = CurrentCameraHandle();
  if (LowerInitialiseCounter()) UnloadTriggerBoardLibrary(gblInitialiseCounter);
  if (IsForkedChild()) return RC_NOT_INITIALIZED;

  const TClosingTurn turn(handle);
  if (!turn) return RC_NOT_INITIALIZED;
  TCamera* const camera = getCameraFromHandle(handle);
  if (camera->cameraHandle == TCamera::kNoCamera) return RC_NOT_INITIALIZED;

  EndAcquisition(handle);
  const int coreHandle = static_cast<int>(camera->cameraHandle);
  WriteBool(coreHandle, Feature::kMetadataEnable, 0);
  const bool usesLibrary = camera->usesLibrary;
  const auto memory = DismantleCamera(*camera);
  CloseDevice(coreHandle);
  UnregisterCamera(handle);
  if (usesLibrary) TLibraryUse::Finalise();
  return RC_SUCCESS;
}

} // namespace EntryPoint

void MyInitialise(void) {}

void MyFinalise(void) {}

void my_init(void)
{
  MyInitialise();
}

void my_fini(void)
{
  MyFinalise();
}

namespace {

[[gnu::constructor]] void OnLoad()
{
  my_init();
}

[[gnu::destructor]] void OnUnload()
{
  my_fini();
}

} // namespace
