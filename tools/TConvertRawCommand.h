// SPDX-License-Identifier: MIT
// The command that makes a file of raw pixels and their description.
#pragma once

#include "tools/Messages.h"
#include "tools/Options.h"
#include "tools/TOutputs.h"
#include "tools/TRawPair.h"

namespace vxtool {

/// What TConvertCommand is for the directory of a run: reads the files, writes the output, reports. For one use; one
/// thread.
class TConvertRawCommand final
{
public:
  TConvertRawCommand(const TConvertOptions& options, bool isJson)
      : options_(options), isJson_(isJson), outputs_(options.output)
  {
  }
  ExitCode Run();

private:
  ExitCode CheckOptions();
  bool IsWanted(const TImageLabel& label) const;
  TRunFacts Facts() const;
  /// Passes the images on. Returns how it ended.
  ExitCode WriteImages();
  bool PrintReport(ExitCode code) const;

  TConvertOptions options_;
  bool isJson_;
  TRawPair pair_;
  TOutputs outputs_;
  long asked_ = 0;
  long taken_ = 0;
  double seconds_ = 0.0;
};

} // namespace vxtool
