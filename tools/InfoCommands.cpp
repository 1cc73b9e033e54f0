// SPDX-License-Identifier: MIT
// Listing and describing cameras.
#include "tools/InfoCommands.h"

#include "tools/DescriptionReport.h"
#include "tools/JsonText.h"
#include "tools/ResultText.h"
#include "tools/TFlatCamera.h"
#include "tools/ToolText.h"
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
  if (code != RC_SUCCESS) {
    std::fprintf(stderr, "vxmcd: %s\n", ResultText("GetAvailableCameras", code).c_str());
    return ExitCode::CameraError;
  }
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
  if (count == 0) std::fprintf(stderr, "vxmcd: no camera is attached\n");
  ExitCode printed = ExitCode::Success;
  if (options.isJson)
    printed = PrintOutput(JsonLine({{"cameras", cameras}}));
  else if (count > 0)
    printed = PrintOutput(text);
  return count == 0 ? ExitCode::NoCamera : printed;
}

ExitCode ShowInfo(const TOptions& options)
{
  TFlatCamera camera;
  if (!camera.Open(options.camera)) {
    std::fprintf(stderr, "vxmcd: %s\n", camera.Error().c_str());
    return ExitCode::NoCamera;
  }
  const TCameraDescription description = DescribeOpenCamera(options.camera);
  return PrintOutput(options.isJson ? DescriptionJson(description) : DescriptionText(description));
}

} // namespace vxtool
