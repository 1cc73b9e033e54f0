// SPDX-License-Identifier: MIT
// From options to a file with images in it.
#include "tools/TAcquireCommand.h"

#include "tools/RunReport.h"
#include "tools/TFitsCubeWriter.h"
#include "tools/TInterrupt.h"
#include "tools/TPngPreviewWriter.h"
#include "tools/TProgressLine.h"
#include "tools/TTiffStackWriter.h"

#include <chrono>
#include <cstdio>
#include <ctime>
#include <unistd.h>

namespace vxtool {

namespace {

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

void Say(const std::string& message)
{
  std::fprintf(stderr, "vxmcd: %s\n", message.c_str());
}

void SayLines(const std::string& lines)
{
  for (std::size_t start = 0; start < lines.size();) {
    const std::size_t end = lines.find('\n', start);
    Say(lines.substr(start, end - start));
    start = end == std::string::npos ? lines.size() : end + 1;
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
  if (!camera_.SetUp(options_) || !FindShape()) return Fail(ExitCode::CameraError, camera_.Error());
  SayLines(camera_.Notes());
  if (!OpenOutput()) return ExitCode::OutputError;

  TProgressLine line(stderr, isatty(STDERR_FILENO) == 1);
  TAcquisitionLoop loop(
      camera_, writer_.get(), Settings(), [] { return TInterrupt::Happened(); },
      [&](const TProgress& progress) {
        if (!options_.isQuiet) line.Show(progress);
      });
  const RunEnd end = loop.Run();
  line.Finish();
  return Finish(loop, end);
}

bool TAcquireCommand::FindShape()
{
  shape_.depth = options_.depth;
  shape_.width = options_.area.width;
  shape_.height = options_.area.height;
  return shape_.width > 0 || camera_.SensorSize(shape_.width, shape_.height);
}

bool TAcquireCommand::OpenOutput()
{
  const TRunFacts facts = Facts();
  if (!options_.output.empty()) {
    if (options_.format == FileFormat::Fits)
      writer_ = std::make_unique<TFitsCubeWriter>();
    else
      writer_ = std::make_unique<TTiffStackWriter>();
  }
  if (writer_ && !writer_->Open(options_.output, options_.overwrite, shape_, facts)) {
    Say(writer_->Error());
    return false;
  }
  if (!options_.preview.empty()) preview_ = std::make_unique<TPngPreviewWriter>();
  if (preview_ && !preview_->Open(options_.preview, options_.overwrite, shape_, facts)) {
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
  facts.camera = "vxmcd camera " + std::to_string(cameraNumber_);
  facts.startUtc = UtcNow();
  facts.trigger = TriggerName(options_.trigger);
  facts.exposureSeconds = camera_.ExposureSeconds();
  facts.cycleSeconds =
      options_.trigger == Trigger::Internal ? camera_.CycleSeconds() * options_.accumulations : 0.0;
  facts.accumulations = options_.accumulations;
  facts.plannedImages = Settings().wantedImages;
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
  settings.imageSeconds = camera_.ExposureSeconds() + camera_.ReadoutSeconds();
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

  const TRunTotals& totals = loop.Account().Totals();
  TRunSummary summary;
  summary.outcome = end == RunEnd::Complete ? "complete" : end == RunEnd::Interrupted ? "interrupted" : "failed";
  summary.seconds = loop.Seconds();
  summary.output = totals.written > 0 ? options_.output : "";
  summary.totals = totals;
  const std::string report = options_.isJson ? ReportJson(summary) : ReportText(summary);
  if (options_.isJson || !options_.isQuiet) std::fputs(report.c_str(), stdout);
  if (totals.Lost() > 0)
    Say(std::to_string(totals.Lost()) +
        " frames are missing between the images (lost in the camera or overwritten)");
  const double expected = loop.Seconds() / (camera_.CycleSeconds() * options_.accumulations);
  if (options_.trigger == Trigger::Internal && loop.Seconds() > 1.0 && expected > 10.0 &&
      static_cast<double>(totals.Produced()) < kSlowPart * expected)
    Say("the camera made far fewer frames than its frame rate promises");
  if (!loop.Account().AddsUp()) return Fail(ExitCode::CameraError, "internal error: the counts do not add up");

  if (std::fflush(stdout) != 0 || isOutputFailed_) return ExitCode::OutputError;
  if (end == RunEnd::CameraFailed) return ExitCode::CameraError;
  if (end == RunEnd::Interrupted) return ExitCode::Interrupted;
  return totals.Lost() > 0 ? ExitCode::FramesLost : ExitCode::Success;
}

} // namespace vxtool
