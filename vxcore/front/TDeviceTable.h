// SPDX-License-Identifier: MIT
// The library's state: initialisations, backends, open devices and their handles.
#pragma once

#include "vxcore/backend/IDeviceBackend.h"
#include "vxcore/simulated/camera/TSimulatedBackend.h"
#include "vxcore/simulated/camera/TSimulatedCamera.h"

#include <array>
#include <atomic>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

namespace vxsim {

/// Initialisation count, backends and open devices. One for the whole library, see Instance(); never destroyed, so
/// that calls from threads that outlive main() stay harmless. Thread-safe.
///
/// Each device index has a slot, never destroyed, with the device's lock. A call locks the slot, compares
/// the handle and works on the device under the lock: one uncontended lock a call. The table's own lock serialises
/// opening, closing and configuring, and is always taken before a slot's.
class TDeviceTable final
{
public:
  static constexpr int kMaxDevices = 64;

  static TDeviceTable& Instance();

  int Initialise();
  int Finalise();
  int InitialiseCount();
  int OpenCount();
  /// "DeviceCount".
  int DeviceCount(int& count);

  int Open(int index, int& handle);
  int Close(int handle);

  /// Takes the buffers back, also from a device that does not answer.
  int Flush(int handle);

  /// Forgets everything: see VXSIM_Reset(). With @p text the configuration comes from it, else from the
  /// environment.
  void Reset(std::optional<std::string> text);

  /// Runs @p body(lock, device) on the device of a handle, under its lock.
  template <typename Body>
  int WithHandle(int handle, Body&& body)
  {
    TSlot& slot = slots_[static_cast<unsigned>(handle) % kMaxDevices];
    TDeviceLock lock = LockDevice(slot.mutex);
    if (slot.handle != handle || handle <= VX_HANDLE_SYSTEM) [[unlikely]] {
      return NoSuchHandle();
    }
    if (const int code = slot.device->CheckPresent(); code != VX_SUCCESS) [[unlikely]] {
      return code;
    }
    return body(lock, *slot.device);
  }

  /// Runs @p body(lock, status, camera) on a simulated device, whether it is open (camera) or not (null).
  template <typename Body>
  int WithSimulated(int index, Body&& body)
  {
    std::shared_ptr<TSimulatedBackend> backend;
    if (const int code = FindSimulated(index, backend); code != VX_SUCCESS) return code;
    TSlot& slot = slots_[static_cast<size_t>(index)];
    TDeviceLock lock(slot.mutex);
    return body(lock, backend->Status(index), dynamic_cast<TSimulatedCamera*>(slot.device.get()));
  }

  static int DeviceOfHandle(int handle);

private:
  struct TSlot
  {
    std::mutex mutex;
    int handle = VX_HANDLE_NONE;
    std::unique_ptr<IDevice> device;
  };

  TDeviceTable() = default;
  static TDeviceLock LockDevice(std::mutex& mutex)
  {
    TDeviceLock lock(mutex, std::try_to_lock);
    if (!lock) [[unlikely]] {
      LockBusyDevice(lock);
    }
    return lock;
  }
  static void LockBusyDevice(TDeviceLock& lock);
  int NoSuchHandle() const;
  int LoadBackends(std::string& error);
  int FindSimulated(int index, std::shared_ptr<TSimulatedBackend>& backend);
  int CloseSlot(int index, int handle);
  void CloseAll();

  std::array<TSlot, kMaxDevices> slots_;
  std::atomic<int> initialiseCount_{0};

  std::mutex mutex_; // guards what follows
  std::optional<std::string> configurationText_;
  std::vector<std::shared_ptr<IDeviceBackend>> backends_;
  std::shared_ptr<TSimulatedBackend> simulated_; ///< the one of the backends that the control functions address
  int generation_ = 1;
};

/// The message of the last rejected configuration or rule on this thread.
std::string& LastErrorText();

} // namespace vxsim
