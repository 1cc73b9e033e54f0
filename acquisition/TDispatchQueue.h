// SPDX-License-Identifier: MIT
// Where a run's frames go, and where retrieval takes them from.
#pragma once

#include "acquisition/frame_timestamp.h"
#include "acquisition/TFrameMemory.h"

#include <cstdint>
#include <optional>

class IDispatchRoutine;

/// The path of a run's frames between the acquisition thread and the application. The acquisition thread calls
/// Dispatch() for each frame and Finalise() at the end of the run; application threads read images by their
/// 1-based number meanwhile. Owned by the acquisition manager; it lives as long as its camera's manager or, for a
/// wrapper of one run, as long as there is a reference to it. None of the operations throws, except that
/// Initialise() may pass on a lack of memory and Dispatch() a TSDK3Exception.
class TDispatchQueue
{
public:
  /// Prepares for a run whose frames have @p imageSizeBytes bytes each. The camera may still refuse to start it.
  virtual void Initialise(std::int64_t imageSizeBytes) = 0;
  /// The run is over: returns when everything that was dispatched is finished.
  virtual void Finalise() = 0;
  /// The run is to end early. Called by application threads while Dispatch() may be running; only
  /// requests it.
  virtual void Abort() = 0;
  /// Takes one frame, which is in a slot of this run (see IsSlot()); null is none. Returns 0, or non-zero when the run
  /// cannot go on.
  virtual int Dispatch(unsigned char* buffer, int sizeBytes) = 0;
  /// The newest frame, or null. Its memory may be freed, and the camera may write into it, at any time.
  virtual unsigned char* GetLatestImage() = 0;
  /// The frame with this number, whose memory stays until ReleaseImage8(), or null when it is not there.
  virtual unsigned char* GetImage8(int image) = 0;
  virtual void ReleaseImage8(unsigned char* buffer) = 0;
  /// As GetImage8(), but the memory may be freed at any time.
  virtual unsigned char* GetImage(int image) = 0;
  /// Number of the oldest frame there, 0 when there is none.
  virtual std::int64_t GetMinimumImageAvailable() = 0;
  /// Number of the newest frame, 0 when there is none; the frames of a run are counted from 1.
  virtual std::int64_t GetMaximumImageAvailable() = 0;
  virtual std::int64_t GetImageSizeBytes() = 0;
  virtual void SetDispatchRoutine(IDispatchRoutine* routine) = 0;

  /// The camera has started the run; no frame has been dispatched yet. Not called when the camera's answer leaves open
  /// whether it has started; the first frame shows it then. Until either of them happens, nothing of an earlier run may
  /// be lost.
  virtual void Begin() {}
  /// As GetImage8(), for frames of any number. The size is that of the memory, even if another run has begun.
  virtual TFrameMemory AcquireImage(std::int64_t image) = 0;
  /// Whether @p frame, which AcquireImage() gave for this number, has been that image and nothing else up to now:
  /// what was read of it before is of one frame, the one with this number. False whenever that is not certain.
  virtual bool IsImageIntact(std::int64_t image, const unsigned char* frame) = 0;
  /// The camera's clock value in the image with this number; nothing when the frame had none.
  virtual std::optional<std::int64_t> GetImageTicks(std::int64_t image) = 0;

  /// Another number as soon as images of another run may be there: from its start on, and again with its first image.
  virtual std::uint64_t RunNumber() { return 0; }

  /// The frames of the run that begins carry the camera's clock. Called after Initialise().
  virtual void ExpectClock() {}
  /// The camera's clock value in the frame that is dispatched next. Acquisition thread only.
  virtual void SetTimestampOfNextFrame(TFrameTimestamp /*timestamp*/) {}

  /// Whether @p buffer is the start of a frame slot of this run. Called once for each frame, before Dispatch().
  /// Acquisition thread only.
  virtual bool IsSlot(const unsigned char* buffer) = 0;
  /// Whether some of the run's frames have not reached their destination. Called while no frame comes, and once more at
  /// the end of the run, when no Dispatch() follows that could report it. Acquisition thread only.
  virtual bool HasFailed() { return false; }
  /// A number that rises while dispatched frames make progress towards their destination. Callers that wait for the end
  /// of a run may go on waiting as long as it rises. Thread-safe.
  virtual std::uint64_t Progress() { return 0; }
  virtual ~TDispatchQueue() = default;
};
