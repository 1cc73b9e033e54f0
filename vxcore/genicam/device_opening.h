// SPDX-License-Identifier: MIT
// Finding and opening cameras.
#pragma once

#include "vxcore/genicam/aravis.h"

#include <optional>
#include <string>
#include <vector>

namespace vxgenicam {

/// Opens the camera of an address: an IP address or host name (GigE Vision), usb:SERIAL (USB3 Vision), Fake_NAME (the
/// camera that Aravis simulates within the process), or an identifier of DiscoverDevices(). Of an IP address only this
/// one camera is asked. Takes up to some seconds when there is none. Null, with the code and a message, when it cannot be
/// opened.
TObject<ArvDevice> OpenDevice(const std::string& address, int& code, std::string& error);

/// The bytes of the largest packet that comes from the camera of an IP address in one piece, as far as is known
/// from the MTU of this machine's network.
std::optional<int> LargestPacketFrom(const std::string& host);

/// Asks every network that is up, by broadcast, and the USB buses: the addresses of all cameras that answer.
std::vector<std::string> DiscoverDevices();

} // namespace vxgenicam
