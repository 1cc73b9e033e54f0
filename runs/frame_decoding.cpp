// SPDX-License-Identifier: MIT
// Pixel encodings row by row, and the chunks behind the pixels.
#include "runs/frame_decoding.h"

#include <algorithm>
#include <cstring>
#include <limits>

namespace {

// Frames and files are little-endian, and so is every machine that the library runs on.
constexpr std::int64_t kFieldBytes = RunFormat::kChunkFieldBytes;
constexpr std::int64_t kTrailerBytes = 2 * kFieldBytes; // identifier and length of a chunk

const RunFormat::TEncoding& RowOf(RunFormat::Encoding encoding)
{
  return RunFormat::kEncodings[static_cast<std::size_t>(encoding)];
}

template <typename Pixel>
struct TPlainPixels
{
  const std::byte* row;
  std::uint32_t At(std::size_t index) const
  {
    Pixel value;
    std::memcpy(&value, row + index * sizeof value, sizeof value);
    return value;
  }
};

// Two pixels in three bytes. An odd last pixel takes two.
struct TPackedPixels
{
  const std::byte* row;
  std::uint32_t At(std::size_t index) const
  {
    const std::byte* const group = row + index / 2 * 3;
    const auto middle = std::to_integer<std::uint32_t>(group[1]);
    return index % 2 == 0 ? std::to_integer<std::uint32_t>(group[0]) << 4 | (middle & 0x0F)
                          : std::to_integer<std::uint32_t>(group[2]) << 4 | middle >> 4;
  }
};

// 32-bit pixels are signed; narrower ones are positive numbers here.
template <typename Target>
Target Clip(std::uint32_t value)
{
  if constexpr (sizeof(Target) == sizeof value) {
    return value;
  } else {
    constexpr std::int32_t kLargest = std::numeric_limits<Target>::max();
    return static_cast<Target>(std::clamp(static_cast<std::int32_t>(value), 0, kLargest));
  }
}

template <typename Source, typename Target>
long DecodeRows(const std::byte* frame, const TFrameLayout& layout, std::byte* pixels)
{
  long clipped = 0;
  const auto width = static_cast<std::size_t>(layout.width);
  for (int row = 0; row < layout.height; ++row) {
    const Source source{frame + row * layout.stride};
    std::uint32_t clippedInRow = 0;
    for (std::size_t column = 0; column < width; ++column) {
      const std::uint32_t value = source.At(column);
      const auto kept = Clip<Target>(value);
      clippedInRow += value != std::uint32_t{kept} ? 1 : 0;
      std::memcpy(pixels + column * sizeof kept, &kept, sizeof kept);
    }
    pixels += width * sizeof(Target);
    clipped += clippedInRow;
  }
  return clipped;
}

template <typename Source>
long DecodeTo(const std::byte* frame, const TFrameLayout& layout, PixelDepth depth, std::byte* pixels)
{
  if (depth == PixelDepth::Bits8) return DecodeRows<Source, std::uint8_t>(frame, layout, pixels);
  if (depth == PixelDepth::Bits16) return DecodeRows<Source, std::uint16_t>(frame, layout, pixels);
  return DecodeRows<Source, std::uint32_t>(frame, layout, pixels);
}

std::uint32_t FieldBefore(TPixelBytes frame, std::int64_t end)
{
  std::uint32_t value = 0;
  std::memcpy(&value, frame.data() + end - kFieldBytes, sizeof value);
  return value;
}

} // namespace

std::optional<RunFormat::Encoding> EncodingOf(const std::string& name)
{
  for (std::size_t index = 0; index < RunFormat::kEncodings.size(); ++index)
    if (name == RunFormat::kEncodings[index].name) return static_cast<RunFormat::Encoding>(index);
  return std::nullopt;
}

std::int64_t RowBytes(RunFormat::Encoding encoding, int width)
{
  const std::int64_t pixels = width;
  const int bytes = RowOf(encoding).bytesPerPixel;
  return bytes > 0 ? pixels * bytes : pixels / 2 * 3 + pixels % 2 * 2;
}

PixelDepth WholeDepth(RunFormat::Encoding encoding)
{
  return static_cast<PixelDepth>(RowOf(encoding).bits);
}

bool IsPlainFrame(const TFrameLayout& layout, PixelDepth depth)
{
  return RowOf(layout.encoding).bytesPerPixel * 8 == static_cast<int>(depth) &&
         RowBytes(layout.encoding, layout.width) == layout.stride;
}

long DecodeFrame(TPixelBytes frame, const TFrameLayout& layout, PixelDepth depth, std::span<std::byte> pixels)
{
  switch (layout.encoding) {
  case RunFormat::Encoding::kMono8:
    return DecodeTo<TPlainPixels<std::uint8_t>>(frame.data(), layout, depth, pixels.data());
  case RunFormat::Encoding::kMono12:
  case RunFormat::Encoding::kMono16:
    return DecodeTo<TPlainPixels<std::uint16_t>>(frame.data(), layout, depth, pixels.data());
  case RunFormat::Encoding::kMono12Packed:
    return DecodeTo<TPackedPixels>(frame.data(), layout, depth, pixels.data());
  case RunFormat::Encoding::kMono32:
    return DecodeTo<TPlainPixels<std::uint32_t>>(frame.data(), layout, depth, pixels.data());
  }
  return 0;
}

std::optional<long long> FrameTicks(TPixelBytes frame)
{
  auto end = static_cast<std::int64_t>(frame.size());
  while (end >= kTrailerBytes) {
    const std::int64_t chunkBytes = kFieldBytes + std::int64_t{FieldBefore(frame, end)};
    const std::uint32_t identifier = FieldBefore(frame, end - kFieldBytes);
    if (chunkBytes > end || identifier == RunFormat::kEndChunk)
      return std::nullopt; // other lengths are not checked
    long long ticks = 0;
    if (identifier == RunFormat::kTimestampChunk) {
      if (chunkBytes - kTrailerBytes < static_cast<std::int64_t>(sizeof ticks)) return std::nullopt;
      std::memcpy(&ticks, frame.data() + end - chunkBytes, sizeof ticks);
      return ticks;
    }
    end -= chunkBytes;
  }
  return std::nullopt;
}
