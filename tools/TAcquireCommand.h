// SPDX-License-Identifier: MIT
// The command that takes images.
#pragma once

#include "tools/Messages.h"
#include "tools/Options.h"
#include "tools/Run.h"
#include "tools/TCameraSetUp.h"
#include "tools/TFlatCamera.h"
#include "tools/TOutputs.h"
#include "tools/TProgressLine.h"

#include <optional>
#include <string>

namespace vxtool {

/// Opens the camera, sets it up, waits for its temperature, opens the output, runs the loop, closes the output,
/// reports. A run that the library records to disk is left to TRecordCommand. Prints to standard output (the
/// counts) and standard error (progress, notes, errors). Run() is for one use.
class TAcquireCommand final
{
public:
  explicit TAcquireCommand(const TOptions& options)
      : options_(options.acquire), cameraNumber_(options.camera), isJson_(options.isJson)
  {
  }
  ExitCode Run();

private:
  /// The run, as far as it goes, with the camera set up.
  ExitCode RunSetUp();
  std::optional<ExitCode> RampTemperature(TProgressLine& line);
  /// False with a message.
  bool SaveSettings();
  void NoteOtherModel() const;
  std::string SettingsFileText() const; // for the end of a message
  std::optional<ExitCode> WaitForTemperature(TProgressLine& line);
  bool IsRecorded() const { return !options_.spool.directory.empty(); }
  TRunSettings Settings() const;
  TRunFacts Facts() const;
  /// Why an image cannot be taken in each interval, "" if it can.
  std::string WhyNotAtInterval() const;
  ExitCode Fetch(TProgressLine& line);
  template <typename Loop>
  ExitCode Finish(const Loop& loop, RunEnd end, TOutputs& outputs);
  bool PrintReport(const TRunResult& result);
  ExitCode ReportAndFinish(const TRunResult& result);

  TAcquireOptions options_;
  int cameraNumber_;
  bool isJson_;
  TFlatCamera camera_;
  TCameraSetUp setUp_;
  TImageShape shape_;
  TRunFacts facts_;
};

} // namespace vxtool
