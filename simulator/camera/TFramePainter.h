// SPDX-License-Identifier: MIT
// Puts a frame's pixels and metadata into a buffer.
#pragma once

#include "simulator/camera/TCameraState.h"
#include "simulator/imaging/TFrameRenderer.h"

#include <cstdint>
#include <span>
#include <string>

namespace vxsim {

/// Fills buffers with frames of the camera's present settings. Prepare() reads the settings, under the device's
/// lock; Paint() uses only what Prepare() took, so it may run without the lock, by one thread at a time.
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

  /// Takes over the settings. What is wrong with them, in words; empty when frames can be made.
  std::string Prepare(const TCameraState& state);

  /// So little work that it is done under the lock: only stamps, no pixels.
  bool IsInstant() const { return settings_.scene.kind == ESceneKind::Stamp; }
  int64_t ImageSizeBytes() const { return imageSizeBytes_; }

  /// @p buffer holds at least ImageSizeBytes().
  void Paint(const TFrame& frame, unsigned char* buffer);

private:
  TFrameSettings settings_;
  TFrameRenderer renderer_;
  size_t pixelAreaBytes_ = 0;
  int64_t imageSizeBytes_ = 0;
  bool metadata_ = false;
};

} // namespace vxsim
