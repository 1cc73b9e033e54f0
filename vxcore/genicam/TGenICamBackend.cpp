// SPDX-License-Identifier: MIT
// Opens the configured cameras.
#include "vxcore/genicam/TGenICamBackend.h"

#include "vxcore/genicam/device_opening.h"
#include "vxcore/genicam/log.h"
#include "vxcore/genicam/TGenICamCamera.h"

#include <algorithm>

namespace vxgenicam {

namespace {

constexpr const char* kDiscover = "discover";

/// "discover" becomes the cameras that answer and are not named.
void Discover(std::vector<std::string>& devices)
{
  const auto place = std::ranges::find(devices, kDiscover);
  if (place == devices.end()) return;
  std::vector<std::string> found = DiscoverDevices();
  std::erase_if(found, [&devices](const std::string& one) { return std::ranges::count(devices, one) > 0; });
  Log(ELog::Info, "%zu cameras found", found.size());
  const auto at = devices.erase(place);
  devices.insert(at, found.begin(), found.end());
}

/// Sets the packets that a network camera sends its frames in. False when it does not answer.
bool SetPacketSize(ArvGvDevice* camera, const std::string& address, int asked)
{
  // Cameras without a command for test packets are not adapted: those are taken as far as this machine's network goes.
  TError failures[3];
  if (asked > 0)
    arv_gv_device_set_packet_size_adjustment(camera, ARV_GV_PACKET_SIZE_ADJUSTMENT_NEVER);
  else
    arv_gv_device_auto_packet_size(camera, failures[0].Out());
  const int present = asked > 0 || failures[0].IsTimeout()
                          ? asked
                          : static_cast<int>(arv_gv_device_get_packet_size(camera, failures[1].Out()));
  if (failures[0].IsTimeout() || failures[1].IsTimeout()) return false;
  const int most = MaxPacketBytesFrom(address).value_or(present);
  const int set = asked > 0 ? asked : std::min(present, most);
  if (asked > most)
    Log(ELog::Warning, "%s: packets of %d bytes (PacketSize) may be lost: the network's MTU is %d",
        address.c_str(), asked, most);
  if (asked > 0 || set < present) arv_gv_device_set_packet_size(camera, set, failures[2].Out());
  for (const TError& failure : failures)
    if (failure.IsSet()) Log(ELog::Warning, "%s: packet size: %s", address.c_str(), failure.Text().c_str());
  return !failures[2].IsTimeout();
}

} // namespace

std::unique_ptr<vxcore::IDeviceBackend> TGenICamBackend::Make(const vxcore::TBackendEntries& entries,
                                                              std::string& error)
{
  TGenICamConfiguration configuration;
  if (!configuration.Read(entries, error)) return nullptr;
  LogMessagesOfAravis();
  Discover(configuration.devices);
  return std::make_unique<TGenICamBackend>(std::move(configuration));
}

int TGenICamBackend::Open(int index, const vxcore::TDeviceContext&, std::unique_ptr<vxcore::IDevice>& device)
{
  const std::string& address = configuration_.devices[static_cast<std::size_t>(index)];
  int code = VX_SUCCESS;
  std::string error;
  TObject<ArvDevice> opened = OpenDevice(address, code, error);
  if (!opened) {
    Log(ELog::Error, "%s: the camera cannot be opened: %s (%d)", address.c_str(), error.c_str(), code);
    return code;
  }
  std::unique_ptr<TGenICamCamera> camera;
  if (!ARV_IS_GV_DEVICE(opened.get()) ||
      SetPacketSize(ARV_GV_DEVICE(opened.get()), address, configuration_.packetBytes))
    camera = std::make_unique<TGenICamCamera>(std::move(opened), address, configuration_);
  if (!camera || camera->CheckPresent() != VX_SUCCESS) {
    Log(ELog::Error, "%s: the camera cannot be opened: it has stopped answering", address.c_str());
    return VX_ERR_COMMUNICATION;
  }
  device = std::move(camera);
  return VX_SUCCESS;
}

} // namespace vxgenicam
