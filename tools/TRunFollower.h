// SPDX-License-Identifier: MIT
// Follows a run that is being recorded.
#pragma once

#include "runs/TRunDescription.h"
#include "runs/TRunIndex.h"

#include <chrono>

namespace vxtool {

/// How a run goes on.
enum class Growth
{
  Recording, ///< more may come
  Ended,     ///< by its description; everything has been read
  Stalled,   ///< nothing has come for too long
  Replaced,  ///< the directory has another run, or none
};

/// Keeps description and index of a run up to date while a program records it. Borrows both; one thread at a time.
class TRunFollower final
{
public:
  /// @param patience  how long nothing may come
  TRunFollower(TRunDescription& run, TRunIndex& index, double patienceSeconds);

  /// Reads what has been added. The description changes at the end only.
  Growth Update();
  double PatienceSeconds() const { return patience_.count(); }

private:
  using Clock = std::chrono::steady_clock;

  TRunDescription& run_;
  TRunIndex& index_;
  std::chrono::duration<double> patience_;
  Clock::time_point grown_;
};

} // namespace vxtool
