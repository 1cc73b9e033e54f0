// SPDX-License-Identifier: MIT
// The pre-amplifier gain as programs know it.
#pragma once

#include <string>

/// Pre-amplifier gains by index. Every operation returns a status.
class IPreAmpGain
{
public:
  enum EStatus
  {
    kDone = 0,
    kNoSuchChannel = 1,
    kNoSuchAmplifier = 2,
    kNoSuchSpeed = 3,
    kNoSuchGain = 4,
  };

  virtual ~IPreAmpGain() = default;
  virtual int Set(int gain) = 0;
  virtual int GetValue(int gain, float& value) = 0;
  virtual int Count(int& count) = 0;
  /// Whether a gain can be used with a channel, amplifier and speed; false besides every status but kDone.
  virtual int IsAvailable(int channel, int amplifier, int speed, int gain, bool& available) = 0;
  virtual int GetStringByIndex(int gain, std::wstring& text) = 0;
};
