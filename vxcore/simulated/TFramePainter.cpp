// SPDX-License-Identifier: MIT
// Puts a frame's pixels and metadata into a buffer.
#include "vxcore/simulated/TFramePainter.h"

#include <algorithm>

namespace vxsim {

std::string TFramePainter::Prepare(const TCameraState& state)
{
  revision_ = state.revision;
  settings_ = state.FrameSettings();
  pixelAreaBytes_ = PixelAreaBytes(settings_.geometry);
  imageSizeBytes_ = state.ImageSizeBytes();
  metadata_ = state.metadata;
  return FindSettingsFault(settings_);
}

TFramePainter::TStampedFrame TFramePainter::Stamped(const TFrame& frame) const
{
  return {pixelAreaBytes_,
          static_cast<size_t>(imageSizeBytes_),
          {settings_.sensor.seed, frame.run, frame.number, 0},
          metadata_,
          metadata_ ? Metadata(frame) : TFrameMetadata{}};
}

void TFramePainter::TStampedFrame::Write(unsigned char* buffer) const
{
  TCounterPattern::TKey stamp = key;
  stamp.slot = reinterpret_cast<uintptr_t>(buffer);
  TCounterPattern::Fill({buffer, pixelAreaBytes}, stamp, TCounterPattern::EBody::Any);
  if (hasMetadata) TMetadataWriter::Write({buffer, imageSizeBytes}, metadata);
}

void TFramePainter::Paint(const TFrame& frame, unsigned char* buffer)
{
  if (IsStamped()) return Stamped(frame).Write(buffer);
  const std::span<unsigned char> pixels(buffer, pixelAreaBytes_);
  TExposureSettings& exposure = settings_.exposure;
  exposure.frameNumber = frame.number;
  exposure.runNumber = frame.run;
  exposure.slot = reinterpret_cast<uintptr_t>(buffer);
  exposure.sceneSeconds = static_cast<double>(frame.sceneNs) * 1e-9;
  exposure.exposureSeconds = frame.exposureSeconds;
  exposure.sensorCelsius = frame.sensorCelsius;
  if (!renderer_.Render(settings_, pixels)) std::ranges::fill(pixels, static_cast<unsigned char>(0));
  if (metadata_) TMetadataWriter::Write({buffer, static_cast<size_t>(imageSizeBytes_)}, Metadata(frame));
}

TFrameMetadata TFramePainter::Metadata(const TFrame& frame) const
{
  return {frame.ticks, static_cast<uint32_t>(settings_.geometry.widthPixels),
          static_cast<uint32_t>(settings_.geometry.heightPixels),
          static_cast<uint32_t>(settings_.geometry.strideBytes),
          static_cast<uint32_t>(settings_.geometry.encoding)};
}

} // namespace vxsim
