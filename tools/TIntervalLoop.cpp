// SPDX-License-Identifier: MIT
// Wait for the time, run one image, note what is late or missing.
#include "tools/TIntervalLoop.h"

#include "tools/Messages.h"
#include "vxmcd.h"

#include <algorithm>
#include <cstdio>
#include <thread>
#include <utility>

namespace vxtool {

namespace {

constexpr std::chrono::milliseconds kWaitSlice{100};
constexpr double kLateSeconds = 0.1; // a start that is later than this is worth a note
constexpr int kMaxLostInARow = 1;

std::string MissingText(long first, long last)
{
  if (first == last) return "image " + std::to_string(first) + " is missing";
  return "images " + std::to_string(first) + " to " + std::to_string(last) + " are missing";
}

} // namespace

TIntervalLoop::TIntervalLoop(ICamera& camera, IImageWriter* writer, const TRunSettings& settings,
                             std::function<bool()> isInterrupted, std::function<void(const TProgress&)> onProgress,
                             std::function<void(const std::string&)> onNote)
    : camera_(camera),
      writer_(writer),
      settings_(settings),
      isInterrupted_(std::move(isInterrupted)),
      onProgress_(std::move(onProgress)),
      onNote_(std::move(onNote))
{
}

RunEnd TIntervalLoop::Run()
{
  start_ = Clock::now();
  const RunEnd end = TakeImages();
  seconds_ = SecondsSinceStart();
  return end;
}

RunEnd TIntervalLoop::TakeImages()
{
  for (long image = 1; IsWanted(image); ++image) {
    if (!WaitFor(image)) return RunEnd::Interrupted;
    image = SkipMissed(image);
    if (!IsWanted(image)) break;
    const RunEnd end = Take(image);
    if (end != RunEnd::Complete) return end;
  }
  return RunEnd::Complete;
}

TIntervalLoop::Clock::time_point TIntervalLoop::DueTime(long image) const
{
  const std::chrono::duration<double> sinceStart(static_cast<double>(image - 1) * settings_.intervalSeconds);
  return start_ + std::chrono::duration_cast<Clock::duration>(sinceStart);
}

bool TIntervalLoop::WaitFor(long image)
{
  const Clock::time_point due = DueTime(image);
  for (;;) {
    if (isInterrupted_()) return false;
    const Clock::duration left = due - Clock::now();
    if (left <= Clock::duration::zero()) return true;
    TProgress progress;
    progress.untilImageSeconds = std::chrono::duration<double>(left).count() + settings_.firstImageSeconds;
    Report(progress);
    std::this_thread::sleep_for(std::min<Clock::duration>(left, kWaitSlice));
  }
}

long TIntervalLoop::SkipMissed(long image)
{
  const double seconds = SecondsSinceStart();
  const long current = std::max(image, static_cast<long>(seconds / settings_.intervalSeconds) + 1);
  const long lastMissed = (IsWanted(current) ? current : settings_.wantedImages + 1) - 1;
  if (lastMissed >= image) {
    statistics_.AddMissed(lastMissed + 1 - image);
    onNote_(MissingText(image, lastMissed) + ": the time had passed; the schedule goes on");
  }
  const double lateSeconds = seconds - static_cast<double>(current - 1) * settings_.intervalSeconds;
  if (!IsWanted(current) || lateSeconds <= kLateSeconds) return current;
  statistics_.AddLate();
  char text[80];
  std::snprintf(text, sizeof text, "image %ld starts %.2f s late; the schedule goes on", current, lateSeconds);
  onNote_(text);
  return current;
}

RunEnd TIntervalLoop::Take(long image)
{
  TRunSettings settings = settings_;
  settings.wantedImages = 1;
  settings.isEndless = false;
  settings.hasSteadyRate = false;
  settings.imagesBefore = image - 1;
  auto run = std::make_unique<TRunLoop>(camera_, writer_, settings, isInterrupted_,
                                        [this](const TProgress& progress) { Report(progress); });
  const RunEnd end = run->Run();
  const bool isLost = run->EndStatus() == static_cast<int>(RC_STATUS_TIMED_OUT);
  statistics_.AddRun(run->Statistics().Counts(), isLost ? 1 : 0);
  lostInARow_ = isLost ? lostInARow_ + 1 : 0;
  message_ = run->Message();
  if (!run->LastImage().empty()) newest_ = std::move(run);
  if (!isLost || lostInARow_ > kMaxLostInARow) return end;
  onNote_(MissingText(image, image) + ", the schedule goes on: " + message_);
  message_.clear();
  return RunEnd::Complete;
}

void TIntervalLoop::Report(TProgress progress)
{
  const TFrameCounts& counts = statistics_.Counts();
  progress.seconds = SecondsSinceStart();
  progress.delivered += counts.delivered;
  progress.fetched += counts.fetched;
  progress.wanted = settings_.wantedImages;
  progress.lost = progress.skipped = counts.Lost();
  progress.imageBytes = settings_.shape.Bytes();
  progress.ringFill.reset();
  progress.imageSeconds = settings_.intervalSeconds;
  onProgress_(progress);
}

} // namespace vxtool
