// SPDX-License-Identifier: MIT
// The options of acquire that a file of settings gives.
#include "tools/SettingsOptions.h"

#include "tools/Messages.h"
#include "tools/NearestWord.h"
#include "tools/RunSettings.h"
#include "tools/TSettingsFile.h"

#include <algorithm>
#include <CLI/CLI.hpp>
#include <set>

namespace vxtool {

namespace {

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

} // namespace

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

} // namespace vxtool
