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
  /// A clock value, and where it is, in bytes from the start of the slot.
  struct TClock
  {
    std::int64_t ticks;
    std::uint64_t offset;

    /// Whether @p slot carries this value now. A value that the camera is replacing compares equal only as long as
    /// none of the bytes that change has changed.
    bool IsIn(const unsigned char* slot) const;
  };

  /// What is known of an image.
  struct TImage
  {
    std::optional<TClock> clock; ///< nothing for a frame without a clock value
  };

  /// Throws std::bad_alloc.
  explicit TSlotClocks(std::uint64_t count);

  /// Slot @p index, which starts at @p slot, has image @p image now, with its clock value at @p clock; null for none.
  void Set(std::uint64_t index, std::uint64_t image, const unsigned char* slot, const unsigned char* clock);
  /// Slot @p index has no image that is known.
  void Clear(std::uint64_t index);
  /// No slot has an image. No run may be in progress.
  void ClearAll();
  /// What is known of image @p image; nothing when slot @p index has another.
  std::optional<TImage> Find(std::uint64_t index, std::uint64_t image) const;

private:
  // Zero bytes are an entry without an image, so that fresh memory needs no write.
  struct TEntry
  {
    std::uint64_t image;
    std::int64_t ticks;
    std::uint64_t place; // offset + 1; 0 without a clock value
  };

  struct TFree
  {
    void operator()(TEntry* entries) const { std::free(entries); }
  };

  std::unique_ptr<TEntry[], TFree> entries_;
  std::uint64_t used_ = 0; // entries that were ever set are among the first so many
};
