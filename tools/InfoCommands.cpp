// SPDX-License-Identifier: MIT
// Listing and describing cameras.
#include "tools/InfoCommands.h"

#include "tools/ConversionReport.h"
#include "tools/DescriptionReport.h"
#include "tools/Json.h"
#include "tools/Messages.h"
#include "tools/TFlatCamera.h"
#include "vxmcd.h"

#include <cstdio>
#include <string>

namespace vxtool {

namespace {

ExitCode PrintOutput(const std::string& text)
{
  return Print(text) ? ExitCode::Success : ExitCode::OutputError;
}

} // namespace

ExitCode ListCameras(const TOptions& options)
{
  long count = 0;
  const unsigned int code = GetAvailableCameras(&count);
  if (code != RC_SUCCESS) return Fail(ExitCode::CameraError, NoCameraListText(code));
  Json cameras = Json::array();
  std::string text = "camera  handle\n";
  for (long index = 0; index < count; ++index) {
    long handle = 0;
    if (GetCameraHandle(index, &handle) != RC_SUCCESS) continue;
    cameras.push_back({{"camera", index}, {"handle", handle}});
    char line[64];
    std::snprintf(line, sizeof line, "%6ld  %6ld\n", index, handle);
    text += line;
  }
  if (count == 0) return Fail(ExitCode::NoCamera, "no camera is attached");
  return PrintOutput(options.isJson ? JsonLine({{"cameras", cameras}}) : text);
}

ExitCode ShowInfo(const TOptions& options)
{
  TFlatCamera camera;
  if (!camera.Open(options.camera)) return Fail(ExitCode::NoCamera, camera.Error());
  const TCameraDescription description = DescribeOpenCamera(options.camera);
  return PrintOutput(options.isJson ? DescriptionJson(description) : DescriptionText(description));
}

ExitCode ShowRecordedRun(const TOptions& options)
{
  TRunDescription run;
  if (!run.Read(options.directory)) return Fail(ExitCode::InputError, run.Error());
  for (const std::string& note : run.Notes()) Say(std::string(RunFormat::kDescriptionName) + ": " + note);
  TRunIndex index;
  if (!index.Read(options.directory, run.ImageLimit())) Say(index.Error());
  const TRunImages files(options.directory, run.Values().imagesPerFile, run.Values().imageBytes);
  const std::string text =
      options.isJson ? RecordedRunJson(run, index, files) : RecordedRunText(run, index, files);
  return Print(text) ? ExitCode::Success : ExitCode::OutputError;
}

} // namespace vxtool
