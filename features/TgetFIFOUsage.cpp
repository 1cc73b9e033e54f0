// SPDX-License-Identifier: MIT
// How full the camera's memory is.
#include "features/TgetFIFOUsage.h"

#include "features/feature_access.h"
#include "features/feature_interfaces.h"
#include "features/feature_names.h"
#include "features/TRegisterAccess.h"
#include "vxcore.h"

#include <string>

namespace {

constexpr unsigned int kFirstFillRegister = 0xFB00;
constexpr unsigned int kSecondFillRegister = 0xFB04;

// What fits into a memory of 1 GB, in the registers' unit.
constexpr double kRollingCapacity = 128928256.0;
constexpr double kGlobalCapacity11Bit = 64464128.0;
constexpr double kGlobalCapacity16Bit = 43674624.0;

constexpr const wchar_t* kSmallMemory = L"1GB";
constexpr int kSmallMemoryMultiplier = 1;
constexpr int kLargeMemoryMultiplier = 4;

bool Contains(const std::wstring& text, const wchar_t* part)
{
  return text.find(part) != std::wstring::npos;
}

double Capacity(const std::wstring& gain, const std::wstring& shuttering)
{
  if (Contains(shuttering, L"Rolling")) return kRollingCapacity;
  return Contains(gain, L"11-bit") ? kGlobalCapacity11Bit : kGlobalCapacity16Bit;
}

} // namespace

TgetFIFOUsage::TgetFIFOUsage(int coreHandle, IEnum* simpleGain, IEnum* shuttering)
    : coreHandle_(coreHandle),
      simpleGain_(simpleGain),
      shuttering_(shuttering),
      memoryMultiplier_(kLargeMemoryMultiplier)
{
}

int TgetFIFOUsage::SetInt(int /*value*/)
{
  return VX_ERR_NOT_WRITABLE;
}

int TgetFIFOUsage::GetInt(int& value)
{
  if (const int code = ReadMemoryType(); code != VX_SUCCESS) return code;

  std::wstring gain;
  std::wstring shuttering;
  if (simpleGain_->GetString(gain) != VX_SUCCESS) return VX_SUCCESS;
  if (shuttering_->GetString(shuttering) != VX_SUCCESS) return VX_SUCCESS;

  TRegisterAccess registers(coreHandle_);
  unsigned int first = 0;
  unsigned int second = 0;
  if (registers.Read(kFirstFillRegister, 1, &first) != 0) return VX_SUCCESS;
  if (registers.Read(kSecondFillRegister, 1, &second) != 0) return VX_SUCCESS;

  const double fill = static_cast<double>(first) + static_cast<double>(second);
  value = static_cast<int>(fill * 100.0 / (memoryMultiplier_ * Capacity(gain, shuttering)));
  return VX_SUCCESS;
}

int TgetFIFOUsage::ReadMemoryType()
{
  int length = 0;
  if (const int code = ReadStringLength(coreHandle_, Feature::kDDR2Type, length); code != VX_SUCCESS) return code;
  std::wstring text;
  const int code = ReadString(coreHandle_, Feature::kDDR2Type, std::int64_t{length} + 1, text);
  if (code == VX_SUCCESS && text == kSmallMemory) memoryMultiplier_ = kSmallMemoryMultiplier;
  return code;
}
