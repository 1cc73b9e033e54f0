// SPDX-License-Identifier: MIT
// Reads the tool's output files with libraries that did not write their structure, for the tests.
#pragma once

#include "tools/ImageData.h"

#include <cstddef>
#include <string>
#include <vector>

namespace vxtool {

struct TTiffPages
{
  bool isBigTiff = false;
  int bits = 0;
  int sampleFormat = 0;
  std::string firstDescription;
  std::vector<std::vector<std::byte>> pages;
  std::vector<std::uint64_t> offsets; // of the pixel data of each page
  std::string problem;                // what the library complained about, "" for nothing
};

/// Every page of a TIFF file, by libtiff.
TTiffPages ReadTiff(const std::string& path);

/// What a program that users have makes of a file of 16 bits a pixel.
struct TReadImages
{
  long images = -1; // that it finds in the file
  std::vector<std::byte> pixels;
};

/// The programs that the layout of TIFF stacks is for.
inline constexpr const char* kImageJ = VXTOOL_READ_WITH_IMAGEJ;
inline constexpr const char* kTifffile = VXTOOL_READ_WITH_TIFFFILE;

/// The pixels of the images with these numbers, from 1; without any number of all images.
TReadImages ReadWith(const char* program, const std::string& path, const std::vector<long>& numbers = {});

struct TFitsCube
{
  int axes = 0;
  long images = 0;
  int bitpix = 0; // as the pixels are meant: 8, 16 unsigned is 20, 32
  std::vector<std::byte> pixels;
  std::vector<long long> numbers;
  std::vector<long long> ticks;
  std::vector<long long> hostTimes; // these two are empty when the table does not have them
  std::vector<long long> checks;
  std::vector<double> seconds; // the column TIME
  std::string dateObs;
  std::string dateEnd;
  std::string imageType; // "" when it is not there
  double exposure = 0.0;
  long overwritten = -2;
  std::string camera;
  std::string tracks;           // "" when there are none
  double sensorCelsius = 999.0; // 999 when it is not there
  int status = 0;               // of CFITSIO
};

TFitsCube ReadFits(const std::string& path, PixelDepth depth);
/// What fitsverify finds wrong, "" for nothing.
std::string FitsVerify(const std::string& path);

struct TPngPicture
{
  unsigned int width = 0;
  unsigned int height = 0;
  std::vector<unsigned char> grey;
};

TPngPicture ReadPng(const std::string& path);

} // namespace vxtool
