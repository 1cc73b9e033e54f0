// SPDX-License-Identifier: MIT
// The pixel readout rates, as horizontal shift speeds.
#pragma once

#include "features/readout_interfaces.h"

class IADChannel;
class IAmplifier;
class IEnum;

/// Speed i is the i-th pixel readout rate of the camera, for every channel and amplifier. Borrows what it is made
/// from; all belong to the camera's record. As thread-safe as the feature library. Writes that the camera refuses
/// change nothing and count as done.
class TPseudoHSSpeed final : public IHSSpeed
{
public:
  TPseudoHSSpeed(IEnum* readoutRate, IADChannel* channel, IAmplifier* amplifier);

  /// Chooses the speed, then the amplifier.
  int Set(int amplifier, int speed) override;
  int Count(int channel, int amplifier, int& count) override;
  int GetVal(int channel, int amplifier, int speed, float& megahertz) override;

private:
  bool IsChannel(int channel);
  bool IsAmplifier(int amplifier);
  bool IsSpeed(int speed);

  IEnum* readoutRate_;
  IADChannel* channel_;
  IAmplifier* amplifier_;
};
