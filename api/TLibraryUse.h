// SPDX-License-Identifier: MIT
// A use of the feature library.
#pragma once

#include "vxcore.h"

#include <utility>

/// Initialises the feature library and finalises it in turn, which the library counts. A failed initialisation is
/// not finalised: that would end the use of somebody else. Lives on the stack of one call.
class TLibraryUse final
{
public:
  TLibraryUse() : isHeld_(VX_InitialiseLibrary() == VX_SUCCESS) {}
  ~TLibraryUse()
  {
    if (isHeld_) VX_FinaliseLibrary();
  }
  TLibraryUse(const TLibraryUse&) = delete;
  TLibraryUse& operator=(const TLibraryUse&) = delete;

  /// Leaves the finalising to the caller, if there is anything to finalise.
  bool Release() { return std::exchange(isHeld_, false); }

private:
  bool isHeld_;
};
