// SPDX-License-Identifier: MIT
// What the loops of the tool are told of a run, and what they tell.
#pragma once

#include "tools/ImageData.h"

#include <cstddef>
#include <optional>

namespace vxtool {

/// How a run is to go.
struct TLoopSettings
{
  TImageShape shape;
  long wantedImages = 1;  ///< images to fetch; 0: until interrupted
  bool isEndless = false; ///< the camera runs until aborted and its ring overwrites the oldest image
  bool isSoftwareTriggered = false;
  bool isPaced = true;          ///< the camera makes frames at an even pace
  double noImageSeconds = 0.0;  ///< give up after this long without an image; 0: never
  double triggerSeconds = 0.0;  ///< software trigger: shortest time from trigger to trigger
  double imageSeconds = 0.0;    ///< about how long one exposure takes until it is delivered
  long ringBytes = 300'000'000; ///< memory of the ring of frame buffers
};

/// How a run ended.
enum class RunEnd
{
  Complete,
  Interrupted,
  CameraFailed,
  OutputFailed,
};

/// Where a run stands, for whoever shows it.
struct TProgress
{
  double seconds = 0.0;
  long delivered = 0;
  long fetched = 0;
  long wanted = 0; ///< 0: no limit
  long lost = 0;
  std::optional<double> ringFill; ///< part of the ring that holds images not fetched yet, 0 to 1
  std::size_t imageBytes = 0;
};

} // namespace vxtool
