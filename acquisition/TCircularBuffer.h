// SPDX-License-Identifier: MIT
// The ring of frame slots of one camera, and the waits for them.
#pragma once

#include "acquisition/frame_timestamp.h"
#include "acquisition/TChangeWaits.h"
#include "acquisition/TFrameMemory.h"
#include "acquisition/TFrameSlab.h"
#include "acquisition/TRingMemory.h"
#include "utility/TMutex.h"

#include <atomic>
#include <cstdint>
#include <memory>
#include <optional>
#include <utility>
#include <vector>

/// Fixed ring of frame slots between the acquisition thread (the one that counts frames) and application threads
/// (which read them and wait for them). Owned by the acquisition manager. Thread-safe, with one condition:
/// Allocate(), Delete() and Reset() are for when no run is in progress. Nothing throws, except that Reset() passes a
/// lack of memory on.
///
/// Image n (from 1) lives in slot (n - 1) mod count; the last `count` images are there, unless slots got lost, and
/// older ones are overwritten without a check. Memory that is being read is kept until it is released, whatever
/// becomes of the ring meanwhile.
class TCircularBuffer final
{
public:
  TCircularBuffer();
  ~TCircularBuffer();
  TCircularBuffer(const TCircularBuffer&) = delete;
  TCircularBuffer& operator=(const TCircularBuffer&) = delete;

  /// Replaces the ring by @p count slots for frames of @p frameSizeBytes bytes. Returns 0; 1 when there is not
  /// enough free memory, with no slots left. A ring of the same shape keeps its memory, whose pages are then
  /// mapped already. The memory of the previous ring stays until the first frame of the new one, if there is enough for
  /// both: a camera that has not flushed, although it reports success, would write into it.
  int Allocate(std::uint64_t frameSizeBytes, std::uint64_t count);
  /// Whether rings that are made from now on share the budget of TRingMemory with those of other cameras. At first, and
  /// for a camera that is alone, there is no budget.
  void SetSharesBudget(bool sharesBudget);
  /// What the rings of other cameras have.
  std::uint64_t BytesOfOtherRings() const { return memory_->BytesOfOthers(); }
  /// Frees the slots. Counter, flags and event stay as they are.
  void Delete();
  /// The camera may go on writing into the present slots: their memory stays until UnpinMemory(), even if the ring is
  /// replaced.
  void PinMemory();
  void UnpinMemory();
  /// All memory that the camera may still be writing into; the caller keeps it until the camera is closed.
  std::vector<std::shared_ptr<TFrameSlab>> CameraMemory() const;
  /// Begins the numbering of a run: no images, no failure, no cancellation. Between Allocate() and here the images of
  /// the run before, whose numbers still stand, are not there.
  void Reset();

  /// Whether the camera gets slots back after their frames have been counted, and whether frames carry its clock
  /// value, in the run that begins.
  void SetKindOfRun(bool slotsAreReused, bool framesHaveClock);

  /// The memory of slot @p slot, counted from 1; null above the count.
  unsigned char* GetBuffer(std::uint64_t slot) const;
  std::uint64_t GetBufferCount() const;
  /// Number of the newest image, which is also the number of images since Reset().
  std::uint64_t GetMaxImageIndex() const { return imageCounter_.load(std::memory_order_acquire); }
  /// Changes with each Reset(), and with the first image after it: a caller that reads it before and after it looks at
  /// images knows whether they were of one run.
  std::uint64_t GetRunNumber() const { return runNumber_.load(std::memory_order_acquire); }
  /// Number of the oldest image that is there, 0 before the first.
  std::uint64_t GetMinImageIndex() const;
  /// The memory of an image, or null when it is not there.
  unsigned char* GetBufferForImage(std::uint64_t image) const;

  /// Counts one more image and wakes a waiter. Acquisition thread only.
  void Increment();
  /// The run has failed: wakes every waiter, and every later one until Reset().
  void AcquisitionError() { waits_.Fail(); }
  /// Wakes every waiter, and every later one until Reset().
  void CancelWait() { waits_.Cancel(); }
  /// As CancelWait(), for good: the camera is being closed.
  void CloseWaits() { waits_.Close(); }
  /// Waits for a frame. Returns 0 for one, 2 when the time ran out, 3 when waits are cancelled, 4 when the run has
  /// failed; 3 comes before 4 and both before a frame. A frame that came while no thread waited ends the next wait at
  /// once. A wait that was under way when waits were cancelled, or the run failed, returns that, even if the next run
  /// begins before it has woken up.
  int WaitChange(int timeoutMs) { return waits_.Wait(timeoutMs); }

