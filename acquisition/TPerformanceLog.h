// SPDX-License-Identifier: MIT
// The acquisition thread's performance log.
#pragma once

#include <fstream>

/// Writes when frames were fetched and dispatched to "acquisitionthread.csv" in the working directory, appending.
/// Off unless it is switched on, which only a build for measurements does. One thread.
class TPerformanceLog final
{
public:
  explicit TPerformanceLog(bool enabled) : enabled_(enabled) {}

  /// Opens the file and writes the header.
  void Open();
  /// Closes the file for good: a thread logs its first run only.
  void Close();
  /// @p message must be a constant; nothing is made of it while the log is off.
  void Write(const char* message, long frameNumber)
  {
    if (enabled_) WriteLine(message, frameNumber);
  }

private:
  void WriteLine(const char* message, long frameNumber);

  bool enabled_;
  std::ofstream file_;
};
