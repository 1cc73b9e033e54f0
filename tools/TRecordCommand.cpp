// SPDX-License-Identifier: MIT
// From a camera to the directory of a run, and from there to a file.
#include "tools/TRecordCommand.h"

#include "tools/Messages.h"
#include "tools/TConvertCommand.h"
#include "tools/TImageFilesWriter.h"
#include "tools/TInterrupt.h"
#include "tools/TOutputFile.h"
#include "tools/TRunLoop.h"
#include "vxmcd.h"

#include <array>
#include <cerrno>
#include <chrono>
#include <cstdio>
#include <fcntl.h>
#include <filesystem>
#include <sys/file.h>
#include <sys/stat.h>
#include <system_error>
#include <thread>
#include <unistd.h>

namespace vxtool {

namespace {

constexpr std::chrono::seconds kMaxWriting{60};   // of what is left to write at the end of a run
constexpr std::chrono::seconds kMaxUnreadable{2}; // of a description that may be readable in a moment

// "838885376 bytes (838.9 MB)"
std::string BytesText(unsigned long long bytes)
{
  std::array<char, 64> text{};
  std::snprintf(text.data(), text.size(), "%llu bytes (%.1f MB)", bytes, static_cast<double>(bytes) / 1.0e6);
  return text.data();
}

// Whether another run is being recorded into the directory: the library locks it for the time of a run.
bool IsRecordedInto(const std::string& directory)
{
  const int descriptor = open(directory.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
  if (descriptor < 0) return false;
  const bool isLocked = flock(descriptor, LOCK_SH | LOCK_NB) != 0 && errno == EWOULDBLOCK;
  close(descriptor);
  return isLocked;
}

// Whether the library can record into the directory, as far as that is known without trying. It makes those that are
// missing.
bool CanBeRecordedInto(const std::string& directory, std::string& message)
{
  const std::filesystem::path here = ".";
  std::filesystem::path place = directory;
  struct stat status = {};
  while (stat(place.c_str(), &status) != 0 && errno == ENOENT && place != here)
    place = place.has_parent_path() ? place.parent_path() : here;
  const int found = stat(place.c_str(), &status);
  const bool isFile = found == 0 && !S_ISDIR(status.st_mode);
  if (found == 0 && !isFile && access(place.c_str(), W_OK | X_OK) == 0) {
    if (!IsRecordedInto(directory)) return true;
    message = directory + ": another run is being recorded into it";
    return false;
  }
  message = directory + ": cannot be recorded into: " + std::generic_category().message(isFile ? ENOTDIR : errno);
  return false;
}

// The description of a run that is over. A failure is reported before everything is on the disk, and the
// description is completed after that. @param earlierStart  of the run before: it will not change
TRunDescription FinalDescription(const std::string& directory, const std::string& earlierStart)
{
  const auto start = std::chrono::steady_clock::now();
  for (;;) {
    TRunDescription run;
    const bool isRead = run.Read(directory);
    if (run.IsMissing() || (isRead && run.Values().startTime == earlierStart)) return run;
    if (isRead && run.Values().state != RunFormat::State::kRecording) return run;
    if (std::chrono::steady_clock::now() > start + (isRead ? kMaxWriting : kMaxUnreadable)) return run;
    std::this_thread::sleep_for(std::chrono::milliseconds(10)); // nothing signals it
  }
}

} // namespace

bool TRecordCommand::CheckFiles() const
{
  const TOutputOptions& output = options_.output;
  std::string message;
  const std::string& directory = options_.spool.directory;
  if (!directory.empty() &&
      (IsProtectedFile(directory + "/" + RunFormat::kDescriptionName, output.overwrite, message) ||
       !CanBeRecordedInto(directory, message))) {
    Say(message);
    return false;
  }
  for (const std::string& path : {output.file, output.preview, options_.saveSettingsFile}) {
    if (path.empty()) continue;
    const bool isPattern = output.isFileForEach && path == output.file;
    const bool isProtected = isPattern ? HasProtectedImageFile(path, output.overwrite, {}, message)
                                       : IsProtectedFile(path, output.overwrite, message);
    if (!isProtected && (isPattern ? CanBeInFolder(path, message) : CanBeCreated(path, message))) continue;
    Say(message);
    return false;
  }
  return true;
}

void TRecordCommand::WarnOfFullDisk()
{
  unsigned long long needed = 0;
  unsigned long long free = 0;
  if (vxmcd_GetSpoolSpace(&needed, &free) != RC_SUCCESS || needed <= free) return;
  Say("warning: the run needs " + BytesText(needed) + " on the disk, and " + BytesText(free) +
      " are free; it will end when the disk is full");
}

TRunResult TRecordCommand::Run(ICamera& camera, const TRunSettings& settings, const TRunFacts& facts,
                               TProgressLine& line, const std::function<void()>& beforeStart) const
{
  const std::string& directory = options_.spool.directory;
  TRunDescription earlier; // is replaced by the new run, unless that cannot start
  earlier.Read(directory);
  std::size_t imageBytes = 0;
  TRunLoop loop(
      camera, nullptr, settings, [] { return TInterrupt::Happened(); },
      [&](const TProgress& progress) {
        TRunDescription run; // says how large an image is
        if (imageBytes == 0 && run.Read(directory)) imageBytes = static_cast<std::size_t>(run.Values().imageBytes);
        TProgress shown = progress;
        if (imageBytes > 0) shown.imageBytes = imageBytes;
        if (!options_.isQuiet) line.Show(shown);
      });
  beforeStart();
  const RunEnd end = loop.Run();
  line.Finish();
  if (!loop.Message().empty()) Say(loop.Message());

  const std::optional<long> written = AskWritten(earlier.Values().startTime, end);
  loop.FinishRecorded(written.value_or(0));
  TRunResult result{.end = end, .statistics = loop.Statistics(), .seconds = loop.Seconds()};
  result.isWrittenKnown = written.has_value();
  if (!written) {
    result.isOutputFailed = true;
    return result;
  }
  const TFrameCounts& counts = result.statistics.Counts();
  if (end != RunEnd::Complete || counts.notWritten > 0)
    Say(std::to_string(counts.written) + " of " + std::to_string(settings.wantedImages) + " images are in " +
        directory);
  result.isOutputFailed = end == RunEnd::OutputFailed || (end == RunEnd::Complete && counts.notWritten > 0);
  if (counts.written > 0) MakeOutput(facts, result);
  return result;
}

// Images on the disk, by the directory, which also says why these are not more; nothing when it is not known.
std::optional<long> TRecordCommand::AskWritten(const std::string& earlierStart, RunEnd end) const
{
  const TRunDescription run = FinalDescription(options_.spool.directory, earlierStart);
  if (run.IsMissing() && end == RunEnd::OutputFailed) return 0; // the library could not even begin
  if (!run.Error().empty()) {
    Say(run.Error() + ": it is not known how many images are on the disk");
    return std::nullopt;
  }
  if (run.Values().startTime == earlierStart) return 0;
  if (run.Values().state == RunFormat::State::kRecording)
    Say("the library is still writing images; what follows is how far it has come");
  if (!run.Values().failure.empty()) Say(run.Values().failure);
  return static_cast<long>(run.Values().imagesWritten);
}

void TRecordCommand::MakeOutput(const TRunFacts& facts, TRunResult& result) const
{
  if (options_.output.IsEmpty()) return;
  if (result.end == RunEnd::Interrupted) {
    Say("interrupted: no other file was made of them; vxmcd convert " + options_.spool.directory +
        " --output FILE does that");
    return;
  }
  TConvertOptions options;
  options.directory = options_.spool.directory;
  options.output = options_.output;
  options.depth = options_.depth;
  options.isQuiet = options_.isQuiet;
  TConvertCommand convert(options, false);
  convert.UseFacts(facts);
  const ExitCode code = convert.Convert();
  result.hasOutput = convert.Written() > 0;
  result.statistics.AddClipped(convert.Counts().clippedPixels, convert.Counts().cut);
  if (code == ExitCode::Interrupted) {
    result.end = RunEnd::Interrupted;
    return;
  }
  const bool isKnown = code == ExitCode::Success || code == ExitCode::FramesLost; // of the run itself
  result.isOutputFailed = result.isOutputFailed || !isKnown;
}

} // namespace vxtool
