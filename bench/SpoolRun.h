// SPDX-License-Identifier: MIT
// Runs that the library writes to the disk, through the interface.
#pragma once

#include "BenchmarkCamera.h"
#include "FrameWriters.h"

#include <cstdint>
#include <string>

/// From StartAcquisition() until the library says that the run is over, with everything on the disk. The camera makes a
/// frame whenever it has a buffer. Ends the program when not every frame has been written.
WritingCost spoolSeries(const BenchmarkCamera& camera, const std::string& directory, int method, long count);

/// What became of the frames of a camera that does not wait.
struct FixedRateResult
{
  long frames = 0;              ///< the camera made
  long written = 0;             ///< on the disk
  std::uint64_t overflowed = 0; ///< lost since the camera had no room for them
  long maxWaiting = 0;          ///< frames that the library had not begun to write, at most
  double seconds = 0;           ///< of the camera's run
  double cpuSeconds = 0;
};

/// A run of @p count frames at @p framesPerSecond; the camera must be one whose frames are pushed. Finished files are
/// emptied all the time, so that a run may be longer than the disk is large.
FixedRateResult spoolAtRate(const BenchmarkCamera& camera, const std::string& directory, long count,
                            double framesPerSecond);
