// SPDX-License-Identifier: MIT
// Options that set a camera up.
#include "tools/CameraOptions.h"

#include "tools/ArgumentForms.h"
#include "tools/Messages.h"
#include "tools/OptionKinds.h"

#include <string_view>

namespace vxtool {

namespace {

constexpr int kMaxIndex = 1000;
constexpr double kMaxRamp = 1000.0; // degrees a minute
constexpr int kMaxCamera = 10'000;
constexpr std::string_view kSerialPrefix = "serial:";

const TWords<Trigger> kTriggers = {{"internal", Trigger::Internal},
                                   {"external", Trigger::External},
                                   {"external-start", Trigger::ExternalStart},
                                   {"external-exposure", Trigger::ExternalExposure},
                                   {"software", Trigger::Software}};
const TWords<Fan> kFans = {{"full", Fan::Full}, {"low", Fan::Low}, {"off", Fan::Off}};

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

} // namespace

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

CLI::Option* AddEncodingOption(CLI::App& app, TAcquireOptions& options)
{
  return AddText(app, "--encoding", options.encoding, "How the camera encodes pixels: Mono8, Mono12, Mono16, ...",
                 "one of the words that vxmcd get PixelEncoding lists is")
      ->type_name("WORD");
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

CLI::Option* AddRamp(CLI::App& app, std::optional<double>& target, const std::string& help)
{
  const auto isRate = [](const std::string& text) -> std::string {
    double value = 0.0;
    if (ParseSeconds(text, value) && value <= kMaxRamp) return ""; // the form of a time is that of any rate
    return RefusedText(text, "a rate in degrees a minute above 0 and at most 1000 is");
  };
  return app.add_option("--ramp", target, help)->check(CLI::Validator(isRate, ""))->type_name("C/MIN");
}

CLI::Option* AddSettingsFileOption(CLI::App& app, std::string& file)
{
  return AddText(app, "--settings", file,
                 "Take settings from this file; options of the command line come before them", kFileNameForm)
      ->type_name("FILE.ini");
}

const char* TriggerName(Trigger trigger)
{
  return WordFor(kTriggers, trigger);
}

const char* FanName(Fan fan)
{
  return WordFor(kFans, fan);
}

std::optional<Trigger> TriggerOf(const std::string& name)
{
  return ValueOf(kTriggers, name);
}

} // namespace vxtool
