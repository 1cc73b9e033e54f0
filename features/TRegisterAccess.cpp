// SPDX-License-Identifier: MIT
// The registers of a camera.
#include "features/TRegisterAccess.h"

#include "features/current_core_handle.h"
#include "features/feature_access.h"
#include "features/feature_names.h"
#include "vxcore.h"

namespace {

constexpr int kDone = 0;
constexpr int kFailed = 1;

} // namespace

int TRegisterAccess::Read(unsigned int address, unsigned int count, unsigned int* values)
{
  if (coreHandle_ == kNoCoreHandle) return kFailed;
  if (!values && count > 0) return kFailed;
  if (!StageBlock(address, count)) return kFailed;
  if (SendCommand(coreHandle_, Feature::kRegisterRead) != VX_SUCCESS) return kFailed;

  long long value = 0;
  for (unsigned int index = 0; index < count; ++index) {
    if (WriteInt(coreHandle_, Feature::kRegisterIndex, index) != VX_SUCCESS) return kFailed;
    const int code = ReadInt(coreHandle_, Feature::kRegisterValue, value);
    values[index] = static_cast<unsigned int>(value);
    if (code != VX_SUCCESS) return kFailed;
  }
  return kDone;
}

int TRegisterAccess::Write(unsigned int address, unsigned int count, unsigned int* values)
{
  if (coreHandle_ == kNoCoreHandle) return kFailed;
  if (!values && count > 0) return kFailed;
  if (!StageBlock(address, count)) return kFailed;
  for (unsigned int index = 0; index < count; ++index) {
    if (WriteInt(coreHandle_, Feature::kRegisterIndex, index) != VX_SUCCESS) return kFailed;
    if (WriteInt(coreHandle_, Feature::kRegisterValue, values[index]) != VX_SUCCESS) return kFailed;
  }
  return SendCommand(coreHandle_, Feature::kRegisterWrite) == VX_SUCCESS ? kDone : kFailed;
}

bool TRegisterAccess::IsImplemented() const
{
  return isImplemented(coreHandle_, Feature::kRegisterAddress);
}

bool TRegisterAccess::StageBlock(unsigned int address, unsigned int count) const
{
  return WriteInt(coreHandle_, Feature::kRegisterAddress, address) == VX_SUCCESS &&
         WriteInt(coreHandle_, Feature::kRegisterCount, count) == VX_SUCCESS;
}
