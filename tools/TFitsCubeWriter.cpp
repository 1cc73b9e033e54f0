// SPDX-License-Identifier: MIT
// The FITS cube by way of CFITSIO, and the repair of a cube that a full disk cut short.
#include "tools/TFitsCubeWriter.h"

#include "tools/TOutputFile.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <system_error>
#include <unistd.h>

namespace vxtool {

namespace {

constexpr long long kFitsBlock = 2880;
constexpr long long kFitsCard = 80;
constexpr long long kNoTicks = -1;
constexpr long long kNoHostTime = 0;
constexpr LONGLONG kCheckNumbers[] = {0, 1, -1}; // unchecked, right, wrong
constexpr std::size_t kLongestCardText = 68;
constexpr int kFloatDigits = 7; // what the times, single precision in the library, are good for

/// A column of the table of images.
struct TColumn
{
  std::string name;
  std::optional<LONGLONG> null; // what stands for nothing, if something does
  const char* nullMeaning;
  LONGLONG (*value)(const TImageLabel& label);
};

int ImageType(PixelDepth depth)
{
  if (depth == PixelDepth::Bits8) return BYTE_IMG;
  return depth == PixelDepth::Bits16 ? USHORT_IMG : LONG_IMG;
}

int MemoryType(PixelDepth depth)
{
  if (depth == PixelDepth::Bits8) return TBYTE;
  return depth == PixelDepth::Bits16 ? TUSHORT : TINT;
}

void WriteText(fitsfile* file, const char* key, const std::string& text, const char* comment, int* status)
{
  fits_update_key_str(file, key, text.c_str(), comment, status);
}

std::optional<double> Times(const std::optional<double>& value, int factor)
{
  return value ? std::optional<double>(*value * factor) : std::nullopt;
}

// Puts a number into the NAXIS3 card of the first header.
bool PatchImageCount(TOutputFile& file, long long headerBytes, long count)
{
  std::vector<std::byte> card(kFitsCard);
  for (long long offset = 0; offset < headerBytes; offset += kFitsCard) {
    if (!file.ReadAt(static_cast<std::uint64_t>(offset), card)) return false;
    if (std::memcmp(card.data(), "NAXIS3  =", 9) != 0) continue;
    char text[kFitsCard + 1];
    std::snprintf(text, sizeof text, "NAXIS3  = %20ld / %-47s", count, "number of images");
    return file.WriteAt(static_cast<std::uint64_t>(offset), std::as_bytes(std::span(text, kFitsCard)));
  }
  return false;
}

} // namespace

TFitsCubeWriter::~TFitsCubeWriter()
{
  int status = 0;
  if (file_) fits_close_file(file_, &status);
}

bool TFitsCubeWriter::Fail(const std::string& message)
{
  if (error_.empty()) error_ = message;
  return false;
}

bool TFitsCubeWriter::FailFits(int status)
{
  const int reason = errno;
  char text[FLEN_STATUS] = "";
  fits_get_errstatus(status, text);
  fits_clear_errmsg();
  std::string message = path_ + ": " + text;
  if (reason != 0) message += ": " + std::generic_category().message(reason);
  return Fail(message);
}

bool TFitsCubeWriter::Open(const std::string& path, bool overwrite, const TImageShape& shape,
                           const TRunFacts& facts)
{
  path_ = path;
  shape_ = shape;
  std::string message;
  if (IsProtectedFile(path, overwrite, message)) return Fail(message);
  if (overwrite) unlink(path.c_str());

  errno = 0;
  int status = 0;
  fits_create_diskfile(&file_, path.c_str(), &status);
  if (status != 0) {
    file_ = nullptr;
    return FailFits(status);
  }
  long axes[] = {shape.width, shape.height, 1};
  fits_create_img(file_, ImageType(shape.depth), 3, axes, &status);
  WriteHeader(facts, &status);
  WriteTotals(TRunTotals{}, &status);
  fits_set_hdustruc(file_, &status);
  fits_get_hduaddrll(file_, nullptr, &dataStart_, nullptr, &status);
  fits_flush_file(file_, &status); // the header is on disk from here on
  return status == 0 || FailFits(status);
}

void TFitsCubeWriter::WriteHeader(const TRunFacts& facts, int* status)
{
  WriteText(file_, "CREATOR", facts.software, "program that wrote this file", status);
  WriteText(file_, "INSTRUME", facts.camera, "model of the camera", status);
  if (facts.serial) fits_update_key_lng(file_, "SERIALNO", *facts.serial, "serial number of the camera", status);
  if (!facts.startUtc.empty()) {
    WriteText(file_, "DATE-OBS", facts.startUtc, "start of the run (host clock)", status);
    WriteText(file_, "TIMESYS", "UTC", "time system of DATE-OBS", status);
  }
  if (facts.exposureSeconds > 0.0)
    fits_update_key_dbl(file_, "EXPTIME", facts.exposureSeconds, -kFloatDigits, "[s] exposure time", status);
  if (facts.cycleSeconds > 0.0)
    fits_update_key_dbl(file_, "CYCLTIME", facts.cycleSeconds, -kFloatDigits, "[s] time from image to image",
                        status);
  fits_update_key_lng(file_, "NACCUM", facts.accumulations, "exposures added up to one image", status);
  if (!facts.trigger.empty()) WriteText(file_, "TRIGGER", facts.trigger, "trigger mode", status);
  WriteSensorFacts(facts, status);
  fits_write_date(file_, status);
}

void TFitsCubeWriter::WriteSensorFacts(const TRunFacts& facts, int* status)
{
  const auto number = [&](const char* key, const std::optional<double>& value, const char* comment) {
    if (value) fits_update_key_dbl(file_, key, *value, -kFloatDigits, comment, status);
  };
  const TSensorArea& area = facts.area;
  if (area.tracks.empty() && area.width > 0) {
    const std::string section = "[" + std::to_string(area.left) + ":" +
                                std::to_string(area.left + area.width - 1) + "," + std::to_string(area.top) + ":" +
                                std::to_string(area.top + area.height - 1) + "]";
    WriteText(file_, "DETSEC", section, "part of the sensor, from 1, ends included", status);
    fits_update_key_lng(file_, "XBINNING", area.horizontalBinning, "sensor pixels in a row of a pixel", status);
    fits_update_key_lng(file_, "YBINNING", area.verticalBinning, "sensor rows of a pixel", status);
  } else if (!area.tracks.empty()) {
    const std::string tracks = TracksText(area.tracks);
    if (tracks.size() > kLongestCardText) fits_write_key_longwarn(file_, status);
    fits_update_key_longstr(file_, "TRACKS", tracks.c_str(), "rows of the sensor; last is row 1", status);
  }
  number("XPIXSZ", Times(facts.pixelWidthMicrometres, area.horizontalBinning), "[um] width of a pixel");
  if (area.tracks.empty())
    number("YPIXSZ", Times(facts.pixelHeightMicrometres, area.verticalBinning), "[um] height of a pixel");
  number("CCD-TEMP", facts.sensorCelsius, "[C] sensor at the start of the run");
  number("SET-TEMP", facts.targetCelsius, "[C] what the cooler aims at");
  number("GAIN", facts.readout.gainFactor, "factor of the pre-amplifier gain");
  if (!facts.readout.gain.empty()) WriteText(file_, "GAINNAME", facts.readout.gain, "pre-amplifier gain", status);
  if (!facts.readout.amplifier.empty()) WriteText(file_, "AMPNAME", facts.readout.amplifier, "amplifier", status);
  number("READRATE", facts.readout.megahertz, "[MHz] horizontal shift speed");
}

void TFitsCubeWriter::WriteTotals(const TRunTotals& totals, int* status)
{
  fits_update_key_lng(file_, "NDELIVER", totals.delivered, "images the camera delivered", status);
  fits_update_key_lng(file_, "NOVERWR", totals.overwritten, "of these overwritten before they were copied",
                      status);
  const long lost = totals.lostInCamera.value_or(-1);
  fits_update_key_lng(file_, "NLOSTCAM", lost, "frames lost in the camera; -1: not known", status);
}

bool TFitsCubeWriter::Write(TPixelBytes pixels, const TImageLabel& label)
{
  if (!error_.empty()) return false;
  if (pixels.size() != shape_.Bytes()) return Fail("an image has another size than the run");
  errno = 0;
  int status = 0;
  const long count = ImagesWritten() + 1;
  if (count > 1) {
    fits_modify_key_lng(file_, "NAXIS3", count, "number of images", &status);
    fits_set_hdustruc(file_, &status);
  }
  const auto pixelsPerImage = static_cast<long long>(shape_.Pixels());
  // The function takes a pointer to non-constant pixels and leaves them alone.
  void* source = const_cast<std::byte*>(pixels.data());
  fits_write_img(file_, MemoryType(shape_.depth), (count - 1) * pixelsPerImage + 1, pixelsPerImage, source,
                 &status);
  if (status != 0) return FailFits(status);
  labels_.push_back(label);
  return true;
}

void TFitsCubeWriter::WriteFrameTable(int* status)
{
  // A column that no image has anything for is left out, but for those that were always there.
  const auto has = [this](auto member) {
    return std::any_of(labels_.begin(), labels_.end(),
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
  for (TColumn& column : columns) names.push_back(column.name.data());
  std::vector<char*> forms(columns.size(), form);
  std::vector<char*> units(columns.size(), unit);
  fits_create_tbl(file_, BINARY_TBL, ImagesWritten(), static_cast<int>(columns.size()), names.data(), forms.data(),
                  units.data(), "FRAMES", status);
  for (std::size_t index = 0; index < columns.size(); ++index)
    if (const std::optional<LONGLONG> null = columns[index].null)
      fits_write_key_lng(file_, ("TNULL" + std::to_string(index + 1)).c_str(), *null, columns[index].nullMeaning,
                         status);
  fits_set_hdustruc(file_, status);
  const auto rows = static_cast<LONGLONG>(labels_.size());
  std::vector<LONGLONG> values(labels_.size());
  for (std::size_t index = 0; index < columns.size(); ++index) {
    std::transform(labels_.begin(), labels_.end(), values.begin(), columns[index].value);
    fits_write_col(file_, TLONGLONG, static_cast<int>(index + 1), 1, 1, rows, values.data(), status);
  }
}

bool TFitsCubeWriter::Close(const TRunTotals& totals)
{
  if (!file_) return error_.empty();
  errno = 0;
  int status = 0;
  if (labels_.empty()) {
    fits_delete_file(file_, &status);
    file_ = nullptr;
    return (status == 0 || FailFits(status)) && error_.empty();
  }
  if (error_.empty()) {
    WriteTotals(totals, &status);
    WriteFrameTable(&status);
    if (status != 0) FailFits(status);
  }
  status = 0;
  fits_close_file(file_, &status);
  file_ = nullptr;
  if (status != 0) FailFits(status);
  if (!error_.empty()) CutToWholeImages(totals);
  return error_.empty();
}

void TFitsCubeWriter::CutToWholeImages(const TRunTotals& totals)
{
  fits_clear_errmsg();
  TOutputFile repair;
  if (!repair.OpenExisting(path_)) return;
  const auto imageBytes = static_cast<long long>(shape_.Bytes());
  const auto length = static_cast<long long>(repair.Length());
  const auto paddedEnd = [&](long long images) {
    return dataStart_ + (images * imageBytes + kFitsBlock - 1) / kFitsBlock * kFitsBlock;
  };
  while (!labels_.empty() && paddedEnd(ImagesWritten()) > length) labels_.pop_back();
  if (labels_.empty()) {
    repair.Discard();
    return;
  }
  const long long dataEnd = dataStart_ + ImagesWritten() * imageBytes;
  const long long fileEnd = paddedEnd(ImagesWritten());
  const std::vector<std::byte> padding(static_cast<std::size_t>(fileEnd - dataEnd));
  if (!repair.WriteAt(static_cast<std::uint64_t>(dataEnd), padding) ||
      !repair.Truncate(static_cast<std::uint64_t>(fileEnd)) ||
      !PatchImageCount(repair, dataStart_, ImagesWritten()) || !repair.Close()) {
    error_ += "; the file could not be repaired";
    return;
  }
  fitsfile* file = nullptr;
  int status = 0;
  fits_open_diskfile(&file, path_.c_str(), READWRITE, &status);
  if (status != 0) return;
  std::swap(file, file_);
  WriteTotals(totals, &status);
  std::swap(file, file_);
  status = 0;
  fits_close_file(file, &status);
}

} // namespace vxtool
