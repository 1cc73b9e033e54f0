// SPDX-License-Identifier: MIT
// The fault plan round a device that makes real frames.
#pragma once

#include "vxcore/backend/IDevice.h"
#include "vxcore/backend/IFrameFaults.h"
#include "vxcore/backend/TPlug.h"

#include <chrono>
#include <memory>
#include <vector>

namespace vxcore {

/// Applies the `frame`, `chunk` and `camera` rules of the fault plan to what a device delivers; the device table
/// puts it round every device that does not apply them itself. Frames are counted as they are delivered. What only
/// the maker of a frame can do, `swap`, `late` and `stall`, has no effect here. Owns the device; locking as
/// IDevice says. Without a rule a call is passed on as it is.
class TFaultyDevice final : public IDevice
{
public:
  TFaultyDevice(std::unique_ptr<IDevice> device, IFrameFaults& faults)
      : device_(std::move(device)), faults_(faults)
  {
  }

  int CheckPresent() override;
  IFeature* Find(std::wstring_view name) override { return device_->Find(name); }
  int QueueBuffer(TDeviceLock& lock, unsigned char* buffer, int sizeBytes) override
  {
    return device_->QueueBuffer(lock, buffer, sizeBytes);
  }
  int WaitBuffer(TDeviceLock& lock, unsigned char** buffer, int* sizeBytes, unsigned int timeoutMs) override;
  void Flush(TDeviceLock& lock) override;
  void Close(TDeviceLock& lock) override;

private:
  using TClock = std::chrono::steady_clock;
  struct TFrame
  {
    unsigned char* bytes = nullptr;
    int sizeBytes = 0;
  };

  bool Unplug(TDeviceLock& lock, const std::vector<TPlannedFault>& faults);
  bool HasMetadata();
  bool Apply(TDeviceLock& lock, const std::vector<TPlannedFault>& faults, TFrame& frame);

  const std::unique_ptr<IDevice> device_;
  IFrameFaults& faults_;

  // Guarded by the device's lock.
  TPlug plug_;
  TFrame lastDelivered_;
  std::vector<unsigned char> foreignBuffer_;
};

} // namespace vxcore