  /// Whether @p buffer is the start of a slot. Acquisition thread only.
  bool IsSlot(const unsigned char* buffer) const;
  /// Makes @p buffer the slot of the next image. Frames normally arrive in slot order and nothing changes; after a
  /// lost slot the table follows what the camera does, so that image n is always the n-th frame delivered. Returns
  /// false for memory that is not a slot of this ring. @p timestamp is the camera's clock value in it. Acquisition
  /// thread only.
  bool PlaceNext(const unsigned char* buffer, TFrameTimestamp timestamp = {});
  /// As GetBufferForImage(); the memory stays until ReleaseBuffer().
  TFrameMemory AcquireBufferForImage(std::uint64_t image);
  void ReleaseBuffer(const unsigned char* buffer);
  /// Whether what the caller has read of @p buffer, which AcquireBufferForImage() gave for this image, is of this image
  /// alone: the camera has not begun to write over it. It may be ahead of the frames counted so far by as many as
  /// there are slots. Where frames carry a clock value, the slots that the camera fills before this one show how far
  /// it is; where none of them does, an image of the newer half of the ring is taken for intact.
  bool IsImageIntact(std::uint64_t image, const unsigned char* buffer) const;
  /// The camera's clock value in this image, as it was when the image was counted.
  std::optional<std::int64_t> GetTicks(std::uint64_t image) const;

private:
  /// The slab, without the lock: it is not replaced while a run is in progress. Acquisition thread only.
  TFrameSlab* SlabOfRun() const NO_THREAD_SAFETY_ANALYSIS { return slab_.get(); }

  void ReleaseFormerSlabs() EXCLUDES(slabMutex_);
  bool MakeSlab(std::uint64_t frameSizeBytes, std::uint64_t count) REQUIRES(slabMutex_);
  bool IsSpareSlab(std::uint64_t frameSizeBytes, std::uint64_t count) const REQUIRES(slabMutex_);
  bool MoveSlot(TFrameSlab& slab, const unsigned char* buffer);
  unsigned char* FindImage(std::uint64_t image) const REQUIRES(slabMutex_);
  std::uint64_t OldestImage(std::uint64_t newest, std::uint64_t count) const;
  std::optional<TSlotClocks::TClock> FindClock(std::uint64_t image) const REQUIRES(slabMutex_);
  bool IsOfNewerHalf(std::uint64_t image) const REQUIRES(slabMutex_);
  bool HasCameraNotReached(std::uint64_t image, const unsigned char* buffer) const REQUIRES(slabMutex_);

  const std::shared_ptr<TRingMemory> memory_ = std::make_shared<TRingMemory>();
  mutable TMutex slabMutex_;
  bool sharesBudget_ GUARDED_BY(slabMutex_) = false;
  std::shared_ptr<TFrameSlab> slab_ GUARDED_BY(slabMutex_); // its tables need no lock
  std::vector<std::shared_ptr<TFrameSlab>> pinned_ GUARDED_BY(slabMutex_);
  std::vector<std::shared_ptr<TFrameSlab>>
      former_ GUARDED_BY(slabMutex_); // replaced; kept until the camera fills slab_
  std::atomic<std::uint64_t> imageCounter_{0};
  std::uint64_t nextSlot_ =
      0; // imageCounter_ mod count; written by the counter's writer, or while no run is in progress
  std::atomic<std::uint64_t> runNumber_{0}; // changes before the counter does
  TChangeWaits waits_;
  /// Images below this one have lost their slot to a frame that arrived out of order.
  std::atomic<std::uint64_t> lowestAvailable_{0};
  /// Images up to this one belong to memory that was replaced.
  std::uint64_t staleUpTo_ GUARDED_BY(slabMutex_) = 0;
  bool slotsAreReused_ GUARDED_BY(slabMutex_) = true;
  bool framesHaveClock_ GUARDED_BY(slabMutex_) = false;
  std::vector<std::pair<const unsigned char*, std::shared_ptr<TFrameSlab>>> acquired_ GUARDED_BY(slabMutex_);
};
