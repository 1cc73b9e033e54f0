// SPDX-License-Identifier: MIT
// An I2C bus.
#pragma once

/// Transfers on an I2C bus. Both operations block until the transfer is done and return a status.
class TI2c
{
public:
  enum EStatus
  {
    kDone = 0,
    kFailed = 2, ///< no camera, no such bus, or the transfer did not succeed
    kAddressRefused = 3,
    kCountRefused = 4,
  };

  virtual ~TI2c() = default;
  /// Sends @p count bytes to the device at @p address.
  virtual int Write(unsigned char address, unsigned char* data, unsigned int count) = 0;
  /// Reads @p count bytes from the device at @p address.
  virtual int Read(unsigned char address, unsigned char* data, unsigned int count) = 0;
};
