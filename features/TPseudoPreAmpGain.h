// SPDX-License-Identifier: MIT
// The gains of a camera with one simple gain control.
#pragma once

#include "features/readout_interfaces.h"

class IEnum;

/// The three gains of "SimplePreAmpGainControl": 0 low, 1 high, 2 both combined. Borrows the feature; both belong
/// to the camera's record. As thread-safe as the feature library.
class TPseudoPreAmpGain final : public IPreAmpGain
{
public:
  explicit TPseudoPreAmpGain(IEnum* simpleGain);

  /// Writes any index; one that the camera refuses counts as done.
  int Set(int gain) override;
  /// 1, 2 and 3.
  int GetValue(int gain, float& value) override;
  /// As many as the camera has; @p count stays unchanged when they cannot be counted.
  int Count(int& count) override;
  /// Gains 0 and 1 go with the amplifier of the same number on channel 0, gain 2 with channel 1. Speeds are 0
  /// to 3.
  int IsAvailable(int channel, int amplifier, int speed, int gain, bool& available) override;
  /// kNoSuchGain also when the text cannot be read.
  int GetStringByIndex(int gain, std::wstring& text) override;

private:
  IEnum* simpleGain_;
};
