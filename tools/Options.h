// SPDX-License-Identifier: MIT
// What a command line of the tool asks for.
#pragma once

#include "tools/CameraFeature.h"
#include "tools/ImageData.h"
#include "tools/TNumberRanges.h"
#include "tools/TraceOptions.h"

#include <optional>
#include <string>
#include <vector>

namespace vxtool {

enum class Command
{
  List,
  Info,
  Get,
  Set,
  Acquire,
  Convert,
  WarmUp,
  Live,
  Doctor,
  Check,
  Trace,
};

enum class RunMode : int // the library's acquisition modes
{
  Single = 1,
  Accumulate = 2,
  Series = 3,
  Continuous = 5,
};

enum class ReadMode : int // the library's read modes
{
  Tracks = 2,
  Image = 4,
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
  BigTiff,
  Fits,
  Raw,
  OmeZarr,
  Hdf5,
  Png,
};

enum class Fan : int // the library's fan modes
{
  Full = 0,
  Low = 1,
  Off = 2,
};

/// What part of the sensor the images show; what is not given reaches to the edge of the sensor.
struct TImageAreaOptions
{
  std::optional<int> left;
  std::optional<int> top;
  std::optional<int> width;
  std::optional<int> height;
  int horizontalBinning = 1;
  int verticalBinning = 1;
  std::vector<TTrack> tracks;
};

/// Indices of the library, as info lists them.
struct TReadoutOptions
{
  std::optional<int> channel;
  std::optional<int> amplifier;
  std::optional<int> speed;
  std::optional<int> gain;
  std::optional<bool> isBaselineClamped;
};

struct TCoolingOptions
{
  std::optional<int> targetCelsius; ///< switches the cooler on
  std::optional<Fan> fan;
  bool isWaiting = false;
  double waitSeconds = 0.0;            ///< at most; 0: without limit
  std::optional<double> rampPerMinute; ///< degrees; without it the target is set at once
  bool isWarmedUp = false;             ///< after the run
};

struct TWarmUpOptions
{
  double degreesPerMinute = 5.0;
  std::optional<int> toCelsius; ///< without it 20, or what of the camera's targets comes nearest
};

enum class SpoolMethod : int // the library's spool methods
{
  Single = 1,
  Multi = 3,
};

/// Where the library itself writes frames to disk during the run.
struct TSpoolOptions
{
  std::string directory; ///< "": it does not
  SpoolMethod method = SpoolMethod::Multi;
  std::optional<int> threads;
};

enum class Codec
{
  Zstd,
  Lz4,
  Gzip,
  BloscZstd,
  None,
};

/// How chunks of images are compressed.
struct TCompression
{
  Codec codec = Codec::Zstd;
  int level = 1; ///< 1 to 9; higher ones take several times as long for next to nothing
};

/// How an array in chunks is made; a command line may say some of it for other formats, too.
struct TZarrOptions
{
  TCompression compression;
  std::optional<int> chunkImages; ///< images in a chunk; without it as many as have 8 MiB
  int pyramidLevels = 0;          ///< further arrays, each with half the columns and rows of the one before
  bool hasFiveAxes = false;       ///< time, channel, z, rows and columns, in place of time, rows and columns
  int threads = 2;                ///< that compress a chunk
};

/// The files to make of the images.
struct TOutputOptions
{
  std::string file; ///< of the images; "": none
  std::optional<FileFormat> format;
  std::string preview; ///< picture of the last image; "": none
  bool overwrite = false;
  bool isFileForEach = false;              ///< one file for each image, in place of one for all
  std::string imageType;                   ///< light, dark, bias or flat; "": not known
  std::optional<TCompression> compression; ///< of chunks
  std::optional<int> chunkImages;          ///< what follows: as in TZarrOptions
  std::optional<int> pyramidLevels;
  std::optional<bool> hasFiveAxes;
  std::optional<int> threads;

  bool IsEmpty() const { return file.empty() && preview.empty(); }
};

/// A camera, as the command line names it.
struct TCameraChoice
{
  int number = 0;     ///< in the list; with a serial number not yet known
  std::string serial; ///< in place of the number; "": the number is given

