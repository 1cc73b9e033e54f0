// SPDX-License-Identifier: MIT
// What the acquisition loop needs of a camera, one operation for each library function it uses.
#pragma once

#include "tools/ImageData.h"

#include <cstddef>
#include <optional>
#include <span>

namespace vxtool {

/// A camera that is set up and can run. The operations return the library's result codes. The tool's own one
/// forwards to the library; tests have a scripted one.
class ICamera
{
public:
  virtual ~ICamera() = default;
  virtual unsigned int Start() = 0;
  virtual unsigned int Abort() = 0;
  virtual unsigned int Wait(int timeoutMs) = 0;
  virtual unsigned int Status(int& status) = 0;
  virtual unsigned int AvailableImages(int& first, int& last) = 0;
  virtual unsigned int TotalImages(long& count) = 0;
  /// Copies the image with this number and its clock value, 0 for none; #RC_NO_NEW_DATA when it is no longer there or
  /// may have been overwritten while it was copied.
  virtual unsigned int FetchImage(long number, PixelDepth depth, std::span<std::byte> pixels,
                                  long long& ticks) = 0;
  /// The clock value with this number, from 1. Images without one are not counted.
  virtual unsigned int Timestamp(long number, long long& ticks) = 0;
  virtual unsigned int SendTrigger() = 0;
  /// Frames of the last run that the camera made and that never came; nothing when nobody counts them.
  virtual std::optional<long> LostFrames() { return std::nullopt; }
};

} // namespace vxtool
