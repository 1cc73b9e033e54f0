// SPDX-License-Identifier: MIT
// Frames of the simulated cameras: physics, geometry and encodings.
#include "vxcore/simulated/imaging/TCounterPattern.h"
#include "vxcore/simulated/imaging/TFrameRenderer.h"
#include "vxcore/simulated/imaging/TPixelEncoder.h"
#include "vxcore/simulated/imaging/TPixelKernel.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <gtest/gtest.h>
#include <numeric>
#include <span>
#include <thread>
#include <vector>

using namespace vxsim;

namespace {

using TBytes = std::vector<unsigned char>;
using TCounts = std::vector<std::int32_t>;

/// An evenly lit sensor that shows nothing but what a test sets.
TFrameSettings PlainSettings(int side)
{
  TFrameSettings settings;
  settings.sensor.widthPixels = side;
  settings.sensor.heightPixels = side;
  settings.sensor.darkElectronsPerSecond = 0.0;
  settings.sensor.hotPixelFraction = 0.0;
  settings.sensor.quantumEfficiency = 1.0;
  settings.geometry.widthPixels = side;
  settings.geometry.heightPixels = side;
  settings.scene.kind = ESceneKind::Flat;
  settings.exposure.exposureSeconds = 1.0;
  return settings;
}

TBytes RenderBytes(TFrameRenderer& renderer, const TFrameSettings& settings)
{
  TBytes bytes(PixelAreaBytes(settings.geometry), 0xAA);
  EXPECT_TRUE(renderer.Render(settings, bytes)) << renderer.LastError();
  return bytes;
}

TCounts RenderCounts(TFrameRenderer& renderer, const TFrameSettings& settings)
{
  const TBytes bytes = RenderBytes(renderer, settings);
  const auto width = static_cast<std::size_t>(settings.geometry.widthPixels);
  const auto height = static_cast<std::size_t>(settings.geometry.heightPixels);
  TCounts counts(width * height);
  for (std::size_t row = 0; row < height; ++row)
    TPixelEncoder::Decode(settings.geometry.encoding, bytes.data() + row * StrideBytes(settings.geometry),
                          std::span(counts).subspan(row * width, width));
  return counts;
}

TCounts RenderCounts(const TFrameSettings& settings)
{
  TFrameRenderer renderer;
  return RenderCounts(renderer, settings);
}

double Mean(const TCounts& counts)
{
  return std::accumulate(counts.begin(), counts.end(), 0.0) / static_cast<double>(counts.size());
}

TCounts SumBins(const TCounts& full, int side, int horizontalBin, int verticalBin)
{
  const int width = side / horizontalBin;
  TCounts sums(static_cast<std::size_t>(width * (side / verticalBin)), 0);
  for (int y = 0; y < side; ++y)
    for (int x = 0; x < side; ++x)
      sums[static_cast<std::size_t>(y / verticalBin * width + x / horizontalBin)] +=
          full[static_cast<std::size_t>(y * side + x)];
  return sums;
}

} // namespace

TEST(FrameNoise, SmallMeansArePoissonDistributed)
{
  TFrameSettings settings = PlainSettings(512);
  settings.readout.gainElectronsPerCount = 1.0;
  settings.readout.readNoiseElectrons = 0.0;
  settings.readout.baselineCounts = 10.0;
  for (const double mean : {0.002, 0.11, 1.37, 6.3}) {
    settings.scene.flatPhotonsPerSecond = mean;
    const TCounts counts = RenderCounts(settings);
    double probability = std::exp(-mean);
    for (int electrons = 0; electrons < 20; probability *= mean / ++electrons) {
      const auto seen = std::count(counts.begin(), counts.end(), 10 + electrons);
      const double expected = probability * static_cast<double>(counts.size());
      EXPECT_NEAR(static_cast<double>(seen), expected, 5.0 * std::sqrt(expected) + 0.02 * expected + 70.0)
          << mean << " electrons on average, " << electrons << " seen";
    }
  }
}

