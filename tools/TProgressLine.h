// SPDX-License-Identifier: MIT
// Shows the progress of a run.
#pragma once

#include "tools/Run.h"

#include <cstdio>
#include <string>

namespace vxtool {

/// On a terminal one line, no wider than it, that is written anew five times a second; elsewhere a line every two
/// seconds, or for each image when one takes longer, but at least once a minute. In a thread with a TCameraOutput the text
/// goes there in place of the stream. Borrows the stream; one thread at a time.
class TProgressLine final
{
public:
  TProgressLine(std::FILE* stream, bool isTerminal) : stream_(stream), isTerminal_(isTerminal) {}
  void Show(const TProgress& progress);
  /// Shows any text. @param seconds  since the start of what it describes
  void ShowText(const std::string& text, double seconds);
  /// Ends the line on a terminal, so that other output starts below it; a row of a TCameraOutput disappears. The next text counts its seconds from 0.
  void Finish();

private:
  bool IsDue(double seconds) const;

  std::FILE* stream_;
  bool isTerminal_;
  bool isShown_ = false;
  double lastSeconds_ = 0.0;
  double plainPeriod_ = 2.0; // from line to line where it is no terminal
  long lastFetched_ = 0;
};

/// The text of the line: a rate, or when the next image comes where one takes a second or more.
/// @param imagesPerSecond  the present rate
std::string ProgressText(const TProgress& progress, double imagesPerSecond);

} // namespace vxtool
