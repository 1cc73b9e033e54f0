// SPDX-License-Identifier: MIT
// One closing of a camera at a time.
#pragma once

namespace QuorinUtility {
class TQuorinCriticalSection;
}

/// While it lives, no other thread closes the camera or reads the fill of its memory. When the camera is the current one of
/// the process, the same is true of all such cameras, by the exported mutex; threads with a camera for themselves do not
/// wait for the calls of other cameras. False when no camera was ever open under the handle. Lives on the stack of one
/// call, and may be made again within it.
class TClosingTurn final
{
public:
  explicit TClosingTurn(long handle);
  ~TClosingTurn();
  TClosingTurn(const TClosingTurn&) = delete;
  TClosingTurn& operator=(const TClosingTurn&) = delete;

  explicit operator bool() const { return camera_ != nullptr; }

private:
  QuorinUtility::TQuorinCriticalSection* const process_; ///< null for a thread with its own camera
  QuorinUtility::TQuorinCriticalSection* camera_ = nullptr;
};
