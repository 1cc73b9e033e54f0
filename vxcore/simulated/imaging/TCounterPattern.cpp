// SPDX-License-Identifier: MIT
// Test frames that show by themselves whether they were lost, swapped, torn or damaged.
#include "vxcore/simulated/imaging/TCounterPattern.h"

#include "vxcore/simulated/imaging/TRandomHash.h"

#include <algorithm>
#include <cstring>

namespace vxsim {
namespace {

constexpr std::size_t kWordBytes = sizeof(std::uint64_t);
constexpr std::uint64_t kStep = 0xD1B54A32D192ED03u; // odd, so that words of a frame do not repeat
constexpr std::size_t kCheckWords = 512;             // compared at a time before looking for the exact place

using TBytes = std::span<unsigned char>;
using TConstBytes = std::span<const unsigned char>;

std::uint32_t SeedHash(std::uint64_t seed)
{
  return static_cast<std::uint32_t>(MixBits(seed) >> 32);
}

/// The first word of a frame's pattern; the word at byte offset 8 i is i steps further.
std::uint64_t PatternKey(std::uint32_t seedHash, std::uint32_t runNumber, std::uint64_t frameNumber)
{
  const std::uint64_t camera = (std::uint64_t{seedHash} << 32) | runNumber;
  return MixBits(MixBits(camera) ^ frameNumber);
}

/// Writes pattern from an offset that is a multiple of the word size.
void PutPattern(TBytes body, std::size_t offset, std::uint64_t key)
{
  std::uint64_t word = key + (offset / kWordBytes) * kStep;
  const std::size_t words = body.size() / kWordBytes;
  unsigned char* out = body.data();
  for (std::size_t i = 0; i < words; ++i) {
    const std::uint64_t value = word + i * kStep;
    std::memcpy(out + i * kWordBytes, &value, kWordBytes);
  }
  word += words * kStep;
  std::memcpy(out + words * kWordBytes, &word, body.size() % kWordBytes);
}

/// Whether count words from the offset on are pattern.
bool IsPattern(const unsigned char* bytes, std::size_t count, std::uint64_t firstWord)
{
  std::uint64_t difference = 0;
  for (std::size_t i = 0; i < count; ++i) {
    std::uint64_t value;
    std::memcpy(&value, bytes + i * kWordBytes, kWordBytes);
    difference |= value ^ (firstWord + i * kStep);
  }
  return difference == 0;
}

/// The offset in the body of the first byte that is not pattern; the body's size when all is.
std::size_t FirstBadByte(TConstBytes body, std::size_t offset, std::uint64_t key)
{
  std::uint64_t word = key + (offset / kWordBytes) * kStep;
  std::size_t at = 0;
  for (; body.size() - at >= kCheckWords * kWordBytes; at += kCheckWords * kWordBytes, word += kCheckWords * kStep)
    if (!IsPattern(body.data() + at, kCheckWords, word)) break;
  for (; at < body.size(); at += kWordBytes, word += kStep) {
    unsigned char expected[kWordBytes];
    std::memcpy(expected, &word, kWordBytes);
    const std::size_t bytes = std::min(kWordBytes, body.size() - at);
    for (std::size_t i = 0; i < bytes; ++i)
      if (body[at + i] != expected[i]) return at + i;
  }
  return body.size();
}

/// Whether the two words behind this byte of the body belong to one frame's pattern: then a frame was torn,
/// otherwise bytes were damaged.
bool IsSomePattern(TConstBytes body, std::size_t byteOffset)
{
  const std::size_t at = (byteOffset + kWordBytes - 1) / kWordBytes * kWordBytes;
  if (at + 2 * kWordBytes > body.size()) return false;
  std::uint64_t words[2];
  std::memcpy(words, body.data() + at, sizeof words);
  return words[1] - words[0] == kStep;
}

TFrameStamp ReadStamp(TConstBytes area, std::size_t offset)
{
  TFrameStamp stamp;
  std::memcpy(&stamp, area.data() + offset, sizeof stamp);
  return stamp;
}

TCounterPattern::TResult CheckBody(TConstBytes area, TConstBytes body, std::uint64_t key,
                                   TCounterPattern::TResult result)
{
  const auto offset = static_cast<std::size_t>(body.data() - area.data());
  const std::size_t bad = FirstBadByte(body, offset, key);
  if (bad == body.size()) return result;
  result.fault = IsSomePattern(body, bad) ? EFrameFault::Torn : EFrameFault::Corrupt;
  result.badByteOffset = offset + bad;
  return result;
}

} // namespace

const char* FrameFaultName(EFrameFault fault)
{
  switch (fault) {
  case EFrameFault::None:
    return "none";
  case EFrameFault::NotStamped:
    return "not stamped";
  case EFrameFault::Truncated:
    return "truncated";
  case EFrameFault::Torn:
    return "torn";
  case EFrameFault::Corrupt:
    return "corrupt";
  case EFrameFault::WrongRun:
    return "wrong run";
  case EFrameFault::WrongFrame:
    return "wrong frame";
  }
  return "unknown";
}

void TCounterPattern::Fill(std::span<unsigned char> area, const TKey& key, EBody body)
{
  const std::uint32_t seedHash = SeedHash(key.seed);
  const bool hasHead = area.size() >= kStampBytes;
  const bool hasTail = area.size() >= 2 * kStampBytes;
  if (hasHead) {
    const TFrameStamp stamp = {kMagic,   key.runNumber, key.frameNumber,
                               key.slot, seedHash,      static_cast<std::uint32_t>(area.size())};
    std::memcpy(area.data(), &stamp, kStampBytes);
    if (hasTail) std::memcpy(area.data() + (area.size() - kStampBytes), &stamp, kStampBytes);
  }
  if (body == EBody::Any || area.empty()) return;
  const std::size_t from = hasHead ? kStampBytes : 0;
  const std::size_t to = hasTail ? area.size() - kStampBytes : area.size();
  PutPattern(area.subspan(from, to - from), from, PatternKey(seedHash, key.runNumber, key.frameNumber));
}

TCounterPattern::TResult TCounterPattern::VerifyAny(std::span<const unsigned char> area, EBody body)
{
  TResult result;
  if (area.size() >= kStampBytes) result.head = ReadStamp(area, 0);
  if (result.head.magic != kMagic) {
    result.head = {};
    result.fault = EFrameFault::NotStamped;
    return result;
  }
  if (result.head.areaBytes != area.size()) {
    result.fault = EFrameFault::Truncated;
    result.badByteOffset = std::min<std::size_t>(result.head.areaBytes, area.size());
    return result;
  }
  const bool hasTail = area.size() >= 2 * kStampBytes;
  const std::size_t bodyEnd = hasTail ? area.size() - kStampBytes : area.size();
  if (hasTail) {
    result.tail = ReadStamp(area, bodyEnd);
    if (result.tail != result.head) {
      result.fault = result.tail.magic == kMagic ? EFrameFault::Torn : EFrameFault::Truncated;
      if (result.fault == EFrameFault::Truncated) result.tail = {};
      result.badByteOffset = bodyEnd;
      return result;
    }
  }
  if (body == EBody::Any) return result;
  const std::uint64_t key = PatternKey(result.head.seedHash, result.head.runNumber, result.head.frameNumber);
  return CheckBody(area, area.subspan(kStampBytes, bodyEnd - kStampBytes), key, result);
}

TCounterPattern::TResult TCounterPattern::Verify(std::span<const unsigned char> area, const TKey& expected,
                                                 EBody body)
{
  const std::uint32_t seedHash = SeedHash(expected.seed);
  if (area.size() < kStampBytes) {
    if (body == EBody::Any) return {};
    return CheckBody(area, area, PatternKey(seedHash, expected.runNumber, expected.frameNumber), {});
  }
  TResult result = VerifyAny(area, body);
  if (result.fault != EFrameFault::None) return result;
  if (result.head.runNumber != expected.runNumber || result.head.seedHash != seedHash)
    result.fault = EFrameFault::WrongRun;
  else if (result.head.frameNumber != expected.frameNumber)
    result.fault = EFrameFault::WrongFrame;
  return result;
}

} // namespace vxsim
