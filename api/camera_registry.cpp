// SPDX-License-Identifier: MIT
// Which cameras are open, and which of them calls without a handle act on.
#include "api/camera_registry.h"

#include "acquisition/TVxmcdAcquisitionManager.h"
#include "api/exports.h"
#include "features/current_core_handle.h"
#include "utility/TQuorinCriticalSection.h"

#include <atomic>
#include <mutex>
#include <pthread.h>
#include <shared_mutex>
#include <utility>

long gblVxmcdCameraHandle = kFirstCameraHandle;
TNeverDestroyed<std::map<long, TCamera>> HandleToCameraMap;
constinit TCamera InvalidCamera{.cameraHandle = TCamera::kNoCamera};
TNeverDestroyed<QuorinUtility::TQuorinCriticalSection> currentCameraShutdownMutex;

namespace {

// Guards the map, and the current handle together with the core handle that is published for it. A look-up by one
// thread may meet the opening of another camera by a second one.
TNeverDestroyed<std::shared_mutex> registryMutex;

std::atomic<bool> hasOpenCameras{false};
std::atomic<bool> isForkedChild{false};

// The parent's threads and locks are not there in a child.
void AfterForkInChild()
{
  if (!hasOpenCameras) return;
  isForkedChild = true;
  PublishCurrentCoreHandle(kNoCoreHandle);
}

[[maybe_unused]] const int forkHandler = pthread_atfork(nullptr, nullptr, AfterForkInChild);

// Callers hold registryMutex.
TCamera* Find(long handle)
{
  const auto entry = HandleToCameraMap.object.find(handle);
  return entry == HandleToCameraMap.object.end() ? &InvalidCamera : &entry->second;
}

void PublishCurrent()
{
  PublishCurrentCoreHandle(static_cast<int>(Find(CurrentCameraHandle())->cameraHandle));
  hasOpenCameras = !HandleToCameraMap.object.empty();
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

long CurrentCameraHandle()
{
  return __atomic_load_n(&gblVxmcdCameraHandle, __ATOMIC_ACQUIRE);
}

void SelectCamera(long handle)
{
  if (IsForkedChild()) return;
  const std::unique_lock lock(registryMutex.object);
  __atomic_store_n(&gblVxmcdCameraHandle, handle, __ATOMIC_RELEASE);
  PublishCurrent();
}

bool IsCurrentCameraOpen()
{
  return CurrentCoreHandle() != kNoCoreHandle;
}

void RegisterCurrentCamera(const TCamera& camera)
{
  const std::unique_lock lock(registryMutex.object);
  HandleToCameraMap.object.insert_or_assign(CurrentCameraHandle(), camera);
  PublishCurrent();
}

void UnregisterCurrentCamera()
{
  const std::unique_lock lock(registryMutex.object);
  HandleToCameraMap.object.erase(CurrentCameraHandle());
  PublishCurrent();
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
