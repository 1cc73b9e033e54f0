// SPDX-License-Identifier: MIT
// A thread's performance log.
#pragma once

#include <fstream>

/// Writes what a thread does with frames, and when, to a file in the working directory, appending. Off unless it
/// is switched on, which only a build for measurements does. One thread.
class TPerformanceLog final
{
public:
  /// File name and header line must be constants.
  TPerformanceLog(bool enabled, const char* fileName, const char* header)
      : enabled_(enabled), fileName_(fileName), header_(header)
  {
  }

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
  const char* fileName_;
  const char* header_;
  std::ofstream file_;
};
