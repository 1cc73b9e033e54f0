// SPDX-License-Identifier: MIT
// The calls of a trace that a replay makes.
#include "tools/replay/TReplayPlan.h"

#include "vxmcd_result_codes.h"

#include <algorithm>
#include <fnmatch.h>
#include <map>

namespace vxtool {

bool IsOneOf(const std::string& name, std::initializer_list<const char*> patterns)
{
  return std::any_of(patterns.begin(), patterns.end(),
                     [&](const char* pattern) { return fnmatch(pattern, name.c_str(), 0) == 0; });
}

bool DependsOnRun(const std::string& function)
{
  return IsOneOf(function,
                 {"GetStatus", "GetAcquisitionProgress", "*Get*Image*", "GetAcquiredData*", "WaitForAcquisition*",
                  "AbortAcquisition", "SendSoftwareTrigger", "CancelWait", "vxsys_GetRawMetaDataInfo"});
}

bool IsWait(const std::string& function)
{
  return function.starts_with("WaitForAcquisition");
}

TReplayPlan::TReplayPlan(const TTraceFile& file)
{
  std::map<std::uint32_t, std::size_t> places;                // of threads
  std::map<std::uint32_t, std::vector<std::size_t>> underWay; // by thread, the outermost first
  for (const TTraceCall& call : file.Calls()) {
    if (!call.function->isApi) continue;
    const std::size_t index = steps_.size();
    steps_.push_back({.call = &call, .inner = {}});
    auto& outer = underWay[call.thread];
    while (!outer.empty() && steps_[outer.back()].call->depth >= call.depth) outer.pop_back();
    if (!outer.empty()) {
      steps_[outer.back()].inner.push_back(index);
    } else {
      const auto [place, isNew] = places.emplace(call.thread, threads_.size());
      if (isNew) threads_.emplace_back();
      threads_[place->second].push_back(index);
    }
    outer.push_back(index);
  }
  RankEnds();
  FindRuns();
}

void TReplayPlan::RankEnds()
{
  // In a damaged trace calls end before they begin; then they would have to wait for one another.
  const auto endOf = [this](std::size_t index) {
    return std::max(steps_[index].call->endSeconds, steps_[index].call->beginSeconds);
  };
  std::vector<std::size_t> ended;
  for (const auto& thread : threads_)
    for (const std::size_t index : thread)
      if (steps_[index].call->state == CallState::Ended || steps_[index].call->state == CallState::Thrown)
        ended.push_back(index);
  std::stable_sort(ended.begin(), ended.end(), [&](std::size_t a, std::size_t b) { return endOf(a) < endOf(b); });
  std::vector<double> ends;
  for (const std::size_t index : ended) {
    steps_[index].endRank = ends.size();
    ends.push_back(endOf(index));
  }
  for (const auto& thread : threads_)
    for (const std::size_t index : thread) {
      const auto before = std::lower_bound(ends.begin(), ends.end(), steps_[index].call->beginSeconds);
      steps_[index].endedBefore = static_cast<std::size_t>(before - ends.begin());
    }
}

// A run goes on until it is aborted, or the program knows that it is over.
void TReplayPlan::FindRuns()
{
  std::size_t run = TReplayStep::kNone;
  std::size_t series = TReplayStep::kNone;
  std::map<std::uint32_t, std::size_t> images; // that threads have waited for during the run
  for (std::size_t index = 0; index < steps_.size(); ++index) {
    TReplayStep& step = steps_[index];
    const std::string& name = step.call->function->name;
    if (DependsOnRun(name)) {
      const auto image = images.find(step.call->thread);
      step.run = run;
      step.series = series;
      step.event = image == images.end() ? run : image->second;
    }
    if (step.call->state != CallState::Ended || step.call->Code() != RC_SUCCESS) continue;
    const bool isEnd = name == "AbortAcquisition" || name == "ShutDown" ||
                       (name == "GetStatus" && step.call->Value("status").whole == RC_IDLE);
    if (isEnd || name == "StartAcquisition") {
      run = isEnd ? TReplayStep::kNone : index;
      if (!isEnd) series = index;
      images.clear();
    } else if (run != TReplayStep::kNone && IsWait(name)) {
      images[step.call->thread] = index;
    }
  }
}

} // namespace vxtool
