// SPDX-License-Identifier: MIT
// Makes and unmakes everything that belongs to an open camera.
#include "api/camera_assembly.h"

#include "acquisition/IDispatchRoutine.h"
#include "acquisition/TAcquisitionEventHandler.h"
#include "acquisition/TDispatchQueue.h"
#include "acquisition/TPseudoAcquisitionMode.h"
#include "acquisition/TVxmcdAcquisitionManager.h"
#include "api/camera_registry.h"
#include "api/TCamera.h"
#include "features/feature_names.h"
#include "features/SDK3Bool.h"
#include "features/SDK3Enum.h"
#include "features/SDK3Int.h"
#include "utility/TQuorinCriticalSection.h"

namespace {

template <class T>
void Destroy(T*& object)
{
  delete object;
  object = nullptr;
}

void SendUsersHome(TVxmcdAcquisitionManager& manager)
{
  manager.CancelWait();
  manager.Uses().WaitUntilUnused();
}

} // namespace

// The order is fixed. Services and readout model have their places in it: I2C, potentiometers, observers and
// configuration behind the manager, the pixel readout rate behind the gain channel, the FIFO usage behind the
// shuttering mode, and the readout model behind the baseline clamp.
TCamera AssembleCamera(int coreHandle)
{
  TCamera camera;
  camera.cameraHandle = static_cast<unsigned int>(coreHandle);
  camera.cameraLock = new QuorinUtility::TQuorinCriticalSection();
  camera.acquisitionManager = new TVxmcdAcquisitionManager(camera.cameraLock);

  camera.preAmpGainChannel = new SDK3Enum(coreHandle, Feature::kPreAmpGainChannel);
  camera.preAmpGain = new SDK3Enum(coreHandle, Feature::kPreAmpGain);
  camera.preAmpGainSelector = new SDK3Enum(coreHandle, Feature::kPreAmpGainSelector);
  camera.simplePreAmpGainControl = new SDK3Enum(coreHandle, Feature::kSimplePreAmpGainControl);
  camera.cycleMode = new SDK3Enum(coreHandle, Feature::kCycleMode);
  camera.pixelEncoding = new SDK3Enum(coreHandle, Feature::kPixelEncoding);
  camera.electronicShutteringMode = new SDK3Enum(coreHandle, Feature::kElectronicShutteringMode);
  camera.bitDepth = new SDK3Enum(coreHandle, Feature::kBitDepth);
  camera.accumulateCount = new SDK3Int(coreHandle, Feature::kAccumulateCount);
  camera.frameCount = new SDK3Int(coreHandle, Feature::kFrameCount);
  camera.baselineClampFeature = new SDK3Bool(coreHandle, Feature::kBaselineClamp);

  camera.acquisitionMode = new TPseudoAcquisitionMode(camera.acquisitionManager, camera.pixelEncoding,
                                                      camera.cycleMode, camera.accumulateCount, camera.frameCount);
  return camera;
}

void DismantleCamera(TCamera& camera)
{
  TVxmcdAcquisitionManager* manager = CloseCameraToNewUses(camera);
  if (manager) SendUsersHome(*manager);

  Destroy(camera.acquisitionMode);
  Destroy(camera.baselineClampFeature);
  Destroy(camera.frameCount);
  Destroy(camera.accumulateCount);
  Destroy(camera.bitDepth);
  Destroy(camera.electronicShutteringMode);
  Destroy(camera.pixelEncoding);
  Destroy(camera.cycleMode);
  Destroy(camera.simplePreAmpGainControl);
  Destroy(camera.preAmpGainSelector);
  Destroy(camera.preAmpGain);
  Destroy(camera.preAmpGainChannel);

  Destroy(manager);
  Destroy(camera.cameraLock);

  Destroy(camera.statusDispatchQueue);
  Destroy(camera.eventDispatchQueue);
  Destroy(camera.acquisitionEventHandler);
  Destroy(camera.statusDispatchRoutine);
  Destroy(camera.eventDispatchRoutine);
}
