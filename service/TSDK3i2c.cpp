// SPDX-License-Identifier: MIT
// An I2C bus of a camera.
#include "service/TSDK3i2c.h"

#include "features/current_core_handle.h"
#include "features/feature_access.h"

#include <utility>

namespace {

// After the prefix of the bus.
constexpr const wchar_t* kRead = L"I2CRead";
constexpr const wchar_t* kWrite = L"I2CWrite";
constexpr const wchar_t* kAddress = L"I2CAddress";
constexpr const wchar_t* kByteCount = L"I2CByteCount";
constexpr const wchar_t* kByteSelector = L"I2CByteSelector";
constexpr const wchar_t* kByte = L"I2CByte";

// A read tries every byte, but not four thousand million of them when the camera accepts an absurd count.
constexpr unsigned int kMaxFailuresInARow = 1024;

} // namespace

TSDK3i2c::TSDK3i2c(int coreHandle, std::wstring prefix) : coreHandle_(coreHandle), prefix_(std::move(prefix)) {}

int TSDK3i2c::Write(unsigned char address, unsigned char* data, unsigned int count)
{
  if (coreHandle_ == kNoCoreHandle) return kFailed;
  if (!Has(kWrite)) return kFailed;
  if (!data && count > 0) return kFailed;
  if (const int status = StageHeader(address, count); status != kDone) return status;
  for (unsigned int index = 0; index < count; ++index) {
    if (!SetInt(kByteSelector, index)) return kFailed;
    if (!SetInt(kByte, data[index])) return kFailed;
  }
  return Command(kWrite) ? kDone : kFailed;
}

int TSDK3i2c::Read(unsigned char address, unsigned char* data, unsigned int count)
{
  if (coreHandle_ == kNoCoreHandle) return kFailed;
  if (!Has(kRead)) return kFailed;
  if (!data && count > 0) return kFailed;
  if (const int status = StageHeader(address, count); status != kDone) return status;
  if (!Command(kRead)) return kFailed;

  int status = kDone;
  unsigned int failures = 0;
  for (unsigned int index = 0; index < count && failures < kMaxFailuresInARow; ++index) {
    if (FetchByte(index, data[index])) {
      failures = 0;
    } else {
      status = kFailed;
      ++failures;
    }
  }
  return status;
}

bool TSDK3i2c::Has(const wchar_t* suffix) const
{
  return isImplemented(coreHandle_, (prefix_ + suffix).c_str());
}

bool TSDK3i2c::SetInt(const wchar_t* suffix, long long value) const
{
  return WriteInt(coreHandle_, (prefix_ + suffix).c_str(), value) == VX_SUCCESS;
}

bool TSDK3i2c::Command(const wchar_t* suffix) const
{
  return SendCommand(coreHandle_, (prefix_ + suffix).c_str()) == VX_SUCCESS;
}

bool TSDK3i2c::FetchByte(unsigned int index, unsigned char& value) const
{
  long long byte = 0;
  if (!SetInt(kByteSelector, index)) return false;
  if (ReadInt(coreHandle_, (prefix_ + kByte).c_str(), byte) != VX_SUCCESS) return false;
  value = static_cast<unsigned char>(byte & 0xFF);
  return true;
}

int TSDK3i2c::StageHeader(unsigned char address, unsigned int count) const
{
  if (!SetInt(kAddress, address)) return kAddressRefused;
  if (!SetInt(kByteCount, count)) return kCountRefused;
  return kDone;
}
