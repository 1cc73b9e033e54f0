// SPDX-License-Identifier: MIT
// A function that does nothing.
#pragma once

#include "utility/TQuorinLibDebugOutput.h"

#include <atomic>

/// A function that is kept so that programs link and run, and does nothing: its first call in a program is logged, at level
/// info. One static object in each of these functions. Thread-safe; without the log a call costs one relaxed load.
class TUnusedCall final
{
public:
  /// @p answer is what the function returns and @p reason why it does nothing; both texts are borrowed for good.
  constexpr TUnusedCall(const char* function, const char* answer, const char* reason)
      : function_(function), answer_(answer), reason_(reason)
  {
  }

  void Note() noexcept
  {
    using QuorinUtility::TQuorinLibDebugOutput;
    if (TQuorinLibDebugOutput::IsEnabled(TQuorinLibDebugOutput::Info)) [[unlikely]]
      NoteOnce();
  }

private:
  void NoteOnce() noexcept;

  const char* function_;
  const char* answer_;
  const char* reason_;
  std::atomic<bool> isNoted_{false};
};
