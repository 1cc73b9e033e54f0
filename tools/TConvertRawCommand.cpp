// SPDX-License-Identifier: MIT
// From raw pixels to a file of another format.
#include "tools/TConvertRawCommand.h"

#include "tools/Json.h"
#include "tools/OutputOptions.h"
#include "tools/RunReport.h"
#include "tools/TInterrupt.h"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <filesystem>

namespace vxtool {

ExitCode TConvertRawCommand::Run()
{
  const TInterrupt interrupt;
  if (!pair_.Open(options_.directory)) return Fail(ExitCode::InputError, pair_.Error());
  if (const ExitCode wrong = CheckOptions(); wrong != ExitCode::Success) return wrong;
  if (!outputs_.Open(pair_.Shape(), Facts())) return ExitCode::OutputError;
  const auto start = std::chrono::steady_clock::now();
  const ExitCode code = WriteImages();
  seconds_ = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
  return PrintReport(code) ? code : ExitCode::OutputError;
}

ExitCode TConvertRawCommand::CheckOptions()
{
  if (options_.isVerify || options_.isSalvage || options_.keepsDamaged)
    return Fail(ExitCode::Usage, "--verify, --salvage and --keep-damaged: are for the directory of a run, "
                                 "raw pixels have no checksums");
  if (options_.isFollowed) return Fail(ExitCode::Usage, "--follow: is for the directory of a run");
  const int bits = static_cast<int>(pair_.Shape().depth);
  if (options_.depth && *options_.depth != pair_.Shape().depth)
    return Fail(ExitCode::Usage, "--bits: the pixels have " + std::to_string(bits) + ", and stay as they are");
  asked_ = std::count_if(pair_.Labels().begin(), pair_.Labels().end(),
                         [this](const TImageLabel& label) { return IsWanted(label); });
  if (!options_.images.IsEmpty() && asked_ < options_.images.Count())
    return Fail(ExitCode::Usage, "--images: the file does not have all of them");
  for (const std::string& output : {options_.output.file, options_.output.preview}) {
    std::error_code error;
    for (const std::string& input : {options_.directory, options_.directory + ".json"})
      if (!output.empty() && std::filesystem::equivalent(output, input, error))
        return Fail(ExitCode::OutputError, output + ": is the file that is to be converted");
  }
  return ExitCode::Success;
}

bool TConvertRawCommand::IsWanted(const TImageLabel& label) const
{
  return options_.images.IsEmpty() || options_.images.Has(label.number);
}

TRunFacts TConvertRawCommand::Facts() const
{
  TRunFacts facts = pair_.Facts();
  facts.plannedImages = asked_;
  for (const TImageLabel& label : pair_.Labels())
    if (IsWanted(label)) facts.imageNumbers.Add(label.number, label.number);
  if (!options_.output.imageType.empty()) facts.imageType = options_.output.imageType;
  return facts;
}

ExitCode TConvertRawCommand::WriteImages()
{
  ExitCode code = ExitCode::Success;
  std::vector<std::byte> pixels;
  TImageLabel last;
  const std::vector<TImageLabel>& labels = pair_.Labels();
  for (std::size_t index = 0; index < labels.size() && code == ExitCode::Success; ++index) {
    if (!IsWanted(labels[index])) continue;
    if (TInterrupt::Happened()) {
      code = ExitCode::Interrupted;
    } else if (!pair_.Read(index, pixels)) {
      code = Fail(ExitCode::InputError, pair_.Error());
    } else {
      last = labels[index];
      ++taken_;
      if (outputs_.Images() && !outputs_.Images()->Write(pixels, last))
        code = Fail(ExitCode::OutputError, outputs_.Images()->Error());
    }
  }
  TFrameCounts counts = pair_.Counts();
  counts.fetched = taken_;
  counts.written = outputs_.ImagesWritten();
  return outputs_.Close(taken_ > 0 ? TPixelBytes(pixels) : TPixelBytes(), last, counts) ? code
                                                                                        : ExitCode::OutputError;
}

bool TConvertRawCommand::PrintReport(ExitCode code) const
{
  const std::string outcome = code == ExitCode::Interrupted ? "interrupted"
                              : code == ExitCode::Success   ? "complete"
                                                            : "failed";
  const std::string output = outputs_.ImagesWritten() > 0 ? options_.output.file : "";
  if (isJson_) {
    Json json = {{"outcome", outcome},
                 {"seconds", std::round(seconds_ * 1.0e6) / 1.0e6},
                 {"file", options_.directory},
                 {"asked", asked_},
                 {"written", outputs_.ImagesWritten()},
                 {"not_written", asked_ - outputs_.ImagesWritten()},
                 {"output", output}};
    json.update(FactsJson(pair_.Facts(), pair_.Shape()));
    return Print(JsonLine(json));
  }
  return options_.isQuiet ||
         Print(ReportHeadline(outcome, seconds_, taken_) + ReportRow("images asked for", asked_) +
               ReportRow("written", outputs_.ImagesWritten(),
                         output.empty() ? "" : FilesText(options_.output, outputs_.ImagesWritten())));
}

} // namespace vxtool
