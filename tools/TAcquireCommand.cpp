// SPDX-License-Identifier: MIT
// From options to a file with images in it.
#include "tools/TAcquireCommand.h"

#include "runs/host_time.h"
#include "tools/CameraDescription.h"
#include "tools/Messages.h"
#include "tools/OutputOptions.h"
#include "tools/RunReport.h"
#include "tools/TCoolingWait.h"
#include "tools/TInterrupt.h"
#include "tools/TIntervalLoop.h"
#include "tools/TOutputFile.h"
#include "tools/TRecordCommand.h"
#include "tools/TRunLoop.h"
#include "tools/TTemperatureRamp.h"
#include "tools/TWarmUpCommand.h"

#include <cstdio>
#include <span>
#include <unistd.h>

namespace vxtool {

namespace {

constexpr double kSlowPart = 0.6; // images at less than this part of the frame rate asked for are worth a note

constexpr const char* kInterruptedText = "interrupted while cooling; no image was taken";

// The time of day in ms, without the Z, which the files say in another way.
std::string UtcNow()
{
  constexpr std::size_t kLength = sizeof "2026-01-31T12:00:00.000" - 1;
  return UtcText(HostTimeNs()).substr(0, kLength);
}

} // namespace

ExitCode TAcquireCommand::Run()
{
  ExitCode code = ExitCode::Success;
  {
    const TInterrupt interrupt;
    std::optional<ExitCode> refused = Open();
    if (!refused) refused = SetUp();
    code = refused ? *refused : TakeImages([] {});
  }
  if (!IsToWarmUp()) return code;
  // However the run has ended, also by Ctrl-C, which from here on ends the warm-up.
  const TInterrupt interrupt;
  return FirstOf(code, WarmUp());
}

std::optional<ExitCode> TAcquireCommand::Open()
{
  if (!camera_.Open(cameraNumber_)) return Fail(ExitCode::NoCamera, camera_.Error());
  if (!TRecordCommand(options_).CheckFiles()) return ExitCode::OutputError;
  return std::nullopt;
}

std::optional<ExitCode> TAcquireCommand::SetUp()
{
  camera_.Choose();
  NoteOtherModel();
  isSetUp_ = setUp_.Apply(options_);
  const std::string why = isSetUp_ ? WhyNotAtInterval() : setUp_.Error() + SettingsFileText();
  if (!why.empty()) {
    isSetUp_ = false;
    return Fail(ExitCode::CameraError, why);
  }
  camera_.CountExposures(options_.accumulations);
  SayLines(setUp_.Notes());
  if (!SaveSettings()) return ExitCode::OutputError;
  if (options_.output.IsEmpty() && !IsRecorded())
    Say("no image will be kept: there is no --output, --preview or --spool");
  if (IsRecorded()) TRecordCommand::WarnOfFullDisk();
  return std::nullopt;
}

ExitCode TAcquireCommand::TakeImages(const std::function<void()>& waitForOthers)
{
  TProgressLine line(stderr, isatty(STDERR_FILENO) == 1);
  if (options_.cooling.rampPerMinute && options_.cooling.targetCelsius) {
    if (const std::optional<ExitCode> end = RampTemperature(line)) return *end;
  }
  if (options_.cooling.isWaiting) {
    if (const std::optional<ExitCode> end = WaitForTemperature(line)) return *end;
  }
  waitForOthers(); // the files have the time from here on
  if (TInterrupt::Happened())
    return Fail(ExitCode::Interrupted, "interrupted; no image was taken"); // and no file made
  shape_ = {setUp_.ImageWidth(), setUp_.ImageHeight(), options_.depth};
  camera_.Choose();
  settings_ = Settings();
  facts_ = Facts();
  if (!IsRecorded()) return Fetch(line, waitForOthers);
  return ReportAndFinish(TRecordCommand(options_).Run(camera_, settings_, facts_, line, waitForOthers));
}

ExitCode TAcquireCommand::WarmUp()
{
  TWarmUpOptions options;
  options.degreesPerMinute = options_.cooling.rampPerMinute.value_or(options.degreesPerMinute);
  return TWarmUpCommand(options, options_.isQuiet).WarmOpenCamera(camera_);
}

std::optional<ExitCode> TAcquireCommand::RampTemperature(TProgressLine& line)
{
  TTemperatureRamp ramp(setUp_.FirstTargetCelsius(), *options_.cooling.targetCelsius,
                        *options_.cooling.rampPerMinute);
  const auto setTarget = [this](int celsius) { return camera_.Do([&] { return SetTemperature(celsius); }); };
  const CoolingEnd end = ramp.Run({.ask = [this] { return camera_.Ask(AskTemperature); },
                                   .setTarget = setTarget,
                                   .isInterrupted = TInterrupt::Happened,
                                   .onProgress =
                                       [&](const TCoolingProgress& progress) {
                                         if (!options_.isQuiet)
                                           line.ShowText(CoolingText(progress), progress.seconds);
                                       }},
                                  false);
  line.Finish();
  if (end == CoolingEnd::Failed) return Fail(ExitCode::CameraError, "--ramp: " + ramp.Message());
  if (end == CoolingEnd::Interrupted) return Fail(ExitCode::Interrupted, kInterruptedText);
  if (!options_.isQuiet) Say(CoolingText(ramp.Last()));
  return std::nullopt;
}

std::string TAcquireCommand::SettingsFileText() const
{
  return options_.settingsFile.empty() ? "" : "; the settings of " + options_.settingsFile + " are in force, too";
}

void TAcquireCommand::NoteOtherModel() const
{
  const std::string model = AskModel().value.value_or("");
  if (!options_.settingsModel.empty() && !model.empty() && options_.settingsModel != model)
    Say(options_.settingsFile + ": the settings are of a " + options_.settingsModel + ", this camera is a " +
        model);
}

bool TAcquireCommand::SaveSettings()
{
  if (options_.saveSettingsFile.empty()) return true;
  const std::string text = SettingsText(options_, setUp_.InForce());
  TOutputFile file;
  if (file.Create(options_.saveSettingsFile, options_.output.overwrite) &&
      file.WriteAt(0, std::as_bytes(std::span(text))) && file.Close())
    return true;
  Say(file.Error());
  return false;
}

std::optional<ExitCode> TAcquireCommand::WaitForTemperature(TProgressLine& line)
{
  TCoolingWait wait(options_.cooling.targetCelsius.value_or(0), options_.cooling.waitSeconds);
  const auto ask = [this] { return camera_.Ask(AskTemperature); };
  const CoolingEnd end = wait.Run(ask, TInterrupt::Happened, [&](const TCoolingProgress& progress) {
    if (!options_.isQuiet) line.ShowText(CoolingText(progress), progress.seconds);
  });
  line.Finish();
  if (end == CoolingEnd::Failed) return Fail(ExitCode::CameraError, wait.Message());
  if (end == CoolingEnd::Interrupted) return Fail(ExitCode::Interrupted, kInterruptedText);
  if (!options_.isQuiet) Say(CoolingText(wait.Last()));
  return std::nullopt;
}

ExitCode TAcquireCommand::Fetch(TProgressLine& line, const std::function<void()>& waitForOthers)
{
  TOutputs outputs(options_.output);
  if (!outputs.Open(shape_, facts_)) return ExitCode::OutputError;
  waitForOthers();
  const auto show = [&](const TProgress& progress) {
    if (!options_.isQuiet) line.Show(progress);
  };
  const auto note = [&](const std::string& text) {
    line.Finish();
    Say(text);
  };
  if (options_.intervalSeconds) {
    TIntervalLoop loop(camera_, outputs.Images(), settings_, TInterrupt::Happened, show, note);
    const RunEnd end = loop.Run();
    line.Finish();
    return Finish(loop, end, outputs);
  }
  TRunLoop loop(camera_, outputs.Images(), settings_, TInterrupt::Happened, show);
  const RunEnd end = loop.Run();
  line.Finish();
  return Finish(loop, end, outputs);
}

template <typename Loop>
ExitCode TAcquireCommand::Finish(const Loop& loop, RunEnd end, TOutputs& outputs)
{
  if (!loop.Message().empty()) Say(loop.Message());

  const TFrameCounts& counts = loop.Statistics().Counts();
  if (counts.clippedPixels > 0) Say(ClippedText(counts.clippedPixels, counts.clippedImages, shape_.depth));
  if (outputs.HasPreview() && loop.LastImage().empty())
    Say(options_.output.preview + ": not written, there was no image");
  TRunResult result{.end = end, .statistics = loop.Statistics(), .seconds = loop.Seconds()};
  const bool isClosed = outputs.Close(loop.LastImage(), loop.LastLabel(), result.statistics.Counts());
  result.statistics.MoveToNotWritten(result.statistics.Written() - outputs.ImagesWritten());
  result.hasOutput = result.statistics.Written() > 0;
  result.isOutputFailed = end == RunEnd::OutputFailed || !isClosed;
  return ReportAndFinish(result);
}

std::string TAcquireCommand::WhyNotAtInterval() const
{
  if (!options_.intervalSeconds || options_.trigger == Trigger::ExternalExposure) return "";
  const TRunSettings settings = Settings();
  const double seconds = options_.trigger == Trigger::Internal ? settings.firstImageSeconds
                                                               : settings.imageSeconds * options_.accumulations;
  if (seconds <= *options_.intervalSeconds) return "";
  char text[100];
  std::snprintf(text, sizeof text, "--interval: %g is not accepted; an image takes %.3g s",
                *options_.intervalSeconds, seconds);
  return text;
}

TRunFacts TAcquireCommand::Facts() const
{
  TRunFacts facts;
  facts.software = std::string("vxmcd tool ") + VXTOOL_VERSION;
  facts.camera = PrintableAscii(AskModel().value.value_or("vxmcd camera " + std::to_string(cameraNumber_)));
  facts.serial = AskSerial().value;
  facts.startUtc = UtcNow();
  facts.trigger = TriggerName(options_.trigger);
  facts.imageType = options_.output.imageType;
  if (options_.trigger != Trigger::ExternalExposure) facts.exposureSeconds = setUp_.ExposureSeconds();
  if (setUp_.ReadoutSeconds() > 0.0) facts.readoutSeconds = setUp_.ReadoutSeconds();
  facts.cycleSeconds =
      options_.trigger == Trigger::Internal ? setUp_.CycleSeconds() * options_.accumulations : 0.0;
  if (options_.intervalSeconds) {
    facts.exposureCycleSeconds = options_.trigger == Trigger::Internal ? setUp_.CycleSeconds() : 0.0;
    facts.cycleSeconds = IsStartedByPulse(options_.trigger) ? 0.0 : *options_.intervalSeconds;
  }
  facts.accumulations = options_.accumulations;
  facts.plannedImages = Settings().wantedImages;
  facts.area = setUp_.Area();
  facts.readout = setUp_.Readout();
  facts.readout.gain = PrintableAscii(facts.readout.gain);
  facts.readout.amplifier = PrintableAscii(facts.readout.amplifier);
  if (const std::optional<TPair<float>> size = AskPixelSize().value) {
    facts.pixelWidthMicrometres = size->first;
    facts.pixelHeightMicrometres = size->second;
  }
  if (const std::optional<TTemperature> temperature = AskTemperature().value)
    facts.sensorCelsius = temperature->celsius;
  facts.targetCelsius = options_.cooling.targetCelsius;
  return facts;
}

TRunSettings TAcquireCommand::Settings() const
{
  TRunSettings settings;
  settings.shape = shape_;
  settings.isRecorded = !options_.spool.directory.empty();
  settings.isEndless = options_.mode == RunMode::Continuous;
  settings.wantedImages = options_.frames.value_or(settings.isEndless || options_.intervalSeconds ? 0 : 1);
  settings.intervalSeconds = options_.intervalSeconds.value_or(0.0);
  settings.areSums = options_.accumulations > 1;
  settings.isSoftwareTriggered = options_.trigger == Trigger::Software;
  settings.hasSteadyRate = HasSteadyRate(options_.trigger);
  settings.noImageSeconds = options_.noImageSeconds;
  settings.triggerSeconds = options_.cycleSeconds.value_or(0.0);
  settings.imageSeconds = setUp_.ExposureSeconds() + setUp_.ReadoutSeconds();
  if (options_.trigger == Trigger::Internal) {
    settings.firstImageSeconds = settings.imageSeconds + (options_.accumulations - 1) * setUp_.CycleSeconds();
    settings.nextImageSeconds = options_.accumulations * setUp_.CycleSeconds();
  }
  return settings;
}

bool TAcquireCommand::PrintReport(const TRunResult& result)
{
  const RunEnd end = result.end;
  TRunSummary summary;
  summary.counts = result.statistics.Counts();
  summary.outcome = end == RunEnd::Complete ? "complete" : end == RunEnd::Interrupted ? "interrupted" : "failed";
  summary.isWrittenKnown = result.isWrittenKnown;
  summary.seconds = result.seconds;
  summary.spoolDirectory = options_.spool.directory;
  if (result.hasOutput)
    summary.output = isJson_ ? options_.output.file : FilesText(options_.output, summary.counts.written);
  summary.shape = shape_;
  summary.facts = facts_;
  summary.camera = cameraNumber_;
  summary.intervalSeconds = options_.intervalSeconds;
  const std::optional<TTemperature> temperature = camera_.Ask(AskTemperature).value;
  if (temperature) summary.celsiusAtEnd = temperature->celsius;
  const std::string report =
      isJson_ ? RunReportJson(summary) : (name_.empty() ? "" : name_ + ": ") + RunReportText(summary);
  const bool isPrinted = (!isJson_ && options_.isQuiet) || Print(report);
  if (options_.cooling.isWaiting && temperature && temperature->state != RC_TEMP_STABILIZED)
    Say("the temperature is not stable any more: " + ResultText("GetTemperatureF", temperature->state));
  return isPrinted;
}

ExitCode TAcquireCommand::ReportAndFinish(const TRunResult& result)
{
  const bool isPrinted = PrintReport(result);
  const TFrameCounts& counts = result.statistics.Counts();
  if (counts.Lost() > 0)
    Say(std::to_string(counts.Lost()) +
        " frames are missing between the images (lost in the camera, overwritten, or not taken in time)");
  const double expected = result.seconds / (setUp_.CycleSeconds() * options_.accumulations);
  if (options_.trigger == Trigger::Internal && !options_.intervalSeconds && result.seconds > 1.0 &&
      expected > 10.0 && static_cast<double>(counts.Produced()) < kSlowPart * expected)
    Say("the camera made far fewer frames than its frame rate would give");
  if (!result.statistics.AddsUp()) return Fail(ExitCode::CameraError, "internal error: the counts do not add up");

  if (!isPrinted || result.isOutputFailed) return ExitCode::OutputError;
  if (result.end == RunEnd::CameraFailed) return ExitCode::CameraError;
  if (result.end == RunEnd::Interrupted) return ExitCode::Interrupted;
  return counts.Lost() > 0 || counts.clippedPixels > 0 ? ExitCode::FramesLost : ExitCode::Success;
}

} // namespace vxtool
