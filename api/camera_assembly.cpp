// SPDX-License-Identifier: MIT
// Creates and destroys everything that belongs to an open camera.
#include "api/camera_assembly.h"

#include "acquisition/TAcquisitionEventHandler.h"
#include "acquisition/TDispatchQueue.h"
#include "acquisition/TPseudoAcquisitionMode.h"
#include "acquisition/TVxmcdAcquisitionManager.h"
#include "api/camera_registry.h"
#include "api/TCamera.h"
#include "features/feature_access.h"
#include "features/feature_names.h"
#include "features/SDK3Features.h"
#include "features/TDirectPreAmpGain.h"
#include "features/TgetFIFOUsage.h"
#include "features/TPseudoADChannel.h"
#include "features/TPseudoAmplifier.h"
#include "features/TPseudoBaselineClamp.h"
#include "features/TPseudoHSSpeed.h"
#include "features/TPseudoPreAmpGain.h"
#include "service/TCameraPotsFacade.h"
#include "service/TConfigurationLoader.h"
#include "service/TObserverList.h"
#include "service/TSDK3i2c.h"
#include "utility/IDispatchRoutine.h"
#include "utility/TQuorinCriticalSection.h"

#include <utility>

namespace {

template <class T>
void Destroy(T*& object)
{
  delete object;
  object = nullptr;
}

IPreAmpGain* MakePreAmpGain(const TCamera& camera, int coreHandle)
{
  if (isImplemented(coreHandle, Feature::kSimplePreAmpGainControl))
    return new TPseudoPreAmpGain(camera.simplePreAmpGainControl);
  return new TDirectPreAmpGain(camera.preAmpGain, camera.preAmpGainSelector, camera.adChannel, camera.amplifier);
}

/// Waits for the end of every use of the camera.
void CloseManager(TCamera& camera)
{
  TVxmcdAcquisitionManager* const manager = CloseCameraToNewUses(camera);
  if (!manager) return;
  camera.closedManager = manager;
  manager->Close();
}

// The configuration library may throw. A second shut-down of the camera then continues from here;
// until then the manager keeps the memory that the camera may be writing into.
void ReleaseConfiguration(TCamera& camera)
{
  IConfiguration* const configuration = std::exchange(camera.configuration, nullptr);
  if (std::exchange(camera.ownsConfiguration, false))
    camera.configurationLoader->DestroyConfiguration(configuration);
}

} // namespace

// The order is fixed: an object may use those made before it. Fields without an object stay null.
TCamera AssembleCamera(int coreHandle)
{
  TCamera camera;
  camera.cameraHandle = static_cast<unsigned int>(coreHandle);
  camera.cameraLock = new QuorinUtility::TQuorinCriticalSection();
  camera.acquisitionManager = new TVxmcdAcquisitionManager(camera.cameraLock, coreHandle);
  camera.i2c = new TSDK3i2c(coreHandle, L"Internal");
  camera.cameraPots = new TCameraPotsFacade(camera.i2c);
  camera.observers = new TObserverList(camera.cameraPots);
  camera.configurationLoader = new TConfigurationLoader(coreHandle);
  camera.configuration = camera.configurationLoader->GetConfiguration();
  camera.ownsConfiguration = true;

  camera.preAmpGainChannel = new SDK3Enum(coreHandle, Feature::kPreAmpGainChannel);
  camera.pixelReadoutRate = new TPixelReadoutRate(coreHandle);
  camera.preAmpGain = new SDK3Enum(coreHandle, Feature::kPreAmpGain);
  camera.preAmpGainSelector = new SDK3Enum(coreHandle, Feature::kPreAmpGainSelector);
  camera.simplePreAmpGainControl = new SDK3Enum(coreHandle, Feature::kSimplePreAmpGainControl);
  camera.cycleMode = new SDK3Enum(coreHandle, Feature::kCycleMode);
  camera.pixelEncoding = new SDK3Enum(coreHandle, Feature::kPixelEncoding);
  camera.electronicShutteringMode = new SDK3Enum(coreHandle, Feature::kElectronicShutteringMode);
  camera.fifoUsage =
      new TgetFIFOUsage(coreHandle, camera.simplePreAmpGainControl, camera.electronicShutteringMode);
  camera.bitDepth = new SDK3Enum(coreHandle, Feature::kBitDepth);
  camera.accumulateCount = new SDK3Int(coreHandle, Feature::kAccumulateCount);
  camera.frameCount = new SDK3Int(coreHandle, Feature::kFrameCount);
  camera.baselineClampFeature = new SDK3Bool(coreHandle, Feature::kBaselineClamp);
  camera.amplifier = new TPseudoAmplifier(camera.preAmpGainChannel, camera.pixelReadoutRate);
  camera.adChannel = new TPseudoADChannel(camera.preAmpGainChannel, camera.amplifier, camera.bitDepth);
  camera.hsSpeed = new TPseudoHSSpeed(camera.pixelReadoutRate, camera.adChannel, camera.amplifier);
  camera.acquisitionMode = new TPseudoAcquisitionMode(camera.acquisitionManager, camera.pixelEncoding,
                                                      camera.cycleMode, camera.accumulateCount, camera.frameCount);
  camera.baselineClamp = new TPseudoBaselineClamp(camera.baselineClampFeature);
  camera.preAmpGainModel = MakePreAmpGain(camera, coreHandle);
  camera.serviceLock = new QuorinUtility::TQuorinCriticalSection();
  camera.cursorLock = new QuorinUtility::TQuorinCriticalSection();
  return camera;
}

std::vector<std::shared_ptr<TFrameSlab>> DismantleCamera(TCamera& camera)
{
  CloseManager(camera);
  auto memory = camera.closedManager->CameraMemory();

  Destroy(camera.preAmpGainModel);
  Destroy(camera.baselineClamp);
  Destroy(camera.acquisitionMode);
  Destroy(camera.hsSpeed);
  Destroy(camera.adChannel);
  Destroy(camera.amplifier);
  Destroy(camera.baselineClampFeature);
  Destroy(camera.frameCount);
  Destroy(camera.accumulateCount);
  Destroy(camera.bitDepth);
  Destroy(camera.fifoUsage);
  Destroy(camera.electronicShutteringMode);
  Destroy(camera.pixelEncoding);
  Destroy(camera.cycleMode);
  Destroy(camera.simplePreAmpGainControl);
  Destroy(camera.preAmpGainSelector);
  Destroy(camera.preAmpGain);
  Destroy(camera.pixelReadoutRate);
  Destroy(camera.preAmpGainChannel);

  ReleaseConfiguration(camera);
  Destroy(camera.configurationLoader);
  Destroy(camera.observers);
  Destroy(camera.cameraPots);
  Destroy(camera.i2c);
  Destroy(camera.closedManager);
  Destroy(camera.cameraLock);

  Destroy(camera.statusDispatchQueue);
  Destroy(camera.eventDispatchQueue);
  Destroy(camera.acquisitionEventHandler);
  Destroy(camera.statusDispatchRoutine);
  Destroy(camera.eventDispatchRoutine);
  Destroy(camera.serviceLock);
  Destroy(camera.cursorLock);
  return memory;
}
