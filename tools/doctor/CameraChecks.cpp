// SPDX-License-Identifier: MIT
// Cameras: whether they are there and answer.
#include "tools/doctor/Checks.h"
#include "tools/Messages.h"

#include <cstdlib>

namespace vxtool {

namespace {

constexpr double kBytesPerPixel = 2.0;

void CheckOpenCamera(TFindings& findings, const TCameraDescription& camera)
{
  std::string text =
      "camera " + std::to_string(camera.number) + " opens: " + camera.model.value.value_or("no model");
  if (camera.serial.value) text += ", serial number " + std::to_string(*camera.serial.value);
  if (camera.firmware.value) text += ", firmware " + std::to_string(camera.firmware.value->build);
  if (camera.temperature.value) {
    char celsius[32];
    std::snprintf(celsius, sizeof celsius, ", sensor %.1f C",
                  static_cast<double>(camera.temperature.value->celsius));
    text += celsius;
  }
  findings.Right(text);
  if (!camera.model.value || camera.model.value->empty())
    findings.Problem("the camera does not say its model: " + ResultText(camera.model.function, camera.model.code),
                     "unplug the camera, wait 5 s, and plug it in again");
}

} // namespace

double TCameraFacts::ImageBytes() const
{
  if (!description || !description->sensorPixels.value) return 0.0;
  const auto [width, height] = *description->sensorPixels.value;
  return kBytesPerPixel * width * height;
}

double TCameraFacts::BytesPerSecond() const
{
  if (!description || !description->timings.value) return 0.0;
  const double seconds = static_cast<double>(description->timings.value->kineticSeconds);
  return seconds > 0.0 ? ImageBytes() / seconds : 0.0;
}

void CheckCameras(TFindings& findings, const TCameraFacts& facts, int camera)
{
  if (facts.listCode != RC_SUCCESS) {
    const std::string error = ConfigurationError();
    if (!error.empty())
      findings.Problem("the configuration of the cameras is wrong: " + error,
                       error.find(": line ") != std::string::npos
                           ? "correct that line"
                           : "export VXCORE_CONFIG=FILE with a file that is there");
    else
      findings.Problem("the cameras cannot be listed: " + ResultText("GetAvailableCameras", facts.listCode),
                       "VXMCD_LOG=info vxmcd list");
    return;
  }
  if (facts.cameras.empty())
    findings.Problem("no camera is attached",
                     "see docs/real-cameras.md for real cameras, docs/simulator.md for simulated ones");
  for (const TAttachedCamera& one : facts.cameras) {
    std::string text = "camera " + std::to_string(one.number);
    const std::string what =
        one.model.value_or("unknown model") + ", " + one.source.value_or("which does not say where it is");
    if (one.problem.empty())
      findings.Right(text.append(": ").append(what));
    else
      findings.Problem(text.append(" cannot be opened: ").append(one.problem),
                       "close the other program, or check power, cable and address");
  }
  if (facts.description)
    CheckOpenCamera(findings, *facts.description);
  else if (camera >= static_cast<int>(facts.cameras.size()) && !facts.cameras.empty())
    findings.Problem(facts.openError, "vxmcd list names the cameras");
  else if (!facts.cameras.empty() && facts.cameras[static_cast<std::size_t>(camera)].problem.empty())
    findings.Problem(facts.openError, "VXMCD_LOG=info vxmcd info --camera " + std::to_string(camera));
}

} // namespace vxtool
