// SPDX-License-Identifier: MIT
// Cards and columns, put together by CFITSIO in memory.
#include "tools/FitsUnits.h"

#include "runs/host_time.h"
#include "tools/ExposureTimes.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fitsio.h>
#include <functional>
#include <mutex>
#include <optional>
#include <string_view>

namespace vxtool {

namespace {

constexpr LONGLONG kNoTicks = -1;
constexpr LONGLONG kNoHostTime = 0;
constexpr LONGLONG kCheckNumbers[] = {0, 1, -1}; // unchecked, right, wrong
constexpr std::size_t kMaxCardText = 68;
constexpr int kFloatDigits = 7; // what the times, single precision in the library, are good for
constexpr std::size_t kMemoryStep = 1 << 20;
constexpr std::size_t kLateCards = 24; // room for cards that are known at the end only
constexpr std::size_t kUtcLength = sizeof "2026-01-31T12:00:00.000000" - 1;
const std::string kEndCard = "END";

/// A FITS file in memory. One thread at a time; while it exists, other threads wait with theirs, since CFITSIO initialises
/// itself without a lock, and builds of it need not be made for threads.
class TMemoryFits final
{
public:
  explicit TMemoryFits(int* status) : lock_(CfitsioMutex()), status_(status)
  {
    fits_create_memfile(&file_, &memory_, &size_, kMemoryStep, std::realloc, status_);
  }
  ~TMemoryFits()
  {
    int closing = 0;
    if (file_) fits_close_file(file_, &closing);
    fits_clear_errmsg();
    std::free(memory_);
  }
  TMemoryFits(const TMemoryFits&) = delete;
  TMemoryFits& operator=(const TMemoryFits&) = delete;

  fitsfile* Get() const { return file_; }

  /// The unit that was made last; empty after a failure, with the reason.
  std::vector<std::byte> LastUnit(std::string& error)
  {
    LONGLONG start = 0;
    LONGLONG end = 0;
    fits_set_hdustruc(file_, status_);
    fits_flush_file(file_, status_);
    fits_get_hduaddrll(file_, &start, nullptr, &end, status_);
    if (*status_ == 0) {
      const auto* const bytes = static_cast<const std::byte*>(memory_);
      return {bytes + start, bytes + end};
    }
    char text[FLEN_STATUS] = "";
    fits_get_errstatus(*status_, text);
    error = text;
    return {};
  }

private:
  static std::mutex& CfitsioMutex()
  {
    static std::mutex mutex;
    return mutex;
  }

