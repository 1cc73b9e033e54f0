// SPDX-License-Identifier: MIT
// A camera's runs: frames from its stream into queued buffers.
#pragma once

#include "vxcore/backend/IFeature.h"
#include "vxcore/genicam/TFrameConverter.h"
#include "vxcore/genicam/TFrameStream.h"

#include <condition_variable>
#include <cstdint>
#include <deque>
#include <memory>
#include <optional>

namespace vxgenicam {

using vxcore::TDeviceLock;

/// What happens to a frame of which packets are missing.
enum class EIncomplete
{
  Drop,
  Deliver, ///< what is missing is 0
};

/// What a run needs to know of the camera's settings; constant during the run.
struct TRunSettings
{
  EEncoding encoding = EEncoding::Mono8;
  bool hasMetadata = false;
  long long accumulations = 1;     ///< frames that are added up to one image
  std::optional<long long> images; ///< after so many the run delivers none any more; without: until it is stopped
  EIncomplete incomplete = EIncomplete::Drop;
};

/// Timestamps of images are in ns, as Aravis gives them.
inline constexpr long long kTicksPerSecond = 1'000'000'000;

/// Bytes of a delivered image: its pixels, and behind them, when the run has metadata, a chunk that ends the search for
/// chunks and one with the timestamp.
std::size_t DeliveredBytes(std::size_t pixelBytes, bool hasMetadata);

/// Converts the frames of one camera into the buffers that are queued. Owned by TGenICamCamera. Every operation is
/// called with the device locked, and frames are converted under the lock, so that Flush() and Close() never wait for
/// one; only Wait() releases it. Has no thread.
class TAcquisition final
{
public:
  explicit TAcquisition(std::shared_ptr<TWakeUp> wakeUp) : wakeUp_(std::move(wakeUp)) {}

  /// Makes the stream for frames of @p shape, of which @p crop is the image. The caller then starts the camera, or calls
  /// Stop(). #VX_ERR_START_REFUSED, with a message, when the stream cannot be made, a queued buffer is too small, or
  /// frames have more than 1 GiB.
  int Start(ArvDevice* device, const TStreamOptions& options, const TRunSettings& settings,
            const TFrameShape& shape, const TCrop& crop, std::size_t payloadBytes, std::string& error);
  /// Ends the run; frames that have not been fetched are dropped.
  void Stop();
  bool IsRunning() const { return isRunning_; }

  void Queue(unsigned char* buffer, int sizeBytes)
  {
    queue_.push_back({buffer, sizeBytes});
    if (queue_.size() == 1) wakeUp_->Wake(); // frames wait in the stream only while no buffer is queued
  }
  /// Blocks up to the time-out, the lock released meanwhile; wakes for a frame, the end of the run, a lost camera and
  /// Close().
  /// @param lossCode  asked at each turn: #VX_SUCCESS, or what a lost camera answers
  template <typename LossCode>
  int Wait(TDeviceLock& lock, unsigned char** buffer, int* sizeBytes, unsigned int timeoutMs, LossCode&& lossCode)
  {
    const std::uint64_t run = isRunning_ ? runNumber_ : 0;
    std::optional<TWakeUp::TClock::time_point> deadline;
    while (true) {
      const std::uint64_t seen = wakeUp_->Count();
      // A camera that is lost may go on sending what nobody can stop or set.
      if (const int code = isClosed_ ? VX_ERR_INVALID_HANDLE : lossCode(); code != VX_SUCCESS) return code;
      if (Deliver(buffer, sizeBytes)) return VX_SUCCESS;
      if (timeoutMs == 0 || HasEnded(run)) return VX_ERR_TIMED_OUT;
      if (!deadline) deadline = DeadlineOf(timeoutMs);
      if (TWakeUp::TClock::now() >= *deadline) return VX_ERR_TIMED_OUT;
      WaitUnlocked(lock, seen, *deadline);
    }
  }
  void Flush() { queue_.clear(); }
  /// Ends the run and waits until no Wait() is under way.
  void Close(TDeviceLock& lock);
  /// The stream of the last run. Ending it takes seconds when the camera is gone, so another thread does that.
  std::unique_ptr<TFrameStream> TakeStream() { return std::move(stream_); }

  /// Ticks count from the next frame.
  void ResetTicksWithFrame() { tickBaseNs_.reset(); }
  /// Ticks count from this time of the camera's clock.
  void ResetTicks(std::int64_t baseNs) { tickBaseNs_ = baseNs; }

  /// Frames of this run that came incomplete, came when no buffer was free, or did not come at all.
  long long FramesLost() const { return framesLost_; }

private:
  struct TQueued
  {
    unsigned char* bytes;
    int sizeBytes;
  };

  static TWakeUp::TClock::time_point DeadlineOf(unsigned int timeoutMs);
  bool HasEnded(std::uint64_t run) const { return run != 0 && (!isRunning_ || run != runNumber_ || IsComplete()); }
  bool IsComplete() const { return settings_.images && images_ >= *settings_.images; }
  void WaitUnlocked(TDeviceLock& lock, std::uint64_t seen, TWakeUp::TClock::time_point deadline);

  bool Deliver(unsigned char** buffer, int* sizeBytes);
  bool Accept(ArvBuffer* frame, unsigned char* image);
  bool IsAsExpected(ArvBuffer* frame, std::size_t bytes);
  void CountGap(std::uint64_t frameId);
  void WriteMetadata(unsigned char* tail, std::size_t imageBytes) const;
  std::size_t ImageSizeBytes() const { return DeliveredBytes(converter_->ImageBytes(), settings_.hasMetadata); }
  bool HasRoom(const TQueued& one) const { return static_cast<std::size_t>(one.sizeBytes) >= ImageSizeBytes(); }

  const std::shared_ptr<TWakeUp> wakeUp_;
  std::deque<TQueued> queue_;
  int waiters_ = 0;
  bool isClosed_ = false;
  std::condition_variable waitersLeft_;

  // The run.
  bool isRunning_ = false;
  std::uint64_t runNumber_ = 0;
  TRunSettings settings_;
  TCrop crop_;
  std::optional<TFrameConverter> converter_;
  std::unique_ptr<TFrameStream> stream_; ///< stays after the run until the next
  long long images_ = 0;
  long long added_ = 0; ///< frames in the sum
  long long framesLost_ = 0;
  TWakeUp::TClock::time_point started_;
  std::uint64_t lastFrameId_ = 0;              ///< 0: none yet
  std::optional<std::int64_t> tickBaseNs_ = 0; ///< none: the next frame's time
  std::int64_t ticks_ = 0;                     ///< of the image's first frame
};

} // namespace vxgenicam
