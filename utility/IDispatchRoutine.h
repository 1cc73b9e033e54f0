// SPDX-License-Identifier: MIT
// Notification of every frame and every failure of a run.
#pragma once

/// Called once for every frame that is counted and once for every failure of a run, on the acquisition thread.
class IDispatchRoutine
{
public:
  virtual void Signal() = 0;
  virtual ~IDispatchRoutine() = default;
};
