// SPDX-License-Identifier: MIT
// Listing and describing cameras.
#include "tools/InfoCommands.h"

#include "tools/CameraList.h"
#include "tools/ConversionReport.h"
#include "tools/DescriptionReport.h"
#include "tools/Json.h"
#include "tools/Messages.h"
#include "tools/TFlatCamera.h"
#include "vxmcd.h"

#include <algorithm>
#include <cstdio>
#include <string>

namespace vxtool {

namespace {

ExitCode PrintOutput(const std::string& text)
{
  return Print(text) ? ExitCode::Success : ExitCode::OutputError;
}

std::string ListText(const std::vector<TAttachedCamera>& cameras)
{
  const auto shown = [](const std::optional<std::string>& text) { return text.value_or("-"); };
  std::size_t modelWidth = sizeof "model" - 1;
  std::size_t serialWidth = sizeof "serial number" - 1;
  for (const TAttachedCamera& camera : cameras) {
    modelWidth = std::max(modelWidth, shown(camera.model).size());
    serialWidth = std::max(serialWidth, shown(camera.serialText).size());
  }
  std::string text = "camera  handle  " + Padded("model", modelWidth) + "  " +
                     Padded("serial number", serialWidth) + "  source\n";
  for (const TAttachedCamera& camera : cameras) {
    char numbers[64];
    std::snprintf(numbers, sizeof numbers, "%6d  %6ld  ", camera.number, camera.handle);
    text += numbers + Padded(shown(camera.model), modelWidth) + "  " +
            Padded(shown(camera.serialText), serialWidth) + "  " + shown(camera.source);
    text += camera.problem.empty() ? "\n" : "  (" + camera.problem + ")\n";
  }
  return text;
}

std::string ListJson(const std::vector<TAttachedCamera>& cameras)
{
  Json list = Json::array();
  for (const TAttachedCamera& camera : cameras)
    list.push_back({{"camera", camera.number},
                    {"handle", camera.handle},
                    {"model", JsonOrNull(camera.model)},
                    {"serial", JsonOrNull(camera.serial)},
                    {"serial_text", JsonOrNull(camera.serialText)},
                    {"source", JsonOrNull(camera.source)},
                    {"problem", JsonTextOrNull(camera.problem)}});
  return JsonLine({{"cameras", list}});
}

} // namespace

ExitCode ListCameras(const TOptions& options)
{
  std::vector<TAttachedCamera> cameras;
  const unsigned int code = FindCameras(cameras);
  if (code != RC_SUCCESS) return Fail(ExitCode::CameraError, NoCameraListText(code));
  if (cameras.empty()) return Fail(ExitCode::NoCamera, "no camera is attached");
  return PrintOutput(options.isJson ? ListJson(cameras) : ListText(cameras));
}

ExitCode ShowInfo(const TOptions& options)
{
  TFlatCamera camera;
  if (!camera.Open(options.camera.number)) return Fail(ExitCode::NoCamera, camera.Error());
  const TCameraDescription description = DescribeOpenCamera(options.camera.number);
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
