// SPDX-License-Identifier: MIT
// The FITS cube: header, images as big-endian numbers, table.
#include "tools/TFitsCubeWriter.h"

#include <algorithm>
#include <bit>
#include <cstring>

namespace vxtool {

namespace {

// Swapped and written at once: small enough to stay in a core's cache between the two.
constexpr std::size_t kSwapBytes = 262'144;

static_assert(std::endian::native == std::endian::little, "pixels are swapped to the byte order of FITS");

// Neighbours of 8 bits change places, in words of several pixels, which compilers turn into vector instructions.
std::uint64_t SwapBytes(std::uint64_t word)
{
  constexpr std::uint64_t kLowBytes = 0x00FF'00FF'00FF'00FF;
  return (word & kLowBytes) << 8 | (word >> 8 & kLowBytes);
}

std::uint64_t Swap16(std::uint64_t pixels)
{
  constexpr std::uint64_t kSignBits = 0x0080'0080'0080'0080; // the file has pixel - 32768, BZERO adds it again
  return SwapBytes(pixels) ^ kSignBits;
}

std::uint64_t Swap32(std::uint64_t pixels)
{
  constexpr std::uint64_t kLowHalves = 0x0000'FFFF'0000'FFFF;
  const std::uint64_t swapped = SwapBytes(pixels);
  return (swapped & kLowHalves) << 16 | (swapped >> 16 & kLowHalves);
}

template <std::uint64_t Swap(std::uint64_t)>
void SwapPixels(TPixelBytes from, std::byte* to)
{
  std::uint64_t word = 0;
  const std::size_t words = from.size() / sizeof word;
  for (std::size_t index = 0; index < words; ++index) {
    std::memcpy(&word, from.data() + index * sizeof word, sizeof word);
    word = Swap(word);
    std::memcpy(to + index * sizeof word, &word, sizeof word);
  }
  const TPixelBytes rest = from.subspan(words * sizeof word);
  if (rest.empty()) return;
  std::memcpy(&word, rest.data(), rest.size());
  word = Swap(word);
  std::memcpy(to + words * sizeof word, &word, rest.size());
}

std::uint64_t BlockEnd(std::uint64_t offset)
{
  return (offset + kFitsBlockBytes - 1) / kFitsBlockBytes * kFitsBlockBytes;
}

} // namespace

bool TFitsCubeWriter::Fail(const std::string& message)
{
  if (error_.empty()) error_ = message;
  return false;
}

bool TFitsCubeWriter::Open(const std::string& path, bool overwrite, const TImageShape& shape,
                           const TRunFacts& facts)
{
  path_ = path;
  shape_ = shape;
  facts_ = facts;
  std::string reason;
  const std::vector<std::byte> header = FitsHeader(shape, facts, {.labels = labels_}, 0, reason);
  if (header.empty()) return Fail(path + ": " + reason);
  if (!file_.Create(path, overwrite)) return Fail(file_.Error());
  imagesStart_ = header.size();
  if (file_.WriteAt(0, header)) return true;
  file_.Discard();
  return Fail(file_.Error());
}

bool TFitsCubeWriter::Write(TPixelBytes pixels, const TImageLabel& label)
{
  if (!error_.empty()) return false;
  if (pixels.size() != shape_.Bytes()) return Fail("an image has another size than the run");
  if (!WritePixels(ImagesEnd(), pixels)) return Fail(file_.Error());
  labels_.push_back(label);
  if (labels_.size() == 1) return WriteHeader({.labels = labels_}); // now it is known when the run began
  return WriteImageCount() || Fail(file_.Error());
}

bool TFitsCubeWriter::WritePixels(std::uint64_t offset, TPixelBytes pixels)
{
  if (shape_.depth == PixelDepth::Bits8) return file_.WriteAt(offset, pixels);
  swapped_.resize(kSwapBytes);
  while (!pixels.empty()) {
    const TPixelBytes piece = pixels.first(std::min(pixels.size(), kSwapBytes));
    if (shape_.depth == PixelDepth::Bits16)
      SwapPixels<Swap16>(piece, swapped_.data());
    else
      SwapPixels<Swap32>(piece, swapped_.data());
    if (!file_.WriteAt(offset, TPixelBytes(swapped_).first(piece.size()))) return false;
    offset += piece.size();
    pixels = pixels.subspan(piece.size());
  }
  return true;
}

bool TFitsCubeWriter::WriteHeader(const TFitsProgress& progress)
{
  std::string reason;
  const std::vector<std::byte> header = FitsHeader(shape_, facts_, progress, imagesStart_, reason);
  if (header.empty()) return Fail(path_ + ": the header cannot be completed: " + reason);
  return file_.WriteAt(0, header) || Fail(file_.Error());
}

bool TFitsCubeWriter::WriteImageCount()
{
  const std::string card = FitsImageCountCard(ImagesWritten());
  return file_.WriteAt(kFitsImageCountOffset, std::as_bytes(std::span(card)));
}

bool TFitsCubeWriter::EndImages()
{
  const std::vector<std::byte> zeros(kFitsBlockBytes);
  for (; !labels_.empty(); labels_.pop_back()) {
    if (!file_.Truncate(ImagesEnd())) return Fail(file_.Error());
    if (file_.WriteAt(ImagesEnd(), std::span(zeros).first(BlockEnd(ImagesEnd()) - ImagesEnd()))) return true;
    Fail(file_.Error());
  }
  return false;
}

// Left out when the disk has no room for it.
bool TFitsCubeWriter::WriteTable()
{
  std::string reason;
  const std::vector<std::byte> table = FitsFrameTable(labels_, facts_, reason);
  if (table.empty()) return Fail(path_ + ": the table of images cannot be made: " + reason);
  return file_.WriteAt(BlockEnd(ImagesEnd()), table) || file_.Truncate(BlockEnd(ImagesEnd()));
}

bool TFitsCubeWriter::Close(const std::optional<TFrameCounts>& counts)
{
  if (!file_.IsOpen()) return error_.empty();
  if (!EndImages()) {
    if (labels_.empty()) file_.Discard();
    return error_.empty();
  }
  WriteHeader({.labels = labels_, .isComplete = true, .counts = counts});
  if (labels_.size() > 1 && !WriteTable()) Fail(file_.Error());
  if (!file_.Close() || !file_.Error().empty()) Fail(file_.Error());
  return error_.empty();
}

} // namespace vxtool
