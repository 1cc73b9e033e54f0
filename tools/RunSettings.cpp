// SPDX-License-Identifier: MIT
// The table of settings: name, and the value in the words of the command line.
#include "tools/RunSettings.h"

#include "tools/ArgumentForms.h"
#include "tools/TSettingsFile.h"

#include <charconv>

namespace vxtool {

namespace {

using TTextOf = std::string (*)(const TAcquireOptions&, const TSettingsInForce&);

struct TRow
{
  const char* name;
  TTextOf text; ///< "": the setting is not stored
};

// The fewest digits from which the same number is read again.
template <typename Number>
std::string NumberText(Number number)
{
  char text[32];
  return {text, std::to_chars(text, text + sizeof text, number).ptr};
}

template <typename Number>
std::string NumberText(const std::optional<Number>& number)
{
  return number ? NumberText(*number) : "";
}

std::string SwitchText(const std::optional<bool>& isOn)
{
  return !isOn ? "" : *isOn ? "on" : "off";
}

std::string ModeText(const TAcquireOptions& options, const TSettingsInForce&)
{
  return options.mode.value_or(RunMode::Single) == RunMode::Single ? "" : ModeName(*options.mode);
}

// The width of a pulse is the exposure of external-exposure.
std::string ExposureText(const TAcquireOptions& options, const TSettingsInForce& inForce)
{
  return options.trigger == Trigger::ExternalExposure ? "" : NumberText(inForce.exposureSeconds);
}

// With a software trigger the cycle is the tool's; where pulses set the time there is none.
std::string CycleText(const TAcquireOptions& options, const TSettingsInForce& inForce)
{
  if (options.intervalSeconds || options.mode == RunMode::Accumulate) return "";
  if (options.trigger == Trigger::Software) return NumberText(options.cycleSeconds);
  return HasSteadyRate(options.trigger) ? NumberText(inForce.cycleSeconds) : "";
}

std::string AccumulationCycleText(const TAcquireOptions& options, const TSettingsInForce& inForce)
{
  return options.accumulations > 1 ? NumberText(inForce.accumulateSeconds) : "";
}

std::string BitsText(const TAcquireOptions& options, const TSettingsInForce&)
{
  return options.depth == DefaultDepth(options.accumulations) ? "" : NumberText(static_cast<int>(options.depth));
}

// The camera makes sums with an encoding of its own choice.
std::string EncodingText(const TAcquireOptions& options, const TSettingsInForce& inForce)
{
  return options.accumulations > 1 ? options.encoding : inForce.encoding;
}

std::string AreaSettingText(const TAcquireOptions&, const TSettingsInForce& inForce)
{
  const TSensorArea& area = inForce.area;
  if (!area.tracks.empty()) return "";
  return NumberText(area.left) + "," + NumberText(area.top) + "," + SizeText(area.width, area.height);
}

std::string BinningText(const TAcquireOptions&, const TSettingsInForce& inForce)
{
  const TSensorArea& area = inForce.area;
  return area.tracks.empty() ? SizeText(area.horizontalBinning, area.verticalBinning) : "";
}

// The library does not report gain, channel, amplifier, speed, overlap and fan: they are stored when they were given.
constexpr TRow kRows[] = {
    {"mode", ModeText},
    {"frames", [](const TAcquireOptions& o, const TSettingsInForce&) { return NumberText(o.frames); }},
    {"interval", [](const TAcquireOptions& o, const TSettingsInForce&) { return NumberText(o.intervalSeconds); }},
    {"accumulations",
     [](const TAcquireOptions& o, const TSettingsInForce&) { return NumberText(o.accumulations); }},
    {"trigger",
     [](const TAcquireOptions& o, const TSettingsInForce&) { return std::string(TriggerName(o.trigger)); }},
    {"exposure", ExposureText},
    {"cycle", CycleText},
    {"accumulation-cycle", AccumulationCycleText},
    {"overlap", [](const TAcquireOptions& o, const TSettingsInForce&) { return SwitchText(o.isOverlapped); }},
    {"bits", BitsText},
    {"encoding", EncodingText},
    {"area", AreaSettingText},
    {"binning", BinningText},
    {"tracks", [](const TAcquireOptions&, const TSettingsInForce& f) { return TracksText(f.area.tracks); }},
    {"channel", [](const TAcquireOptions& o, const TSettingsInForce&) { return NumberText(o.readout.channel); }},
    {"amplifier",
     [](const TAcquireOptions& o, const TSettingsInForce&) { return NumberText(o.readout.amplifier); }},
    {"speed", [](const TAcquireOptions& o, const TSettingsInForce&) { return NumberText(o.readout.speed); }},
    {"gain", [](const TAcquireOptions& o, const TSettingsInForce&) { return NumberText(o.readout.gain); }},
    {"baseline-clamp",
     [](const TAcquireOptions&, const TSettingsInForce& f) { return SwitchText(f.isBaselineClamped); }},
    {"temperature",
     [](const TAcquireOptions& o, const TSettingsInForce&) { return NumberText(o.cooling.targetCelsius); }},
    {"fan", [](const TAcquireOptions& o,
               const TSettingsInForce&) { return std::string(o.cooling.fan ? FanName(*o.cooling.fan) : ""); }},
};

/// A setting of a file that gives way to an option of the command line, besides those that the parser knows to exclude
/// each other.
struct TDisplacement
{
  const char* setting;
  const char* option; ///< "name" or "name=word"
};

constexpr TDisplacement kDisplacements[] = {
    {"mode", "interval"},
    {"frames", "mode=single"},
    {"frames", "mode=accumulate"},
    {"interval", "mode=single"}, // without its frames it would go on until Ctrl-C
    {"interval", "mode=accumulate"},
    {"interval", "mode=series"},
    {"interval", "mode=continuous"},
    {"interval", "cycle"},
    {"interval", "spool"},
    {"accumulations", "mode=single"},
    {"accumulations", "mode=continuous"},
    {"accumulation-cycle", "mode=single"},
    {"accumulation-cycle", "mode=continuous"},
    {"accumulation-cycle", "accumulations=1"},
    {"exposure", "trigger=external-exposure"},
    {"cycle", "trigger=external"},
    {"cycle", "trigger=external-exposure"},
    {"cycle", "interval"},
    {"channel", "amplifier"},
    {"channel", "gain"},
    {"amplifier", "channel"},
    {"amplifier", "gain"},
    {"gain", "channel"},
    {"gain", "amplifier"},
};

std::string Line(const std::string& key, const std::string& value)
{
  return value.empty() ? "" : key + " = " + value + "\n";
}

std::string Section(const char* name)
{
  return std::string("\n[") + name + "]\n";
}

} // namespace

std::vector<std::string> SettingNames()
{
  std::vector<std::string> names;
  for (const TRow& row : kRows) names.emplace_back(row.name);
  return names;
}

std::string DisplacingOption(const std::string& setting, const std::function<bool(const std::string&)>& isGiven)
{
  for (const TDisplacement& displacement : kDisplacements)
    if (setting == displacement.setting && isGiven(displacement.option))
      return std::string("--") + displacement.option;
  return "";
}

std::string SettingsText(const TAcquireOptions& options, const TSettingsInForce& inForce)
{
  std::string text =
      std::string("; Settings of a run, for vxmcd acquire --settings and for vxmcd.load_settings() in "
                  "Python.\n; Written by vxmcd ") +
      VXTOOL_VERSION + "\n";
  text += Section(TSettingsFile::kCamera) + Line("model", inForce.model) + Line("serial", inForce.serial) +
          Line("firmware", inForce.firmware);
  text += Section(TSettingsFile::kSettings);
  for (const TRow& row : kRows) text += Line(row.name, row.text(options, inForce));
  if (!inForce.features.empty()) text += Section(TSettingsFile::kFeatures);
  for (const TFeatureSetting& feature : inForce.features) text += feature.name + " = " + feature.value + "\n";
  return text;
}

} // namespace vxtool
