// SPDX-License-Identifier: MIT
// What a thread prints on behalf of a camera.
#pragma once

#include "tools/TProgressRows.h"

#include <cstddef>
#include <string>

namespace vxtool {

/// For its lifetime, what its thread prints by Say(), Print() and TProgressLine names the camera, and goes to the rows that
/// it shares with other cameras. Borrows the rows. One at a time in a thread.
class TCameraOutput final
{
public:
  TCameraOutput(TProgressRows& rows, std::size_t row);
  ~TCameraOutput();
  TCameraOutput(const TCameraOutput&) = delete;
  TCameraOutput& operator=(const TCameraOutput&) = delete;

  /// That of this thread; null for none.
  static TCameraOutput* OfThread();

  void Say(const std::string& message)
  {
    rows_.Write(stderr, "vxmcd: " + rows_.Name(row_) + ": " + message + "\n");
  }
  bool Print(const std::string& text) { return rows_.Write(stdout, text); }
  void ShowProgress(const std::string& text) { rows_.Show(row_, text); }
  void RemoveProgress() { rows_.Remove(row_); }

private:
  TProgressRows& rows_;
  std::size_t row_;
};

} // namespace vxtool
