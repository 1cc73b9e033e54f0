// SPDX-License-Identifier: MIT
// The options of the command acquire, and which of them do not go together.
#include "tools/AcquireOptions.h"

#include "tools/ArgumentForms.h"
#include "tools/CameraOptions.h"
#include "tools/Messages.h"
#include "tools/OptionKinds.h"
#include "tools/OutputOptions.h"

namespace vxtool {

namespace {

constexpr int kMaxSpoolThreads = 64;

const TWords<RunMode> kModes = {{"single", RunMode::Single},
                                {"accumulate", RunMode::Accumulate},
                                {"series", RunMode::Series},
                                {"continuous", RunMode::Continuous}};
const TWords<SpoolMethod> kSpoolMethods = {{"single", SpoolMethod::Single}, {"multi", SpoolMethod::Multi}};
const TFormats kStackFormats = {
    {{"tiff", FileFormat::Tiff}, {"bigtiff", FileFormat::BigTiff}, {"fits", FileFormat::Fits}},
    {{".tif", FileFormat::Tiff},
     {".tiff", FileFormat::Tiff},
     {".fits", FileFormat::Fits},
     {".fit", FileFormat::Fits},
     {".fts", FileFormat::Fits}},
    ".tif, .tiff or .fits"};

void AddRunOptions(CLI::App& app, TAcquireOptions& options, TAcquireGiven& given)
{
  AddTimingOptions(app, options, given.trigger);
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
         "-b,--bits", given.bits,
         "Bits of a pixel in the output: 8 (with --encoding Mono8, and sums), 16 or 32; default: 32 for sums "
         "of exposures, else 16")
      ->check(OneOf({"8", "16", "32"}));
}

void AddImageAreaOptions(CLI::App& app, TImageAreaOptions& area)
{
  CLI::Option* const whole = AddAreaOption(app, area);
  CLI::Option* tracks = AddForm(
      app, "--tracks", [&area](const std::string& text) { return ParseTracks(text, area.tracks); },
      "FIRST-LAST,... with rows from 1, for example 1-10,21-30,",
      "Rows that are read out as one row each; row 1 is the last row of a picture");
  tracks->type_name("FIRST-LAST,...")->group(kAreaGroup)->excludes(whole);
  const auto side = [&](const char* name, std::optional<int>& target, const char* help) {
    app.add_option(name, target, help)
        ->transform(WholeNumber(1, kMaxSide))
        ->type_name("N")
        ->group(kAreaGroup)
        ->excludes(whole)
        ->excludes(tracks);
  };
  side("--left", area.left, "First column; default: 1");
  side("--top", area.top, "First row; default: 1");
  side("--width", area.width, "Columns; default: to the edge of the sensor");
  side("--height", area.height, "Rows; default: to the edge of the sensor");
  AddBinningOption(app, area)->excludes(tracks);
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

void AddCoolingOptions(CLI::App& app, TCoolingOptions& cooling)
{
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
      ->group(kCoolingGroup);
  AddRamp(app, cooling.rampPerMinute,
          "Move the target in whole degrees, from the sensor's temperature to --temperature, so many degrees a "
          "minute; "
          "the run starts when it is there. Also the rate of --warm-up")
      ->group(kCoolingGroup);
  app.add_flag(
         "--warm-up", cooling.isWarmedUp,
         "After the run raise the target to 20 C, 5 degrees a minute without --ramp, and switch the cooler off; "
         "also when the run has failed or Ctrl-C has ended it")
      ->group(kCoolingGroup);
  AddFanOption(app, cooling);
}

void AddOutputOptions(CLI::App& app, TAcquireOptions& options)
{
  AddText(app, "-o,--output", options.output.file, "File for the images: .tif, .tiff (stack) or .fits (cube)",
          kFileNameForm)
      ->type_name("FILE")
      ->group("Output");
  AddWord(app, "--format", options.output.format, kStackFormats.words,
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

} // namespace

void AddAcquireOptions(CLI::App& app, TAcquireOptions& options, TAcquireGiven& given)
{
  AddRunOptions(app, options, given);
  AddSeconds(app, "--timeout", given.timeout, "Give up after this long without an image");
  AddImageAreaOptions(app, options.area);
  AddReadoutOptions(app, options.readout);
  AddFeatureOptions(app, options);
  AddCoolingOptions(app, options.cooling);
  AddOutputOptions(app, options);
  AddSettingsOptions(app, options);
  AddSpoolOptions(app, options.spool, given.method);
}

std::string CompleteAcquire(TAcquireOptions& options, const TAcquireGiven& given)
{
  options.noImageSeconds = given.timeout.value_or(0.0);
  options.trigger = given.trigger.value_or(Trigger::Internal);
  options.depth = given.bits ? static_cast<PixelDepth>(*given.bits) : DefaultDepth(options.accumulations);
  options.spool.method = given.method.value_or(SpoolMethod::Multi);
  if (options.spool.directory.empty() && (given.method || options.spool.threads))
    return "--spool-method and --spool-threads: need --spool";
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
  return spool.empty() ? CompleteOutput(options.output, kStackFormats) : spool;
}

const char* ModeName(RunMode mode)
{
  return WordFor(kModes, mode);
}

} // namespace vxtool
