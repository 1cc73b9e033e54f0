// SPDX-License-Identifier: MIT
// The ring of frame slots of one camera, and the waits for them.
#include "acquisition/TCircularBuffer.h"

#include "utility/TQuorinMemoryStatistics.h"

#include <algorithm>
#include <new>

namespace {

constexpr int kAllocated = 0;
constexpr int kNotAllocated = 1;

// Copies are made by a few application threads at most; more than this many at once only cost an allocation.
constexpr std::size_t kUsualReaders = 16;

// Rings of runs without a frame, which cost address space but hardly memory.
constexpr std::size_t kMaxFormerSlabs = 4;

// How many slots in front of an image's must still have their images: one would do as long as no slot gets lost and no
// frame is shorter than its slot; the second one covers either. Rings too small for that make do with one.
constexpr int kSlotsAhead = 2;
constexpr std::uint64_t kSmallRing = 4;
// How far back to look for them where frames lack the clock value.
constexpr std::uint64_t kMaxSlotsBack = 16;
// The clock value, the identifier of its chunk and the chunk's length.
constexpr std::int64_t kClockChunkBytes = 16;

} // namespace

TCircularBuffer::TCircularBuffer()
{
  acquired_.reserve(kUsualReaders);
}

TCircularBuffer::~TCircularBuffer() = default;

int TCircularBuffer::Allocate(std::uint64_t frameSizeBytes, std::uint64_t count)
{
  const TLock lock(slabMutex_);
  staleUpTo_ = GetMaxImageIndex();
  nextSlot_ = count > 0 ? GetMaxImageIndex() % count : 0;
  if (IsSpareSlab(frameSizeBytes, count)) {
    slab_->ResetSlots();
    return kAllocated;
  }
  if (slab_) former_.push_back(std::move(slab_));
  if (former_.size() > kMaxFormerSlabs) former_.erase(former_.begin());
  if (MakeSlab(frameSizeBytes, count)) return kAllocated;
  if (former_.empty()) return kNotAllocated;
  former_.clear(); // there is no memory for both: rely on the camera having flushed
  return MakeSlab(frameSizeBytes, count) ? kAllocated : kNotAllocated;
}

bool TCircularBuffer::MakeSlab(std::uint64_t frameSizeBytes, std::uint64_t count)
{
  std::uint64_t sizeBytes = 0;
  if (__builtin_mul_overflow(frameSizeBytes, count, &sizeBytes)) return false;
  if (QuorinUtility::TQuorinMemoryStatistics::Instance()->GetAvailable() < sizeBytes) return false;
  try {
    slab_ = std::make_shared<TFrameSlab>(frameSizeBytes, count, memory_->Reserve(sizeBytes, sharesBudget_));
  } catch (const std::bad_alloc&) {
    return false;
  }
  return true;
}

// Whether the present memory has the requested shape and no thread reads from it.
bool TCircularBuffer::IsSpareSlab(std::uint64_t frameSizeBytes, std::uint64_t count) const
{
  if (!slab_ || slab_->FrameSizeBytes() != frameSizeBytes || slab_->Count() != count) return false;
  // Pinned memory can be used again: a camera that never flushes must not cost a ring with each start.
  const auto pins = std::count(pinned_.begin(), pinned_.end(), slab_);
  return slab_.use_count() == 1 + pins;
}

void TCircularBuffer::SetSharesBudget(bool sharesBudget)
{
  const TLock lock(slabMutex_);
  sharesBudget_ = sharesBudget;
}

void TCircularBuffer::Delete()
{
  const TLock lock(slabMutex_);
  slab_.reset();
  former_.clear();
}

void TCircularBuffer::PinMemory()
{
  const TLock lock(slabMutex_);
  if (slab_ && (pinned_.empty() || pinned_.back() != slab_)) pinned_.push_back(slab_);
}

void TCircularBuffer::UnpinMemory()
{
  const TLock lock(slabMutex_);
  pinned_.clear();
}

std::vector<std::shared_ptr<TFrameSlab>> TCircularBuffer::CameraMemory() const
{
  const TLock lock(slabMutex_);
  std::vector<std::shared_ptr<TFrameSlab>> memory = pinned_;
  memory.insert(memory.end(), former_.begin(), former_.end());
  memory.push_back(slab_);
  return memory;
}

