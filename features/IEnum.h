// SPDX-License-Identifier: MIT
// One enumerated feature of a camera.
#pragma once

#include <string>

/// An enumerated feature: values with an index from 0 and a text each. Every operation returns the feature
/// library's code, 0 for success.
class IEnum
{
public:
  virtual ~IEnum() = default;
  virtual int SetIndex(int index) = 0;
  virtual int SetString(std::wstring value) = 0;
  virtual int GetIndex(int& index) = 0;
  virtual int GetCount(int& count) = 0;
  /// The text of the present value.
  virtual int GetString(std::wstring& value) = 0;
  virtual int IsIndexAvailable(int index, bool& available) = 0;
  virtual int IsIndexImplemented(int index, bool& implemented) = 0;
  virtual int GetStringByIndex(int index, std::wstring& value) = 0;
};
