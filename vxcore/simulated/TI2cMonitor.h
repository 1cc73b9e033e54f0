// SPDX-License-Identifier: MIT
// A measuring device on an I2C bus.
#pragma once

#include "vxcore/simulated/II2cDevice.h"

#include <functional>
#include <utility>

namespace vxsim {

/// Registers that can only be read: rail voltages, temperatures. Measures when it is read.
class TI2cMonitor final : public II2cDevice
{
public:
  TI2cMonitor(uint8_t registers, std::function<uint8_t(uint8_t address)> measure)
      : registers_(registers), measure_(std::move(measure))
  {
  }

  bool Read(uint8_t address, uint8_t& value) override
  {
    if (address >= registers_) return false;
    value = measure_(address);
    return true;
  }
  bool CanWrite(uint8_t) const override { return false; }
  void Write(uint8_t, uint8_t) override {}

private:
  const uint8_t registers_;
  const std::function<uint8_t(uint8_t)> measure_;
};

} // namespace vxsim
