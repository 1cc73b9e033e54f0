// SPDX-License-Identifier: MIT
// Planned faults of the frames of a simulated sensor.
#include "vxcore/simulated/TSensorFaults.h"

#include "vxcore/simulated/imaging/TMetadataWriter.h"

#include <algorithm>
#include <iterator>

namespace vxsim {

using vxcore::EPlannedFault;
using vxcore::TPlannedFault;

namespace {

constexpr auto kTailBytes = static_cast<int>(TMetadataWriter::TailBytes());

bool Has(const std::vector<TPlannedFault>& faults, EPlannedFault kind)
{
  return std::ranges::any_of(faults, [kind](const TPlannedFault& fault) { return fault.kind == kind; });
}

} // namespace

TSensorFaults::EOutcome TSensorFaults::Apply(TExposedFrame& frame, bool hasMetadata, TDeviceStatus& status,
                                             int64_t& delayNs)
{
  for (const TPlannedFault& fault : plan_.OnCamera()) {
    if (fault.kind == EPlannedFault::Stall) {
      delayedUntil_ = TClock::now() + std::chrono::nanoseconds(fault.durationNs);
      delayNs += fault.durationNs;
      continue;
    }
    status.plug.Pull(fault);
    return EOutcome::Unplugged;
  }
  frame.faults = plan_.OnFrame();
  for (const TPlannedFault& fault : frame.faults) {
    if (fault.kind == EPlannedFault::Late)
      delayedUntil_ = TClock::now() + std::chrono::nanoseconds(fault.durationNs);
  }
  if (Has(frame.faults, EPlannedFault::Drop)) return EOutcome::Lost;
  if (hasMetadata) std::ranges::copy(plan_.OnMetadata(), std::back_inserter(frame.faults));
  return EOutcome::Exposed;
}

bool TSensorFaults::Place(const TExposedFrame& frame, int frameBytes, int64_t imageSizeBytes,
                          TFrameBuffers& buffers, TAnswer& answer)
{
  const bool repeats = Has(frame.faults, EPlannedFault::Repeat);
  answer = repeats ? buffers.LastDelivered() : TAnswer{nullptr, frameBytes, VX_SUCCESS, false};
  answer.isQueued = false;
  if (repeats || Has(frame.faults, EPlannedFault::Null)) return false;
  for (const TPlannedFault& fault : frame.faults) {
    if (fault.kind == EPlannedFault::Swap) buffers.SwapFirstWith(fault.number);
  }
  if (Has(frame.faults, EPlannedFault::Foreign)) {
    foreignBuffer_.resize(static_cast<size_t>(std::max<int64_t>(frameBytes, imageSizeBytes)));
    answer.bytes = foreignBuffer_.data();
  } else {
    const TFrameBuffers::TBuffer buffer = buffers.TakeQueued();
    answer.bytes = buffer.bytes;
    answer.sizeBytes = std::min(frameBytes, buffer.sizeBytes);
    answer.isQueued = true;
  }
  return true;
}

void TSensorFaults::Damage(const TExposedFrame& frame, TAnswer& answer)
{
  const int wholeBytes = answer.sizeBytes;
  for (const TPlannedFault& fault : frame.faults)
    ApplyToDelivered(fault, answer.bytes, wholeBytes, kTailBytes, answer.sizeBytes);
}

} // namespace vxsim
