// SPDX-License-Identifier: MIT
// The library's state: initialisations, backends, open devices and their handles.
#include "vxcore/front/TDeviceTable.h"

#include "vxcore/front/TCallLog.h"
#include "vxcore/front/TFaultPlan.h"
#include "vxcore/front/TFaultyDevice.h"

#include <algorithm>
#include <climits>
#include <cstdio>
#include <cstdlib>

namespace vxcore {

namespace {

constexpr const char* kConfigurationVariable = "VXCORE_CONFIG";
constexpr int kLockAttempts = 100;
constexpr int kMaxGeneration = INT_MAX / TDeviceTable::kMaxDevices - 1;

/// Leaves the core to its other thread for some tens of cycles.
void Pause()
{
#if defined(__x86_64__)
  __builtin_ia32_pause();
#elif defined(__aarch64__)
  asm volatile("yield");
#endif
}

bool LoadTable(const std::optional<std::string>& text, TBackendTable& table, std::string& error)
{
  if (!table.Load(text, error)) return false;
  if (const int count = table.DeviceCount(); count > TDeviceTable::kMaxDevices) {
    error = "there are " + std::to_string(count) + " cameras, and room for " +
            std::to_string(TDeviceTable::kMaxDevices);
    return false;
  }
  TFaultRule rule;
  return std::ranges::all_of(table.FaultRules(),
                             [&](const std::string& line) { return TFaultRule::Parse(line, rule, error); });
}

} // namespace

std::string& LastErrorText()
{
  thread_local std::string text;
  return text;
}

TDeviceTable& TDeviceTable::Instance()
{
  static auto& table = *new TDeviceTable;
  return table;
}

/// Most calls keep the lock for less time than it takes to sleep and to be woken, so this tries for a moment first.
void TDeviceTable::LockBusyDevice(TDeviceLock& lock)
{
  for (int attempt = 0; attempt < kLockAttempts; ++attempt) {
    Pause();
    if (lock.try_lock()) return;
  }
  lock.lock();
}

int TDeviceTable::Initialise()
{
  const std::lock_guard lock(mutex_);
  std::string error;
  if (const int code = LoadBackends(error); code != VX_SUCCESS) {
    LastErrorText() = error;
    std::fprintf(stderr, "libvxcore: %s\n", error.c_str());
    return code;
  }
  if (initialiseCount_ == INT_MAX) return VX_ERR_OUT_OF_RANGE;
  ++initialiseCount_;
  return VX_SUCCESS;
}

int TDeviceTable::Finalise()
{
  const std::lock_guard lock(mutex_);
  if (initialiseCount_ == 0) return VX_ERR_NOT_INITIALISED;
  if (--initialiseCount_ == 0) CloseAll();
  return VX_SUCCESS;
}

int TDeviceTable::InitialiseCount()
{
  return initialiseCount_;
}

int TDeviceTable::OpenCount()
{
  int count = 0;
  for (TSlot& slot : slots_) {
    const std::lock_guard lock(slot.mutex);
    if (slot.device) ++count;
  }
  return count;
}

int TDeviceTable::DeviceCount(int& count)
{
  const std::lock_guard lock(mutex_);
  if (initialiseCount_ == 0) return VX_ERR_NOT_INITIALISED;
  count = std::min(backends_->DeviceCount(), kMaxDevices);
  return VX_SUCCESS;
}

int TDeviceTable::Open(int index, int& handle)
{
  TBackendTable::TPlace place;
  std::shared_ptr<TBackendTable> backends; // a reset meanwhile leaves them alive
  unsigned int closings = 0;
  {
    const std::lock_guard lock(mutex_);
    if (initialiseCount_ == 0) return VX_ERR_NOT_INITIALISED;
    if (index >= kMaxDevices || !backends_->Find(index, place)) return VX_ERR_NO_SUCH_DEVICE;
    backends = backends_;
    closings = closings_;
  }
  // Without the table's lock, since a device that does not answer takes seconds.
  TSlot& slot = slots_[static_cast<size_t>(index)];
  const std::lock_guard opening(slot.openingMutex);
  const std::lock_guard lock(slot.mutex);
  if (closings_ != closings) return VX_ERR_NOT_INITIALISED;
  if (slot.device) return VX_ERR_DEVICE_IN_USE;
  slot.faults = std::make_unique<TDeviceFaults>(index);
  std::unique_ptr<IDevice> device;
  const int code = place.backend->Open(place.index, {slot.mutex, *slot.faults}, device);
  if (code != VX_SUCCESS) return code;
  slot.device = device->AppliesFrameFaults() ? std::move(device)
                                             : std::make_unique<TFaultyDevice>(std::move(device), *slot.faults);
  slot.generation = slot.generation >= kMaxGeneration ? 1 : slot.generation + 1;
  slot.handle = slot.generation * kMaxDevices + index; // a handle of an earlier opening never fits again
  handle = slot.handle;
  return VX_SUCCESS;
}

int TDeviceTable::Close(int handle)
{
  const int index = DeviceOfHandle(handle);
  if (index < 0) return NoSuchHandle();
  TSlot& slot = slots_[static_cast<size_t>(index)];
  const std::lock_guard closing(slot.openingMutex);
  return CloseSlot(slot, handle);
}

int TDeviceTable::Flush(int handle)
{
  TSlot& slot = slots_[static_cast<unsigned>(handle) % kMaxDevices];
  TDeviceLock lock(slot.mutex);
  if (slot.handle != handle || handle <= VX_HANDLE_SYSTEM) return NoSuchHandle();
  slot.device->Flush(lock);
  return slot.device->CheckPresent();
}

void TDeviceTable::Reset()
{
  Forget(std::nullopt);
}

bool TDeviceTable::Configure(const std::string& text, std::string& error)
{
  TBackendTable trial;
  if (!LoadTable(text, trial, error)) return false;
  Forget(text);
  return true;
}

void TDeviceTable::Forget(std::optional<std::string> text)
{
  const std::lock_guard lock(mutex_);
  CloseAll();
  initialiseCount_ = 0;
  backends_.reset();
  configurationText_ = std::move(text);
  TFaultPlan::Instance().Clear();
  TCallLog::Instance().Stop();
  TCallLog::Instance().Clear();
}

int TDeviceTable::DeviceOfHandle(int handle)
{
  return handle < kMaxDevices ? -1 : handle % kMaxDevices;
}

int TDeviceTable::NoSuchHandle() const
{
  return initialiseCount_ == 0 ? VX_ERR_NOT_INITIALISED : VX_ERR_INVALID_HANDLE;
}

/// Reads the configuration and makes the backends, unless that was done. Called with the table locked.
int TDeviceTable::LoadBackends(std::string& error)
{
  if (backends_) return VX_SUCCESS;
  std::optional<std::string> text = configurationText_;
  // A privileged process reads no file of its caller's choice: error messages repeat what is in it.
  const char* path = secure_getenv(kConfigurationVariable); // NOLINT(concurrency-mt-unsafe): nothing here sets it
  const bool isFile = !text && path && *path;
  const bool isOfEnvironment = !text;
  auto backends = std::make_shared<TBackendTable>();
  const auto refuse = [&error, isFile, path] {
    if (isFile) error = std::string(path) + ": " + error;
    return VX_ERR_CONFIGURATION;
  };
  if (isFile && !ReadConfigurationFile(path, text.emplace(), error)) return refuse();
  if (isOfEnvironment && !ReadShortForm(text, error)) return VX_ERR_CONFIGURATION;
  if (!LoadTable(text, *backends, error)) return refuse();
  for (const std::string& rule : backends->FaultRules()) TFaultPlan::Instance().Add(rule, error);
  backends_ = std::move(backends);
  return VX_SUCCESS;
}

int TDeviceTable::FindDevice(int device, std::shared_ptr<TBackendTable>& backends, TBackendTable::TPlace& place)
{
  const std::lock_guard lock(mutex_);
  std::string error;
  if (const int code = LoadBackends(error); code != VX_SUCCESS) {
    LastErrorText() = error;
    return code;
  }
  if (device >= kMaxDevices || !backends_->Find(device, place)) return VX_ERR_NO_SUCH_DEVICE;
  backends = backends_;
  return VX_SUCCESS;
}

/// Closes the device of a slot if it has this handle. Called with the slot's opening locked.
int TDeviceTable::CloseSlot(TSlot& slot, int handle)
{
  std::unique_ptr<IDevice> device;
  int code = VX_SUCCESS;
  {
    TDeviceLock lock(slot.mutex);
    if (slot.handle != handle) return NoSuchHandle();
    slot.handle = VX_HANDLE_NONE; // calls that come now find nothing
    slot.device->Close(lock);
    code = slot.device->CheckPresent();
    device = std::move(slot.device);
  }
  device.reset(); // may join the device's thread, which needs the lock
  return code;
}

/// Called with the table locked, so that no opening begins. One under way either has its device closed here or sees that
/// all were closed. A closing under way is waited for: its device may need the backend, which a reset destroys next.
void TDeviceTable::CloseAll()
{
  ++closings_;
  for (TSlot& slot : slots_) {
    const std::lock_guard closing(slot.openingMutex);
    int handle = VX_HANDLE_NONE;
    {
      const std::lock_guard lock(slot.mutex);
      handle = slot.handle;
    }
    if (handle != VX_HANDLE_NONE) CloseSlot(slot, handle);
  }
}

} // namespace vxcore
