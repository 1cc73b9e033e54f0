// SPDX-License-Identifier: MIT
// The AD channel as programs know it.
#pragma once

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
