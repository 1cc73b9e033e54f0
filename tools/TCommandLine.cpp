// SPDX-License-Identifier: MIT
// The tool's options, their checks, and the help text.
#include "tools/TCommandLine.h"

#include "tools/ArgumentForms.h"
#include "tools/check/CheckGroups.h"
#include "tools/doctor/DoctorAreas.h"
#include "tools/Messages.h"
#include "tools/NearestWord.h"
#include "tools/OptionTable.h"
#include "tools/RunSettings.h"
#include "tools/TSettingsFile.h"
#include "tools/Versions.h"

#include <algorithm>
#include <cctype>
#include <CLI/CLI.hpp>
#include <filesystem>
#include <functional>
#include <map>
#include <set>

namespace vxtool {

namespace {

constexpr int kMaxIndex = 1000;
constexpr int kMaxSpoolThreads = 64;
constexpr double kMaxRamp = 1000.0; // degrees a minute

/// The words of an option, in the order in which the help has them.
template <typename Value>
using TWords = std::vector<std::pair<std::string, Value>>;

const TWords<RunMode> kModes = {{"single", RunMode::Single},
                                {"accumulate", RunMode::Accumulate},
                                {"series", RunMode::Series},
                                {"continuous", RunMode::Continuous}};
const TWords<Trigger> kTriggers = {{"internal", Trigger::Internal},
                                   {"external", Trigger::External},
                                   {"external-start", Trigger::ExternalStart},
                                   {"external-exposure", Trigger::ExternalExposure},
                                   {"software", Trigger::Software}};
const TWords<Fan> kFans = {{"full", Fan::Full}, {"low", Fan::Low}, {"off", Fan::Off}};
const TWords<bool> kSwitches = {{"on", true}, {"off", false}};
const TWords<FileFormat> kStackFormats = {
    {"tiff", FileFormat::Tiff}, {"bigtiff", FileFormat::BigTiff}, {"fits", FileFormat::Fits}};
const TWords<FileFormat> kFormats = {{"tiff", FileFormat::Tiff},       {"bigtiff", FileFormat::BigTiff},
                                     {"fits", FileFormat::Fits},       {"raw", FileFormat::Raw},
                                     {"omezarr", FileFormat::OmeZarr}, {"png", FileFormat::Png}};
const std::map<std::string, FileFormat> kStackSuffixes = {{".tif", FileFormat::Tiff},
                                                          {".tiff", FileFormat::Tiff},
                                                          {".fits", FileFormat::Fits},
                                                          {".fit", FileFormat::Fits},
                                                          {".fts", FileFormat::Fits}};
const std::map<std::string, FileFormat> kSuffixes = {{".tif", FileFormat::Tiff},     {".tiff", FileFormat::Tiff},
                                                     {".fits", FileFormat::Fits},    {".fit", FileFormat::Fits},
                                                     {".fts", FileFormat::Fits},     {".raw", FileFormat::Raw},
                                                     {".zarr", FileFormat::OmeZarr}, {".png", FileFormat::Png}};
const TWords<SpoolMethod> kSpoolMethods = {{"single", SpoolMethod::Single}, {"multi", SpoolMethod::Multi}};

constexpr int kMaxCamera = 10'000;
constexpr int kMaxChunkImages = 1'000'000;
constexpr std::string_view kSerialPrefix = "serial:";
constexpr std::string_view kCameraPlace = "{camera}"; // in names of files

constexpr const char* kFooter = R"(Exit codes:
  0    done
  1    the command line is wrong
  2    there is no such camera, or it cannot be opened
  3    the camera refused a setting, or the run failed; doctor found problems,
       or a check did not pass
  4    an output file could not be written; of live: the port or the directory cannot be used
  5    done, but frames are missing or pixels were clipped: see the counts printed at the end
  6    the directory of a recorded run cannot be read
  130  interrupted (Ctrl-C); the output file is complete up to there
When several apply, 4 comes before 3, 3 before 130, 130 before 5.)";

constexpr const char* kFileNameForm = "the name of a file is";
constexpr const char* kSecondsForm = "a time in s above 0 and at most 1e6 is";

CLI::Validator OneOf(const std::vector<std::string>& words)
{
  const auto check = [words](const std::string& text) -> std::string {
    const bool isOne = std::find(words.begin(), words.end(), text) != words.end();
    return isOne ? "" : RefusedText(text, ChoiceText(words) + " is");
  };
  return {check, "{" + CLI::detail::join(words, ",") + "}"};
}

// For transform(): the parser takes a number that begins with 0 for octal, so it gets one that does not.
CLI::Validator WholeNumber(long lowest, long highest)
{
  const auto rewrite = [lowest, highest](std::string& text) -> std::string {
    long value = 0;
    if (!ParseWholeNumber(text, value) || value < lowest || value > highest)
      return RefusedText(text, "a whole number from " + std::to_string(lowest) + " to " + std::to_string(highest) +
                                   " is");
    text = std::to_string(value);
    return "";
  };
  return {rewrite, ""};
}

// The name of a file or another text: a shell's variable that is not set must not switch the option off.
CLI::Option* AddText(CLI::App& app, const std::string& name, std::string& target, const std::string& help,
                     const char* accepted)
{
  const auto check = [accepted](const std::string& text) {
    return text.empty() ? RefusedText(text, accepted) : "";
  };
  return app.add_option(name, target, help)->check(CLI::Validator(check, ""));
}

template <typename Value>
std::optional<Value> ValueOf(const TWords<Value>& words, const std::string& word)
{
  for (const auto& [name, value] : words)
    if (name == word) return value;
  return std::nullopt;
}

template <typename Value>
const char* WordFor(const TWords<Value>& words, Value wanted)
{
  for (const auto& [name, value] : words)
    if (value == wanted) return name.c_str();
  return "unknown";
}

template <typename Value>
CLI::Option* AddWord(CLI::App& app, const std::string& name, std::optional<Value>& target,
                     const TWords<Value>& words, const std::string& help)
{
  std::vector<std::string> allowed;
  allowed.reserve(words.size());
  for (const auto& word : words) allowed.push_back(word.first);
  return app
      .add_option_function<std::string>(
          name, [&target, &words](const std::string& word) { target = ValueOf(words, word); }, help)
      ->check(OneOf(allowed));
}

CLI::Option* AddSeconds(CLI::App& app, const std::string& name, std::optional<double>& target,
                        const std::string& help)
{
  const auto isTime = [](const std::string& text) -> std::string {
    double value = 0.0;
    return ParseSeconds(text, value) ? "" : RefusedText(text, kSecondsForm);
  };
  return app.add_option(name, target, help)->check(CLI::Validator(isTime, ""))->type_name("SECONDS");
}

// An option with several numbers in one text. @p parse answers false when they are wrong.
CLI::Option* AddForm(CLI::App& app, const std::string& name, const std::function<bool(const std::string&)>& parse,
                     const std::string& form, const std::string& help)
{
  const auto take = [name, parse, form](const std::string& text) {
    if (!parse(text)) throw CLI::ValidationError(name, RefusedText(text, form + " is"));
  };
  return app.add_option_function<std::string>(name, take, help)->type_name("");
}

constexpr const char* kAreaGroup = "Image area, in sensor pixels; the first column and row are 1";

CLI::Option* AddAreaOption(CLI::App& app, TImageAreaOptions& area)
{
  return AddForm(
             app, "--area", [&area](const std::string& text) { return ParseArea(text, area); },
             "LEFT,TOP,WIDTHxHEIGHT with numbers from 1, for example 101,201,640x480,",
             "Part of the sensor; default: all of it")
      ->type_name("LEFT,TOP,WIDTHxHEIGHT")
      ->group(kAreaGroup);
}

CLI::Option* AddBinningOption(CLI::App& app, TImageAreaOptions& area)
{
  return AddForm(
             app, "--binning", [&area](const std::string& text) { return ParseBinning(text, area); },
             "HxV with numbers from 1, for example 2x2,",
             "H columns and V rows of the sensor are added up to one pixel")
      ->type_name("HxV")
      ->group(kAreaGroup);
}

void AddImageAreaOptions(CLI::App& app, TImageAreaOptions& area)
{
  const char* const group = kAreaGroup;
  CLI::Option* const whole = AddAreaOption(app, area);
  CLI::Option* tracks = AddForm(
      app, "--tracks", [&area](const std::string& text) { return ParseTracks(text, area.tracks); },
      "FIRST-LAST,... with rows from 1, for example 1-10,21-30,",
      "Rows that are read out as one row each; row 1 is the last row of a picture");
  tracks->type_name("FIRST-LAST,...")->group(group)->excludes(whole);
  const auto side = [&](const char* name, std::optional<int>& target, const char* help) {
    app.add_option(name, target, help)
        ->transform(WholeNumber(1, kMaxSide))
        ->type_name("N")
        ->group(group)
        ->excludes(whole)
        ->excludes(tracks);
  };
  side("--left", area.left, "First column; default: 1");
  side("--top", area.top, "First row; default: 1");
  side("--width", area.width, "Columns; default: to the edge of the sensor");
  side("--height", area.height, "Rows; default: to the edge of the sensor");
  AddBinningOption(app, area)->excludes(tracks);
}

void AddReadoutOptions(CLI::App& app, TReadoutOptions& readout)
{
  const char* const group = "Readout, by the numbers that info lists";
  const auto index = [&](const char* name, std::optional<int>& target, const char* help) {
    app.add_option(name, target, help)->transform(WholeNumber(0, kMaxIndex))->type_name("N")->group(group);
  };
  index("--channel", readout.channel, "AD channel");
  index("--amplifier", readout.amplifier, "Amplifier of channel 0");
  index("--speed", readout.speed, "Horizontal shift speed; without --amplifier or --gain that of amplifier 0");
  index("--gain", readout.gain, "Pre-amplifier gain; chooses channel and amplifier that go with it");
  AddWord(app, "--baseline-clamp", readout.isBaselineClamped, kSwitches, "Keep the level of dark pixels constant")
      ->group(group);
}

CLI::Option* AddRamp(CLI::App& app, std::optional<double>& target, const std::string& help)
{
  const auto isRate = [](const std::string& text) -> std::string {
    double value = 0.0;
    if (ParseSeconds(text, value) && value <= kMaxRamp) return ""; // the form of a time is that of any rate
    return RefusedText(text, "a rate in degrees a minute above 0 and at most 1000 is");
  };
  return app.add_option("--ramp", target, help)->check(CLI::Validator(isRate, ""))->type_name("C/MIN");
}

constexpr const char* kCoolingGroup = "Cooling";

void AddTargetOption(CLI::App& app, TCoolingOptions& cooling)
{
  app.add_option("--temperature", cooling.targetCelsius,
                 "Switch the cooler on, with a target of C degrees Celsius")
      ->transform(WholeNumber(-273, 100))
      ->type_name("C")
      ->group(kCoolingGroup);
}

void AddFanOption(CLI::App& app, TCoolingOptions& cooling)
{
  AddWord(app, "--fan", cooling.fan, kFans, "Speed of the fan")->group(kCoolingGroup);
}

void AddCoolingOptions(CLI::App& app, TCoolingOptions& cooling)
{
  const char* const group = kCoolingGroup;
  AddTargetOption(app, cooling);
  const auto take = [&cooling](const std::string& text) {
    cooling.isWaiting = true;
    if (!text.empty() && !ParseSeconds(text, cooling.waitSeconds))
      throw CLI::ValidationError("--wait-stable", RefusedText(text, kSecondsForm));
  };
  app.add_option_function<std::string>(
         "--wait-stable", take,
         "Wait until the temperature is stable, and fail when it is not within so many s; without SECONDS until "
         "Ctrl-C")
      ->expected(0, 1)
      ->type_name("[SECONDS]")
      ->group(group);
  AddRamp(app, cooling.rampPerMinute,
          "Move the target in whole degrees, from the sensor's temperature to --temperature, so many degrees a "
          "minute; "
          "the run starts when it is there. Also the rate of --warm-up")
      ->group(group);
  app.add_flag(
         "--warm-up", cooling.isWarmedUp,
         "After the run raise the target to 20 C, 5 degrees a minute without --ramp, and switch the cooler off; "
         "also when the run has failed or Ctrl-C has ended it")
      ->group(group);
  AddFanOption(app, cooling);
}

void AddWarmUpOptions(CLI::App& app, TOptions& options, std::optional<double>& ramp)
{
  AddRamp(app, ramp, "Raise the target in whole degrees, so many degrees a minute; default: 5");
  app.add_option(
         "--to", options.warmUp.toCelsius,
         "The last target, in C, at which the cooler is switched off; default: 20, or what of the camera's "
         "targets comes nearest")
      ->transform(WholeNumber(-273, 100))
      ->type_name("C");
  app.add_flag("-q,--quiet", options.isQuiet, "Print errors and warnings only");
}

// What all files of images have in common.
void AddImageFileOptions(CLI::App& app, TOutputOptions& output, const std::string& group)
{
  app.add_flag("--each", output.isFileForEach,
               "One file for each image: FILE.fits becomes FILE-0000001.fits for image 1")
      ->group(group);
  std::vector<std::string> types;
  for (const TImageType& type : kImageTypes) types.emplace_back(type.word);
  app.add_option("--image-type", output.imageType, "What the images show, for the file")
      ->check(OneOf(types))
      ->group(group);
}

void AddOutputOptions(CLI::App& app, TAcquireOptions& options)
{
  AddText(app, "-o,--output", options.output.file, "File for the images: .tif, .tiff (stack) or .fits (cube)",
          kFileNameForm)
      ->type_name("FILE")
      ->group("Output");
  AddWord(app, "--format", options.output.format, kStackFormats,
          "Format of the output file, if its name does not say it; bigtiff is for TIFF files above 4 GB that "
          "other programs than ImageJ and tifffile are to read")
      ->group("Output");
  AddText(app, "--preview", options.output.preview, "Picture of the last image", kFileNameForm)
      ->type_name("FILE.png")
      ->group("Output");
  AddImageFileOptions(app, options.output, "Output");
  app.add_flag("--overwrite", options.output.overwrite, "Replace files that exist")->group("Output");
  app.add_flag("-q,--quiet", options.isQuiet, "Print errors and warnings only")->group("Output");
}

void AddTimingOptions(CLI::App& app, TAcquireOptions& options, std::optional<Trigger>& trigger)
{
  AddSeconds(app, "-e,--exposure", options.exposureSeconds, "Exposure time in s");
  AddSeconds(app, "--cycle", options.cycleSeconds,
             "Time from one exposure to the next in s; of a series with --trigger software, between triggers");
  AddWord(app, "-t,--trigger", trigger, kTriggers, "What starts an exposure; default: internal");
  const auto overlap = [&options](const std::string& word) {
    options.isOverlapped = word.empty() ? true : ValueOf(kSwitches, word);
    if (!options.isOverlapped) throw CLI::ValidationError("--overlap", RefusedText(word, "on or off is"));
  };
  app.add_option_function<std::string>("--overlap", overlap,
                                       "Expose while the exposure before is read out; --overlap alone is on")
      ->expected(0, 1)
      ->type_name("[on|off]");
}

void AddRunOptions(CLI::App& app, TAcquireOptions& options, std::optional<Trigger>& trigger,
                   std::optional<int>& bits)
{
  AddTimingOptions(app, options, trigger);
  AddSeconds(app, "--accumulation-cycle", options.accumulationCycleSeconds,
             "Time from one exposure of a sum to the next in s; in mode accumulate the same as --cycle");
  AddSeconds(app, "--interval", options.intervalSeconds,
             "Time-lapse: single images, one each so many s from start to start; without --frames until Ctrl-C");
  app.add_option("-n,--frames", options.frames, "Number of images (series, continuous, --interval)")
      ->transform(WholeNumber(1, 1'000'000'000))
      ->type_name("N");
  AddWord(app, "-m,--mode", options.mode, kModes,
          "One image, one of several exposures, a series kept in memory, or any number by way "
          "of a ring; default: single, with --frames and without --interval series");
  app.add_option("-a,--accumulations", options.accumulations,
                 "Exposures added up to one image (accumulate, series)")
      ->transform(WholeNumber(1, 1'000'000))
      ->type_name("K");
  app.add_option(
         "-b,--bits", bits,
         "Bits of a pixel in the output: 8 (with --encoding Mono8, and sums), 16 or 32; default: 32 for sums "
         "of exposures, else 16")
      ->check(OneOf({"8", "16", "32"}));
}

// A whole number is the camera's number in the list, any other text its serial number.
TCameraChoice CameraOf(const std::string& text)
{
  const char* const accepted = "a number from 0 to 10000, as list prints it, or a serial number is (serial:N if "
                               "it is a whole number)";
  const bool isPrefixed = text.starts_with(kSerialPrefix);
  const bool isNumber = text.find_first_not_of("+-0123456789") == std::string::npos;
  TCameraChoice choice;
  if (isPrefixed || !isNumber) {
    choice.serial = text.substr(isPrefixed ? kSerialPrefix.size() : 0);
    if (choice.serial.empty()) throw CLI::ValidationError("--camera", RefusedText(text, accepted));
    return choice;
  }
  long number = 0;
  if (!ParseWholeNumber(text, number) || number < 0 || number > kMaxCamera)
    throw CLI::ValidationError("--camera", RefusedText(text, accepted));
  choice.number = static_cast<int>(number);
  return choice;
}

// @param cameras  not empty; one for each value of the option
void AddCameraOption(CLI::App& app, std::vector<TCameraChoice>& cameras, bool isRepeatable)
{
  const auto take = [&cameras](const std::vector<std::string>& texts) {
    cameras.clear();
    for (const std::string& text : texts) cameras.push_back(CameraOf(text));
  };
  const std::string help =
      "Number of the camera, as list prints it, or its serial number; serial:N for one that is a "
      "whole number; default: 0";
  const std::string several =
      ". May be repeated: the cameras then take images at the same time, each into its own "
      "files, whose names have {camera}";
  CLI::Option* const option =
      app.add_option_function<std::vector<std::string>>("-c,--camera", take, help + (isRepeatable ? several : ""))
          ->type_name("N|SERIAL")
          ->expected(1)
          ->allow_extra_args(false); // what stands behind the value is another argument
  if (isRepeatable) option->multi_option_policy(CLI::MultiOptionPolicy::TakeAll);
}

CLI::Option* AddFeatureSettings(CLI::App& app, const std::string& name, std::vector<TFeatureSetting>& settings,
                                const std::string& help)
{
  const auto take = [name, &settings](const std::vector<std::string>& texts) {
    settings.clear();
    for (const std::string& text : texts) {
      const std::size_t sign = text.find('=');
      if (sign == std::string::npos || sign == 0)
        throw CLI::ValidationError(name, RefusedText(text, "NAME=VALUE is, for example PixelEncoding=Mono12"));
      settings.push_back({text.substr(0, sign), text.substr(sign + 1)});
    }
  };
  return app.add_option_function<std::vector<std::string>>(name, take, help)->type_name("NAME=VALUE");
}

CLI::Option* AddEncodingOption(CLI::App& app, TAcquireOptions& options)
{
  return AddText(app, "--encoding", options.encoding, "How the camera encodes pixels: Mono8, Mono12, Mono16, ...",
                 "one of the words that vxmcd get PixelEncoding lists is")
      ->type_name("WORD");
}

void AddFeatureOptions(CLI::App& app, TAcquireOptions& options)
{
  const char* const group = "Features, by the names that get lists";
  AddEncodingOption(app, options)->group(group);
  AddFeatureSettings(app, "--set", options.features, "Set a feature, after all other options; may be repeated")
      ->expected(1)
      ->multi_option_policy(CLI::MultiOptionPolicy::TakeAll)
      ->group(group);
}

void AddConvertOptions(CLI::App& app, TConvertOptions& options, std::optional<int>& bits)
{
  app.add_option("directory", options.directory,
                 "Directory of a recorded run, or a .raw file with its .json beside it")
      ->required()
      ->type_name("DIRECTORY");
  AddText(app, "-o,--output", options.output.file,
          "File for the images: .tif, .tiff (stack), .fits (cube), .raw (pixels, with a .json beside them), "
          ".ome.zarr (a directory with an array) or .png (a picture of each)",
          kFileNameForm)
      ->type_name("FILE");
  AddWord(app, "--format", options.output.format, kFormats,
          "Format of the output file, if its name does not say it; bigtiff is for TIFF files above 4 GB that "
          "other programs than ImageJ and tifffile are to read");
  AddForm(
      app, "--compression",
      [&options](const std::string& text) { return ParseCompression(text, options.output.compression.emplace()); },
      "zstd, lz4 or none, with a level from 1 to 9 as in zstd:3,",
      "Of .ome.zarr: zstd, lz4 (faster, less) or none, with a level from 1 to 9 as in zstd:3; default: zstd:1")
      ->type_name("CODEC[:LEVEL]");
  app.add_option("--chunk", options.output.chunkImages,
                 "Of .ome.zarr: images in a file; default: as many as have 8 MiB, at least 1")
      ->transform(WholeNumber(1, kMaxChunkImages))
      ->type_name("N");
  AddText(app, "--preview", options.output.preview, "Picture of the last image", kFileNameForm)
      ->type_name("FILE.png");
  AddForm(
      app, "--images", [&options](const std::string& text) { return ParseImageNumbers(text, options.images); },
      "a list of numbers from 1, for example 10-20,30,", "Images to take, for example 10-20,30; default: all")
      ->type_name("NUMBERS");
  app.add_option("-b,--bits", bits, "Bits of a pixel in the output: 8, 16 or 32; default: as many as the run has")
      ->check(OneOf({"8", "16", "32"}));
  app.add_flag("--verify", options.isVerify, "Compare every image with its checksum; no output is needed");
  app.add_flag("--salvage", options.isSalvage,
               "Take what can be had of a run that was not finished, without a checksum too");
  app.add_flag("--keep-damaged", options.keepsDamaged,
               "Take images whose checksum is wrong, with --salvage also those without one");
  AddImageFileOptions(app, options.output, app.option_defaults()->get_group());
  app.add_flag("--overwrite", options.output.overwrite, "Replace files that exist");
  app.add_flag("-q,--quiet", options.isQuiet, "Print errors and warnings only");
}

CLI::Option* AddSettingsFileOption(CLI::App& app, std::string& file)
{
  return AddText(app, "--settings", file,
                 "Take settings from this file; options of the command line come before them", kFileNameForm)
      ->type_name("FILE.ini");
}

void AddSettingsOptions(CLI::App& app, TAcquireOptions& options)
{
  const char* const group = "Files of settings";
  AddSettingsFileOption(app, options.settingsFile)->group(group);
  AddText(app, "--save-settings", options.saveSettingsFile,
          "Write the settings that are in force before the run to this file", kFileNameForm)
      ->type_name("FILE.ini")
      ->group(group);
}

void AddSpoolOptions(CLI::App& app, TSpoolOptions& options, std::optional<SpoolMethod>& method)
{
  const char* const group = "Recording to disk during the run";
  AddText(app, "--spool", options.directory,
          "Record every frame into this directory, in place of memory; an --output is made of it afterwards",
          "the name of a directory is")
      ->type_name("DIRECTORY")
      ->group(group);
  AddWord(app, "--spool-method", method, kSpoolMethods,
          "One image in each file, or as many as fit into 256 MiB; default: multi")
      ->group(group);
  app.add_option("--spool-threads", options.threads, "Threads that write")
      ->transform(WholeNumber(1, kMaxSpoolThreads))
      ->type_name("N")
      ->group(group);
}

// Finds the format of an output file by its name unless it was given. Returns what is wrong, "" for nothing.
std::string CompleteOrSayWhy(TOutputOptions& output, const std::map<std::string, FileFormat>& suffixes)
{
  for (const auto& [option, file] : {std::pair("--output", output.file), std::pair("--preview", output.preview)})
    if (file == "-")
      return option +
             (": " + RefusedText(file, "the formats cannot be written to standard output, since what stands "
                                       "at their beginning is known at the end; the name of a file is"));
  if (output.file.empty())
    return output.format               ? "--format: there is no --output"
           : output.isFileForEach      ? "--each: there is no --output"
           : !output.imageType.empty() ? "--image-type: there is no --output that it could be put into"
                                       : "";
  if (output.file == output.preview) return "--preview: is the file of --output";
  if (output.format) return "";
  const std::size_t dot = output.file.rfind('.');
  std::string suffix = dot == std::string::npos ? "" : output.file.substr(dot);
  std::transform(suffix.begin(), suffix.end(), suffix.begin(), [](unsigned char c) { return std::tolower(c); });
  const auto found = suffixes.find(suffix);
  if (found != suffixes.end()) {
    output.format = found->second;
    return "";
  }
  const std::string others = suffixes.count(".raw") > 0 ? ".fits, .raw, .ome.zarr or .png" : "or .fits";
  return "--output: the name must end in .tif, .tiff" + std::string(suffixes.count(".raw") > 0 ? ", " : " ") +
         others + ", or --format must be given";
}

std::string CompleteOrSayWhy(TConvertOptions& options)
{
  if (options.output.IsEmpty() && !options.isVerify) return "--output: is needed, or --preview or --verify";
  if (std::string why = CompleteOrSayWhy(options.output, kSuffixes); !why.empty()) return why;
  const bool isZarr = options.output.format == FileFormat::OmeZarr;
  if (options.output.compression && !isZarr) return "--compression: only .ome.zarr is compressed";
  if (options.output.chunkImages && !isZarr) return "--chunk: only .ome.zarr has chunks";
  return options.output.isFileForEach && isZarr ? "--each: .ome.zarr is for all images; give --chunk 1" : "";
}

std::string WhyNotSpooled(const TAcquireOptions& options)
{
  if (options.spool.directory.empty()) return "";
  if (options.spool.directory.find('\\') != std::string::npos)
    return "--spool: the library takes a backslash for a slash; give a name without one";
  if (options.mode == RunMode::Continuous)
    return "--spool: a run until it is stopped is never recorded to disk; give --mode series with --frames N, "
           "which may be more than fit into memory";
  return "";
}

// What does not go together with a time-lapse. Its mode is complete.
std::string WhyNotAtInterval(const TAcquireOptions& options)
{
  if (!options.intervalSeconds) return "";
  if (options.mode == RunMode::Series || options.mode == RunMode::Continuous)
    return "--interval: takes single images; leave out --mode, or give --cycle in place of --interval";
  if (!options.spool.directory.empty())
    return "--interval: --spool records one run; leave it out, each image is written to --output when it is there";
  if (options.cycleSeconds && options.mode == RunMode::Single)
    return "--cycle: --interval is the time from one exposure to the next; leave out one of them";
  const double exposures = options.exposureSeconds.value_or(0.0) * options.accumulations;
  if (options.trigger != Trigger::ExternalExposure && exposures > *options.intervalSeconds)
    return "--interval: is shorter than the exposure of an image";
  return "";
}

// The relations between options that no single option can check. Returns what is wrong, "" for nothing.
std::string CompleteOrSayWhy(TAcquireOptions& options)
{
  const bool isAtInterval = options.intervalSeconds.has_value();
  if (!options.mode) options.mode = options.frames && !isAtInterval ? RunMode::Series : RunMode::Single;
  const RunMode mode = *options.mode;
  if (std::string why = WhyNotAtInterval(options); !why.empty()) return why;
  if (options.frames && !isAtInterval && (mode == RunMode::Single || mode == RunMode::Accumulate))
    return "--frames: modes single and accumulate take one image";
  if (mode == RunMode::Series && !options.frames) return "--frames: mode series needs it";
  if (options.accumulationCycleSeconds && options.accumulations < 2)
    return "--accumulation-cycle: is for sums of exposures; give --accumulations";
  if (options.accumulationCycleSeconds && mode == RunMode::Accumulate && options.cycleSeconds)
    return "--cycle: is the same as --accumulation-cycle in mode accumulate; leave out one of them";
  if (mode == RunMode::Accumulate && options.accumulations < 2)
    return "--accumulations: mode accumulate needs 2 or more";
  if (options.accumulations > 1 && mode != RunMode::Accumulate && mode != RunMode::Series)
    return "--accumulations: only modes accumulate and series add exposures up";
  if (options.cycleSeconds && mode != RunMode::Accumulate && IsPulseForEach(options.trigger))
    return std::string("--cycle: with --trigger ") + TriggerName(options.trigger) +
           " the pulses set the time between exposures; leave out --cycle, or choose another --trigger";
  if (options.cooling.isWaiting && !options.cooling.targetCelsius) return "--wait-stable: needs --temperature";
  if (options.cooling.rampPerMinute && !options.cooling.targetCelsius && !options.cooling.isWarmedUp)
    return "--ramp: needs --temperature or --warm-up";
  if (options.readout.amplifier && options.readout.channel.value_or(0) != 0)
    return "--amplifier: channel 0 has amplifiers to choose from";
  if (!options.saveSettingsFile.empty() &&
      (options.saveSettingsFile == options.output.file || options.saveSettingsFile == options.output.preview))
    return "--save-settings: is the file of --output or --preview";
  const std::string spool = WhyNotSpooled(options);
  return spool.empty() ? CompleteOrSayWhy(options.output, kStackSuffixes) : spool;
}

/// What the command line says, before it is checked as a whole. Outlives the parser, which writes into it.
struct TGiven
{
  TOptions options;
  std::vector<TCameraChoice> cameras = {TCameraChoice{}};
  std::optional<Trigger> trigger;
  std::optional<double> timeout;
  std::optional<SpoolMethod> method;
  std::optional<int> bits; // of acquire
  std::optional<int> convertBits;
  std::optional<double> warmUpRamp;
  TOptions live; // its options are passed on as texts
  std::string liveText;
  std::vector<std::string> liveHosts;
  bool liveFlag = false;
};

/// The commands that the parser knows, and owns.
struct TCommands
{
  CLI::App* list;
  CLI::App* info;
  CLI::App* describe; // the name that info had before; scripts may use it
  CLI::App* get;
  CLI::App* set;
  CLI::App* acquire;
  CLI::App* convert;
  CLI::App* warmUp;
  CLI::App* live;
  CLI::App* doctor;
  CLI::App* check;
  CLI::App* trace;
};

void AddInfoOptions(CLI::App& command, TOptions& options)
{
  CLI::Option* const directory = command
                                     .add_option("directory", options.directory,
                                                 "Directory of a recorded run, to describe in place of a camera")
                                     ->type_name("DIRECTORY");
  command
      .add_flag("--features", options.showsFeatures,
                "Print the camera's features, and where each comes from, in place of the description")
      ->excludes(directory);
}

// The program in Python that the command runs reads the texts; here they are described, and settings checked.
void AddLiveOptions(CLI::App& app, TGiven& given)
{
  const auto text = [&](const char* name, const char* form, const char* help) {
    AddText(app, name, given.liveText, help, "a value is")->type_name(form);
  };
  text("--port", "P", "Port of the page; default: 8765, or the next one that is free");
  text("--bind", "ADDRESS",
       "Address to listen at; default: 127.0.0.1, so that only this machine reaches it. The connection is not "
       "encrypted: for other machines, ssh -L is better");
  text("--token", "TEXT", "The secret in the link; default: a new one at each start");
  app.add_flag("--no-token", given.liveFlag, "No secret: every user of this machine can open the page");
  app.add_option("--allow-host", given.liveHosts,
                 "Name of this machine that the link may have, beside localhost and addresses; may be repeated")
      ->expected(1)
      ->multi_option_policy(CLI::MultiOptionPolicy::TakeAll)
      ->type_name("NAME");
  app.add_flag("--read-only", given.liveFlag, "Nobody can change the camera from a page");
  text("--fps", "N", "Images a second that are shown at most; default: 25");
  text("--directory", "DIRECTORY", "Where snapshots and recordings go; default: the working directory");
  app.add_flag("--open", given.liveFlag, "Open the page in the browser of this machine");
  TAcquireOptions& settings = given.live.acquire;
  AddSettingsFileOption(app, settings.settingsFile);
  AddTimingOptions(app, settings, given.trigger);
  app.add_option("-b,--bits", given.convertBits, "Bits of a pixel: 8 (with --encoding Mono8) or 16; default: 16")
      ->check(OneOf({"8", "16"}));
  AddEncodingOption(app, settings);
  AddAreaOption(app, settings.area);
  AddBinningOption(app, settings.area);
  AddReadoutOptions(app, settings.readout);
  AddTargetOption(app, settings.cooling);
  AddFanOption(app, settings.cooling);
}

// The options of the live view as they were given, but for the camera.
std::vector<std::string> LiveArguments(const CLI::App& live)
{
  std::vector<std::string> arguments;
  for (const CLI::Option* option : live.get_options()) {
    if (option->count() == 0 || option->get_lnames().empty() || option->check_lname("camera")) continue;
    const std::string name = "--" + option->get_lnames().front();
    for (const std::string& value : option->results())
      arguments.push_back(option->get_expected_max() == 0 || value.empty() ? name : name + "=" + value);
  }
  return arguments;
}

void AddDoctorOptions(CLI::App& command, TDoctorOptions& options)
{
  const std::vector<std::string> areas = DoctorAreas();
  const auto isArea = [areas](const std::string& text) -> std::string {
    return std::find(areas.begin(), areas.end(), text) != areas.end()
               ? ""
               : RefusedText(text, ChoiceText(areas) + " is");
  };
  command.add_option("--only", options.areas, "Look at these areas only: " + CLI::detail::join(areas, ", "))
      ->type_name("AREA,...")
      ->delimiter(',')
      ->check(CLI::Validator(isArea, ""));
  command
      .add_option_function<std::string>(
          "--disk", [&options](const std::string& text) { options.disk = text; },
          "Write for 2 s in this directory, and say whether it is fast enough for the camera")
      ->type_name("DIRECTORY");
  command.add_flag("-v,--verbose", options.showsAll, "Print also what is right");
  CLI::Option* const bundle =
      AddText(command, "--bundle", options.bundle,
              "Pack reports, configuration and log into this .tar.gz file, to send to somebody", kFileNameForm)
          ->type_name("FILE");
  command
      .add_flag("--keep-names", options.keepsNames, "Leave the names of user and machine and serial numbers in it")
      ->needs(bundle);
}

void AddCheckOptions(CLI::App& command, TCheckOptions& options)
{
  constexpr int kMaxRepeat = 10'000;
  const std::vector<std::string> groups = CheckGroups();
  const auto isGroup = [groups](const std::string& text) -> std::string {
    return std::find(groups.begin(), groups.end(), text) != groups.end()
               ? ""
               : RefusedText(text, ChoiceText(groups) + " is");
  };
  command.add_option("--group", options.groups, "Run these groups only: " + CLI::detail::join(groups, ", "))
      ->type_name("GROUP,...")
      ->delimiter(',')
      ->check(CLI::Validator(isGroup, ""));
  command.add_option("--only", options.names, "Run these checks only, as --list names them")
      ->type_name("NAME,...")
      ->delimiter(',');
  command.add_flag("--list", options.isListing, "Print the checks and what each expects, and run none");
  command.add_option("--repeat", options.repeat, "Run each check so often, until it fails; default: 1")
      ->type_name("N")
      ->transform(WholeNumber(1, kMaxRepeat));
  command.add_flag("--harsh", options.isHarsh, "Run also what takes minutes and changes the temperature");
  command.add_flag("--tap", options.isTap, "Print the results in the Test Anything Protocol")->excludes("--json");
}

TCommands AddCommands(CLI::App& app, TGiven& given)
{
  TOptions& options = given.options;
  TCommands commands = {};
  commands.list = app.add_subcommand("list", "List the cameras that are attached");
  commands.info = app.add_subcommand("info", "Say what a camera or a recorded run is");
  commands.describe = app.add_subcommand("describe", "The same as info")->group("");
  commands.get = app.add_subcommand("get", "Print features of a camera, by their names in the feature library");
  commands.set = app.add_subcommand("set", "Set features of a camera");
  commands.acquire = app.add_subcommand("acquire", "Take images and write them to a file");
  commands.warmUp = app.add_subcommand("warm-up", "Warm the sensor up slowly, and switch the cooler off");
  commands.live = app.add_subcommand("live", "Show the picture of a camera in the browser");
  commands.convert = app.add_subcommand("convert", "Make a file of the images of a recorded run, or check them");
  commands.doctor = app.add_subcommand("doctor", "Look for what is wrong with cameras, libraries and machine");
  commands.check = app.add_subcommand("check", "Check whether a camera behaves");
  commands.trace = AddTraceCommand(app, options.trace);
  const auto [list, info, describe, get, set, acquire, convert, warmUp, live, doctor, check, trace] = commands;
  for (CLI::App* command : {info, describe, get, set, acquire, live, warmUp, doctor, check})
    AddCameraOption(*command, given.cameras, command == acquire);
  for (CLI::App* command : {info, describe}) AddInfoOptions(*command, options);
  for (CLI::App* command : {list, info, describe, get, set, acquire, convert, warmUp, doctor, check})
    command->add_flag("--json", options.isJson, "Print one line of JSON on standard output");
  get->add_option("names", options.featureNames, "Names of features; default: all that the camera has")
      ->type_name("NAME");
  AddDoctorOptions(*doctor, options.doctor);
  AddCheckOptions(*check, options.check);
  AddFeatureSettings(*set, "settings", options.featureSettings, "Features and the values to set them to")
      ->required();
  AddRunOptions(*acquire, options.acquire, given.trigger, given.bits);
  AddSeconds(*acquire, "--timeout", given.timeout, "Give up after this long without an image");
  AddImageAreaOptions(*acquire, options.acquire.area);
  AddReadoutOptions(*acquire, options.acquire.readout);
  AddFeatureOptions(*acquire, options.acquire);
  AddCoolingOptions(*acquire, options.acquire.cooling);
  AddOutputOptions(*acquire, options.acquire);
  AddSettingsOptions(*acquire, options.acquire);
  AddSpoolOptions(*acquire, options.acquire.spool, given.method);
  AddConvertOptions(*convert, options.convert, given.convertBits);
  AddWarmUpOptions(*warmUp, options, given.warmUpRamp);
  AddLiveOptions(*live, given);
  for (CLI::App* command : {acquire, convert, warmUp, live}) command->footer(kFooter);
  return commands;
}

// A setting that does not go together with an option of the command line: which one; "" for none.
std::string ExcludingOption(const CLI::App& acquire, const CLI::Option& option, const std::set<std::string>& given)
{
  for (const CLI::Option* other : option.get_excludes())
    if (given.count(other->get_name()) > 0) return other->get_name();
  const auto isGiven = [&](const std::string& text) {
    const std::size_t sign = text.find('=');
    const std::string name = "--" + text.substr(0, sign);
    if (given.count(name) == 0) return false;
    return sign == std::string::npos || acquire.get_option(name)->results().front() == text.substr(sign + 1);
  };
  return DisplacingOption(option.get_name().substr(2), isGiven);
}

// Gives an option the value of a setting, as if it stood on the command line.
void AddSetting(CLI::App& acquire, const TSettingsEntry& entry, const std::set<std::string>& given,
                const std::string& file)
{
  const std::vector<std::string> names = SettingNames();
  const std::string place = file + ", line " + std::to_string(entry.line) + ": " + entry.key;
  CLI::Option* const option = acquire.get_option_no_throw("--" + entry.key);
  if (std::find(names.begin(), names.end(), entry.key) == names.end()) {
    if (option) throw CLI::ValidationError(place + ": is an option of acquire, but not a setting");
    const std::string nearest = NearestWord(entry.key, names);
    throw CLI::ValidationError(place + ": there is no such setting; " +
                               (nearest.empty() ? "there are " + ChoiceText(names) : "the nearest is " + nearest));
  }
  if (given.count(option->get_name()) > 0) return;
  if (const std::string other = ExcludingOption(acquire, *option, given); !other.empty()) {
    Say(place + ": is left out, since it does not go with " + other);
    return;
  }
  for (const CLI::Option* other : option->get_excludes())
    if (other->count() > 0)
      throw CLI::ValidationError(place + ": does not go with " + other->get_name().substr(2));
  try {
    option->add_result(entry.value);
    option->run_callback();
  } catch (const CLI::ParseError& error) {
    const std::string text = error.what(); // "--name: ..."
    throw CLI::ValidationError(file + ", line " + std::to_string(entry.line) + ": " +
                               (text.starts_with("--") ? text.substr(2) : text));
  }
}

// What the file says of the camera is not applied; another model is worth a note.
void AddCameraEntry(const TSettingsEntry& entry, TAcquireOptions& options)
{
  const std::vector<std::string> known = {"model", "serial", "firmware"};
  if (std::find(known.begin(), known.end(), entry.key) == known.end())
    throw CLI::ValidationError(options.settingsFile + ", line " + std::to_string(entry.line) + ": " + entry.key +
                               ": there is no such key; there are " + ChoiceText(known));
  if (entry.key == "model") options.settingsModel = entry.value;
}

void AddSettingsOfFile(CLI::App& acquire, TAcquireOptions& options)
{
  if (options.settingsFile.empty()) return;
  TSettingsFile file;
  if (!file.Read(options.settingsFile)) throw CLI::ValidationError("--settings: " + file.Error());
  std::set<std::string> given;
  for (const CLI::Option* option : acquire.get_options())
    if (option->count() > 0) given.insert(option->get_name());
  const auto isSet = [&options](const TSettingsEntry& entry) {
    return std::any_of(options.features.begin(), options.features.end(),
                       [&](const TFeatureSetting& setting) { return setting.name == entry.key; });
  };
  std::vector<TFeatureSetting> features;
  for (const TSettingsEntry& entry : file.Entries()) {
    if (entry.section == TSettingsFile::kSettings) AddSetting(acquire, entry, given, options.settingsFile);
    if (entry.section == TSettingsFile::kFeatures && !isSet(entry)) features.push_back({entry.key, entry.value});
    if (entry.section == TSettingsFile::kCamera) AddCameraEntry(entry, options);
  }
  options.features.insert(options.features.begin(), features.begin(), features.end());
}

// Puts the names of cameras into names of files; a slash would be a directory.
void ReplaceCamera(std::string& path, const TCameraChoice& camera)
{
  std::string name = camera.Name();
  std::replace(name.begin(), name.end(), '/', '-');
  for (std::size_t at = path.find(kCameraPlace); at != std::string::npos;
       at = path.find(kCameraPlace, at + name.size()))
    path.replace(at, kCameraPlace.size(), name);
}

// Different names may be those of one file.
std::string WithoutLinks(const std::string& path)
{
  std::error_code error;
  const std::filesystem::path file = std::filesystem::weakly_canonical(path, error);
  return error ? path : file.string();
}

// Chooses one of the cameras. Throws what the parser throws when several of them would have the same file.
void UseCamera(TGiven& given, std::size_t index)
{
  TAcquireOptions& acquire = given.options.acquire;
  const std::pair<const char*, std::string*> files[] = {{"--output", &acquire.output.file},
                                                        {"--preview", &acquire.output.preview},
                                                        {"--spool", &acquire.spool.directory},
                                                        {"--save-settings", &acquire.saveSettingsFile}};
  std::map<std::string, std::string> cameras; // by file
  for (const auto& [option, path] : files) {
    if (path->empty()) continue;
    for (const TCameraChoice& camera : given.cameras) {
      std::string ofCamera = *path;
      ReplaceCamera(ofCamera, camera);
      // A camera that is given twice is an error of its own.
      if (cameras.emplace(WithoutLinks(ofCamera), camera.Name()).first->second == camera.Name()) continue;
      throw CLI::ValidationError(option, ofCamera +
                                             " would be of several cameras; with {camera} in the name, which "
                                             "becomes the camera's number or serial number, each has its own");
    }
    ReplaceCamera(*path, given.cameras[index]);
  }
  ReplaceCamera(acquire.settingsFile, given.cameras[index]);
  given.options.camera = given.cameras[index];
}

// The options, complete. Throws what the parser throws when they do not go together.
TOptions OptionsOf(const TCommands& commands, const TGiven& given)
{
  TOptions options = given.options;
  TAcquireOptions& acquire = options.acquire;
  acquire.noImageSeconds = given.timeout.value_or(0.0);
  acquire.trigger = given.trigger.value_or(Trigger::Internal);
  acquire.depth = given.bits ? static_cast<PixelDepth>(*given.bits) : DefaultDepth(acquire.accumulations);
  acquire.spool.method = given.method.value_or(SpoolMethod::Multi);
  if (given.warmUpRamp) options.warmUp.degreesPerMinute = *given.warmUpRamp;
  if (given.convertBits) options.convert.depth = static_cast<PixelDepth>(*given.convertBits);
  options.command = *commands.list      ? Command::List
                    : *commands.get     ? Command::Get
                    : *commands.set     ? Command::Set
                    : *commands.acquire ? Command::Acquire
                    : *commands.convert ? Command::Convert
                    : *commands.warmUp  ? Command::WarmUp
                    : *commands.live    ? Command::Live
                    : *commands.doctor  ? Command::Doctor
                    : *commands.check   ? Command::Check
                    : *commands.trace   ? Command::Trace
                                        : Command::Info;
  if (options.command == Command::Live) options.liveArguments = LiveArguments(*commands.live);
  std::string wrong;
  if (options.command == Command::Acquire) wrong = CompleteOrSayWhy(acquire);
  if (options.command == Command::Convert) wrong = CompleteOrSayWhy(options.convert);
  if (acquire.spool.directory.empty() && (given.method || acquire.spool.threads))
    wrong = "--spool-method and --spool-threads: need --spool";
  if (!wrong.empty()) throw CLI::ValidationError(wrong);
  return options;
}

// Which word of the command line is neither a command nor an option, and what may have been meant; "" for none.
std::string UnknownWord(const CLI::App& command)
{
  std::vector<std::string> words = command.remaining();
  std::erase(words, "--");
  if (words.empty()) {
    const std::vector<CLI::App*> called = command.get_subcommands();
    return called.empty() ? "" : UnknownWord(*called.front());
  }
  const std::string word = words.front().substr(0, words.front().find('='));
  const std::string bare = word.substr(std::min(word.find_first_not_of('-'), word.size()));
  std::vector<std::string> names;
  std::vector<std::string> commands;
  for (const CLI::Option* option : command.get_options())
    names.insert(names.end(), option->get_lnames().begin(), option->get_lnames().end());
  for (const CLI::App* subcommand : command.get_subcommands(nullptr))
    if (!subcommand->get_group().empty()) commands.push_back(subcommand->get_name());
  const bool isOption = word.starts_with('-');
  if (commands.empty() || isOption) {
    const std::string nearest = NearestWord(bare, names);
    const std::string text = word + (isOption ? ": there is no such option" : ": is not expected here");
    if (!nearest.empty()) return text + "; the nearest is --" + nearest;
    return text + (commands.empty() ? "" : "; the options of a command stand behind it");
  }
  const std::string nearest = NearestWord(word, commands);
  const std::string text = word + ": there is no such command";
  if (!nearest.empty()) return text + "; the nearest is " + nearest;
  return text + "; there are " + CLI::detail::join(commands, ", ");
}

// What is said of an option without its value, or with several, from what the parser says:
// "--exposure: 1 required SECONDS missing", "--exposure: At Most 1 required but received 2".
std::string ValueCountText(const std::string& said)
{
  if (const std::size_t at = said.find(": 1 required "); at != std::string::npos)
    return said.substr(0, at) + ": needs a value; vxmcd COMMAND --help has it";
  const std::size_t at = said.find(": At Most 1 ");
  return at == std::string::npos ? said : said.substr(0, at) + ": is given more than once; leave out the others";
}

} // namespace

const char* TriggerName(Trigger trigger)
{
  return WordFor(kTriggers, trigger);
}

const char* ModeName(RunMode mode)
{
  return WordFor(kModes, mode);
}

const char* FanName(Fan fan)
{
  return WordFor(kFans, fan);
}

std::optional<Trigger> TriggerOf(const std::string& name)
{
  return ValueOf(kTriggers, name);
}

std::optional<TOptions> TCommandLine::Parse(int argc, const char* const* argv)
{
  std::size_t count = 1;
  std::optional<TOptions> options = ParseFor(0, argc, argv, count);
  for (std::size_t index = 1; options && index < count; ++index) {
    std::optional<TOptions> other = ParseFor(index, argc, argv, count);
    if (!other) return std::nullopt;
    options->others.push_back(std::move(*other));
  }
  return options;
}

// The command line is read for each camera, since each may have its own file of settings.
std::optional<TOptions> TCommandLine::ParseFor(std::size_t camera, int argc, const char* const* argv,
                                               std::size_t& cameraCount)
{
  CLI::App app("Lists, describes and runs scientific cameras.", "vxmcd");
  app.set_version_flag("--version", VersionsText,
                       "Print the versions of the program and its libraries, and their files");
  app.footer(kFooter);
  app.require_subcommand(1);
  TGiven given;
  const TCommands commands = AddCommands(app, given);
  const auto printTable = [&app] { throw CLI::CallForVersion(OptionTable(app) + kFooter, 0); };
  app.add_flag_callback("--option-table", printTable)->group(""); // for the manual page and for shells
  try {
    app.parse(argc, argv);
    cameraCount = given.cameras.size();
    UseCamera(given, camera);
    AddSettingsOfFile(*commands.acquire, given.options.acquire);
    return OptionsOf(commands, given);
  } catch (const CLI::ParseError& error) {
    std::string wrong = error.get_exit_code() == 0 ? "" : UnknownWord(app);
    if (wrong.empty() && error.get_name() == "ArgumentMismatch") wrong = ValueCountText(error.what());
    const bool isDone = (wrong.empty() ? app.exit(error) : app.exit(CLI::ValidationError(wrong))) == 0;
    exitStatus_ = isDone ? 0 : static_cast<int>(ExitCode::Usage);
    return std::nullopt;
  }
}

} // namespace vxtool
