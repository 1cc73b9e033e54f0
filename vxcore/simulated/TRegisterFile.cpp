// SPDX-License-Identifier: MIT
// The camera's 32-bit registers and the block of them that features read and write.
#include "vxcore/simulated/TRegisterFile.h"

#include <algorithm>

namespace vxsim {

TRegisterFile::TRegisterFile() : staged_(1)
{
  AddReading(Register::kIdentity, [] { return Register::kIdentityValue; });
  for (uint32_t i = 0; i < Register::kScratchCount; ++i) {
    registers_[Register::kScratch + i * Register::kStride] = {};
  }
}

void TRegisterFile::AddReading(uint32_t address, TReading read)
{
  registers_[address] = {0, std::move(read)};
}

bool TRegisterFile::IsKnown(long long address) const
{
  return address >= 0 && address <= UINT32_MAX && registers_.contains(static_cast<uint32_t>(address));
}

long long TRegisterFile::CountMaximum() const
{
  size_t count = 0;
  while (count < static_cast<size_t>(kMaximumCount) && registers_.contains(AddressOf(count))) ++count;
  return static_cast<long long>(count);
}

void TRegisterFile::SetCount(long long count)
{
  staged_.resize(static_cast<size_t>(count));
  index_ = std::clamp(index_, 0LL, std::max(0LL, count - 1));
}

int TRegisterFile::Read()
{
  if (Count() > CountMaximum()) return VX_ERR_OUT_OF_RANGE; // the address moved after the count was set
  for (size_t i = 0; i < staged_.size(); ++i) {
    const TRegister& one = registers_.at(AddressOf(i));
    staged_[i] = one.read ? one.read() : one.value;
  }
  return VX_SUCCESS;
}

int TRegisterFile::Write()
{
  if (Count() > CountMaximum()) return VX_ERR_OUT_OF_RANGE;
  for (size_t i = 0; i < staged_.size(); ++i) {
    if (registers_.at(AddressOf(i)).read) return VX_ERR_NOT_WRITABLE;
  }
  for (size_t i = 0; i < staged_.size(); ++i) registers_.at(AddressOf(i)).value = staged_[i];
  return VX_SUCCESS;
}

} // namespace vxsim
