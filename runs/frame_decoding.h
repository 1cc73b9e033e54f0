// SPDX-License-Identifier: MIT
// From the bytes of a frame, as a camera delivers it, to pixels and the camera's clock.
#pragma once

#include "runs/run_format.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string>

/// How many bits a pixel has in memory and in a file; 32-bit pixels are signed.
enum class PixelDepth
{
  Bits8 = 8,
  Bits16 = 16,
  Bits32 = 32,
};

using TPixelBytes = std::span<const std::byte>;

/// The encoding with this name; nothing for another text.
std::optional<RunFormat::Encoding> EncodingOf(const std::string& name);
/// Bytes that the pixels of one row take, without padding.
std::int64_t RowBytes(RunFormat::Encoding encoding, int width);
/// The smallest depth that every pixel of the encoding fits into.
PixelDepth WholeDepth(RunFormat::Encoding encoding);

/// Where the pixels of a frame are.
struct TFrameLayout
{
  RunFormat::Encoding encoding = RunFormat::Encoding::kMono16;
  int width = 0;
  int height = 0;
  std::int64_t stride = 0; ///< bytes from row to row, at least those of a row's pixels
};

/// Whether a frame begins with its pixels of @p depth as DecodeFrame() would put them.
bool IsPlainFrame(const TFrameLayout& layout, PixelDepth depth);

/// Takes the pixels of a frame, of at least stride x height bytes, without the padding of its rows. Pixels are
/// widened as unsigned numbers. Those that do not fit into fewer bits are clipped: they become 0 or the largest number.
/// @param pixels  width x height pixels of @p depth
/// @return the number of pixels that were clipped
long DecodeFrame(TPixelBytes frame, const TFrameLayout& layout, PixelDepth depth, std::span<std::byte> pixels);

/// The clock of the camera from the metadata chunks at the end of a frame; nothing when there is none.
std::optional<long long> FrameTicks(TPixelBytes frame);
