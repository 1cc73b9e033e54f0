// SPDX-License-Identifier: MIT
// One feature of a camera, by its kind.
#pragma once

#include "utility/TSubject.h"

#include <string>

/// A boolean feature. Both operations return the feature library's code, 0 for success.
class IBool
{
public:
  virtual ~IBool() = default;
  virtual int SetBool(bool value) = 0;
  virtual int GetBool(bool& value) = 0;
};

/// An integer feature. Both operations return the feature library's code, 0 for success.
class IInt : public TSubject
{
public:
  virtual ~IInt() = default;
  virtual int SetInt(int value) = 0;
  virtual int GetInt(int& value) = 0;
};

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
