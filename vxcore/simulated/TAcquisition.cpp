// SPDX-License-Identifier: MIT
// A camera's runs: frames from the schedule through the camera's memory into queued buffers.
#include "vxcore/simulated/TAcquisition.h"

#include "vxcore/simulated/imaging/TMetadataWriter.h"

#include <algorithm>
#include <csignal>
#include <cstring>
#include <optional>
#include <system_error>

namespace vxsim {

namespace {

constexpr int64_t kNsPerSecond = 1'000'000'000;
constexpr double kMaxAdvanceSeconds = 1e6;
constexpr auto kTailBytes = static_cast<int>(TMetadataWriter::TailBytes());
constexpr int64_t kLatestNs = int64_t{4} * 1000 * 1000 * 1000 * kNsPerSecond; ///< more than a century

bool Has(const std::vector<TPlannedFault>& faults, EPlannedFault kind)
{
  return std::ranges::any_of(faults, [kind](const TPlannedFault& fault) { return fault.kind == kind; });
}

/// Keeps the application's signal handlers off a thread that is started while it lives.
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
      faults_(context.faults),
      paced_(state.configuration.clock == EClock::Real && state.configuration.source == ESource::Sensor),
      timestampZeroNs_(Now())
{
  state_.thermal.Begin(timestampZeroNs_);
}

TAcquisition::~TAcquisition()
{
  if (thread_.joinable()) thread_.join();
}

int TAcquisition::Start(TDeviceLock& lock)
{
  WaitUntilPainted(lock); // the painter takes over new settings below
  if (closed_) return VX_ERR_INVALID_HANDLE;
  if (state_.acquiring) return VX_ERR_START_REFUSED;
  const std::string fault = painter_.Prepare(state_);
  preparedRevision_ = state_.revision;
  imageSizeBytes_ = painter_.ImageSizeBytes();
  if (!fault.empty()) return VX_ERR_START_REFUSED;
  for (size_t i = 0; i < queued_.Size(); ++i) {
    if (queued_.At(i).sizeBytes < imageSizeBytes_) return VX_ERR_START_REFUSED;
  }
  if (IsPaced() && !thread_.joinable()) {
    try {
      const TSignalBlock block;
      thread_ = std::thread(&TAcquisition::Run, this);
    } catch (const std::system_error&) {
      return VX_ERR_OUT_OF_MEMORY;
    }
  }

  status_.statistics.triggersIgnored += schedule_.TriggersIgnored();
  runStartNs_ = Now();
  schedule_.Start(state_, runStartNs_);
  overflow_ = false;
  stalledUntil_ = {};
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
  if (preparedRevision_ != state_.revision) Prepare();
  if (sizeBytes < imageSizeBytes_) return VX_ERR_BUFFER_TOO_SMALL;
  queued_.Push({buffer, sizeBytes});
  ++status_.statistics.buffersQueued;
  if (!memory_.empty() && state_.configuration.source == ESource::Manual) {
    WaitUntilPainted(lock);
    if (stalledUntil_ <= TClock::now()) TransferStored(lock);
  } else if (!IsPaced())
    Wake(); // whoever waits can make a frame now
  else if (!memory_.empty())
    work_.notify_one();
  return VX_SUCCESS;
}

int TAcquisition::Wait(TDeviceLock& lock, unsigned char** buffer, int* sizeBytes, unsigned int timeoutMs)
{
  const uint32_t run = state_.acquiring ? runNumber_ : kNoRun;
  std::optional<TClock::time_point> deadline;
  while (true) {
    if (overflow_) {
      overflow_ = false;
      return VX_ERR_HARDWARE_OVERFLOW;
    }
    if (!ready_.IsEmpty()) {
      const TReady next = ready_.Pop();
      if (next.code != VX_SUCCESS) return next.code;
      ++status_.statistics.framesDelivered;
      *buffer = next.bytes;
      *sizeBytes = next.sizeBytes;
      return VX_SUCCESS;
    }
    if (closed_) return VX_ERR_INVALID_HANDLE;
    if (!status_.plugged && !status_.IsPresent()) return VX_ERR_COMMUNICATION;
    if (!IsPaced() && MakeStampedFrame(lock, *buffer, *sizeBytes)) return VX_SUCCESS;
    const bool madeFrame = !IsPaced() && MakeFrame(lock);
    if (madeFrame && HasAnswer()) continue;
    if (timeoutMs == 0 || HasRunEnded(run)) return VX_ERR_TIMED_OUT;

    const TClock::time_point now = TClock::now();
    if (!deadline) {
      // "Without limit" is a century.
      const auto limit =
          timeoutMs == VX_INFINITE ? std::chrono::hours(24 * 36525) : std::chrono::milliseconds(timeoutMs);
      deadline = now + limit;
    }
    if (now >= *deadline) return VX_ERR_TIMED_OUT;
    if (madeFrame) { // and lost it to a fault rule
      LetOthersIn(lock);
      continue;
    }
    const bool stalled = stalledUntil_ > now;
    ++waiters_;
    ++blockedWaits_;
    changed_.wait_until(lock, stalled ? std::min(*deadline, stalledUntil_) : *deadline);
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
  while (waiters_ > 0) changed_.wait(lock);
  status_.statistics = Statistics();
}

void TAcquisition::Trigger()
{
  if (!state_.acquiring) return;
  if (IsPaced())
    schedule_.Trigger(Now());
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
  if (bytes && !queued_.IsEmpty() && sizeBytes > queued_.Front().sizeBytes) return VX_ERR_BUFFER_TOO_SMALL;

  if (preparedRevision_ != state_.revision) Prepare();
  TExposedFrame frame;
  frame.content = {++frameNumber_,           runNumber_,
                   freeNowNs_ - runStartNs_, schedule_.Timing().exposureSeconds,
                   Ticks(freeNowNs_),        Thermal().SensorCelsius()};
  frame.pushed = bytes != nullptr;
  if (bytes) frame.bytes.assign(bytes, bytes + sizeBytes);
  freeNowNs_ += schedule_.Timing().periodNs;
  schedule_.CountFrame();
  ++status_.statistics.framesProduced;

  int code = VX_SUCCESS;
  if (TakeFaults(frame)) code = Store(lock, std::move(frame));
  EndIfComplete();
  return code;
}

void TAcquisition::PushCode(int code)
{
  TReady answer;
  answer.code = code;
  answer.held = false;
  ready_.Push(answer);
  Wake();
}

long long TAcquisition::TimestampTicks() const
{
  return Ticks(Now());
}

VXSIM_Statistics TAcquisition::Statistics() const
{
  VXSIM_Statistics statistics = status_.statistics;
  statistics.triggersIgnored += schedule_.TriggersIgnored();
  statistics.waitsBlocked = blockedWaits_;
  statistics.buffersHeld = queued_.Size() + (painting_ ? 1 : 0);
  for (size_t i = 0; i < ready_.Size(); ++i) statistics.buffersHeld += ready_.At(i).held ? 1 : 0;
  return statistics;
}

TThermalModel& TAcquisition::Thermal()
{
  state_.thermal.AdvanceTo(Now());
  return state_.thermal;
}

int TAcquisition::AdvanceTime(double seconds)
{
  if (!(seconds >= 0.0 && seconds <= kMaxAdvanceSeconds)) return VX_ERR_OUT_OF_RANGE;
  const auto nanoseconds = static_cast<int64_t>(seconds * static_cast<double>(kNsPerSecond));
  if (IsPaced()) {
    Thermal().Skip(nanoseconds);
    return VX_SUCCESS;
  }
  if (freeNowNs_ > kLatestNs - nanoseconds) return VX_ERR_OUT_OF_RANGE;
  freeNowNs_ += nanoseconds;
  schedule_.Delay(nanoseconds);
  return VX_SUCCESS;
}

long long TAcquisition::FifoFill() const
{
  const auto frames = static_cast<long long>(MemoryFrames());
  const auto used = static_cast<long long>(memory_.size());
  return (used * state_.FifoCapacity() + frames - 1) /
         frames; // up, so that percentages made of it are not one short
}

int64_t TAcquisition::Now() const
{
  if (!IsPaced()) return freeNowNs_;
  return std::chrono::duration_cast<std::chrono::nanoseconds>(TClock::now().time_since_epoch()).count();
}

int64_t TAcquisition::Ticks(int64_t ns) const
{
  const int64_t passed = ns - timestampZeroNs_;
  const int64_t frequency = state_.model.timestampFrequency;
  return passed / kNsPerSecond * frequency + passed % kNsPerSecond * frequency / kNsPerSecond;
}

/// Takes over changed settings.
void TAcquisition::Prepare()
{
  if (painting_) return; // the next frame takes them over
  preparedRevision_ = state_.revision;
  painter_.Prepare(state_);
  imageSizeBytes_ = painter_.ImageSizeBytes();
  schedule_.Retime(state_);
}

int64_t TAcquisition::NextEndNs()
{
  if (preparedRevision_ != state_.revision) Prepare();
  return schedule_.NextEndNs();
}

/// The camera's thread.
void TAcquisition::Run()
{
  TDeviceLock lock(deviceMutex_);
  while (!closed_) {
    const TClock::time_point now = TClock::now();
    if (painting_ || holds_ > 0)
      work_.wait(lock);
    else if (stalledUntil_ > now)
      work_.wait_until(lock, stalledUntil_);
    else if (!memory_.empty() && !queued_.IsEmpty())
      TransferStored(lock);
    else if (!state_.acquiring)
      work_.wait(lock);
    else if (const int64_t end = NextEndNs(); end == TFrameSchedule::kNever)
      work_.wait(lock);
    else if (end > Now())
      work_.wait_until(lock, TClock::time_point(std::chrono::nanoseconds(end)));
    else {
      TExposedFrame frame{.content = Expose(), .pushed = false, .bytes = {}, .faults = {}};
      if (TakeFaults(frame)) Store(lock, std::move(frame));
      EndIfComplete();
    }
  }
}

/// Without the wall clock: makes the next frame if there is a buffer for it. True when the caller should look
/// again.
bool TAcquisition::MakeFrame(TDeviceLock& lock)
{
  if (painting_ || holds_ > 0 || queued_.IsEmpty()) return false;
  if (stalledUntil_ != TClock::time_point{}) {
    if (TClock::now() < stalledUntil_) return false;
    stalledUntil_ = {};
  }
  if (!memory_.empty()) return TransferStored(lock);
  if (!state_.acquiring || state_.configuration.source == ESource::Manual) return false;
  if (NextEndNs() == TFrameSchedule::kNever) return false;

  TExposedFrame frame{.content = Expose(), .pushed = false, .bytes = {}, .faults = {}};
  if (TakeFaults(frame)) Store(lock, std::move(frame));
  EndIfComplete();
  return true;
}

/// The shortest path of a frame, for measuring everything but the camera: straight to the caller that waits. Releases
/// the lock when it succeeds.
bool TAcquisition::MakeStampedFrame(TDeviceLock& lock, unsigned char*& bytes, int& sizeBytes)
{
  if (!painter_.IsStamped() || !faults_.IsEmpty() || !state_.acquiring || queued_.IsEmpty()) return false;
  if (!memory_.empty() || painting_ || stalledUntil_ != TClock::time_point{}) return false;
  if (state_.configuration.source == ESource::Manual || NextEndNs() == TFrameSchedule::kNever) return false;

  const TFramePainter::TStampedFrame frame = painter_.Stamped(Expose());
  bytes = queued_.Pop().bytes;
  sizeBytes = static_cast<int>(imageSizeBytes_);
  lastDelivered_ = {bytes, sizeBytes, VX_SUCCESS, true};
  ++status_.statistics.framesDelivered;
  EndIfComplete();
  stampWriters_.fetch_add(1, std::memory_order_relaxed);
  lock.unlock();
  frame.Write(bytes);
  if (stampWriters_.fetch_sub(1, std::memory_order_release) == 1) stampWriters_.notify_all();
  return true;
}

TFramePainter::TFrame TAcquisition::Expose()
{
  const int64_t start = schedule_.Take();
  state_.thermal.AdvanceTo(start);
  if (!IsPaced()) freeNowNs_ = start + schedule_.Timing().durationNs;
  ++status_.statistics.framesProduced;
  return {++frameNumber_,      runNumber_,
          start - runStartNs_, schedule_.Timing().exposureSeconds,
          Ticks(start),        state_.thermal.SensorCelsius()};
}

/// Applies the fault plan to a frame that was just exposed. False: it is lost.
bool TAcquisition::TakeFaults(TExposedFrame& frame)
{
  if (faults_.IsEmpty()) return true;
  for (const TPlannedFault& fault : faults_.OnCamera()) {
    const TClock::time_point end = TClock::now() + std::chrono::nanoseconds(fault.durationNs);
    if (fault.kind == EPlannedFault::Stall) {
      stalledUntil_ = end;
      schedule_.Delay(fault.durationNs);
      continue;
    }
    status_.plugged = false;
    if (fault.kind == EPlannedFault::Replug) status_.pluggedAgainAt = end;
    ++status_.statistics.framesDropped;
    Unplug();
    return false;
  }
  frame.faults = faults_.OnFrame();
  for (const TPlannedFault& fault : frame.faults) {
    if (fault.kind == EPlannedFault::Late)
      stalledUntil_ = TClock::now() + std::chrono::nanoseconds(fault.durationNs);
  }
  if (Has(frame.faults, EPlannedFault::Drop)) {
    ++status_.statistics.framesDropped;
    return false;
  }
  if (state_.metadata) {
    for (const TPlannedFault& fault : faults_.OnMetadata()) frame.faults.push_back(fault);
  }
  return true;
}

/// Puts a frame into a buffer, or into the camera's memory when there is none.
int TAcquisition::Store(TDeviceLock& lock, TExposedFrame frame)
{
  const bool stalled = stalledUntil_ != TClock::time_point{} && TClock::now() < stalledUntil_;
  if (memory_.empty() && !queued_.IsEmpty() && !stalled) {
    Deliver(lock, frame);
    return VX_SUCCESS;
  }
  if (memory_.size() < MemoryFrames()) {
    memory_.push_back(std::move(frame));
    Wake(); // somebody may be waiting for the stall to end
    return VX_SUCCESS;
  }
  ++status_.statistics.framesOverflowed;
  overflow_ = true;
  Wake();
  return VX_ERR_HARDWARE_OVERFLOW;
}

void TAcquisition::Deliver(TDeviceLock& lock, TExposedFrame& frame)
{
  if (!frame.faults.empty()) return DeliverFaulty(lock, frame);
  const TBuffer buffer = queued_.Pop();
  const int sizeBytes = std::min(FrameBytes(frame), buffer.sizeBytes);
  Fill(lock, frame, buffer.bytes, sizeBytes);
  lastDelivered_ = {buffer.bytes, sizeBytes, VX_SUCCESS, true};
  ready_.Push(lastDelivered_);
  Wake();
}

void TAcquisition::DeliverFaulty(TDeviceLock& lock, TExposedFrame& frame)
{
  TReady answer{nullptr, FrameBytes(frame), VX_SUCCESS, false};
  if (Has(frame.faults, EPlannedFault::Null) || Has(frame.faults, EPlannedFault::Repeat)) {
    ++status_.statistics.framesDropped;
    if (Has(frame.faults, EPlannedFault::Repeat)) answer = lastDelivered_;
    answer.held = false;
    ready_.Push(answer);
    return Wake();
  }
  for (const TPlannedFault& fault : frame.faults) {
    if (fault.kind != EPlannedFault::Swap) continue;
    const auto position = std::clamp<long long>(fault.number, 1, static_cast<long long>(queued_.Size())) - 1;
    std::swap(queued_.Front(), queued_.At(static_cast<size_t>(position)));
  }
  if (Has(frame.faults, EPlannedFault::Foreign)) {
    foreignBuffer_.resize(static_cast<size_t>(std::max<int64_t>(answer.sizeBytes, imageSizeBytes_)));
    answer.bytes = foreignBuffer_.data();
  } else {
    const TBuffer buffer = queued_.Pop();
    answer.bytes = buffer.bytes;
    answer.sizeBytes = std::min(answer.sizeBytes, buffer.sizeBytes);
    answer.held = true;
  }
  Fill(lock, frame, answer.bytes, answer.sizeBytes);
  const int whole = answer.sizeBytes;
  for (const TPlannedFault& fault : frame.faults)
    ApplyToDelivered(fault, answer.bytes, whole, kTailBytes, answer.sizeBytes);
  lastDelivered_ = answer;
  ready_.Push(answer);
  Wake();
}

/// Puts a frame's bytes into a buffer, with the lock released.
void TAcquisition::Fill(TDeviceLock& lock, const TExposedFrame& frame, unsigned char* bytes, int sizeBytes)
{
  painting_ = true;
  lock.unlock();
  if (!frame.pushed)
    painter_.Paint(frame.content, bytes);
  else if (sizeBytes > 0)
    std::memcpy(bytes, frame.bytes.data(), static_cast<size_t>(sizeBytes));
  lock.lock();
  painting_ = false;
  if (holds_ > 0) changed_.notify_all();
}

int TAcquisition::FrameBytes(const TExposedFrame& frame) const
{
  return static_cast<int>(frame.pushed ? static_cast<int64_t>(frame.bytes.size()) : imageSizeBytes_);
}

/// Moves the oldest frame of the camera's memory into a queued buffer. True when there was one.
bool TAcquisition::TransferStored(TDeviceLock& lock)
{
  if (memory_.empty() || queued_.IsEmpty()) return false;
  if (preparedRevision_ != state_.revision) Prepare();
  TExposedFrame frame = std::move(memory_.front());
  memory_.pop_front();
  Deliver(lock, frame);
  EndIfComplete();
  return true;
}

size_t TAcquisition::MemoryFrames() const
{
  const TCameraConfiguration& configuration = state_.configuration;
  if (configuration.memoryFrames > 0) return static_cast<size_t>(configuration.memoryFrames);
  const long long bytes = configuration.memoryBytes > 0 ? configuration.memoryBytes : state_.model.memoryBytes;
  return static_cast<size_t>(std::max<long long>(1, bytes / std::max<int64_t>(1, imageSizeBytes_)));
}

/// A fixed-count run ends when its last frame lies in a buffer, or is lost.
void TAcquisition::EndIfComplete()
{
  if (state_.acquiring && schedule_.IsFinished() && memory_.empty()) EndRun();
}

/// Ends the run, frames in the camera's memory are lost, and wakes the waits that began during it.
void TAcquisition::EndRun()
{
  state_.acquiring = false;
  status_.statistics.framesDiscarded += memory_.size();
  memory_.clear();
  Wake();
}

/// Waits until no buffer is being written. Keeps anybody from beginning meanwhile.
void TAcquisition::WaitUntilPainted(TDeviceLock& lock)
{
  if (painting_) {
    ++holds_;
    ++waiters_;
    while (painting_) changed_.wait(lock);
    --waiters_;
    --holds_;
    work_.notify_all();
    changed_.notify_all();
  }
  // Stamps are written without the lock, so it can be kept meanwhile.
  while (const int writers = stampWriters_.load(std::memory_order_acquire)) stampWriters_.wait(writers);
}

/// Whether a wait has something to return at once.
bool TAcquisition::HasAnswer()
{
  return overflow_ || !ready_.IsEmpty() || closed_ || !status_.IsPresent();
}

/// Gives callers that wait for the lock a turn.
void TAcquisition::LetOthersIn(TDeviceLock& lock)
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
  for (size_t i = 0; i < ready_.Size(); ++i) status_.statistics.framesDiscarded += ready_.At(i).held ? 1 : 0;
  ready_.Clear();
  queued_.Clear();
  lastDelivered_ = {};
  overflow_ = false;
}

void TAcquisition::Wake()
{
  if (waiters_ > 0) changed_.notify_all();
}

} // namespace vxsim
