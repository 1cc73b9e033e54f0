// SPDX-License-Identifier: MIT
// Copying frames out with conversion, against memcpy of the bytes that come out.
//
// Each iteration is a round that times both, in turns first, so that both see the same machine. `ratio` is the
// median over the rounds of memcpy time / conversion time, `GB/s` the median rate of output. Large frames rotate
// through memory larger than the caches, as frames of a ring do; small frames stay in the cache. Padded rows have
// bytes behind their pixels, so that they are copied one by one.
#include "BenchmarkSetting.h"
#include "retrieval/TPackedFetchImage.h"
#include "retrieval/TUnpackedFetchImage.h"
#include "tests/retrieval/ScriptedQueue.h"
#include "vxmcd_result_codes.h"

#include <benchmark/benchmark.h>

#include <algorithm>
#include <chrono>
#include <cstring>
#include <stdexcept>
#include <string>
#include <vector>

namespace {

constexpr std::size_t kSourceBytes = 300'000'000;
constexpr std::size_t kOutputBytes = 128'000'000;
constexpr int kPaddingBytes = 32;
constexpr int kLargeWidth = 2048;
constexpr int kSmallWidth = 128;

// Places in a piece of memory, one after the other, or the same place each time.
class Rotation
{
public:
  Rotation(std::vector<unsigned char>& memory, bool rotates) : memory_(memory), rotates_(rotates) {}

  unsigned char* next(std::size_t bytes)
  {
    if (!rotates_ || position_ + bytes > memory_.size()) position_ = 0;
    unsigned char* place = memory_.data() + position_;
    // Multiples of 64 keep places aligned as the slots of a ring are.
    if (rotates_) position_ += (bytes + 63) / 64 * 64;
    return place;
  }

private:
  std::vector<unsigned char>& memory_;
  bool rotates_;
  std::size_t position_ = 0;
};

std::vector<unsigned char>& sourceMemory()
{
  static std::vector<unsigned char> memory = [] {
    std::vector<unsigned char> bytes(kSourceBytes);
    for (std::size_t i = 0; i < bytes.size(); ++i) bytes[i] = static_cast<unsigned char>(i * 2654435761U >> 13);
    return bytes;
  }();
  return memory;
}

std::vector<unsigned char>& outputMemory()
{
  static std::vector<unsigned char> memory(kOutputBytes, 1);
  return memory;
}

template <class Action>
double secondsOf(int repeats, Action&& action)
{
  const auto start = std::chrono::steady_clock::now();
  for (int i = 0; i < repeats; ++i) {
    action();
    benchmark::ClobberMemory();
  }
  return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

double median(std::vector<double> values)
{
  const auto middle = values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2);
  std::nth_element(values.begin(), middle, values.end());
  return *middle;
}

template <class Fetch, class Dst>
void convertFrames(benchmark::State& state, int width, int stride)
{
  const bool isLarge = width == kLargeWidth;
  const int repeats = isLarge ? 1 : 200;
  const std::size_t frameBytes = static_cast<std::size_t>(stride) * static_cast<std::size_t>(width);
  const std::size_t pixelCount = static_cast<std::size_t>(width) * static_cast<std::size_t>(width);
  const std::size_t outputBytes = pixelCount * sizeof(Dst);
  Rotation source(sourceMemory(), isLarge);
  Rotation output(outputMemory(), isLarge);
  ScriptedQueue queue;
  queue.imageSizeBytes = static_cast<std::int64_t>(frameBytes);
  Fetch fetch(&queue, width, width, stride);

  const auto copyBytes = [&] {
    unsigned char* from = source.next(outputBytes);
    unsigned char* to = output.next(outputBytes);
    return secondsOf(repeats, [&] { std::memcpy(to, from, outputBytes); });
  };
  const auto convert = [&] {
    unsigned char* frame = source.next(frameBytes);
    Dst* to = reinterpret_cast<Dst*>(output.next(outputBytes));
    return secondsOf(repeats, [&] {
      if (fetch.copyImageByLine(to, frame) != RC_SUCCESS) throw std::logic_error("a frame was refused");
    });
  };

  convert();
  std::vector<double> ratios;
  std::vector<double> rates;
  bool memcpyFirst = false;
  for (auto _ : state) {
    memcpyFirst = !memcpyFirst;
    double copySeconds = memcpyFirst ? copyBytes() : 0;
    const double convertSeconds = convert();
    if (!memcpyFirst) copySeconds = copyBytes();
    ratios.push_back(copySeconds / convertSeconds);
    rates.push_back(static_cast<double>(outputBytes) * repeats / convertSeconds / 1e9);
    state.SetIterationTime(convertSeconds / repeats);
  }
  state.counters["ratio"] = median(ratios);
  state.counters["GB/s"] = median(rates);
}

template <class Fetch, class Dst>
void registerConversion(const std::string& name, int storedBitsPerPixel)
{
  for (int width : {kLargeWidth, kSmallWidth}) {
    for (int padding : {0, kPaddingBytes}) {
      const int stride = width * storedBitsPerPixel / 8 + padding;
      const std::string size = std::to_string(width) + "x" + std::to_string(width);
      benchmark::RegisterBenchmark((name + "/" + size + (padding == 0 ? "/dense" : "/padded")).c_str(),
                                   convertFrames<Fetch, Dst>, width, stride)
          ->UseManualTime()
          ->Iterations(width == kLargeWidth ? 150 : 300)
          ->Unit(benchmark::kMicrosecond);
    }
  }
}

} // namespace

int main(int argc, char** argv)
{
  benchmark::Initialize(&argc, argv);
  if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 1;
  printBenchmarkSetting(
      "2048x2048 out of 300 MB into 128 MB, and 128x128 in the cache; padded rows have 32 bytes more");
  registerConversion<TUnpackedFetchImage<unsigned char, unsigned char>, unsigned char>("Mono8_to_8", 8);
  registerConversion<TUnpackedFetchImage<unsigned char, unsigned short>, unsigned short>("Mono8_to_16", 8);
  registerConversion<TUnpackedFetchImage<unsigned char, int>, int>("Mono8_to_32", 8);
  registerConversion<TUnpackedFetchImage<unsigned short, unsigned short>, unsigned short>("Mono16_to_16", 16);
  registerConversion<TUnpackedFetchImage<unsigned short, int>, int>("Mono16_to_32", 16);
  registerConversion<TPackedFetchImage<unsigned char, unsigned short>, unsigned short>("Mono12Packed_to_16", 12);
  registerConversion<TPackedFetchImage<unsigned char, int>, int>("Mono12Packed_to_32", 12);
  registerConversion<TUnpackedFetchImage<int, unsigned short>, unsigned short>("Mono32_to_16", 32);
  registerConversion<TUnpackedFetchImage<int, int>, int>("Mono32_to_32", 32);
  benchmark::RunSpecifiedBenchmarks();
  benchmark::Shutdown();
  return 0;
}