TEST(Saturation, StopsAtFullWellAndAtTheConverter)
{
  TFrameSettings settings = PlainSettings(64);
  settings.scene.flatPhotonsPerSecond = 1e7;
  settings.readout.readNoiseElectrons = 2.0;
  settings.readout.gainElectronsPerCount = 1.0;
  settings.sensor.fullWellElectrons = 20000.0;
  TCounts counts = RenderCounts(settings); // the well is full below the converter's end: read noise remains
  EXPECT_NEAR(Mean(counts), 20100.0, 1.0);
  EXPECT_LE(*std::max_element(counts.begin(), counts.end()), 20100 + 9);
  EXPECT_GT(*std::max_element(counts.begin(), counts.end()), *std::min_element(counts.begin(), counts.end()));

  settings.readout.gainElectronsPerCount = 0.5;
  settings.readout.bitDepth = 12;
  counts = RenderCounts(settings);
  EXPECT_EQ(counts, TCounts(counts.size(), 4095));

  settings.exposure.accumulations = 3; // every exposure saturates by itself
  settings.geometry.encoding = EPixelEncoding::Mono32;
  counts = RenderCounts(settings);
  EXPECT_EQ(counts, TCounts(counts.size(), 3 * 4095));
}

TEST(Baseline, WandersOnlyUnclamped)
{
  TFrameSettings settings = PlainSettings(16);
  settings.scene.kind = ESceneKind::Dark;
  settings.scene.noise = false;
  settings.readout.gainElectronsPerCount = 0.01;
  const auto spread = [&settings] {
    std::vector<std::int32_t> levels;
    for (settings.exposure.sceneSeconds = 0; settings.exposure.sceneSeconds < 40; ++settings.exposure.sceneSeconds)
      levels.push_back(RenderCounts(settings).front());
    const auto [low, high] = std::ranges::minmax(levels);
    return high - low;
  };
  EXPECT_EQ(spread(), 0);
  settings.readout.baselineClamp = false;
  EXPECT_GE(spread(), 2);
  EXPECT_LE(spread(), 6);
}

TEST(Geometry, CropIsThePartOfTheWholePicture)
{
  TFrameRenderer renderer;
  for (const auto kind : {ESceneKind::StarField, ESceneKind::Beads, ESceneKind::ResolutionChart,
                          ESceneKind::Gradient, ESceneKind::Dark}) {
    TFrameSettings settings = PlainSettings(300);
    settings.sensor.darkElectronsPerSecond = 50.0;
    settings.sensor.hotPixelFraction = 0.01;
    settings.scene.kind = kind;
    settings.scene.noise = false;
    settings.exposure.exposureSeconds = 0.02;
    settings.exposure.sceneSeconds = 3.7;
    const TCounts full = RenderCounts(renderer, settings);
    EXPECT_GT(*std::max_element(full.begin(), full.end()), 300) << SceneName(kind);
    settings.geometry.leftPixels = 45;
    settings.geometry.topPixels = 130;
    settings.geometry.widthPixels = 211;
    settings.geometry.heightPixels = 170;
    const TCounts part = RenderCounts(renderer, settings);
    std::size_t different = 0;
    for (std::size_t y = 0; y < 170; ++y)
      for (std::size_t x = 0; x < 211; ++x) different += part[y * 211 + x] != full[(y + 130) * 300 + x + 45];
    EXPECT_EQ(different, 0u) << SceneName(kind);
  }
}

TEST(Geometry, BinsAndTracksSumTheSignal)
{
  TFrameSettings settings = PlainSettings(240);
  settings.scene.kind = ESceneKind::Beads;
  settings.scene.noise = false;
  settings.geometry.encoding = EPixelEncoding::Mono32;
  settings.readout.baselineCounts = 0.0;
  settings.readout.gainElectronsPerCount = 0.01; // fine counts, so that their rounding does not hide a wrong sum
  settings.exposure.exposureSeconds = 0.001;
  TFrameRenderer renderer;
  const TCounts full = RenderCounts(renderer, settings);
  const auto expectSums = [](const TCounts& got, const TCounts& sums, int pixelsSummed) {
    ASSERT_EQ(got.size(), sums.size());
    for (std::size_t i = 0; i < got.size(); ++i)
      ASSERT_NEAR(got[i], sums[i], 0.5 * pixelsSummed + 1.0 + 1e-5 * sums[i]) << i;
  };

  settings.geometry.horizontalBin = 3;
  settings.geometry.verticalBin = 4;
  settings.geometry.widthPixels = 80;
  settings.geometry.heightPixels = 60;
  expectSums(RenderCounts(renderer, settings), SumBins(full, 240, 3, 4), 12);

  settings.geometry.horizontalBin = 1;
  settings.geometry.widthPixels = 240;
  settings.geometry.heightPixels = 3;
  settings.geometry.tracks = {{150, 20}, {0, 1}, {160, 80}}; // not in order, and overlapping
  TCounts sums(3 * 240, 0);
  for (std::size_t track = 0; track < 3; ++track)
    for (int row = 0; row < settings.geometry.tracks[track].rowCount; ++row)
      for (std::size_t x = 0; x < 240; ++x)
        sums[track * 240 + x] +=
            full[static_cast<std::size_t>(settings.geometry.tracks[track].topRow + row) * 240 + x];
  expectSums(RenderCounts(renderer, settings), sums, 80);
}

