// SPDX-License-Identifier: MIT
// An open camera, as the exported functions see it.
#pragma once

#include "vxcore/backend/IFeature.h"

namespace vxcore {

/// An open device: its features and its frame buffers.
/// Owned by the device table, which also owns the device's lock (given to IDeviceBackend::Open). Every operation
/// is called with that lock locked, so an implementation needs no lock; the ones that get the lock may release it
/// while they wait. The destructor runs without the lock, after Close(). Operations answer `VX_` codes
/// and write outputs only on success.
class IDevice
{
public:
  virtual ~IDevice() = default;

  /// #VX_SUCCESS, or what every call on the device answers now (#VX_ERR_COMMUNICATION when it is unplugged).
  virtual int CheckPresent() = 0;
  /// The feature of that name, or null when the device has none.
  virtual IFeature* Find(std::wstring_view name) = 0;

  /// The buffer is not null and aligned; its size is still to be checked.
  virtual int QueueBuffer(TDeviceLock& lock, unsigned char* buffer, int sizeBytes) = 0;
  /// Blocks up to the time-out, the lock released meanwhile. Also called on a device that does not answer, and says so.
  virtual int WaitBuffer(TDeviceLock& lock, unsigned char** buffer, int* sizeBytes, unsigned int timeoutMs) = 0;
  /// Returns every buffer to the caller. When it returns no buffer is touched any more.
  virtual void Flush(TDeviceLock& lock) = 0;
  /// Ends an acquisition, returns every buffer to the caller and makes blocked WaitBuffer() calls return.
  virtual void Close(TDeviceLock& lock) = 0;

  /// The device asks for the faults of its frames itself, when they are exposed (TDeviceContext::faults). Only then
  /// WaitBuffer() may return a frame with the lock released.
  virtual bool AppliesFrameFaults() const { return false; }
};

} // namespace vxcore
