// SPDX-License-Identifier: MIT
// The camera's 32-bit registers and the block of them that features read and write.
#pragma once

#include "vxcore.h"

#include <cstdint>
#include <functional>
#include <map>
#include <vector>

namespace vxsim {

/// Registers of a simulated camera. Addresses count bytes; neighbours are four apart.
namespace Register {
constexpr uint32_t kIdentity = 0x0000; ///< kIdentityValue
constexpr uint32_t kSensorWidth = 0x0004;
constexpr uint32_t kSensorHeight = 0x0008;
constexpr uint32_t kStatus = 0x000C;      ///< bit 0: acquiring, bit 1: cooler on
constexpr uint32_t kTemperature = 0x0010; ///< of the sensor, hundredths of a degree Celsius, two's complement
constexpr uint32_t kScratch = 0x0100;     ///< the first of kScratchCount that keep what is written
constexpr uint32_t kFifoFirst = 0xFB00;   ///< fill of the camera's memory, first bank
constexpr uint32_t kFifoSecond = 0xFB04;  ///< the same, second bank

constexpr uint32_t kIdentityValue = 0x56585331;
constexpr uint32_t kScratchCount = 16;
constexpr uint32_t kStride = 4;
} // namespace Register

/// The register file. Transfers are staged: address, count and the values of a block are set one by one, and
/// Read() or Write() moves the whole block. Owned by TCameraState, guarded by the device's lock. Operations answer
/// `VX_` codes.
class TRegisterFile final
{
public:
  static constexpr long long kMaximumCount = 256;
  using TReading = std::function<uint32_t()>;

  TRegisterFile();

  /// A register that can only be read.
  void AddReading(uint32_t address, TReading read);

  bool IsKnown(long long address) const;
  /// Only to a known register.
  void SetAddress(long long address) { address_ = static_cast<uint32_t>(address); }
  long long Address() const { return address_; }
  /// How many registers follow each other from the address on.
  long long CountMaximum() const;
  void SetCount(long long count);
  long long Count() const { return static_cast<long long>(staged_.size()); }
  void SetIndex(long long index) { index_ = index; }
  long long Index() const { return index_; }
  /// The staged value at the index; Count() must not be 0.
  void SetValue(long long value) { staged_[static_cast<size_t>(index_)] = static_cast<uint32_t>(value); }
  long long Value() const { return staged_[static_cast<size_t>(index_)]; }

  /// Loads the block from the camera.
  int Read();
  /// Stores the block. A block with a register that cannot be written changes nothing.
  int Write();

private:
  struct TRegister
  {
    uint32_t value = 0;
    TReading read; ///< empty: the register keeps what is written
  };

  uint32_t AddressOf(size_t index) const { return address_ + static_cast<uint32_t>(index) * Register::kStride; }

  std::map<uint32_t, TRegister> registers_; ///< by address
  uint32_t address_ = Register::kIdentity;
  std::vector<uint32_t> staged_;
  long long index_ = 0;
};

} // namespace vxsim
