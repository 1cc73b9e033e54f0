// SPDX-License-Identifier: MIT
// Packs counts into the pixel encodings of frame rows.
#pragma once

#include "vxcore/simulated/imaging/TFrameSettings.h"

#include <cstdint>
#include <span>

namespace vxsim {

/// Writes runs of pixels of one row. Stateless, reentrant.
class TPixelEncoder final
{
public:
  /// The largest count of the encoding.
  static std::int32_t MaximumCount(EPixelEncoding encoding);

  /// Bits of an encoding that keeps the top bits of a deeper read-out: 8, 12, 16 or 31.
  static int Bits(EPixelEncoding encoding);

  /// Writes counts from that column on. Counts are 0 to MaximumCount(); firstColumn is even for Mono12Packed,
  /// and only the row's last run may have an odd length there. The row has room for RowBytes(firstColumn +
  /// counts).
  static void Encode(EPixelEncoding encoding, std::span<const std::int32_t> counts, unsigned char* row,
                     std::size_t firstColumn);

  /// Reads what Encode() wrote.
  static void Decode(EPixelEncoding encoding, const unsigned char* row, std::span<std::int32_t> counts);
};

} // namespace vxsim
