// SPDX-License-Identifier: MIT
// An enumerated feature without a camera.
#pragma once

#include "features/feature_interfaces.h"
#include "vxcore.h"

#include <algorithm>
#include <set>
#include <string>
#include <utility>
#include <vector>

/// Values with texts; the test sets what is present, what cannot be read or written, and sees the writes.
class TFakeEnum final : public IEnum
{
public:
  explicit TFakeEnum(std::vector<std::wstring> texts, std::wstring first = {})
      : values(std::move(texts)), present(std::move(first))
  {
  }

  int SetIndex(int index) override
  {
    writes.push_back(std::to_wstring(index));
    if (!Has(index)) return VX_ERR_INDEX_NOT_IMPLEMENTED;
    if (writeCode == VX_SUCCESS) present = values[static_cast<std::size_t>(index)];
    return writeCode;
  }
  int SetString(std::wstring value) override
  {
    writes.push_back(value);
    if (writeCode == VX_SUCCESS) present = std::move(value);
    return writeCode;
  }
  int GetIndex(int& index) override
  {
    index = static_cast<int>(std::find(values.begin(), values.end(), present) - values.begin());
    return Has(index) ? readCode : VX_ERR_NOT_READABLE;
  }
  int GetCount(int& number) override
  {
    number = count < 0 ? static_cast<int>(values.size()) : count;
    return readCode;
  }
  int GetString(std::wstring& value) override
  {
    value = present;
    return readCode;
  }
  int IsIndexAvailable(int, bool& isAvailable) override
  {
    isAvailable = available;
    return VX_SUCCESS;
  }
  int IsIndexImplemented(int index, bool& implemented) override
  {
    implemented = Has(index);
    return VX_SUCCESS;
  }
  int GetStringByIndex(int index, std::wstring& value) override
  {
    ++textReads;
    const bool isReadable = readCode == VX_SUCCESS && Has(index) && unreadable.count(index) == 0;
    value = isReadable ? values[static_cast<std::size_t>(index)] : std::wstring();
    return isReadable ? VX_SUCCESS : VX_ERR_NOT_READABLE;
  }

  std::vector<std::wstring> values;
  std::wstring present;
  std::set<int> unreadable; ///< texts that cannot be read
  int count = -1;           ///< as reported; -1 is the true count
  int readCode = VX_SUCCESS;
  int writeCode = VX_SUCCESS;
  bool available = true;
  std::vector<std::wstring> writes; ///< indices and texts, also those that were refused
  int textReads = 0;

private:
  bool Has(int index) const { return index >= 0 && index < static_cast<int>(values.size()); }
};
