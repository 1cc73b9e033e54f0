// SPDX-License-Identifier: MIT
// Which conversion kernels this CPU gets.
#include "retrieval/TPixelKernels.h"

const TPixelKernels* TPixelKernels::ForLevel(TKernelLevel level)
{
  return level == TKernelLevel::Portable ? &kPortablePixelKernels : nullptr;
}

// Usable before the choice is made, should another static initialiser convert pixels.
constinit const TPixelKernels* TPixelKernels::active_ = &kPortablePixelKernels;
const bool TPixelKernels::chosen_ = choose();

bool TPixelKernels::choose()
{
  active_ = ForLevel(TKernelLevel::Portable);
  return true;
}
