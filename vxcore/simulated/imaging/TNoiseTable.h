// SPDX-License-Identifier: MIT
// Random numbers made ahead of time, from which frames take their noise.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

namespace vxsim {

/// Where one block of pixels takes its noise; normal, index and base are good for TNoiseTable::kBlockPixels
/// values.
struct TNoiseDraw
{
  const std::int16_t* normal = nullptr;
  float normalScale = 1.0f; ///< makes the values unit normal; its sign differs from block to block
  const std::uint16_t* index = nullptr;
  const std::uint8_t* base = nullptr;    ///< Poisson values of mean baseMean
  float baseMean = 0.0f;                 ///< at most the least mean of the block
  const std::uint8_t* poisson = nullptr; ///< all Poisson tables, kPoissonStride from one to the next
};

/// Shuffled quantiles of the normal and the uniform distribution, and of Poisson distributions with small means.
/// As whole tables they have exactly the right mean and variance; frames read them from a place that depends on
/// seed, run, frame and block. Built at first use, constant afterwards; thread-safe.
class TNoiseTable final
{
public:
  static constexpr std::size_t kEntries = std::size_t{1} << 20;
  static constexpr std::size_t kBlockPixels = 512;

  /// Poisson tables: one with mean 0, then sixteen to an octave from the smallest to the largest mean inclusive.
  static constexpr int kLevelsPerOctaveLog2 = 4;
  static constexpr float kSmallestMean = 0x1.0p-8f;
  static constexpr float kMaxMean = 8.0f;
  static constexpr std::size_t kLevels = (11 << kLevelsPerOctaveLog2) + 2;
  static constexpr std::size_t kPoissonEntries = 16384;
  static constexpr std::size_t kPoissonStride = kPoissonEntries + kBlockPixels;

  static const TNoiseTable& Shared();

  /// The mean of a Poisson table.
  static double LevelMean(std::size_t level);

  /// The last Poisson table with at most that mean.
  static std::size_t LevelBelow(float mean);

  /// The noise of one block of one frame with at least that mean in every pixel; frameKey is FrameKey()'s.
  TNoiseDraw Draw(std::uint64_t frameKey, std::uint64_t block, float leastMean) const;

  static std::uint64_t FrameKey(std::uint64_t seed, std::uint32_t runNumber, std::uint64_t frameNumber);

private:
  TNoiseTable();
  void MakeNormal();
  void MakeUniform();
  void MakePoisson();

  std::vector<std::int16_t> normal_;
  std::vector<std::uint16_t> uniform_;
  std::vector<std::uint8_t> poisson_;
  float normalScale_ = 1.0f;
};

} // namespace vxsim
