// SPDX-License-Identifier: MIT
// The ring of frame slots of one camera, and the event that tells waiters of news.
#include "acquisition/TCircularBuffer.h"

#include "utility/TQuorinMemoryStatistics.h"

#include <algorithm>
#include <new>

namespace {

constexpr int kAllocated = 0;
constexpr int kNotAllocated = 1;

constexpr int kNewFrame = 0;
constexpr int kTimedOut = 2;
constexpr int kCancelled = 3;
constexpr int kFailed = 4;

// Copies are made by a few application threads at most; more than this many at once only cost an allocation.
constexpr std::size_t kUsualHolds = 16;

} // namespace

TCircularBuffer::TCircularBuffer() : changeEvent_(false, false)
{
  holds_.reserve(kUsualHolds);
}

TCircularBuffer::~TCircularBuffer() = default;

int TCircularBuffer::Allocate(std::uint64_t frameSizeBytes, std::uint64_t count)
{
  const std::lock_guard lock(slabMutex_);
  staleUpTo_ = GetMaxImageIndex();
  if (IsSpareSlab(frameSizeBytes, count)) {
    slab_->ResetSlots();
    return kAllocated;
  }
  slab_.reset();
  std::uint64_t sizeBytes = 0;
  if (__builtin_mul_overflow(frameSizeBytes, count, &sizeBytes)) return kNotAllocated;
  if (QuorinUtility::TQuorinMemoryStatistics::Instance()->GetAvailable() < sizeBytes) return kNotAllocated;
  try {
    slab_ = std::make_shared<TFrameSlab>(frameSizeBytes, count);
  } catch (const std::bad_alloc&) {
    return kNotAllocated;
  }
  return kAllocated;
}

// Whether the present memory has the shape that is asked for and nobody reads in it.
bool TCircularBuffer::IsSpareSlab(std::uint64_t frameSizeBytes, std::uint64_t count) const
{
  if (!slab_ || slab_->FrameSizeBytes() != frameSizeBytes || slab_->Count() != count) return false;
  // Kept memory can be this ring's again; a camera that never lets go must not cost a ring with each start.
  const auto keeps = std::count(kept_.begin(), kept_.end(), slab_);
  return slab_.use_count() == 1 + keeps;
}

void TCircularBuffer::Delete()
{
  const std::lock_guard lock(slabMutex_);
  slab_.reset();
}

void TCircularBuffer::KeepMemory()
{
  const std::lock_guard lock(slabMutex_);
  if (slab_ && (kept_.empty() || kept_.back() != slab_)) kept_.push_back(slab_);
}

void TCircularBuffer::LetGoOfMemory()
{
  const std::lock_guard lock(slabMutex_);
  kept_.clear();
}

std::vector<std::shared_ptr<TFrameSlab>> TCircularBuffer::HoldMemory() const
{
  const std::lock_guard lock(slabMutex_);
  std::vector<std::shared_ptr<TFrameSlab>> memory = kept_;
  memory.push_back(slab_);
  return memory;
}

void TCircularBuffer::Reset()
{
  {
    const std::lock_guard lock(slabMutex_);
    imageCounter_.store(0, std::memory_order_release);
    lowestKept_ = 0;
    staleUpTo_ = 0;
  }
  const std::lock_guard lock(newsMutex_);
  cancelled_ = false;
  failed_ = false;
  changeEvent_.Reset();
}

unsigned char* TCircularBuffer::GetBuffer(std::uint64_t slot) const
{
  const std::lock_guard lock(slabMutex_);
  if (!slab_ || slot < 1 || slot > slab_->Count()) return nullptr;
  return slab_->Slot(slot - 1);
}

std::uint64_t TCircularBuffer::GetBufferCount() const
{
  const std::lock_guard lock(slabMutex_);
  return slab_ ? slab_->Count() : 0;
}

std::uint64_t TCircularBuffer::GetMinImageIndex() const
{
  const std::uint64_t newest = GetMaxImageIndex();
  const std::uint64_t count = GetBufferCount();
  if (newest < count || newest == 0) return newest == 0 ? 0 : std::max<std::uint64_t>(1, lowestKept_);
  return std::max<std::uint64_t>(newest + 1 - count, lowestKept_);
}

