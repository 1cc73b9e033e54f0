// SPDX-License-Identifier: MIT
// A run of a camera: how it is to go, how far it is, how it has ended.
#pragma once

#include "tools/ImageData.h"
#include "tools/TFrameStatistics.h"

#include <cstddef>
#include <optional>

namespace vxtool {

/// How a run is to go.
struct TRunSettings
{
  TImageShape shape;
  long wantedImages = 1;   ///< images to fetch; 0: until interrupted
  bool isEndless = false;  ///< the camera runs until aborted and its ring overwrites the oldest image
  bool isRecorded = false; ///< the library writes the images to disk; no image is fetched
  bool areSums = false;    ///< several exposures make an image: it is fetched with 32 bits, and clipped to fewer
  bool isSoftwareTriggered = false;
  bool hasSteadyRate = true;      ///< the camera makes frames at a constant rate
  double noImageSeconds = 0.0;    ///< give up after this long without an image; 0: never
  double triggerSeconds = 0.0;    ///< software trigger: shortest time from trigger to trigger
  double firstImageSeconds = 0.0; ///< about how long until the first image, 0: not known
  double nextImageSeconds = 0.0;  ///< from one image to the next, 0: not known
  double imageSeconds = 0.0;      ///< about how long one exposure takes until it is delivered
  double intervalSeconds = 0.0;   ///< single images, from the start of one to the start of the next; 0: one run
  long imagesBefore = 0;          ///< of the schedule that this run is an image of
  long ringBytes = 300'000'000;   ///< memory of the ring of frame buffers
};

/// How a run ended.
enum class RunEnd
{
  Complete,
  Interrupted,
  CameraFailed,
  OutputFailed,
};

/// How far a run is, for the progress line.
struct TProgress
{
  double seconds = 0.0;
  long delivered = 0;
  long fetched = 0;
  long wanted = 0; ///< 0: no limit
  long lost = 0;
  long skipped = 0;               ///< of the wanted ones: no image will come for them
  std::optional<double> ringFill; ///< part of the ring that has images not fetched yet, 0 to 1
  std::size_t imageBytes = 0;
  double untilImageSeconds = 0.0; ///< about how long until the next image
  double imageSeconds = 0.0;      ///< about how long one image takes; 0: not known
};

/// How a run and its files have ended, for the report and the exit code.
struct TRunResult
{
  RunEnd end = RunEnd::Complete;
  TFrameStatistics statistics;
  double seconds = 0.0;
  bool hasOutput = false; ///< there is a file of images
  bool isOutputFailed = false;
  bool isWrittenKnown = true; ///< whether the statistics know the number of images on disk
};

} // namespace vxtool
