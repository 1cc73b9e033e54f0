// SPDX-License-Identifier: MIT
// The records of one thread.
#pragma once

#include "trace/trace_format.h"

#include <cstddef>
#include <cstdint>

/// Writes the records of one thread into its chunk of the file. One object in each thread, which it alone uses. A signal
/// handler that interrupts it may make calls: these are not recorded but counted. Never throws, and leaves errno as it is.
class TTraceThread final
{
public:
  static TTraceThread& Current() noexcept { return current_; }

  /// Where the contents of a record of kMaxRecordBytes go, behind its header; null when there is no room, or when another
  /// record of this thread is being written. FinishRecord() must follow.
  std::byte* BeginRecord() noexcept;
  /// Puts the record into the file; its contents end at @p end.
  void FinishRecord(TraceFormat::Kind kind, std::uint16_t function, std::uint16_t call, std::uint64_t ticks,
                    const std::byte* end) noexcept;

  /// The number of a call that begins; they begin anew after 65535.
  std::uint16_t NextCall() noexcept { return ++calls_; }

  /// Calls that are under way in this thread and recorded.
  unsigned int Depth() const noexcept { return depth_; }
  void EnterCall() noexcept { ++depth_; }
  void LeaveCall() noexcept { --depth_; }

  /// Counts a call for a frame in place of a record of it. The counts are recorded ten times a second, and before other
  /// records.
  void CountFrame(bool isWait, std::uint64_t bytes) noexcept;

  /// Where the pixels are noted that the innermost call copies; null for none.
  TraceFormat::TPixels* Pixels() const noexcept { return pixels_; }
  void SetPixels(TraceFormat::TPixels* pixels) noexcept { pixels_ = pixels; }

  /// Records an image that the innermost call has copied.
  /// @param image  its number among those of the call, from 1
  void WritePixels(std::uint32_t image, const std::byte* pixels, std::uint64_t bytes) noexcept;

  /// Leaves the chunk to others: the thread ends.
  void End() noexcept;
  /// The chunk belongs to another process.
  void Forget() noexcept;

private:
  bool NextChunk() noexcept;
  void WriteCounts() noexcept;
  void Write(TraceFormat::Kind kind, std::uint16_t function, std::uint16_t call, std::uint64_t ticks,
             const std::byte* end) noexcept;
  void WriteValue(TraceFormat::Kind kind, const void* value, std::size_t size) noexcept;

  static thread_local TTraceThread current_;

  std::byte* position_ = nullptr; // of the next record
  std::byte* end_ = nullptr;
  bool isBusy_ = false;
  bool hasEnded_ = false;
  std::uint16_t calls_ = 0;
  unsigned int depth_ = 0;
  std::uint64_t dropped_ = 0;
  TraceFormat::TPixels* pixels_ = nullptr;
  TraceFormat::TFrameCounts frames_ = {};
  std::uint64_t framesSince_ = 0; // ticks
};
