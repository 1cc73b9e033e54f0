// SPDX-License-Identifier: MIT
// Who is told about every frame and every failure of a run.
#pragma once

/// Told once for every frame that is counted and once for every failure of a run, on the acquisition thread.
class IDispatchRoutine
{
public:
  virtual void Signal() = 0;
  virtual ~IDispatchRoutine() = default;
};