TEST(FrameRenderer, SameSettingsGiveSameBytesInAnyOrderOnAnyThread)
{
  for (const auto kind : {ESceneKind::StarField, ESceneKind::Beads, ESceneKind::Dark}) {
    TFrameSettings settings = PlainSettings(200);
    settings.sensor.darkElectronsPerSecond = 0.5;
    settings.sensor.hotPixelFraction = 0.001;
    settings.scene.kind = kind;
    settings.exposure.exposureSeconds = 0.01;
    constexpr std::size_t kFrames = 6;
    const auto at = [settings](std::size_t frame) {
      TFrameSettings result = settings;
      result.exposure.frameNumber = frame;
      result.exposure.sceneSeconds = 0.9 * static_cast<double>(frame);
      result.exposure.sensorCelsius = -0.5 * static_cast<double>(frame);
      return result;
    };
    std::vector<TBytes> forward(kFrames);
    std::vector<TBytes> backward(kFrames);
    std::thread other([&] {
      TFrameRenderer renderer;
      for (std::size_t frame = kFrames; frame-- > 0;) backward[frame] = RenderBytes(renderer, at(frame));
    });
    for (std::size_t frame = 0; frame < kFrames; ++frame) {
      TFrameRenderer fresh;
      forward[frame] = RenderBytes(fresh, at(frame));
    }
    other.join();
    EXPECT_EQ(forward, backward) << SceneName(kind);
    EXPECT_NE(forward[0], forward[1]);
  }
}

TEST(PixelKernel, PortableAndFastPathAgreeBitForBit)
{
  std::vector<float> rates(TNoiseTable::kBlockPixels - 3);
  for (std::size_t i = 0; i < rates.size(); ++i)
    rates[i] = static_cast<float>(std::pow(1.04, static_cast<double>(i))) * 1e-4f; // from nothing to saturation
  TRowReadout readout;
  readout.exposureSeconds = 1.3f;
  readout.darkElectrons = 0.001f;
  readout.readVariance = 1.7f;
  readout.fullWellElectrons = 20000.0f;
  readout.ceilingElectrons = 20006.0f;
  readout.countsPerElectron = 1.9f;
  readout.baselineCounts = 100.5f;
  using EShotNoise = TPixelKernel::EShotNoise;
  for (const auto noise : {EShotNoise::None, EShotNoise::Blended, EShotNoise::Exact})
    for (const std::size_t first : {std::size_t{0}, rates.size() / 4}) {
      TCounts fast(rates.size(), -1);
      TCounts portable(rates.size(), -1);
      const auto block = std::span<const float>(rates).subspan(0, rates.size() - first);
      for (std::uint64_t frame = 0; frame < 50; ++frame) {
        const TNoiseDraw draw = TNoiseTable::Shared().Draw(TNoiseTable::FrameKey(7, 1, frame), frame, 0.0011f);
        TPixelKernel::Run(readout, noise, draw, block, fast.data());
        TPixelKernel::RunPortable(readout, noise, draw, block, portable.data());
        ASSERT_EQ(fast, portable) << static_cast<int>(noise);
      }
    }
}

TEST(PixelEncoder, PackedPixelsLieHighBytesOutsideLowNibblesInside)
{
  const TCounts pixels = {0x124, 0x563, 0x78A};
  TBytes row(5, 0xFF);
  TPixelEncoder::Encode(EPixelEncoding::Mono12Packed, pixels, row.data(), 0);
  EXPECT_EQ(row, (TBytes{0x12, 0x34, 0x56, 0x78, 0x0A}));
  EXPECT_EQ(RowBytes(EPixelEncoding::Mono12Packed, 3), 5u);
}