  std::lock_guard<std::mutex> lock_;
  int* status_;
  fitsfile* file_ = nullptr;
  void* memory_ = nullptr;
  std::size_t size_ = 0;
};

/// What is known of an image: a column of the table, or a card in a file of one image.
struct TItem
{
  const char* column;
  const char* card;
  const char* comment;
  const char* unit;
  std::optional<LONGLONG> null; // the value that means none, if there is one
  const char* nullMeaning;
  LONGLONG (*value)(const TImageLabel& label);
};

// What no image has is left out, but for the items that were always there.
std::vector<TItem> ItemsOf(const std::vector<TImageLabel>& labels)
{
  const auto has = [&labels](auto member) {
    return std::any_of(labels.begin(), labels.end(),
                       [member](const TImageLabel& l) { return (l.*member).has_value(); });
  };
  const auto time = [](const TImageLabel& label) { return label.hostNanoseconds.value_or(kNoHostTime); };
  const auto check = [](const TImageLabel& label) {
    return kCheckNumbers[static_cast<std::size_t>(label.check.value_or(ImageCheck::Unchecked))];
  };
  std::vector<TItem> items = {{"IMAGE", "FRAMEID", "number of the image in its run", "", std::nullopt, "",
                               [](const TImageLabel& label) { return LONGLONG{label.number}; }},
                              {"TICKS", "TICKS", "the camera's clock; -1: not known", "", kNoTicks, "no timestamp",
                               [](const TImageLabel& label) { return label.ticks.value_or(kNoTicks); }}};
  if (has(&TImageLabel::hostNanoseconds))
    items.push_back(
        {"HOSTTIME", "HOSTTIME", "[ns] when it had arrived, since 1970 UTC", "ns", kNoHostTime, "no time", time});
  if (has(&TImageLabel::check))
    items.push_back({"CHECK", "CHECK", "checksum: 1 right, -1 wrong, 0 none", "", std::nullopt, "", check});
  return items;
}

std::string FitsTime(std::int64_t nanoseconds)
{
  return UtcText(nanoseconds).substr(0, kUtcLength);
}

int ImageType(PixelDepth depth)
{
  if (depth == PixelDepth::Bits8) return BYTE_IMG;
  return depth == PixelDepth::Bits16 ? USHORT_IMG : LONG_IMG;
}

void WriteText(fitsfile* file, const char* key, const std::string& text, const char* comment, int* status)
{
  fits_update_key_str(file, key, text.c_str(), comment, status);
}

void WriteSensorFacts(fitsfile* file, const TRunFacts& facts, int* status)
{
  const auto number = [&](const char* key, const std::optional<double>& value, const char* comment) {
    if (value) fits_update_key_dbl(file, key, *value, -kFloatDigits, comment, status);
  };
  const TSensorArea& area = facts.area;
  if (area.tracks.empty() && area.width > 0) {
    const std::string section = "[" + std::to_string(area.left) + ":" +
                                std::to_string(area.left + area.width - 1) + "," + std::to_string(area.top) + ":" +
                                std::to_string(area.top + area.height - 1) + "]";
    WriteText(file, "DETSEC", section, "part of the sensor, from 1, ends included", status);
    fits_update_key_lng(file, "XBINNING", area.horizontalBinning, "sensor pixels in a row of a pixel", status);
    fits_update_key_lng(file, "YBINNING", area.verticalBinning, "sensor rows of a pixel", status);
  } else if (!area.tracks.empty()) {
    const std::string tracks = TracksText(area.tracks);
    if (tracks.size() > kMaxCardText) fits_write_key_longwarn(file, status);
    fits_update_key_longstr(file, "TRACKS", tracks.c_str(), "rows of the sensor; last is row 1", status);
  }
  number("XPIXSZ", facts.ImagePixelWidth(), "[um] width of a pixel");
  number("YPIXSZ", facts.ImagePixelHeight(), "[um] height of a pixel");
  number("CCD-TEMP", facts.sensorCelsius, "[C] sensor at the start of the run");
  number("SET-TEMP", facts.targetCelsius, "[C] what the cooler aims at");
  number("GAIN", facts.readout.gainFactor, "factor of the pre-amplifier gain");
  if (!facts.readout.gain.empty()) WriteText(file, "GAINNAME", facts.readout.gain, "pre-amplifier gain", status);
  if (!facts.readout.amplifier.empty()) WriteText(file, "AMPNAME", facts.readout.amplifier, "amplifier", status);
  number("READRATE", facts.readout.megahertz, "[MHz] horizontal shift speed");
}

void WriteFacts(fitsfile* file, const TRunFacts& facts, int* status)
{
  WriteText(file, "CREATOR", facts.software, "program that wrote this file", status);
  WriteText(file, "INSTRUME", facts.camera, "model of the camera", status);
  if (facts.serial) fits_update_key_lng(file, "SERIALNO", *facts.serial, "serial number of the camera", status);
  for (const TImageType& type : kImageTypes)
    if (type.word == facts.imageType) WriteText(file, "IMAGETYP", type.name, "what the images show", status);
  WriteText(file, "ROWORDER", "TOP-DOWN", "the first row is the top of the picture", status);
  WriteText(file, "BUNIT", "adu", "unit of the pixels", status);
  if (facts.exposureSeconds > 0.0)
    fits_update_key_dbl(file, "EXPTIME", facts.exposureSeconds, -kFloatDigits, "[s] exposure time", status);
  if (facts.cycleSeconds > 0.0)
    fits_update_key_dbl(file, "CYCLTIME", facts.cycleSeconds, -kFloatDigits, "[s] time from image to image",
                        status);
  fits_update_key_lng(file, "NACCUM", facts.accumulations, "exposures added up to one image", status);
  if (!facts.trigger.empty()) WriteText(file, "TRIGGER", facts.trigger, "trigger mode", status);
  if (facts.ticksPerSecond)
    fits_update_key_dbl(file, "TICKRATE", *facts.ticksPerSecond, -kFloatDigits, "[Hz] rate of the camera's clock",
                        status);
  WriteSensorFacts(file, facts, status);
  fits_write_date(file, status);
}

void WriteTotals(fitsfile* file, const TFrameCounts& counts, int* status)
{
  fits_update_key_lng(file, "NDELIVER", counts.delivered, "images the camera delivered", status);
  fits_update_key_lng(file, "NOVERWR", counts.overwritten, "of these overwritten before they were copied", status);
  const long lost = counts.lostInCamera.value_or(-1);
  fits_update_key_lng(file, "NLOSTCAM", lost, "frames lost in the camera; -1: not known", status);
}

void WriteTimes(fitsfile* file, const TExposureTimes& times, int* status)
{
  if (times.start) WriteText(file, "DATE-OBS", FitsTime(*times.start), "start of the first exposure", status);
  if (times.end) WriteText(file, "DATE-END", FitsTime(*times.end), "end of the last exposure", status);
  if (times.start || times.end) WriteText(file, "TIMESYS", "UTC", "host's clock", status);
}

void WriteItems(fitsfile* file, const TImageLabel& label, const std::vector<TItem>& items, int* status)
{
  for (const TItem& item : items) {
    LONGLONG value = item.value(label);
    fits_update_key(file, TLONGLONG, item.card, &value, item.comment, status);
  }
}

void WriteFrameTable(fitsfile* file, const std::vector<TImageLabel>& labels, const TExposureTimes& times,
                     int* status)
{
  const std::vector<TItem> items = ItemsOf(labels);
  std::vector<const char*> names;
  std::vector<const char*> forms;
  std::vector<const char*> units;
  const auto add = [&](const char* name, const char* form, const char* unit) {
    names.push_back(name);
    forms.push_back(form);
    units.push_back(unit);
  };
  for (const TItem& item : items) add(item.column, "1K", item.unit);
  if (times.HasSeconds()) add("TIME", "1D", "s");
  const auto text = [](std::vector<const char*>& texts) { return const_cast<char**>(texts.data()); }; // only read
  const auto rows = static_cast<LONGLONG>(labels.size());
  fits_create_tbl(file, BINARY_TBL, rows, static_cast<int>(names.size()), text(names), text(forms), text(units),
                  "FRAMES", status);
  for (std::size_t index = 0; index < items.size(); ++index)
    if (const std::optional<LONGLONG> null = items[index].null)
      fits_write_key_lng(file, ("TNULL" + std::to_string(index + 1)).c_str(), *null, items[index].nullMeaning,
                         status);
  if (times.HasSeconds()) {
    WriteText(file, "TIMEUNIT", "s", "unit of TIME, from the first row's start of exposure", status);
    if (times.start) WriteText(file, "DATEREF", FitsTime(*times.start), "where TIME is 0", status);
    WriteText(file, "TIMESYS", "UTC", "host's clock", status);
  }
  fits_set_hdustruc(file, status);
  std::vector<LONGLONG> values(labels.size());
  for (std::size_t index = 0; index < items.size(); ++index) {
    std::transform(labels.begin(), labels.end(), values.begin(), items[index].value);
    fits_write_col(file, TLONGLONG, static_cast<int>(index + 1), 1, 1, rows, values.data(), status);
  }
  if (!times.HasSeconds()) return;
  std::vector<double> seconds;
  seconds.reserve(labels.size());
  for (const std::optional<double>& value : times.seconds) seconds.push_back(value.value_or(std::nan("")));
  fits_write_col(file, TDOUBLE, static_cast<int>(names.size()), 1, 1, rows, seconds.data(), status);
}

std::string AxisCard(int axis, long length, const char* comment)
{
  char text[kFitsCardBytes + 1];
  std::snprintf(text, sizeof text, "NAXIS%-3d= %20ld / %-47s", axis, length, comment);
  return text;
}

// The header has no data behind it, since CFITSIO would make room for them: the last axis gets its length here.
std::vector<std::byte> HeaderWithoutData(const TImageShape& shape, bool isOneImage, std::string& error,
                                         const std::function<void(fitsfile*, int*)>& write)
{
  int status = 0;
  TMemoryFits fits(&status);
  long axes[] = {shape.width, isOneImage ? 0 : shape.height, 0};
  fits_create_img(fits.Get(), ImageType(shape.depth), isOneImage ? 2 : 3, axes, &status);
  write(fits.Get(), &status);
  return fits.LastUnit(error);
}

// Moves the card END to the end of so many bytes, with blank cards before it.
void Extend(std::vector<std::byte>& header, std::size_t bytes)
{
  auto* const text = reinterpret_cast<char*>(header.data());
  for (std::size_t card = 0; card < header.size(); card += kFitsCardBytes)
    if (std::string_view(text + card, kFitsCardBytes).starts_with(kEndCard + " "))
      std::fill_n(text + card, kEndCard.size(), ' ');
  header.resize(bytes, std::byte{' '});
  std::memcpy(header.data() + bytes - kFitsCardBytes, kEndCard.data(), kEndCard.size());
}

} // namespace

std::vector<std::byte> FitsHeader(const TImageShape& shape, const TRunFacts& facts, const TFitsProgress& progress,
                                  std::size_t bytes, std::string& error)
{
  const std::vector<TImageLabel>& labels = progress.labels;
  const bool isOneImage = progress.isComplete && labels.size() == 1;
  std::vector<std::byte> header = HeaderWithoutData(shape, isOneImage, error, [&](fitsfile* file, int* status) {
    TExposureTimes times = ExposureTimesOf(labels, facts);
    if (!progress.isComplete) times.end.reset();
    WriteTimes(file, times, status);
    if (isOneImage) WriteItems(file, labels.front(), ItemsOf(labels), status);
    WriteFacts(file, facts, status);
    if (progress.counts) WriteTotals(file, *progress.counts, status);
  });
  if (header.empty()) return header;
  if (bytes == 0) {
    bytes = header.size() + kLateCards * kFitsCardBytes;
    bytes = (bytes + kFitsBlockBytes - 1) / kFitsBlockBytes * kFitsBlockBytes;
  }
  if (header.size() > bytes) {
    error = "it became longer than planned";
    return {};
  }
  Extend(header, bytes);
  // The format fixes the places of these cards.
  const auto put = [&header](const std::string& card, std::size_t offset) {
    std::memcpy(header.data() + offset, card.data(), kFitsCardBytes);
  };
  if (isOneImage)
    put(AxisCard(2, shape.height, "length of data axis 2"), kFitsImageCountOffset - kFitsCardBytes);
  else
    put(FitsImageCountCard(static_cast<long>(labels.size())), kFitsImageCountOffset);
  return header;
}

std::string FitsImageCountCard(long images)
{
  return AxisCard(3, images, "number of images");
}

std::vector<std::byte> FitsFrameTable(const std::vector<TImageLabel>& labels, const TRunFacts& facts,
                                      std::string& error)
{
  int status = 0;
  TMemoryFits fits(&status);
  fits_create_img(fits.Get(), BYTE_IMG, 0, nullptr, &status); // a table is never the first unit
  WriteFrameTable(fits.Get(), labels, ExposureTimesOf(labels, facts), &status);
  return fits.LastUnit(error);
}

} // namespace vxtool
