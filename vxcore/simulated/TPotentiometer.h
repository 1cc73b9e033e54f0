// SPDX-License-Identifier: MIT
// A digital potentiometer on an I2C bus.
#pragma once

#include "vxcore/simulated/II2cDevice.h"

#include <array>
#include <cstddef>

namespace vxsim {

/// The power-on values of a potentiometer's wipers; they survive the closing of the camera.
struct TPotentiometerMemory
{
  static constexpr size_t kWipers = 16;
  static constexpr uint8_t kMiddle = 0x80;

  TPotentiometerMemory() { values.fill(kMiddle); }
  std::array<uint8_t, kWipers> values;
};

/// Working registers from 0 on, power-on registers from 32 on, one of each for every wiper. Begins with the
/// power-on values. Borrows the memory.
class TPotentiometer final : public II2cDevice
{
public:
  static constexpr uint8_t kPowerOn = 32; ///< from a wiper's working register to its power-on register

  explicit TPotentiometer(TPotentiometerMemory& memory) : memory_(memory), working_(memory.values) {}

  uint8_t Wiper(size_t index) const { return working_[index]; }

  bool Read(uint8_t address, uint8_t& value) override
  {
    if (!CanWrite(address)) return false;
    value = Register(address);
    return true;
  }
  bool CanWrite(uint8_t address) const override
  {
    return address % kPowerOn < TPotentiometerMemory::kWipers && address < 2 * kPowerOn;
  }
  void Write(uint8_t address, uint8_t value) override { Register(address) = value; }

private:
  uint8_t& Register(uint8_t address)
  {
    return address < kPowerOn ? working_[address] : memory_.values[static_cast<size_t>(address - kPowerOn)];
  }

  TPotentiometerMemory& memory_;
  std::array<uint8_t, TPotentiometerMemory::kWipers> working_;
};

} // namespace vxsim
