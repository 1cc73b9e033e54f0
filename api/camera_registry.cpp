// SPDX-License-Identifier: MIT
// The open cameras, and the one that calls without a handle act on.
#include "api/camera_registry.h"

#include "acquisition/TVxmcdAcquisitionManager.h"
#include "utility/exports.h"
#include "utility/TQuorinCriticalSection.h"

#include <atomic>
#include <mutex>
#include <pthread.h>
#include <shared_mutex>
#include <utility>

TNeverDestroyed<std::map<long, TCamera>> HandleToCameraMap;
constinit TCamera InvalidCamera{.cameraHandle = TCamera::kNoCamera};
TNeverDestroyed<QuorinUtility::TQuorinCriticalSection> currentCameraShutdownMutex;

namespace {

// Guards the map: one thread may look a camera up while another thread opens one.
TNeverDestroyed<std::shared_mutex> registryMutex;

std::atomic<bool> hasOpenCameras{false};
std::atomic<bool> isForkedChild{false};

// The parent's threads do not exist in a child, and its locks may stay locked.
void AfterForkInChild()
{
  if (!hasOpenCameras) return;
  isForkedChild = true;
  ForgetCoreHandles();
}

[[maybe_unused]] const int forkHandler = pthread_atfork(nullptr, nullptr, AfterForkInChild);

// Called with registryMutex locked.
TCamera* Find(long handle)
{
  const auto entry = HandleToCameraMap.object.find(handle);
  return entry == HandleToCameraMap.object.end() ? &InvalidCamera : &entry->second;
}

} // namespace

TCamera* getCameraFromHandle(long handle)
{
  if (IsForkedChild()) return &InvalidCamera;
  const std::shared_lock lock(registryMutex.object);
  return Find(handle);
}
VXMCD_PLAIN_NAME(getCameraFromHandle, _Z19getCameraFromHandlel);

TCamera* GetCurrentCamera()
{
  return getCameraFromHandle(CurrentCameraHandle());
}

void SelectCamera(long handle)
{
  if (!IsForkedChild()) PublishCurrentCamera(handle);
}

bool IsCameraOpen(long handle)
{
  return getCameraFromHandle(handle) != &InvalidCamera;
}

void RegisterCamera(long handle, const TCamera& camera)
{
  const std::unique_lock lock(registryMutex.object);
  HandleToCameraMap.object.insert_or_assign(handle, camera);
  hasOpenCameras = true;
  PublishCoreHandle(handle, static_cast<int>(camera.cameraHandle));
}

void UnregisterCamera(long handle)
{
  const std::unique_lock lock(registryMutex.object);
  HandleToCameraMap.object.erase(handle);
  hasOpenCameras = !HandleToCameraMap.object.empty();
  PublishCoreHandle(handle, kNoCoreHandle);
}

TCamera* EnterCamera(long handle, TVxmcdAcquisitionManager*& manager)
{
  if (IsForkedChild()) return nullptr;
  const std::shared_lock lock(registryMutex.object);
  TCamera* const camera = Find(handle);
  if (!camera->acquisitionManager) return nullptr;
  manager = camera->acquisitionManager;
  manager->Uses().Enter();
  return camera;
}

TVxmcdAcquisitionManager* CloseCameraToNewUses(TCamera& camera)
{
  const std::unique_lock lock(registryMutex.object);
  return std::exchange(camera.acquisitionManager, nullptr);
}

bool IsForkedChild()
{
  return isForkedChild;
}
