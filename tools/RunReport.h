// SPDX-License-Identifier: MIT
// The counts of a run as text.
#pragma once

#include "tools/ImageData.h"

#include <string>

namespace vxtool {

/// What is said at the end of a run besides the counts.
struct TRunSummary
{
  int camera = 0;      ///< its number
  std::string outcome; ///< complete, interrupted, failed
  double seconds = 0.0;
  std::string output;         ///< the file, "" for none
  std::string spoolDirectory; ///< where the library has written the frames, "" for nowhere
  TFrameCounts counts;
  bool isWrittenKnown = true; ///< whether it is known what is on disk
  TImageShape shape;
  TRunFacts facts;
  std::optional<double> celsiusAtEnd;
  std::optional<double> intervalSeconds; ///< of a time-lapse
};

/// Lines for a person, each with its line feed.
std::string RunReportText(const TRunSummary& summary);
/// One line of JSON with its line feed.
std::string RunReportJson(const TRunSummary& summary);

/// What is said of images that have lost something to an output of fewer bits.
std::string ClippedText(long pixels, long images, PixelDepth depth);
/// "complete after 1.20 s, 83.3 images/s", with its line feed. @param outcome  complete, interrupted, failed
std::string ReportHeadline(const std::string& outcome, double seconds, long images);
/// A line with a count behind what it counts, and a remark behind both.
std::string ReportRow(const char* what, const std::string& count, const std::string& remark = "");
std::string ReportRow(const char* what, long count, const std::string& remark = "");

} // namespace vxtool
