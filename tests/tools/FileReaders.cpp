// SPDX-License-Identifier: MIT
// Reading back with libtiff, CFITSIO and libpng.
#include "tests/tools/FileReaders.h"

#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <fitsio.h>
#include <fstream>
#include <iterator>
#include <png.h>
#include <tiffio.h>

namespace vxtool {

namespace {

std::string tiffProblem;

__attribute__((format(printf, 2, 0))) void KeepProblem(const char*, const char* format, va_list arguments)
{
  char text[200];
  std::vsnprintf(text, sizeof text, format, arguments);
  tiffProblem += text;
}

// The numbers of a column that need not be there.
std::vector<long long> OptionalColumn(fitsfile* file, const char* name, long rows, int* status)
{
  std::string pattern = name;
  int column = 0;
  int missing = 0;
  if (*status != 0 || fits_get_colnum(file, CASEINSEN, pattern.data(), &column, &missing) != 0) return {};
  std::vector<long long> numbers(static_cast<std::size_t>(rows));
  fits_read_col(file, TLONGLONG, column, 1, 1, rows, nullptr, numbers.data(), nullptr, status);
  return numbers;
}

} // namespace

TTiffPages ReadTiff(const std::string& path)
{
  tiffProblem.clear();
  TIFFSetErrorHandler(KeepProblem);
  TIFFSetWarningHandler(KeepProblem);
  TTiffPages result;
  TIFF* file = TIFFOpen(path.c_str(), "rc"); // c: strips as they are in the file
  if (!file) {
    result.problem = "cannot be opened: " + tiffProblem;
    return result;
  }
  result.isBigTiff = TIFFIsBigTIFF(file) != 0;
  do {
    std::uint16_t bits = 0;
    std::uint16_t format = 0;
    TIFFGetField(file, TIFFTAG_BITSPERSAMPLE, &bits);
    TIFFGetField(file, TIFFTAG_SAMPLEFORMAT, &format);
    result.bits = bits;
    result.sampleFormat = format;
    char* text = nullptr;
    if (result.pages.empty() && TIFFGetField(file, TIFFTAG_IMAGEDESCRIPTION, &text) == 1)
      result.firstDescription = text;
    std::vector<std::byte> page(static_cast<std::size_t>(TIFFStripSize(file)));
    const auto size = static_cast<tmsize_t>(page.size());
    if (TIFFNumberOfStrips(file) != 1 || TIFFReadEncodedStrip(file, 0, page.data(), size) != size)
      tiffProblem += "a page cannot be read";
    result.pages.push_back(std::move(page));
    result.offsets.push_back(TIFFGetStrileOffset(file, 0));
  } while (TIFFReadDirectory(file) == 1);
  TIFFClose(file);
  result.problem = tiffProblem;
  return result;
}

TReadImages ReadWith(const char* program, const std::string& path, const std::vector<long>& numbers)
{
  const std::string pixels = path + ".pixels";
  std::string command = std::string(program) + " '" + path + "' '" + pixels + "'";
  for (const long number : numbers) command += " " + std::to_string(number);
  TReadImages read;
  FILE* const output = popen(command.c_str(), "r");
  if (output == nullptr) return read;
  if (std::fscanf(output, "%ld", &read.images) != 1) read.images = -1;
  if (pclose(output) != 0) read.images = -1;
  std::ifstream stream(pixels, std::ios::binary);
  const std::string bytes((std::istreambuf_iterator<char>(stream)), std::istreambuf_iterator<char>());
  const auto* const start = reinterpret_cast<const std::byte*>(bytes.data());
  read.pixels.assign(start, start + bytes.size());
  return read;
}

TFitsCube ReadFits(const std::string& path, PixelDepth depth)
{
  TFitsCube cube;
  int* status = &cube.status;
  fitsfile* file = nullptr;
  fits_open_diskfile(&file, path.c_str(), READONLY, status);
  if (*status != 0) return cube;
  int axes = 0;
  long sides[3] = {};
  fits_get_img_param(file, 3, nullptr, &axes, sides, status);
  fits_get_img_equivtype(file, &cube.bitpix, status);
  cube.axes = axes;
  cube.images = axes == 2 ? 1 : sides[2];
  TImageShape shape;
  shape.width = static_cast<int>(sides[0]);
  shape.height = static_cast<int>(sides[1]);
  shape.depth = depth;
  cube.pixels.resize(shape.Bytes() * static_cast<std::size_t>(cube.images));
  const int type = depth == PixelDepth::Bits8 ? TBYTE : depth == PixelDepth::Bits16 ? TUSHORT : TINT;
  const auto pixels = static_cast<LONGLONG>(shape.Pixels()) * cube.images;
  fits_read_img(file, type, 1, pixels, nullptr, cube.pixels.data(), nullptr, status);
  char text[FLEN_VALUE] = "";
  fits_read_key_dbl(file, "EXPTIME", &cube.exposure, nullptr, status);
  fits_read_key_str(file, "INSTRUME", text, nullptr, status);
  cube.camera = text;
  int missing = *status;
  fits_read_key_dbl(file, "CCD-TEMP", &cube.sensorCelsius, nullptr, &missing);
  missing = *status;
  char* tracks = nullptr;
  if (fits_read_key_longstr(file, "TRACKS", &tracks, nullptr, &missing) == 0) cube.tracks = tracks;
  fits_free_memory(tracks, &missing);
  missing = *status;
  fits_read_key_lng(file, "NOVERWR", &cube.overwritten, nullptr, &missing);
  for (const auto& [key, value] :
       {std::pair("DATE-OBS", &cube.dateObs), {"DATE-END", &cube.dateEnd}, {"IMAGETYP", &cube.imageType}}) {
    missing = *status;
    if (fits_read_key_str(file, key, text, nullptr, &missing) == 0) *value = text;
  }
  LONGLONG number = 0;
  missing = *status;
  if (fits_read_key_lnglng(file, "FRAMEID", &number, nullptr, &missing) == 0) cube.numbers = {number};
  if (fits_read_key_lnglng(file, "TICKS", &number, nullptr, &missing) == 0) cube.ticks = {number};
  char frames[] = "FRAMES";
  int noTable = *status;
  fits_movnam_hdu(file, BINARY_TBL, frames, 0, &noTable);
  if (noTable == 0) {
    cube.numbers.resize(static_cast<std::size_t>(cube.images));
    cube.ticks.resize(static_cast<std::size_t>(cube.images));
    static_assert(sizeof(LONGLONG) == sizeof(long long));
    fits_read_col(file, TLONGLONG, 1, 1, 1, cube.images, nullptr, cube.numbers.data(), nullptr, status);
    fits_read_col(file, TLONGLONG, 2, 1, 1, cube.images, nullptr, cube.ticks.data(), nullptr, status);
    cube.hostTimes = OptionalColumn(file, "HOSTTIME", cube.images, status);
    cube.checks = OptionalColumn(file, "CHECK", cube.images, status);
    cube.seconds.resize(cube.numbers.size());
    char time[] = "TIME";
    int column = 0;
    missing = *status;
    fits_get_colnum(file, CASEINSEN, time, &column, &missing);
    fits_read_col(file, TDOUBLE, column, 1, 1, cube.images, nullptr, cube.seconds.data(), nullptr, &missing);
  }
  fits_clear_errmsg();
  int closing = 0;
  fits_close_file(file, &closing);
  return cube;
}

std::string FitsVerify(const std::string& path)
{
  const std::string report = path + ".verify";
  const int result = std::system(("fitsverify -e -q '" + path + "' > '" + report + "' 2>&1").c_str());
  std::ifstream stream(report);
  std::string text((std::istreambuf_iterator<char>(stream)), std::istreambuf_iterator<char>());
  return result == 0 ? "" : "fitsverify: " + std::to_string(result) + " " + text;
}

TPngPicture ReadPng(const std::string& path)
{
  TPngPicture picture;
  png_image image = {};
  image.version = PNG_IMAGE_VERSION;
  if (!png_image_begin_read_from_file(&image, path.c_str())) return picture;
  image.format = PNG_FORMAT_GRAY;
  picture.grey.resize(PNG_IMAGE_SIZE(image));
  if (!png_image_finish_read(&image, nullptr, picture.grey.data(), 0, nullptr)) return TPngPicture{};
  picture.width = image.width;
  picture.height = image.height;
  return picture;
}

} // namespace vxtool
