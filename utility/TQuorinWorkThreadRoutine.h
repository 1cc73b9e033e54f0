// SPDX-License-Identifier: MIT
// What a work thread runs.
#pragma once

namespace QuorinUtility {

/// The body of a TQuorinWorkThread. Borrowed by the thread until Run() has returned.
class TQuorinWorkThreadRoutine
{
public:
  virtual ~TQuorinWorkThreadRoutine() = default;
  /// Runs on the work thread, once. What it throws is logged and ends the thread.
  virtual void Run() = 0;
};

} // namespace QuorinUtility