unsigned char* TCircularBuffer::GetBufferForImage(std::uint64_t image) const
{
  if (image < 1 || image > GetMaxImageIndex() || image < GetMinImageIndex()) return nullptr;
  const std::lock_guard lock(slabMutex_);
  return FindImage(image);
}

unsigned char* TCircularBuffer::FindImage(std::uint64_t image) const
{
  if (!slab_ || slab_->Count() == 0 || image <= staleUpTo_) return nullptr;
  return slab_->Slot((image - 1) % slab_->Count());
}

void TCircularBuffer::Increment()
{
  // One writer: the acquisition thread.
  imageCounter_.store(imageCounter_.load(std::memory_order_relaxed) + 1, std::memory_order_release);
  changeEvent_.Set();
}

void TCircularBuffer::AcquisitionError()
{
  TellBadNews(failed_);
}

void TCircularBuffer::CancelWait()
{
  TellBadNews(cancelled_);
}

void TCircularBuffer::CloseWaits()
{
  TellBadNews(closed_);
}

void TCircularBuffer::TellBadNews(std::atomic<bool>& flag)
{
  const std::lock_guard lock(newsMutex_);
  flag = true;
  changeEvent_.Set();
}

int TCircularBuffer::WaitChange(int timeoutMs)
{
  const bool isNews = changeEvent_.Wait(timeoutMs);
  const std::lock_guard lock(newsMutex_);
  const bool isCancelled = cancelled_ || closed_;
  // The event wakes one waiter, and one that runs out of time may use it up: whoever leaves wakes the next.
  if (isCancelled || failed_) changeEvent_.Set();
  if (!isNews) return kTimedOut;
  if (isCancelled) return kCancelled;
  return failed_ ? kFailed : kNewFrame;
}

// The slab is not replaced while a run is in progress, so the acquisition thread needs no lock for it.
bool TCircularBuffer::IsSlot(const unsigned char* buffer) const
{
  return slab_ && slab_->IsSlot(buffer);
}

bool TCircularBuffer::PlaceNext(const unsigned char* buffer)
{
  TFrameSlab* const slab = slab_.get();
  if (!slab || slab->Count() == 0) return false;
  const std::uint64_t counter = imageCounter_.load(std::memory_order_relaxed);
  const std::uint64_t expected = counter % slab->Count();
  if (slab->Slot(expected) == buffer) return true;

  const std::uint64_t actual = slab->IndexOf(buffer, expected);
  if (actual == slab->Count()) return false;
  // Whatever image the slot held before is gone now, and what is gone stays gone.
  if (counter > actual) {
    const std::uint64_t lost = counter - (counter - 1 - actual) % slab->Count();
    lowestKept_ = std::max<std::uint64_t>(lowestKept_, lost + 1);
  }
  slab->SwapSlots(expected, actual);
  return true;
}

unsigned char* TCircularBuffer::HoldBufferForImage(std::uint64_t image)
{
  if (image < 1 || image > GetMaxImageIndex() || image < GetMinImageIndex()) return nullptr;
  const std::lock_guard lock(slabMutex_);
  unsigned char* const buffer = FindImage(image);
  if (!buffer) return nullptr;
  try {
    holds_.emplace_back(buffer, slab_);
  } catch (const std::bad_alloc&) {
    return nullptr;
  }
  return buffer;
}

void TCircularBuffer::ReleaseBuffer(const unsigned char* buffer)
{
  std::shared_ptr<TFrameSlab> last; // may free the memory: after the lock
  const std::lock_guard lock(slabMutex_);
  const auto hold =
      std::find_if(holds_.begin(), holds_.end(), [buffer](const auto& entry) { return entry.first == buffer; });
  if (hold == holds_.end()) return;
  last = std::move(hold->second);
  holds_.erase(hold);
}

bool TCircularBuffer::IsImageIntact(std::uint64_t image) const
{
  // What the caller has read of the image comes before the look at the counter.
  std::atomic_thread_fence(std::memory_order_acquire);
  const std::uint64_t newest = GetMaxImageIndex();
  if (image < 1 || image > newest) return false;
  if (newest < GetBufferCount()) return image >= GetMinImageIndex();
  return image > GetMinImageIndex();
}
