// SPDX-License-Identifier: MIT
// Frames as the tests of the imaging half want them.
#include "tests/vxcore/rendered_frames.h"

#include "vxcore/simulated/imaging/TPixelEncoder.h"

#include <gtest/gtest.h>

#include <numeric>
#include <span>

using namespace vxsim;

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
