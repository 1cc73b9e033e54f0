// SPDX-License-Identifier: MIT
// The pixel readout rate of an open device.
#include "features/TPixelReadoutRate.h"

#include "features/feature_names.h"

#include <utility>

TPixelReadoutRate::TPixelReadoutRate(int coreHandle) : feature_(coreHandle, Feature::kPixelReadoutRate) {}

int TPixelReadoutRate::SetIndex(int index)
{
  return feature_.SetIndex(index);
}

int TPixelReadoutRate::SetString(std::wstring value)
{
  return feature_.SetString(std::move(value));
}

int TPixelReadoutRate::GetIndex(int& index)
{
  return feature_.GetIndex(index);
}

int TPixelReadoutRate::GetCount(int& count)
{
  return feature_.GetCount(count);
}

int TPixelReadoutRate::GetString(std::wstring& value)
{
  return feature_.GetString(value);
}

int TPixelReadoutRate::IsIndexAvailable(int index, bool& available)
{
  return feature_.IsIndexAvailable(index, available);
}

int TPixelReadoutRate::IsIndexImplemented(int index, bool& implemented)
{
  return feature_.IsIndexImplemented(index, implemented);
}

int TPixelReadoutRate::GetStringByIndex(int index, std::wstring& value)
{
  return feature_.GetStringByIndex(index, value);
}
