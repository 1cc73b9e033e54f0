// SPDX-License-Identifier: MIT
// Puts a frame's pixels and metadata into a buffer.
#pragma once

#include "vxcore/simulated/imaging/TCounterPattern.h"
#include "vxcore/simulated/imaging/TFrameRenderer.h"
#include "vxcore/simulated/imaging/TMetadataWriter.h"
#include "vxcore/simulated/TCameraState.h"

#include <cstdint>
#include <span>
#include <string>

namespace vxsim {

/// Fills buffers with frames of the camera's present settings. Prepare() reads the settings, under the device's
/// lock; Paint() uses only what Prepare() read, so it may run without the lock, by one thread at a time.
class TFramePainter final
{
public:
  struct TFrame
  {
    uint64_t number = 0;
    uint32_t run = 0;
    int64_t sceneNs = 0;
    double exposureSeconds = 0.0;
    int64_t ticks = 0;
    double sensorCelsius = 0.0;
  };

  /// Reads the settings. What is wrong with them, in words; empty when frames can be made.
  std::string Prepare(const TCameraState& state);
  /// Whether the settings are still those that Prepare() read.
  bool IsPrepared(const TCameraState& state) const { return revision_ == state.revision; }

  /// Does ahead of time what the first Paint() would take long for, on a busy machine longer than a run waits for a frame.
  void PreparePicture() { renderer_.Prepare(settings_); }

  /// A frame of stamps alone: what is needed to write it, even if the settings change meanwhile. A plain value.
  struct TStampedFrame
  {
    size_t pixelAreaBytes = 0;
    size_t imageSizeBytes = 0;
    TCounterPattern::TKey key;
    bool hasMetadata = false;
    TFrameMetadata metadata;

    void Write(unsigned char* buffer) const;
  };

  /// Frames are stamps alone, no pixels.
  bool IsStamped() const { return settings_.scene.kind == ESceneKind::Stamp; }
  TStampedFrame Stamped(const TFrame& frame) const;
  int64_t ImageSizeBytes() const { return imageSizeBytes_; }

  /// @p buffer has at least ImageSizeBytes().
  void Paint(const TFrame& frame, unsigned char* buffer);

private:
  TFrameMetadata Metadata(const TFrame& frame) const;

  uint64_t revision_ = 0; ///< of the settings
  TFrameSettings settings_;
  TFrameRenderer renderer_;
  size_t pixelAreaBytes_ = 0;
  int64_t imageSizeBytes_ = 0;
  bool metadata_ = false;
};

} // namespace vxsim
