// SPDX-License-Identifier: MIT
// The conversion kernels with 256-bit vectors.
#include "retrieval/TPixelKernels.h"

#if defined(__x86_64__)

#include <cstring>
#include <immintrin.h>

// Only these functions may use the instructions: the rest of the library runs on CPUs without them.
#define VXMCD_AVX2 __attribute__((target("avx2")))
#define VXMCD_AVX2_INLINE __attribute__((target("avx2"), always_inline)) inline

namespace {

constexpr std::size_t kBlock = 16;

VXMCD_AVX2_INLINE __m128i load128(const unsigned char* source)
{
  return _mm_loadu_si128(reinterpret_cast<const __m128i*>(source));
}

VXMCD_AVX2_INLINE __m256i load256(const unsigned char* source)
{
  return _mm256_loadu_si256(reinterpret_cast<const __m256i*>(source));
}

VXMCD_AVX2_INLINE void store256(void* destination, __m256i value)
{
  _mm256_storeu_si256(static_cast<__m256i*>(destination), value);
}

// One struct per stored pixel type; its operation converts a block of pixels and touches their bytes only. A block
// of n pixels takes n / 2 groups of kPairBytes.

struct Mono8
{
  static constexpr std::size_t kPairBytes = 2;

  VXMCD_AVX2_INLINE static void convertBlock(unsigned short* destination, const unsigned char* source)
  {
    store256(destination, _mm256_cvtepu8_epi16(load128(source)));
  }

  VXMCD_AVX2_INLINE static void convertBlock(int* destination, const unsigned char* source)
  {
    const __m128i pixels = load128(source);
    store256(destination, _mm256_cvtepu8_epi32(pixels));
    store256(destination + 8, _mm256_cvtepu8_epi32(_mm_srli_si128(pixels, 8)));
  }
};

struct Mono16
{
  static constexpr std::size_t kPairBytes = 4;

  VXMCD_AVX2_INLINE static void convertBlock(int* destination, const unsigned char* source)
  {
    store256(destination, _mm256_cvtepu16_epi32(load128(source)));
    store256(destination + 8, _mm256_cvtepu16_epi32(load128(source + 16)));
  }
};

struct Mono32
{
  static constexpr std::size_t kPairBytes = 8;

  VXMCD_AVX2_INLINE static void convertBlock(unsigned short* destination, const unsigned char* source)
  {
    const __m256i lowBits = _mm256_set1_epi32(0xFFFF);
    const __m256i first = _mm256_and_si256(load256(source), lowBits);
    const __m256i second = _mm256_and_si256(load256(source + 32), lowBits);
    store256(destination, _mm256_permute4x64_epi64(_mm256_packus_epi32(first, second), 0xD8));
  }
};

struct Packed12
{
  static constexpr std::size_t kPairBytes = 3;

  // The 24 bytes of 16 pixels lie in two overlapping loads: the first 12 in front of the first load, the others at
  // the back of the second. The shuffle makes words b0 << 8 | b1 and b2 << 8 | b1 of them; shifted right by 4
  // these have the upper eight bits of a first pixel in place, and all of a second pixel.
  VXMCD_AVX2_INLINE static __m256i unpack(const unsigned char* source)
  {
    const __m256i order = _mm256_setr_epi8(1, 0, 1, 2, 4, 3, 4, 5, 7, 6, 7, 8, 10, 9, 10, 11, //
                                           5, 4, 5, 6, 8, 7, 8, 9, 11, 10, 11, 12, 14, 13, 14, 15);
    const __m256i bytes = _mm256_inserti128_si256(_mm256_castsi128_si256(load128(source)), load128(source + 8), 1);
    const __m256i words = _mm256_shuffle_epi8(bytes, order);
    const __m256i shifted = _mm256_and_si256(_mm256_srli_epi16(words, 4), _mm256_set1_epi32(0x0FFF0FF0));
    return _mm256_or_si256(shifted, _mm256_and_si256(words, _mm256_set1_epi32(0x0000000F)));
  }

