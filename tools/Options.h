// SPDX-License-Identifier: MIT
// What a command line of the tool asks for.
#pragma once

#include "tools/ImageData.h"

#include <optional>
#include <string>

namespace vxtool {

enum class Command
{
  List,
  Describe,
  Acquire,
};

enum class RunMode : int // the library's acquisition modes
{
  Single = 1,
  Accumulate = 2,
  Series = 3,
  Continuous = 5,
};

enum class Trigger : int // the library's trigger modes
{
  Internal = 0,
  External = 1,
  ExternalStart = 6,
  ExternalExposure = 7,
  Software = 10,
};

enum class FileFormat
{
  Tiff,
  Fits,
};

/// What part of the sensor the images show. The size overrides what the camera says.
struct TImageAreaOptions
{
  int width = 0; // 0: as the camera says
  int height = 0;
};

struct TAcquireOptions
{
  std::optional<double> exposureSeconds;
  std::optional<double> cycleSeconds;
  std::optional<long> frames;
  std::optional<RunMode> mode; ///< single without frames, series with frames
  int accumulations = 1;
  Trigger trigger = Trigger::Internal;
  bool isOverlapped = false;
  PixelDepth depth = PixelDepth::Bits16;
  TImageAreaOptions area;
  double noImageSeconds = 0.0;
  std::string output;
  std::optional<FileFormat> format;
  std::string preview;
  bool overwrite = false;
  bool isQuiet = false;
  bool isJson = false;
};

struct TOptions
{
  Command command = Command::List;
  int camera = 0;
  TAcquireOptions acquire;
};

/// The word for a trigger mode on the command line.
const char* TriggerName(Trigger trigger);

} // namespace vxtool
