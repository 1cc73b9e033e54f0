// SPDX-License-Identifier: MIT
// Cards and columns, put together by CFITSIO in memory.
#include "tools/FitsUnits.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fitsio.h>
#include <optional>

namespace vxtool {

namespace {

constexpr LONGLONG kNoTicks = -1;
constexpr LONGLONG kNoHostTime = 0;
constexpr LONGLONG kCheckNumbers[] = {0, 1, -1}; // unchecked, right, wrong
constexpr std::size_t kMaxCardText = 68;
constexpr int kFloatDigits = 7; // what the times, single precision in the library, are good for
constexpr std::size_t kMemoryStep = 1 << 20;

/// A FITS file in memory. One thread at a time.
class TMemoryFits final
{
public:
  explicit TMemoryFits(int* status) : status_(status)
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
  int* status_;
  fitsfile* file_ = nullptr;
  void* memory_ = nullptr;
  std::size_t size_ = 0;
};

/// A column of the table of images.
struct TColumn
{
  std::string name;
  std::optional<LONGLONG> null; // the value that means none, if there is one
  const char* nullMeaning;
  LONGLONG (*value)(const TImageLabel& label);
};

int ImageType(PixelDepth depth)
{
  if (depth == PixelDepth::Bits8) return BYTE_IMG;
  return depth == PixelDepth::Bits16 ? USHORT_IMG : LONG_IMG;
}

void WriteText(fitsfile* file, const char* key, const std::string& text, const char* comment, int* status)
{
  fits_update_key_str(file, key, text.c_str(), comment, status);
}

std::optional<double> Times(const std::optional<double>& value, int factor)
{
  return value ? std::optional<double>(*value * factor) : std::nullopt;
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
  number("XPIXSZ", Times(facts.pixelWidthMicrometres, area.horizontalBinning), "[um] width of a pixel");
  if (area.tracks.empty())
    number("YPIXSZ", Times(facts.pixelHeightMicrometres, area.verticalBinning), "[um] height of a pixel");
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
  if (!facts.startUtc.empty()) {
    WriteText(file, "DATE-OBS", facts.startUtc, "start of the run (host clock)", status);
    WriteText(file, "TIMESYS", "UTC", "time system of DATE-OBS", status);
  }
  if (facts.exposureSeconds > 0.0)
    fits_update_key_dbl(file, "EXPTIME", facts.exposureSeconds, -kFloatDigits, "[s] exposure time", status);
  if (facts.cycleSeconds > 0.0)
    fits_update_key_dbl(file, "CYCLTIME", facts.cycleSeconds, -kFloatDigits, "[s] time from image to image",
                        status);
  fits_update_key_lng(file, "NACCUM", facts.accumulations, "exposures added up to one image", status);
  if (!facts.trigger.empty()) WriteText(file, "TRIGGER", facts.trigger, "trigger mode", status);
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

void WriteFrameTable(fitsfile* file, const std::vector<TImageLabel>& labels, int* status)
{
  // A column that no image has anything for is left out, but for those that were always there.
  const auto has = [&labels](auto member) {
    return std::any_of(labels.begin(), labels.end(),
                       [member](const TImageLabel& l) { return (l.*member).has_value(); });
  };
  const auto time = [](const TImageLabel& label) { return label.hostNanoseconds.value_or(kNoHostTime); };
  const auto check = [](const TImageLabel& label) {
    return kCheckNumbers[static_cast<std::size_t>(label.check.value_or(ImageCheck::Unchecked))];
  };
  std::vector<TColumn> columns = {
      {"IMAGE", std::nullopt, "", [](const TImageLabel& label) { return LONGLONG{label.number}; }},
      {"TICKS", kNoTicks, "no timestamp",
       [](const TImageLabel& label) { return label.ticks.value_or(kNoTicks); }}};
  if (has(&TImageLabel::hostNanoseconds)) columns.push_back({"HOSTTIME", kNoHostTime, "no time", time});
  if (has(&TImageLabel::check)) columns.push_back({"CHECK", std::nullopt, "", check});

  char form[] = "1K";
  char unit[] = "";
  std::vector<char*> names;
  names.reserve(columns.size());
  for (TColumn& column : columns) names.push_back(column.name.data());
  std::vector<char*> forms(columns.size(), form);
  std::vector<char*> units(columns.size(), unit);
  const auto rows = static_cast<LONGLONG>(labels.size());
  fits_create_tbl(file, BINARY_TBL, rows, static_cast<int>(columns.size()), names.data(), forms.data(),
                  units.data(), "FRAMES", status);
  for (std::size_t index = 0; index < columns.size(); ++index)
    if (const std::optional<LONGLONG> null = columns[index].null)
      fits_write_key_lng(file, ("TNULL" + std::to_string(index + 1)).c_str(), *null, columns[index].nullMeaning,
                         status);
  fits_set_hdustruc(file, status);
  std::vector<LONGLONG> values(labels.size());
  for (std::size_t index = 0; index < columns.size(); ++index) {
    std::transform(labels.begin(), labels.end(), values.begin(), columns[index].value);
    fits_write_col(file, TLONGLONG, static_cast<int>(index + 1), 1, 1, rows, values.data(), status);
  }
}

} // namespace

std::vector<std::byte> FitsHeader(const TImageShape& shape, const TRunFacts& facts, const TFrameCounts& counts,
                                  long images, std::string& error)
{
  int status = 0;
  TMemoryFits fits(&status);
  long axes[] = {shape.width, shape.height, 0}; // no image yet: CFITSIO makes room for all that there are
  fits_create_img(fits.Get(), ImageType(shape.depth), 3, axes, &status);
  WriteFacts(fits.Get(), facts, &status);
  WriteTotals(fits.Get(), counts, &status);
  std::vector<std::byte> header = fits.LastUnit(error);
  if (!header.empty())
    std::memcpy(header.data() + kFitsImageCountOffset, FitsImageCountCard(images).data(), kFitsCardBytes);
  return header;
}

std::string FitsImageCountCard(long images)
{
  char text[kFitsCardBytes + 1];
  std::snprintf(text, sizeof text, "NAXIS3  = %20ld / %-47s", images, "number of images");
  return text;
}

std::vector<std::byte> FitsFrameTable(const std::vector<TImageLabel>& labels, std::string& error)
{
  int status = 0;
  TMemoryFits fits(&status);
  fits_create_img(fits.Get(), BYTE_IMG, 0, nullptr, &status); // a table is never the first unit
  WriteFrameTable(fits.Get(), labels, &status);
  return fits.LastUnit(error);
}

} // namespace vxtool
