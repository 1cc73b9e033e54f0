// SPDX-License-Identifier: MIT
// The options of the command live.
#include "tools/LiveOptions.h"

#include "tools/CameraOptions.h"
#include "tools/OptionKinds.h"

namespace vxtool {

// The program in Python that the command runs reads the texts; here they are described, with their defaults, and settings
// checked.
void AddLiveOptions(CLI::App& app, TLiveGiven& given)
{
  const auto text = [&](const char* name, const char* form, const std::string& help) {
    return AddText(app, name, given.text, help, "a value is")->type_name(form)->option_text(form);
  };
  const auto textOr = [&](const char* byDefault, const char* name, const char* form, const std::string& help,
                          const char* why = "") {
    text(name, form, help + "; default: " + byDefault + why)->default_str(byDefault);
  };
  textOr("8765+", "--port", "P[+]", "Port of the page; with +, this one or the next that is free");
  textOr("127.0.0.1", "--bind", "ADDRESS", "Address to listen at",
         ", so that only this machine reaches it. The connection is not encrypted: for other machines, ssh -L is "
         "better");
  text("--token", "TEXT",
       "The secret in the link; default: a new one at each start. Options of programs are visible to "
       "all users of this machine");
  text("--token-file", "FILE", "Takes the secret from the first line of a file");
  app.add_flag("--no-token", given.flag, "No secret: every user of this machine can open the page");
  app.add_option("--allow-host", given.hosts,
                 "Name of this machine that the link may have, beside localhost and addresses; may be repeated")
      ->expected(1)
      ->multi_option_policy(CLI::MultiOptionPolicy::TakeAll)
      ->type_name("NAME");
  app.add_flag("--read-only", given.flag, "Nobody can change the camera from a page");
  textOr("25", "--fps", "N", "Images a second that are shown at most");
  textOr(".", "--directory", "DIRECTORY", "Where snapshots and recordings go", ", the working directory");
  app.add_flag("--open", given.flag, "Open the page in the browser of this machine");
  TAcquireOptions& settings = given.settings;
  AddSettingsFileOption(app, settings.settingsFile);
  AddTimingOptions(app, settings, given.trigger);
  app.add_option("-b,--bits", given.bits, "Bits of a pixel: 8 (with --encoding Mono8) or 16; default: 16")
      ->check(OneOf({"8", "16"}));
  AddEncodingOption(app, settings);
  AddAreaOption(app, settings.area);
  AddBinningOption(app, settings.area);
  AddReadoutOptions(app, settings.readout);
  AddTargetOption(app, settings.cooling);
  AddFanOption(app, settings.cooling);
}

std::vector<std::string> LiveArguments(const CLI::App& live)
{
  std::vector<std::string> arguments;
  for (const CLI::Option* option : live.get_options()) {
    if (option->get_lnames().empty() || option->check_lname("camera")) continue;
    const std::string name = "--" + option->get_lnames().front();
    if (option->count() == 0 && !option->get_default_str().empty())
      arguments.push_back(name + "=" + option->get_default_str());
    for (const std::string& value : option->results())
      arguments.push_back(option->get_expected_max() == 0 || value.empty() ? name : name + "=" + value);
  }
  return arguments;
}

} // namespace vxtool
