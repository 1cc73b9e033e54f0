// SPDX-License-Identifier: MIT
// What the dispatch queues over a circular buffer have in common.
#pragma once

#include "acquisition/TDispatchQueue.h"

#include <atomic>

class TCircularBuffer;

/// A dispatch queue whose images are those of a circular buffer, which it borrows. Derived classes say what
/// becomes of a counted frame.
class TRingDispatchQueue : public TDispatchQueue
{
public:
  void Initialise(std::int64_t imageSizeBytes) override;
  void Finalise() override {}
  void Abort() override {}
  unsigned char* GetLatestImage() override;
  unsigned char* GetImage8(int image) override;
  void ReleaseImage8(unsigned char* buffer) override;
  unsigned char* GetImage(int image) override;
  std::int64_t GetMinimumImageAvailable() override;
  std::int64_t GetMaximumImageAvailable() override;
  std::int64_t GetImageSizeBytes() override;
  void SetDispatchRoutine(IDispatchRoutine* routine) override;
  TFrameMemory AcquireImage(std::int64_t image) override;
  bool IsImageIntact(std::int64_t image, const unsigned char* frame) override;
  std::optional<std::int64_t> GetImageTicks(std::int64_t image) override;
  std::uint64_t RunNumber() override;
  void ExpectClock() override;
  void SetTimestampOfNextFrame(TFrameTimestamp timestamp) override { timestampOfNextFrame_ = timestamp; }
  bool IsSlot(const unsigned char* buffer) override;

protected:
  /// @p coreHandle is the camera that the slots are queued with.
  TRingDispatchQueue(TCircularBuffer* circularBuffer, int coreHandle)
      : circularBuffer_(circularBuffer), coreHandle_(coreHandle)
  {
  }

  /// Counts a frame and notifies the dispatch routine. Returns false, with nothing counted, for memory that is no
  /// slot of the ring.
  bool CountFrame(unsigned char* buffer);

  /// Requeues a slot with the camera that it came from, whichever is the current one, and whole, whatever size the
  /// frame in it was reported to have.
  void RequeueSlot(unsigned char* buffer, int sizeBytes);

  int CoreHandle() const { return coreHandle_; }

  TCircularBuffer& CircularBuffer() { return *circularBuffer_; }

private:
  /// Whether the camera gets a slot back after its frame has been counted.
  virtual bool ReusesSlots() const { return true; }

  TCircularBuffer* circularBuffer_;
  const int coreHandle_;
  std::atomic<std::int64_t> imageSizeBytes_{0};
  IDispatchRoutine* dispatchRoutine_ = nullptr;
  TFrameTimestamp timestampOfNextFrame_;
};
