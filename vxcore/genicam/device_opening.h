// SPDX-License-Identifier: MIT
// Finding and opening cameras. All functions are thread-safe.
#pragma once

#include "vxcore/genicam/aravis.h"

#include <optional>
#include <string>
#include <vector>

namespace vxgenicam {

/// Opens the camera of an address: an IP address or host name (GigE Vision), usb:SERIAL (USB3 Vision), Fake_NAME (the
/// camera that Aravis simulates within the process), or an address from DiscoverDevices(). With an IP address, packets go to
/// this camera only. Blocks for 2.5 s when nothing answers there, for 5 s when another program has the camera. Null, with a
/// `VX_` code and a message, when it cannot be opened.
TObject<ArvDevice> OpenDevice(const std::string& address, int& code, std::string& error);

/// The largest packet in bytes, with IP and UDP headers, that can come from the camera of an address in one piece: the MTU
/// of this machine's network. Nothing when it is unknown. Sends nothing to the camera.
std::optional<int> MaxPacketBytesFrom(const std::string& host);

/// Asks every network that is up, by broadcast, and the USB buses, and waits a second: the sorted addresses of all cameras
/// that answer.
std::vector<std::string> DiscoverDevices();

} // namespace vxgenicam
