// SPDX-License-Identifier: MIT
// Asks each attached camera what it is.
#include "tools/CameraList.h"

#include "tools/CameraFeature.h"
#include "tools/TFeatureDevice.h"
#include "tools/TFlatCamera.h"
#include "utility/utf8.h"
#include "vxmcd.h"

namespace vxtool {

namespace {

void Ask(TAttachedCamera& camera)
{
  TFeatureDevice device;
  if (const int code = device.Open(camera.number); code != VX_SUCCESS) {
    camera.problem = FeatureCodeText("VX_Open", code);
    return;
  }
  camera.model = FeatureText(device.Handle(), "CameraModel");
  camera.serialText = FeatureText(device.Handle(), "SerialNumber");
  camera.source = FeatureText(device.Handle(), "DeviceSource");
  if (!camera.serialText) return;
  int number = 0;
  extractNumberFromString(FromUtf8(*camera.serialText).data(), &number);
  if (number != 0) camera.serial = number;
}

bool HasSerial(const TAttachedCamera& camera, const std::string& serial)
{
  return camera.serialText == serial || (camera.serial && std::to_string(*camera.serial) == serial);
}

// "VSC-00512 (camera 0), an unknown one (camera 1: ...)"
std::string SerialsText(const std::vector<TAttachedCamera>& cameras)
{
  std::string text;
  for (const TAttachedCamera& camera : cameras) {
    const std::string unknown = camera.problem.empty() ? "" : ": " + camera.problem;
    text += (text.empty() ? "" : ", ") + camera.serialText.value_or("an unknown one") + " (camera " +
            std::to_string(camera.number) + unknown + ")";
  }
  return text.empty() ? "none" : text;
}

} // namespace

unsigned int FindCameras(std::vector<TAttachedCamera>& cameras)
{
  long count = 0;
  if (const unsigned int code = GetAvailableCameras(&count); code != RC_SUCCESS) return code;
  for (long index = 0; index < count; ++index) {
    TAttachedCamera camera;
    camera.number = static_cast<int>(index);
    GetCameraHandle(index, &camera.handle);
    Ask(camera);
    cameras.push_back(camera);
  }
  return RC_SUCCESS;
}

ExitCode FindCameraNumber(TCameraChoice& choice)
{
  if (choice.serial.empty()) return ExitCode::Success;
  std::vector<TAttachedCamera> cameras;
  const unsigned int code = FindCameras(cameras);
  if (code != RC_SUCCESS) return Fail(ExitCode::NoCamera, NoCameraListText(code));
  for (const TAttachedCamera& camera : cameras) {
    if (!HasSerial(camera, choice.serial)) continue;
    choice.number = camera.number;
    return ExitCode::Success;
  }
  return Fail(ExitCode::NoCamera, "--camera: no camera has the serial number " + choice.serial +
                                      "; there are: " + SerialsText(cameras));
}

void HideCameras(TRedaction& redaction, const std::vector<TAttachedCamera>& cameras)
{
  for (const TAttachedCamera& camera : cameras) {
    redaction.Hide(camera.serialText.value_or(""), "serial");
    if (camera.serial) redaction.HideSerialNumber(*camera.serial);
    if (camera.source && *camera.source != "simulated") redaction.Hide(*camera.source, "address");
  }
}

} // namespace vxtool
