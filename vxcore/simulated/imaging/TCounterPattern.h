// SPDX-License-Identifier: MIT
// Test frames that show by themselves whether they were lost, swapped, torn or damaged.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

namespace vxsim {

/// What is at the head and at the tail of a test frame, as it is in memory.
struct TFrameStamp
{
  std::uint32_t magic = 0;
  std::uint32_t runNumber = 0;
  std::uint64_t frameNumber = 0;
  std::uint64_t slot = 0;      ///< where the frame was delivered, as the camera saw it
  std::uint32_t seedHash = 0;  ///< of the camera's seed, so that two cameras' frames differ
  std::uint32_t areaBytes = 0; ///< length of the stamped area

  bool operator==(const TFrameStamp&) const = default;
};
static_assert(sizeof(TFrameStamp) == 32);

/// What is wrong with a test frame. Checked in this order, the first that applies is reported.
enum class EFrameFault
{
  None,
  NotStamped, ///< no stamp at the head: not a test frame, or its beginning is destroyed
  Truncated,  ///< the head says another length, or there is no stamp where the tail should be
  Torn,       ///< head and tail, or head and pattern, are of different frames
  Corrupt,    ///< bytes between are neither this frame's pattern nor another's
  WrongRun,   ///< sound, but of another run or camera
  WrongFrame, ///< sound, but not the frame expected
};

const char* FrameFaultName(EFrameFault fault);

/// Makes and checks test frames. Stateless, reentrant.
/// An area of at least 64 bytes has a stamp at each end; from 32 bytes on only the head is stamped; a smaller one
/// is pattern alone, and any other frame in its place is reported as Corrupt.
class TCounterPattern final
{
public:
  static constexpr std::uint32_t kMagic = 0x4D465856; // "VXFM"
  static constexpr std::size_t kStampBytes = sizeof(TFrameStamp);

  enum class EBody
  {
    Pattern, ///< the bytes between the stamps are the pattern
    Any,     ///< they are not written and not looked at
  };

  struct TKey
  {
    std::uint64_t seed = 0;
    std::uint32_t runNumber = 0;
    std::uint64_t frameNumber = 0;
    std::uint64_t slot = 0;
  };

  struct TResult
  {
    EFrameFault fault = EFrameFault::None;
    TFrameStamp head;              ///< as read; all zero when the area has none
    TFrameStamp tail;              ///< as read; all zero when the area has none
    std::size_t badByteOffset = 0; ///< first byte that differs, for Truncated, Torn and Corrupt

    explicit operator bool() const { return fault == EFrameFault::None; }
  };

  /// Writes the whole area (with EBody::Any only its stamps).
  static void Fill(std::span<unsigned char> area, const TKey& key, EBody body = EBody::Pattern);

  /// Checks the area against the frame expected; the slot is compared between head and tail only.
  static TResult Verify(std::span<const unsigned char> area, const TKey& expected, EBody body = EBody::Pattern);

  /// The same without an expectation: is this a whole frame, whichever it is? Needs an area of at least 32 bytes.
  static TResult VerifyAny(std::span<const unsigned char> area, EBody body = EBody::Pattern);
};

} // namespace vxsim
