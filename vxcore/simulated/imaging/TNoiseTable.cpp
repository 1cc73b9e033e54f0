// SPDX-License-Identifier: MIT
// Random numbers made ahead of time, from which frames take their noise.
#include "vxcore/simulated/imaging/TNoiseTable.h"

#include "vxcore/simulated/imaging/TRandomHash.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <numbers>
#include <numeric>
#include <utility>

namespace vxsim {
namespace {

constexpr double kNormalStep = 4096.0; // integer steps to one standard deviation
constexpr std::uint64_t kShuffleSeed = 0x76787369;

template <class Value>
void Shuffle(std::vector<Value>& values, std::uint64_t stream)
{
  TRandomHash random(kShuffleSeed, stream);
  for (std::size_t i = values.size() - 1; i > 0; --i) std::swap(values[i], values[random.NextBelow(i + 1)]);
}

/// Repeats the table's beginning behind its end, so that a block may start at any entry.
template <class Value>
void WrapAround(std::vector<Value>& values)
{
  values.reserve(values.size() + TNoiseTable::kBlockPixels);
  for (std::size_t i = 0; i < TNoiseTable::kBlockPixels; ++i) values.push_back(values[i]);
}

/// The point below which a normal value is with that probability; start is at or above it and below 0.
double NormalQuantile(double probability, double start)
{
  constexpr double kDensityAtZero = 0.5 * std::numbers::inv_sqrtpi * std::numbers::sqrt2;
  double z = start;
  for (int i = 0; i < 50; ++i) {
    const double excess = 0.5 * std::erfc(-z / std::numbers::sqrt2) - probability;
    const double step = excess / (kDensityAtZero * std::exp(-0.5 * z * z));
    z -= step;
    if (std::abs(step) < 1e-7) break;
  }
  return z;
}

} // namespace

// Never destroyed: a program may end in the middle of a run, which reads it to the last.
const TNoiseTable& TNoiseTable::Shared()
{
  static const TNoiseTable& table = *new TNoiseTable;
  return table;
}

TNoiseTable::TNoiseTable()
{
  MakeNormal();
  MakeUniform();
  MakePoisson();
}

void TNoiseTable::MakeNormal()
{
  normal_.reserve(kEntries + kBlockPixels);
  double z = 0.0;
  double squares = 0.0;
  for (std::size_t i = 0; i < kEntries / 2; ++i) {
    z = NormalQuantile(0.5 - (static_cast<double>(i) + 0.5) / kEntries, z);
    const auto value = static_cast<std::int16_t>(std::lround(z * kNormalStep));
    normal_.push_back(value);
    normal_.push_back(static_cast<std::int16_t>(-value));
    squares += 2.0 * value * value;
  }
  normalScale_ = static_cast<float>(1.0 / std::sqrt(squares / kEntries));
  Shuffle(normal_, 1);
  WrapAround(normal_);
}

void TNoiseTable::MakeUniform()
{
  uniform_.reserve(kEntries + kBlockPixels);
  for (std::size_t i = 0; i < kEntries; ++i) uniform_.push_back(static_cast<std::uint16_t>(i));
  Shuffle(uniform_, 2);
  WrapAround(uniform_);
}

double TNoiseTable::LevelMean(std::size_t level)
{
  constexpr std::size_t kPerOctave = std::size_t{1} << kLevelsPerOctaveLog2;
  if (level == 0) return 0.0;
  const std::size_t step = level - 1;
  const double octave = std::ldexp(static_cast<double>(kSmallestMean), static_cast<int>(step / kPerOctave));
  return octave * (1.0 + static_cast<double>(step % kPerOctave) / kPerOctave);
}

std::size_t TNoiseTable::LevelBelow(float mean)
{
  if (mean < kSmallestMean) return 0;
  if (!(mean < kMaxMean)) return kLevels - 1; // also what overflowed to no number
  const auto steps = std::bit_cast<std::uint32_t>(mean) - std::bit_cast<std::uint32_t>(kSmallestMean);
  return 1 + (steps >> (23 - kLevelsPerOctaveLog2));
}

void TNoiseTable::MakePoisson()
{
  std::vector<std::uint16_t> order(kPoissonEntries); // the same shuffle does for every table
  std::iota(order.begin(), order.end(), std::uint16_t{0});
  Shuffle(order, 3);
  poisson_.reserve(kLevels * kPoissonStride);
  std::vector<std::uint8_t> sorted;
  for (std::size_t level = 0; level < kLevels; ++level) {
    const double mean = LevelMean(level);
    std::vector<long> entriesOf; // how many entries have each number of electrons
    double probability = std::exp(-mean);
    double below = probability;
    long placed = 0;
    for (int electrons = 0; placed < static_cast<long>(kPoissonEntries) && electrons < 64; ++electrons) {
      const long upTo = std::lround(std::min(1.0, below) * kPoissonEntries);
      entriesOf.push_back(upTo - placed);
      placed = upTo;
      probability *= mean / (electrons + 1);
      below += probability;
    }
    // Rounding leaves the mean some entries off: move as many from the most frequent number to a neighbour.
    long missing = std::lround(mean * kPoissonEntries);
    for (std::size_t electrons = 0; electrons < entriesOf.size(); ++electrons)
      missing -= static_cast<long>(electrons) * entriesOf[electrons];
    const auto most =
        static_cast<std::size_t>(std::max_element(entriesOf.begin(), entriesOf.end()) - entriesOf.begin());
    if (most + 1 == entriesOf.size()) entriesOf.push_back(0);
    const std::size_t from = missing >= 0 ? most : most + 1;
    const std::size_t to = missing >= 0 ? most + 1 : most;
    entriesOf[from] -= std::abs(missing);
    entriesOf[to] += std::abs(missing);
    sorted.clear();
    for (std::size_t electrons = 0; electrons < entriesOf.size(); ++electrons)
      sorted.insert(sorted.end(), static_cast<std::size_t>(entriesOf[electrons]),
                    static_cast<std::uint8_t>(electrons));
    for (std::size_t i = 0; i < kPoissonStride; ++i) // the last block's worth runs on at the table's beginning
      poisson_.push_back(sorted[order[i % kPoissonEntries]]);
  }
}

TNoiseDraw TNoiseTable::Draw(std::uint64_t frameKey, std::uint64_t block, float leastMean) const
{
  const std::uint64_t bits = MixBits(frameKey ^ (block * 0x9E3779B97F4A7C15u));
  TNoiseDraw draw;
  draw.normal = normal_.data() + (bits & (kEntries - 1));
  draw.index = uniform_.data() + ((bits >> 20) & (kEntries - 1));
  draw.normalScale = (bits >> 63) != 0 ? -normalScale_ : normalScale_;
  const std::size_t level = LevelBelow(leastMean);
  draw.base = poisson_.data() + level * kPoissonStride + ((bits >> 40) & (kPoissonEntries - 1));
  draw.baseMean = static_cast<float>(LevelMean(level));
  draw.poisson = poisson_.data();
  return draw;
}

std::uint64_t TNoiseTable::FrameKey(std::uint64_t seed, std::uint32_t runNumber, std::uint64_t frameNumber)
{
  return MixBits(MixBits(MixBits(seed) ^ runNumber) ^ frameNumber);
}

} // namespace vxsim
