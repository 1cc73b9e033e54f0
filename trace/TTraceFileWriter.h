// SPDX-License-Identifier: MIT
// The file of a call trace, as the library writes it.
#pragma once

#include "trace/trace_format.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

/// A mapped file that is divided into chunks, so that what was written into one is in the file however the process ends. The
/// space of a chunk is allocated before it is used: a full disk is an answer here and never a signal. When the file has
/// its longest size, or cannot grow, the oldest chunk behind those of the beginning is used again. Owned by TTraceRecorder,
/// which locks it; chunks that were taken are written without a lock. The mapping is never removed.
class TTraceFileWriter final
{
public:
  TTraceFileWriter() = default;
  TTraceFileWriter(const TTraceFileWriter&) = delete;
  TTraceFileWriter& operator=(const TTraceFileWriter&) = delete;

  /// Makes the file, or replaces an earlier trace that no process writes. @p header is written in front of @p text, with its
  /// lengths completed. Why that failed; "" when it did not.
  std::string Open(const std::string& path, std::uint64_t limitBytes, TraceFormat::TFileHeader header,
                   const std::string& text);
  /// An empty chunk, of which nothing is in the file yet; null when there is none. It is the caller's until ReleaseChunk().
  std::byte* TakeChunk();
  void ReleaseChunk(const std::byte* chunk);
  std::uint64_t ChunksTaken() const { return taken_; }
  /// Why the file could not grow; "" while it can.
  const std::string& GrowthError() const { return growthError_; }

private:
  bool Grow();
  std::byte* ChunkAt(std::size_t index) const
  {
    return mapping_ + headerBytes_ + index * TraceFormat::kChunkBytes;
  }

  int file_ = -1;
  std::uint64_t device_ = 0;
  std::uint64_t inode_ = 0;
  std::byte* mapping_ = nullptr;
  std::size_t headerBytes_ = 0;
  std::size_t allocatedChunks_ = 0;
  std::size_t firstReused_ = 0; // those before it stay as they are
  std::size_t next_ = 0;
  std::uint64_t taken_ = 0;
  std::vector<bool> isInUse_; // as many as there may be chunks
  std::string growthError_;
};
