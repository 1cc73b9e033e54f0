// SPDX-License-Identifier: MIT
// What a trace says as a whole.
#include "tools/TTraceStatistics.h"

#include "vxcore.h"
#include "vxmcd.h"

#include <algorithm>
#include <numeric>

namespace vxtool {

namespace {

bool StartsRun(const TTraceCall& call)
{
  if (call.state != CallState::Ended) return false;
  if (call.function->name == "VX_Command")
    return call.Code() == VX_SUCCESS && call.Values().at(1).text == "AcquisitionStart";
  return call.function->name == "StartAcquisition" && call.Code() == RC_SUCCESS;
}

} // namespace

double TTraceStatistics::TFunction::Total() const
{
  return std::accumulate(seconds.begin(), seconds.end(), 0.0);
}

double TTraceStatistics::TFunction::Quantile(double quantile) const
{
  if (seconds.empty()) return 0.0;
  return seconds[static_cast<std::size_t>(quantile * static_cast<double>(seconds.size() - 1))];
}

double TTraceStatistics::TRun::FramesPerSecond() const
{
  const double length = endSeconds - beginSeconds;
  return length > 0.0 ? static_cast<double>(frames) / length : 0.0;
}

TTraceStatistics::TTraceStatistics(const TTraceFile& file) : file_(file)
{
  for (const TTraceCall& call : file.Calls()) seconds_ = std::max({seconds_, call.beginSeconds, call.endSeconds});
  if (!file.Calls().empty()) seconds_ -= file.Calls().front().beginSeconds;
  CountFunctions();
  CountRuns();
}

void TTraceStatistics::CountFunctions()
{
  std::map<const TTraceFunction*, TFunction> functions;
  for (const TTraceCall& call : file_.Calls()) {
    TFunction& row = functions[call.function];
    row.function = call.function;
    ++row.calls;
    if (call.HasFailed()) ++row.failures[call.Code()];
    if (call.state == CallState::Ended && call.HasBegin())
      row.seconds.push_back(call.endSeconds - call.beginSeconds);
  }
  for (auto& [function, row] : functions) {
    std::sort(row.seconds.begin(), row.seconds.end());
    functions_.push_back(std::move(row));
  }
  std::stable_sort(functions_.begin(), functions_.end(), [](const TFunction& a, const TFunction& b) {
    return a.Total() != b.Total() ? a.Total() > b.Total() : a.function->name < b.function->name;
  });
}

void TTraceStatistics::CountRuns()
{
  const bool hasCore = std::any_of(file_.Calls().begin(), file_.Calls().end(),
                                   [](const TTraceCall& call) { return !call.function->isApi; });
  for (const TTraceCall& call : file_.Calls())
    if (call.function->isApi != hasCore && StartsRun(call)) {
      runs_.push_back({});
      runs_.back().beginSeconds = runs_.back().endSeconds = call.beginSeconds;
    }
  const auto runAt = [this](double seconds) -> TRun* {
    const auto after = std::upper_bound(runs_.begin(), runs_.end(), seconds,
                                        [](double time, const TRun& run) { return time < run.beginSeconds; });
    return after == runs_.begin() ? nullptr : &*(after - 1);
  };
  for (const TTraceCall& call : file_.Calls()) {
    TRun* const run = runAt(call.beginSeconds);
    if (!run || call.state != CallState::Ended) continue;
    if (call.function->name == "VX_WaitBuffer" && call.Code() == VX_SUCCESS) {
      ++run->frames;
      run->endSeconds = std::max(run->endSeconds, call.endSeconds);
    } else if (call.function->name == "VX_WaitBuffer" && call.Code() == VX_ERR_HARDWARE_OVERFLOW) {
      ++run->framesLost;
    } else if (call.function->signature.HasPixels()) {
      run->imagesCopied += call.Value("array").pixels.images;
    }
  }
  for (const auto& frames : file_.Frames())
    if (TRun* const run = runAt(frames.seconds)) {
      run->frames += frames.counts.waits;
      if (frames.counts.waits > 0) run->endSeconds = std::max(run->endSeconds, frames.seconds);
    }
}

} // namespace vxtool
