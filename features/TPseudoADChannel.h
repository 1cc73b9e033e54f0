// SPDX-License-Identifier: MIT
// The gain channel, as AD channels.
#pragma once

#include "features/readout_interfaces.h"

class IAmplifier;
class IEnum;

/// AD channel 0 reads one amplifier, channel 1 both at once; a camera that cannot read both has channel 0 only.
/// Borrows what it is made from; all belong to the camera's record. As thread-safe as the feature library. Writes
/// that the camera refuses change nothing and count as done.
class TPseudoADChannel final : public IADChannel
{
public:
  TPseudoADChannel(IEnum* gainChannel, IAmplifier* amplifier, IEnum* bitDepth);

  int Get(int& channel) override;
  int Set(int channel) override;
  int Count(int& count) override;
  /// The number that the channel's bit depth begins with; 0 when it cannot be read.
  int BitDepth(int channel, int& depth) override;

private:
  bool IsChannel(int channel);

  IEnum* gainChannel_;
  IAmplifier* amplifier_;
  IEnum* bitDepth_;
};
