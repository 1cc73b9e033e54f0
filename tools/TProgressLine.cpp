// SPDX-License-Identifier: MIT
// The progress line: its text, and how often it is written.
#include "tools/TProgressLine.h"

#include <cmath>

namespace vxtool {

namespace {
constexpr double kTerminalPeriod = 0.2;
constexpr double kPlainPeriod = 2.0;
} // namespace

std::string ProgressText(const TProgress& progress, double imagesPerSecond)
{
  char text[160];
  const std::string wanted = progress.wanted > 0 ? "/" + std::to_string(progress.wanted) : "";
  const double megabytes = imagesPerSecond * static_cast<double>(progress.imageBytes) / 1.0e6;
  std::snprintf(text, sizeof text, "%ld%s images, %.1f/s, %.1f MB/s, ", progress.fetched, wanted.c_str(),
                imagesPerSecond, megabytes);
  std::string line = text;
  if (progress.ringFill) {
    std::snprintf(text, sizeof text, "ring %.0f %%, ", 100.0 * *progress.ringFill);
    line += text;
  }
  line += "lost " + std::to_string(progress.lost);
  if (progress.wanted > 0 && imagesPerSecond > 0.0) {
    const double left = std::ceil(static_cast<double>(progress.wanted - progress.fetched) / imagesPerSecond);
    std::snprintf(text, sizeof text, ", %.0f s left", left);
    line += text;
  }
  return line;
}

bool TProgressLine::IsDue(double seconds) const
{
  return seconds - lastSeconds_ >= (isTerminal_ ? kTerminalPeriod : kPlainPeriod);
}

void TProgressLine::Show(const TProgress& progress)
{
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
  // On a terminal: back to the start of the line, and clear what a longer text left behind.
  std::fprintf(stream_, isTerminal_ ? "\r%s\x1b[K" : "%s\n", text.c_str());
  std::fflush(stream_);
}

void TProgressLine::Finish()
{
  if (isTerminal_ && isShown_) std::fputc('\n', stream_);
  isShown_ = false;
  lastSeconds_ = 0.0;
  lastFetched_ = 0;
}

} // namespace vxtool
