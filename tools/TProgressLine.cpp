// SPDX-License-Identifier: MIT
// The progress line: its text, and how often it is written.
#include "tools/TProgressLine.h"

#include "tools/TCameraOutput.h"

#include <algorithm>
#include <cmath>

namespace vxtool {

namespace {
constexpr double kTerminalPeriod = 0.2;
constexpr double kMinPlainPeriod = 2.0;
constexpr double kMaxPlainPeriod = 60.0;
constexpr double kLongImage = 1.0; // an image that takes so long is waited for, at no rate that could be shown
} // namespace

std::string ProgressText(const TProgress& progress, double imagesPerSecond)
{
  char text[160] = "";
  const std::string wanted = progress.wanted > 0 ? "/" + std::to_string(progress.wanted) : "";
  const long missing = progress.wanted - progress.fetched - progress.skipped;
  const bool isLong = progress.imageSeconds >= kLongImage;
  double left = 0.0;
  std::string line = std::to_string(progress.fetched) + wanted + " images, ";
  if (isLong) {
    left = progress.untilImageSeconds + static_cast<double>(missing - 1) * progress.imageSeconds;
    if (progress.wanted == 0 || missing > 0)
      std::snprintf(text, sizeof text, "next image in %.0f s, ", std::ceil(progress.untilImageSeconds));
  } else {
    if (imagesPerSecond > 0.0) left = static_cast<double>(missing) / imagesPerSecond;
    const double megabytes = imagesPerSecond * static_cast<double>(progress.imageBytes) / 1.0e6;
    std::snprintf(text, sizeof text, "%.1f/s, %.1f MB/s, ", imagesPerSecond, megabytes);
  }
  line += text;
  if (progress.ringFill) {
    std::snprintf(text, sizeof text, "ring %.0f %%, ", 100.0 * *progress.ringFill);
    line += text;
  }
  line += "lost " + std::to_string(progress.lost);
  if (progress.wanted > 0 && (isLong ? missing > 1 : imagesPerSecond > 0.0)) {
    std::snprintf(text, sizeof text, ", %.0f s left", std::ceil(left));
    line += text;
  }
  return line;
}

bool TProgressLine::IsDue(double seconds) const
{
  return seconds - lastSeconds_ >= (isTerminal_ ? kTerminalPeriod : plainPeriod_);
}

void TProgressLine::Show(const TProgress& progress)
{
  plainPeriod_ = isShown_ ? std::clamp(progress.imageSeconds, kMinPlainPeriod, kMaxPlainPeriod) : kMinPlainPeriod;
  if (!IsDue(progress.seconds)) return;
  const double rate = static_cast<double>(progress.fetched - lastFetched_) / (progress.seconds - lastSeconds_);
  lastFetched_ = progress.fetched;
  ShowText(ProgressText(progress, rate), progress.seconds);
}

void TProgressLine::ShowText(const std::string& text, double seconds)
{
  if (!IsDue(seconds)) return;
  lastSeconds_ = seconds;
  isShown_ = true;
  if (TCameraOutput* const output = TCameraOutput::OfThread()) {
    output->ShowProgress(text);
    return;
  }
  // On a terminal: back to the start of the line, and clear what a longer text left behind.
  const std::string shown = isTerminal_ ? FittingText(stream_, text) : text;
  std::fprintf(stream_, isTerminal_ ? "\r%s\x1b[K" : "%s\n", shown.c_str());
  std::fflush(stream_);
}

void TProgressLine::Finish()
{
  TCameraOutput* const output = TCameraOutput::OfThread();
  if (output) output->RemoveProgress();
  if (isTerminal_ && isShown_ && !output) std::fputc('\n', stream_);
  isShown_ = false;
  lastSeconds_ = 0.0;
  lastFetched_ = 0;
}

} // namespace vxtool
