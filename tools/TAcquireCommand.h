// SPDX-License-Identifier: MIT
// The command that takes images.
#pragma once

#include "tools/ExitCode.h"
#include "tools/IImageWriter.h"
#include "tools/Options.h"
#include "tools/TAcquisitionLoop.h"
#include "tools/TCameraSetUp.h"
#include "tools/TFlatCamera.h"
#include "tools/TProgressLine.h"
#include "tools/TSpoolLoop.h"

#include <memory>

namespace vxtool {

/// Opens the camera, sets it up, waits for its temperature, opens the output, runs the loop, closes the output,
/// reports. A run that the library records to disk has a loop of its own, and its output is made afterwards of
/// what is on disk. Prints to standard output (the counts) and standard error (progress, notes, errors). Run() is
/// for one use.
class TAcquireCommand final
{
public:
  explicit TAcquireCommand(const TOptions& options)
      : options_(options.acquire), cameraNumber_(options.camera), isJson_(options.isJson)
  {
  }
  ExitCode Run();

private:
  ExitCode Fail(ExitCode code, const std::string& message);
  std::optional<ExitCode> WaitForTemperature(TProgressLine& line);
  bool OpenOutput();
  TLoopSettings Settings() const;
  TRunFacts Facts() const;
  void ClosePreview(const TAcquisitionLoop& loop);
  void PrintReport(const TRunAccount& account, double seconds, RunEnd end);
  ExitCode Finish(TAcquisitionLoop& loop, RunEnd end);
  ExitCode Judge(const TRunAccount& account, double seconds, RunEnd end);
  bool IsRecorded() const { return !options_.spool.directory.empty(); }
  bool CheckFiles() const;
  ExitCode Record(TProgressLine& line);
  RunEnd MakeOutput(RunEnd end);

  TAcquireOptions options_;
  int cameraNumber_;
  bool isJson_;
  TFlatCamera camera_;
  TCameraSetUp setUp_;
  TImageShape shape_;
  TRunFacts facts_;
  std::unique_ptr<IImageWriter> writer_;
  std::unique_ptr<IImageWriter> preview_;
  bool isOutputFailed_ = false;
  bool hasOutput_ = false; // of a recorded run
};

} // namespace vxtool
