// SPDX-License-Identifier: MIT
// The command that makes a file of a recorded run.
#pragma once

#include "tools/Messages.h"
#include "tools/Options.h"
#include "tools/TOutputs.h"
#include "tools/TRunConversion.h"

#include <memory>

namespace vxtool {

/// Reads what a directory says of its run, opens the output, converts, closes the output, reports. Prints to
/// standard output (the counts) and standard error (progress, notes, errors). For one use; needs a TInterrupt
/// while it works if Ctrl-C is to leave a valid file.
class TConvertCommand final
{
public:
  TConvertCommand(const TConvertOptions& options, bool isJson)
      : options_(options), isJson_(isJson), outputs_(options.output)
  {
  }
  /// Puts these into the output instead of what the directory says about the run, which is less.
  void UseFacts(const TRunFacts& facts) { facts_ = facts; }
  /// The command as a whole.
  ExitCode Run();
  /// All of it but the report.
  ExitCode Convert();
  /// Images in the output.
  long Written() const { return Counts().written; }
  /// What became of the images asked for.
  TConversionCounts Counts() const { return conversion_ ? conversion_->Counts() : TConversionCounts{}; }

private:
  std::optional<ExitCode> ReadRun();
  bool ReadDescription();
  void SayHowItHasEnded() const;
  void SayIfIncomplete() const;
  void SayWhatIsDamaged() const;
  std::optional<ExitCode> CheckOptions();
  bool IsFileOfRun(const std::string& path) const;
  bool OpenOutput();
  void CloseOutput();
  void SayWhatIsMissing() const;
  ExitCode FinalExitCode() const;
  bool PrintReport() const;

  TConvertOptions options_;
  bool isJson_;
  std::optional<TRunFacts> facts_;
  TRunDescription run_;
  TRunIndex index_;
  PixelDepth depth_ = PixelDepth::Bits16;
  TOutputs outputs_;
  std::unique_ptr<TRunFollower> follower_; // of a run that is being recorded
  std::unique_ptr<TRunConversion> conversion_;
  RunEnd end_ = RunEnd::Complete;
  bool isOutputFailed_ = false;
};

} // namespace vxtool
