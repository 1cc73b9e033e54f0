// SPDX-License-Identifier: MIT
// The library's state: initialisations, backends, open devices and their handles.
#pragma once

#include "vxcore/backend/IDeviceBackend.h"
#include "vxcore/backend/TBackendTable.h"

#include <array>
#include <atomic>
#include <memory>
#include <mutex>
#include <optional>
#include <string>

namespace vxcore {

/// Initialisation count, backends and open devices. One for the whole library, see Instance(); never destroyed, so
/// that calls from threads that outlive main() stay harmless. Thread-safe.
///
/// Each device index has a slot, never destroyed, with the device's lock. A call locks the slot, compares
/// the handle and works on the device under the lock: one uncontended lock a call. A second lock of the slot serialises
/// opening and closing its device, which may take seconds while other devices are used, opened and closed. The table's
/// own lock is for looking up and configuring. Order: table, opening, device.
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

  /// Forgets everything: see VXSIM_Reset(). The configuration then comes from the environment.
  void Reset();
  /// The same, and the configuration comes from @p text. False, with a message and nothing changed, when it has an
  /// error.
  bool Configure(const std::string& text, std::string& error);

  /// Runs @p body(lock, device) on the device of a handle, under its lock, whether the device answers or not.
  template <typename Body>
  int WithOpenDevice(int handle, Body&& body)
  {
    TSlot& slot = slots_[static_cast<unsigned>(handle) % kMaxDevices];
    TDeviceLock lock = LockDevice(slot.mutex);
    if (slot.handle != handle || handle <= VX_HANDLE_SYSTEM) [[unlikely]] {
      return NoSuchHandle();
    }
    return body(lock, *slot.device);
  }
  /// The same for a device that answers.
  template <typename Body>
  int WithHandle(int handle, Body&& body)
  {
    return WithOpenDevice(handle, [&body](TDeviceLock& lock, IDevice& device) {
      const int code = device.CheckPresent();
      return code == VX_SUCCESS ? body(lock, device) : code;
    });
  }

  /// Runs @p body(lock, place) for a device by its index, open or not, under its lock. Reads the configuration unless
  /// that was done.
  template <typename Body>
  int WithDevice(int device, Body&& body)
  {
    TBackendTable::TPlace place;
    std::shared_ptr<TBackendTable> backends; // a reset meanwhile leaves them alive
    if (const int code = FindDevice(device, backends, place); code != VX_SUCCESS) return code;
    TDeviceLock lock(slots_[static_cast<size_t>(device)].mutex);
    return body(lock, place);
  }

  static int DeviceOfHandle(int handle);

private:
  struct TSlot
  {
    std::mutex openingMutex; ///< one opening or closing at a time, with what is done without the device's lock
    std::mutex mutex;        ///< the device's lock, which guards what follows
    int handle = VX_HANDLE_NONE;
    int generation = 1;
    std::unique_ptr<IFrameFaults> faults; ///< of the device, which uses it until it is destroyed
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
  int FindDevice(int device, std::shared_ptr<TBackendTable>& backends, TBackendTable::TPlace& place);
  void Forget(std::optional<std::string> text);
  int CloseSlot(TSlot& slot, int handle);
  void CloseAll();

  std::array<TSlot, kMaxDevices> slots_;
  std::atomic<int> initialiseCount_{0};
  std::atomic<unsigned int> closings_{0}; ///< of all devices at once: openings that began before one fail

  std::mutex mutex_; // guards what follows
  std::optional<std::string> configurationText_;
  std::shared_ptr<TBackendTable> backends_; ///< null until the configuration is read
};

/// The message of the last rejected configuration or rule on this thread.
std::string& LastErrorText();

} // namespace vxcore
