// SPDX-License-Identifier: MIT
// The devices on the I2C buses of a simulated camera.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <utility>

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
