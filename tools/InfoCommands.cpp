// SPDX-License-Identifier: MIT
// Listing and describing cameras.
#include "tools/InfoCommands.h"

#include "tools/ResultText.h"
#include "tools/TFlatCamera.h"
#include "vxmcd.h"

#include <cstdio>
#include <functional>
#include <string>

namespace vxtool {

namespace {

// One line: what the call gave, or why it gave nothing.
void Row(const char* what, const char* function, unsigned int code, const std::function<std::string()>& value)
{
  const std::string text = code == RC_SUCCESS ? value() : "- (" + ResultText(function, code) + ")";
  std::printf("%-22s %s\n", what, text.c_str());
}

std::string Seconds(float seconds)
{
  char text[48];
  std::snprintf(text, sizeof text, "%.6g s", static_cast<double>(seconds));
  return text;
}

} // namespace

ExitCode ListCameras()
{
  long count = 0;
  const unsigned int code = GetAvailableCameras(&count);
  if (code != RC_SUCCESS) {
    std::fprintf(stderr, "vxmcd: %s\n", ResultText("GetAvailableCameras", code).c_str());
    return ExitCode::CameraError;
  }
  if (count == 0) {
    std::fprintf(stderr, "vxmcd: no camera is attached\n");
    return ExitCode::NoCamera;
  }
  std::printf("camera  handle\n");
  for (long index = 0; index < count; ++index) {
    long handle = 0;
    if (GetCameraHandle(index, &handle) == RC_SUCCESS) std::printf("%6ld  %6ld\n", index, handle);
  }
  return ExitCode::Success;
}

ExitCode DescribeCamera(int number)
{
  TFlatCamera camera;
  if (!camera.Open(number)) {
    std::fprintf(stderr, "vxmcd: %s\n", camera.Error().c_str());
    return ExitCode::NoCamera;
  }
  long handle = 0;
  Row("handle", "GetCurrentCamera", GetCurrentCamera(&handle), [&] { return std::to_string(handle); });
  char version[64] = "";
  Row("library version", "GetVersionInfo", GetVersionInfo(VXMCD_VERSION_LIBRARY, version, sizeof version - 1),
      [&] { return std::string(version); });
  int width = 0;
  int height = 0;
  Row("sensor size", "GetDetector", GetDetector(&width, &height),
      [&] { return std::to_string(width) + " x " + std::to_string(height) + " pixels"; });
  float exposure = 0.0F;
  float accumulate = 0.0F;
  float kinetic = 0.0F;
  const unsigned int timings = GetAcquisitionTimings(&exposure, &accumulate, &kinetic);
  Row("exposure", "GetAcquisitionTimings", timings, [&] { return Seconds(exposure); });
  Row("accumulation cycle", "GetAcquisitionTimings", timings, [&] { return Seconds(accumulate); });
  Row("kinetic cycle", "GetAcquisitionTimings", timings, [&] { return Seconds(kinetic); });
  float longest = 0.0F;
  Row("maximum exposure", "GetMaximumExposure", GetMaximumExposure(&longest), [&] { return Seconds(longest); });
  float readout = 0.0F;
  Row("readout time", "GetReadOutTime", GetReadOutTime(&readout), [&] { return Seconds(readout); });
  long ring = 0;
  Row("ring of frame buffers", "GetSizeOfCircularBuffer", GetSizeOfCircularBuffer(&ring),
      [&] { return std::to_string(ring) + " bytes"; });
  return ExitCode::Success;
}

} // namespace vxtool
