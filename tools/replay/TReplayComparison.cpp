// SPDX-License-Identifier: MIT
// Compares the answers of a replay with those of the trace.
#include "tools/replay/TReplayComparison.h"

#include "vxmcd_result_codes.h"

#include <algorithm>
#include <iterator>

namespace vxtool {

namespace {

constexpr std::uint32_t kTimingCodes[] = {RC_SUCCESS, RC_NO_NEW_DATA, RC_IDLE, RC_ACQUIRING};

bool IsTimingCode(std::uint32_t code)
{
  return std::find(std::begin(kTimingCodes), std::end(kTimingCodes), code) != std::end(kTimingCodes);
}

// Their answers are other ones in each run.
bool IsMeasured(const std::string& function)
{
  return IsOneOf(function, {"GetTemperature", "GetTemperatureF", "GetTemperatureStatus", "GetFIFOUsage",
                            "vxmcd_GetSpoolSpace"});
}

// Those that write a new handle; the others take one, or say which one is in use.
bool MakesHandle(const std::string& function)
{
  return IsOneOf(function, {"GetCameraHandle", "GetSDK3Handle", "TriggerBoard_GetTriggerHandle"});
}

// Those that copy each image once.
bool TakesNextImage(const std::string& function)
{
  return function.starts_with("GetOldestImage");
}

// Handles of cameras are passed to other functions; the others belong to the feature library or the trigger board.
std::string HandleKind(const TTraceFunction& function, const TTraceArgument& argument)
{
  return argument.bytes == 8 ? TReplayObjects::kCamera : function.name;
}

} // namespace

bool TReplayComparison::IsEarly(std::size_t index, const TTraceCall& replayed) const
{
  const TReplayStep& step = plan_.Steps()[index];
  const TTraceCall& recorded = *step.call;
  if (recorded.state != CallState::Ended || replayed.state != CallState::Ended) return false;
  if (recorded.Code() != RC_SUCCESS || HadItsImageBefore(step, replayed)) return false;
  if (replayed.Code() == RC_NO_NEW_DATA || replayed.Code() == RC_ACQUIRING) return true;
  if (step.run == TReplayStep::kNone || replayed.Code() != RC_SUCCESS) return false;
  // Counts of images grow during a run.
  const auto before = recorded.Values();
  const auto now = replayed.Values();
  const auto& arguments = recorded.function->signature.Arguments();
  for (std::size_t i = 0; i < now.size(); ++i)
    if (arguments[i].isOutput && arguments[i].name != "ticks" && now[i].kind == before[i].kind &&
        now[i].whole < before[i].whole)
      return true;
  return false;
}

TReplayComparison::Verdict TReplayComparison::Compare(std::size_t index, const TTraceCall& replayed)
{
  const TReplayStep& step = plan_.Steps()[index];
  const TTraceCall& recorded = *step.call;
  if (recorded.state == CallState::Open || recorded.state == CallState::Unknown) return Verdict::Same;
  const bool isSame = recorded.state == replayed.state &&
                      (recorded.state == CallState::Thrown || HasSameOutputs(recorded, replayed));
  const Verdict verdict = isSame ? Verdict::Same : IsTiming(step, replayed) ? Verdict::Timing : Verdict::Different;
  NoteEarlyImage(step, replayed);
  return verdict;
}

// Where the program found no image yet, the replay may find one. It is missing at a later call then.
void TReplayComparison::NoteEarlyImage(const TReplayStep& step, const TTraceCall& replayed)
{
  if (!TakesNextImage(step.call->function->name) || replayed.state != CallState::Ended) return;
  const std::lock_guard lock(mutex_);
  if (step.call->Code() == RC_NO_NEW_DATA && replayed.Code() == RC_SUCCESS) ++earlyImages_[step.series];
  if (step.call->Code() == RC_SUCCESS && replayed.Code() == RC_NO_NEW_DATA && earlyImages_[step.series] > 0)
    --earlyImages_[step.series];
}

bool TReplayComparison::HadItsImageBefore(const TReplayStep& step, const TTraceCall& replayed) const
{
  if (!TakesNextImage(step.call->function->name) || replayed.Code() != RC_NO_NEW_DATA) return false;
  const std::lock_guard lock(mutex_);
  const auto early = earlyImages_.find(step.series);
  return early != earlyImages_.end() && early->second > 0;
}

bool TReplayComparison::HasSameOutputs(const TTraceCall& recorded, const TTraceCall& replayed)
{
  const TTraceSignature& signature = recorded.function->signature;
  const TTraceValue result = recorded.Result();
  if (result.kind == TTraceValue::Kind::Object
          ? !objects_.Matches("object", result.whole, replayed.Result().whole, true)
          : result != replayed.Result())
    return false;
  const auto before = recorded.Values();
  const auto now = replayed.Values();
  for (std::size_t i = 0; i < now.size(); ++i) {
    const TTraceArgument& argument = signature.Arguments()[i];
    // Clock values are other ones each time, and pixels have noise.
    if (!argument.isOutput || argument.type == TraceType::Pixels || argument.name == "ticks") continue;
    const bool isHandle = argument.name == "handle" && now[i].kind == before[i].kind;
    if (isHandle ? !objects_.Matches(HandleKind(*recorded.function, argument), before[i].whole, now[i].whole,
                                     recorded.Code() == RC_SUCCESS && MakesHandle(recorded.function->name))
                 : now[i] != before[i])
      return false;
  }
  return true;
}

bool TReplayComparison::IsTiming(const TReplayStep& step, const TTraceCall& replayed) const
{
  const TTraceCall& recorded = *step.call;
  if (recorded.state != CallState::Ended || replayed.state != CallState::Ended) return false;
  if (IsMeasured(recorded.function->name)) return !recorded.HasFailed() && !replayed.HasFailed();
  if (!DependsOnRun(recorded.function->name)) return false;
  // An image that the program got and the replay, which has waited for it, did not get is missing. Waits may find that an
  // image has come before.
  const bool isMissing = recorded.Code() == RC_SUCCESS && replayed.Code() == RC_NO_NEW_DATA &&
                         !IsWait(recorded.function->name) && !HadItsImageBefore(step, replayed);
  if (isMissing || !IsTimingCode(recorded.Code()) || !IsTimingCode(replayed.Code())) return false;
  if (recorded.function->name != "GetStatus") return true;
  return IsTimingCode(static_cast<std::uint32_t>(recorded.Value("status").whole)) &&
         IsTimingCode(static_cast<std::uint32_t>(replayed.Value("status").whole));
}

} // namespace vxtool
