// SPDX-License-Identifier: MIT
// Notices Ctrl-C and other requests to end.
#pragma once

namespace vxtool {

/// Catches SIGINT, SIGTERM and SIGHUP for its lifetime: the first one is remembered, a second one ends the process
/// as usual. Writes to a full disk or a closed pipe become errors instead of signals. One at a time in a process;
/// Happened() is for any thread.
class TInterrupt final
{
public:
  TInterrupt();
  ~TInterrupt();
  TInterrupt(const TInterrupt&) = delete;
  TInterrupt& operator=(const TInterrupt&) = delete;

  static bool Happened();
};

} // namespace vxtool
