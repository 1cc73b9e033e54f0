// SPDX-License-Identifier: MIT
// The diagnostic log.
#include "utility/TQuorinLibDebugOutput.h"

#include "utility/TBoundedText.h"
#include "utility/TCallerState.h"
#include "utility/TQuorinMisc.h"

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <fcntl.h>
#include <string_view>
#include <unistd.h>

namespace QuorinUtility {

namespace {

constexpr const char* kVariable = "VXMCD_LOG";
constexpr const char* kLevelNames[] = {"error", "warning", "info", "debug"};
constexpr std::size_t kLineSize = 2048;
constexpr std::string_view kCutMark = "...";
constexpr long kNanosecondsPerMicrosecond = 1000;

/// A line as far as it is made; the line feed takes the terminator's place.
using TLine = TBoundedText<kLineSize - kCutMark.size()>;

/// What is written of a line: without line feeds but the last, and with a mark where it is cut.
class TFinishedLine
{
public:
  explicit TFinishedLine(const TLine& line)
  {
    length_ = std::string_view(line.Data(), line.Length()).copy(text_, line.Length());
    while (length_ > 0 && text_[length_ - 1] == '\n') --length_;
    std::replace_if(
        text_, text_ + length_, [](char c) { return c == '\n' || c == '\r'; }, ' ');
    if (line.IsCut()) length_ += kCutMark.copy(text_ + length_, kCutMark.size());
    text_[length_] = '\n';
  }

  std::string_view Get() const { return {text_, length_ + 1}; }

private:
  char text_[kLineSize];
  std::size_t length_ = 0;
};

void AppendTime(TLine& line)
{
  timespec now{};
  clock_gettime(CLOCK_REALTIME, &now);
  tm parts{};
  gmtime_r(&now.tv_sec, &parts);
  line.Append("%04d-%02d-%02dT%02d:%02d:%02d.%06ldZ", parts.tm_year + 1900, parts.tm_mon + 1, parts.tm_mday,
              parts.tm_hour, parts.tm_min, parts.tm_sec, now.tv_nsec / kNanosecondsPerMicrosecond);
}

const char* LastPart(const char* path)
{
  if (!path) return "?";
  const char* slash = std::strrchr(path, '/');
  return slash ? slash + 1 : path;
}

void WriteAll(int descriptor, std::string_view text)
{
  while (!text.empty()) {
    const ssize_t written = write(descriptor, text.data(), text.size());
    if (written < 0 && errno == EINTR) continue;
    if (written <= 0) return; // there is nowhere to report that the log cannot be written
    text.remove_prefix(static_cast<std::size_t>(written));
  }
}

[[gnu::format(printf, 1, 2)]] bool Refuse(const char* format, ...)
{
  TLine line;
  line.Append("vxmcd: ");
  std::va_list arguments;
  va_start(arguments, format);
  line.Append(format, arguments);
  va_end(arguments);
  line.Append("; the log stays off");
  WriteAll(STDERR_FILENO, TFinishedLine(line).Get());
  return false;
}

/// The level with this name, or -1.
int FindLevel(std::string_view name)
{
  const auto* const found = std::find(std::begin(kLevelNames), std::end(kLevelNames), name);
  return found == std::end(kLevelNames) ? -1 : static_cast<int>(found - std::begin(kLevelNames));
}

int OpenForAppending(const char* path)
{
  int descriptor = -1;
  do {
    descriptor = open(path, O_WRONLY | O_APPEND | O_CREAT | O_CLOEXEC | O_NOCTTY, 0644);
  } while (descriptor < 0 && errno == EINTR);
  return descriptor;
}

} // namespace

std::atomic<int> TQuorinLibDebugOutput::level_{kOff};
std::atomic<int> TQuorinLibDebugOutput::destination_{STDERR_FILENO};
std::atomic<int> TQuorinLibDebugOutput::file_{-1};
const bool TQuorinLibDebugOutput::configured_ = ConfigureFromEnvironment();

bool TQuorinLibDebugOutput::ConfigureFromEnvironment() noexcept
{
  return Configure(secure_getenv(kVariable));
}

bool TQuorinLibDebugOutput::Configure(const char* setting) noexcept
{
  const TCallerState callerState;
  level_ = kOff;
  const std::string_view whole = setting ? setting : "";
  if (whole.empty() || whole == "off") return true;

  const std::size_t colon = whole.find(':');
  const int level = FindLevel(whole.substr(0, colon));
  const bool toStderr = colon == std::string_view::npos || whole.substr(colon + 1) == "stderr";
  const char* const path = toStderr ? "" : setting + colon + 1;
  if (level < 0 || (!toStderr && *path == '\0'))
    return Refuse("%s=\"%s\" is not error|warning|info|debug[:stderr|:file]", kVariable, setting);

  if (toStderr) {
    destination_ = STDERR_FILENO;
  } else {
    const int opened = OpenForAppending(path);
    if (opened < 0) return Refuse("%s: cannot open \"%s\" (error %d)", kVariable, path, errno);
    // The descriptor of the log file stays the same and open for good: other threads may be writing to it.
    int file = -1;
    if (!file_.compare_exchange_strong(file, opened)) {
      dup3(opened, file, O_CLOEXEC);
      close(opened);
    }
    destination_ = file_.load();
  }
  level_ = level;
  return true;
}

void TQuorinLibDebugOutput::Output(const char* file, int line, const char* function, ESeverity severity,
                                   const char* format, ...) noexcept
{
  if (!IsEnabled(severity)) return;
  std::va_list arguments;
  va_start(arguments, format);
  Write(file, line, function, severity, format, arguments);
  va_end(arguments);
}

void TQuorinLibDebugOutput::Output(const char* file, int line, const char* function, const char* format,
                                   ...) noexcept
{
  if (!IsEnabled(Error)) return;
  std::va_list arguments;
  va_start(arguments, format);
  Write(file, line, function, Error, format, arguments);
  va_end(arguments);
}

void TQuorinLibDebugOutput::OutputText(const char* file, int line, const char* function, ESeverity severity,
                                       const char* text) noexcept
{
  Output(file, line, function, severity, "%s", text ? text : "");
}

void TQuorinLibDebugOutput::Write(const char* file, int line, const char* function, ESeverity severity,
                                  const char* format, std::va_list arguments) noexcept
{
  const TCallerState callerState;
  TLine text;
  AppendTime(text);
  text.Append(" %u %s %s:%d %s ", TQuorinMisc::GetThreadID(), kLevelNames[std::clamp<int>(severity, Error, Debug)],
              LastPart(file), line, function ? function : "?");
  if (format) text.Append(format, arguments);
  WriteAll(destination_.load(std::memory_order_relaxed), TFinishedLine(text).Get());
}

} // namespace QuorinUtility
