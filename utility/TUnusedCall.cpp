// SPDX-License-Identifier: MIT
// A function that does nothing.
#include "utility/TUnusedCall.h"

void TUnusedCall::NoteOnce() noexcept
{
  using QuorinUtility::TQuorinLibDebugOutput;
  if (isNoted_.exchange(true, std::memory_order_relaxed)) return;
  TQuorinLibDebugOutput::Output(__FILE__, __LINE__, function_, TQuorinLibDebugOutput::Info,
                                "does nothing and answers %s, here and in every later call: %s", answer_, reason_);
}
