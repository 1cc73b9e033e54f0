// SPDX-License-Identifier: MIT
// What the parts of the tool pass to each other about images: their shape, the run they belong to, their numbers.
#pragma once

#include "runs/frame_decoding.h"
#include "tools/TNumberRanges.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

class TRunDescription;

namespace vxtool {

/// The shape of every image of a run.
struct TImageShape
{
  int width = 0;
  int height = 0;
  PixelDepth depth = PixelDepth::Bits16;

  std::size_t Pixels() const { return static_cast<std::size_t>(width) * static_cast<std::size_t>(height); }
  std::size_t BytesPerPixel() const { return static_cast<std::size_t>(depth) / 8; }
  std::size_t Bytes() const { return Pixels() * BytesPerPixel(); }
};

/// Rows of the sensor that become one row of the image, both included; row 1 is the last row of a picture.
struct TTrack
{
  int first = 1;
  int last = 1;
};

/// The part of the sensor that an image shows, in sensor pixels; the first column and the first row have number 1.
struct TSensorArea
{
  int left = 1;
  int top = 1;
  int width = 0;
  int height = 0;
  int horizontalBinning = 1;
  int verticalBinning = 1;
  std::vector<TTrack> tracks; ///< in place of rows and binning; the first row of the image is the last track
};

/// How the sensor is read out, as far as the command line has said it.
struct TReadout
{
  std::string gain; ///< name of the pre-amplifier gain
  std::optional<double> gainFactor;
  std::string amplifier; ///< description of the amplifier
  std::optional<double> megahertz;
};

/// What images can be said to show: the word of the command line, and the name that programs for astronomy know.
struct TImageType
{
  const char* word;
  const char* name;
};
inline constexpr TImageType kImageTypes[] = {
    {"light", "Light Frame"}, {"dark", "Dark Frame"}, {"bias", "Bias Frame"}, {"flat", "Flat Field"}};

/// When an image had come from the camera.
struct TArrival
{
  std::int64_t hostNanoseconds = 0; ///< host's clock, since 1970-01-01 UTC
  std::optional<long long> ticks;   ///< the camera's clock at the image's first exposure
};

/// What is known of a run when its file is opened.
struct TRunFacts
{
  std::string software;         ///< name and version of the tool
  std::string camera;           ///< the camera's model, printable ASCII
  std::optional<int> serial;    ///< the number in the camera's serial number
  std::string startUtc;         ///< time of day of the start, "2026-01-31T12:00:00.000", UTC; "": not known
  std::string trigger;          ///< trigger mode, as on the command line; "": not known
  std::string imageType;        ///< a word of kImageTypes; "": not known
  double exposureSeconds = 0.0; ///< exposure time in force; 0: not known
  double cycleSeconds = 0.0;    ///< time from one image to the next, 0 when the trigger decides it
  int accumulations = 1;        ///< exposures added up to one image
  /// From one of these exposures to the next; 0: not known. Nothing: the cycle divided by their number.
  std::optional<double> exposureCycleSeconds;
  long plannedImages = 0;     ///< images asked for, 0 for no limit
  TNumberRanges imageNumbers; ///< that the images may have; empty: any
  TSensorArea area;           ///< of width 0: not known
  TReadout readout;
  std::optional<double> pixelWidthMicrometres; ///< of a pixel of the sensor
  std::optional<double> pixelHeightMicrometres;
  std::optional<double> readoutSeconds; ///< from the end of an exposure to the image's arrival
  std::optional<double> ticksPerSecond; ///< of the camera's clock
  std::optional<TArrival> firstArrival; ///< of the run's first image; without it, labels say when images arrived
  std::optional<double> sensorCelsius;  ///< the sensor's temperature at the start
  std::optional<double> targetCelsius;  ///< of the cooler, when the command line has switched it on

  /// Sizes of a pixel of the image, binning included, in micrometres; nothing when they are not known. A row that shows a
  /// track has no height of its own.
  std::optional<double> ImagePixelWidth() const;
  std::optional<double> ImagePixelHeight() const;
};

/// What the checksum that was stored with an image says of it.
enum class ImageCheck
{
  Unchecked, ///< there is none
  Right,
  Wrong,
};

/// The word that files have for the outcome of a check: "right", "wrong", "unchecked".
const char* ImageCheckText(ImageCheck check);

/// "1-10,21-30" for tracks, the form that the command line takes.
std::string TracksText(const std::vector<TTrack>& tracks);

/// What is known of one image.
struct TImageLabel
{
  long number = 0;                ///< image number in the run, from 1
  std::optional<long long> ticks; ///< the camera's clock, when it is known for this image
  /// The host's clock when the image had arrived, or when the library accepted it for writing.
  std::optional<long long> hostNanoseconds;
  std::optional<ImageCheck> check; ///< of images that come from disk
};

/// Where the frames of a run have gone.
struct TFrameCounts
{
  /// Frames that the camera produced and never delivered; nothing when it is not known.
  std::optional<long> lostInCamera;
  long delivered = 0;        ///< images that the library received from the camera
  long overwritten = 0;      ///< of these: gone, or possibly torn, before they were copied out of the ring
  long notFetched = 0;       ///< of these: not asked for any more when the run ended
  long fetched = 0;          ///< of these: copied out of the ring intact
  long written = 0;          ///< of the fetched: in the output file
  long notWritten = 0;       ///< of the fetched: not in the output file: an output error, or no file was asked for
  long withoutTimestamp = 0; ///< of the delivered: without a timestamp
  long clippedImages = 0;    ///< of the fetched: with pixels that did not fit into the output's bits
  long clippedPixels = 0;    ///< these pixels
  long missed = 0;           ///< images of a schedule that could not start before the time of the next one
  long late = 0;             ///< images of a schedule that started later than they should

  /// Frames produced by the camera, as far as it is known.
  long Produced() const { return delivered + lostInCamera.value_or(0); }
  /// Frames that are missing between the first and the last one written.
  long Lost() const { return lostInCamera.value_or(0) + overwritten + missed; }
};

/// What the description of a recorded run says, except for the number of images that a file may get.
TRunFacts FactsOf(const TRunDescription& run);
/// "TRELLIS CMOS 101"; "" when it is not known.
std::string CameraText(const TRunFacts& facts);
/// "11,21,320x240, binning 2x2".
std::string AreaText(const TSensorArea& area);
/// The text with a question mark in place of each other character.
std::string PrintableAscii(std::string text);

} // namespace vxtool
