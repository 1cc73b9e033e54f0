// SPDX-License-Identifier: MIT
// Packs counts into the pixel encodings of frame rows.
#include "vxcore/simulated/imaging/TPixelEncoder.h"

#include <cstring>
#include <limits>

namespace vxsim {
namespace {

/// Stores each count as a little-endian word; the row need not be aligned.
template <class Word>
void PutWords(std::span<const std::int32_t> counts, unsigned char* out)
{
  for (std::size_t i = 0; i < counts.size(); ++i) {
    const auto word = static_cast<Word>(counts[i]);
    std::memcpy(out + i * sizeof(Word), &word, sizeof(Word));
  }
}

template <class Word>
void GetWords(const unsigned char* in, std::span<std::int32_t> counts)
{
  for (std::size_t i = 0; i < counts.size(); ++i) {
    Word word;
    std::memcpy(&word, in + i * sizeof(Word), sizeof(Word));
    counts[i] = static_cast<std::int32_t>(word);
  }
}

/// High bytes at the outside, the two low nibbles in the middle: the first pixel's in the low half.
void PutPacked(std::span<const std::int32_t> counts, unsigned char* out)
{
  const std::size_t pairs = counts.size() / 2;
  for (std::size_t i = 0; i < pairs; ++i) {
    const auto first = static_cast<std::uint32_t>(counts[2 * i]);
    const auto second = static_cast<std::uint32_t>(counts[2 * i + 1]);
    out[3 * i] = static_cast<unsigned char>(first >> 4);
    out[3 * i + 1] = static_cast<unsigned char>((first & 0x0Fu) | (second << 4));
    out[3 * i + 2] = static_cast<unsigned char>(second >> 4);
  }
  if (counts.size() % 2 == 0) return;
  const auto last = static_cast<std::uint32_t>(counts.back());
  out[3 * pairs] = static_cast<unsigned char>(last >> 4);
  out[3 * pairs + 1] = static_cast<unsigned char>(last & 0x0Fu);
}

void GetPacked(const unsigned char* in, std::span<std::int32_t> counts)
{
  for (std::size_t i = 0; i < counts.size(); ++i) {
    const unsigned char* group = in + i / 2 * 3;
    counts[i] = i % 2 == 0 ? (group[0] << 4) + (group[1] & 0x0F) : (group[2] << 4) + (group[1] >> 4);
  }
}

} // namespace

int TPixelEncoder::Bits(EPixelEncoding encoding)
{
  switch (encoding) {
  case EPixelEncoding::Mono8:
    return 8;
  case EPixelEncoding::Mono12:
  case EPixelEncoding::Mono12Packed:
    return 12;
  case EPixelEncoding::Mono16:
    return 16;
  case EPixelEncoding::Mono32:
    return 31;
  }
  return 0;
}

std::int32_t TPixelEncoder::MaximumCount(EPixelEncoding encoding)
{
  return static_cast<std::int32_t>((std::int64_t{1} << Bits(encoding)) - 1);
}

void TPixelEncoder::Encode(EPixelEncoding encoding, std::span<const std::int32_t> counts, unsigned char* row,
                           std::size_t firstColumn)
{
  switch (encoding) {
  case EPixelEncoding::Mono8:
    PutWords<std::uint8_t>(counts, row + firstColumn);
    break;
  case EPixelEncoding::Mono12Packed:
    PutPacked(counts, row + firstColumn / 2 * 3);
    break;
  case EPixelEncoding::Mono12:
  case EPixelEncoding::Mono16:
    PutWords<std::uint16_t>(counts, row + 2 * firstColumn);
    break;
  case EPixelEncoding::Mono32:
    PutWords<std::int32_t>(counts, row + 4 * firstColumn);
    break;
  }
}

void TPixelEncoder::Decode(EPixelEncoding encoding, const unsigned char* row, std::span<std::int32_t> counts)
{
  switch (encoding) {
  case EPixelEncoding::Mono8:
    GetWords<std::uint8_t>(row, counts);
    break;
  case EPixelEncoding::Mono12Packed:
    GetPacked(row, counts);
    break;
  case EPixelEncoding::Mono12:
  case EPixelEncoding::Mono16:
    GetWords<std::uint16_t>(row, counts);
    break;
  case EPixelEncoding::Mono32:
    GetWords<std::int32_t>(row, counts);
    break;
  }
}

} // namespace vxsim
