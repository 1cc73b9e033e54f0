// SPDX-License-Identifier: MIT
// The inner loop of noisy frames: from mean electrons to counts.
#pragma once

#include "vxcore/simulated/imaging/TNoiseTable.h"

#include <cstdint>
#include <span>

namespace vxsim {

/// How the pixels of one output row are read out. All sums over binned pixels and accumulated exposures are in
/// here.
struct TRowReadout
{
  float exposureSeconds = 0.0f;   ///< in all accumulations; turns rates into electrons
  float darkElectrons = 0.0f;     ///< mean of the dark current
  float readVariance = 0.0f;      ///< square electrons
  float fullWellElectrons = 0.0f; ///< a mean from here on is saturated and has no shot noise
  float ceilingElectrons = 0.0f;  ///< no pixel passes this
  float countsPerElectron = 1.0f;
  float baselineCounts = 0.0f;    ///< with the half count that rounds
  float maximumCounts = 65535.0f; ///< at most 2147483520
  int shiftBits = 0;              ///< low bits dropped at the end
};

/// Computes counts from electron rates. Every path computes the same bits. Stateless, reentrant.
class TPixelKernel final
{
public:
  enum class EShotNoise
  {
    None,    ///< no noise at all, shot or read-out
    Blended, ///< Poisson up to the least mean of the block, normal for the light above it; means and variances are
             ///< exact, and where read noise hides single electrons the result looks like Exact's
    Exact,   ///< Poisson for every mean below TNoiseTable::kMaxMean, normal for the others; slower
  };

  /// One block of at most TNoiseTable::kBlockPixels, by the fastest path this processor has.
  static void Run(const TRowReadout& readout, EShotNoise noise, const TNoiseDraw& draw,
                  std::span<const float> rates, std::int32_t* counts);

  /// The same on any processor.
  static void RunPortable(const TRowReadout& readout, EShotNoise noise, const TNoiseDraw& draw,
                          std::span<const float> rates, std::int32_t* counts);
};

} // namespace vxsim