  /// What takes the place of {camera} in names of files.
  std::string Name() const { return serial.empty() ? std::to_string(number) : serial; }
  /// For messages.
  std::string Text() const { return "camera " + Name(); }
};

struct TAcquireOptions
{
  std::optional<double> exposureSeconds;
  std::optional<double> cycleSeconds;
  std::optional<double> accumulationCycleSeconds; ///< between the exposures of a sum
  std::optional<double> intervalSeconds;          ///< of a time-lapse: single images, start to start
  std::optional<long> frames;
  std::optional<RunMode> mode; ///< single without frames, series with frames
  int accumulations = 1;
  Trigger trigger = Trigger::Internal;
  std::optional<bool> isOverlapped;
  PixelDepth depth = PixelDepth::Bits16;
  TImageAreaOptions area;
  TReadoutOptions readout;
  TCoolingOptions cooling;
  std::string encoding;                  ///< the camera's word for it; "": as it is
  std::vector<TFeatureSetting> features; ///< set after everything else
  double noImageSeconds = 0.0;
  TSpoolOptions spool;
  TOutputOptions output;
  bool isQuiet = false;
  std::string settingsFile;     ///< that settings were read from; "": none
  std::string settingsModel;    ///< of the camera that they are from; "": not known
  std::string saveSettingsFile; ///< for the settings in force; "": none
};

/// What to make of the directory of a recorded run.
struct TConvertOptions
{
  std::string directory;
  TNumberRanges images;            ///< empty: all
  std::optional<PixelDepth> depth; ///< without it the smallest that every pixel of the run fits into
  bool isVerify = false;           ///< every image is compared with its checksum; no output is needed
  bool isSalvage = false;
  bool keepsDamaged = false;
  bool isFollowed = false;       ///< the run is still being recorded
  double patienceSeconds = 60.0; ///< for which nothing may be added to it
  TOutputOptions output;
  bool isQuiet = false;
};

/// A file of reports to send to somebody.
struct TBundleOptions
{
  std::string file;        ///< "": none
  bool keepsNames = false; ///< of users and machine, serial numbers, paths
};

struct TDoctorOptions
{
  std::vector<std::string> areas;  ///< empty: all, disk only with a directory
  std::optional<std::string> disk; ///< directory to write in
  bool showsAll = false;           ///< also what is right
  TBundleOptions bundle;
  std::string trace; ///< for the bundle; "": the newest one of the working directory
};

struct TCheckOptions
{
  std::vector<std::string> groups; ///< empty: all
  std::vector<std::string> names;  ///< empty: all of the groups
  int repeat = 1;
  bool isListing = false; ///< in place of running them
  bool isTap = false;     ///< what goes to standard output is in the Test Anything Protocol
  bool isHarsh = false;
  TBundleOptions bundle;
};

struct TOptions
{
  Command command = Command::List;
  TCameraChoice camera;
  std::string directory;                        ///< of info: a recorded run in place of a camera
  bool showsFeatures = false;                   ///< of info: features and where they come from
  bool isJson = false;                          ///< what goes to standard output is one line of JSON
  std::vector<std::string> featureNames;        ///< of get; empty: all
  std::vector<TFeatureSetting> featureSettings; ///< of set
  TAcquireOptions acquire;
  TConvertOptions convert;
  TWarmUpOptions warmUp;
  std::vector<std::string> liveArguments; ///< of live, but for the camera
  TDoctorOptions doctor;
  TCheckOptions check;
  TTraceOptions trace;
  bool isQuiet = false;         ///< of warm-up
  std::vector<TOptions> others; ///< of acquire: for cameras that take images at the same time
};

/// The word for a trigger mode on the command line.
const char* TriggerName(Trigger trigger);
/// The words for the other two.
const char* ModeName(RunMode mode);
const char* FanName(Fan fan);
/// The trigger mode with this word; nothing for any other text.
std::optional<Trigger> TriggerOf(const std::string& name);

/// Bits of a pixel when none are asked for: sums may exceed 65535.
constexpr PixelDepth DefaultDepth(int accumulations)
{
  return accumulations > 1 ? PixelDepth::Bits32 : PixelDepth::Bits16;
}

/// Whether the camera then makes frames at a constant rate.
constexpr bool HasSteadyRate(Trigger trigger)
{
  return trigger == Trigger::Internal || trigger == Trigger::ExternalStart;
}

/// Whether each image waits for a pulse, so that no time between images can be set.
constexpr bool IsPulseForEach(Trigger trigger)
{
  return trigger == Trigger::External || trigger == Trigger::ExternalExposure;
}

/// Whether a pulse from outside decides when an exposure starts, or the first of a run.
constexpr bool IsStartedByPulse(Trigger trigger)
{
  return trigger != Trigger::Internal && trigger != Trigger::Software;
}

} // namespace vxtool
