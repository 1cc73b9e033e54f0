// SPDX-License-Identifier: MIT
// Which conversion kernels this CPU gets.
#include "retrieval/TPixelKernels.h"

const TPixelKernels* TPixelKernels::ForLevel(TKernelLevel level)
{
#if defined(__x86_64__)
  __builtin_cpu_init();
  if (level == TKernelLevel::Avx2) return __builtin_cpu_supports("avx2") ? &kAvx2PixelKernels : nullptr;
#endif
  return level == TKernelLevel::Portable ? &kPortablePixelKernels : nullptr;
}

// Usable before the choice is made, should another static initialiser convert pixels.
constinit const TPixelKernels* TPixelKernels::active_ = &kPortablePixelKernels;
const bool TPixelKernels::chosen_ = choose();

bool TPixelKernels::choose()
{
  if (const TPixelKernels* vectorised = ForLevel(TKernelLevel::Avx2)) active_ = vectorised;
  return true;
}