  VXMCD_AVX2_INLINE static void convertBlock(unsigned short* destination, const unsigned char* source)
  {
    store256(destination, unpack(source));
  }

  VXMCD_AVX2_INLINE static void convertBlock(int* destination, const unsigned char* source)
  {
    const __m256i pixels = unpack(source);
    store256(destination, _mm256_cvtepu16_epi32(_mm256_castsi256_si128(pixels)));
    store256(destination + 8, _mm256_cvtepu16_epi32(_mm256_extracti128_si256(pixels, 1)));
  }
};

// The last block is stepped back to end at the last pixel, or the last pair, and converts some pixels again: that
// is cheaper than pixel by pixel. What is less than a block or a pair is left to the portable kernel.
template <class Stored, class Dst, TPixelKernels::Kernel<Dst> TPixelKernels::*kPortable>
VXMCD_AVX2 void convert(Dst* destination, const unsigned char* source, std::size_t pixelCount)
{
  constexpr std::size_t kBlockBytes = kBlock / 2 * Stored::kPairBytes;
  std::size_t left = pixelCount;
  for (; left >= 4 * kBlock; left -= 4 * kBlock) {
    Stored::convertBlock(destination, source);
    Stored::convertBlock(destination + kBlock, source + kBlockBytes);
    Stored::convertBlock(destination + 2 * kBlock, source + 2 * kBlockBytes);
    Stored::convertBlock(destination + 3 * kBlock, source + 3 * kBlockBytes);
    destination += 4 * kBlock;
    source += 4 * kBlockBytes;
  }
  for (; left >= kBlock; left -= kBlock) {
    Stored::convertBlock(destination, source);
    destination += kBlock;
    source += kBlockBytes;
  }
  if (left >= 2 && pixelCount >= kBlock) {
    const std::size_t pairs = left / 2;
    destination += 2 * pairs;
    source += pairs * Stored::kPairBytes;
    Stored::convertBlock(destination - kBlock, source - kBlockBytes);
    left -= 2 * pairs;
  }
  if (left > 0) (kPortablePixelKernels.*kPortable)(destination, source, left);
}

// Rows that stay as they are. memcpy has a start-up cost that shows in rows of one to four KiB; whole frames are
// its strength.
VXMCD_AVX2 void copyBytes(unsigned char* destination, const unsigned char* source, std::size_t byteCount)
{
  constexpr std::size_t kVector = 32;
  constexpr std::size_t kMaxRowBytes = 8192;
  if (byteCount < kVector || byteCount > kMaxRowBytes) {
    std::memcpy(destination, source, byteCount);
    return;
  }
  std::size_t left = byteCount;
  for (; left >= 4 * kVector; left -= 4 * kVector) {
    const __m256i first = load256(source);
    const __m256i second = load256(source + kVector);
    const __m256i third = load256(source + 2 * kVector);
    const __m256i fourth = load256(source + 3 * kVector);
    store256(destination, first);
    store256(destination + kVector, second);
    store256(destination + 2 * kVector, third);
    store256(destination + 3 * kVector, fourth);
    destination += 4 * kVector;
    source += 4 * kVector;
  }
  for (; left >= kVector; left -= kVector) {
    store256(destination, load256(source));
    destination += kVector;
    source += kVector;
  }
  if (left > 0) store256(destination + left - kVector, load256(source + left - kVector));
}

} // namespace

constinit const TPixelKernels kAvx2PixelKernels = {
    .copyBytes = copyBytes,
    .mono8To16 = convert<Mono8, unsigned short, &TPixelKernels::mono8To16>,
    .mono8To32 = convert<Mono8, int, &TPixelKernels::mono8To32>,
    .mono16To32 = convert<Mono16, int, &TPixelKernels::mono16To32>,
    .mono32To16 = convert<Mono32, unsigned short, &TPixelKernels::mono32To16>,
    .packed12To16 = convert<Packed12, unsigned short, &TPixelKernels::packed12To16>,
    .packed12To32 = convert<Packed12, int, &TPixelKernels::packed12To32>,
};

#endif
