// SPDX-License-Identifier: MIT
// Puts a frame's pixels and metadata into a buffer.
#include "simulator/camera/TFramePainter.h"

#include "simulator/imaging/TCounterPattern.h"
#include "simulator/imaging/TMetadataWriter.h"

#include <algorithm>

namespace vxsim {

std::string TFramePainter::Prepare(const TCameraState& state)
{
  settings_ = state.FrameSettings();
  pixelAreaBytes_ = PixelAreaBytes(settings_.geometry);
  imageSizeBytes_ = state.ImageSizeBytes();
  metadata_ = state.metadata;
  return FindSettingsFault(settings_);
}

void TFramePainter::Paint(const TFrame& frame, unsigned char* buffer)
{
  const auto slot = reinterpret_cast<uintptr_t>(buffer);
  const std::span<unsigned char> pixels(buffer, pixelAreaBytes_);
  if (IsInstant()) {
    TCounterPattern::Fill(pixels, {settings_.sensor.seed, frame.run, frame.number, slot},
                          TCounterPattern::EBody::Any);
  } else {
    TExposureSettings& exposure = settings_.exposure;
    exposure.frameNumber = frame.number;
    exposure.runNumber = frame.run;
    exposure.slot = slot;
    exposure.sceneSeconds = static_cast<double>(frame.sceneNs) * 1e-9;
    exposure.exposureSeconds = frame.exposureSeconds;
    exposure.sensorCelsius = frame.sensorCelsius;
    if (!renderer_.Render(settings_, pixels)) std::ranges::fill(pixels, static_cast<unsigned char>(0));
  }
  if (!metadata_) return;
  const TMetadataWriter writer;
  writer.Write({buffer, static_cast<size_t>(imageSizeBytes_)},
               {frame.ticks, static_cast<uint32_t>(settings_.geometry.widthPixels),
                static_cast<uint32_t>(settings_.geometry.heightPixels),
                static_cast<uint32_t>(settings_.geometry.strideBytes),
                static_cast<uint32_t>(settings_.geometry.encoding)});
}

} // namespace vxsim
