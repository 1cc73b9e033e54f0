// SPDX-License-Identifier: MIT
// The readout channel as programs know it: by four indices.
#pragma once

#include <string>

/// AD channels by index. Every operation returns a status.
class IADChannel
{
public:
  enum EStatus
  {
    kDone = 0,
    kNoSuchChannel = 1,
  };

  virtual ~IADChannel() = default;
  virtual int Get(int& channel) = 0;
  virtual int Set(int channel) = 0;
  virtual int Count(int& count) = 0;
  /// Bits per pixel of a channel.
  virtual int BitDepth(int channel, int& depth) = 0;
};

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
