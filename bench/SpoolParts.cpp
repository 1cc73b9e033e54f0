// SPDX-License-Identifier: MIT
// The classes that write runs, put together in ways that the library does not choose.
#include "SpoolParts.h"

#include "BenchmarkCamera.h"
#include "features/current_core_handle.h"
#include "Rounds.h"
#include "spool/ISpoolAlgorithm.h"
#include "spool/TQueuedSpooler.h"
#include "spool/TSpoolFault.h"
#include "spool/TSpoolFileSpooler.h"
#include "spool/TSpoolImageSpooler.h"
#include "spool/TSpoolIndex.h"
#include "spool/TThreadedSpooler.h"

#include <algorithm>
#include <memory>

namespace {

constexpr int kThreads = 2;

std::unique_ptr<ISpoolAlgorithm> makeAlgorithm(const TSpoolLayout& layout, TSpoolImageSpooler& images,
                                               TSpoolFault& fault, std::size_t slots)
{
  if (layout.isQueued) return std::make_unique<TQueuedSpooler>(&images, &fault, kThreads, slots, kNoCoreHandle);
  return std::make_unique<TThreadedSpooler>(&images, kThreads, static_cast<int>(layout.imagesPerPlace));
}

} // namespace

WritingCost writeThroughParts(const std::string& directory, const TSpoolLayout& layout, const TSpoolVolume& volume,
                              const FrameSource& frames, long count)
{
  WritingClock clock;
  double longest = 0;
  TSpoolFault fault;
  TSpoolIndex index(&fault);
  TSpoolFileSpooler files(&fault, &index);
  files.SetDirectory(directory);
  files.SetStem(L"spool");
  files.SetVolume(volume);
  require(index.Create(directory), "an index");
  TSpoolImageSpooler images(&files, layout, &index, &fault);
  auto algorithm = makeAlgorithm(layout, images, fault, frames.slots());
  for (long i = 0; i < count; ++i) {
    const double begin = secondsOfClock(CLOCK_MONOTONIC);
    require(algorithm->Spool(static_cast<int>(i), frames.frame(i), static_cast<int>(frames.frameBytes())) == 1,
            "spooling a frame");
    longest = std::max(longest, secondsOfClock(CLOCK_MONOTONIC) - begin);
  }
  clock.accepted();
  algorithm->Finish();
  files.Finish();
  require(index.Close() && !fault.IsRaised() && index.Count() == static_cast<std::uint64_t>(count),
          "every frame is written");
  WritingCost cost = clock.onDisk();
  cost.longestMs = longest * 1e3;
  return cost;
}
