// SPDX-License-Identifier: MIT
// From the directory of a run to a file of its images.
#include "tools/TConvertCommand.h"

#include "tools/ConversionReport.h"
#include "tools/ImageData.h"
#include "tools/Messages.h"
#include "tools/OutputOptions.h"
#include "tools/RunReport.h"
#include "tools/TInterrupt.h"
#include "tools/TProgressLine.h"

#include <chrono>
#include <cstdio>
#include <filesystem>
#include <thread>
#include <unistd.h>

namespace vxtool {

ExitCode TConvertCommand::Run()
{
  const TInterrupt interrupt;
  const ExitCode code = Convert();
  return !conversion_ || PrintReport() ? code : ExitCode::OutputError;
}

ExitCode TConvertCommand::Convert()
{
  if (const std::optional<ExitCode> wrong = ReadRun()) return *wrong;
  if (const std::optional<ExitCode> wrong = CheckOptions()) return *wrong;
  TProgressLine line(stderr, isatty(STDERR_FILENO) == 1);
  TConversionSettings settings;
  settings.images = options_.images;
  settings.depth = depth_;
  settings.isSalvage = options_.isSalvage;
  settings.keepsDamaged = options_.keepsDamaged;
  settings.keepsLast = outputs_.HasPreview();
  auto conversion = std::make_unique<TRunConversion>(
      run_, index_, settings, outputs_.Images(), [] { return TInterrupt::Happened(); },
      [&](const TProgress& progress) {
        if (!options_.isQuiet) line.Show(progress);
      });
  conversion_.swap(conversion);
  if (follower_) conversion_->Follow(*follower_);
  if (!OpenOutput()) {
    conversion_.reset(); // there is nothing to report
    return ExitCode::OutputError;
  }
  end_ = conversion_->Run();
  line.Finish();
  CloseOutput();
  if (follower_) SayHowItHasEnded();
  SayWhatIsMissing();
  return FinalExitCode();
}

std::optional<ExitCode> TConvertCommand::ReadRun()
{
  if (!ReadDescription())
    return Fail(TInterrupt::Happened() ? ExitCode::Interrupted : ExitCode::InputError, run_.Error());
  for (const std::string& note : run_.Notes()) Say(std::string(RunFormat::kDescriptionName) + ": " + note);
  const RunFormat::State state = run_.Values().state;
  if (options_.isFollowed && state == RunFormat::State::kRecording) {
    follower_ = std::make_unique<TRunFollower>(run_, index_, options_.patienceSeconds);
    return std::nullopt;
  }
  if (!index_.Read(options_.directory, run_.ImageLimit(), TInterrupt::Happened)) {
    if (TInterrupt::Happened()) return Fail(ExitCode::Interrupted, index_.Error());
    if (index_.IsMissing() && state != RunFormat::State::kComplete && !options_.isSalvage)
      return Fail(ExitCode::InputError, index_.Error() +
                                            ": it is not known which images are whole; --salvage takes "
                                            "those that are not all zeros");
    Say(index_.Error() + ": there are no checksums to compare with");
  }
  SayWhatIsDamaged();
  SayIfIncomplete();
  return std::nullopt;
}

// A run that is to be followed may not have begun.
bool TConvertCommand::ReadDescription()
{
  using Clock = std::chrono::steady_clock;
  const auto end = Clock::now() + std::chrono::duration<double>(options_.patienceSeconds);
  while (!run_.Read(options_.directory)) {
    const bool isWaiting = options_.isFollowed && run_.IsMissing() && Clock::now() < end;
    if (!isWaiting || TInterrupt::Happened()) return false;
    std::this_thread::sleep_for(std::chrono::milliseconds(50));
  }
  return true;
}

void TConvertCommand::SayWhatIsDamaged() const
{
  if (index_.Damaged() > 0)
    Say(std::string(RunFormat::kIndexName) + ": " + std::to_string(index_.Damaged()) +
        " records are damaged and do not count");
}

void TConvertCommand::SayHowItHasEnded() const
{
  const Growth growth = conversion_->LastGrowth();
  char seconds[32];
  std::snprintf(seconds, sizeof seconds, "%g", follower_->PatienceSeconds());
  if (growth == Growth::Stalled)
    Say(std::string("nothing was added to the run for ") + seconds +
        " s: the program that records it has ended without saying so, or waits; --timeout sets how long to wait");
  if (growth == Growth::Replaced)
    Say(options_.directory + ": another run has taken the place of this one, or it was removed");
  if (growth != Growth::Ended) return;
  if (!index_.Error().empty()) Say(index_.Error());
  SayWhatIsDamaged();
  SayIfIncomplete();
}

void TConvertCommand::SayIfIncomplete() const
{
  if (run_.Values().state != RunFormat::State::kComplete && !options_.isQuiet)
    Say("the run is not complete: " + RunStateText(run_.Values()));
}

std::optional<ExitCode> TConvertCommand::CheckOptions()
{
  const bool hasOutput = !options_.output.IsEmpty();
  if (hasOutput && !run_.Layout()) return Fail(ExitCode::InputError, run_.LayoutProblem());
  if (!options_.images.IsEmpty() && options_.images.Ranges().back().last > run_.ImageLimit())
    return Fail(ExitCode::Usage, "--images: the run has " + std::to_string(run_.ImageLimit()) + " images");
  for (const std::string& path : {options_.output.file, options_.output.preview})
    if (IsFileOfRun(path)) return Fail(ExitCode::OutputError, path + ": is a file of the run itself");
  if (!run_.Layout()) return std::nullopt;
  const RunFormat::Encoding encoding = run_.Layout()->encoding;
  depth_ = options_.depth.value_or(WholeDepth(encoding));
  const bool isOfSums = encoding == RunFormat::Encoding::kMono32; // which may fit
  if (depth_ < WholeDepth(encoding) && !isOfSums)
    return Fail(ExitCode::Usage, "--bits: pixels of " + run_.Values().encoding + " do not fit into " +
                                     std::to_string(static_cast<int>(depth_)));
  return std::nullopt;
}

// Whether writing the file would destroy what is to be read.
bool TConvertCommand::IsFileOfRun(const std::string& path) const
{
  if (path.empty()) return false;
  std::error_code error;
  const std::filesystem::path file = std::filesystem::weakly_canonical(path, error);
  if (error) return false;
  const std::string name = file.filename().string();
  const bool isName =
      name == RunFormat::kDescriptionName || name == RunFormat::kIndexName || RunFormat::ImageFileNumber(name);
  return isName && std::filesystem::equivalent(file.parent_path(), options_.directory, error);
}

bool TConvertCommand::OpenOutput()
{
  const TImageShape shape =
      run_.Layout() ? TImageShape{run_.Layout()->width, run_.Layout()->height, depth_} : TImageShape{};
  const TRunFacts recorded = FactsOf(run_);
  TRunFacts facts = facts_.value_or(recorded);
  facts.ticksPerSecond = recorded.ticksPerSecond;
  facts.firstArrival = recorded.firstArrival;
  facts.plannedImages = conversion_->Counts().asked;
  facts.imageNumbers = conversion_->Asked();
  facts.imageType = options_.output.imageType;
  return outputs_.Open(shape, facts);
}

void TConvertCommand::CloseOutput()
{
  isOutputFailed_ = end_ == RunEnd::OutputFailed;
  if (isOutputFailed_) Say(outputs_.Images()->Error());
  const bool isClosed =
      outputs_.Close(conversion_->LastImage(), conversion_->LastLabel(), conversion_->RunCounts());
  isOutputFailed_ = isOutputFailed_ || !isClosed;
  if (!outputs_.Images()) return;
  conversion_->MoveToNotWritten(conversion_->Counts().written - outputs_.ImagesWritten());
  if (outputs_.ImagesWritten() == 0) Say(options_.output.file + ": not written, there was no image");
}

void TConvertCommand::SayWhatIsMissing() const
{
  const TConversionCounts& c = conversion_->Counts();
  for (const std::string& problem : conversion_->Problems()) Say(problem);
  const auto say = [](long count, const std::string& what) {
    if (count > 0) Say(std::to_string(count) + (count == 1 ? " image " : " images ") + what);
  };
  const bool isWithoutRecords = index_.Count() == 0;
  say(c.unrecorded - c.unrecordedData,
      isWithoutRecords ? "of zeros only, left out" : "without a record in the index, left out");
  say(c.unrecordedData,
      "with data and without a record in the index, left out: torn, or whole behind an index that a "
      "power failure has cut short; --salvage --keep-damaged takes them unchecked");
  say(c.unreadable, "that cannot be read, left out");
  say(c.wrong, options_.keepsDamaged ? "with a wrong checksum, taken all the same"
                                     : "with a wrong checksum, left out; --keep-damaged takes them");
  say(c.unchecked, "without a checksum, taken unchecked");
  if (c.clippedPixels > 0) Say(ClippedText(c.clippedPixels, c.cut, depth_));
}

ExitCode TConvertCommand::FinalExitCode() const
{
  const TConversionCounts& c = conversion_->Counts();
  if (!c.AddsUp()) return Fail(ExitCode::OutputError, "internal error: the counts do not add up");
  if (isOutputFailed_) return ExitCode::OutputError;
  if (end_ == RunEnd::Interrupted) return ExitCode::Interrupted;
  if (conversion_->LastGrowth() == Growth::Replaced) return ExitCode::InputError;
  const RunFormat::State state = run_.Values().state;
  const bool isCutShort = (state == RunFormat::State::kRecording || state == RunFormat::State::kFailed) &&
                          !options_.isSalvage && options_.images.IsEmpty();
  const bool isUnproved = options_.isVerify && c.unchecked > 0;
  const bool isAllThere = c.asked > 0 && c.Missing() == 0;
  const bool isWhole = isAllThere && c.clippedPixels == 0;
  return isWhole && !isCutShort && !isUnproved ? ExitCode::Success : ExitCode::FramesLost;
}

bool TConvertCommand::PrintReport() const
{
  const bool isFailed = isOutputFailed_ || conversion_->LastGrowth() == Growth::Replaced;
  const std::string outcome = isFailed ? "failed" : end_ == RunEnd::Interrupted ? "interrupted" : "complete";
  if (!isJson_ && options_.isQuiet) return true;
  const std::string file = isJson_ ? options_.output.file : FilesText(options_.output, Written());
  const auto report = isJson_ ? ConversionJson : ConversionText;
  return Print(report(run_, *conversion_, outcome, Written() > 0 ? file : "", depth_));
}

} // namespace vxtool
