// SPDX-License-Identifier: MIT
// TIFF and BigTIFF structure: header, first directory, all pixel data, the other directories or a list of the images.
#include "tools/TTiffStackWriter.h"

#include <algorithm>
#include <bit>
#include <cstring>
#include <iomanip>
#include <locale>
#include <sstream>

namespace vxtool {

namespace {

constexpr std::uint64_t kDataBlock = 4096;         // pixels begin at a multiple of it
constexpr std::uint64_t kDescriptionRoom = 2048;   // for all but the list of tracks
constexpr std::uint64_t kDirectoryAllowance = 512; // more than any directory but the first takes
constexpr std::uint64_t kClassicLimit = 0xFFFF0000;
constexpr std::size_t kTailBlock = 65536; // written at once of what follows the pixels
// How often the first page gets the number of images. With each image it would slow down series of small ones.
constexpr std::chrono::milliseconds kDescribePeriod{100};
constexpr int kFloatDigits = 7; // what the times, single precision in the library, are good for

enum TiffType : std::uint16_t
{
  kAscii = 2,
  kShort = 3,
  kLong = 4,
  kLong8 = 16,
};

enum TiffTag : std::uint16_t
{
  kNewSubfileType = 254,
  kImageWidth = 256,
  kImageLength = 257,
  kBitsPerSample = 258,
  kCompression = 259,
  kPhotometricInterpretation = 262,
  kImageDescription = 270,
  kStripOffsets = 273,
  kSamplesPerPixel = 277,
  kRowsPerStrip = 278,
  kStripByteCounts = 279,
  kSoftware = 305,
  kDateTime = 306,
  kSampleFormat = 339,
};

constexpr std::uint64_t kUncompressed = 1;
constexpr std::uint64_t kBlackIsZero = 1;
constexpr std::uint64_t kUnsigned = 1;
constexpr std::uint64_t kSigned = 2;

/// Bytes of a file in the making, numbers in this machine's order (which the TIFF header names).
class TByteSink
{
public:
  template <typename Number>
  void Put(Number number)
  {
    const auto* raw = reinterpret_cast<const std::byte*>(&number);
    bytes_.insert(bytes_.end(), raw, raw + sizeof number);
  }
  void Put(const std::string& text)
  {
    const auto* raw = reinterpret_cast<const std::byte*>(text.c_str());
    bytes_.insert(bytes_.end(), raw, raw + text.size() + 1);
  }
  void PadTo(std::size_t size) { bytes_.resize(std::max(bytes_.size(), size)); }
  std::size_t Size() const { return bytes_.size(); }
  std::vector<std::byte> Take() { return std::move(bytes_); }

private:
  std::vector<std::byte> bytes_;
};

struct TEntry
{
  TiffTag tag;
  TiffType type;
  std::uint64_t value;               // numbers have one value each
  const std::string* text = nullptr; // of an ASCII entry
  bool isOfRun = false;              // not of its page: only the first directory carries it
};

void PutOffset(TByteSink& sink, bool isBig, std::uint64_t value)
{
  if (isBig)
    sink.Put(value);
  else
    sink.Put(static_cast<std::uint32_t>(value));
}

// A number of any type is at the start of an entry's value field.
void PutValue(TByteSink& sink, bool isBig, const TEntry& entry)
{
  const std::size_t end = sink.Size() + (isBig ? 8 : 4);
  if (entry.type == kShort)
    sink.Put(static_cast<std::uint16_t>(entry.value));
  else if (entry.type == kLong)
    sink.Put(static_cast<std::uint32_t>(entry.value));
  else
    sink.Put(entry.value);
  sink.PadTo(end);
}

// A directory that stands at @p start of the file, with the texts of its entries behind it.
std::vector<std::byte> PutEntries(const std::vector<TEntry>& entries, bool isBig, std::uint64_t start,
                                  std::uint64_t nextDirectory)
{
  const std::size_t count = entries.size();
  const std::size_t fixedSize = isBig ? 8 + 20 * count + 8 : 2 + 12 * count + 4;
  TByteSink fixed;
  TByteSink texts;
  if (isBig)
    fixed.Put(static_cast<std::uint64_t>(count));
  else
    fixed.Put(static_cast<std::uint16_t>(count));
  for (const TEntry& entry : entries) {
    fixed.Put(static_cast<std::uint16_t>(entry.tag));
    fixed.Put(static_cast<std::uint16_t>(entry.type));
    PutOffset(fixed, isBig, entry.text ? entry.text->size() + 1 : 1);
    if (!entry.text) {
      PutValue(fixed, isBig, entry);
      continue;
    }
    PutOffset(fixed, isBig, start + fixedSize + texts.Size());
    texts.Put(*entry.text);
    texts.PadTo((texts.Size() + 7) & ~std::size_t{7}); // also longer than any value field
  }
  PutOffset(fixed, isBig, nextDirectory);

  std::vector<std::byte> bytes = fixed.Take();
  const std::vector<std::byte> tail = texts.Take();
  bytes.insert(bytes.end(), tail.begin(), tail.end());
  bytes.resize((start + bytes.size() + 7) / 8 * 8 - start); // the next directory starts at a multiple of 8
  return bytes;
}

// What is known of an image, each item with @p end behind it.
std::string LabelText(const TImageLabel& label, const char* end)
{
  std::string text = "image=" + std::to_string(label.number) + end;
  if (label.ticks) text += "ticks=" + std::to_string(*label.ticks) + end;
  if (label.hostNanoseconds) text += "host_ns=" + std::to_string(*label.hostNanoseconds) + end;
  if (label.check) text += std::string("check=") + ImageCheckText(*label.check) + end;
  return text;
}

std::string TiffDateTime(const std::string& utc)
{
  if (utc.size() < 19) return "0000:00:00 00:00:00";
  std::string text = utc.substr(0, 19);
  text[4] = text[7] = ':';
  text[10] = ' ';
  return text;
}

} // namespace

bool TTiffStackWriter::Fail(const std::string& message)
{
  if (error_.empty()) error_ = message;
  return false;
}

bool TTiffStackWriter::Open(const std::string& path, bool overwrite, const TImageShape& shape,
                            const TRunFacts& facts)
{
  path_ = path;
  shape_ = shape;
  facts_ = facts;
  dataStart_ = (kDescriptionRoom + TracksText(facts.area.tracks).size() + kDataBlock) / kDataBlock * kDataBlock;
  if (!file_.Create(path, overwrite)) return Fail(file_.Error());
  return WriteFirstPage(Description(std::nullopt, false), 0);
}

bool TTiffStackWriter::Write(TPixelBytes pixels, const TImageLabel& label)
{
  if (!error_.empty()) return false;
  if (pixels.size() != shape_.Bytes()) return Fail("an image has another size than the run");
  if (!file_.WriteAt(ImageOffset(labels_.size()), pixels)) return Fail(file_.Error());
  labels_.push_back(label);
  // A file whose program is killed then has the images up to here.
  return Clock::now() < described_ + kDescribePeriod || WriteFirstPage(Description(std::nullopt, false), 0);
}

bool TTiffStackWriter::HasPages(std::uint64_t images) const
{
  return isBig_ || images < (kClassicLimit - dataStart_) / (shape_.Bytes() + kDirectoryAllowance);
}

std::string TTiffStackWriter::Note() const
{
  if (HasPages(std::max(labels_.size(), static_cast<std::size_t>(facts_.plannedImages)))) return "";
  return path_ + ": a TIFF file above 4 GB: ImageJ and tifffile read all of its images, other programs the first "
                 "one only; --format bigtiff makes a file for those";
}

bool TTiffStackWriter::Close(const std::optional<TFrameCounts>& counts)
{
  if (!file_.IsOpen()) return error_.empty();
  // A disk may be too full for what follows the pixels: then the newest images make room for it.
  bool complete = file_.Truncate(ImageOffset(labels_.size()));
  while (!labels_.empty() && !WriteTail()) {
    Fail(file_.Error());
    labels_.pop_back();
    complete = file_.Truncate(ImageOffset(labels_.size()));
  }
  if (labels_.empty()) {
    file_.Discard();
    return error_.empty();
  }
  const bool hasNext = labels_.size() > 1 && HasPages(labels_.size());
  complete = WriteFirstPage(Description(counts, true), hasNext ? TailStart() : 0) && complete;
  complete = file_.Close() && complete;
  if (!complete) Fail(file_.Error());
  return error_.empty();
}

std::uint64_t TTiffStackWriter::ImageOffset(std::size_t page) const
{
  return dataStart_ + page * shape_.Bytes();
}

std::uint64_t TTiffStackWriter::TailStart() const
{
  return (ImageOffset(labels_.size()) + 7) & ~std::uint64_t{7};
}

bool TTiffStackWriter::WriteFirstPage(const std::string& description, std::uint64_t nextDirectory)
{
  TByteSink header;
  constexpr bool isLittle = std::endian::native == std::endian::little;
  header.Put(static_cast<std::uint16_t>(isLittle ? 0x4949 : 0x4D4D)); // "II" or "MM"
  header.Put(static_cast<std::uint16_t>(isBig_ ? 43 : 42));
  if (isBig_) {
    header.Put(std::uint16_t{8});
    header.Put(std::uint16_t{0});
  }
  const std::uint64_t start = isBig_ ? 16 : 8;
  PutOffset(header, isBig_, start);
  std::vector<std::byte> bytes = header.Take();
  const std::vector<std::byte> directory = MakeDirectory(start, 0, description, nextDirectory);
  bytes.insert(bytes.end(), directory.begin(), directory.end());
  bytes.resize(dataStart_);
  described_ = Clock::now();
  return file_.WriteAt(0, bytes) || Fail(file_.Error());
}

bool TTiffStackWriter::WriteOtherPages()
{
  std::uint64_t start = TailStart();
  std::uint64_t blockStart = start;
  std::vector<std::byte> block;
  for (std::size_t page = 1; page < labels_.size(); ++page) {
    const std::string description = LabelText(labels_[page], "\n");
    const std::uint64_t end = start + MakeDirectory(start, page, description, 0).size();
    const std::uint64_t next = page + 1 < labels_.size() ? end : 0;
    const std::vector<std::byte> directory = MakeDirectory(start, page, description, next);
    block.insert(block.end(), directory.begin(), directory.end());
    start = end;
    if (block.size() < kTailBlock && next != 0) continue;
    if (!file_.WriteAt(blockStart, block)) return false;
    blockStart = end;
    block.clear();
  }
  return true;
}

bool TTiffStackWriter::WriteList()
{
  std::uint64_t start = TailStart();
  std::string block;
  for (const TImageLabel& label : labels_) {
    block += LabelText(label, " ");
    block.back() = '\n';
    if (block.size() < kTailBlock && &label != &labels_.back()) continue;
    if (!file_.WriteAt(start, std::as_bytes(std::span(block)))) return false;
    start += block.size();
    block.clear();
  }
  return true;
}

std::vector<std::byte> TTiffStackWriter::MakeDirectory(std::uint64_t start, std::size_t page,
                                                       const std::string& description,
                                                       std::uint64_t nextDirectory) const
{
  const TiffType offsetType = isBig_ ? kLong8 : kLong;
  const auto width = static_cast<std::uint64_t>(shape_.width);
  const auto height = static_cast<std::uint64_t>(shape_.height);
  const std::string dateTime = TiffDateTime(facts_.startUtc); // the start of the run
  std::vector<TEntry> entries = {
      {kNewSubfileType, kLong, 0},
      {kImageWidth, kLong, width},
      {kImageLength, kLong, height},
      {kBitsPerSample, kShort, static_cast<std::uint64_t>(shape_.depth)},
      {kCompression, kShort, kUncompressed},
      {kPhotometricInterpretation, kShort, kBlackIsZero},
      {kImageDescription, kAscii, 0, &description},
      {kStripOffsets, offsetType, ImageOffset(page)},
      {kSamplesPerPixel, kShort, 1},
      {kRowsPerStrip, kLong, height},
      {kStripByteCounts, offsetType, shape_.Bytes()},
      {kSoftware, kAscii, 0, &facts_.software, true},
      {kDateTime, kAscii, 0, &dateTime, true},
      {kSampleFormat, kShort, shape_.depth == PixelDepth::Bits32 ? kSigned : kUnsigned},
  };
  if (page > 0) std::erase_if(entries, [](const TEntry& entry) { return entry.isOfRun; });
  return PutEntries(entries, isBig_, start, nextDirectory);
}

std::string TTiffStackWriter::Description(const std::optional<TFrameCounts>& counts, bool isClosed) const
{
  const long images = std::max(1L, ImagesWritten());
  std::ostringstream text;
  text.imbue(std::locale::classic());
  text << std::setprecision(kFloatDigits);
  text << "ImageJ=1.53t\nimages=" << images << "\nframes=" << images << "\nloop=false\n";
  if (facts_.cycleSeconds > 0.0) text << "finterval=" << facts_.cycleSeconds << "\nunit=pixel\n";
  text << "camera=" << facts_.camera.substr(0, 200) << "\n";
  if (!facts_.startUtc.empty()) text << "start_utc=" << facts_.startUtc.substr(0, 40) << "\n";
  if (!facts_.imageType.empty()) text << "image_type=" << facts_.imageType << "\n";
  if (!facts_.trigger.empty()) text << "trigger=" << facts_.trigger.substr(0, 100) << "\n";
  if (facts_.exposureSeconds > 0.0) text << "exposure_s=" << facts_.exposureSeconds << "\n";
  text << "accumulations=" << facts_.accumulations << "\n";
  const TSensorArea& area = facts_.area;
  if (facts_.serial) text << "serial=" << *facts_.serial << "\n";
  if (area.tracks.empty() && area.width > 0)
    text << "area=" << area.left << "," << area.top << "," << area.width << "x" << area.height
         << "\nbinning=" << area.horizontalBinning << "x" << area.verticalBinning << "\n";
  else if (!area.tracks.empty())
    text << "tracks=" << TracksText(area.tracks) << "\n";
  if (facts_.sensorCelsius) text << "sensor_C=" << *facts_.sensorCelsius << "\n";
  if (facts_.targetCelsius) text << "target_C=" << *facts_.targetCelsius << "\n";
  if (!facts_.readout.gain.empty()) text << "gain=" << facts_.readout.gain.substr(0, 100) << "\n";
  if (!facts_.readout.amplifier.empty()) text << "amplifier=" << facts_.readout.amplifier.substr(0, 100) << "\n";
  if (facts_.readout.megahertz) text << "speed_MHz=" << *facts_.readout.megahertz << "\n";
  if (!labels_.empty()) text << LabelText(labels_.front(), "\n");
  if (isClosed && !HasPages(labels_.size())) text << "labels_at=" << TailStart() << "\n";
  if (counts) {
    text << "delivered=" << counts->delivered << "\noverwritten=" << counts->overwritten << "\nlost_in_camera=";
    if (counts->lostInCamera)
      text << *counts->lostInCamera << "\n";
    else
      text << "unknown\n";
  }
  return text.str();
}

} // namespace vxtool
