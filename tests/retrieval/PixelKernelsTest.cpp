// SPDX-License-Identifier: MIT
// Every set of conversion kernels against a pixel-by-pixel reference, at the edge of readable memory.
#include "retrieval/TPixelKernels.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <functional>
#include <random>
#include <sys/mman.h>
#include <unistd.h>
#include <vector>

namespace {

constexpr int kCanary = 0x5A5A;
constexpr std::size_t kCanaryPixels = 64;

// Memory behind which nothing may be read: a source that ends at its end faults when a kernel reads too far.
class GuardedMemory
{
public:
  explicit GuardedMemory(std::size_t size)
      : page_(static_cast<std::size_t>(sysconf(_SC_PAGESIZE))), readable_((size + page_ - 1) / page_ * page_)
  {
    void* memory = mmap(nullptr, readable_ + page_, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    if (memory == MAP_FAILED) throw std::bad_alloc();
    start_ = static_cast<unsigned char*>(memory);
    if (mprotect(start_ + readable_, page_, PROT_NONE) != 0) throw std::bad_alloc();
  }
  ~GuardedMemory() { munmap(start_, readable_ + page_); }
  GuardedMemory(const GuardedMemory&) = delete;
  GuardedMemory& operator=(const GuardedMemory&) = delete;

  unsigned char* end() const { return start_ + readable_; }

private:
  std::size_t page_;
  std::size_t readable_;
  unsigned char* start_ = nullptr;
};

// How a pixel type is stored, in the most naive way.
struct Storage
{
  std::size_t (*bytes)(std::size_t pixelCount);
  std::uint32_t (*pixel)(const unsigned char* source, std::size_t index);
};

std::size_t packedBytes(std::size_t pixelCount)
{
  return pixelCount % 2 == 0 ? pixelCount * 3 / 2 : (pixelCount - 1) * 3 / 2 + 2;
}

std::uint32_t packedPixel(const unsigned char* source, std::size_t index)
{
  const unsigned char* group = source + index / 2 * 3;
  return index % 2 == 0 ? group[0] * 16U + group[1] % 16U : group[2] * 16U + group[1] / 16U;
}

template <std::size_t kBytes>
std::size_t plainBytes(std::size_t pixelCount)
{
  return pixelCount * kBytes;
}

template <std::size_t kBytes>
std::uint32_t plainPixel(const unsigned char* source, std::size_t index)
{
  std::uint32_t pixel = 0;
  for (std::size_t i = kBytes; i-- > 0;) pixel = pixel << 8 | source[index * kBytes + i];
  return pixel;
}

constexpr Storage kMono8 = {plainBytes<1>, plainPixel<1>};
constexpr Storage kMono16 = {plainBytes<2>, plainPixel<2>};
constexpr Storage kMono32 = {plainBytes<4>, plainPixel<4>};
constexpr Storage kPacked12 = {packedBytes, packedPixel};

class PixelKernels : public testing::TestWithParam<TKernelLevel>
{
protected:
  void SetUp() override
  {
    kernels_ = TPixelKernels::ForLevel(GetParam());
    if (!kernels_) GTEST_SKIP() << "this CPU does not have these instructions";
    std::mt19937 random(20);
    for (unsigned char* byte = memory_.end() - kMemoryBytes; byte < memory_.end(); ++byte)
      *byte = static_cast<unsigned char>(random());
  }

  template <class Dst>
  void Check(TPixelKernels::Kernel<Dst> kernel, const Storage& storage)
  {
    std::vector<std::size_t> counts;
    for (std::size_t count = 0; count <= 140; ++count) counts.push_back(count);
    std::mt19937 random(21);
    for (int i = 0; i < 60; ++i) counts.push_back(141 + random() % 3860);
    for (std::size_t count : counts) {
      const unsigned char* source = memory_.end() - storage.bytes(count);
      std::vector<Dst> output(kCanaryPixels + count + kCanaryPixels, static_cast<Dst>(kCanary));
      std::vector<Dst> expected = output;
      for (std::size_t i = 0; i < count; ++i)
        expected[kCanaryPixels + i] = static_cast<Dst>(storage.pixel(source, i));
      kernel(output.data() + kCanaryPixels, source, count);
      ASSERT_EQ(output, expected) << count << " pixels";
    }
  }

  static constexpr std::size_t kMemoryBytes = 4 * 4096;
  GuardedMemory memory_{kMemoryBytes};
  const TPixelKernels* kernels_ = nullptr;
};

} // namespace

TEST_P(PixelKernels, CopyBytes)
{
  Check(kernels_->copyBytes, kMono8);
}

TEST_P(PixelKernels, WidenBytes)
{
  Check(kernels_->mono8To16, kMono8);
  Check(kernels_->mono8To32, kMono8);
}

TEST_P(PixelKernels, WidenWordsWithoutTheirSign)
{
  Check(kernels_->mono16To32, kMono16);
}

TEST_P(PixelKernels, NarrowToTheLowWord)
{
  Check(kernels_->mono32To16, kMono32);
}

TEST_P(PixelKernels, UnpackPairsAndALastSinglePixel)
{
  Check(kernels_->packed12To16, kPacked12);
  Check(kernels_->packed12To32, kPacked12);
}

INSTANTIATE_TEST_SUITE_P(, PixelKernels, testing::Values(TKernelLevel::Portable, TKernelLevel::Avx2),
                         [](const auto& level) {
                           return level.param == TKernelLevel::Avx2 ? "Avx2" : "Portable";
                         });

TEST(PixelKernelsChoice, TakesTheBestSetOfThisCpu)
{
  const TPixelKernels* vectorised = TPixelKernels::ForLevel(TKernelLevel::Avx2);
  EXPECT_EQ(&TPixelKernels::Active(), vectorised ? vectorised : TPixelKernels::ForLevel(TKernelLevel::Portable));
}
