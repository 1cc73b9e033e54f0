// SPDX-License-Identifier: MIT
// The output amplifier as programs know it.
#pragma once

#include <string>

/// Output amplifiers by index. Every operation returns a status.
class IAmplifier
{
public:
  enum EStatus
  {
    kDone = 0,
    kNoSuchAmplifier = 1,
  };

  virtual ~IAmplifier() = default;
  virtual int Set(int amplifier) = 0;
  virtual int Get(int& amplifier) = 0;
  virtual int Count(int& count) = 0;
  virtual int Description(int amplifier, std::string& text) = 0;
  virtual int GetMaxSpeed(int amplifier, float& megahertz) = 0;
};