TEST(PixelEncoder, EveryEncodingRoundTrips)
{
  for (const auto encoding : {EPixelEncoding::Mono8, EPixelEncoding::Mono12, EPixelEncoding::Mono12Packed,
                              EPixelEncoding::Mono16, EPixelEncoding::Mono32}) {
    EPixelEncoding named{};
    ASSERT_TRUE(EncodingFromName(EncodingName(encoding), named));
    EXPECT_EQ(named, encoding);
    TCounts pixels(77);
    for (std::size_t i = 0; i < pixels.size(); ++i)
      pixels[i] = static_cast<std::int32_t>((i * 123457u + 5u) &
                                            static_cast<unsigned>(TPixelEncoder::MaximumCount(encoding)));
    pixels[3] = TPixelEncoder::MaximumCount(encoding);
    TBytes row(RowBytes(encoding, 77));
    TPixelEncoder::Encode(encoding, std::span(pixels).first(40), row.data(), 0);
    TPixelEncoder::Encode(encoding, std::span(pixels).subspan(40), row.data(), 40);
    TCounts back(pixels.size());
    TPixelEncoder::Decode(encoding, row.data(), back);
    EXPECT_EQ(back, pixels) << EncodingName(encoding);
  }
}

TEST(CounterPattern, SeesEveryKindOfDamage)
{
  for (const std::size_t size : {std::size_t{64}, std::size_t{65}, std::size_t{128}, std::size_t{20011}}) {
    const TCounterPattern::TKey key{5, 2, 1000, 0xDEADBEEF};
    TBytes frame(size);
    TCounterPattern::Fill(frame, key);
    const auto sound = TCounterPattern::Verify(frame, key);
    EXPECT_TRUE(sound);
    EXPECT_EQ(sound.head.slot, 0xDEADBEEFu);
    EXPECT_EQ(sound.tail, sound.head);

    EXPECT_EQ(TCounterPattern::Verify(frame, {5, 2, 1001, 0}).fault, EFrameFault::WrongFrame);
    EXPECT_EQ(TCounterPattern::Verify(frame, {5, 3, 1000, 0}).fault, EFrameFault::WrongRun);
    EXPECT_EQ(TCounterPattern::Verify(frame, {6, 2, 1000, 0}).fault, EFrameFault::WrongRun);
    EXPECT_EQ(TCounterPattern::Verify(std::span(frame).first(size - 8), key).fault, EFrameFault::Truncated);

    TBytes other(size);
    TCounterPattern::Fill(other, {5, 2, 1001, 0xDEADBEEF});
    for (const std::size_t tear : {size / 2, size - 33, size - 24}) {
      TBytes torn = other;
      std::copy_n(frame.begin(), std::max(tear, std::size_t{32}), torn.begin());
      EXPECT_EQ(TCounterPattern::VerifyAny(torn).fault, EFrameFault::Torn) << size << " torn at " << tear;
    }
    TBytes shortFrame(size, 0);
    std::copy_n(frame.begin(), size - 16, shortFrame.begin());
    EXPECT_EQ(TCounterPattern::Verify(shortFrame, key).fault, EFrameFault::Torn);
    std::fill(shortFrame.begin() + static_cast<std::ptrdiff_t>(std::max(size / 2, std::size_t{32})),
              shortFrame.end(), static_cast<unsigned char>(0));
    EXPECT_EQ(TCounterPattern::Verify(shortFrame, key).fault, EFrameFault::Truncated);

    EXPECT_EQ(TCounterPattern::VerifyAny(TBytes(size, 0)).fault, EFrameFault::NotStamped);
    for (std::size_t at = 0; at < size; at += 1 + size / 97) { // any single bit
      TBytes damaged = frame;
      damaged[at] ^= 0x10;
      const auto result = TCounterPattern::Verify(damaged, key);
      EXPECT_FALSE(result) << at;
      if (at < 32 || at >= size - 32) continue;
      EXPECT_EQ(result.badByteOffset, at);
    }
  }
}
