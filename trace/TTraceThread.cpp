// SPDX-License-Identifier: MIT
// The records of one thread.
#include "trace/TTraceThread.h"

#include "runs/checksum.h"
#include "trace/trace_switch.h"
#include "trace/TTraceRecorder.h"
#include "utility/TCallerState.h"

#include <algorithm>
#include <atomic>
#include <cstring>
#include <sys/syscall.h>
#include <unistd.h>
#include <utility>

using TraceFormat::Kind;
using TraceFormat::kMaxRecordBytes;
using TraceFormat::TRecordHeader;

namespace {

// About 100 ms in cycles of a processor; 250 ms where the clock counts ns.
constexpr std::uint64_t kFramesTicks = 250'000'000;
// Room for the counts in front of a record, and for the size 0 behind it.
constexpr std::size_t kRoom = kMaxRecordBytes + 128;

/// Ends the records of a thread with it.
struct TThreadEnd
{
  ~TThreadEnd() { TTraceThread::Current().End(); }
  bool isNoted = false;
};
thread_local TThreadEnd threadEnd;

} // namespace

constinit thread_local TTraceThread TTraceThread::current_;

std::byte* TTraceThread::BeginRecord() noexcept
{
  if (isBusy_) {
    ++dropped_;
    return nullptr;
  }
  isBusy_ = true;
  std::atomic_signal_fence(std::memory_order_seq_cst);
  if (static_cast<std::size_t>(end_ - position_) < kRoom && !NextChunk()) {
    ++dropped_;
    isBusy_ = false;
    return nullptr;
  }
  if (dropped_ != 0 || frames_.waits + frames_.queued != 0) [[unlikely]]
    WriteCounts();
  return position_ + sizeof(TRecordHeader);
}

void TTraceThread::FinishRecord(Kind kind, std::uint16_t function, std::uint16_t call, std::uint64_t ticks,
                                const std::byte* end) noexcept
{
  Write(kind, function, call, ticks, end);
  std::atomic_signal_fence(std::memory_order_seq_cst);
  isBusy_ = false;
}

void TTraceThread::Write(Kind kind, std::uint16_t function, std::uint16_t call, std::uint64_t ticks,
                         const std::byte* end) noexcept
{
  const std::size_t size = (static_cast<std::size_t>(end - position_) + 7) / 8 * 8;
  auto* const record = reinterpret_cast<TRecordHeader*>(position_);
  position_ += size;
  // The record ends what can be read, until there is another one behind it.
  __atomic_store_n(&reinterpret_cast<TRecordHeader*>(position_)->size, std::uint16_t{0}, __ATOMIC_RELAXED);
  record->kind = kind;
  record->depth = static_cast<std::uint8_t>(depth_ < 255 ? depth_ : 255);
  record->function = function;
  record->call = call;
  record->ticks = ticks;
  __atomic_store_n(&record->size, static_cast<std::uint16_t>(size), __ATOMIC_RELEASE);
}

void TTraceThread::WriteValue(Kind kind, const void* value, std::size_t size) noexcept
{
  std::byte* const contents = position_ + sizeof(TRecordHeader);
  std::memcpy(contents, value, size);
  Write(kind, 0, 0, Trace::Ticks(), contents + size);
}

void TTraceThread::WriteCounts() noexcept
{
  if (dropped_ != 0) {
    const std::uint64_t dropped = dropped_;
    WriteValue(Kind::Dropped, &dropped, sizeof dropped);
    dropped_ -= dropped;
  }
  if (frames_.waits + frames_.queued != 0) {
    WriteValue(Kind::Frames, &frames_, sizeof frames_);
    frames_ = {};
  }
}

void TTraceThread::CountFrame(bool isWait, std::uint64_t bytes) noexcept
{
  if (isBusy_) return;
  const bool isFirst = frames_.waits + frames_.queued == 0;
  ++(isWait ? frames_.waits : frames_.queued);
  frames_.bytes += bytes;
  const std::uint64_t now = Trace::Ticks();
  if (isFirst) framesSince_ = now;
  if (now - framesSince_ < kFramesTicks) return;
  if (BeginRecord()) isBusy_ = false; // which has recorded the counts
}

bool TTraceThread::NextChunk() noexcept
{
  TTraceRecorder* const recorder = TTraceRecorder::Instance();
  if (hasEnded_ || !Trace::IsOn(Trace::kApi | Trace::kCore)) return false;
  const TCallerState callerState;
  // From here on the destructor of this object runs at the end of the thread.
  const bool isFirst = !std::exchange(threadEnd.isNoted, true);
  try {
    if (end_) recorder->ReleaseFullChunk(end_);
    position_ = end_ = nullptr;
    bool isShared = false;
    const TTraceRecorder::TPlace place = recorder->TakeChunk(isFirst, isShared);
    if (!place.begin) return false;
    position_ = place.begin;
    end_ = place.end;
    if (isShared) {
      const auto thread = static_cast<std::uint64_t>(syscall(SYS_gettid));
      WriteValue(Kind::Thread, &thread, sizeof thread);
    }
    return true;
  } catch (...) {
    return false;
  }
}

void TTraceThread::WritePixels(std::uint32_t image, const std::byte* pixels, std::uint64_t bytes) noexcept
{
  for (std::uint64_t offset = 0; offset < bytes; offset += TraceFormat::kMaxPixelPartBytes) {
    std::byte* const begin = BeginRecord();
    if (!begin) return;
    const TraceFormat::TPixelPart part = {
        image,
        static_cast<std::uint32_t>(std::min<std::uint64_t>(bytes - offset, TraceFormat::kMaxPixelPartBytes)),
        offset};
    std::memcpy(begin, &part, sizeof part);
    std::memcpy(begin + sizeof part, pixels + offset, part.bytes);
    FinishRecord(Kind::Pixels, 0, 0, Trace::Ticks(), begin + sizeof part + part.bytes);
  }
}

void TTraceThread::End() noexcept
{
  hasEnded_ = true;
  if (!end_ || isBusy_) return;
  try {
    WriteCounts();
    if (static_cast<std::size_t>(end_ - position_) < TraceFormat::kChunkBytes / 4)
      TTraceRecorder::Instance()->ReleaseFullChunk(end_);
    else
      TTraceRecorder::Instance()->ReleaseChunk({position_, end_});
  } catch (...) {
  }
  position_ = end_ = nullptr;
}

void TTraceThread::Forget() noexcept
{
  position_ = end_ = nullptr;
  frames_ = {};
  dropped_ = 0;
}

void Trace::NoteCopiedPixels(const void* pixels, std::uint64_t bytes) noexcept
{
  if (!IsOn(kApi)) return;
  TraceFormat::TPixels* const noted = TTraceThread::Current().Pixels();
  if (!noted) return;
  noted->bytes += bytes;
  ++noted->images;
  if (!TTraceRecorder::Instance()->Settings().hashesPixels) return;
  if (TTraceRecorder::Instance()->Settings().storesPixels)
    TTraceThread::Current().WritePixels(noted->images, static_cast<const std::byte*>(pixels), bytes);
  const std::uint64_t checksum = Checksum(pixels, bytes);
  const std::uint64_t both[] = {noted->checksum, checksum};
  noted->checksum = noted->images == 1 ? checksum : Checksum(both, sizeof both);
}
