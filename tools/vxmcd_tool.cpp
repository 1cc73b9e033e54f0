// SPDX-License-Identifier: MIT
// The command-line tool: one program, one command a call.
#include "tools/CameraList.h"
#include "tools/check/TCheckCommand.h"
#include "tools/doctor/TDoctorCommand.h"
#include "tools/FeatureCommands.h"
#include "tools/InfoCommands.h"
#include "tools/replay/TReplayCommand.h"
#include "tools/TAcquireCommand.h"
#include "tools/TAcquireSeveral.h"
#include "tools/TCommandLine.h"
#include "tools/TConvertCommand.h"
#include "tools/TConvertRawCommand.h"
#include "tools/TLiveCommand.h"
#include "tools/TraceConfig.h"
#include "tools/TraceDiff.h"
#include "tools/TraceImages.h"
#include "tools/TracePrint.h"
#include "tools/TraceReport.h"
#include "tools/TTraceRecordCommand.h"
#include "tools/TTraceRedactor.h"
#include "tools/TWarmUpCommand.h"

#include <cstdio>
#include <exception>
#include <filesystem>
#include <map>
#include <string>
#include <utility>
#include <vector>

namespace {

// Ends when two of the cameras are the same one: a number and a serial number may name it.
vxtool::ExitCode Acquire(vxtool::TOptions& options)
{
  if (options.others.empty()) return vxtool::TAcquireCommand(options).Run();
  std::vector<vxtool::TOptions> all = std::move(options.others);
  options.others.clear();
  all.insert(all.begin(), options);
  std::map<int, std::string> names;
  for (vxtool::TOptions& camera : all) {
    if (const vxtool::ExitCode code = vxtool::FindCameraNumber(camera.camera); code != vxtool::ExitCode::Success)
      return code;
    const auto [first, isNew] = names.emplace(camera.camera.number, camera.camera.Name());
    if (!isNew)
      return vxtool::Fail(vxtool::ExitCode::Usage,
                          "--camera: " + first->second + " and " + camera.camera.Name() + " are the same camera");
  }
  return vxtool::TAcquireSeveral(all).Run();
}

vxtool::ExitCode RunTrace(const vxtool::TTraceOptions& options)
{
  if (options.command == vxtool::TraceCommand::Record) return vxtool::TTraceRecordCommand(options).Run();
  if (options.command == vxtool::TraceCommand::Stats) return vxtool::ShowTraceStatistics(options);
  if (options.command == vxtool::TraceCommand::Diff) return vxtool::CompareTraces(options);
  if (options.command == vxtool::TraceCommand::Redact) return vxtool::RedactTrace(options);
  if (options.command == vxtool::TraceCommand::Config) return vxtool::WriteTraceConfig(options);
  if (options.command == vxtool::TraceCommand::Images) return vxtool::WriteTraceImages(options);
  if (options.command == vxtool::TraceCommand::Replay) return vxtool::TReplayCommand(options).Run();
  return vxtool::PrintTrace(options);
}

// The trace is removed with the object, whatever comes first.
vxtool::ExitCode RunChecks(vxtool::TOptions& options)
{
  vxtool::TOwnTrace trace;
  if (const vxtool::ExitCode code = vxtool::FindCameraNumber(options.camera); code != vxtool::ExitCode::Success)
    return code;
  return vxtool::TCheckCommand(options.check, options.camera.number, options.isJson, trace).Run();
}

vxtool::ExitCode Run(vxtool::TOptions& options)
{
  if (options.command == vxtool::Command::Check) return RunChecks(options);
  if (options.command == vxtool::Command::Trace) return RunTrace(options.trace);
  if (const vxtool::ExitCode code = vxtool::FindCameraNumber(options.camera); code != vxtool::ExitCode::Success)
    return code;
  if (options.command == vxtool::Command::Get) return vxtool::GetFeatures(options);
  if (options.command == vxtool::Command::Set) return vxtool::SetFeatures(options);
  if (options.command == vxtool::Command::List) return vxtool::ListCameras(options);
  if (options.command == vxtool::Command::Convert) {
    std::error_code error;
    if (std::filesystem::is_regular_file(options.convert.directory, error))
      return vxtool::TConvertRawCommand(options.convert, options.isJson).Run();
    return vxtool::TConvertCommand(options.convert, options.isJson).Run();
  }
  if (options.command == vxtool::Command::WarmUp)
    return vxtool::TWarmUpCommand(options.warmUp, options.isQuiet).Run(options.camera.number, options.isJson);
  if (options.command == vxtool::Command::Live)
    return vxtool::TLiveCommand(options.camera.number, options.liveArguments).Run();
  if (options.command == vxtool::Command::Doctor)
    return vxtool::TDoctorCommand(options.doctor, options.camera.number, options.isJson).Run();
  if (options.showsFeatures) return vxtool::ShowFeatureSources(options);
  if (options.command == vxtool::Command::Info)
    return options.directory.empty() ? vxtool::ShowInfo(options) : vxtool::ShowRecordedRun(options);
  return Acquire(options);
}

} // namespace

int main(int argc, char** argv)
{
  try {
    vxtool::TCommandLine commandLine;
    auto options = commandLine.Parse(argc, argv);
    if (options && options->command == vxtool::Command::Check && !options->check.isListing)
      vxtool::TOwnTrace::Begin(argv);
    return options ? static_cast<int>(Run(*options)) : commandLine.ExitStatus();
  } catch (const std::exception& error) {
    std::fprintf(stderr, "vxmcd: %s\n", error.what());
    return static_cast<int>(vxtool::ExitCode::CameraError);
  }
}
