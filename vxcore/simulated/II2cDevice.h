// SPDX-License-Identifier: MIT
// A device on an I2C bus of a simulated camera.
#pragma once

#include <cstdint>

namespace vxsim {

/// A device with 8-bit registers. Owned by TI2cBus, called under the camera's device lock.
class II2cDevice
{
public:
  virtual ~II2cDevice() = default;

  /// False when there is no such register.
  virtual bool Read(uint8_t address, uint8_t& value) = 0;
  virtual bool CanWrite(uint8_t address) const = 0;
  /// Only where CanWrite().
  virtual void Write(uint8_t address, uint8_t value) = 0;
};

} // namespace vxsim
