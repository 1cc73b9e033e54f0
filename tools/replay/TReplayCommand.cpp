// SPDX-License-Identifier: MIT
// The command that makes the calls of a trace again.
#include "tools/replay/TReplayCommand.h"

#include "tools/CameraFeature.h"
#include "tools/Environment.h"
#include "tools/replay/TReplay.h"
#include "tools/TFeatureDevice.h"
#include "tools/TInterrupt.h"
#include "tools/TraceConfig.h"
#include "tools/TraceText.h"
#include "tools/TTraceRecordCommand.h"
#include "tools/Versions.h"
#include "trace/build_id.h"

#include <cmath>
#include <cstdlib>
#include <dlfcn.h>
#include <filesystem>
#include <sys/wait.h>
#include <unistd.h>

namespace vxtool {

namespace {

constexpr const char* kConfigVariable = "VXCORE_CONFIG";
constexpr const char* kIndependentVariable = "VXMCD_INDEPENDENT_CAMERAS";
constexpr int kMaxCameras = 128;

enum class Cameras
{
  Simulated,
  Other, ///< or one cannot be opened
  Misconfigured
};

Cameras KindOfCameras()
{
  for (int index = 0; index < kMaxCameras; ++index) {
    TFeatureDevice device;
    const int code = device.Open(index);
    if (code == VX_ERR_NO_SUCH_DEVICE) break;
    if (code == VX_ERR_CONFIGURATION) return Cameras::Misconfigured;
    if (code != VX_SUCCESS || FeatureText(device.Handle(), "DeviceSource") != "simulated") return Cameras::Other;
  }
  return Cameras::Simulated;
}

// Asks in a process of its own: the library would number the cameras in another way when they have been open before, and
// a camera may not answer.
Cameras AskKindOfCameras(double timeoutSeconds)
{
  const pid_t child = fork();
  if (child == 0) {
    alarm(static_cast<unsigned int>(std::ceil(timeoutSeconds)));
    _exit(static_cast<int>(KindOfCameras()));
  }
  int status = -1;
  const bool isKnown = child > 0 && waitpid(child, &status, 0) == child && WIFEXITED(status);
  return isKnown ? static_cast<Cameras>(WEXITSTATUS(status)) : Cameras::Other;
}

} // namespace

ExitCode TReplayCommand::Run()
{
  TTraceFile file;
  if (!ReadTrace(file, options_.file)) return ExitCode::InputError;
  const TReplayPlan plan(file);
  if (plan.Steps().empty()) return Fail(ExitCode::InputError, options_.file + ": has no calls of a program");
  std::error_code error;
  if (std::filesystem::equivalent(options_.file, options_.output, error))
    return Fail(ExitCode::Usage, options_.output + ": is the trace itself");
  if (!options_.output.empty()) return RunRecorded();

  const TInterrupt interrupt; // so that the files are removed
  const TReplayFiles files(options_.hasSamePaths);
  std::string config = options_.config;
  if (options_.isLikeRecorded) {
    const std::string text = ConfigOf(file);
    if (text.empty())
      return Fail(ExitCode::InputError,
                  options_.file + ": has no camera; were calls into the feature library recorded?");
    config = files.Write("cameras.ini", text);
    if (config.empty()) return Fail(ExitCode::OutputError, "the configuration of the cameras cannot be written");
  }
  // NOLINTNEXTLINE(concurrency-mt-unsafe): the process has one thread
  if (!config.empty()) setenv(kConfigVariable, config.c_str(), 1);

  TReplayReport report(plan);
  RemarkOnTrace(file, report);
  TReplay::TSettings settings;
  settings.isAtRecordedSpeed = options_.isAtRecordedSpeed;
  settings.timeoutSeconds = options_.timeoutSeconds;
  const Cameras cameras = AskKindOfCameras(options_.timeoutSeconds);
  if (cameras == Cameras::Misconfigured)
    return Fail(ExitCode::InputError, Variable(kConfigVariable) + ": is no configuration of cameras");
  settings.mayChangeHardware = cameras == Cameras::Simulated;
  TReplay replay(plan, files, settings, report);
  const bool hasEnded = replay.Run();
  const bool isPrinted = PrintReport(report);
  ExitCode code = !isPrinted               ? ExitCode::OutputError
                  : report.HasDifference() ? ExitCode::CameraError
                                           : ExitCode::Success;
  if (TInterrupt::Happened()) code = FirstOf(code, ExitCode::Interrupted);
  if (hasEnded) return code;
  files.Remove();
  _exit(static_cast<int>(code)); // a thread is inside of a call
}

ExitCode TReplayCommand::RunRecorded() const
{
  TTraceOptions options;
  options.output = options_.output;
  options.program = {ProgramFile(), "trace",     "replay",
                     options_.file, "--timeout", std::to_string(options_.timeoutSeconds)};
  const auto add = [&options](bool isAsked, std::initializer_list<std::string> words) {
    if (isAsked) options.program.insert(options.program.end(), words);
  };
  add(!options_.config.empty(), {"--config", options_.config});
  add(options_.isLikeRecorded, {"--like-recorded"});
  add(options_.isAtRecordedSpeed, {"--speed", "recorded"});
  add(options_.hasSamePaths, {"--same-paths"});
  add(options_.isJson, {"--json"});
  return TTraceRecordCommand(options).Run();
}

void TReplayCommand::RemarkOnTrace(const TTraceFile& file, TReplayReport& report) const
{
  if (file.DroppedChunks() > 0)
    report.Remark("the middle of the trace was dropped: calls after it may differ for lack of earlier ones");
  if (file.DroppedCalls() > 0) report.Remark(std::to_string(file.DroppedCalls()) + " calls are not in the trace");
  if (file.Fact("library_build") != BuildIdOf(dlsym(RTLD_DEFAULT, "Initialize")))
    report.Remark("recorded with another build of the library, " + file.Fact("library_build"));
  std::string recorded;
  for (const auto& variable : file.Variables())
    if (variable.name == kIndependentVariable) recorded = variable.value;
  if (recorded != Variable(kIndependentVariable))
    report.Remark(std::string(kIndependentVariable) + " was \"" + recorded + "\" for the program, and is \"" +
                  Variable(kIndependentVariable) + "\" here");
}

bool TReplayCommand::PrintReport(const TReplayReport& report) const
{
  return Print(options_.isJson ? JsonLine(report.Summary()) : report.Text());
}

} // namespace vxtool
