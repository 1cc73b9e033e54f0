// SPDX-License-Identifier: MIT
// The diagnostic log, as the camera library writes it.
#include "vxcore/genicam/log.h"

#include "utility/TQuorinLibDebugOutput.h"
#include "vxcore/genicam/aravis.h"

#include <cstdarg>
#include <utility>

namespace vxgenicam {

namespace {

constexpr std::size_t kMaxText = 1024;

using TLog = QuorinUtility::TQuorinLibDebugOutput;
static_assert(static_cast<int>(ELog::Error) == TLog::Error && static_cast<int>(ELog::Warning) == TLog::Warning &&
              static_cast<int>(ELog::Info) == TLog::Info && static_cast<int>(ELog::Debug) == TLog::Debug);

void OnMessage(const gchar* domain, GLogLevelFlags level, const gchar* message, gpointer)
{
  const ELog severity = (level & (G_LOG_LEVEL_ERROR | G_LOG_LEVEL_CRITICAL)) != 0 ? ELog::Error
                        : (level & G_LOG_LEVEL_WARNING) != 0                      ? ELog::Warning
                                                                                  : ELog::Debug;
  Log(severity, "%s: %s", domain ? domain : "GLib", message ? message : "");
}

/// The parser goes on after an error, with what it has understood so far.
thread_local std::string descriptionError;

void OnDescriptionMessage(const gchar* domain, GLogLevelFlags level, const gchar* message, gpointer data)
{
  OnMessage(domain, level, message, data);
  std::string text = message ? message : "";
  while (!text.empty() && text.back() == '\n') text.pop_back();
  // Names of unknown namespaces are read all the same.
  if (descriptionError.empty() && !text.starts_with("Namespace prefix")) descriptionError = text;
}

} // namespace

std::string TakeDescriptionError()
{
  return std::exchange(descriptionError, "");
}

void Log(ELog severity, const char* format, ...) noexcept
{
  const auto level = static_cast<TLog::ESeverity>(severity);
  if (!TLog::IsEnabled(level)) return;
  char text[kMaxText];
  std::va_list arguments;
  va_start(arguments, format);
  g_vsnprintf(text, sizeof text, format, arguments);
  va_end(arguments);
  TLog::OutputText("genicam", 0, "GenICam", level, text);
}

void LogMessagesOfAravis()
{
  constexpr auto kAll = static_cast<GLogLevelFlags>(G_LOG_LEVEL_MASK | G_LOG_FLAG_FATAL | G_LOG_FLAG_RECURSION);
  g_log_set_handler("Aravis", kAll, OnMessage, nullptr);
  g_log_set_handler("XML", kAll, OnDescriptionMessage, nullptr);
}

} // namespace vxgenicam
