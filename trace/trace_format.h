// SPDX-License-Identifier: MIT
// The format of a call trace, which the library writes and the tool reads. docs/file-formats.md describes it.
#pragma once

#include <cstddef>
#include <cstdint>

namespace TraceFormat {

// Numbers are little-endian. A file is a header of whole chunks, then chunks; each chunk has the records of one thread.

constexpr char kFileMagic[8] = {'V', 'X', 'T', 'R', 'A', 'C', 'E', '\0'};
constexpr std::uint32_t kVersion = 1;
constexpr std::uint32_t kChunkMagic = 0x48435856; // "VXCH"; 0 where a chunk is not in use
constexpr std::size_t kChunkBytes = 64 * 1024;

/// The beginning of a file. A text follows, @p textBytes long, of lines with tabs between their columns:
/// "function", number, "api" or "core", name, signature; or a key and its value.
struct TFileHeader
{
  char magic[8];
  std::uint32_t version;
  std::uint32_t headerBytes; ///< of header and text, a multiple of kChunkBytes: where the first chunk begins
  std::uint32_t textBytes;
  std::uint32_t process;
  std::uint64_t startTicks;       ///< the clock of the records at the start
  std::uint64_t startMonotonicNs; ///< CLOCK_MONOTONIC at the start
  std::uint64_t startUtcNs;       ///< since 1970
  double ticksPerSecond;          ///< of the clock of the records, as measured at the start
};
static_assert(sizeof(TFileHeader) == 56);

/// The beginning of a chunk. Records follow, up to one of size 0 or the end of the chunk.
struct TChunkHeader
{
  std::uint32_t magic;
  std::uint32_t systemThread; ///< the system's number of the thread
  std::uint64_t number;       ///< from 1, in the order in which chunks were begun; missing numbers were dropped
  std::uint64_t ticks;        ///< when it was begun, on the clock of the records
  std::uint64_t monotonicNs;  ///< and on CLOCK_MONOTONIC
};
static_assert(sizeof(TChunkHeader) == 32);

enum class Kind : std::uint8_t
{
  Begin = 1,   ///< a call begins: its inputs
  End = 2,     ///< it ends: its result and outputs
  Thrown = 3,  ///< it ends with an exception: nothing
  Frames = 4,  ///< calls for frames that have no records: TFrameCounts
  Dropped = 5, ///< a uint64: calls before this record that could not be recorded
  Thread = 6,  ///< a uint64: the system's number of the thread that the records from here on are of
  Pixels = 7,  ///< of the call that is under way: TPixelPart, and so many bytes of an image behind it
};

/// The beginning of a record; multiples of 8 bytes. Its size is stored last, so that what a reader sees is whole.
struct TRecordHeader
{
  std::uint16_t size; ///< with this header
  Kind kind;
  std::uint8_t depth; ///< of Begin: how many calls of this thread are under way already
  std::uint16_t function;
  std::uint16_t call; ///< of Begin, End and Thrown: the lowest bits of the number of the call in its thread
  std::uint64_t ticks;
};
static_assert(sizeof(TRecordHeader) == 16);

// The longest record: six arguments, each a text or an array at its longest.
constexpr std::size_t kMaxRecordBytes = 2048;
// The longest text or array that is recorded, in bytes.
constexpr std::size_t kMaxTextBytes = 255;
// Lengths that are none.
constexpr std::uint16_t kNullLength = 0xFFFF;

/// Calls of VX_WaitBuffer() and VX_QueueBuffer() that succeeded and have no record each.
struct TFrameCounts
{
  std::uint32_t waits;
  std::uint32_t queued;
  std::uint64_t bytes; ///< of the frames
};

/// What the copies of a call wrote to the caller's array.
struct TPixels
{
  std::uint64_t bytes;
  std::uint64_t
      checksum; ///< XXH3-64 of the pixels; of several images, of the checksums so far and this one's; 0: none
  std::uint32_t images;
  std::uint32_t reserved;
};

/// A part of an image that a call wrote to the caller's array.
struct TPixelPart
{
  std::uint32_t image;  ///< of those of this call, from 1
  std::uint32_t bytes;  ///< of the part
  std::uint64_t offset; ///< of the part in the image
};
constexpr std::size_t kMaxPixelPartBytes = 1984;

} // namespace TraceFormat
