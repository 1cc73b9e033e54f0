// SPDX-License-Identifier: MIT
// From options to a file with images in it.
#include "tools/TAcquireCommand.h"

#include "tools/CameraDescription.h"
#include "tools/MakeImageWriter.h"
#include "tools/ResultText.h"
#include "tools/RunReport.h"
#include "tools/TConvertCommand.h"
#include "tools/TCoolingWait.h"
#include "tools/TInterrupt.h"
#include "tools/ToolText.h"
#include "tools/TOutputFile.h"
#include "tools/TPngPreviewWriter.h"

#include <chrono>
#include <cstdio>
#include <ctime>
#include <thread>
#include <unistd.h>

namespace vxtool {

namespace {

constexpr std::chrono::seconds kLongestWriting{60}; // of what is left to write at the end of a run
constexpr double kSlowPart = 0.6; // images at less than this part of the pace asked for are worth a note

std::string UtcNow()
{
  using namespace std::chrono;
  const auto now = system_clock::now();
  const std::time_t seconds = system_clock::to_time_t(now);
  const auto milliseconds = duration_cast<std::chrono::milliseconds>(now.time_since_epoch()).count() % 1000;
  std::tm parts = {};
  gmtime_r(&seconds, &parts);
  char day[32];
  char text[48];
  std::strftime(day, sizeof day, "%Y-%m-%dT%H:%M:%S", &parts);
  std::snprintf(text, sizeof text, "%s.%03d", day, static_cast<int>(milliseconds));
  return text;
}

// The description of a run that is over. A failure is reported before everything is on the disk, and the
// description is completed after that. @param earlierStart  of the run before: it will not change
TSpoolRun FinalDescription(const std::string& directory, const std::string& earlierStart)
{
  const auto deadline = std::chrono::steady_clock::now() + kLongestWriting;
  for (;;) {
    TSpoolRun run;
    if (!run.Read(directory) || run.Facts().startTime == earlierStart) return run;
    if (run.Facts().state != SpoolState::Recording || std::chrono::steady_clock::now() > deadline) return run;
    std::this_thread::sleep_for(std::chrono::milliseconds(10)); // nothing announces it
  }
}

} // namespace

ExitCode TAcquireCommand::Fail(ExitCode code, const std::string& message)
{
  Say(message);
  return code;
}

ExitCode TAcquireCommand::Run()
{
  const TInterrupt interrupt;
  if (!camera_.Open(cameraNumber_)) return Fail(ExitCode::NoCamera, camera_.Error());
  if (IsRecorded() && !CheckFiles()) return ExitCode::OutputError;
  if (!setUp_.Apply(options_)) return Fail(ExitCode::CameraError, setUp_.Error());
  camera_.CountExposures(options_.accumulations);
  SayLines(setUp_.Notes());
  TProgressLine line(stderr, isatty(STDERR_FILENO) == 1);
  if (options_.cooling.isWaiting) {
    if (const std::optional<ExitCode> end = WaitForTemperature(line)) return *end;
  }
  shape_ = {setUp_.ImageWidth(), setUp_.ImageHeight(), options_.depth};
  facts_ = Facts();
  if (IsRecorded()) return Record(line);
  if (!OpenOutput()) return ExitCode::OutputError;

  TAcquisitionLoop loop(
      camera_, writer_.get(), Settings(), [] { return TInterrupt::Happened(); },
      [&](const TProgress& progress) {
        if (!options_.isQuiet) line.Show(progress);
      });
  const RunEnd end = loop.Run();
  line.Finish();
  return Finish(loop, end);
}

std::optional<ExitCode> TAcquireCommand::WaitForTemperature(TProgressLine& line)
{
  TCoolingWait wait(options_.cooling.targetCelsius.value_or(0), options_.cooling.waitSeconds);
  const CoolingEnd end = wait.Run(
      AskTemperature, [] { return TInterrupt::Happened(); },
      [&](const TCoolingProgress& progress) {
        if (!options_.isQuiet) line.ShowText(CoolingText(progress), progress.seconds);
      });
  line.Finish();
  if (end == CoolingEnd::Failed) return Fail(ExitCode::CameraError, wait.Message());
  if (end == CoolingEnd::Interrupted)
    return Fail(ExitCode::Interrupted, "interrupted while cooling; no image was taken");
  if (!options_.isQuiet) Say(CoolingText(wait.Last()));
  return std::nullopt;
}

bool TAcquireCommand::OpenOutput()
{
  if (!options_.output.empty()) writer_ = MakeImageWriter(options_.format.value_or(FileFormat::Tiff));
  if (writer_ && !writer_->Open(options_.output, options_.overwrite, shape_, facts_)) {
    Say(writer_->Error());
    return false;
  }
  if (!options_.preview.empty()) preview_ = std::make_unique<TPngPreviewWriter>();
  if (preview_ && !preview_->Open(options_.preview, options_.overwrite, shape_, facts_)) {
    Say(preview_->Error());
    if (writer_) writer_->Close(TRunTotals{}); // leaves no file behind: it has no image
    return false;
  }
  return true;
}

TRunFacts TAcquireCommand::Facts() const
{
  TRunFacts facts;
  facts.software = std::string("vxmcd tool ") + VXTOOL_VERSION;
  facts.camera = PrintableAscii(AskModel().value.value_or("vxmcd camera " + std::to_string(cameraNumber_)));
  facts.serial = AskSerial().value;
  facts.startUtc = UtcNow();
  facts.trigger = TriggerName(options_.trigger);
  facts.exposureSeconds = setUp_.ExposureSeconds();
  facts.cycleSeconds =
      options_.trigger == Trigger::Internal ? setUp_.CycleSeconds() * options_.accumulations : 0.0;
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

TLoopSettings TAcquireCommand::Settings() const
{
  TLoopSettings settings;
  settings.shape = shape_;
  settings.isEndless = options_.mode == RunMode::Continuous;
  settings.wantedImages = options_.frames.value_or(settings.isEndless ? 0 : 1);
  settings.isSoftwareTriggered = options_.trigger == Trigger::Software;
  settings.isPaced = options_.trigger == Trigger::Internal || options_.trigger == Trigger::ExternalStart;
  settings.noImageSeconds = options_.noImageSeconds;
  settings.triggerSeconds = options_.cycleSeconds.value_or(0.0);
  settings.imageSeconds = setUp_.ExposureSeconds() + setUp_.ReadoutSeconds();
  return settings;
}

void TAcquireCommand::ClosePreview(const TAcquisitionLoop& loop)
{
  if (!preview_) return;
  if (loop.LastImage().empty())
    Say(options_.preview + ": not written, there was no image");
  else
    preview_->Write(loop.LastImage(), loop.LastLabel());
  if (preview_->Close(loop.Account().Totals()) || loop.LastImage().empty()) return;
  Say(preview_->Error());
  isOutputFailed_ = true;
}

void TAcquireCommand::PrintReport(const TRunAccount& account, double seconds, RunEnd end)
{
  TRunSummary summary;
  summary.totals = account.Totals();
  summary.outcome = end == RunEnd::Complete ? "complete" : end == RunEnd::Interrupted ? "interrupted" : "failed";
  summary.seconds = seconds;
  summary.spoolDirectory = options_.spool.directory;
  const bool hasOutput = IsRecorded() ? hasOutput_ : summary.totals.written > 0;
  summary.output = hasOutput ? options_.output : "";
  summary.shape = shape_;
  summary.facts = facts_;
  const std::optional<TTemperature> temperature = AskTemperature().value;
  if (temperature) summary.celsiusAtEnd = temperature->celsius;
  const std::string report = isJson_ ? ReportJson(summary) : ReportText(summary);
  if (isJson_ || !options_.isQuiet) std::fputs(report.c_str(), stdout);
  if (options_.cooling.isWaiting && temperature && temperature->state != RC_TEMP_STABILIZED)
    Say("the temperature is not stable any more: " + ResultText("GetTemperatureF", temperature->state));
}

ExitCode TAcquireCommand::Finish(TAcquisitionLoop& loop, RunEnd end)
{
  if (!loop.Message().empty()) Say(loop.Message());
  ClosePreview(loop);
  isOutputFailed_ = isOutputFailed_ || end == RunEnd::OutputFailed;
  if (writer_) {
    const bool wasFailed = !writer_->Error().empty();
    if (!writer_->Close(loop.Account().Totals())) {
      if (!wasFailed) Say(writer_->Error());
      isOutputFailed_ = true;
    }
    loop.Account().TakeBackWritten(loop.Account().Written() - writer_->ImagesWritten());
  }

  return Judge(loop.Account(), loop.Seconds(), end);
}

ExitCode TAcquireCommand::Judge(const TRunAccount& account, double seconds, RunEnd end)
{
  PrintReport(account, seconds, end);
  const TRunTotals& totals = account.Totals();
  if (totals.Lost() > 0)
    Say(std::to_string(totals.Lost()) +
        " frames are missing between the images (lost in the camera or overwritten)");
  const double expected = seconds / (setUp_.CycleSeconds() * options_.accumulations);
  if (options_.trigger == Trigger::Internal && seconds > 1.0 && expected > 10.0 &&
      static_cast<double>(totals.Produced()) < kSlowPart * expected)
    Say("the camera made far fewer frames than its frame rate promises");
  if (!account.AddsUp()) return Fail(ExitCode::CameraError, "internal error: the counts do not add up");

  if (std::fflush(stdout) != 0 || isOutputFailed_) return ExitCode::OutputError;
  if (end == RunEnd::CameraFailed) return ExitCode::CameraError;
  if (end == RunEnd::Interrupted) return ExitCode::Interrupted;
  return totals.Lost() > 0 ? ExitCode::FramesLost : ExitCode::Success;
}

// What would be destroyed is found before the camera does anything.
bool TAcquireCommand::CheckFiles() const
{
  std::string message;
  bool isProtected =
      IsProtectedFile(options_.spool.directory + "/" + kSpoolDescriptionName, options_.overwrite, message);
  for (const std::string& path : {options_.output, options_.preview})
    if (!isProtected && !path.empty()) isProtected = IsProtectedFile(path, options_.overwrite, message);
  if (isProtected) Say(message);
  return !isProtected;
}

ExitCode TAcquireCommand::Record(TProgressLine& line)
{
  const std::string& directory = options_.spool.directory;
  TSpoolRun earlier; // one that is to be replaced, and stays if that does not succeed
  earlier.Read(directory);
  std::size_t imageBytes = 0;
  TSpoolLoop loop(
      camera_, Settings(), [] { return TInterrupt::Happened(); },
      [&](const TProgress& progress) {
        TSpoolRun run; // says how large an image is
        if (imageBytes == 0 && run.Read(directory)) imageBytes = static_cast<std::size_t>(run.Facts().imageBytes);
        TProgress shown = progress;
        if (imageBytes > 0) shown.imageBytes = imageBytes;
        if (!options_.isQuiet) line.Show(shown);
      });
  const RunEnd end = loop.Run();
  line.Finish();
  if (!loop.Message().empty()) Say(loop.Message());

  const TSpoolRun run = FinalDescription(directory, earlier.Facts().startTime);
  const bool isDescribed = run.Error().empty() && run.Facts().startTime != earlier.Facts().startTime;
  if (isDescribed && run.Facts().state == SpoolState::Recording)
    Say("the library is still writing images; what follows is how far it has come");
  if (isDescribed && !run.Facts().failure.empty()) Say(run.Facts().failure);
  loop.Finish(isDescribed ? static_cast<long>(run.Facts().imagesWritten) : 0);
  const TRunTotals& totals = loop.Account().Totals();
  if (end != RunEnd::Complete || totals.notWritten > 0)
    Say(std::to_string(totals.written) + " of " + std::to_string(Settings().wantedImages) + " images are in " +
        directory);
  isOutputFailed_ = end == RunEnd::OutputFailed || (end == RunEnd::Complete && totals.notWritten > 0);
  const RunEnd outputEnd = totals.written > 0 ? MakeOutput(end) : end;
  return Judge(loop.Account(), loop.Seconds(), outputEnd);
}

// How run and output together have ended.
RunEnd TAcquireCommand::MakeOutput(RunEnd end)
{
  if (options_.output.empty() && options_.preview.empty()) return end;
  if (end == RunEnd::Interrupted) {
    Say("interrupted: no other file was made of them; vxmcd convert " + options_.spool.directory +
        " --output FILE does that");
    return end;
  }
  TConvertOptions options;
  options.directory = options_.spool.directory;
  options.output = options_.output;
  options.format = options_.format;
  options.depth = options_.depth;
  options.preview = options_.preview;
  options.overwrite = options_.overwrite;
  options.isQuiet = options_.isQuiet;
  TConvertCommand convert(options, false);
  convert.UseFacts(facts_);
  const ExitCode code = convert.Convert();
  hasOutput_ = convert.Written() > 0;
  if (code == ExitCode::Interrupted) return RunEnd::Interrupted;
  const bool isKnown = code == ExitCode::Success || code == ExitCode::FramesLost; // of the run itself
  isOutputFailed_ = isOutputFailed_ || !isKnown;
  return end;
}

} // namespace vxtool
