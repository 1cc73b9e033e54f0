// SPDX-License-Identifier: MIT
// Several places of a spool file, one after another.
#pragma once

#include "spool/IImage.h"

/// An image that hands out several places. Operations return 0 for success.
class IMultiImage : public IImage
{
public:
  /// Unlocks whatever is still locked.
  virtual int ForceUnlock() = 0;
};
