// SPDX-License-Identifier: MIT
// The call trace of a check.
#pragma once

#include <optional>
#include <string>

namespace vxtool {

/// The file in which the library records the calls of this process: one that the process made for itself, gone at the end
/// unless it is kept, or that of the user, who has set VXMCD_TRACE. One thread.
class TOwnTrace final
{
public:
  /// Starts the program again in this process, with a trace in the working directory, or in that for temporary files. Comes
  /// back only when there is one already, or when it cannot be done.
  static void Begin(char** arguments);

  TOwnTrace();
  ~TOwnTrace();
  TOwnTrace(const TOwnTrace&) = delete;
  TOwnTrace& operator=(const TOwnTrace&) = delete;

  /// "" without a trace.
  const std::string& File() const { return file_; }
  /// Its name among the files that are sent to somebody.
  std::string NameInBundle() const;
  /// The time now, in s since its start, as `vxmcd trace print` counts; 0 before its first call.
  double Seconds() const;
  /// Keeps the file, cut to what is used of it. Why it cannot be; "" when it is kept.
  std::string Keep();

private:
  std::string file_;
  bool isOwn_ = false;
  bool isKept_ = false;
  mutable std::optional<double> startSeconds_; ///< of the trace, on CLOCK_MONOTONIC
};

} // namespace vxtool
