// SPDX-License-Identifier: MIT
// Which camera is current, and which device of the feature library that is.
#include "features/current_core_handle.h"

#include "utility/TMutex.h"
#include "utility/TNeverDestroyed.h"

#include <atomic>
#include <cstdint>
#include <map>

long gblVxmcdCameraHandle = kFirstCameraHandle;

namespace {

/// The current camera and its device, replaced as one. Handles are the feature library's int plus 101. Aligned
/// to its size, so that clang, too, reads it in one instruction.
struct alignas(std::int64_t) TCurrent
{
  std::int32_t handle;
  std::int32_t coreHandle;
};
static_assert(std::atomic<TCurrent>::is_always_lock_free);

std::atomic<TCurrent> current{{kFirstCameraHandle, kNoCoreHandle}};
std::atomic<bool> isForgotten{false};
constinit thread_local long cameraOfThread = kNoCameraOfThread;

struct TOpenDevices
{
  TSharedMutex mutex;
  std::map<long, int> coreHandles GUARDED_BY(mutex); // by camera handle
};
TNeverDestroyed<TOpenDevices> openDevices;

long CurrentHandleOfProcess() noexcept
{
  return __atomic_load_n(&gblVxmcdCameraHandle, __ATOMIC_ACQUIRE);
}

int Find(long handle) REQUIRES_SHARED(openDevices.object.mutex)
{
  const auto entry = openDevices.object.coreHandles.find(handle);
  return entry == openDevices.object.coreHandles.end() ? kNoCoreHandle : entry->second;
}

void PublishPair() REQUIRES(openDevices.object.mutex)
{
  const long handle = CurrentHandleOfProcess();
  const bool isInRange = handle == static_cast<std::int32_t>(handle);
  current = isInRange ? TCurrent{static_cast<std::int32_t>(handle), Find(handle)} : TCurrent{0, kNoCoreHandle};
}

} // namespace

long CurrentCameraHandle() noexcept
{
  return cameraOfThread != kNoCameraOfThread ? cameraOfThread : CurrentHandleOfProcess();
}

long CameraOfThread() noexcept
{
  return cameraOfThread;
}

void SetCameraOfThread(long handle) noexcept
{
  cameraOfThread = handle;
}

int CurrentCoreHandle() noexcept
{
  if (isForgotten) return kNoCoreHandle;
  const long handle = CurrentCameraHandle();
  const TCurrent pair = current;
  if (pair.handle == handle) return pair.coreHandle;
  const TSharedLock lock(openDevices.object.mutex);
  return Find(handle);
}

void PublishCurrentCamera(long handle)
{
  const TLock lock(openDevices.object.mutex);
  __atomic_store_n(&gblVxmcdCameraHandle, handle, __ATOMIC_RELEASE);
  PublishPair();
}

void PublishCoreHandle(long handle, int coreHandle)
{
  const TLock lock(openDevices.object.mutex);
  if (coreHandle == kNoCoreHandle)
    openDevices.object.coreHandles.erase(handle);
  else
    openDevices.object.coreHandles.insert_or_assign(handle, coreHandle);
  PublishPair();
}

void ForgetCoreHandles() noexcept
{
  isForgotten = true;
}
