// SPDX-License-Identifier: MIT
// Conversions of whole frames. The layouts that need no work are copied, and the one that needs a little of it is
// changed in registers; all others go through one row of values.
#include "vxcore/genicam/TFrameConverter.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <span>

namespace vxgenicam {

namespace {

constexpr std::size_t kGroupBytes = 3; // two pixels of 12 bits

constexpr bool IsPacked(EPixelFormat format)
{
  return BitsOf(format) == 12;
}

constexpr std::size_t RowBytes(const TFrameShape& shape)
{
  return (shape.width * static_cast<std::size_t>(BitsOf(shape.format)) + 7) / 8 + shape.rowPadding;
}

/// Whether a row of a frame is a row of an image as it is.
constexpr bool IsSameLayout(EPixelFormat format, EEncoding encoding)
{
  switch (encoding) {
  case EEncoding::Mono8:
    return format == EPixelFormat::Mono8;
  case EEncoding::Mono12Packed:
    return format == EPixelFormat::Mono12Packed;
  case EEncoding::Mono32:
    return false;
  default:
    return BitsOf(format) == 16;
  }
}

// One register of pixels. Which part of a byte comes from where repeats every three bytes, and so every three
// registers.
constexpr std::size_t kLaneBytes = 16;
typedef unsigned char TLane
    __attribute__((vector_size(kLaneBytes))); // NOLINT(modernize-use-using): g++ 12 needs it

struct TLaneMasks
{
  TLane same; ///< bits that stay where they are
  TLane fromNext;
  TLane fromHigh; ///< the high half of the same byte becomes the low one
  TLane fromPrevious;
};

TLaneMasks MasksFor(std::size_t lane)
{
  constexpr std::array<unsigned char, kGroupBytes> kSame = {0x00, 0xF0, 0xFF};
  constexpr std::array<unsigned char, kGroupBytes> kFromNext = {0xF0, 0x00, 0x00};
  constexpr std::array<unsigned char, kGroupBytes> kFromHigh = {0x0F, 0x00, 0x00};
  constexpr std::array<unsigned char, kGroupBytes> kFromPrevious = {0x00, 0x0F, 0x00};
  TLaneMasks masks{};
  for (std::size_t index = 0; index < kLaneBytes; ++index) {
    const std::size_t position = (lane * kLaneBytes + index) % kGroupBytes;
    masks.same[index] = kSame[position];
    masks.fromNext[index] = kFromNext[position];
    masks.fromHigh[index] = kFromHigh[position];
    masks.fromPrevious[index] = kFromPrevious[position];
  }
  return masks;
}

TLane Load(const unsigned char* from)
{
  TLane lane;
  std::memcpy(&lane, from, sizeof lane);
  return lane;
}

void RepackLane(const unsigned char* from, unsigned char* to, const TLaneMasks& masks)
{
  const TLane here = Load(from);
  const TLane repacked = (here & masks.same) | ((Load(from + 1) << 4) & masks.fromNext) |
                         ((here >> 4) & masks.fromHigh) | (Load(from - 1) & masks.fromPrevious);
  std::memcpy(to, &repacked, sizeof repacked);
}

void RepackGroup(const unsigned char* from, unsigned char* to)
{
  const unsigned char first = from[0];
  to[0] = static_cast<unsigned char>((from[1] & 0x0F) << 4 | first >> 4);
  to[1] = static_cast<unsigned char>((from[1] & 0xF0) | (first & 0x0F));
  to[2] = from[2];
}

// Values of a packed row. @p Low: whether a group's first byte has the low bits of its first pixel (Mono12p).
template <bool Low>
std::uint32_t FirstOfGroup(const unsigned char* group)
{
  const auto first = static_cast<std::uint32_t>(group[0]);
  const auto shared = static_cast<std::uint32_t>(group[1] & 0x0F);
  return Low ? shared << 8 | first : first << 4 | shared;
}

std::uint32_t SecondOfGroup(const unsigned char* group)
{
  return static_cast<std::uint32_t>(group[2]) << 4 | group[1] >> 4;
}

template <bool Low>
void UnpackGroups(const unsigned char* group, bool isSecond, std::span<std::uint32_t> values)
{
  for (std::uint32_t& value : values) {
    value = isSecond ? SecondOfGroup(group) : FirstOfGroup<Low>(group);
    if (isSecond) group += kGroupBytes;
    isSecond = !isSecond;
  }
}

} // namespace

void RepackGroups(const unsigned char* from, unsigned char* to, std::size_t groups)
{
  static const TLaneMasks kFirst = MasksFor(0);
  static const TLaneMasks kSecond = MasksFor(1);
  static const TLaneMasks kThird = MasksFor(2);
  constexpr std::size_t kGroupsAtOnce = kLaneBytes; // in three registers
  const unsigned char* const end = from + groups * kGroupBytes;
  const auto repackOne = [&from, &to] {
    RepackGroup(from, to);
    from += kGroupBytes;
    to += kGroupBytes;
  };
  if (from != end) repackOne(); // a register reads one byte before and one behind it
  while (static_cast<std::size_t>(end - from) > kGroupsAtOnce * kGroupBytes) {
    RepackLane(from, to, kFirst);
    RepackLane(from + kLaneBytes, to + kLaneBytes, kSecond);
    RepackLane(from + 2 * kLaneBytes, to + 2 * kLaneBytes, kThird);
    from += kGroupsAtOnce * kGroupBytes;
    to += kGroupsAtOnce * kGroupBytes;
  }
  while (from != end) repackOne();
}

std::size_t TFrameShape::Bytes() const
{
  if (rowPadding > 0) return RowBytes(*this) * height;
  return (width * height * static_cast<std::size_t>(BitsOf(format)) + 7) / 8;
}

TFrameConverter::TFrameConverter(const TFrameShape& shape, const TCrop& crop, EEncoding encoding)
    : shape_(shape), crop_(crop), encoding_(encoding), stride_(StrideOf(encoding, crop.width)), row_(crop.width)
{
}

TFrameConverter::TPlace TFrameConverter::PlaceOf(std::size_t row) const
{
  const std::size_t line = crop_.top + row;
  if (!IsPacked(shape_.format))
    return {line * RowBytes(shape_) + crop_.left * static_cast<std::size_t>(BitsOf(shape_.format)) / 8, false};
  const bool isGapless = shape_.rowPadding == 0;
  const std::size_t pixel = isGapless ? line * shape_.width + crop_.left : crop_.left;
  return {(isGapless ? 0 : line * RowBytes(shape_)) + pixel / 2 * kGroupBytes, pixel % 2 != 0};
}

void TFrameConverter::Convert(const unsigned char* frame, unsigned char* image)
{
  const bool isCopied = IsSameLayout(shape_.format, encoding_);
  const bool isRepacked = shape_.format == EPixelFormat::Mono12p && encoding_ == EEncoding::Mono12Packed;
  const bool isOdd = IsPacked(shape_.format) && crop_.width % 2 != 0;
  // Whole frames without a gap are one row.
  const bool isWhole = crop_.width == shape_.width && shape_.rowPadding == 0 && !isOdd && (isCopied || isRepacked);
  const std::size_t rows = isWhole ? 1 : crop_.height;
  const std::size_t bytes = isWhole ? ImageBytes() : stride_;
  for (std::size_t row = 0; row < rows; ++row) {
    unsigned char* const to = image + row * stride_;
    const TPlace place = PlaceOf(row);
    if ((!isCopied && !isRepacked) || place.isSecond || isOdd) {
      UnpackRow(frame, row);
      PackRow(to);
    } else if (isCopied)
      std::memcpy(to, frame + place.byte, bytes);
    else
      RepackGroups(frame + place.byte, to, bytes / kGroupBytes);
  }
}

void TFrameConverter::Add(const unsigned char* frame)
{
  sums_.resize(crop_.width * crop_.height);
  std::uint32_t* sum = sums_.data();
  for (std::size_t row = 0; row < crop_.height; ++row) {
    UnpackRow(frame, row);
    for (const std::uint32_t value : row_) {
      const std::uint32_t room = MaximumOf(EEncoding::Mono32) - *sum;
      *sum++ += std::min(value, room);
    }
  }
}

void TFrameConverter::TakeSums(unsigned char* image)
{
  const std::uint32_t maximum = MaximumOf(encoding_);
  const std::uint32_t* sum = sums_.data();
  for (std::size_t row = 0; row < crop_.height; ++row) {
    for (std::uint32_t& value : row_) value = std::min(*sum++, maximum);
    PackRow(image + row * stride_);
  }
  sums_.assign(sums_.size(), 0);
}

void TFrameConverter::UnpackRow(const unsigned char* frame, std::size_t row)
{
  const TPlace place = PlaceOf(row);
  const unsigned char* from = frame + place.byte;
  switch (shape_.format) {
  case EPixelFormat::Mono12p:
    return UnpackGroups<true>(from, place.isSecond, row_);
  case EPixelFormat::Mono12Packed:
    return UnpackGroups<false>(from, place.isSecond, row_);
  case EPixelFormat::Mono8:
    for (std::uint32_t& value : row_) value = *from++;
    return;
  default:
    for (std::uint32_t& value : row_) {
      value = static_cast<std::uint32_t>(from[0] | from[1] << 8);
      from += 2;
    }
  }
}

void TFrameConverter::PackRow(unsigned char* image) const
{
  switch (encoding_) {
  case EEncoding::Mono8:
    for (const std::uint32_t value : row_) *image++ = static_cast<unsigned char>(value);
    return;
  case EEncoding::Mono12Packed:
    for (std::size_t pixel = 0; pixel < row_.size(); pixel += 2) {
      const std::uint32_t first = row_[pixel];
      const bool hasSecond = pixel + 1 < row_.size();
      const std::uint32_t second = hasSecond ? row_[pixel + 1] : 0;
      *image++ = static_cast<unsigned char>(first >> 4);
      *image++ = static_cast<unsigned char>((second & 0x0F) << 4 | (first & 0x0F));
      if (hasSecond) *image++ = static_cast<unsigned char>(second >> 4);
    }
    return;
  case EEncoding::Mono32:
    std::memcpy(image, row_.data(), row_.size() * sizeof row_[0]);
    return;
  default:
    for (const std::uint32_t value : row_) {
      *image++ = static_cast<unsigned char>(value);
      *image++ = static_cast<unsigned char>(value >> 8);
    }
  }
}

} // namespace vxgenicam
