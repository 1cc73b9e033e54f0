// SPDX-License-Identifier: MIT
// The pixel conversions, one function per stored and wanted pixel type, in the variants for what a CPU can do.
#pragma once

#include <cstddef>

/// What a set of kernels requires of the CPU.
enum class TKernelLevel
{
  Portable,
  Avx2
};

/// One set of conversion kernels. The sets are constants; which one is used is decided when the library is loaded.
/// Used by the fetchers. Thread-safe. Kernels never fail, read exactly the bytes of their pixels and write exactly
/// theirs; the source needs no alignment and must not overlap the destination.
///
/// Packed pixels: from each three bytes b0, b1, b2 come b0 << 4 | (b1 & 15) and b2 << 4 | b1 >> 4. A last odd
/// pixel is made like a first one, without reading a third byte.
struct TPixelKernels
{
  template <class Dst>
  using Kernel = void (*)(Dst* destination, const unsigned char* source, std::size_t pixelCount);

  /// Copies pixels of one byte each, for pixels that stay as they are.
  Kernel<unsigned char> copyBytes;
  Kernel<unsigned short> mono8To16;
  Kernel<int> mono8To32;
  Kernel<int> mono16To32;
  Kernel<unsigned short> mono32To16;
  Kernel<unsigned short> packed12To16;
  Kernel<int> packed12To32;

  /// The best set for this CPU.
  static const TPixelKernels& Active() { return *active_; }
  /// The set of one level, or null when this CPU or build does not have it.
  static const TPixelKernels* ForLevel(TKernelLevel level);

private:
  static bool choose();

  static const TPixelKernels* active_;
  static const bool chosen_;
};

extern const TPixelKernels kPortablePixelKernels;
#if defined(__x86_64__)
extern const TPixelKernels kAvx2PixelKernels;
#endif
