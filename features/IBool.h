// SPDX-License-Identifier: MIT
// One boolean feature of a camera.
#pragma once

/// A boolean feature. Both operations return the feature library's code, 0 for success.
class IBool
{
public:
  virtual ~IBool() = default;
  virtual int SetBool(bool value) = 0;
  virtual int GetBool(bool& value) = 0;
};
