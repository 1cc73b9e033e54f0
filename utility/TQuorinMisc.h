// SPDX-License-Identifier: MIT
// Small system helpers: sleeping, identifiers, bounded strings.
#pragma once

#include <cstddef>

namespace QuorinUtility {

/// Small system helpers. Reentrant; nothing here throws. The string functions write at most @p size characters,
/// the terminator included, always terminate, and do nothing when there is no buffer or its size is 0.
class TQuorinMisc final
{
public:
  TQuorinMisc() = delete;

  /// Sleeps for at least @p milliseconds, even if signals arrive or the clock is set; 0 and less return
  /// at once.
  static void Sleep(int milliseconds);

  /// The system's numbers for the calling thread and process, as debuggers show them.
  static unsigned int GetThreadID();
  static unsigned int GetProcessID();

  /// Copies at most size - 1 characters; no source is an empty one. Returns @p destination.
  static char* strncpy(char* destination, const char* source, std::size_t size);

  /// Formats as printf does. Returns the length that the whole text has, so size or more means that it was cut; -1
  /// when the text cannot be made, which leaves an empty one.
  [[gnu::format(printf, 3, 4)]] static int snprintf(char* buffer, std::size_t size, const char* format, ...);

  /// Formats as wprintf does. Returns the length of the text, or -1 when it was cut or cannot be made.
  static int snwprintf(wchar_t* buffer, std::size_t size, const wchar_t* format, ...);
};

} // namespace QuorinUtility
