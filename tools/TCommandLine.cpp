// SPDX-License-Identifier: MIT
// The commands, the help text, and what is said of a wrong command line.
#include "tools/TCommandLine.h"

#include "tools/AcquireOptions.h"
#include "tools/CameraOptions.h"
#include "tools/check/CheckOptions.h"
#include "tools/ConvertOptions.h"
#include "tools/doctor/DoctorOptions.h"
#include "tools/LiveOptions.h"
#include "tools/Messages.h"
#include "tools/NearestWord.h"
#include "tools/OptionKinds.h"
#include "tools/OptionTable.h"
#include "tools/SettingsOptions.h"
#include "tools/Versions.h"

#include <algorithm>
#include <CLI/CLI.hpp>
#include <filesystem>
#include <map>

namespace vxtool {

namespace {

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

/// What the command line says, before it is checked as a whole. Outlives the parser, which writes into it.
struct TGiven
{
  TOptions options;
  std::vector<TCameraChoice> cameras = {TCameraChoice{}};
  TAcquireGiven acquire;
  TConvertGiven convert;
  TLiveGiven live;
  std::optional<double> warmUpRamp;
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
  AddAcquireOptions(*acquire, options.acquire, given.acquire);
  AddConvertOptions(*convert, options.convert, given.convert);
  AddWarmUpOptions(*warmUp, options, given.warmUpRamp);
  AddLiveOptions(*live, given.live);
  for (CLI::App* command : {acquire, convert, warmUp, live}) command->footer(kFooter);
  return commands;
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
  if (given.warmUpRamp) options.warmUp.degreesPerMinute = *given.warmUpRamp;
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
  if (options.command == Command::Acquire) wrong = CompleteAcquire(options.acquire, given.acquire);
  if (options.command == Command::Convert) wrong = CompleteConvert(options.convert, given.convert);
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
