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

#include <functional>
#include <optional>
#include <string>
#include <utility>

namespace vxtool {

/// Opens the camera, sets it up, waits for its temperature, opens the output, runs the loop, closes the output,
/// reports. A run that the library records to disk is left to TRecordCommand. Prints to standard output (the
/// counts) and standard error (progress, notes, errors). For one use, by Run(), or by the steps that Run() takes, which
/// may be taken in different threads, one at a time.
class TAcquireCommand final
{
public:
  /// @param name  of the camera, for the report; "" where there is one only
  explicit TAcquireCommand(const TOptions& options, std::string name = "")
      : options_(options.acquire),
        cameraNumber_(options.camera.number),
        isJson_(options.isJson),
        name_(std::move(name))
  {
  }
  ExitCode Run();

  /// Opens the camera, and checks that files can be made; how it ended, if it did not succeed. Needs a TInterrupt, as do
  /// the next steps.
  std::optional<ExitCode> Open();
  /// Sets the camera up; how it ended, if it did not succeed.
  std::optional<ExitCode> SetUp();
  /// Cools the sensor and takes the images.
  /// @param waitForOthers  called when the sensor is cool, and again when only the start is left
  ExitCode TakeImages(const std::function<void()>& waitForOthers);
  /// Whether WarmUp() is due, however the other steps have ended.
  bool IsToWarmUp() const { return options_.cooling.isWarmedUp && (isSetUp_ || setUp_.HasSwitchedCoolerOn()); }
  /// Needs a TInterrupt, which must not have happened.
  ExitCode WarmUp();

private:
  std::optional<ExitCode> RampTemperature(TProgressLine& line);
  /// False with a message.
  bool SaveSettings();
  void NoteOtherModel() const;
  std::string SettingsFileText() const; // for the end of a message
  std::optional<ExitCode> WaitForTemperature(TProgressLine& line);
  bool IsRecorded() const { return !options_.spool.directory.empty(); }
  // Called in a turn of the camera, as are the next two.
  TRunSettings Settings() const;
  TRunFacts Facts() const;
  /// Why an image cannot be taken in each interval, "" if it can.
  std::string WhyNotAtInterval() const;
  ExitCode Fetch(TProgressLine& line, const std::function<void()>& waitForOthers);
  template <typename Loop>
  ExitCode Finish(const Loop& loop, RunEnd end, TOutputs& outputs);
  bool PrintReport(const TRunResult& result);
  ExitCode ReportAndFinish(const TRunResult& result);

  TAcquireOptions options_;
  int cameraNumber_;
  bool isJson_;
  std::string name_;
  bool isSetUp_ = false;
  TFlatCamera camera_;
  TCameraSetUp setUp_;
  TImageShape shape_;
  TRunSettings settings_;
  TRunFacts facts_;
};

} // namespace vxtool
