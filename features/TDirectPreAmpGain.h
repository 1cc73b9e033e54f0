// SPDX-License-Identifier: MIT
// The gains of a camera that lists each of them.
#pragma once

#include "features/readout_interfaces.h"

class IADChannel;
class IAmplifier;
class IEnum;

/// Gain i is the i-th value of "PreAmpGain"; 0 and 1 belong to the low-gain output, the others to the high-gain
/// output. Borrows what it is made from; all belong to the camera's record. As thread-safe as the feature library.
/// Writes that the camera refuses change nothing and count as done.
class TDirectPreAmpGain final : public IPreAmpGain
{
public:
  TDirectPreAmpGain(IEnum* gain, IEnum* selector, IADChannel* channel, IAmplifier* amplifier);

  /// Selects the output, then the gain.
  int Set(int gain) override;
  /// The number that the gain's text begins with.
  int GetValue(int gain, float& value) override;
  /// As many as the camera has; @p count stays unchanged when they cannot be counted.
  int Count(int& count) override;
  /// Gains 0 and 1 go with amplifier 0, gains 2 and 3 with amplifier 1, on any channel. Speeds are 0 to 3, and are
  /// checked last: callers rely on a wrong gain being reported before a wrong speed.
  int IsAvailable(int channel, int amplifier, int speed, int gain, bool& available) override;
  /// An empty text when it cannot be read.
  int GetStringByIndex(int gain, std::wstring& text) override;

private:
  bool IsGain(int gain);

  IEnum* gain_;
  IEnum* selector_;
  IADChannel* channel_;
  IAmplifier* amplifier_;
};
