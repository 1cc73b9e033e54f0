// SPDX-License-Identifier: MIT
// Permissions: device files of cameras on USB.
#include "tools/doctor/Checks.h"
#include "tools/doctor/SystemFiles.h"

#include <filesystem>
#include <unistd.h>

namespace vxtool {

namespace {

namespace fs = std::filesystem;

// The control interface of a USB3 Vision camera: class "miscellaneous", subclass 5, protocol 0.
bool IsCameraInterface(const fs::path& interface)
{
  return FirstLineOf(interface / "bInterfaceClass") == "ef" &&
         FirstLineOf(interface / "bInterfaceSubClass") == "05" &&
         FirstLineOf(interface / "bInterfaceProtocol") == "00";
}

// "3" as "003".
std::string ThreeDigits(const std::string& number)
{
  return std::string(number.size() < 3 ? 3 - number.size() : 0, '0') + number;
}

void CheckDeviceFile(TFindings& findings, const fs::path& device, const std::string& root)
{
  const std::string name = FirstLineOf(device / "manufacturer") + " " + FirstLineOf(device / "product");
  const std::string file = root + "/dev/bus/usb/" + ThreeDigits(FirstLineOf(device / "busnum")) + "/" +
                           ThreeDigits(FirstLineOf(device / "devnum"));
  std::error_code error;
  if (!fs::exists(file, error))
    findings.Problem("USB camera " + name + ": there is no " + file,
                     "udevadm trigger; in a container, pass the device file on");
  else if (access(file.c_str(), R_OK | W_OK) == 0)
    findings.Right("USB camera " + name + ": " + file + " may be opened");
  else
    findings.Problem(
        "USB camera " + name + ": " + file + " may not be opened by this user",
        "apt install libvxcore-genicam, which has a rule for udev, and plug the camera in again; without it: echo "
        "'SUBSYSTEM==\"usb\", ENV{ID_USB_INTERFACES}==\"*:ef0500:*\", MODE=\"0660\", GROUP=\"plugdev\", "
        "TAG+=\"uaccess\"' | sudo tee /etc/udev/rules.d/70-cameras.rules");
}

} // namespace

void CheckPermissions(TFindings& findings, const std::string& root)
{
  std::error_code error;
  int cameras = 0;
  for (const fs::directory_entry& interface : fs::directory_iterator(root + "/sys/bus/usb/devices", error)) {
    // "1-2:1.0" is an interface of the device "1-2".
    const std::string name = interface.path().filename().string();
    const std::size_t colon = name.find(':');
    if (colon == std::string::npos || !IsCameraInterface(interface.path())) continue;
    CheckDeviceFile(findings, interface.path().parent_path() / name.substr(0, colon), root);
    ++cameras;
  }
  if (cameras == 0) findings.Right("no USB camera is plugged in");
}

} // namespace vxtool
