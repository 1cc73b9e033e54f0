// SPDX-License-Identifier: MIT
// The frames of one run as they come from the camera.
#pragma once

#include "vxcore/genicam/aravis.h"

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <cstddef>
#include <cstdint>
#include <mutex>
#include <string>

namespace vxgenicam {

/// Wakes whoever waits for frames: for a frame, the end of the run, or the loss of the camera. Thread-safe.
class TWakeUp final
{
public:
  using TClock = std::chrono::steady_clock;

  void Wake();
  /// How often it woke; taken before one looks whether there is something, so that nothing is missed.
  std::uint64_t Count() const { return count_.load(); }
  /// Waits until it woke after @p seen, or for the deadline.
  void WaitAfter(std::uint64_t seen, TClock::time_point deadline);

private:
  std::mutex mutex_;
  std::condition_variable changed_;
  std::atomic<std::uint64_t> count_{0};
};

/// How frames are received.
struct TStreamOptions
{
  int poolFrames = 0; ///< buffers of this object; 0: by the size of a frame
  bool usesPacketSocket = false;
};

/// What came of the frames so far.
struct TStreamCounts
{
  std::uint64_t complete = 0;
  std::uint64_t incomplete = 0;    ///< packets were missing
  std::uint64_t withoutBuffer = 0; ///< no buffer was free when they came
};

/// A stream of Aravis with buffers of its own, which are given back to it after each frame. Frames go through these
/// buffers and not straight into the caller's: a frame that comes incomplete would have used up the caller's buffer, and
/// all images after it would be in the wrong place. Owned by TAcquisition; used under the device's lock. The thread of
/// Aravis only calls the wake-up.
class TFrameStream final
{
public:
  /// Null, with a message, when the camera refuses. The wake-up outlives the stream.
  static std::unique_ptr<TFrameStream> Make(ArvDevice* device, const TStreamOptions& options,
                                            std::size_t payloadBytes, TWakeUp& wakeUp, std::string& error);

  /// The next buffer that is done, null for none. It is to be returned.
  ArvBuffer* Take();
  void Return(ArvBuffer* buffer);
  TStreamCounts Counts() const;

private:
  explicit TFrameStream(TObject<ArvStream> stream) : stream_(std::move(stream)) {}
  static void OnStream(void* wakeUp, ArvStreamCallbackType type, ArvBuffer* buffer);

  const TObject<ArvStream> stream_; ///< ends the thread that calls OnStream() with it
};

} // namespace vxgenicam
