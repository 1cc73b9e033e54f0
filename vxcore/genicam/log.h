// SPDX-License-Identifier: MIT
// Lines for the diagnostic log.
#pragma once

#include <string>

namespace vxgenicam {

enum class ELog
{
  Error,
  Warning,
  Info,
  Debug
};

/// Writes a line to the log that VXMCD_LOG switches on, in the form of the camera library's lines. Thread-safe.
[[gnu::format(printf, 2, 3)]] void Log(ELog severity, const char* format, ...) noexcept;

/// What the parser of descriptions complained of first on this thread since the last call; "" when it did not.
std::string TakeDescriptionError();

/// Sends the messages of Aravis and of its parser to the log, in place of standard error. From then on their threads
/// write to it, too. What GLib says of a wrong call within Aravis has no domain and stays on standard error, since the
/// program's own messages without one must stay there.
void LogMessagesOfAravis();

} // namespace vxgenicam
