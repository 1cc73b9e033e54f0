// SPDX-License-Identifier: MIT
// The open cameras, and the one that calls without a handle act on.
#include "api/camera_registry.h"

#include "acquisition/TVxmcdAcquisitionManager.h"
#include "api/entry_points.h"
#include "utility/TCallNotes.h"
#include "utility/TMutex.h"
#include "utility/TQuorinCriticalSection.h"

#include <atomic>
#include <pthread.h>
#include <utility>

TNeverDestroyed<std::map<long, TCamera>> HandleToCameraMap;
constinit TCamera InvalidCamera{.cameraHandle = TCamera::kNoCamera};
TNeverDestroyed<QuorinUtility::TQuorinCriticalSection> currentCameraShutdownMutex;

namespace {

// Guards the map: one thread may look a camera up while another thread opens one. The map is exported and so cannot be
// declared with its lock, which is not.
TNeverDestroyed<TSharedMutex> registryMutex;

// By handle; one that was made stays, since a thread may wait for it while another closes the camera.
TNeverDestroyed<std::map<long, QuorinUtility::TQuorinCriticalSection>> closingLocks;

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

TCamera* Find(long handle) REQUIRES_SHARED(registryMutex.object)
{
  const auto entry = HandleToCameraMap.object.find(handle);
  return entry == HandleToCameraMap.object.end() ? &InvalidCamera : &entry->second;
}

} // namespace

TCamera* EntryPoint::getCameraFromHandle(long handle)
{
  if (IsForkedChild()) return &InvalidCamera;
  const TSharedLock lock(registryMutex.object);
  return Find(handle);
}

TCamera* GetCurrentCamera()
{
  return EntryPoint::getCameraFromHandle(CurrentCameraHandle());
}

void SelectCamera(long handle)
{
  if (CameraOfThread() != kNoCameraOfThread)
    SetCameraOfThread(handle);
  else if (!IsForkedChild())
    PublishCurrentCamera(handle);
}

bool IsCameraOpen(long handle)
{
  return EntryPoint::getCameraFromHandle(handle) != &InvalidCamera;
}

void RegisterCamera(long handle, const TCamera& camera)
{
  const TLock lock(registryMutex.object);
  closingLocks.object.try_emplace(handle);
  HandleToCameraMap.object.insert_or_assign(handle, camera);
  hasOpenCameras = true;
  PublishCoreHandle(handle, static_cast<int>(camera.cameraHandle));
}

void UnregisterCamera(long handle)
{
  const TLock lock(registryMutex.object);
  HandleToCameraMap.object.erase(handle);
  hasOpenCameras = !HandleToCameraMap.object.empty();
  PublishCoreHandle(handle, kNoCoreHandle);
}

TCamera* EnterCamera(long handle, TVxmcdAcquisitionManager*& manager)
{
  if (IsForkedChild()) {
    TCallNotes::AddFailure("the cameras belong to the process that this one was forked from");
    return nullptr;
  }
  const TSharedLock lock(registryMutex.object);
  TCamera* const camera = Find(handle);
  if (!camera->acquisitionManager) {
    TCallNotes::AddFailure("no camera is open under handle %ld", handle);
    return nullptr;
  }
  manager = camera->acquisitionManager;
  manager->Uses().Enter();
  return camera;
}

QuorinUtility::TQuorinCriticalSection* ClosingLock(long handle)
{
  const TSharedLock lock(registryMutex.object);
  const auto entry = closingLocks.object.find(handle);
  return entry == closingLocks.object.end() ? nullptr : &entry->second;
}

std::optional<long> FindOtherRun(const TCamera& camera)
{
  const TSharedLock lock(registryMutex.object);
  for (const auto& [handle, other] : HandleToCameraMap.object)
    if (&other != &camera && other.acquisitionManager && other.acquisitionManager->IsRunOfCurrentCamera())
      return handle;
  return std::nullopt;
}

TVxmcdAcquisitionManager* CloseCameraToNewUses(TCamera& camera)
{
  const TLock lock(registryMutex.object);
  return std::exchange(camera.acquisitionManager, nullptr);
}

bool IsForkedChild()
{
  return isForkedChild;
}
