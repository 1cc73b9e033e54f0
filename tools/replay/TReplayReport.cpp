// SPDX-License-Identifier: MIT
// What a replay has found.
#include "tools/replay/TReplayReport.h"

#include "tools/Messages.h"
#include "tools/TraceText.h"

#include <vector>

namespace vxtool {

namespace {

// As many calls of the thread stand before the first difference.
constexpr std::size_t kCallsBefore = 5;

std::string Names(const std::set<std::string>& functions)
{
  std::string names;
  for (const std::string& function : functions) names += (names.empty() ? "" : ", ") + function;
  return names;
}

} // namespace

void TReplayReport::NoteSame()
{
  const std::lock_guard lock(mutex_);
  ++calls_;
}

void TReplayReport::NoteTiming(std::size_t step, const TTraceCall& replayed)
{
  const std::lock_guard lock(mutex_);
  ++calls_;
  ++timing_;
  if (step >= firstTimingStep_) return;
  firstTimingStep_ = step;
  firstTimingLines_ = Answers(step, replayed);
}

void TReplayReport::NoteDifference(std::size_t step, const TTraceCall& replayed)
{
  const std::lock_guard lock(mutex_);
  ++calls_;
  Add(step, Answers(step, replayed));
}

void TReplayReport::NoteDifference(std::size_t step, const std::string& what)
{
  const std::lock_guard lock(mutex_);
  Add(step, MarkedLine("<", *plan_.Steps()[step].call) + "> " + what + "\n");
}

void TReplayReport::NoteSkipped(std::size_t step, const std::string& why)
{
  const std::lock_guard lock(mutex_);
  TSkipped& skipped = skipped_[why];
  ++skipped.calls;
  skipped.functions.insert(plan_.Steps()[step].call->function->name);
}

void TReplayReport::Remark(const std::string& remark)
{
  const std::lock_guard lock(mutex_);
  remarks_ += remark + "\n";
}

void TReplayReport::Add(std::size_t step, const std::string& lines)
{
  ++differences_;
  if (step >= firstStep_) return;
  firstStep_ = step;
  firstLines_ = LinesBefore(step) + lines;
}

std::string TReplayReport::LinesBefore(std::size_t step) const
{
  std::vector<const TTraceCall*> before;
  const auto& steps = plan_.Steps();
  for (std::size_t i = step; i-- > 0 && before.size() < kCallsBefore;)
    if (steps[i].call->thread == steps[step].call->thread) before.push_back(steps[i].call);
  std::string text;
  for (auto call = before.rbegin(); call != before.rend(); ++call) text += MarkedLine(" ", **call);
  return text;
}

std::string TReplayReport::Answers(std::size_t step, const TTraceCall& replayed) const
{
  return MarkedLine("<", *plan_.Steps()[step].call) + MarkedLine(">", replayed);
}

bool TReplayReport::HasDifference() const
{
  const std::lock_guard lock(mutex_);
  return differences_ > 0;
}

std::string TReplayReport::Text() const
{
  const std::lock_guard lock(mutex_);
  std::string text = remarks_;
  if (differences_ > 0)
    text += firstLines_ + "\n" + CountText(differences_, "difference") + " in " + CountText(calls_, "call") + "\n";
  else
    text += "no difference in " + CountText(calls_, "call") + "\n";
  if (timing_ > 0)
    text += std::to_string(timing_) +
            " answers are other ones because they depend on the time or are measured; the first:\n" +
            firstTimingLines_;
  for (const auto& [why, skipped] : skipped_)
    text += "not replayed: " + CountText(skipped.calls, "call") + " of " + Names(skipped.functions) + ": " + why +
            "\n";
  return text;
}

Json TReplayReport::Summary() const
{
  const std::lock_guard lock(mutex_);
  Json skipped = Json::array();
  for (const auto& [why, one] : skipped_)
    skipped.push_back({{"calls", one.calls}, {"functions", one.functions}, {"why", why}});
  return {{"same", differences_ == 0},   {"calls", calls_},
          {"differences", differences_}, {"first_difference", JsonTextOrNull(firstLines_)},
          {"timing", timing_},           {"first_timing", JsonTextOrNull(firstTimingLines_)},
          {"not_replayed", skipped},     {"remarks", JsonTextOrNull(remarks_)}};
}

} // namespace vxtool