void TCircularBuffer::Reset()
{
  {
    const TLock lock(slabMutex_);
    ++runNumber_;
    imageCounter_.store(0, std::memory_order_release);
    nextSlot_ = 0;
    lowestAvailable_ = 0;
    staleUpTo_ = 0;
    if (slab_) slab_->PrepareRun();
  }
  waits_.BeginRun();
}

void TCircularBuffer::SetKindOfRun(bool slotsAreReused, bool framesHaveClock)
{
  const TLock lock(slabMutex_);
  slotsAreReused_ = slotsAreReused;
  framesHaveClock_ = framesHaveClock;
}

unsigned char* TCircularBuffer::GetBuffer(std::uint64_t slot) const
{
  const TLock lock(slabMutex_);
  if (!slab_ || slot < 1 || slot > slab_->Count()) return nullptr;
  return slab_->Slot(slot - 1);
}

std::uint64_t TCircularBuffer::GetBufferCount() const
{
  const TLock lock(slabMutex_);
  return slab_ ? slab_->Count() : 0;
}

std::uint64_t TCircularBuffer::GetMinImageIndex() const
{
  const TLock lock(slabMutex_);
  return OldestImage(GetMaxImageIndex(), slab_ ? slab_->Count() : 0);
}

std::uint64_t TCircularBuffer::OldestImage(std::uint64_t newest, std::uint64_t count) const
{
  if (newest == 0) return 0;
  return std::max<std::uint64_t>(newest < count ? 1 : newest + 1 - count, lowestAvailable_);
}

unsigned char* TCircularBuffer::GetBufferForImage(std::uint64_t image) const
{
  const TLock lock(slabMutex_);
  return FindImage(image);
}

// All checks are made under one lock: another run may have begun since the caller learnt the number.
unsigned char* TCircularBuffer::FindImage(std::uint64_t image) const
{
  if (!slab_ || slab_->Count() == 0 || image < 1 || image <= staleUpTo_ || image > GetMaxImageIndex())
    return nullptr;
  unsigned char* const slot = slab_->Slot((image - 1) % slab_->Count());
  // PlaceNext() gives up images before it moves their slots, so the bounds are those of after the look at the table.
  return image < OldestImage(GetMaxImageIndex(), slab_->Count()) ? nullptr : slot;
}

void TCircularBuffer::Increment()
{
  // One writer: the acquisition thread.
  const std::uint64_t image = imageCounter_.load(std::memory_order_relaxed) + 1;
  if (image == 1) ++runNumber_;
  imageCounter_.store(image, std::memory_order_release);
  if (const TFrameSlab* const slab = SlabOfRun(); slab && ++nextSlot_ >= slab->Count()) nextSlot_ = 0;
  waits_.SignalFrame();
  if (image == 1) ReleaseFormerSlabs();
}

// The camera fills buffers in the order in which it got them, so with a frame in the new ring it has none of the
// former ones, even if its flush failed.
void TCircularBuffer::ReleaseFormerSlabs()
{
  std::vector<std::shared_ptr<TFrameSlab>> last; // frees the memory after the lock
  const TLock lock(slabMutex_);
  last.swap(former_);
}

bool TCircularBuffer::IsSlot(const unsigned char* buffer) const
{
  const TFrameSlab* const slab = SlabOfRun();
  if (!slab || slab->Count() == 0) return false;
  return slab->Slot(nextSlot_) == buffer || slab->IsSlot(buffer); // nearly always the first
}

bool TCircularBuffer::PlaceNext(const unsigned char* buffer, TFrameTimestamp timestamp)
{
  TFrameSlab* const slab = SlabOfRun();
  if (!slab || slab->Count() == 0) return false;
  if (slab->Slot(nextSlot_) != buffer && !MoveSlot(*slab, buffer)) return false;
  const std::uint64_t image = imageCounter_.load(std::memory_order_relaxed) + 1;
  slab->Clocks().Set(
      nextSlot_, image,
      {timestamp.ticks, timestamp.location ? timestamp.location - buffer : TSlotClocks::TClock::kNowhere});
  return true;
}

