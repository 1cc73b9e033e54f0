// SPDX-License-Identifier: MIT
// Ways of writing frames to a disk that have nothing to do with the library.
#pragma once

#include "acquisition/TFrameSlab.h"

#include <cstddef>
#include <ctime>
#include <string>
#include <vector>

/// Frames in memory of the same kind and size as the ring's, filled with noise, that are written again and again.
class FrameSource
{
public:
  FrameSource(std::size_t frameBytes, std::size_t slots);

  std::size_t slots() const { return slab_.Count(); }
  std::size_t frameBytes() const { return slab_.FrameSizeBytes(); }
  unsigned char* frame(long number) const { return slab_.Slot(static_cast<std::size_t>(number) % slab_.Count()); }

private:
  TFrameSlab slab_;
};

/// What writing a series of frames took.
struct WritingCost
{
  double acceptedSeconds = 0; ///< until the last frame had been accepted; much may be in the page cache only
  double diskSeconds = 0;     ///< until everything was on the disk
  double cpuSeconds = 0;      ///< of all threads of the process, until everything was on the disk
  double longestMs = 0;       ///< that handing over one frame took, where that was measured
};

/// Takes the times of one series.
class WritingClock
{
public:
  WritingClock();
  void accepted();
  /// Everything is on the disk.
  WritingCost onDisk() const;

private:
  double begin_;
  double cpuBegin_;
  double accepted_ = 0;
};

/// A way of writing @p count frames into @p directory, everything included until it is on the disk.
struct FrameWriter
{
  const char* name;
  WritingCost (*write)(const std::string& directory, const FrameSource& frames, long count);
};

/// One file, a pwrite() for each frame, fdatasync() at the end.
WritingCost writeBuffered(const std::string& directory, const FrameSource& frames, long count);
/// The same with frames in pieces of 256 KiB, which is the fastest plain way through the page cache.
WritingCost writeInChunks(const std::string& directory, const FrameSource& frames, long count);
/// One pwrite() for each frame, past the page cache. Of a frame that is no multiple of a page, the last page is written
/// as a whole.
WritingCost writeDirectly(const std::string& directory, const FrameSource& frames, long count);
/// Whether the directory's file system can do that.
bool canWriteDirectly(const std::string& directory);
/// The libraries of other formats that the program was built with.
std::vector<FrameWriter> formatWriters();
