// SPDX-License-Identifier: MIT
// The diagnostic log.
#pragma once

#include <atomic>
#include <cstdarg>

namespace QuorinUtility {

/// The diagnostic log. It is off until the environment variable VXMCD_LOG, read when the library is loaded, asks
/// for it as level[:destination]: level is error, warning, info or debug and includes the ones before it;
/// destination is stderr, which is also the default, or the path of a file that lines are appended to. A setting
/// that is not understood, or a file that cannot be opened, leaves the log off and says so on standard error once.
/// A line has the time (UTC), thread, level, file:line, function and text, and is written with one system call.
/// Thread-safe; nothing here throws, blocks on a lock or changes errno. A call that writes nothing costs one
/// relaxed load.
class TQuorinLibDebugOutput final
{
public:
  enum ESeverity : int
  {
    Error,
    Warning,
    Info,
    Debug
  };

  TQuorinLibDebugOutput() = delete;

  /// Whether such a line would be written; for callers whose text is expensive to make.
  static bool IsEnabled(ESeverity severity) noexcept { return severity <= level_.load(std::memory_order_relaxed); }

  /// Logs a text formatted as printf does, of the given severity or as an error. Of @p file the last part is
  /// shown.
  [[gnu::format(printf, 5, 6)]] static void Output(const char* file, int line, const char* function,
                                                   ESeverity severity, const char* format, ...) noexcept;
  [[gnu::format(printf, 4, 5)]] static void Output(const char* file, int line, const char* function,
                                                   const char* format, ...) noexcept;

  /// Logs a ready text as it stands.
  static void OutputText(const char* file, int line, const char* function, ESeverity severity,
                         const char* text) noexcept;

  /// Switches the log as VXMCD_LOG does; null, "" and "off" switch it off. Returns false when the setting is of no
  /// use, which leaves the log off.
  static bool Configure(const char* setting) noexcept;

private:
  static void Write(const char* file, int line, const char* function, ESeverity severity, const char* format,
                    std::va_list arguments) noexcept;
  static bool ConfigureFromEnvironment() noexcept;

  static constexpr int kOff = -1;
  static std::atomic<int> level_;       // the least severe ESeverity that is written, or kOff
  static std::atomic<int> destination_; // file descriptor
  static std::atomic<int> file_;        // descriptor of the log file once there is one
  static const bool configured_;
};

} // namespace QuorinUtility
