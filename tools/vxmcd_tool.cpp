// SPDX-License-Identifier: MIT
// The command-line tool: one program, one command a call.
#include "tools/CameraList.h"
#include "tools/FeatureCommands.h"
#include "tools/InfoCommands.h"
#include "tools/TAcquireCommand.h"
#include "tools/TCommandLine.h"
#include "tools/TConvertCommand.h"
#include "tools/TWarmUpCommand.h"

#include <cstdio>
#include <exception>

namespace {

vxtool::ExitCode Run(vxtool::TOptions& options)
{
  if (const vxtool::ExitCode code = vxtool::FindCameraNumber(options); code != vxtool::ExitCode::Success)
    return code;
  if (options.command == vxtool::Command::Get) return vxtool::GetFeatures(options);
  if (options.command == vxtool::Command::Set) return vxtool::SetFeatures(options);
  if (options.command == vxtool::Command::List) return vxtool::ListCameras(options);
  if (options.command == vxtool::Command::Convert)
    return vxtool::TConvertCommand(options.convert, options.isJson).Run();
  if (options.command == vxtool::Command::WarmUp)
    return vxtool::TWarmUpCommand(options.warmUp, options.isQuiet).Run(options.camera, options.isJson);
  if (options.showsFeatures) return vxtool::ShowFeatureSources(options);
  if (options.command == vxtool::Command::Info)
    return options.directory.empty() ? vxtool::ShowInfo(options) : vxtool::ShowRecordedRun(options);
  return vxtool::TAcquireCommand(options).Run();
}

} // namespace

int main(int argc, char** argv)
{
  try {
    vxtool::TCommandLine commandLine;
    auto options = commandLine.Parse(argc, argv);
    return options ? static_cast<int>(Run(*options)) : commandLine.ExitStatus();
  } catch (const std::exception& error) {
    std::fprintf(stderr, "vxmcd: %s\n", error.what());
    return static_cast<int>(vxtool::ExitCode::CameraError);
  }
}
