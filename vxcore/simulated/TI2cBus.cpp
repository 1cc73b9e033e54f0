// SPDX-License-Identifier: MIT
// An I2C bus inside a simulated camera: the devices on it and the transfer that features stage.
#include "vxcore/simulated/TI2cBus.h"

#include "vxcore.h"

#include <algorithm>

namespace vxsim {

void TI2cBus::SetCount(long long count)
{
  staged_.resize(static_cast<size_t>(count));
  selector_ = std::clamp(selector_, 0LL, std::max(0LL, count - 1));
}

int TI2cBus::Read()
{
  const auto found = devices_.find(address_);
  if (found == devices_.end()) return VX_ERR_BUS;
  TNode& node = found->second;
  std::vector<uint8_t> bytes(staged_.size());
  for (size_t i = 0; i < bytes.size(); ++i) {
    if (!node.device->Read(static_cast<uint8_t>(node.next + i), bytes[i])) return VX_ERR_BUS;
  }
  node.next = static_cast<uint8_t>(node.next + bytes.size());
  staged_ = std::move(bytes);
  return VX_SUCCESS;
}

int TI2cBus::Write()
{
  const auto found = devices_.find(address_);
  if (found == devices_.end()) return VX_ERR_BUS;
  if (staged_.empty()) return VX_SUCCESS; // only asks whether a device answers
  TNode& node = found->second;
  const uint8_t first = staged_.front();
  for (size_t i = 1; i < staged_.size(); ++i) {
    if (!node.device->CanWrite(static_cast<uint8_t>(first + i - 1))) return VX_ERR_BUS;
  }
  for (size_t i = 1; i < staged_.size(); ++i) node.device->Write(static_cast<uint8_t>(first + i - 1), staged_[i]);
  node.next = static_cast<uint8_t>(first + staged_.size() - 1);
  return VX_SUCCESS;
}

} // namespace vxsim
