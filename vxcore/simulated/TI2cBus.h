// SPDX-License-Identifier: MIT
// An I2C bus inside a simulated camera: the devices on it and the transfer that features stage.
#pragma once

#include "vxcore/simulated/TI2cDevices.h"

#include <map>
#include <memory>
#include <vector>

namespace vxsim {

/// One bus. A transfer is staged (address, number of bytes, the bytes one by one) and then carried out by Read()
/// or Write(). The first byte of a write chooses the device's register; further bytes are values for it and the
/// registers after it. A read begins at the register chosen last and goes on to those after it. Owned by
/// TCameraState, guarded by the device's lock. Operations answer `VX_` codes.
class TI2cBus final
{
public:
  // 7-bit addresses that are not reserved.
  static constexpr long long kLowestAddress = 0x08;
  static constexpr long long kMaxAddress = 0x77;
  static constexpr long long kMaximumCount = 64;

  void Add(uint8_t address, std::unique_ptr<II2cDevice> device) { devices_[address] = {std::move(device), 0}; }

  void SetAddress(long long address) { address_ = static_cast<uint8_t>(address); }
  long long Address() const { return address_; }
  void SetCount(long long count);
  long long Count() const { return static_cast<long long>(staged_.size()); }
  void SetSelector(long long selector) { selector_ = selector; }
  long long Selector() const { return selector_; }
  /// The staged byte that the selector shows; Count() must not be 0.
  void SetByte(long long value) { staged_[static_cast<size_t>(selector_)] = static_cast<uint8_t>(value); }
  long long Byte() const { return staged_[static_cast<size_t>(selector_)]; }

  /// #VX_ERR_BUS when no device has the address, or it lacks one of the registers; nothing is changed then.
  int Read();
  int Write();

private:
  struct TNode
  {
    std::unique_ptr<II2cDevice> device;
    uint8_t next = 0; ///< register of the next read
  };

  std::map<uint8_t, TNode> devices_;
  uint8_t address_ = kLowestAddress;
  std::vector<uint8_t> staged_{0};
  long long selector_ = 0;
};

} // namespace vxsim
