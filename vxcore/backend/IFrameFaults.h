// SPDX-License-Identifier: MIT
// The planned faults of one device's frames.
#pragma once

#include <atomic>
#include <cstdint>
#include <vector>

namespace vxcore {

/// What happens to a frame, its metadata or the camera that makes it.
enum class EPlannedFault
{
  // A frame.
  Drop,     ///< it is lost
  Short,    ///< `number` bytes are reported
  Oversize, ///< `number` bytes more than it has are reported
  Swap,     ///< it goes into the `number`-th queued buffer, and the first buffer takes that one's place
  Null,     ///< the wait succeeds without a buffer
  Foreign,  ///< it comes in a buffer that was never queued
  Repeat,   ///< the buffer delivered before is delivered again
  Late,     ///< it and all after it arrive later by the duration
  // Metadata.
  ChunkLength,    ///< the last chunk's length is `number`
  ChunkCid,       ///< the last chunk's identifier is `number`
  ChunkTruncated, ///< the frame ends within the last chunk's identifier
  ChunkRandom,    ///< the metadata is random bytes of the seed `number`
  // The camera.
  Unplug, ///< it answers nothing any more
  Replug, ///< the same, for the duration
  Stall,  ///< the sensor pauses for the duration
};

struct TPlannedFault
{
  EPlannedFault kind = EPlannedFault::Drop;
  long long number = 0;
  int64_t durationNs = 0;
};

/// The fault plan as one device sees it. Each question counts one frame for every rule of its subject, so it is asked
/// once a frame: by a device that simulates its sensor when the frame is exposed, for every other device by
/// TFaultyDevice when the frame is delivered. Thread-safe.
class IFrameFaults
{
public:
  explicit IFrameFaults(const std::atomic<bool>& active) : active_(active) {}
  virtual ~IFrameFaults() = default;

  /// No rule is in force; costs one relaxed load.
  bool IsEmpty() const { return !active_.load(std::memory_order_relaxed); }

  virtual std::vector<TPlannedFault> OnCamera() = 0;
  virtual std::vector<TPlannedFault> OnFrame() = 0;
  /// Only for a frame that has metadata.
  virtual std::vector<TPlannedFault> OnMetadata() = 0;

private:
  const std::atomic<bool>& active_;
};

/// Applies a fault that concerns the bytes or the size of a delivered frame; other faults change nothing.
/// @param wholeBytes     size of the frame as it was made
/// @param metadataBytes  of these, the metadata at the end
/// @param sizeBytes      the size that is reported
void ApplyToDelivered(const TPlannedFault& fault, unsigned char* bytes, int wholeBytes, int metadataBytes,
                      int& sizeBytes);

} // namespace vxcore
