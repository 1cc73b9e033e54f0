// SPDX-License-Identifier: MIT
// An I2C bus of a camera.
#pragma once

#include "service/TI2c.h"

#include <string>

/// TI2c over the features of one bus of an open device: a transfer is staged byte by byte in the camera and then
/// started by a command. Not synchronised: two threads that use one bus of one camera would mix up their transfers, so
/// callers serialise. Nothing is thrown and nothing is logged.
class TSDK3i2c final : public TI2c
{
public:
  /// @param prefix  what the names of the bus's features begin with: "Internal" or "Controller"
  TSDK3i2c(int coreHandle, std::wstring prefix);

  /// Ends at the first byte that cannot be staged; nothing is sent then.
  int Write(unsigned char address, unsigned char* data, unsigned int count) override;
  /// Reads every byte that can be read; kFailed when one cannot, which keeps its value in @p data. Gives up after a
  /// thousand failures in a row, so that an absurd count ends.
  int Read(unsigned char address, unsigned char* data, unsigned int count) override;

private:
  bool Has(const wchar_t* suffix) const;
  bool SetInt(const wchar_t* suffix, long long value) const;
  bool Command(const wchar_t* suffix) const;
  bool FetchByte(unsigned int index, unsigned char& value) const;
  int StageHeader(unsigned char address, unsigned int count) const;

  int coreHandle_;
  std::wstring prefix_;
};
