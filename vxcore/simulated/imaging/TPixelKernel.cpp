// SPDX-License-Identifier: MIT
// The inner loop of noisy frames: from mean electrons to counts.
#include "vxcore/simulated/imaging/TPixelKernel.h"

#include <bit>
#include <cmath>

#if defined(__x86_64__)
#define VXSIM_HAVE_AVX2_PATH 1
#else
#define VXSIM_HAVE_AVX2_PATH 0
#endif

namespace vxsim {
namespace {

constexpr std::size_t kBlock = TNoiseTable::kBlockPixels;
constexpr int kFractionBits = 23 - TNoiseTable::kLevelsPerOctaveLog2; // of a float between two Poisson levels
constexpr std::int32_t kSmallestBits = std::bit_cast<std::int32_t>(TNoiseTable::kSmallestMean);
constexpr int kPoissonLog2 = 14;
constexpr std::int32_t kEntryMask = (1 << kPoissonLog2) - 1;
constexpr int kSpareBits = 16 - kPoissonLog2; // of an index
constexpr std::int32_t kLowNormalMask = 0xFF;
static_assert(TNoiseTable::kPoissonEntries == 1u << kPoissonLog2);

using EShotNoise = TPixelKernel::EShotNoise;

[[gnu::always_inline]] inline std::int32_t ToCounts(const TRowReadout& readout, float electrons)
{
  float counts = electrons * readout.countsPerElectron + readout.baselineCounts;
  counts = counts > 0.0f ? counts : 0.0f;
  counts = counts < readout.maximumCounts ? counts : readout.maximumCounts;
  return static_cast<std::int32_t>(counts) >> readout.shiftBits;
}

[[gnu::always_inline]] inline void NoiseFree(const TRowReadout& readout, const float* rates, std::size_t pixels,
                                             std::int32_t* counts)
{
  for (std::size_t i = 0; i < pixels; ++i) {
    const float mean = rates[i] * readout.exposureSeconds + readout.darkElectrons;
    counts[i] = ToCounts(readout, mean < readout.fullWellElectrons ? mean : readout.fullWellElectrons);
  }
}

[[gnu::always_inline]] inline void BlendedNoise(const TRowReadout& readout, const TNoiseDraw& draw,
                                                const float* rates, std::size_t pixels, std::int32_t* counts)
{
  for (std::size_t i = 0; i < pixels; ++i) {
    const float mean = rates[i] * readout.exposureSeconds + readout.darkElectrons;
    const float capped = mean < readout.fullWellElectrons ? mean : readout.fullWellElectrons;
    const float hasShotNoise =
        mean < readout.fullWellElectrons ? 1.0f : 0.0f; // a factor: compilers keep it a vector
    const float level = capped + (static_cast<float>(draw.base[i]) - draw.baseMean) * hasShotNoise;
    float shotVariance = (mean - draw.baseMean) * hasShotNoise;
    shotVariance = shotVariance > 0.0f ? shotVariance : 0.0f; // 0 too where the mean overflowed
    const float unit = static_cast<float>(draw.normal[i]) * draw.normalScale;
    const float electrons = level + std::sqrt(shotVariance + readout.readVariance) * unit;
    counts[i] = ToCounts(readout, electrons < readout.ceilingElectrons ? electrons : readout.ceilingElectrons);
  }
}

/// The place of a small mean among the Poisson tables, in fixed point: the first table has mean 0, the second the
/// smallest; from there on the bits of a float, being linear within an octave, say it.
[[gnu::always_inline]] inline std::int32_t PlaceOfMean(float mean)
{
  const auto belowSmallest = static_cast<std::int32_t>(mean * ((1 << kFractionBits) / TNoiseTable::kSmallestMean));
  const std::int32_t above = std::bit_cast<std::int32_t>(mean) - kSmallestBits + (1 << kFractionBits);
  return mean < TNoiseTable::kSmallestMean ? belowSmallest : above;
}

/// Draws means from Poisson tables. A mean between two tables takes one of them by chance, so that the mean is
/// right; the tables stand so close that the variance hardly grows by it. The chance is made of the index's spare
/// bits and of the normal value's low bits, which say next to nothing about the value itself. Larger means are
/// drawn as if 0. Returns whether there were any.
[[gnu::always_inline]] inline bool DrawElectrons(const TRowReadout& readout, const TNoiseDraw& draw,
                                                 const float* rates, std::size_t pixels, std::int32_t* electrons)
{
  alignas(64) std::int32_t places[kBlock];
  std::int32_t large = 0;
  for (std::size_t i = 0; i < pixels; ++i) {
    const float mean = rates[i] * readout.exposureSeconds + readout.darkElectrons;
    large += mean < TNoiseTable::kMaxMean ? 0 : 1;
    const std::int32_t chance = ((draw.index[i] >> kPoissonLog2) << (kFractionBits - kSpareBits)) +
                                ((draw.normal[i] & kLowNormalMask) << (kFractionBits - kSpareBits - 8));
    const std::int32_t level =
        ((PlaceOfMean(mean < TNoiseTable::kMaxMean ? mean : 0.0f) + chance) >> kFractionBits);
    places[i] = level * static_cast<std::int32_t>(TNoiseTable::kPoissonStride) + (draw.index[i] & kEntryMask);
  }
  // These reads do not vectorise, so they have a separate loop.
  for (std::size_t i = 0; i < pixels; ++i) electrons[i] = draw.poisson[places[i]];
  return large != 0;
}

[[gnu::always_inline]] inline void ExactNoise(const TRowReadout& readout, const TNoiseDraw& draw,
                                              const float* rates, std::size_t pixels, std::int32_t* counts)
{
  alignas(64) std::int32_t electrons[kBlock];
  if (!DrawElectrons(readout, draw, rates, pixels, electrons)) {
    const float readSigma = std::sqrt(readout.readVariance);
    for (std::size_t i = 0; i < pixels; ++i) {
      const float unit = static_cast<float>(draw.normal[i]) * draw.normalScale;
      const float noisy = static_cast<float>(electrons[i]) + readSigma * unit;
      counts[i] = ToCounts(readout, noisy < readout.ceilingElectrons ? noisy : readout.ceilingElectrons);
    }
    return;
  }
  for (std::size_t i = 0; i < pixels; ++i) {
    const float mean = rates[i] * readout.exposureSeconds + readout.darkElectrons;
    const float capped = mean < readout.fullWellElectrons ? mean : readout.fullWellElectrons;
    const float isLarge = mean < TNoiseTable::kMaxMean ? 0.0f : 1.0f;
    const float hasShotNoise = mean < readout.fullWellElectrons ? isLarge : 0.0f;
    const float level = capped * isLarge + static_cast<float>(electrons[i]); // one of them is 0
    float shotVariance = mean * hasShotNoise;
    shotVariance = shotVariance > 0.0f ? shotVariance : 0.0f;
    const float unit = static_cast<float>(draw.normal[i]) * draw.normalScale;
    const float noisy = level + std::sqrt(shotVariance + readout.readVariance) * unit;
    counts[i] = ToCounts(readout, noisy < readout.ceilingElectrons ? noisy : readout.ceilingElectrons);
  }
}

[[gnu::always_inline]] inline void RunBlock(const TRowReadout& given, EShotNoise noise,
                                            const TNoiseDraw& givenDraw, const float* rates, std::size_t pixels,
                                            std::int32_t* counts)
{
  const TRowReadout readout = given; // copies that stores to counts cannot change, for the vectoriser
  const TNoiseDraw draw = givenDraw;
  switch (noise) {
  case EShotNoise::None:
    NoiseFree(readout, rates, pixels, counts);
    break;
  case EShotNoise::Blended:
    BlendedNoise(readout, draw, rates, pixels, counts);
    break;
  case EShotNoise::Exact:
    ExactNoise(readout, draw, rates, pixels, counts);
    break;
  }
}

#if VXSIM_HAVE_AVX2_PATH
[[gnu::target("avx2")]] void RunAvx2(const TRowReadout& readout, EShotNoise noise, const TNoiseDraw& draw,
                                     const float* rates, std::size_t pixels, std::int32_t* counts)
{
  RunBlock(readout, noise, draw, rates, pixels, counts);
}
#endif

} // namespace

void TPixelKernel::RunPortable(const TRowReadout& readout, EShotNoise noise, const TNoiseDraw& draw,
                               std::span<const float> rates, std::int32_t* counts)
{
  RunBlock(readout, noise, draw, rates.data(), rates.size(), counts);
}

void TPixelKernel::Run(const TRowReadout& readout, EShotNoise noise, const TNoiseDraw& draw,
                       std::span<const float> rates, std::int32_t* counts)
{
#if VXSIM_HAVE_AVX2_PATH
  static const bool hasAvx2 = __builtin_cpu_supports("avx2") != 0;
  if (hasAvx2) return RunAvx2(readout, noise, draw, rates.data(), rates.size(), counts);
#endif
  RunPortable(readout, noise, draw, rates, counts);
}

} // namespace vxsim
