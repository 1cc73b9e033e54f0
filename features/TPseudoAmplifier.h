// SPDX-License-Identifier: MIT
// The two outputs of the gain channel, as amplifiers.
#pragma once

#include "features/readout_interfaces.h"

#include <atomic>

class IEnum;

/// Amplifier 0 is the low-gain output, 1 the high-gain output, with every camera. While the camera reads both
/// ("Both"), a choice is only remembered. Borrows the features; all belong to the camera's record. Thread-safe.
/// Writes that the camera refuses change nothing and count as done.
class TPseudoAmplifier final : public IAmplifier
{
public:
  /// Remembers the amplifier that is in use now.
  TPseudoAmplifier(IEnum* gainChannel, IEnum* readoutRate);

  int Set(int amplifier) override;
  /// The remembered amplifier when the camera reads both or does not answer.
  int Get(int& amplifier) override;
  int Count(int& count) override;
  int Description(int amplifier, std::string& text) override;
  /// The highest pixel readout rate, the same for both; 0 when there is none.
  int GetMaxSpeed(int amplifier, float& megahertz) override;

private:
  IEnum* gainChannel_;
  IEnum* readoutRate_;
  std::atomic<int> remembered_;
};
