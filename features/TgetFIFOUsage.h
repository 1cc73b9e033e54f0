// SPDX-License-Identifier: MIT
// How full the camera's memory is.
#pragma once

#include "features/feature_interfaces.h"

#include <atomic>

class IEnum;

/// The fill of the on-camera memory in per cent, from two registers of the camera. How much fits depends on the
/// memory built in, the shutter mode and the gain. Borrows the features; all belong to the camera's record.
/// Thread-safe but for the registers: callers serialise its reads with other register accesses.
class TgetFIFOUsage final : public IInt
{
public:
  TgetFIFOUsage(int coreHandle, IEnum* simpleGain, IEnum* shuttering);

  /// The fill cannot be set: 5, without effect.
  int SetInt(int value) override;
  /// @p value keeps its value when mode, gain or registers cannot be read, which counts as success.
  /// @return the feature library's code when the kind of memory cannot be read
  int GetInt(int& value) override;

private:
  int ReadMemoryType();

  int coreHandle_;
  IEnum* simpleGain_;
  IEnum* shuttering_;
  std::atomic<int> memoryMultiplier_;
};
