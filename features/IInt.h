// SPDX-License-Identifier: MIT
// One integer feature of a camera, which can be observed.
#pragma once

#include "utility/TSubject.h"

/// An integer feature. Both operations return the feature library's code, 0 for success.
class IInt : public TSubject
{
public:
  virtual ~IInt() = default;
  virtual int SetInt(int value) = 0;
  virtual int GetInt(int& value) = 0;
};
