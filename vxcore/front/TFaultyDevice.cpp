// SPDX-License-Identifier: MIT
// The fault plan round a device that makes real frames.
#include "vxcore/front/TFaultyDevice.h"

#include <algorithm>

namespace vxcore {

namespace {

constexpr int kMetadataBytes = 24; ///< an empty chunk, and the timestamp with its identifier and length

} // namespace

int TFaultyDevice::CheckPresent()
{
  return plug_.IsIn() ? device_->CheckPresent() : VX_ERR_COMMUNICATION;
}

int TFaultyDevice::WaitBuffer(TDeviceLock& lock, unsigned char** buffer, int* sizeBytes, unsigned int timeoutMs)
{
  if (!plug_.IsIn()) return VX_ERR_COMMUNICATION;
  const auto begin = TClock::now();
  while (true) {
    TFrame frame;
    // After a lost frame, the wait continues for the rest of the time.
    unsigned int left = timeoutMs;
    if (timeoutMs != VX_INFINITE) {
      const auto passed = std::chrono::duration_cast<std::chrono::milliseconds>(TClock::now() - begin).count();
      left = passed < timeoutMs ? timeoutMs - static_cast<unsigned int>(passed) : 0;
    }
    const int code = device_->WaitBuffer(lock, &frame.bytes, &frame.sizeBytes, left);
    if (code != VX_SUCCESS) return code;
    if (!faults_.IsEmpty()) {
      if (Unplug(lock, faults_.OnCamera())) return VX_ERR_COMMUNICATION;
      std::vector<TPlannedFault> faults = faults_.OnFrame();
      if (HasMetadata()) std::ranges::copy(faults_.OnMetadata(), std::back_inserter(faults));
      if (!Apply(lock, faults, frame)) continue;
    }
    if (frame.bytes) lastDelivered_ = frame;
    *buffer = frame.bytes;
    *sizeBytes = frame.sizeBytes;
    return VX_SUCCESS;
  }
}

void TFaultyDevice::Flush(TDeviceLock& lock)
{
  device_->Flush(lock);
  lastDelivered_ = {};
}

void TFaultyDevice::Close(TDeviceLock& lock)
{
  device_->Close(lock);
}

/// Ends the run of a camera that a rule unplugs.
bool TFaultyDevice::Unplug(TDeviceLock& lock, const std::vector<TPlannedFault>& faults)
{
  for (const TPlannedFault& fault : faults) {
    if (fault.kind == EPlannedFault::Stall) continue;
    plug_.Pull(fault);
    if (IFeature* stop = device_->Find(L"AcquisitionStop")) stop->Execute(lock);
    return true;
  }
  return false;
}

bool TFaultyDevice::HasMetadata()
{
  bool enabled = false;
  const IFeature* feature = device_->Find(L"MetadataEnable");
  return feature && feature->GetBool(enabled) == VX_SUCCESS && enabled;
}

/// Changes a frame as planned. False: it is lost. The buffer of a frame that is not delivered is requeued with the
/// device.
bool TFaultyDevice::Apply(TDeviceLock& lock, const std::vector<TPlannedFault>& faults, TFrame& frame)
{
  const TFrame whole = frame;
  for (const TPlannedFault& fault : faults) {
    switch (fault.kind) {
    case EPlannedFault::Drop:
      device_->QueueBuffer(lock, whole.bytes, whole.sizeBytes);
      return false;
    case EPlannedFault::Null:
    case EPlannedFault::Repeat:
      device_->QueueBuffer(lock, whole.bytes, whole.sizeBytes);
      frame = fault.kind == EPlannedFault::Null ? TFrame{} : lastDelivered_;
      return true;
    case EPlannedFault::Foreign:
      foreignBuffer_.assign(whole.bytes, whole.bytes + whole.sizeBytes);
      device_->QueueBuffer(lock, whole.bytes, whole.sizeBytes);
      frame.bytes = foreignBuffer_.data();
      break;
    default:
      ApplyToDelivered(fault, frame.bytes, whole.sizeBytes, kMetadataBytes, frame.sizeBytes);
      break;
    }
  }
  return true;
}

} // namespace vxcore
