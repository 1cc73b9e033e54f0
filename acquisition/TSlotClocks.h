// SPDX-License-Identifier: MIT
// Which image each slot of a ring has, and the camera's clock value in it.
#pragma once

#include <cstdint>
#include <cstdlib>
#include <memory>
#include <optional>

/// One entry for each slot: the number of the image that was counted last in it, and where in the slot the camera has
/// put which clock value. Owned by the slots' memory (TFrameSlab). The acquisition thread writes; any thread reads. An
/// entry takes memory from its first use on.
class TSlotClocks final
{
public:
  /// The clock value of an image.
  struct TClock
  {
    static constexpr std::int64_t kNowhere = -1;

    std::int64_t ticks;
    std::int64_t offset; ///< in bytes from the start of the slot; kNowhere for a frame without a clock value

    bool IsKnown() const { return offset != kNowhere; }
    /// Whether @p slot now has this value, which must be known. A value that the camera is replacing compares equal
    /// only as long as none of the bytes that differ has been replaced.
    bool IsIn(const unsigned char* slot) const;
  };

  /// Throws std::bad_alloc.
  explicit TSlotClocks(std::uint64_t count);

  /// Slot @p index has image @p image now.
  void Set(std::uint64_t index, std::uint64_t image, TClock clock);
  /// Slot @p index has no image that is known.
  void Clear(std::uint64_t index);
  /// No slot has an image. No run may be in progress.
  void ClearAll();
  /// The clock value of image @p image; nothing when slot @p index has another image.
  std::optional<TClock> Find(std::uint64_t index, std::uint64_t image) const;

private:
  // Zero bytes are an entry without an image, so that fresh memory needs no write.
  struct TEntry
  {
    std::uint64_t image;
    TClock clock;
  };

  struct TFree
  {
    void operator()(TEntry* entries) const { std::free(entries); }
  };

  std::unique_ptr<TEntry[], TFree> entries_;
  std::uint64_t used_ = 0; // entries that were ever set are among the first so many
};
