// SPDX-License-Identifier: MIT
// Makes the calls of a trace again.
#include "tools/replay/TReplay.h"

#include "tools/TInterrupt.h"
#include "vxmcd.h"
#include "vxmcd_result_codes.h"

#include <algorithm>
#include <cmath>
#include <stdexcept>
#include <system_error>

namespace vxtool {

namespace {

using std::chrono::duration_cast;
using std::chrono::milliseconds;

// An image that has come in the recording may take ten times as long, and at least so long.
constexpr double kFactor = 10.0;
constexpr double kMinWaitSeconds = 5.0;
constexpr milliseconds kMaxPause{20};
constexpr milliseconds kWatchPeriod{50};

TReplayOrder::Clock::duration Seconds(double seconds)
{
  constexpr double kMaxSeconds = 1e9; // a damaged trace may say anything
  if (!(std::abs(seconds) < kMaxSeconds)) seconds = seconds < 0.0 ? -kMaxSeconds : kMaxSeconds;
  return duration_cast<TReplayOrder::Clock::duration>(std::chrono::duration<double>(seconds));
}

double RecordedSeconds(const TTraceCall& call)
{
  return call.state == CallState::Ended ? call.endSeconds - call.beginSeconds : 0.0;
}

// For an image that came in the recording.
TReplayOrder::Clock::duration LongestWait(const TTraceCall& recorded)
{
  return Seconds(std::max(kFactor * RecordedSeconds(recorded), kMinWaitSeconds));
}

// The handle that a function takes first.
long FirstOf(const TReplayArguments& arguments)
{
  return static_cast<long>(arguments.Values()[0]);
}

bool ChangesHardware(const std::string& function)
{
  return IsOneOf(function,
                 {"vxsys_*Set*", "vxsys_*Commit*", "vxsys_EEP*", "LoadEEPROM", "I2CBurstWrite", "TriggerBoard_*"});
}

} // namespace

/// What the program's callback did during a call, for the replay's callback.
struct TReplay::TInner
{
  TReplay& replay;
  std::size_t step;
  TReplayRoom& room;
  bool isDone = false;
};

thread_local TReplay::TInner* TReplay::inner_ = nullptr;
thread_local long TReplay::cameraOfThread_ = 0;

TReplay::TReplay(const TReplayPlan& plan, const TReplayFiles& files, const TSettings& settings,
                 TReplayReport& report)
    : plan_(plan),
      files_(files),
      settings_(settings),
      report_(report),
      comparison_(plan, objects_),
      order_(static_cast<std::size_t>(
          std::count_if(plan.Steps().begin(), plan.Steps().end(),
                        [](const TReplayStep& step) { return step.endRank != TReplayStep::kNone; }))),
      threadsLeft_(plan.Threads().size())
{
}

TReplay::~TReplay()
{
  order_.Stop();
  if (starter_.joinable()) starter_.join();
}

bool TReplay::Run()
{
  begin_ = Clock::now();
  starter_ = std::thread([this] { StartThreads(); });
  std::unique_lock lock(mutex_);
  while (!ended_.wait_for(lock, kWatchPeriod, [this] { return hasEnded_; })) {
    if (TInterrupt::Happened()) {
      report_.Remark("interrupted: not all calls were made");
      order_.Stop();
      return false;
    }
    CancelLateWaits();
    if (HasHung()) return false;
  }
  return true;
}

// A thread of the program that began after others had ended is started after them.
void TReplay::StartThreads()
{
  for (std::size_t thread = 0; thread < plan_.Threads().size(); ++thread) {
    if (!order_.AwaitEnds(plan_.Steps()[plan_.Threads()[thread].front()].endedBefore)) break;
    try {
      threads_.emplace_back([this, thread] { RunThread(thread); });
    } catch (const std::system_error& error) {
      report_.NoteDifference(plan_.Threads()[thread].front(),
                             std::string("is not replayed: a thread could not be started: ") + error.what());
      order_.Stop();
      break;
    }
  }
  for (std::thread& thread : threads_) thread.join();
  const std::lock_guard lock(mutex_);
  hasEnded_ = true;
  ended_.notify_all();
}

void TReplay::RunThread(std::size_t thread)
{
  TReplayRoom room;
  for (const std::size_t index : plan_.Threads()[thread]) {
    const TReplayStep& step = plan_.Steps()[index];
    if (!AwaitTurn(step)) break;
    MakeStep(index, room);
    if (step.endRank != TReplayStep::kNone) order_.NoteEnd(step.endRank);
  }
  const std::lock_guard lock(mutex_);
  --threadsLeft_;
}

bool TReplay::AwaitTurn(const TReplayStep& step)
{
  if (!order_.AwaitEnds(step.endedBefore)) return false;
  const double first = plan_.Steps().front().call->beginSeconds;
  if (settings_.isAtRecordedSpeed) return order_.AwaitTime(begin_ + Seconds(step.call->beginSeconds - first));
  if (step.event == TReplayStep::kNone) return true;
  // Its answer depends on how far the run is.
  Clock::time_point event;
  {
    const std::lock_guard lock(mutex_);
    const auto found = events_.find(step.event);
    if (found == events_.end()) return true;
    event = found->second;
  }
  const double after = step.call->beginSeconds - plan_.Steps()[step.event].call->endSeconds;
  // A longer pause is the program's own.
  return order_.AwaitTime(std::min(event + Seconds(after), Clock::now() + Seconds(settings_.timeoutSeconds)));
}

void TReplay::MakeStep(std::size_t index, TReplayRoom& room)
{
  const TTraceCall& recorded = *plan_.Steps()[index].call;
  const TReplayFunction* const function = FindReplayFunction(recorded.function->name);
  if (const char* const why = WhySkipped(recorded, function)) return report_.NoteSkipped(index, why);
  const TReplayArguments::TContext context = {objects_, files_, room, &TReplay::Observe};
  const Clock::time_point begin = Clock::now();
  for (milliseconds pause{1};; pause = std::min(2 * pause, kMaxPause)) {
    const TReplayArguments arguments(recorded, *function, context);
    if (arguments.WhyUnknown()) return report_.NoteSkipped(index, arguments.WhyUnknown());
    std::vector<std::byte> outputs;
    const TTraceCall replayed = MakeCall(index, *function, arguments, room, outputs);
    if (!ShallRepeat(index, replayed, begin)) {
      if (recorded.function->name == "StartAcquisition" || IsWait(recorded.function->name)) {
        const std::lock_guard lock(mutex_);
        events_[index] = Clock::now();
      }
      return Report(index, replayed);
    }
    if (!order_.AwaitTime(Clock::now() + pause)) return;
  }
}

const char* TReplay::WhySkipped(const TTraceCall& call, const TReplayFunction* function) const
{
  if (!function) return "this library does not have them";
  const bool areIgnored = function->signature.IsUnused() && call.function->signature.IsUnused();
  if (!areIgnored && function->signature != call.function->signature)
    return "they have other arguments in this library";
  if (!call.HasBegin()) return "their beginning is not in the trace";
  if (!settings_.mayChangeHardware && ChangesHardware(call.function->name))
    return "they may change the camera for good, and not all cameras are simulated";
  return nullptr;
}

TTraceCall TReplay::MakeCall(std::size_t index, const TReplayFunction& function, const TReplayArguments& arguments,
                             TReplayRoom& room, std::vector<std::byte>& outputs)
{
  const TReplayStep& step = plan_.Steps()[index];
  TTraceCall replayed = *step.call;
  TInner inner = {*this, index, room};
  TInner* const outer = inner_;
  inner_ = &inner;
  const std::string& name = step.call->function->name;
  NoteUnderWay(index, name.starts_with("WaitForAcquisitionByHandle") ? FirstOf(arguments) : cameraOfThread_);
  try {
    outputs = arguments.Outputs(function.call(arguments.Values()));
    replayed.state = CallState::Ended;
    replayed.outputs = outputs;
    if (name == "vxmcd_SetCurrentCameraOfThread" && replayed.Code() == RC_SUCCESS)
      cameraOfThread_ = FirstOf(arguments);
  } catch (...) {
    replayed.state = CallState::Thrown;
    replayed.outputs = {};
  }
  NoteNotUnderWay(index);
  inner_ = outer;
  if (!inner.isDone && !step.inner.empty())
    report_.NoteDifference(index, "called no function of the program, which made " +
                                      std::to_string(step.inner.size()) + " calls in it");
  return replayed;
}

// The first callback makes all calls that the program made in callbacks: which of several it was is not in the trace.
unsigned int TReplay::Observe(void* /*context*/)
{
  TInner* const inner = inner_;
  if (!inner || inner->isDone) return 0;
  inner->isDone = true;
  const TReplayStep& step = inner->replay.plan_.Steps()[inner->step];
  for (const std::size_t index : step.inner) inner->replay.MakeStep(index, inner->room);
  inner_ = inner;
  if (step.call->state == CallState::Thrown) throw std::runtime_error("as the callback of the program did");
  return 0;
}

// Whether the call is made again because the camera has not come so far.
bool TReplay::ShallRepeat(std::size_t index, const TTraceCall& replayed, Clock::time_point begin)
{
  const TReplayStep& step = plan_.Steps()[index];
  if (!comparison_.IsEarly(index, replayed)) return false;
  const std::lock_guard lock(mutex_);
  if (runsWithoutWaits_.count(step.run) > 0) return false;
  if (Clock::now() - begin < LongestWait(*step.call)) return true;
  runsWithoutWaits_.insert(step.run);
  return false;
}

void TReplay::Report(std::size_t index, const TTraceCall& replayed)
{
  const TTraceCall& recorded = *plan_.Steps()[index].call;
  if (recorded.state == CallState::Open)
    report_.Remark(recorded.function->name + "() did not return in the trace, and has returned now");
  switch (comparison_.Compare(index, replayed)) {
  case TReplayComparison::Verdict::Same:
    return report_.NoteSame();
  case TReplayComparison::Verdict::Timing:
    return report_.NoteTiming(index, replayed);
  case TReplayComparison::Verdict::Different:
    return report_.NoteDifference(index, replayed);
  }
}

void TReplay::NoteUnderWay(std::size_t step, long camera)
{
  const std::lock_guard lock(mutex_);
  underWay_.push_back({step, Clock::now(), camera});
}

void TReplay::NoteNotUnderWay(std::size_t step)
{
  const std::lock_guard lock(mutex_);
  std::erase_if(underWay_, [step](const TUnderWay& one) { return one.step == step; });
}

// Called with the lock. A wait of the program that an image ended does not end when the replay made the wait after the last
// image: images that come while no thread waits end one wait only.
void TReplay::CancelLateWaits()
{
  for (TUnderWay& one : underWay_) {
    const TTraceCall& recorded = *plan_.Steps()[one.step].call;
    const bool mayEnd = IsWait(recorded.function->name) && recorded.state == CallState::Ended &&
                        recorded.Code() == RC_SUCCESS && !one.isCancelled;
    if (!mayEnd || Clock::now() - one.since < LongestWait(recorded)) continue;
    one.isCancelled = true;
    vxmcd_SetCurrentCameraOfThread(one.camera, nullptr);
    CancelWait();
  }
}

// Called with the lock. A call that did not return in the trace either is waited for until all others have.
bool TReplay::HasHung()
{
  const Clock::time_point now = Clock::now();
  bool hasHung = false;
  std::set<std::uint32_t> asRecorded;
  for (const TUnderWay& one : underWay_) {
    const TTraceCall& recorded = *plan_.Steps()[one.step].call;
    if (now - one.since < Seconds(settings_.timeoutSeconds + kFactor * RecordedSeconds(recorded))) continue;
    if (recorded.state == CallState::Open) {
      asRecorded.insert(recorded.thread);
      continue;
    }
    report_.NoteDifference(one.step, "has not returned");
    hasHung = true;
  }
  if (!hasHung && !asRecorded.empty() && asRecorded.size() == threadsLeft_) {
    report_.Remark(std::to_string(asRecorded.size()) + " calls did not return, as in the trace");
    hasHung = true;
  }
  if (hasHung) order_.Stop();
  return hasHung;
}

} // namespace vxtool
