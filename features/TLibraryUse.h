// SPDX-License-Identifier: MIT
// A use of the feature library.
#pragma once

#include "vxcore.h"

#include <utility>

/// Initialises the feature library and finalises it in turn, which the library counts. A failed initialisation is
/// not finalised: that would end another use. Lives on the stack of one call.
class TLibraryUse final
{
public:
  TLibraryUse() : isInitialised_(VX_InitialiseLibrary() == VX_SUCCESS) {}
  ~TLibraryUse()
  {
    if (isInitialised_) Finalise();
  }
  TLibraryUse(const TLibraryUse&) = delete;
  TLibraryUse& operator=(const TLibraryUse&) = delete;

  /// Leaves Finalise() to the caller when it is true.
  bool Release() { return std::exchange(isInitialised_, false); }

  static void Finalise() { VX_FinaliseLibrary(); }

private:
  bool isInitialised_;
};
