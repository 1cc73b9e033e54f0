// SPDX-License-Identifier: MIT
// The pixel readout rate of an open device.
#pragma once

#include "features/IEnum.h"
#include "features/SDK3Enum.h"

/// IEnum over "PixelReadoutRate", passed through unchanged. Owned by its camera's record. As thread-safe as the
/// feature library.
class TPixelReadoutRate final : public IEnum
{
public:
  explicit TPixelReadoutRate(int coreHandle);

  int SetIndex(int index) override;
  int SetString(std::wstring value) override;
  int GetIndex(int& index) override;
  int GetCount(int& count) override;
  int GetString(std::wstring& value) override;
  int IsIndexAvailable(int index, bool& available) override;
  int IsIndexImplemented(int index, bool& implemented) override;
  int GetStringByIndex(int index, std::wstring& value) override;

private:
  SDK3Enum feature_;
};
