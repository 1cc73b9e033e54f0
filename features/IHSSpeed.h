// SPDX-License-Identifier: MIT
// The horizontal shift speed as programs know it.
#pragma once

/// Horizontal shift speeds by index. Every operation returns a status.
class IHSSpeed
{
public:
  enum EStatus
  {
    kDone = 0,
    kNoSuchAmplifier = 1,
    kNoSuchSpeed = 2,
    kNoSuchChannel = 3,
  };

  virtual ~IHSSpeed() = default;
  virtual int Set(int amplifier, int speed) = 0;
  virtual int Count(int channel, int amplifier, int& count) = 0;
  virtual int GetVal(int channel, int amplifier, int speed, float& megahertz) = 0;
};
