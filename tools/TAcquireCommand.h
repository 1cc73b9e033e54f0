// SPDX-License-Identifier: MIT
// The command that takes images.
#pragma once

#include "tools/ExitCode.h"
#include "tools/IImageWriter.h"
#include "tools/Options.h"
#include "tools/TAcquisitionLoop.h"
#include "tools/TFlatCamera.h"

#include <memory>

namespace vxtool {

/// Opens the camera, sets it up, opens the output, runs the loop, closes the output, reports. Prints to standard
/// output (the counts) and standard error (progress, notes, errors). Run() is for one use.
class TAcquireCommand final
{
public:
  explicit TAcquireCommand(const TOptions& options) : options_(options.acquire), cameraNumber_(options.camera) {}
  ExitCode Run();

private:
  ExitCode Fail(ExitCode code, const std::string& message);
  bool FindShape();
  bool OpenOutput();
  TLoopSettings Settings() const;
  TRunFacts Facts() const;
  void ClosePreview(const TAcquisitionLoop& loop);
  ExitCode Finish(TAcquisitionLoop& loop, RunEnd end);

  TAcquireOptions options_;
  int cameraNumber_;
  TFlatCamera camera_;
  TImageShape shape_;
  std::unique_ptr<IImageWriter> writer_;
  std::unique_ptr<IImageWriter> preview_;
  bool isOutputFailed_ = false;
};

} // namespace vxtool