bool TCircularBuffer::MoveSlot(TFrameSlab& slab, const unsigned char* buffer)
{
  const std::uint64_t expected = nextSlot_;
  const std::uint64_t actual = slab.IndexOf(buffer, expected);
  if (actual == slab.Count()) return false;
  // The images that were in the two slots are lost.
  const std::uint64_t counter = imageCounter_.load(std::memory_order_relaxed);
  const auto dropImageIn = [&](std::uint64_t index) {
    if (counter <= index) return;
    const std::uint64_t image = counter - (counter - 1 - index) % slab.Count();
    lowestAvailable_ = std::max<std::uint64_t>(lowestAvailable_, image + 1);
  };
  dropImageIn(expected);
  dropImageIn(actual);
  slab.Clocks().Clear(expected);
  slab.Clocks().Clear(actual);
  slab.SwapSlots(expected, actual);
  return true;
}

TFrameMemory TCircularBuffer::AcquireBufferForImage(std::uint64_t image)
{
  const TLock lock(slabMutex_);
  unsigned char* const buffer = FindImage(image);
  if (!buffer) return {};
  try {
    acquired_.emplace_back(buffer, slab_);
  } catch (const std::bad_alloc&) {
    return {};
  }
  return {buffer, static_cast<std::int64_t>(slab_->FrameSizeBytes())};
}

void TCircularBuffer::ReleaseBuffer(const unsigned char* buffer)
{
  std::shared_ptr<TFrameSlab> last; // may free the memory: after the lock
  const TLock lock(slabMutex_);
  const auto found = std::find_if(acquired_.begin(), acquired_.end(),
                                  [buffer](const auto& entry) { return entry.first == buffer; });
  if (found == acquired_.end()) return;
  last = std::move(found->second);
  acquired_.erase(found);
}

bool TCircularBuffer::IsImageIntact(std::uint64_t image, const unsigned char* buffer) const
{
  // What the caller has read of the image comes before the look at anything else.
  std::atomic_thread_fence(std::memory_order_acquire);
  const TLock lock(slabMutex_);
  if (!buffer || FindImage(image) != buffer) return false;
  if (!slotsAreReused_) return true;
  if (framesHaveClock_) return HasCameraNotReached(image, buffer);
  return IsOfNewerHalf(image);
}

bool TCircularBuffer::IsOfNewerHalf(std::uint64_t image) const
{
  return GetMaxImageIndex() - image < slab_->Count() / 2;
}

// The camera fills slots in the order of the images in them. While a slot carries the clock value of its image, its
// next frame is not complete, and nothing of the slots after it is touched.
bool TCircularBuffer::HasCameraNotReached(std::uint64_t image, const unsigned char* buffer) const
{
  const auto own = FindClock(image);
  if (!own || (own->IsKnown() && !own->IsIn(buffer))) return false;

  const std::uint64_t count = slab_->Count();
  const std::uint64_t newest = GetMaxImageIndex();
  const std::uint64_t farthest = std::min({image, count - 1, kMaxSlotsBack});
  int wanted = count < kSmallRing ? 1 : kSlotsAhead;
  bool isClockSeen = own->IsKnown();
  for (std::uint64_t back = 1; back <= farthest; ++back) {
    const std::uint64_t ahead = image - back;
    // The slot in front of that of image 1 is the last one of the ring. Frames that are shorter than their slots do not
    // reach the mark at its end; the clock value is the last chunk of one that fills its slot.
    if (ahead == 0) {
      const bool isSlotFilled =
          own->offset + kClockChunkBytes == static_cast<std::int64_t>(slab_->FrameSizeBytes());
      if (isSlotFilled && slab_->IsLastSlotUnused()) return true;
      break;
    }
    if (ahead + count <= newest) break; // its slot has a later image
    const auto found = FindClock(ahead);
    if (!found) return false;
    isClockSeen = isClockSeen || found->IsKnown();
    // Equal clock values do not show which frame is in the slot.
    if (!found->IsKnown() || (own->IsKnown() && own->ticks == found->ticks)) continue;
    if (!found->IsIn(slab_->Slot((ahead - 1) % count))) return false;
    if (--wanted == 0) return true;
  }
  // A camera may have metadata and no clock in it.
  return !isClockSeen && IsOfNewerHalf(image);
}

std::optional<TSlotClocks::TClock> TCircularBuffer::FindClock(std::uint64_t image) const
{
  return slab_->Clocks().Find((image - 1) % slab_->Count(), image);
}

std::optional<std::int64_t> TCircularBuffer::GetTicks(std::uint64_t image) const
{
  const TLock lock(slabMutex_);
  if (!FindImage(image)) return std::nullopt;
  const auto found = FindClock(image);
  if (!found || !found->IsKnown()) return std::nullopt;
  return found->ticks;
}
