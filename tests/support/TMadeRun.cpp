// SPDX-License-Identifier: MIT
// The format of a recorded run, written down a second time.
#include "tests/support/TMadeRun.h"

#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <fstream>
#define XXH_INLINE_ALL
#include <xxhash.h>

namespace {

void PutLittle(std::string& bytes, std::uint64_t value, int count)
{
  for (int index = 0; index < count; ++index) bytes.push_back(static_cast<char>(value >> (8 * index) & 0xFF));
}

void PutLittle(std::vector<unsigned char>& bytes, std::uint64_t value, int count)
{
  for (int index = 0; index < count; ++index)
    bytes.push_back(static_cast<unsigned char>(value >> (8 * index) & 0xFF));
}

} // namespace

void PutFileBytes(const std::string& path, const std::string& bytes)
{
  std::ofstream(path, std::ios::binary) << bytes;
}

std::uint32_t TMadeRun::Pixel(long number, int index) const
{
  const auto value = static_cast<std::uint32_t>(number) * 2654435U + static_cast<std::uint32_t>(index) * 7919U;
  if (encoding == "Mono8") return value & 0xFF;
  if (encoding == "Mono16") return value & 0xFFFF;
  return encoding == "Mono32" ? value : value & 0xFFF;
}

int TMadeRun::BytesPerRow() const
{
  if (encoding == "Mono8") return width;
  if (encoding == "Mono32") return 4 * width;
  return encoding == "Mono12Packed" ? (3 * width + 1) / 2 : 2 * width;
}

std::vector<unsigned char> TMadeRun::Frame(long number) const
{
  std::vector<unsigned char> frame;
  for (int row = 0; row < height; ++row) {
    const std::size_t start = frame.size();
    for (int column = 0; column < width; ++column) {
      const std::uint32_t pixel = Pixel(number, row * width + column);
      if (encoding != "Mono12Packed") {
        PutLittle(frame, pixel, BytesPerRow() / width);
      } else if (column % 2 == 0) { // eight high bits, then four low ones
        frame.push_back(static_cast<unsigned char>(pixel >> 4));
        frame.push_back(static_cast<unsigned char>(pixel & 0x0F));
      } else {
        frame.back() |= static_cast<unsigned char>((pixel & 0x0F) << 4);
        frame.push_back(static_cast<unsigned char>(pixel >> 4));
      }
    }
    frame.resize(start + static_cast<std::size_t>(BytesPerRow() + rowPadding), 0xEE);
  }
  frame.resize(frame.size() + static_cast<std::size_t>(tail), 0xDD);
  if (!hasMetadata) return frame;
  PutLittle(frame, 0, 4); // the empty chunk that ends the search
  PutLittle(frame, 4, 4);
  PutLittle(frame, 0xABCDEF, 8); // a chunk of another kind
  PutLittle(frame, 7, 4);
  PutLittle(frame, 12, 4);
  PutLittle(frame, static_cast<std::uint64_t>(Ticks(number)), 8);
  PutLittle(frame, 1, 4);
  PutLittle(frame, 12, 4);
  return frame;
}

std::vector<std::byte> TMadeRun::Pixels(long number, PixelDepth depth) const
{
  const std::size_t bytes = static_cast<std::size_t>(depth) / 8;
  std::vector<std::byte> pixels;
  for (int index = 0; index < width * height; ++index) {
    auto value = static_cast<std::int32_t>(Pixel(number, index));
    if (depth != PixelDepth::Bits32)
      value = std::min(std::max(value, 0), depth == PixelDepth::Bits8 ? 255 : 65535);
    for (std::size_t byte = 0; byte < bytes; ++byte)
      pixels.push_back(static_cast<std::byte>(value >> (8 * byte) & 0xFF));
  }
  return pixels;
}

std::string TMadeRun::Description() const
{
  const auto line = [](const char* key, long value) {
    return std::string(key) + " = " + std::to_string(value) + "\n";
  };
  const bool isOver = state != "recording";
  std::string text = "\xEF\xBB\xBF[multiimage]\n" + line("ImagesPerFile", imagesPerFile);
  text += "[data]\n" + line("ImageSize", static_cast<long>(Frame(1).size()));
  text += "[run]\n" + line("Format", 1) + "State = " + state + "\n";
  text += std::string("Completed = ") + (state == "complete" ? "true\n" : "false\n");
  text += line("ImagesExpected", imagesExpected > 0 ? imagesExpected : images);
  text += line("ImagesWritten", isOver ? images : 0) + "Method = 3\nLibrary = 2.94.32007.0\n";
  text += "StartTime = 2026-01-31T12:34:56.789012345Z\nTimestampFrequency = 100000000\n";
  if (state == "failed") text += "Failure = No space left on device\n";
  text += "[image]\n" + line("Width", width) + line("Height", height) + line("Stride", BytesPerRow() + rowPadding);
  text += "PixelEncoding = " + encoding + "\nMetadata = " + (hasMetadata ? "true\n" : "false\n");
  text += "Left = 11\nTop = 21\nHBin = 2\nVBin = 4\n[acquisition]\nExposureTime = 0.012500000000000001\n";
  text += "FrameRate = 40\nAccumulateCount = 1\nTriggerMode = Internal\n";
  text += "[camera]\nModel = TRELLIS CMOS\nSerialNumber = VSC-00101\n";
  return text + extra;
}

void TMadeRun::Write(const std::string& directory, std::vector<long> order) const
{
  std::filesystem::create_directories(directory);
  PutFileBytes(directory + "/acquisitionmetadata.ini", Description());
  const std::size_t imageBytes = Frame(1).size();
  for (int first = 1; first <= images; first += imagesPerFile) {
    std::string bytes;
    for (int number = first; number < first + imagesPerFile && number <= images; ++number) {
      const std::vector<unsigned char> frame = Frame(number);
      bytes.append(frame.begin(), frame.end());
    }
    bytes.resize(imageBytes * static_cast<std::size_t>(imagesPerFile));
    char name[64];
    std::snprintf(name, sizeof name, "/spool_%010d.dat", (first - 1) / imagesPerFile);
    PutFileBytes(directory + name, bytes);
  }
  if (order.empty())
    for (long number = 1; number <= images; ++number) order.push_back(number);
  std::string index;
  for (const long number : order) {
    const std::vector<unsigned char> frame = Frame(number);
    std::string record;
    PutLittle(record, static_cast<std::uint64_t>(number - 1), 8);
    PutLittle(record, XXH3_64bits(frame.data(), frame.size()), 8);
    PutLittle(record, 1'700'000'000'000'000'000U + static_cast<std::uint64_t>(number), 8);
    PutLittle(record, XXH3_64bits(record.data(), record.size()), 8);
    index += record;
  }
  PutFileBytes(directory + "/spool_index.dat", index);
}
