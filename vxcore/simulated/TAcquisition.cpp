// SPDX-License-Identifier: MIT
// A camera's runs: frames from the schedule through the camera's memory into queued buffers.
#include "vxcore/simulated/TAcquisition.h"

#include <algorithm>
#include <csignal>
#include <cstring>
#include <optional>
#include <system_error>

namespace vxsim {

namespace {

constexpr double kMaxAdvanceSeconds = 1e6;

/// While it lives, threads start with all signals blocked: no handler of the application runs on them.
class TSignalBlock final
{
public:
  TSignalBlock()
  {
    sigset_t all;
    sigfillset(&all);
    pthread_sigmask(SIG_SETMASK, &all, &before_);
  }
  ~TSignalBlock() { pthread_sigmask(SIG_SETMASK, &before_, nullptr); }
  TSignalBlock(const TSignalBlock&) = delete;
  TSignalBlock& operator=(const TSignalBlock&) = delete;

private:
  sigset_t before_;
};

} // namespace

TAcquisition::TAcquisition(TCameraState& state, TDeviceStatus& status, const TDeviceContext& context)
    : state_(state),
      status_(status),
      deviceMutex_(context.mutex),
      clock_(state.configuration.clock == EClock::Real && state.configuration.source == ESource::Sensor,
             state.model.timestampFrequency),
      faults_(context.faults)
{
  state_.thermal.Begin(clock_.NowNs());
}

TAcquisition::~TAcquisition()
{
  if (thread_.joinable()) thread_.join();
}

int TAcquisition::Start(TDeviceLock& lock)
{
  WaitUntilPainted(lock); // the painter reads new settings below
  if (closed_) return VX_ERR_INVALID_HANDLE;
  if (state_.acquiring) return VX_ERR_START_REFUSED;
  if (!painter_.Prepare(state_).empty()) return VX_ERR_START_REFUSED;
  if (buffers_.HasQueuedBelow(painter_.ImageSizeBytes())) return VX_ERR_START_REFUSED;
  if (clock_.IsReal() && !thread_.joinable()) {
    try {
      const TSignalBlock block;
      thread_ = std::thread(&TAcquisition::Run, this);
    } catch (const std::system_error&) {
      return VX_ERR_OUT_OF_MEMORY;
    }
  }

  if (clock_.IsReal()) painter_.PreparePicture(); // before the clock of the run begins
  status_.statistics.triggersIgnored += schedule_.TriggersIgnored();
  runStartNs_ = clock_.NowNs();
  schedule_.Start(state_, runStartNs_);
  buffers_.ClearOverflow();
  faults_.ClearDelay();
  ++runNumber_;
  frameNumber_ = 0;
  state_.acquiring = true;
  ++status_.statistics.runsStarted;
  work_.notify_all();
  Wake();
  return VX_SUCCESS;
}

int TAcquisition::Stop(TDeviceLock& lock)
{
  WaitUntilPainted(lock); // the frame that is being written still belongs to the run
  EndRun();
  return VX_SUCCESS;
}

int TAcquisition::Queue(TDeviceLock& lock, unsigned char* buffer, int sizeBytes)
{
  if (!painter_.IsPrepared(state_)) Prepare();
  if (sizeBytes < painter_.ImageSizeBytes()) return VX_ERR_BUFFER_TOO_SMALL;
  buffers_.Queue({buffer, sizeBytes});
  ++status_.statistics.buffersQueued;
  if (buffers_.HasStored() && state_.configuration.source == ESource::Manual) {
    WaitUntilPainted(lock);
    if (!faults_.IsDelayed()) TransferStored(lock);
  } else if (!clock_.IsReal())
    Wake(); // a waiting caller can make a frame now
  else if (buffers_.HasStored())
    work_.notify_one();
  return VX_SUCCESS;
}

int TAcquisition::Wait(TDeviceLock& lock, unsigned char** buffer, int* sizeBytes, unsigned int timeoutMs)
{
  const uint32_t run = state_.acquiring ? runNumber_ : kNoRun;
  std::optional<TCameraClock::TWallClock::time_point> deadline;
  while (true) {
    if (buffers_.HasAnswer()) {
      const TAnswer next = buffers_.TakeAnswer();
      if (next.code != VX_SUCCESS) return next.code;
      ++status_.statistics.framesDelivered;
      *buffer = next.bytes;
      *sizeBytes = next.sizeBytes;
      return VX_SUCCESS;
    }
    if (closed_) return VX_ERR_INVALID_HANDLE;
    if (!status_.plug.IsIn()) return VX_ERR_COMMUNICATION;
    if (!clock_.IsReal() && MakeStampedFrame(lock, *buffer, *sizeBytes)) return VX_SUCCESS;
    const bool madeFrame = !clock_.IsReal() && MakeFrame(lock);
    if (madeFrame && HasAnswer()) continue;
    if (timeoutMs == 0 || HasRunEnded(run)) return VX_ERR_TIMED_OUT;

    const auto now = TCameraClock::TWallClock::now();
    if (!deadline) {
      // "Without limit" is a century.
      const auto limit =
          timeoutMs == VX_INFINITE ? std::chrono::hours(24 * 36525) : std::chrono::milliseconds(timeoutMs);
      deadline = now + limit;
    }
    if (now >= *deadline) return VX_ERR_TIMED_OUT;
    if (madeFrame) { // which a fault rule has lost
      YieldLock(lock);
      continue;
    }
    const auto until = faults_.IsDelayed() ? std::min(*deadline, faults_.DelayedUntil()) : *deadline;
    ++waiters_;
    ++blockedWaits_;
    changed_.wait_until(lock, until);
    --blockedWaits_;
    --waiters_;
    if (closed_) changed_.notify_all(); // Close() counts the waiters down
  }
}

void TAcquisition::Flush(TDeviceLock& lock)
{
  WaitUntilPainted(lock);
  DiscardBuffers();
}

void TAcquisition::Close(TDeviceLock& lock)
{
  state_.acquiring = false;
  closed_ = true;
  WaitUntilPainted(lock);
  EndRun();
  DiscardBuffers();
  work_.notify_all();
  changed_.notify_all();
  while (waiters_ > 0 || turn_.HasWaiters()) changed_.wait(lock);
  status_.statistics = Statistics();
}

void TAcquisition::Trigger()
{
  if (!state_.acquiring) return;
  if (clock_.IsReal())
    schedule_.Trigger(clock_.NowNs());
  else
    schedule_.TriggerWhenReady();
  work_.notify_all();
  Wake();
}

void TAcquisition::Unplug()
{
  EndRun();
  work_.notify_all();
}

int TAcquisition::PushFrame(TDeviceLock& lock, const unsigned char* bytes, int sizeBytes)
{
  WaitUntilPainted(lock);
  if (closed_ || !state_.acquiring || schedule_.IsFinished()) return VX_ERR_NOT_AVAILABLE;
  if (state_.configuration.source != ESource::Manual) return VX_ERR_NOT_AVAILABLE;
  if (bytes && sizeBytes < 0) return VX_ERR_OUT_OF_RANGE;
  if (bytes && buffers_.HasQueued() && sizeBytes > buffers_.FirstQueued().sizeBytes)
    return VX_ERR_BUFFER_TOO_SMALL;

  if (!painter_.IsPrepared(state_)) Prepare();
  Thermal(); // moves the temperature on to this time
  TExposedFrame frame;
  frame.content = NextFrame(clock_.NowNs());
  frame.pushed = bytes != nullptr;
  if (bytes) frame.bytes.assign(bytes, bytes + sizeBytes);
  clock_.MoveTo(clock_.NowNs() + schedule_.Timing().periodNs);
  schedule_.CountFrame();
  return Receive(lock, std::move(frame));
}

void TAcquisition::PushCode(int code)
{
  TAnswer answer;
  answer.code = code;
  answer.isQueued = false;
  buffers_.Add(answer);
  Wake();
}

VXSIM_Statistics TAcquisition::Statistics() const
{
  VXSIM_Statistics statistics = status_.statistics;
  statistics.triggersIgnored += schedule_.TriggersIgnored();
  statistics.waitsBlocked = blockedWaits_;
  statistics.buffersHeld = buffers_.CallerBufferCount() + (turn_.IsPainting() ? 1 : 0);
  return statistics;
}

TThermalModel& TAcquisition::Thermal()
{
  state_.thermal.AdvanceTo(clock_.NowNs());
  return state_.thermal;
}

int TAcquisition::AdvanceTime(double seconds)
{
  if (!(seconds >= 0.0 && seconds <= kMaxAdvanceSeconds)) return VX_ERR_OUT_OF_RANGE;
  const auto nanoseconds = static_cast<int64_t>(seconds * static_cast<double>(TCameraClock::kNsPerSecond));
  if (clock_.IsReal()) {
    Thermal().Skip(nanoseconds);
    return VX_SUCCESS;
  }
  if (!clock_.Advance(nanoseconds)) return VX_ERR_OUT_OF_RANGE;
  schedule_.Delay(nanoseconds);
  return VX_SUCCESS;
}

long long TAcquisition::FifoFill() const
{
  const auto frames = static_cast<long long>(MemoryFrames());
  const auto used = static_cast<long long>(buffers_.StoredCount());
  return (used * state_.FifoCapacity() + frames - 1) /
         frames; // up, so that percentages made of it are not one short
}

/// Applies changed settings.
void TAcquisition::Prepare()
{
  if (turn_.IsPainting()) return; // they apply to the next frame
  painter_.Prepare(state_);
  schedule_.Retime(state_);
}

int64_t TAcquisition::NextEndNs()
{
  if (!painter_.IsPrepared(state_)) Prepare();
  return schedule_.NextEndNs();
}

/// The camera's thread.
void TAcquisition::Run()
{
  TDeviceLock lock(deviceMutex_);
  while (!closed_) {
    if (turn_.IsTaken())
      work_.wait(lock);
    else if (faults_.IsDelayed())
      work_.wait_until(lock, faults_.DelayedUntil());
    else if (buffers_.HasStored() && buffers_.HasQueued())
      TransferStored(lock);
    else if (!state_.acquiring)
      work_.wait(lock);
    else if (const int64_t end = NextEndNs(); end == TFrameSchedule::kNever)
      work_.wait(lock);
    else if (end > clock_.NowNs())
      work_.wait_until(lock, TCameraClock::TWallClock::time_point(std::chrono::nanoseconds(end)));
    else
      Receive(lock, Expose());
  }
}

/// Without the wall clock: makes the next frame if there is a buffer for it. True when there may be an answer now.
bool TAcquisition::MakeFrame(TDeviceLock& lock)
{
  if (turn_.IsTaken() || !buffers_.HasQueued() || faults_.IsDelayed()) return false;
  if (buffers_.HasStored()) return TransferStored(lock);
  if (!state_.acquiring || state_.configuration.source == ESource::Manual) return false;
  if (NextEndNs() == TFrameSchedule::kNever) return false;
  Receive(lock, Expose());
  return true;
}

/// The shortest path of a frame, for measuring everything but the camera: directly to the waiting caller. Releases
/// the lock when it succeeds.
bool TAcquisition::MakeStampedFrame(TDeviceLock& lock, unsigned char*& bytes, int& sizeBytes)
{
  if (!painter_.IsStamped() || !faults_.IsEmpty() || !state_.acquiring || !buffers_.HasQueued()) return false;
  if (buffers_.HasStored() || turn_.IsPainting() || faults_.HasDelay()) return false;
  if (state_.configuration.source == ESource::Manual || NextEndNs() == TFrameSchedule::kNever) return false;

  const TFramePainter::TStampedFrame frame = painter_.Stamped(ExposeContent());
  bytes = buffers_.TakeQueued().bytes;
  sizeBytes = static_cast<int>(painter_.ImageSizeBytes());
  buffers_.NoteDelivered({bytes, sizeBytes, VX_SUCCESS, true});
  ++status_.statistics.framesDelivered;
  EndIfComplete();
  turn_.RunLast(lock, [&frame, bytes] { frame.Write(bytes); });
  return true;
}

TFramePainter::TFrame TAcquisition::ExposeContent()
{
  const int64_t start = schedule_.Take();
  state_.thermal.AdvanceTo(start);
  if (!clock_.IsReal()) clock_.MoveTo(start + schedule_.Timing().durationNs);
  return NextFrame(start);
}

TExposedFrame TAcquisition::Expose()
{
  return {.content = ExposeContent(), .pushed = false, .bytes = {}, .faults = {}};
}

/// Numbers a frame and notes what it is painted by.
TFramePainter::TFrame TAcquisition::NextFrame(int64_t startNs)
{
  ++status_.statistics.framesProduced;
  return {++frameNumber_,        runNumber_,
          startNs - runStartNs_, schedule_.Timing().exposureSeconds,
          clock_.Ticks(startNs), state_.thermal.SensorCelsius()};
}

/// Takes a frame from the sensor, unless the fault plan loses it.
int TAcquisition::Receive(TDeviceLock& lock, TExposedFrame frame)
{
  TSensorFaults::EOutcome outcome = TSensorFaults::EOutcome::Exposed;
  if (!faults_.IsEmpty()) {
    int64_t delayNs = 0;
    outcome = faults_.Apply(frame, state_.metadata, status_, delayNs);
    if (delayNs > 0) schedule_.Delay(delayNs);
  }
  int code = VX_SUCCESS;
  if (outcome == TSensorFaults::EOutcome::Exposed)
    code = Store(lock, std::move(frame));
  else {
    ++status_.statistics.framesDropped;
    if (outcome == TSensorFaults::EOutcome::Unplugged) Unplug();
  }
  EndIfComplete();
  return code;
}

/// Puts a frame into a buffer, or into the camera's memory when there is none.
int TAcquisition::Store(TDeviceLock& lock, TExposedFrame frame)
{
  if (!buffers_.HasStored() && buffers_.HasQueued() && !faults_.IsDelayed()) {
    Deliver(lock, frame);
    return VX_SUCCESS;
  }
  const bool stored = buffers_.Store(std::move(frame), MemoryFrames());
  if (!stored) ++status_.statistics.framesOverflowed;
  Wake(); // a caller may wait for the end of the delay, or returns the loss
  return stored ? VX_SUCCESS : VX_ERR_HARDWARE_OVERFLOW;
}

void TAcquisition::Deliver(TDeviceLock& lock, TExposedFrame& frame)
{
  TAnswer answer;
  if (frame.faults.empty()) {
    const TFrameBuffers::TBuffer buffer = buffers_.TakeQueued();
    answer = {buffer.bytes, std::min(FrameBytes(frame), buffer.sizeBytes), VX_SUCCESS, true};
  } else if (!faults_.Place(frame, FrameBytes(frame), painter_.ImageSizeBytes(), buffers_, answer)) {
    ++status_.statistics.framesDropped;
    buffers_.Add(answer);
    return Wake();
  }
  Fill(lock, frame, answer.bytes, answer.sizeBytes);
  TSensorFaults::Damage(frame, answer);
  buffers_.Deliver(answer);
  Wake();
}

/// Puts a frame's bytes into a buffer, with the lock released.
void TAcquisition::Fill(TDeviceLock& lock, const TExposedFrame& frame, unsigned char* bytes, int sizeBytes)
{
  turn_.Run(lock, [&] {
    if (!frame.pushed)
      painter_.Paint(frame.content, bytes);
    else if (sizeBytes > 0)
      std::memcpy(bytes, frame.bytes.data(), static_cast<size_t>(sizeBytes));
  });
}

int TAcquisition::FrameBytes(const TExposedFrame& frame) const
{
  return static_cast<int>(frame.pushed ? static_cast<int64_t>(frame.bytes.size()) : painter_.ImageSizeBytes());
}

/// Moves the oldest frame of the camera's memory into a queued buffer. True when there was one.
bool TAcquisition::TransferStored(TDeviceLock& lock)
{
  if (!buffers_.HasStored() || !buffers_.HasQueued()) return false;
  if (!painter_.IsPrepared(state_)) Prepare();
  TExposedFrame frame = buffers_.TakeStored();
  Deliver(lock, frame);
  EndIfComplete();
  return true;
}

size_t TAcquisition::MemoryFrames() const
{
  const TCameraConfiguration& configuration = state_.configuration;
  if (configuration.memoryFrames > 0) return static_cast<size_t>(configuration.memoryFrames);
  const long long bytes = configuration.memoryBytes > 0 ? configuration.memoryBytes : state_.model.memoryBytes;
  return static_cast<size_t>(std::max<long long>(1, bytes / std::max<int64_t>(1, painter_.ImageSizeBytes())));
}

/// A fixed-count run ends when its last frame is in a buffer, or is lost.
void TAcquisition::EndIfComplete()
{
  if (state_.acquiring && schedule_.IsFinished() && !buffers_.HasStored()) EndRun();
}

/// Ends the run, frames in the camera's memory are lost, and wakes the waits that began during it.
void TAcquisition::EndRun()
{
  state_.acquiring = false;
  status_.statistics.framesDiscarded += buffers_.ClearStored();
  Wake();
}

/// Waits until no buffer is being written; no frame is begun meanwhile.
void TAcquisition::WaitUntilPainted(TDeviceLock& lock)
{
  if (!turn_.WaitUntilDone(lock)) return;
  work_.notify_all();
  changed_.notify_all();
}

/// Whether a wait returns at once.
bool TAcquisition::HasAnswer()
{
  return buffers_.HasAnswer() || closed_ || !status_.plug.IsIn();
}

/// Releases the lock once for callers that wait for it.
void TAcquisition::YieldLock(TDeviceLock& lock)
{
  ++waiters_;
  lock.unlock();
  std::this_thread::yield();
  lock.lock();
  --waiters_;
  if (closed_) changed_.notify_all();
}

void TAcquisition::DiscardBuffers()
{
  status_.statistics.framesDiscarded += buffers_.Clear();
}

void TAcquisition::Wake()
{
  if (waiters_ > 0) changed_.notify_all();
}

} // namespace vxsim
